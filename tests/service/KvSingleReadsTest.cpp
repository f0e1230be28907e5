// The two reads of a single record: the exact request, the record made of the reply, and what a failure
// leaves in the caller's record.

#include <service/KvPlanEndpoints.h>
#include <service/KvPlanNodeEndpoints.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>

#include <model/KvPlanRecordsDump.h>
#include <support/ScriptedServer.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlan;
using KvTest::fullPlanNode;
using KvTest::Reply;

class KvSingleReadsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void planRequest();
    void planNodeRequest();
    void baseAddressWithPath();
    void identifierArrivesUnchanged_data();
    void identifierArrivesUnchanged();
    void identifierTakenAsEncoded();
    void planIsRead();
    void planNodeIsRead();
    void planOfAFailureIsOverwritten_data() { failures(); }
    void planOfAFailureIsOverwritten();
    void planNodeOfAFailureIsOverwritten_data() { failures(); }
    void planNodeOfAFailureIsOverwritten();
    void nothingIsRetriedAfterAnAnswer();
    void eachCallAsksAnew();

private:
    static void failures();
    KvTest::ScriptedServer m_server;
};

void KvSingleReadsTest::init()
{
    KvBaseApi::GetInstance().setBaseApi(m_server.baseUrl());
    NetworkManager::instance().setAccessToken(QString());
}

void KvSingleReadsTest::cleanup()
{
    QCOMPARE(m_server.complaint(), QString());
    m_server.reset();
}

void KvSingleReadsTest::planRequest()
{
    NetworkManager::instance().setAccessToken(QStringLiteral("token-1"));
    m_server.enqueue(Reply::json(QJsonObject()));
    KvPlan plan;
    QVERIFY(Kv::requestPlanById(QStringLiteral("p1"), plan));
    QCOMPARE(m_server.requestCount(), 1);
    const KvTest::Request request = m_server.lastRequest();
    QCOMPARE(request.method, QByteArray("GET"));
    QCOMPARE(request.target, QByteArray("/task-service/plans/p1"));
    QCOMPARE(request.header("Host"), "127.0.0.1:" + QByteArray::number(m_server.serverPort()));
    QCOMPARE(request.header("Authorization"), QByteArray("Bearer token-1"));
    QVERIFY(request.header("Content-Type").isNull());
    QCOMPARE(request.header("Content-Length").toInt(), 0);
    QVERIFY(request.header("Cookie").isNull());
    QCOMPARE(request.body, QByteArray());
}

void KvSingleReadsTest::planNodeRequest()
{
    m_server.enqueue(Reply::json(QJsonObject()));
    KvPlanNode node;
    QVERIFY(Kv::requestPlanNodeById(QStringLiteral("n1"), node));
    QCOMPARE(m_server.requestCount(), 1);
    const KvTest::Request request = m_server.lastRequest();
    QCOMPARE(request.method, QByteArray("GET"));
    QCOMPARE(request.target, QByteArray("/task-service/planNodes/n1?expand=true"));
    QVERIFY(request.header("Authorization").isNull());
    QVERIFY(request.header("Content-Type").isNull());
    QCOMPARE(request.body, QByteArray());
}

void KvSingleReadsTest::baseAddressWithPath()
{
    KvBaseApi::GetInstance().setBaseApi(m_server.baseUrl() + QStringLiteral("site/api/"));
    m_server.enqueue(Reply::json(QJsonObject()));
    m_server.enqueue(Reply::json(QJsonObject()));
    KvPlan plan;
    QVERIFY(Kv::requestPlanById(QStringLiteral("p1"), plan));
    QCOMPARE(m_server.lastRequest().target, QByteArray("/site/api/task-service/plans/p1"));
    KvPlanNode node;
    QVERIFY(Kv::requestPlanNodeById(QStringLiteral("n1"), node));
    QCOMPARE(m_server.lastRequest().target, QByteArray("/site/api/task-service/planNodes/n1?expand=true"));
}

void KvSingleReadsTest::identifierArrivesUnchanged_data()
{
    QTest::addColumn<QString>("id");
    QTest::newRow("object id") << "65f3a1b2c3d4e5f6a7b8c9d0";
    QTest::newRow("GUID") << "{6D1F0A52-90A0-4D3E-8F57-3B1F5D3C1E11}";
    QTest::newRow("space") << "a b";
    QTest::newRow("spaces at the ends") << " a ";
    QTest::newRow("hash") << "a#b";
    QTest::newRow("percent") << "100%";
    QTest::newRow("percent and a letter that is no digit") << "50%zz";
    QTest::newRow("percent and one digit") << "a%4";
    QTest::newRow("plus") << "a+b";
    QTest::newRow("double quotes") << "a\"b\"";
    QTest::newRow("single quotes") << "a'b'";
    QTest::newRow("braces") << "{a}[b](c)";
    QTest::newRow("backslash") << "a\\b";
    QTest::newRow("ampersand and equals") << "a&b=c";
    QTest::newRow("colon and semicolon") << "a:b;c,d";
    QTest::newRow("at and dollar") << "a@b$c!d*e~f";
    QTest::newRow("angles, bar, caret, backtick") << "<a>|^`";
    QTest::newRow("Chinese") << QString::fromUtf8("三层西墙");
    QTest::newRow("emoji") << QString::fromUtf8("🏗🧱");
    QTest::newRow("umlaut, decomposed") << QString::fromUtf8("u\u0308");
    QTest::newRow("right to left") << QString::fromUtf8("קומה 3");
    QTest::newRow("control character") << QString::fromUtf8("a\tb");
    QTest::newRow("long") << QString(2000, QLatin1Char('x'));
}

