// Whatever the network and the service do wrong: false, an emptied record, nothing cached, in time, and the
// next request works. And what a host may do while it waits.

#include <plandata/KvPlanData.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>

#include <model/KvPlanRecordsDump.h>
#include <support/ScriptedServer.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlan;
using KvTest::fullPlanNode;
using KvTest::Reply;
using KvTest::ScriptedServer;
using KvTest::TlsIdentity;

namespace {

constexpr int shortTimeoutMs = 200;
// Every fault ends long before; the rest is what a busy machine may add.
constexpr int latestMs = 10000;
const char* const token = "token-that-nobody-may-see";

const QString p1 = QStringLiteral("p1");
const QByteArray planBody = R"({"_id": "p1", "name": "told in vain", "tasks": [{"_id": "n1"}]})";

Reply planReply(const QByteArray& body = planBody, int status = 200)
{
    return Reply::text(body, "application/json", status);
}

Reply html(int status)
{
    return Reply::text("<html><body>It did not work.</body></html>", "text/html", status);
}

} // namespace

Q_DECLARE_METATYPE(Reply)

class KvPlanDataFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void fault_data();
    void fault();
    void nodeFault_data() { fault_data(); }
    void nodeFault();
    void refused();
    void unusableAddress_data();
    void unusableAddress();
    void redirectElsewhere();
    void wrongCertificate();
    void otherShape_data();
    void otherShape();

private:
    void verifyFailure(const std::function<bool(KvPlan&)>& read);
    void verifyNothingCached();
    void verifyNextReadWorks();

    ScriptedServer m_server;
    QList<KvNetworkReport> m_reports;
};

void KvPlanDataFaultsTest::init()
{
    KvBaseApi::GetInstance().setBaseApi(m_server.baseUrl());
    NetworkManager& network = NetworkManager::instance();
    network.setAccessToken(QLatin1String(token));
    network.setTimeout(0);
    network.setReplySizeLimit(0);
    connect(&network, &NetworkManager::requestFinished, this,
            [this](const KvNetworkReport& report) { m_reports.append(report); });
    KvPlanData::instance()->clear();
}

void KvPlanDataFaultsTest::cleanup()
{
    disconnect(&NetworkManager::instance(), nullptr, this, nullptr);
    for (const KvNetworkReport& report : qAsConst(m_reports))
        QVERIFY2(!report.message.contains(QLatin1String(token)), qPrintable(report.message));
    m_reports.clear();
    m_server.reset();
}

void KvPlanDataFaultsTest::verifyFailure(const std::function<bool(KvPlan&)>& read)
{
    KvPlan plan = fullPlan();
    KvPlan wanted; // the record of an object without keys
    wanted.isPublic = 0;
    wanted.mppFilePath = plan.mppFilePath;
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!read(plan));
    QVERIFY2(clock.elapsed() < latestMs, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(difference(dump(plan), dump(wanted)), QString());
    QCOMPARE(m_reports.size(), 1);
    QVERIFY(m_reports.first().category != KvNetworkReport::Ok);
}

void KvPlanDataFaultsTest::verifyNothingCached()
{
    for (const QString& id : {p1, QString()}) {
        QVERIFY(KvPlanData::instance()->getPlanName(id).isNull());
        const int before = m_reports.size();
        KvPlan plan;
        QVERIFY(!KvPlanData::instance()->getPlanFromCacheById(id, plan));
        QCOMPARE(m_reports.size(), before + 1); // so it had to ask
    }
}

void KvPlanDataFaultsTest::verifyNextReadWorks()
{
    NetworkManager::instance().setTimeout(0);
    NetworkManager::instance().setReplySizeLimit(0);
    KvBaseApi::GetInstance().setBaseApi(m_server.baseUrl());
    m_server.setHandler([](const KvTest::Request&) { return planReply(); });
    KvPlan plan;
    QVERIFY(KvPlanData::instance()->getPlanById(p1, plan));
    QCOMPARE(plan.planNodes.size(), 1);
    QCOMPARE(KvPlanData::instance()->getPlanName(p1), QStringLiteral("told in vain"));
}

