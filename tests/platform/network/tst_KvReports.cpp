// What hosts learn: one report a request, with the cause, and without any secret.

#include "Exchange.h"

#include <KvNetwork/KvBaseApi.h>

#include <support/ScriptedServer.h>

#include <QtTest/QTest>

using KvTest::Reply;

namespace {

QString secretToken()
{
    return QStringLiteral("s3cret-t0ken.of~the/user+1=");
}

// Every outcome that a request can have, so that each message is looked at.
QList<Reply> replyOfEveryKind()
{
    QList<Reply> replies;
    const QByteArray echo = "{\"error\":{\"code\":\"" + secretToken().toLatin1() + "\",\"message\":\"token " +
                            secretToken().toLatin1() + " is bad\",\"field\":\"" + secretToken().toLatin1() +
                            "\"}}";
    replies << Reply::json(QJsonObject()) << Reply::text(echo, "application/json", 401)
            << Reply::text(echo, "application/json", 500) << Reply::text(echo + "x", "application/json", 200)
            << Reply::empty(404) << Reply::redirect("http://127.0.0.1:1/" + secretToken().toLatin1());
    // The texts are cut in the middle of the token.
    for (const int before : {45, 50, 185, 190, 195})
        replies << Reply::text(QByteArray(echo)
                                   .replace("token s3", QByteArray(before, 'x') + " s3")
                                   .replace("\"code\":\"", "\"code\":\"" + QByteArray(before % 140, 'x')),
                               "application/json", 500);
    Reply reason = Reply::empty(403);
    reason.reason = "Bad token " + secretToken().toLatin1();
    replies << reason;
    for (const Reply::Fault fault : {Reply::CloseUnanswered, Reply::ResetInBody, Reply::Truncate,
                                     Reply::StallInBody, Reply::StallBeforeHeaders, Reply::Garbage})
        replies << Reply::text("[" + secretToken().toLatin1() + "]", "application/json").with(fault);
    return replies;
}

} // namespace

class tst_KvReports : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void errorText_data();
    void errorText();
    void errorTextIsShortAndOneLine();
    void pathIsWithoutQuery_data();
    void pathIsWithoutQuery();
    void noSecretInAnyReport_data();
    void noSecretInAnyReport();
    void noSecretWhenRefused();
    void tokenGoesToTheBaseAddress();
    void tokenStaysAtTheBaseAddress_data();
    void tokenStaysAtTheBaseAddress();
    void tokenFollowsARedirectWithinTheOrigin();
    void unusableTokenIsNotSent_data();
    void unusableTokenIsNotSent();
    void userOfTheBaseAddress();
    void oneReportEachBeforeTheWaitReturns();
    void reportsCanBeQueued();
    void durationIsMeasured();
};

void tst_KvReports::init()
{
    resetNetworkManager();
    KvBaseApi::GetInstance().setBaseApi(QString());
}

void tst_KvReports::errorText_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("message");

    const auto row = [](const char* name, int status, const char* body, const char* message) {
        QTest::newRow(name) << status << QByteArray(body) << QString::fromUtf8(message);
    };
    row("message alone", 404, "{\"error\":{\"message\":\"no such plan\"}}",
        "the service answered 404: no such plan");
    row("code alone", 409, "{\"error\":{\"code\":\"conflict\"}}", "the service answered 409: conflict");
    row("code, message and field", 400,
        "{\"error\":{\"code\":\"badValue\",\"message\":\"startDate is no date\",\"field\":\"startDate\"}}",
        "the service answered 400: startDate is no date (badValue), field startDate");
    row("numeric code", 400, "{\"error\":{\"code\":17,\"message\":\"x\"}}",
        "the service answered 400: x (17)");
    row("Chinese", 400, "{\"error\":{\"message\":\"\xE8\xAE\xA1\xE5\x88\x92\"}}",
        "the service answered 400: \xE8\xAE\xA1\xE5\x88\x92");
    row("unauthorised", 401, "{\"error\":{\"message\":\"token has expired\"}}",
        "the service answered 401: token has expired; check the access token");
    row("forbidden", 403, "{\"error\":{\"message\":\"read only\"}}",
        "the service answered 403: read only; the user has no right to this");
    row("html", 500, "<html><body>trace of 1.2.3.4</body></html>",
        "the service answered 500 Internal Server Error; look into the service's log");
    row("empty", 503, "", "the service answered 503 Service Unavailable; look into the service's log");
    row("no error object", 404, "{\"message\":\"x\"}", "the service answered 404 Not Found");
    row("error is a text", 404, "{\"error\":\"x\"}", "the service answered 404 Not Found");
    row("array", 404, "[{\"error\":{\"message\":\"x\"}}]", "the service answered 404 Not Found");
    row("broken JSON", 404, "{\"error\":{\"message\":\"x\"}", "the service answered 404 Not Found");
    row("lines", 400, "{\"error\":{\"message\":\"a\\r\\nb\\u0000c\\u2028d\\u202Ee\"}}",
        "the service answered 400: a b c d e");
    row("redirect", 302, "", "the service answered 302 Found; check the base address");
}

