// What stands in a URL's text reaches the service unchanged: the finishing itself, and what is then on the
// wire.

#include "Exchange.h"

#include <KvNetwork/KvBaseProxy.h>
#include <KvUrlText.h>

#include <support/ScriptedServer.h>

#include <QtCore/QJsonDocument>
#include <QtTest/QTest>

#include <ctime>
#include <limits>

using KvTest::Reply;

class tst_KvUrlText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void finished_data();
    void finished();
    void identifierArrives_data();
    void identifierArrives();
    void everyAsciiCharacterArrives();
    void filterTextArrives_data();
    void filterTextArrives();
    void parametersAroundAFilterStayApart();
    void plainValueArrives_data();
    void plainValueArrives();
    void queryParamArrives_data();
    void queryParamArrives();
    void longTextTakesLinearTime_data();
    void longTextTakesLinearTime();
    void origin_data();
    void origin();
    void sameOrigin_data();
    void sameOrigin();
};

void tst_KvUrlText::init()
{
    resetNetworkManager();
}

void tst_KvUrlText::finished_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("encoded");

    const auto row = [](const char* name, const char* text, const char* encoded) {
        QTest::newRow(name) << QString::fromUtf8(text) << QByteArray(encoded);
    };
    row("plain", "http://h:1/a/b?c=d&e=f", "http://h:1/a/b?c=d&e=f");
    row("no path", "http://h", "http://h");
    row("query without path", "http://h?a=b", "http://h?a=b");
    row("empty query", "http://h/a?", "http://h/a?");
    row("host in capitals", "HTTP://Host/A", "http://host/A");
    row("user and password", "http://u:p@h/a", "http://u:p@h/a");
    row("IPv6 address", "http://[::1]:80/a", "http://[::1]:80/a");
    row("text without an address", "task-service/plans/a b", "task-service/plans/a%20b");

    row("path: space", "http://h/a b", "http://h/a%20b");
    row("path: number sign begins no fragment", "http://h/a#b", "http://h/a%23b");
    row("path: plus", "http://h/a+b", "http://h/a%2Bb");
    row("path: quotes, braces, backslash", "http://h/\"'{}[]\\|^`<>",
        "http://h/%22%27%7B%7D%5B%5D%5C%7C%5E%60%3C%3E");
    row("path: lone percent sign", "http://h/50%", "http://h/50%25");
    row("path: percent sign before one hex digit", "http://h/%4", "http://h/%254");
    row("path: percent sign before no hex digits", "http://h/%zz", "http://h/%25zz");
    row("path: encoded already", "http://h/%E5%a1%94%2F%23", "http://h/%E5%A1%94%2F%23");
    row("path: Chinese", "http://h/\xE5\xA1\x94", "http://h/%E5%A1%94");
    row("path: emoji", "http://h/\xF0\x9F\x8F\x97", "http://h/%F0%9F%8F%97");
    row("path: separators of a query", "http://h/a&b=c;d:e@f", "http://h/a%26b%3Dc%3Bd%3Ae%40f");
    row("path: dot segments stand as they are", "http://h/plans/../x/./y", "http://h/plans/../x/./y");
    row("path: double slash", "http://h//a//b", "http://h//a//b");
    row("path: question mark begins the query", "http://h/a?b/c", "http://h/a?b/c");

    row("query: second question mark", "http://h/a?b=c?d", "http://h/a?b=c%3Fd");
    row("query: second equals sign", "http://h/a?b=c=d&e=f", "http://h/a?b=c%3Dd&e=f");
    row("query: number sign, plus, space", "http://h/a?b=#+ ", "http://h/a?b=%23%2B%20");
    row("query: encoded already", "http://h/a?b=%7B%22%26", "http://h/a?b=%7B%22%26");
    row("query: lone percent sign", "http://h/a?b=50%&c=%g1", "http://h/a?b=50%25&c=%25g1");
    row("query: name without value", "http://h/a?b&c=1", "http://h/a?b&c=1");
    row("query: date", "http://h/a?b=2024-01-02T03:04:05.000", "http://h/a?b=2024-01-02T03:04:05.000");

    row("filter: empty", "http://h/a?where={}&x=1", "http://h/a?where=%7B%7D&x=1");
    row("filter: separators in a string literal", "http://h/a?where={\"n\":\"a&b=c?d\"}&x=1",
        "http://h/a?where=%7B%22n%22:%22a%26b%3Dc%3Fd%22%7D&x=1");
    row("filter: %41 in a string literal is text", "http://h/a?where={\"n\":\"%41\"}",
        "http://h/a?where=%7B%22n%22:%22%2541%22%7D");
    row("filter: %41 outside one is encoded already", "http://h/a?where={\"n\":%41}",
        "http://h/a?where=%7B%22n%22:A%7D");
    row("filter: escaped quotation mark", "http://h/a?where={\"n\":\"\\\"&\"}&x=1",
        "http://h/a?where=%7B%22n%22:%22%5C%22%26%22%7D&x=1");
    row("filter: backslash at the end of a literal", "http://h/a?where={\"n\":\"\\\\\"}&x=1",
        "http://h/a?where=%7B%22n%22:%22%5C%5C%22%7D&x=1");
    row("filter: braces in a literal", "http://h/a?where={\"n\":\"}&{\"}&x=1",
        "http://h/a?where=%7B%22n%22:%22%7D%26%7B%22%7D&x=1");
    row("filter: key is a literal too", "http://h/a?where={\"a&b\":1}",
        "http://h/a?where=%7B%22a%26b%22:1%7D");
    row("filter: array", "http://h/a?dimensions=[\"status\",\"situation\"]&category=c",
        "http://h/a?dimensions=%5B%22status%22,%22situation%22%5D&category=c");
    row("filter: second one", "http://h/a?where={}&state={\"$in\":[\"a&b\"]}",
        "http://h/a?where=%7B%7D&state=%7B%22$in%22:%5B%22a%26b%22%5D%7D");
    row("filter: text behind it", "http://h/a?where={\"a\":1}&category=\"x&y=2",
        "http://h/a?where=%7B%22a%22:1%7D&category=%22x&y=2");
    row("no filter: quotation marks", "http://h/a?category=a\"&b=\"c&d=1",
        "http://h/a?category=a%22&b=%22c&d=1");
    row("no filter: brace that is not closed", "http://h/a?category={x&b=1", "http://h/a?category=%7Bx&b=1");
    row("no filter: literal that is not closed", "http://h/a?category={\"x&b=1",
        "http://h/a?category=%7B%22x&b=1");
    row("no filter: brace inside", "http://h/a?category=x{\"&\"}&b=1",
        "http://h/a?category=x%7B%22&%22%7D&b=1");
    row("no filter: in the path", "http://h/{\"%41\"}", "http://h/%7B%22A%22%7D");
}

