// Under which key the facade's caches keep a record, and whose the records are that it hands out.

#include "KvPlanOperationsFixture.h"
#include "ServiceReplies.h"

using KvTest::nodeReply;
using KvTest::planReply;

namespace {

const QString n2 = QStringLiteral("n2");

} // namespace

class KvPlanDataKeysTest : public KvPlanOperationsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void cacheIsKeyedByTheRequestedId();
    void nodeCacheIsKeyedByTheRequestedId();
    void keysAreComparedExactly();
    void emptyIdIsAKeyLikeAnyOther();
    void recordsGivenOutAreCopies();
    void idMayBeTheRecordsOwn();
    void idMayBeANodesOwn();
    void planAndNodeCachesAreApart();
    void nodesOfAPlanAreNotCachedAsNodes();

private:
    int requests() const { return m_server.requestCount(); }
};

void KvPlanDataKeysTest::cacheIsKeyedByTheRequestedId()
{
    m_server.enqueue(planReply(p2, QStringLiteral("renamed")));
    KvPlan plan;
    QVERIFY(data().getPlanById(p1, plan));
    QCOMPARE(plan.id, p2);
    QCOMPARE(data().getPlanName(p1), QStringLiteral("renamed"));
    QVERIFY(data().getPlanName(p2).isNull());
    KvPlan cached;
    QVERIFY(data().getPlanFromCacheById(p1, cached));
    QCOMPARE(cached.id, p2);
    m_server.enqueue(planReply(p2, QStringLiteral("itself"))); // which is not cached
    QVERIFY(data().getPlanFromCacheById(p2, cached));
    QCOMPARE(requests(), 2);
}

void KvPlanDataKeysTest::nodeCacheIsKeyedByTheRequestedId()
{
    m_server.enqueue(nodeReply(n2, QStringLiteral("renamed")));
    m_server.enqueue(nodeReply(n2, QStringLiteral("itself")));
    KvPlanNode node;
    QVERIFY(data().getPlanNodeFromCacheById(n1, node));
    QVERIFY(data().getPlanNodeFromCacheById(n2, node));
    QCOMPARE(requests(), 2);
    QVERIFY(data().getPlanNodeFromCacheById(n1, node));
    QCOMPARE(node.name, QStringLiteral("renamed"));
}

void KvPlanDataKeysTest::keysAreComparedExactly()
{
    KvPlan plan;
    const QStringList ids{QStringLiteral("a"), QStringLiteral("A"),       QStringLiteral("a "),
                          QStringLiteral("ä"), QStringLiteral("a\u0308"), QStringLiteral("楼")};
    for (const QString& id : ids) {
        m_server.enqueue(planReply(id, QStringLiteral("name of ") + id));
        QVERIFY(data().getPlanFromCacheById(id, plan));
    }
    QCOMPARE(requests(), ids.size());
    for (const QString& id : ids)
        QCOMPARE(data().getPlanName(id), QStringLiteral("name of ") + id);
}

void KvPlanDataKeysTest::emptyIdIsAKeyLikeAnyOther()
{
    m_server.enqueue(planReply(QString(), QStringLiteral("nobody's")));
    KvPlan plan;
    QVERIFY(data().getPlanById(QString(), plan));
    QCOMPARE(m_server.lastRequest().target, QByteArray("/task-service/plans/"));
    QCOMPARE(data().getPlanName(QLatin1String("")), QStringLiteral("nobody's"));
}

void KvPlanDataKeysTest::recordsGivenOutAreCopies()
{
    m_server.enqueue(planReply(p1, QStringLiteral("one")));
    m_server.enqueue(nodeReply(n1, QStringLiteral("wall")));
    KvPlan plan;
    KvPlanNode node;
    QVERIFY(data().getPlanById(p1, plan));
    QVERIFY(data().getPlanNodeFromCacheById(n1, node));
    for (int turn = 0; turn < 2; ++turn) { // the record that was read, then one from the cache
        plan.name = QStringLiteral("edited");
        plan.planNodes.first().name = QStringLiteral("edited");
        plan.planNodes.append(KvPlanNode());
        node.name = QStringLiteral("edited");
        QVERIFY(data().getPlanFromCacheById(p1, plan));
        QVERIFY(data().getPlanNodeFromCacheById(n1, node));
        QCOMPARE(plan.name, QStringLiteral("one"));
        QCOMPARE(plan.planNodes.size(), 1);
        QCOMPARE(plan.planNodes.first().name, QStringLiteral("node of one"));
        QCOMPARE(node.name, QStringLiteral("wall"));
    }
    QCOMPARE(requests(), 2);
}

void KvPlanDataKeysTest::idMayBeTheRecordsOwn()
{
    KvPlan plan;
    plan.id = p1;
    m_server.enqueue(planReply(p2, QStringLiteral("renamed")));
    QVERIFY(data().getPlanById(plan.id, plan));
    QCOMPARE(m_server.lastRequest().target, QByteArray("/task-service/plans/p1"));
    QCOMPARE(plan.id, p2);
    QCOMPARE(data().getPlanName(p1), QStringLiteral("renamed"));
    QVERIFY(data().getPlanName(p2).isNull());

    plan.id = p1;
    QVERIFY(data().getPlanFromCacheById(plan.id, plan));
    QCOMPARE(plan.id, p2);
    plan.planNodes = {KvPlanNode()};
    plan.planNodes.first().id = QStringLiteral("p3"); // goes away with the nodes while it is being read
    m_server.enqueue(planReply(QStringLiteral("p3"), QStringLiteral("three")));
    QVERIFY(data().getPlanFromCacheById(plan.planNodes.first().id, plan));
    QCOMPARE(data().getPlanName(QStringLiteral("p3")), QStringLiteral("three"));
}

void KvPlanDataKeysTest::idMayBeANodesOwn()
{
    KvPlanNode node;
    node.id = n1;
    m_server.enqueue(nodeReply(n2, QStringLiteral("renamed")));
    QVERIFY(data().getPlanNodeFromCacheById(node.id, node));
    QCOMPARE(node.id, n2);
    node.id = n1;
    QVERIFY(data().getPlanNodeFromCacheById(node.id, node));
    QCOMPARE(node.id, n2);
    QCOMPARE(requests(), 1);
}

void KvPlanDataKeysTest::planAndNodeCachesAreApart()
{
    m_server.enqueue(planReply(p1, QStringLiteral("plan")));
    m_server.enqueue(nodeReply(p1, QStringLiteral("node")));
    KvPlan plan;
    KvPlanNode node;
    QVERIFY(data().getPlanFromCacheById(p1, plan));
    QVERIFY(data().getPlanNodeFromCacheById(p1, node));
    QCOMPARE(requests(), 2);
    QCOMPARE(node.name, QStringLiteral("node"));
    QCOMPARE(data().getPlanName(p1), QStringLiteral("plan"));
}

void KvPlanDataKeysTest::nodesOfAPlanAreNotCachedAsNodes()
{
    m_server.enqueue(planReply(p1, QStringLiteral("plan")));
    m_server.enqueue(nodeReply(QStringLiteral("p1-n"), QStringLiteral("asked for")));
    KvPlan plan;
    KvPlanNode node;
    QVERIFY(data().getPlanById(p1, plan));
    QVERIFY(data().getPlanNodeFromCacheById(plan.planNodes.first().id, node));
    QCOMPARE(requests(), 2);
    QCOMPARE(node.name, QStringLiteral("asked for"));
}

QTEST_GUILESS_MAIN(KvPlanDataKeysTest)
#include "KvPlanDataKeysTest.moc"