void tst_KvReports::errorText()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QString, message);
    KvTest::ScriptedServer server;
    server.enqueue(Reply::text(body, "application/json", status));
    const Exchange exchange = Exchange::get(server.baseUrl() + QLatin1String("plans/p1"));
    QCOMPARE(exchange.report.category, KvNetworkReport::Http);
    QCOMPARE(exchange.report.httpStatus, status);
    QCOMPARE(exchange.report.message, message);
}

void tst_KvReports::errorTextIsShortAndOneLine()
{
    const QByteArray longText = QByteArray("word \\n\\t \xF0\x9F\x8F\x97").repeated(2000);
    KvTest::ScriptedServer server;
    server.enqueue(Reply::text("{\"error\":{\"code\":\"" + longText + "\",\"message\":\"" + longText +
                                   "\",\"field\":\"" + longText + "\"}}",
                               "application/json", 400));
    Reply reason = Reply::empty(404);
    reason.reason = QByteArray("Very ").repeated(1000);
    server.enqueue(reason);
    server.enqueue(Reply::text("{\"error\":{\"message\":\"" + QByteArray(100 * 1000, 'x') + "\"}}",
                               "application/json", 500));
    for (int i = 0; i < 3; ++i) {
        const QString message = Exchange::get(server.baseUrl()).report.message;
        QVERIFY2(message.size() > 20 && message.size() < 450, qPrintable(message));
        QVERIFY2(!message.contains(QLatin1Char('\n')) && !message.contains(QLatin1Char('\t')),
                 qPrintable(message));
        QVERIFY2(message.isValidUtf16(), qPrintable(message));
    }
}

void tst_KvReports::pathIsWithoutQuery_data()
{
    QTest::addColumn<QString>("rest");
    QTest::addColumn<QString>("path");

    QTest::newRow("query") << QStringLiteral("a/b?where={\"name\":\"secret\"}&x=1") << QStringLiteral("/a/b");
    QTest::newRow("question mark in the identifier") << QStringLiteral("a/b?c/d") << QStringLiteral("/a/b");
    QTest::newRow("encoded") << QStringLiteral("a b/#") + QChar(0x5854)
                             << QStringLiteral("/a%20b/%23%E5%A1%94");
    QTest::newRow("line break") << QStringLiteral("a\nb") << QStringLiteral("/a%0Ab");
    QTest::newRow("none") << QString() << QStringLiteral("/");
}

void tst_KvReports::pathIsWithoutQuery()
{
    QFETCH(QString, rest);
    QFETCH(QString, path);
    KvTest::ScriptedServer server;
    server.enqueue(Reply::json(QJsonObject()));
    QCOMPARE(Exchange::get(server.baseUrl() + rest).report.path, path);
}

void tst_KvReports::noSecretInAnyReport_data()
{
    QTest::addColumn<int>("reply");
    for (int i = 0; i < replyOfEveryKind().size(); ++i)
        QTest::addRow("reply %d", i) << i;
}

void tst_KvReports::noSecretInAnyReport()
{
    QFETCH(int, reply);
    KvTest::ScriptedServer server;
    server.setHandler([reply](const KvTest::Request&) { return replyOfEveryKind().at(reply); });
    KvBaseApi::GetInstance().setBaseApi(server.baseUrl());
    NetworkManager::instance().setAccessToken(secretToken());
    NetworkManager::instance().setTimeout(400);

    const Exchange exchange =
        Exchange::get(server.baseUrl() + QLatin1String("plans?where={\"name\":\"hidden\"}"));

    QCOMPARE(server.lastRequest().header("Authorization"), "Bearer " + secretToken().toLatin1());
    QCOMPARE(exchange.reportCount, 1);
    for (const QString& text : {exchange.report.message, exchange.report.path, exchange.report.method}) {
        QVERIFY2(!text.contains(secretToken().left(5)), qPrintable(text));
        QVERIFY2(!text.contains(QLatin1String("hidden")), qPrintable(text));
        QVERIFY2(!text.contains(QLatin1String("where")), qPrintable(text));
    }
}

