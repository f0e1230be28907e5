// The real process, asked byte by byte.

#include "RawHttp.h"
#include "ServiceProcess.h"
#include "Text.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <vector>

using namespace KvTest;

namespace {

QJsonObject objectOf(const RawReply& reply)
{
    return QJsonDocument::fromJson(reply.body).object();
}

QString errorCode(const RawReply& reply)
{
    return objectOf(reply).value("error"_s).toObject().value("code"_s).toString();
}

} // namespace

class TestServiceHttp : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    QByteArray m_plan;
    QByteArray m_node;

private Q_SLOTS:
    void initTestCase()
    {
        const QJsonObject seeded = m_service.seed();
        QVERIFY2(!seeded.isEmpty(), qPrintable(m_service.failure()));
        m_plan = seeded.value("planId"_s).toString().toLatin1();
        m_node = m_plan.left(16) + "00000004";
        QVERIFY2(m_service.start({"--read-timeout"_s, "1"_s, "--max-body"_s, "100000"_s}),
                 qPrintable(m_service.failure()));
    }

    void cleanupTestCase() { QVERIFY2(m_service.stop(), qPrintable(m_service.failure())); }

    void tellsItsHealth()
    {
        const RawReply reply = RawHttp(m_service.port()).get("/health");
        QCOMPARE(reply.status, 200);
        QCOMPARE(reply.headers.value("content-type"), QByteArray("application/json; charset=utf-8"));
        QCOMPARE(objectOf(reply).value("status"_s).toString(), "ok"_s);
    }

    void answersPlansAndNodes()
    {
        RawHttp http(m_service.port());
        const RawReply plan = http.get("/task-service/plans/" + m_plan);
        QCOMPARE(plan.status, 200);
        QCOMPARE(objectOf(plan).value("_id"_s).toString().toLatin1(), m_plan);
        QVERIFY(objectOf(plan).value("tasks"_s).toArray().size() > 300);
        const RawReply node = http.get("/task-service/planNodes/" + m_node + "?expand=true");
        QCOMPARE(node.status, 200);
        QCOMPARE(objectOf(node).value("documents"_s).toArray().size(), 1);
        const RawReply bare = http.get("/task-service/planNodes/" + m_node);
        QVERIFY(!objectOf(bare).contains("documents"_s));
        QCOMPARE(objectOf(bare).value("planName"_s), objectOf(plan).value("name"_s));
    }

    void refuses_data()
    {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("code");
        const QByteArray none;
        const QByteArray setting = "/user-service/settings/k";
        QTest::newRow("unknown plan")
            << QByteArray("GET") << QByteArray("/task-service/plans/x") << none << 404 << "planNotFound"_s;
        QTest::newRow("unknown node") << QByteArray("GET") << QByteArray("/task-service/planNodes/x") << none
                                      << 404 << "planNodeNotFound"_s;
        QTest::newRow("unknown path")
            << QByteArray("GET") << QByteArray("/elsewhere") << none << 404 << "pathNotFound"_s;
        QTest::newRow("wrong method")
            << QByteArray("DELETE") << QByteArray("/health") << none << 405 << "methodNotAllowed"_s;
        QTest::newRow("malformed escape")
            << QByteArray("GET") << QByteArray("/task-service/plans/%zz") << none << 400 << "malformedUrl"_s;
        QTest::newRow("not UTF-8") << QByteArray("GET") << QByteArray("/task-service/plans/%ff") << none
                                   << 400 << "malformedUrl"_s;
        QTest::newRow("expand is no flag")
            << QByteArray("GET") << QByteArray("/task-service/planNodes/x?expand=yes") << none << 400
            << "badParameter"_s;
        QTest::newRow("URL too long") << QByteArray("GET") << QByteArray("/" + QByteArray(1 << 20, 'a'))
                                      << none << 414 << "urlTooLong"_s;
        QTest::newRow("URL of four megabytes")
            << QByteArray("GET") << QByteArray("/" + QByteArray(4 << 20, 'a')) << none << 414
            << "urlTooLong"_s;
        QTest::newRow("body too large")
            << QByteArray("PUT") << setting << QByteArray(100001, 'a') << 413 << "bodyTooLarge"_s;
        QTest::newRow("body far too large")
            << QByteArray("PUT") << setting << QByteArray(8 << 20, 'a') << 413 << "bodyTooLarge"_s;
        QTest::newRow("body is no JSON")
            << QByteArray("PUT") << setting << QByteArray("{") << 400 << "badJson"_s;
        QTest::newRow("body is no object")
            << QByteArray("PUT") << setting << QByteArray("[1]") << 400 << "badJson"_s;
        QTest::newRow("body is nested too deep")
            << QByteArray("PUT") << setting
            << QByteArray("{\"value\":" + QByteArray(40000, '[') + QByteArray(40000, ']') + "}") << 400
            << "badJson"_s;
        QTest::newRow("body without value")
            << QByteArray("PUT") << setting << QByteArray("{}") << 400 << "missingValue"_s;
        QTest::newRow("key too long")
            << QByteArray("GET") << QByteArray("/user-service/settings/" + QByteArray(201, 'k')) << none
            << 400 << "badKey"_s;
    }
    void refuses()
    {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, target);
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        QFETCH(QString, code);
        const RawReply reply = RawHttp(m_service.port()).request(method, target, body);
        QCOMPARE(reply.status, status);
        QCOMPARE(errorCode(reply), code);
        const QJsonObject error = objectOf(reply).value("error"_s).toObject();
        QVERIFY(!error.value("message"_s).toString().isEmpty());
        QVERIFY(error.value("field"_s).isString());
        QCOMPARE(reply.headers.contains("allow"), status == 405);
    }

    void refusesWhatIsNoHttp_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("status");
        QTest::newRow("garbage") << QByteArray("hello there\r\n\r\n") << 400;
        QTest::newRow("TLS greeting") << QByteArray::fromHex("1603010200010001fc0303") << 400;
        QTest::newRow("no such method") << QByteArray("FROB / HTTP/1.1\r\n\r\n") << 400;
        QTest::newRow("two lengths that differ")
            << QByteArray("PUT / HTTP/1.1\r\nContent-Length: 3\r\nContent-Length: 4\r\n\r\n") << 400;
        QTest::newRow("length is no number")
            << QByteArray("PUT / HTTP/1.1\r\nContent-Length: x\r\n\r\n") << 400;
        QTest::newRow("header too long")
            << QByteArray("GET /health HTTP/1.1\r\nX: " + QByteArray(9000, 'a') + "\r\n\r\n") << 431;
        QTest::newRow("too many headers")
            << QByteArray("GET /health HTTP/1.1\r\n" + QByteArray("X: a\r\n").repeated(200) + "\r\n") << 431;
        QTest::newRow("length far too large")
            << QByteArray("PUT /health HTTP/1.1\r\nContent-Length: 99999999999\r\n\r\n") << 413;
        QTest::newRow("chunked body too large")
            << QByteArray("PUT /health HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n" +
                          ("4000\r\n" + QByteArray(0x4000, 'a') + "\r\n").repeated(10))
            << 413;
    }
    void refusesWhatIsNoHttp()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, status);
        RawHttp http(m_service.port());
        http.send(bytes);
        const RawReply reply = http.read();
        QCOMPARE(reply.status, status);
        QVERIFY(!errorCode(reply).isEmpty());
        QVERIFY(http.waitForClose());
    }

    void answersAHeadWithoutABody()
    {
        RawHttp http(m_service.port());
        QCOMPARE(http.request("HEAD", "/health").status, 405);
        QCOMPARE(http.get("/health").status, 200);
    }

    void keepsConnectionsOpen()
    {
        RawHttp http(m_service.port());
        for (int i = 0; i < 200; ++i) {
            const RawReply reply = http.get(i % 2 == 0 ? "/health" : "/elsewhere");
            QCOMPARE(reply.status, i % 2 == 0 ? 200 : 404);
            QCOMPARE(reply.headers.value("connection"), QByteArray("keep-alive"));
        }
    }

    void closesWhenAsked()
    {
        RawHttp http(m_service.port());
        QCOMPARE(http.get("/health", "Connection: close\r\n").status, 200);
        QVERIFY(http.waitForClose());
    }

    void answersAnUpgradeAsAnyOtherRequest()
    {
        RawHttp http(m_service.port());
        QCOMPARE(http.get("/health", "Connection: Upgrade\r\nUpgrade: websocket\r\n").status, 200);
        QVERIFY(http.waitForClose());
    }

    void answersPipelinedRequestsInOrder()
    {
        RawHttp http(m_service.port());
        http.send(RawHttp::getText("/task-service/plans/" + m_plan) + RawHttp::getText("/elsewhere") +
                  RawHttp::getText("/health") + RawHttp::getText("/task-service/planNodes/" + m_node));
        QCOMPARE(objectOf(http.read()).value("_id"_s).toString().toLatin1(), m_plan);
        QCOMPARE(http.read().status, 404);
        QCOMPARE(objectOf(http.read()).value("status"_s).toString(), "ok"_s);
        QCOMPARE(objectOf(http.read()).value("_id"_s).toString().toLatin1(), m_node);
    }

    void anErrorNeverOvertakesAReply()
    {
        RawHttp http(m_service.port());
        http.send(RawHttp::getText("/task-service/plans/" + m_plan) + "garbage\r\n\r\n");
        QCOMPARE(http.read().status, 200);
        QCOMPARE(http.read().status, 400);
    }

    void waitsForASlowSender()
    {
        RawHttp http(m_service.port());
        const QByteArray request = RawHttp::getText("/health");
        for (const char byte : request) {
            http.send(QByteArray(1, byte));
        }
        QCOMPARE(http.read().status, 200);
    }

    void givesUpOnASenderThatStops_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("nothing at all") << QByteArray();
        QTest::newRow("half a line") << QByteArray("GET /hea");
        QTest::newRow("half a body") << QByteArray("PUT /health HTTP/1.1\r\nContent-Length: 10\r\n\r\nabc");
    }
    void givesUpOnASenderThatStops()
    {
        QFETCH(QByteArray, bytes);
        RawHttp http(m_service.port());
        http.send(bytes);
        QVERIFY(http.waitForClose());
        QCOMPARE(RawHttp(m_service.port()).get("/health").status, 200);
    }

    void keepsSettings_data()
    {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<QByteArray>("value");
        QTest::newRow("list") << QByteArray("plan_hideHeader") << QByteArray("[\"name\",\"startDate\"]");
        QTest::newRow("object") << QByteArray("o") << QByteArray("{\"a\":{\"b\":1.5}}");
        QTest::newRow("text") << QByteArray("t") << QByteArray("\"层 \\\"x\\\"\"");
        QTest::newRow("false") << QByteArray("f") << QByteArray("false");
        QTest::newRow("null") << QByteArray("n") << QByteArray("null");
        QTest::newRow("key with a slash and Chinese") << QByteArray("a%2Fb%E5%B1%82") << QByteArray("1");
    }
    void keepsSettings()
    {
        QFETCH(QByteArray, key);
        QFETCH(QByteArray, value);
        RawHttp http(m_service.port());
        const QByteArray target = "/user-service/settings/" + key;
        QCOMPARE(http.get(target).body, QByteArray("{}"));
        const QByteArray body = "{\"value\":" + value + "}";
        const RawReply put = http.request("PUT", target, body);
        QCOMPARE(put.status, 200);
        QCOMPARE(put.body, body);
        QCOMPARE(http.get(target).body, body);
    }

    void readsAChunkedBody()
    {
        RawHttp http(m_service.port());
        http.send("PUT /user-service/settings/chunked HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n"
                  "5\r\n{\"val\r\n6\r\nue\":7}\r\n0\r\n\r\n");
        QCOMPARE(http.read().body, QByteArray("{\"value\":7}"));
    }

    void serves64ClientsAtOnce()
    {
        const RawReply expected = RawHttp(m_service.port()).get("/task-service/plans/" + m_plan);
        std::vector<std::unique_ptr<RawHttp>> clients;
        for (int i = 0; i < 64; ++i) {
            clients.push_back(std::make_unique<RawHttp>(m_service.port()));
        }
        const QByteArray request = RawHttp::getText("/task-service/plans/" + m_plan);
        for (const auto& client : clients) {
            client->send(request);
        }
        for (int round = 0; round < 2; ++round) {
            for (const auto& client : clients) {
                const RawReply reply = client->read();
                QCOMPARE(reply.status, 200);
                QVERIFY(reply.body == expected.body);
                // At once, as a connection that waits longer than the read time-out is closed.
                client->send(request);
            }
        }
    }

    void logsRequestsWithoutTheirSecrets()
    {
        RawHttp http(m_service.port());
        http.get("/task-service/plans/logged%20plan?where=querySecret",
                 "Authorization: Bearer headerSecret\r\n");
        http.request("PUT", "/user-service/settings/logged", "{\"value\":\"bodySecret\"}");
        QTRY_VERIFY(m_service.log().contains("settings/logged"));
        QVERIFY(!m_service.log().contains("Secret"));
        bool found = false;
        const QList<QByteArray> lines = m_service.log().trimmed().split('\n');
        for (const QByteArray& line : lines) {
            const QJsonObject entry = QJsonDocument::fromJson(line).object();
            QVERIFY2(entry.contains("status"_s) && entry.contains("time"_s), line.constData());
            found = found || (entry.value("path"_s) == QJsonValue("/task-service/plans/logged%20plan"_s) &&
                              entry.value("status"_s) == QJsonValue(404) &&
                              entry.value("method"_s) == QJsonValue("GET"_s) &&
                              entry.value("remote"_s) == QJsonValue("127.0.0.1"_s));
        }
        QVERIFY(found);
    }
};

QTEST_GUILESS_MAIN(TestServiceHttp)
#include "TestServiceHttp.moc"
