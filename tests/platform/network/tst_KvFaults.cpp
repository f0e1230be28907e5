// What the network and the service can do wrong: each ends in time, fails, and is told apart in the report.

#include "Exchange.h"

#include <KvNetwork/KvBaseApi.h>

#include <support/ScriptedServer.h>

#include <QtCore/QSet>
#include <QtTest/QTest>

using KvTest::Reply;

namespace {

const int shortTimeoutMs = 300;
// A stalled request ends at its timeout; the rest is what a busy machine may add.
const int latestMs = 5000;

Reply withBody(const QByteArray& body)
{
    return Reply::text(body, "application/json");
}

} // namespace

class tst_KvFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void fault_data();
    void fault();
    void refused();
    void unknownHost();
    void unusableAddress_data();
    void unusableAddress();
    void slowButSteadyReplySucceeds();
    void totalTimeCapsASteadyReply();
    void sizeLimit_data();
    void sizeLimit();
    void sizeLimitStopsAnEndlessReply();
    void sizeLimitIsHeldByDeclaredLength();
    void redirect_data();
    void redirect();
    void redirectLoop();
    void redirectToAnotherOrigin();
    void redirectIsNotFollowedForChanges_data();
    void redirectIsNotFollowedForChanges();
    void changesAreSentOnce_data();
    void changesAreSentOnce();
    void readSurvivesAClosedConnection();
    void nextRequestAfterAFaultSucceeds_data();
    void nextRequestAfterAFaultSucceeds();
};

void tst_KvFaults::init()
{
    resetNetworkManager();
}

void tst_KvFaults::fault_data()
{
    QTest::addColumn<int>("fault");
    QTest::addColumn<int>("category");
    QTest::addColumn<int>("status");

    const int aborted = KvNetworkReport::Aborted;
    const int timeout = KvNetworkReport::Timeout;
    QTest::newRow("closed without a byte") << int(Reply::CloseUnanswered) << aborted << 0;
    QTest::newRow("reset without a byte") << int(Reply::ResetUnanswered) << aborted << 0;
    QTest::newRow("reset in the body") << int(Reply::ResetInBody) << aborted << 200;
    QTest::newRow("truncated") << int(Reply::Truncate) << aborted << 200;
    QTest::newRow("stalled before the headers") << int(Reply::StallBeforeHeaders) << timeout << 0;
    QTest::newRow("stalled in the body") << int(Reply::StallInBody) << timeout << 200;
    QTest::newRow("no HTTP") << int(Reply::Garbage) << aborted << 0;
}

void tst_KvFaults::fault()
{
    QFETCH(int, fault);
    QFETCH(int, category);
    QFETCH(int, status);
    KvTest::ScriptedServer server;
    server.setHandler([fault](const KvTest::Request&) {
        const QByteArray body = fault == Reply::Garbage
                                    ? QByteArray("220 mail.example ready\r\n")
                                    : '[' + QByteArray("{\"a\":1},").repeated(100) + "{}]";
        return withBody(body).with(Reply::Fault(fault));
    });
    if (category == KvNetworkReport::Timeout)
        NetworkManager::instance().setTimeout(shortTimeoutMs);

    const Exchange exchange = Exchange::get(server.baseUrl() + QLatin1String("plans/p1?where={}"));

    QVERIFY(!exchange.isSuccessful);
    QCOMPARE(exchange.array, QJsonArray());
    QCOMPARE(exchange.reportCount, 1);
    QVERIFY2(int(exchange.report.category) == category, qPrintable(exchange.report.message));
    QCOMPARE(exchange.report.httpStatus, status);
    QVERIFY(!exchange.report.message.isEmpty());
    QVERIFY(!exchange.report.message.contains(QLatin1String("where")));
    QVERIFY(exchange.elapsedMs < latestMs);
    if (category == KvNetworkReport::Timeout)
        QVERIFY(exchange.elapsedMs >= shortTimeoutMs);
}

void tst_KvFaults::refused()
{
    const QString base = KvTest::ScriptedServer::refusingUrl();
    const Exchange exchange = Exchange::get(base + QLatin1String("plans/p1"));

    QVERIFY(!exchange.isSuccessful);
    QCOMPARE(exchange.report.category, KvNetworkReport::Refused);
    QCOMPARE(exchange.report.httpStatus, 0);
    QVERIFY2(exchange.report.message.contains(base.chopped(1)), qPrintable(exchange.report.message));
    QVERIFY2(exchange.report.message.contains(QLatin1String("refused"), Qt::CaseInsensitive),
             qPrintable(exchange.report.message));
}