void tst_KvUrlText::finished()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, encoded);
    QCOMPARE(KvUrlText::finished(text).toEncoded(), encoded);
}

void tst_KvUrlText::identifierArrives_data()
{
    QTest::addColumn<QString>("identifier");

    const auto row = [](const char* name, const char* identifier) {
        QTest::newRow(name) << QString::fromUtf8(identifier);
    };
    row("object id", "5f1d7a3b9c0e4d2f8a6b1c3d");
    row("space", "plan 1");
    row("spaces around", " a ");
    row("number sign", "plan#1");
    row("percent sign", "100%");
    row("percent sign before letters", "%zz%");
    row("plus", "a+b");
    row("double quotes", "\"a\"");
    row("single quotes", "'a'");
    row("braces", "{a}[b]");
    row("backslash", "a\\b");
    row("ampersand and equals sign", "a&b=c");
    row("colon and at sign", "a:b@c");
    row("semicolon and comma", "a;b,c");
    row("Chinese", "\xE4\xB8\x80\xE5\x8F\xB7\xE6\xA5\xBC");
    row("emoji", "\xF0\x9F\x8F\x97\xEF\xB8\x8F crane");
    row("combining accent", "e\xCC\x81");
    row("right to left", "\xD7\xA9\xD7\x9C");
    row("control characters", "a\tb\r\nc\x01\x7F");
    row("tilde, dot, dash, underscore", "~a.b-c_d");
    row("three dots", "...");
}