void KvPlanDataFaultsTest::fault_data()
{
    QTest::addColumn<Reply>("reply");
    const auto faulty = [](Reply::Fault fault) {
        return planReply().with(fault);
    };
    QTest::newRow("closed unanswered") << faulty(Reply::CloseUnanswered);
    QTest::newRow("reset unanswered") << faulty(Reply::ResetUnanswered);
    QTest::newRow("reset in the body") << faulty(Reply::ResetInBody);
    QTest::newRow("truncated") << faulty(Reply::Truncate);
    QTest::newRow("stalled before the headers") << faulty(Reply::StallBeforeHeaders);
    QTest::newRow("stalled in the body") << faulty(Reply::StallInBody);
    QTest::newRow("no HTTP") << faulty(Reply::Garbage);
    QTest::newRow("endless") << faulty(Reply::EndlessBody);
    Reply tooLarge = planReply("{\"name\": \"" + QByteArray(200000, 'x') + "\"}");
    QTest::newRow("over-size") << tooLarge;
    tooLarge.noLength = true;
    QTest::newRow("over-size without a length") << tooLarge;
    for (const int status : {400, 401, 403, 404, 409, 500, 503})
        QTest::addRow("%d with HTML", status) << html(status);
    for (const int status : {400, 404, 500})
        QTest::addRow("%d with a plan", status) << planReply(planBody, status);
    QTest::newRow("304") << Reply::empty(304);
    QTest::newRow("200 with HTML") << html(200);
    QTest::newRow("200 without a body") << planReply("");
    QTest::newRow("blank body") << planReply(" \n ");
    QTest::newRow("broken JSON") << planReply(R"({"_id": "p1", "name": )");
    QTest::newRow("something behind the JSON") << planReply(R"({"_id": "p1"} and more)");
    QTest::newRow("100,000-deep nested array")
        << planReply(QByteArray(100000, '[') + QByteArray(100000, ']'));
    QByteArray deep;
    for (int level = 0; level < 100000; ++level)
        deep += R"({"tasks":)";
    QTest::newRow("100,000-deep nested object") << planReply(deep + "1" + QByteArray(100000, '}'));
    QTest::newRow("invalid UTF-8") << planReply("{\"_id\": \"p1\", \"name\": \"\xc3\x28\xff\"}");
    QTest::newRow("cut UTF-8") << planReply("{\"_id\": \"p1\", \"name\": \"\xe4\xb8\"}");
    QTest::newRow("redirect loop") << Reply::redirect("/task-service/plans/p1");
    QTest::newRow("redirect without an address") << Reply::empty(302);
}

void KvPlanDataFaultsTest::fault()
{
    QFETCH(Reply, reply);
    m_server.setHandler([&](const KvTest::Request&) { return reply; });
    NetworkManager::instance().setTimeout(shortTimeoutMs);
    NetworkManager::instance().setReplySizeLimit(100000);
    // Nesting is what shall be refused here, not size.
    if (reply.body.startsWith("[[") || reply.body.startsWith("{\"tasks\":{"))
        NetworkManager::instance().setReplySizeLimit(0);
    verifyFailure([](KvPlan& plan) { return KvPlanData::instance()->getPlanById(p1, plan); });
    QCOMPARE(m_server.requests().first().target, QByteArray("/task-service/plans/p1"));
    verifyNothingCached();
    verifyNextReadWorks();
}

void KvPlanDataFaultsTest::nodeFault()
{
    QFETCH(Reply, reply);
    m_server.setHandler([&](const KvTest::Request&) { return reply; });
    NetworkManager::instance().setTimeout(shortTimeoutMs);
    NetworkManager::instance().setReplySizeLimit(100000);
    KvPlanNode node = fullPlanNode();
    KvPlanNode wanted = node;
    QVERIFY(!KvPlanData::instance()->getPlanNodeFromCacheById(p1, node));
    QCOMPARE(node.id, QString());
    QCOMPARE(node.name, QString());
    QCOMPARE(node.notes, wanted.notes);
    // Nothing cached: the next read asks.
    NetworkManager::instance().setTimeout(0);
    m_server.setHandler([](const KvTest::Request&) { return planReply(R"({"_id": "n", "name": "wall"})"); });
    QVERIFY(KvPlanData::instance()->getPlanNodeFromCacheById(p1, node));
    QCOMPARE(node.name, QStringLiteral("wall"));
}