void tst_KvReports::noSecretWhenRefused()
{
    const QString base = KvTest::ScriptedServer::refusingUrl();
    const QString withUser = QString(base).replace(QLatin1String("://"), QLatin1String("://anna:pa55word@"));
    KvBaseApi::GetInstance().setBaseApi(withUser);
    NetworkManager::instance().setAccessToken(QStringLiteral("plans"));

    const Exchange exchange = Exchange::get(withUser + QLatin1String("plans/p1?where={}"));

    QCOMPARE(exchange.report.category, KvNetworkReport::Refused);
    QVERIFY2(exchange.report.message.contains(base.chopped(1)), qPrintable(exchange.report.message));
    QVERIFY2(!exchange.report.message.contains(QLatin1String("anna")), qPrintable(exchange.report.message));
    QVERIFY2(!exchange.report.message.contains(QLatin1String("pa55word")),
             qPrintable(exchange.report.message));
    QCOMPARE(exchange.report.path, QStringLiteral("/***/p1"));
}

void tst_KvReports::tokenGoesToTheBaseAddress()
{
    KvTest::ScriptedServer server;
    server.setHandler([](const KvTest::Request&) { return Reply::json(QJsonObject()); });
    KvBaseApi::GetInstance().setBaseApi(server.baseUrl() + QLatin1String("api"));
    const auto authorization = [&server] {
        return server.lastRequest().header("Authorization");
    };

    QVERIFY(Exchange::get(server.baseUrl() + QLatin1String("api/x")).isSuccessful);
    QVERIFY(authorization().isNull());

    NetworkManager::instance().setAccessToken(QStringLiteral(" abc "));
    const QString url = KvBaseApi::GetInstance().getBaseApi() + QLatin1String("x");
    QVERIFY(Exchange::get(url).isSuccessful);
    QCOMPARE(authorization(), QByteArray("Bearer abc"));
    const QJsonObject body;
    QVERIFY(Exchange::of([&](NetworkManager& manager) { return manager.postJson(url, body); }).isSuccessful);
    QCOMPARE(authorization(), QByteArray("Bearer abc"));
    QVERIFY(Exchange::of([&](NetworkManager& manager) { return manager.putJson(url, body); }).isSuccessful);
    QCOMPARE(authorization(), QByteArray("Bearer abc"));
    QVERIFY(Exchange::of([&](NetworkManager& manager) { return manager.deleteResource(url); }).isSuccessful);
    QCOMPARE(authorization(), QByteArray("Bearer abc"));

    NetworkManager::instance().setAccessToken(QString());
    QVERIFY(Exchange::get(url).isSuccessful);
    QVERIFY(authorization().isNull());
}

void tst_KvReports::tokenStaysAtTheBaseAddress_data()
{
    QTest::addColumn<bool>("isBaseSet");
    QTest::newRow("base address elsewhere") << true;
    QTest::newRow("no base address") << false;
}

void tst_KvReports::tokenStaysAtTheBaseAddress()
{
    QFETCH(bool, isBaseSet);
    KvTest::ScriptedServer base;
    KvTest::ScriptedServer other;
    other.enqueue(Reply::json(QJsonObject()));
    if (isBaseSet)
        KvBaseApi::GetInstance().setBaseApi(base.baseUrl());
    NetworkManager::instance().setAccessToken(QStringLiteral("abc"));
    QVERIFY(Exchange::get(other.baseUrl() + QLatin1String("x")).isSuccessful);
    QVERIFY(other.lastRequest().header("Authorization").isNull());
}

void tst_KvReports::tokenFollowsARedirectWithinTheOrigin()
{
    KvTest::ScriptedServer server;
    server.setHandler([](const KvTest::Request& request) {
        return request.path() == "/b" ? Reply::json(QJsonObject()) : Reply::redirect("/b");
    });
    KvBaseApi::GetInstance().setBaseApi(server.baseUrl());
    NetworkManager::instance().setAccessToken(QStringLiteral("abc"));
    QVERIFY(Exchange::get(server.baseUrl() + QLatin1String("a")).isSuccessful);
    QCOMPARE(server.lastRequest().path(), QByteArray("/b"));
    QCOMPARE(server.lastRequest().header("Authorization"), QByteArray("Bearer abc"));
}