void tst_KvUrlText::identifierArrives()
{
    QFETCH(QString, identifier);
    KvTest::ScriptedServer server;
    server.setHandler([](const KvTest::Request&) { return Reply::json(QJsonObject()); });

    QVERIFY(Exchange::get(server.baseUrl() + QStringLiteral("task-service/plans/%1/copy").arg(identifier))
                .isSuccessful);
    QCOMPARE(server.lastRequest().decodedPath(),
             QStringLiteral("/task-service/plans/%1/copy").arg(identifier));
    QCOMPARE(server.lastRequest().query(), QByteArray());

    QVERIFY(Exchange::get(server.baseUrl() + QStringLiteral("planNodes/%1?expand=true").arg(identifier))
                .isSuccessful);
    QCOMPARE(server.lastRequest().decodedPath(), QStringLiteral("/planNodes/%1").arg(identifier));
    QCOMPARE(server.lastRequest().query(), QByteArray("expand=true"));
}

void tst_KvUrlText::everyAsciiCharacterArrives()
{
    // All but the three that are structure in a path: '/' and '?', and '%', which has rules of its own.
    QString identifier;
    for (char c = 0x01; c < 0x7F; ++c) {
        if (c != '/' && c != '?' && c != '%')
            identifier += QLatin1Char(c);
    }
    KvTest::ScriptedServer server;
    server.enqueue(Reply::json(QJsonObject()));
    QVERIFY(Exchange::get(server.baseUrl() + identifier).isSuccessful);
    QCOMPARE(server.lastRequest().decodedPath(), QLatin1Char('/') + identifier);

    // In a filter's text, all of them; JSON escapes what must be.
    QString text;
    for (char c = 0x01; c < 0x7F; ++c)
        text += QLatin1Char(c);
    const QJsonObject filter{{QStringLiteral("name"), text}};
    server.enqueue(Reply::json(QJsonObject()));
    const QString where = QString::fromUtf8(QJsonDocument(filter).toJson(QJsonDocument::Compact));
    QVERIFY(Exchange::get(server.baseUrl() + QLatin1String("plans?where=") + where).isSuccessful);
    QCOMPARE(server.lastRequest().queryValue("where"), where);
}

void tst_KvUrlText::filterTextArrives_data()
{
    QTest::addColumn<QString>("text");

    const auto row = [](const char* name, const char* text) {
        QTest::newRow(name) << QString::fromUtf8(text);
    };
    row("empty", "");
    row("space", "ground floor");
    row("number sign", "#1");
    row("percent sign", "50 %");
    row("percent sign and hex digits", "%41");
    row("percent sign and the code of a quotation mark", "%22&x=1");
    row("plus", "a+b");
    row("ampersand", "a&b");
    row("ampersand and a parameter's name", "a&only_count=false");
    row("equals sign", "a=b");
    row("question mark", "why?");
    row("double quotes", "\"wall\"");
    row("double quote at the end", "12\"");
    row("single quotes", "'a'");
    row("braces", "}{][");
    row("braces that would close the filter", "\"}&x={\"");
    row("backslash", "a\\b");
    row("backslash at the end", "a\\");
    row("two backslashes and a quotation mark", "\\\\\"");
    row("regular expression", "^(a|b).*\\d{2,}$");
    row("slashes", "a/b//c");
    row("line break", "a\nb");
    row("Chinese", "\xE6\xB7\xB7\xE5\x87\x9D\xE5\x9C\x9F");
    row("emoji", "\xF0\x9F\x8F\x97");
}