void KvPlanDataFaultsTest::refused()
{
    KvBaseApi::GetInstance().setBaseApi(ScriptedServer::refusingUrl());
    verifyFailure([](KvPlan& plan) { return KvPlanData::instance()->getPlanById(p1, plan); });
    QCOMPARE(m_reports.first().category, KvNetworkReport::Refused);
    verifyNothingCached();
    verifyNextReadWorks();
}

void KvPlanDataFaultsTest::unusableAddress_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("none") << "";
    QTest::newRow("no scheme") << "127.0.0.1/";
    QTest::newRow("another scheme") << "file:///etc/";
    QTest::newRow("no host") << "http:///";
    QTest::newRow("no port") << "http://127.0.0.1:99999/";
}

void KvPlanDataFaultsTest::unusableAddress()
{
    QFETCH(QString, address);
    KvBaseApi::GetInstance().setBaseApi(address);
    verifyFailure([](KvPlan& plan) { return KvPlanData::instance()->getPlanById(p1, plan); });
    verifyNothingCached();
    verifyNextReadWorks();
}

void KvPlanDataFaultsTest::redirectElsewhere()
{
    ScriptedServer elsewhere;
    elsewhere.setHandler([](const KvTest::Request&) { return planReply(); });
    const QByteArray address = elsewhere.baseUrl().toLatin1() + "task-service/plans/p1";
    m_server.setHandler([&](const KvTest::Request&) { return Reply::redirect(address, 307); });
    verifyFailure([](KvPlan& plan) { return KvPlanData::instance()->getPlanById(p1, plan); });
    verifyNothingCached();
    QCOMPARE(elsewhere.requestCount(), 0);
    verifyNextReadWorks();
}

void KvPlanDataFaultsTest::wrongCertificate()
{
    const TlsIdentity identity = TlsIdentity::selfSigned(QStringLiteral("schedule.example"));
    QVERIFY(!identity.isNull());
    ScriptedServer secure(identity);
    secure.setHandler([](const KvTest::Request&) { return planReply(); });
    KvBaseApi::GetInstance().setBaseApi(secure.baseUrl());
    verifyFailure([](KvPlan& plan) { return KvPlanData::instance()->getPlanById(p1, plan); });
    QCOMPARE(m_reports.first().category, KvNetworkReport::Tls);
    verifyNothingCached();
    QCOMPARE(secure.requestCount(), 0);
    verifyNextReadWorks();
}

// JSON of another shape than asked for is no failure of the request: it reads as an object without keys.
void KvPlanDataFaultsTest::otherShape_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("nodes");
    QTest::newRow("array") << QByteArray(R"([{"_id": "p1", "name": "told in vain"}])") << 0;
    QTest::newRow("text") << QByteArray(R"("p1")") << 0;
    QTest::newRow("number") << QByteArray("3") << 0;
    QTest::newRow("null") << QByteArray("null") << 0;
    QTest::newRow("empty array") << QByteArray("[]") << 0;
    QTest::newRow("empty object") << QByteArray("{}") << 0;
    QTest::newRow("object of something else") << QByteArray(R"({"count": 3})") << 0;
    QTest::newRow("every value of another type")
        << QByteArray(R"({"_id": 1, "name": [], "createdAt": {}, "public": "x", "ranges": 3, "tasks": "x"})")
        << 0;
    QTest::newRow("tasks that are none") << QByteArray(R"({"tasks": [1, "x", null]})") << 3;
}

void KvPlanDataFaultsTest::otherShape()
{
    QFETCH(QByteArray, body);
    QFETCH(int, nodes);
    m_server.enqueue(planReply(body));
    KvPlan plan = fullPlan();
    KvPlan wanted;
    wanted.isPublic = 0;
    wanted.mppFilePath = plan.mppFilePath;
    QVERIFY(KvPlanData::instance()->getPlanById(p1, plan));
    QCOMPARE(plan.planNodes.size(), nodes);
    plan.planNodes.clear();
    QCOMPARE(difference(dump(plan), dump(wanted)), QString());
    KvPlan cached = fullPlan(2);
    QVERIFY(KvPlanData::instance()->getPlanFromCacheById(p1, cached));
    QCOMPARE(cached.planNodes.size(), nodes);
    QCOMPARE(cached.id, QString());
    QCOMPARE(m_server.requestCount(), 1);
}

QTEST_GUILESS_MAIN(KvPlanDataFaultsTest)
#include "KvPlanDataFaultsTest.moc"