void tst_KvReports::unusableTokenIsNotSent_data()
{
    QTest::addColumn<QString>("token");
    QTest::newRow("line break") << QStringLiteral("abc\r\nX-Other: 1");
    QTest::newRow("space inside") << QStringLiteral("a b");
    QTest::newRow("not ASCII") << QStringLiteral("ab") + QChar(0x5854);
    QTest::newRow("blank") << QStringLiteral("  ");
}

void tst_KvReports::unusableTokenIsNotSent()
{
    QFETCH(QString, token);
    KvTest::ScriptedServer server;
    server.enqueue(Reply::json(QJsonObject()));
    KvBaseApi::GetInstance().setBaseApi(server.baseUrl());
    NetworkManager::instance().setAccessToken(token);
    QVERIFY(Exchange::get(server.baseUrl()).isSuccessful);
    QVERIFY(server.lastRequest().header("Authorization").isNull());
    QVERIFY(server.lastRequest().header("X-Other").isNull());
}

void tst_KvReports::userOfTheBaseAddress()
{
    // The service asks for a user as it should, and repeats what it got as it should not.
    KvTest::ScriptedServer server;
    server.setHandler([](const KvTest::Request& request) {
        const QByteArray authorization = request.header("Authorization");
        if (authorization == "Basic " + QByteArray("anna:pa55 word").toBase64())
            return Reply::json(QJsonObject());
        const QByteArray message = "not " + authorization + ", password wr0ng";
        return Reply::text("{\"error\":{\"message\":\"" + message + "\"}}", "application/json", 401)
            .withHeader("WWW-Authenticate", "Basic realm=\"plans\"");
    });
    const auto put = [&server](const QString& user) {
        const QString base = server.baseUrl().replace(QLatin1String("://"), QLatin1String("://") + user);
        return Exchange::of([&base](NetworkManager& manager) {
            return manager.putJson(base + QLatin1Char('x'), QJsonObject());
        });
    };

    const Exchange right = put(QStringLiteral("anna:pa55%20word@"));
    QVERIFY2(right.isSuccessful, qPrintable(right.report.message));
    QCOMPARE(right.report.path, QStringLiteral("/x"));
    QCOMPARE(server.requestCount(), 1);

    const Exchange wrong = put(QStringLiteral("anna:wr0ng@"));
    QVERIFY(!wrong.isSuccessful);
    QCOMPARE(wrong.report.category, KvNetworkReport::Http);
    QCOMPARE(wrong.report.httpStatus, 401);
    QCOMPARE(wrong.report.message,
             QStringLiteral("the service answered 401: not Basic ***, password ***; check the access token"));
}

void tst_KvReports::oneReportEachBeforeTheWaitReturns()
{
    KvTest::ScriptedServer server;
    for (int i = 0; i < 5; ++i)
        server.enqueue(i % 2 == 0 ? Reply::json(QJsonObject()) : Reply::empty(500));
    ReportRecorder recorder;
    for (int i = 0; i < 5; ++i) {
        NetworkEventLoop loop(NetworkManager::instance().get(server.baseUrl() + QString::number(i)));
        loop.exec();
        QCOMPARE(recorder.reports.size(), i + 1);
        QCOMPARE(recorder.reports.last().path, QLatin1Char('/') + QString::number(i));
        QCOMPARE(recorder.reports.last().category, i % 2 == 0 ? KvNetworkReport::Ok : KvNetworkReport::Http);
    }
}

void tst_KvReports::reportsCanBeQueued()
{
    KvTest::ScriptedServer server;
    server.enqueue(Reply::empty(404));
    QList<KvNetworkReport> reports;
    QObject receiver;
    connect(
        &NetworkManager::instance(), &NetworkManager::requestFinished, &receiver,
        [&](const KvNetworkReport& report) { reports.append(report); }, Qt::QueuedConnection);
    Exchange::get(server.baseUrl());
    QTRY_COMPARE(reports.size(), 1);
    QCOMPARE(reports.first().httpStatus, 404);
}

void tst_KvReports::durationIsMeasured()
{
    KvTest::ScriptedServer server;
    Reply reply = Reply::text("[1,2,3]", "application/json").with(Reply::SlowSlices);
    reply.sliceInterval = 20;
    server.enqueue(reply);
    const Exchange exchange = Exchange::get(server.baseUrl());
    QVERIFY(exchange.report.durationMs >= 7 * 19);
    QVERIFY(exchange.report.durationMs <= exchange.elapsedMs);
}

QTEST_GUILESS_MAIN(tst_KvReports)
#include "tst_KvReports.moc"