void tst_KvFaults::unknownHost()
{
    // Names under .invalid are never resolved, and an empty label is refused before anybody is asked.
    const Exchange exchange = Exchange::get(QStringLiteral("http://no..such.host.invalid/plans"));

    QVERIFY(!exchange.isSuccessful);
    QCOMPARE(exchange.report.category, KvNetworkReport::Refused);
}

void tst_KvFaults::unusableAddress_data()
{
    QTest::addColumn<QString>("url");

    QTest::newRow("no base address") << QStringLiteral("task-service/plans/p1");
    QTest::newRow("empty") << QString();
    QTest::newRow("local file") << QStringLiteral("file:///task-service/plans/p1");
    QTest::newRow("inline data") << QStringLiteral("data:application/json,{}");
    QTest::newRow("resource") << QStringLiteral("qrc:/task-service/plans/p1");
    QTest::newRow("no host") << QStringLiteral("http:///task-service/plans/p1");
    QTest::newRow("port out of range") << QStringLiteral("http://127.0.0.1:99999/task-service/plans/p1");
}

void tst_KvFaults::unusableAddress()
{
    QFETCH(QString, url);
    for (const bool isPut : {false, true}) {
        const Exchange exchange = Exchange::of([&](NetworkManager& manager) {
            return isPut ? manager.putJson(url, QJsonObject()) : manager.get(url);
        });
        QVERIFY(!exchange.isSuccessful);
        QCOMPARE(exchange.reportCount, 1);
        QCOMPARE(exchange.report.category, KvNetworkReport::Refused);
        QCOMPARE(exchange.report.method, isPut ? QStringLiteral("PUT") : QStringLiteral("GET"));
        QVERIFY2(exchange.report.message.contains(QLatin1String("KV_BASE_API")),
                 qPrintable(exchange.report.message));
    }
}

void tst_KvFaults::slowButSteadyReplySucceeds()
{
    // It takes longer than the timeout as a whole, but never pauses that long.
    KvTest::ScriptedServer server;
    Reply reply = withBody("[1,2,3,4,5,6,7,8,9,10,11,12,13,14,15]").with(Reply::SlowSlices);
    reply.sliceInterval = 20;
    server.enqueue(reply);
    NetworkManager::instance().setTimeout(500);

    const Exchange exchange = Exchange::get(server.baseUrl());

    QVERIFY2(exchange.isSuccessful, qPrintable(exchange.report.message));
    QCOMPARE(exchange.array.size(), 15);
    QVERIFY(exchange.elapsedMs > 500);
}

void tst_KvFaults::totalTimeCapsASteadyReply()
{
    KvTest::ScriptedServer server;
    Reply reply = withBody(QByteArray(10 * 1000, ' ')).with(Reply::SlowSlices);
    reply.sliceInterval = 5;
    server.enqueue(reply);
    NetworkManager::instance().setTotalTimeout(200);

    const Exchange exchange = Exchange::get(server.baseUrl());

    QVERIFY(!exchange.isSuccessful);
    QCOMPARE(exchange.report.category, KvNetworkReport::Timeout);
    QVERIFY2(exchange.report.message.contains(QLatin1String("200 ms")), qPrintable(exchange.report.message));
    QVERIFY(exchange.elapsedMs >= 200 && exchange.elapsedMs < latestMs);
}

void tst_KvFaults::sizeLimit_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("noLength");
    QTest::addColumn<bool>("passes");

    QTest::newRow("at the limit") << 1000 << false << true;
    QTest::newRow("one byte more") << 1001 << false << false;
    QTest::newRow("at the limit, length not declared") << 1000 << true << true;
    QTest::newRow("one byte more, length not declared") << 1001 << true << false;
}

void tst_KvFaults::sizeLimit()
{
    QFETCH(int, size);
    QFETCH(bool, noLength);
    QFETCH(bool, passes);
    KvTest::ScriptedServer server;
    Reply reply = withBody("[]" + QByteArray(size - 2, ' '));
    reply.noLength = noLength;
    server.enqueue(reply);
    NetworkManager::instance().setReplySizeLimit(1000);

    const Exchange exchange = Exchange::get(server.baseUrl());

    QCOMPARE(exchange.isSuccessful, passes);
    QCOMPARE(exchange.reportCount, 1);
    QCOMPARE(exchange.report.category, passes ? KvNetworkReport::Ok : KvNetworkReport::Aborted);
    QCOMPARE(exchange.report.message.contains(QLatin1String("1000 bytes")), !passes);
}