void tst_KvUrlText::filterTextArrives()
{
    QFETCH(QString, text);
    const QJsonObject pattern{{QStringLiteral("$regex"), text},
                              {QStringLiteral("$options"), QStringLiteral("i")}};
    const QJsonObject filter{{QStringLiteral("name"), pattern},
                             {QStringLiteral("ids"), QJsonArray{text, QJsonValue(), text}}};
    const QString where = QString::fromUtf8(QJsonDocument(filter).toJson(QJsonDocument::Compact));
    KvTest::ScriptedServer server;
    server.enqueue(Reply::json(QJsonArray()));

    QVERIFY(Exchange::get(server.baseUrl() + QStringLiteral("plans?where=%1&only_count=true").arg(where))
                .isSuccessful);

    QCOMPARE(server.lastRequest().queryKeys(),
             QStringList({QStringLiteral("where"), QStringLiteral("only_count")}));
    QCOMPARE(server.lastRequest().queryValue("where"), where);
    QCOMPARE(server.lastRequest().queryValue("only_count"), QStringLiteral("true"));
}

void tst_KvUrlText::parametersAroundAFilterStayApart()
{
    KvTest::ScriptedServer server;
    server.enqueue(Reply::json(QJsonArray()));
    QVERIFY(Exchange::get(server.baseUrl() +
                          QLatin1String("plans/P/planNodes?where={\"planId\":\"P\"}&category=C d&"
                                        "list=all&finish=true&skip=0&limit=20"))
                .isSuccessful);
    const KvTest::Request request = server.lastRequest();
    QCOMPARE(request.queryKeys().join(QLatin1Char(' ')),
             QStringLiteral("where category list finish skip limit"));
    QCOMPARE(request.queryValue("category"), QStringLiteral("C d"));
    QCOMPARE(request.queryValue("limit"), QStringLiteral("20"));
}

void tst_KvUrlText::plainValueArrives_data()
{
    QTest::addColumn<QString>("value");

    const auto row = [](const char* name, const char* value) {
        QTest::newRow(name) << QString::fromUtf8(value);
    };
    row("space", "a b");
    row("number sign", "a#b");
    row("lone percent sign", "50%");
    row("plus", "a+b");
    row("quotes", "a\"b'c");
    row("brace at the beginning", "{a");
    row("bracket and quotation mark at the beginning", "[\"a");
    row("braces inside", "a{\"b\"}");
    row("second equals sign", "a=b");
    row("question mark", "a?b");
    row("backslash", "a\\b");
    row("Chinese", "\xE8\xBF\x9B\xE5\xBA\xA6");
}

void tst_KvUrlText::plainValueArrives()
{
    QFETCH(QString, value);
    KvTest::ScriptedServer server;
    server.enqueue(Reply::json(QJsonObject()));
    QVERIFY(Exchange::get(server.baseUrl() + QStringLiteral("x?category=%1&personal=true").arg(value))
                .isSuccessful);
    QCOMPARE(server.lastRequest().queryValue("category"), value);
    QCOMPARE(server.lastRequest().queryValue("personal"), QStringLiteral("true"));
}

void tst_KvUrlText::queryParamArrives_data()
{
    QTest::addColumn<QString>("text");

    const auto row = [](const char* name, const char* text) {
        QTest::newRow(name) << QString::fromUtf8(text);
    };
    row("empty", "");
    row("ids", "{\"ids\":[\"a\",\"b c\",\"\"]}");
    row("everything", "a b+c&d=e#f%41?g/h\\\"'{}[]~-._:;,@!$*()<>|^`");
    row("Chinese", "\xE5\xA1\x94\xF0\x9F\x8F\x97");
}

void tst_KvUrlText::queryParamArrives()
{
    QFETCH(QString, text);
    QString param = QStringLiteral("old");
    QVERIFY(KvBaseProxy::getQueryParam(text, param));
    for (const QChar c : qAsConst(param)) {
        QVERIFY2(c.unicode() < 0x80 && (c.isLetterOrNumber() || QStringLiteral("-._~%").contains(c)),
                 qPrintable(param));
    }
    KvTest::ScriptedServer server;
    server.enqueue(Reply::empty());
    const QString url = server.baseUrl() + QStringLiteral("planNodes?queryParam=%1").arg(param);
    QVERIFY(Exchange::of([&](NetworkManager& manager) { return manager.deleteResource(url); }).isSuccessful);
    QCOMPARE(server.lastRequest().queryKeys(), QStringList(QStringLiteral("queryParam")));
    QCOMPARE(server.lastRequest().queryValue("queryParam"), text);
    // What came out goes in again unchanged, letter by letter.
    QCOMPARE(server.lastRequest().query(), "queryParam=" + param.toLatin1());
}

