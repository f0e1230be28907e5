#include "ApiStatus.h"
#include "Text.h"
#include "http/Router.h"

#include <QtTest>

using namespace PlanService;
using KvTest::statusOf;
using KvTest::operator""_s;

Q_DECLARE_METATYPE(PlanService::UrlText)

namespace {

Reply nothing(const Call&)
{
    return {};
}

Router testRouter()
{
    return Router({{"GET", "/plans/{planId}", nothing},
                   {"PUT", "/plans/{planId}", nothing},
                   {"GET", "/plans/{planId}/copy/{how}", nothing},
                   {"GET", "/health", nothing, NeedsToken::No}});
}

} // namespace

class TestRouter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decodes_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("decoded");
        QTest::newRow("plain") << QByteArray("abc") << "abc"_s;
        QTest::newRow("space") << QByteArray("a%20b") << "a b"_s;
        QTest::newRow("a plus stays a plus") << QByteArray("a+b") << "a+b"_s;
        QTest::newRow("encoded plus") << QByteArray("a%2Bb") << "a+b"_s;
        QTest::newRow("decoded once only") << QByteArray("%2541") << "%41"_s;
        QTest::newRow("lower and upper case digits") << QByteArray("%2f%2F") << "//"_s;
        QTest::newRow("Chinese") << QByteArray("%E5%B1%82") << "层"_s;
        QTest::newRow("Chinese sent as it is") << "层"_s.toUtf8() << "层"_s;
        QTest::newRow("beyond the first plane")
            << QByteArray("%F0%9F%8F%97") << QString::fromUtf8("\xF0\x9F\x8F\x97");
        QTest::newRow("byte order mark is kept")
            << QByteArray("%EF%BB%BFa") << QString(QChar(0xFEFF)) + "a"_s;
        QTest::newRow("quotes and braces") << QByteArray("%7B%22a%22%7D") << "{\"a\"}"_s;
        QTest::newRow("empty") << QByteArray("") << ""_s;
    }
    void decodes()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, decoded);
        QCOMPARE(percentDecoded(text), decoded);
    }

    void refusesMalformedText_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("percent alone") << QByteArray("%");
        QTest::newRow("one digit") << QByteArray("%4");
        QTest::newRow("percent and one digit at the end") << QByteArray("abc%4");
        QTest::newRow("no hex digits") << QByteArray("%zz");
        QTest::newRow("second digit wrong") << QByteArray("%4g");
        QTest::newRow("null character") << QByteArray("a%00b");
        QTest::newRow("lone continuation byte") << QByteArray("%80");
        QTest::newRow("cut off sequence") << QByteArray("%E5%B1");
        QTest::newRow("overlong slash") << QByteArray("%C0%AF");
        QTest::newRow("surrogate") << QByteArray("%ED%A0%80");
    }
    void refusesMalformedText()
    {
        QFETCH(QByteArray, text);
        QCOMPARE(statusOf([&] { percentDecoded(text); }), 400);
    }

    void takesTargetsApart()
    {
        const UrlText url = parsedTarget("/a%2Fb//c?x=1&y=%26%3D&flag&z=a=b&x=2&");
        QCOMPARE(url.segments, QStringList({"a/b"_s, ""_s, "c"_s}));
        const QMap<QString, QString> query{
            {"x"_s, "2"_s}, {"y"_s, "&="_s}, {"flag"_s, ""_s}, {"z"_s, "a=b"_s}};
        QCOMPARE(url.query, query);
        QCOMPARE(statusOf([] { parsedTarget("http://elsewhere/"); }), 400);
        QCOMPARE(pathOf("/a/b?token=x?y"), QByteArray("/a/b"));
    }

    void finds_data()
    {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<int>("status");
        QTest::newRow("plan") << QByteArray("GET") << QByteArray("/plans/1") << 200;
        QTest::newRow("other method of the same path") << QByteArray("PUT") << QByteArray("/plans/1") << 200;
        QTest::newRow("with a query") << QByteArray("GET") << QByteArray("/plans/1?a=b") << 200;
        QTest::newRow("slash inside an id") << QByteArray("GET") << QByteArray("/plans/a%2Fb") << 200;
        QTest::newRow("two placeholders") << QByteArray("GET") << QByteArray("/plans/1/copy/deep") << 200;
        QTest::newRow("wrong method") << QByteArray("DELETE") << QByteArray("/plans/1") << 405;
        QTest::newRow("methods are told apart by case") << QByteArray("get") << QByteArray("/plans/1") << 405;
        QTest::newRow("empty id") << QByteArray("GET") << QByteArray("/plans/") << 404;
        QTest::newRow("no id") << QByteArray("GET") << QByteArray("/plans") << 404;
        QTest::newRow("slash at the end") << QByteArray("GET") << QByteArray("/plans/1/") << 404;
        QTest::newRow("empty id in the middle") << QByteArray("GET") << QByteArray("/plans//copy/all") << 400;
        QTest::newRow("empty id before nothing known")
            << QByteArray("GET") << QByteArray("/plans//copied/all") << 404;
        QTest::newRow("only the last is empty") << QByteArray("GET") << QByteArray("/plans/1/copy/") << 404;
        QTest::newRow("two slashes") << QByteArray("GET") << QByteArray("//plans/1") << 404;
        QTest::newRow("unknown path") << QByteArray("GET") << QByteArray("/elsewhere") << 404;
        QTest::newRow("root") << QByteArray("GET") << QByteArray("/") << 404;
        QTest::newRow("malformed id") << QByteArray("GET") << QByteArray("/plans/%") << 400;
        QTest::newRow("malformed query") << QByteArray("GET") << QByteArray("/plans/1?a=%zz") << 400;
    }
    void finds()
    {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, target);
        QFETCH(int, status);
        const Router router = testRouter();
        QCOMPARE(statusOf([&] { router.match(method, target); }), status);
    }

    void givesParametersDecoded()
    {
        const Router router = testRouter();
        const RouteMatch match = router.match("GET", "/plans/a%2Fb%20%25/copy/%E5%B1%82?where=%7B%7D");
        QCOMPARE(match.route->pathTemplate, QByteArray("/plans/{planId}/copy/{how}"));
        QCOMPARE(match.parameters.value("planId"_s), "a/b %"_s);
        QCOMPARE(match.parameters.value("how"_s), "层"_s);
        QCOMPARE(match.query.value("where"_s), "{}"_s);
    }

    void tellsAllowedMethods()
    {
        const Router router = testRouter();
        try {
            router.match("POST", "/plans/1");
            QFAIL("a POST was let through");
        } catch (const ApiError& error) {
            const Reply reply = error.reply();
            QCOMPARE(reply.headers.size(), 1);
            QCOMPARE(reply.headers.first().first, QByteArray("Allow"));
            QCOMPARE(reply.headers.first().second, QByteArray("GET, PUT"));
        }
    }
};

QTEST_GUILESS_MAIN(TestRouter)
#include "TestRouter.moc"