void tst_KvFaults::sizeLimitStopsAnEndlessReply()
{
    KvTest::ScriptedServer server;
    server.enqueue(withBody(QByteArray(16 * 1024, ' ')).with(Reply::EndlessBody));
    NetworkManager::instance().setReplySizeLimit(1024 * 1024);

    const Exchange exchange = Exchange::get(server.baseUrl());

    QVERIFY(!exchange.isSuccessful);
    QCOMPARE(exchange.report.category, KvNetworkReport::Aborted);
    QCOMPARE(exchange.report.httpStatus, 200);
    QTRY_COMPARE(server.openConnectionCount(), 0);
}

void tst_KvFaults::sizeLimitIsHeldByDeclaredLength()
{
    // Only the head comes; the announcement alone is enough.
    KvTest::ScriptedServer server;
    Reply reply = withBody("[").with(Reply::StallInBody);
    reply.declaredLength = qint64(600) * 1024 * 1024;
    server.enqueue(reply);

    const Exchange exchange = Exchange::get(server.baseUrl());

    QVERIFY(!exchange.isSuccessful);
    QCOMPARE(exchange.report.category, KvNetworkReport::Aborted);
    QVERIFY2(exchange.report.message.contains(QString::number(512 * 1024 * 1024)),
             qPrintable(exchange.report.message));
}

void tst_KvFaults::redirect_data()
{
    QTest::addColumn<int>("status");
    for (const int status : {301, 302, 303, 307, 308})
        QTest::newRow(qPrintable(QString::number(status))) << status;
}

void tst_KvFaults::redirect()
{
    QFETCH(int, status);
    KvTest::ScriptedServer server;
    server.setHandler([status](const KvTest::Request& request) {
        if (request.path() == "/elsewhere")
            return withBody("{\"_id\":\"p1\"}");
        Reply moved = Reply::redirect("/elsewhere?a=%23b", status);
        moved.body = "<html>moved</html>";
        return moved;
    });

    const Exchange exchange = Exchange::get(server.baseUrl() + QLatin1String("plans/p1"));

    QVERIFY2(exchange.isSuccessful, qPrintable(exchange.report.message));
    QCOMPARE(exchange.object.value(QLatin1String("_id")).toString(), QStringLiteral("p1"));
    QCOMPARE(exchange.reportCount, 1);
    QCOMPARE(exchange.report.path, QStringLiteral("/plans/p1"));
    QCOMPARE(server.lastRequest().method, QByteArray("GET"));
    QCOMPARE(server.lastRequest().target, QByteArray("/elsewhere?a=%23b"));
}

void tst_KvFaults::redirectLoop()
{
    KvTest::ScriptedServer server;
    QSet<QByteArray> targets;
    server.setHandler([&targets](const KvTest::Request& request) {
        targets.insert(request.target);
        return Reply::redirect("/again/" + QByteArray::number(targets.size()));
    });

    const Exchange exchange = Exchange::get(server.baseUrl() + QLatin1String("again/0"));

    QVERIFY(!exchange.isSuccessful);
    QCOMPARE(exchange.report.category, KvNetworkReport::Http);
    QVERIFY2(exchange.report.message.contains(QLatin1String("too often")),
             qPrintable(exchange.report.message));
    QCOMPARE(exchange.reportCount, 1);
    QCOMPARE(targets.size(), 6);
}

void tst_KvFaults::redirectToAnotherOrigin()
{
    KvTest::ScriptedServer other;
    KvTest::ScriptedServer server;
    server.enqueue(Reply::redirect(other.baseUrl().toLatin1() + "plans/p1"));

    const Exchange exchange = Exchange::get(server.baseUrl() + QLatin1String("plans/p1"));

    QVERIFY(!exchange.isSuccessful);
    QCOMPARE(exchange.report.category, KvNetworkReport::Http);
    QVERIFY2(exchange.report.message.contains(QLatin1String("another origin")),
             qPrintable(exchange.report.message));
    QCOMPARE(other.connectionCount(), 0);
}