void tst_KvUrlText::longTextTakesLinearTime_data()
{
    QTest::addColumn<QString>("piece");

    QTest::newRow("filters") << QStringLiteral("&a={\"b\":\"c\"}");
    QTest::newRow("braces that are not closed") << QStringLiteral("&a={");
    QTest::newRow("literals that are not closed") << QStringLiteral("&a={\"");
    QTest::newRow("escaped quotation marks") << QStringLiteral("&a={\\\"\"\\");
    QTest::newRow("nested arrays") << QStringLiteral("&a=[[[[[[");
    QTest::newRow("text") << QStringLiteral("\xE5\xA1");
}

void tst_KvUrlText::longTextTakesLinearTime()
{
    QFETCH(QString, piece);
    // Processor time, which other programs on the machine do not add to.
    const auto fastest = [&piece](int count) {
        const QString text = QLatin1String("http://h/a?x=1") + piece.repeated(count);
        std::clock_t best = std::numeric_limits<std::clock_t>::max();
        for (int i = 0; i < 7; ++i) {
            const std::clock_t begin = std::clock();
            const QUrl url = KvUrlText::finished(text);
            best = qMin(best, std::clock() - begin);
            if (url.isEmpty())
                return std::numeric_limits<std::clock_t>::max();
        }
        return best;
    };
    const std::clock_t once = fastest(5 * 1000);
    const std::clock_t tenTimes = fastest(50 * 1000);
    // A quadratic walk would take a hundred times as long.
    QVERIFY2(tenTimes < 40 * once, qPrintable(QStringLiteral("%1 and %2 ticks").arg(once).arg(tenTimes)));
}

void tst_KvUrlText::origin_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("origin");

    QTest::newRow("path and query") << QStringLiteral("http://h:81/a/b?c=d") << QStringLiteral("http://h:81");
    QTest::newRow("user and password") << QStringLiteral("https://u:p@h/a") << QStringLiteral("https://h");
}

void tst_KvUrlText::origin()
{
    QFETCH(QString, url);
    QFETCH(QString, origin);
    QCOMPARE(KvUrlText::origin(QUrl(url)), origin);
}

void tst_KvUrlText::sameOrigin_data()
{
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<bool>("isSame");

    const auto row = [](const char* name, const char* a, const char* b, bool isSame) {
        QTest::newRow(name) << QString::fromLatin1(a) << QString::fromLatin1(b) << isSame;
    };
    row("paths differ", "http://h/a", "http://h/b", true);
    row("usual port spelled out", "http://h/", "http://h:80/", true);
    row("usual port of https spelled out", "https://h/", "https://h:443/", true);
    row("letters of the host", "http://H/", "http://h/", true);
    row("users differ", "http://u@h/", "http://h/", true);
    row("schemes differ", "http://h/", "https://h/", false);
    row("schemes differ on one port", "http://h:443/", "https://h/", false);
    row("hosts differ", "http://h/", "http://h.x/", false);
    row("ports differ", "http://h:1/", "http://h:2/", false);
    row("none set", "http://h/", "", false);
}

void tst_KvUrlText::sameOrigin()
{
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(bool, isSame);
    QCOMPARE(KvUrlText::isSameOrigin(QUrl(a), QUrl(b)), isSame);
    QCOMPARE(KvUrlText::isSameOrigin(QUrl(b), QUrl(a)), isSame);
}

QTEST_GUILESS_MAIN(tst_KvUrlText)
#include "tst_KvUrlText.moc"
