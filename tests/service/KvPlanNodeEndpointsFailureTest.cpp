// What a request for plan nodes that fails leaves in the caller's records, whatever came instead of an
// answer.

#include "KvPlanNodeCalls.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvSoftBase/KvSoftBase.h>

#include <support/BadReplies.h>
#include <support/ScriptedServer.h>

#include <QtTest/QtTest>

#include <memory>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlanNode;
using KvTest::Reply;

class KvPlanNodeEndpointsFailureTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void failure_data() { KvTest::failedReplies(nodeObject(told, told)); }
    void failure();
    void tooLarge();
    void nobodyListens();

private:
    void serveAnew();
    void verifyFailures(const std::function<void()>& prepare);

    std::unique_ptr<KvTest::ScriptedServer> m_server;
};

void KvPlanNodeEndpointsFailureTest::init()
{
    serveAnew();
    GetSoftCache()->setCurrentProjectId(QStringLiteral("project-1"));
}

void KvPlanNodeEndpointsFailureTest::cleanup()
{
    NetworkManager::instance().setReplySizeLimit(0);
    QCOMPARE(m_server->complaint(), QString());
}

// A server of its own for what is answered by breaking the connection.
void KvPlanNodeEndpointsFailureTest::serveAnew()
{
    m_server = std::make_unique<KvTest::ScriptedServer>();
    KvBaseApi::GetInstance().setBaseApi(m_server->baseUrl());
}

// Every endpoint, each after `prepare` has made the next request fail.
void KvPlanNodeEndpointsFailureTest::verifyFailures(const std::function<void()>& prepare)
{
    for (const NodeCall& call : {readOne, create, update}) {
        prepare();
        KvPlanNode node = fullPlanNode();
        QVERIFY(!call(node));
        QCOMPARE(difference(dump(node), dump(emptied(fullPlanNode()))), QString());
    }
    for (const ListCall& call : {readPage, readPlans, readTodo}) {
        prepare();
        QList<KvPlanNode> nodes{fullPlanNode(1), fullPlanNode(2)};
        QVERIFY(!call(nodes));
        QCOMPARE(nodes.size(), 2);
        QCOMPARE(difference(dump(nodes.at(0)), dump(fullPlanNode(1))), QString());
        QCOMPARE(difference(dump(nodes.at(1)), dump(fullPlanNode(2))), QString());
    }
    for (const ListCall& call : {createMany, updateMany}) {
        prepare();
        QList<KvPlanNode> nodes{fullPlanNode(1), fullPlanNode(2)};
        QVERIFY(!call(nodes));
        QVERIFY(nodes.isEmpty());
    }
    prepare();
    int count = 77;
    QVERIFY(!Kv::requestPlanNodeRangeCount(ofP1(), count));
    QCOMPARE(count, 0);
    prepare();
    QVERIFY(!Kv::requestDeletePlanNode(n1));
    prepare();
    QVERIFY(!Kv::requestDeletePlanNodes({n1}));
}

void KvPlanNodeEndpointsFailureTest::failure()
{
    QFETCH(Reply, reply);
    QString complaints;
    verifyFailures([&] {
        // Nothing is retried after an answer: a second request would be an unexpected one.
        complaints += m_server->complaint();
        serveAnew();
        m_server->enqueue(reply);
    });
    QCOMPARE(complaints, QString());
}

void KvPlanNodeEndpointsFailureTest::tooLarge()
{
    NetworkManager::instance().setReplySizeLimit(100000);
    QJsonObject object = nodeObject(told, QString(110000, QLatin1Char('x')));
    object.insert(QStringLiteral("count"), 5);
    verifyFailures([&] {
        serveAnew();
        m_server->enqueue(Reply::json(object));
    });
}

void KvPlanNodeEndpointsFailureTest::nobodyListens()
{
    verifyFailures([] { KvBaseApi::GetInstance().setBaseApi(KvTest::ScriptedServer::refusingUrl()); });
}

QTEST_GUILESS_MAIN(KvPlanNodeEndpointsFailureTest)
#include "KvPlanNodeEndpointsFailureTest.moc"