void tst_KvFaults::redirectIsNotFollowedForChanges_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<int>("status");
    for (const char* method : {"POST", "PUT", "DELETE"}) {
        for (const int status : {302, 307})
            QTest::addRow("%s %d", method, status) << QByteArray(method) << status;
    }
}

void tst_KvFaults::redirectIsNotFollowedForChanges()
{
    QFETCH(QByteArray, method);
    QFETCH(int, status);
    KvTest::ScriptedServer server;
    server.enqueue(Reply::redirect("/elsewhere", status));

    const Exchange exchange = Exchange::of([&](NetworkManager& manager) {
        const QString url = server.baseUrl() + QLatin1String("plans");
        if (method == "POST")
            return manager.postJson(url, QJsonObject());
        return method == "PUT" ? manager.putJson(url, QJsonObject()) : manager.deleteResource(url);
    });

    QVERIFY(!exchange.isSuccessful);
    QCOMPARE(exchange.report.category, KvNetworkReport::Http);
    QCOMPARE(exchange.report.httpStatus, status);
    QCOMPARE(server.requestCount(), 1);
}

void tst_KvFaults::changesAreSentOnce_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<int>("fault");
    QTest::addColumn<bool>("isReusedConnection");
    for (const char* method : {"POST", "PUT"}) {
        for (const bool isReused : {false, true}) {
            const char* connection = isReused ? "reused" : "new";
            QTest::addRow("%s, %s connection closed", method, connection)
                << QByteArray(method) << int(Reply::CloseUnanswered) << isReused;
            QTest::addRow("%s, %s connection reset", method, connection)
                << QByteArray(method) << int(Reply::ResetUnanswered) << isReused;
        }
    }
}

void tst_KvFaults::changesAreSentOnce()
{
    QFETCH(QByteArray, method);
    QFETCH(int, fault);
    QFETCH(bool, isReusedConnection);
    KvTest::ScriptedServer server;
    if (isReusedConnection) {
        server.enqueue(withBody("{}"));
        QVERIFY(Exchange::get(server.baseUrl()).isSuccessful);
    }
    const int before = server.requestCount();
    server.setHandler([fault](const KvTest::Request&) { return Reply::empty().with(Reply::Fault(fault)); });

    // Longer than one slice of the upload, so that it is begun in the middle when it is begun again.
    const QJsonObject body{{QStringLiteral("name"), QString(100 * 1000, QLatin1Char('x'))}};
    const Exchange exchange = Exchange::of([&](NetworkManager& manager) {
        const QString url = server.baseUrl() + QLatin1String("plans");
        return method == "POST" ? manager.postJson(url, body) : manager.putJson(url, body);
    });

    QVERIFY(!exchange.isSuccessful);
    QCOMPARE(server.requestCount() - before, 1);
    QCOMPARE(server.lastRequest().object(), body);
    QCOMPARE(exchange.report.category, KvNetworkReport::Aborted);
    QVERIFY2(exchange.report.message.contains(QLatin1String("lost")), qPrintable(exchange.report.message));
}

void tst_KvFaults::readSurvivesAClosedConnection()
{
    KvTest::ScriptedServer server;
    server.enqueue(withBody("{}"));
    server.enqueue(Reply::empty().with(Reply::CloseUnanswered));
    server.enqueue(withBody("{}"));

    QVERIFY(Exchange::get(server.baseUrl()).isSuccessful);
    const Exchange exchange = Exchange::get(server.baseUrl());

    QVERIFY2(exchange.isSuccessful, qPrintable(exchange.report.message));
    QCOMPARE(exchange.reportCount, 1);
    QCOMPARE(server.complaint(), QString());
}

void tst_KvFaults::nextRequestAfterAFaultSucceeds_data()
{
    fault_data();
}

void tst_KvFaults::nextRequestAfterAFaultSucceeds()
{
    QFETCH(int, fault);
    KvTest::ScriptedServer server;
    server.setHandler(
        [fault](const KvTest::Request&) { return withBody("[1,2,3]\r\n").with(Reply::Fault(fault)); });
    NetworkManager::instance().setTimeout(shortTimeoutMs);
    QVERIFY(!Exchange::get(server.baseUrl()).isSuccessful);

    server.setHandler([](const KvTest::Request&) { return withBody("{}"); });
    NetworkManager::instance().setTimeout(0);
    QVERIFY(Exchange::get(server.baseUrl()).isSuccessful);
}

QTEST_GUILESS_MAIN(tst_KvFaults)
#include "tst_KvFaults.moc"