void KvSingleReadsTest::identifierArrivesUnchanged()
{
    QFETCH(QString, id);
    m_server.enqueue(Reply::json(QJsonObject()));
    m_server.enqueue(Reply::json(QJsonObject()));
    KvPlan plan;
    QVERIFY(Kv::requestPlanById(id, plan));
    QCOMPARE(m_server.lastRequest().decodedPath(), QStringLiteral("/task-service/plans/") + id);
    QCOMPARE(m_server.lastRequest().query(), QByteArray());
    KvPlanNode node;
    QVERIFY(Kv::requestPlanNodeById(id, node));
    QCOMPARE(m_server.lastRequest().decodedPath(), QStringLiteral("/task-service/planNodes/") + id);
    QCOMPARE(m_server.lastRequest().query(), QByteArray("expand=true"));
}

// The one exception, for the sake of parameters that come encoded.
void KvSingleReadsTest::identifierTakenAsEncoded()
{
    m_server.enqueue(Reply::json(QJsonObject()));
    KvPlan plan;
    QVERIFY(Kv::requestPlanById(QStringLiteral("a%20b"), plan));
    QCOMPARE(m_server.lastRequest().target, QByteArray("/task-service/plans/a%20b"));
}

void KvSingleReadsTest::planIsRead()
{
    m_server.enqueue(Reply::json(QJsonObject{
        {QStringLiteral("_id"), QStringLiteral("p1")},
        {QStringLiteral("name"), QStringLiteral("主楼")},
        {QStringLiteral("tasks"), QJsonArray{QJsonObject{{QStringLiteral("_id"), QStringLiteral("n1")},
                                                         {QStringLiteral("displaySimulation"), 1}}}}}));
    KvPlan plan = fullPlan();
    QVERIFY(Kv::requestPlanById(QStringLiteral("p1"), plan));
    QCOMPARE(plan.id, QStringLiteral("p1"));
    QCOMPARE(plan.name, QStringLiteral("主楼"));
    QCOMPARE(plan.planNodes.size(), 1);
    QCOMPARE(plan.planNodes.first().id, QStringLiteral("n1"));
    QCOMPARE(plan.planNodes.first().displaySimulation, true);
    QCOMPARE(plan.category, QString());
}

void KvSingleReadsTest::planNodeIsRead()
{
    m_server.enqueue(
        Reply::json(QJsonObject{{QStringLiteral("_id"), QStringLiteral("n1")},
                                {QStringLiteral("documents"),
                                 QJsonArray{QJsonObject{{QStringLiteral("_id"), QStringLiteral("d1")}}}}}));
    KvPlanNode node;
    QVERIFY(Kv::requestPlanNodeById(QStringLiteral("n1"), node));
    QCOMPARE(node.id, QStringLiteral("n1"));
    QCOMPARE(node.guid, QStringLiteral("n1"));
    QCOMPARE(node.documents.size(), 1);
    QCOMPARE(node.documents.first().id, QStringLiteral("d1"));
}

void KvSingleReadsTest::failures()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("404 with a record") << 404 << QByteArray(R"({"_id": "p1", "name": "told in vain"})");
    QTest::newRow("500 with HTML") << 500 << QByteArray("<html></html>");
    QTest::newRow("broken JSON") << 200 << QByteArray(R"({"_id": "p1", )");
    QTest::newRow("no body") << 200 << QByteArray();
}

void KvSingleReadsTest::planOfAFailureIsOverwritten()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    m_server.enqueue(Reply::text(body, "application/json", status));
    KvPlan plan = fullPlan();
    KvPlan wanted;
    wanted.mppFilePath = plan.mppFilePath;
    wanted.isPublic = 0;
    QVERIFY(!Kv::requestPlanById(QStringLiteral("p1"), plan));
    QCOMPARE(difference(dump(plan), dump(wanted)), QString());
}

void KvSingleReadsTest::planNodeOfAFailureIsOverwritten()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    m_server.enqueue(Reply::text(body, "application/json", status));
    KvPlanNode node = fullPlanNode();
    const KvPlanNode before = node;
    QVERIFY(!Kv::requestPlanNodeById(QStringLiteral("n1"), node));
    QCOMPARE(node.id, QString());
    QCOMPARE(node.name, QString());
    QCOMPARE(node.planNodeId, 0);
    QVERIFY(node.links.isEmpty() && node.documents.isEmpty() && node.userIds.isEmpty());
    // What the reader of a node leaves alone.
    QCOMPARE(node.notes, before.notes);
    QCOMPARE(node.children.size(), before.children.size());
    QCOMPARE(node.predecessors.size(), before.predecessors.size());
}

void KvSingleReadsTest::nothingIsRetriedAfterAnAnswer()
{
    m_server.enqueue(Reply::json(QJsonObject(), 503));
    KvPlan plan;
    QVERIFY(!Kv::requestPlanById(QStringLiteral("p1"), plan));
    QCOMPARE(m_server.requestCount(), 1);
}

void KvSingleReadsTest::eachCallAsksAnew()
{
    KvPlan plan;
    for (int turn = 1; turn <= 3; ++turn) {
        m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("name"), QString::number(turn)}}));
        QVERIFY(Kv::requestPlanById(QStringLiteral("p1"), plan));
        QCOMPARE(plan.name, QString::number(turn));
    }
    QCOMPARE(m_server.requestCount(), 3);
}

QTEST_GUILESS_MAIN(KvSingleReadsTest)
#include "KvSingleReadsTest.moc"
