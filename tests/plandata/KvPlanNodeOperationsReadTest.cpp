// Reading plan nodes through the exported interface: what is asked, what is told, and the node cache.

#include "KvPlanNodeOperationsFixture.h"

#include <model/KvPlanRecordsDump.h>

#include <type_traits>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlanNode;
using KvTest::Reply;

template<class Signature>
using Operation = Signature KvPlanData::*;
using NodeList = QList<KvPlanNode>;
static_assert(
    std::is_same_v<decltype(&KvPlanData::getPlanNodeById), Operation<bool(const QString&, KvPlanNode&)>>);
static_assert(
    std::is_same_v<decltype(&KvPlanData::getPlanNodesByPlanId), Operation<bool(const QString&, NodeList&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::getPlanNodesByPlanIds),
                             Operation<bool(const QStringList&, NodeList&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::getAllPlanNodes),
                             Operation<bool(int, int, NodeList&, const QString&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::getPlanNodeRangeCount),
                             Operation<bool(const KvPlanNodeCondition&, int&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::getPlanNodeRangeData),
                             Operation<bool(const KvPlanNodeCondition&, int, int, NodeList&)>>);

class KvPlanNodeOperationsReadTest : public KvPlanNodeOperationsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void nodeIsReadAndCached();
    void nodeIsCachedUnderTheRequestedId();
    void failedReadKeepsTheCachedNode();
    void idMayBeTheNodesOwn();
    void nodesOfOnePlan();
    void nodesOfPlansAreCached();
    void categoryOfTheFirstPlan_data();
    void categoryOfTheFirstPlan();
    void planOfTheCategoryIsCached();
    void nodesOfNoPlans();
    void failedReadOfPlansIsTrueAllTheSame();
    void todoList();
    void count();
    void pageEmptiesTheNodeCache();
    void failedPageKeepsTheNodeCache();
    void pageWithoutPlanAsksNobody();

private:
    QByteArray nodesTarget(const QByteArray& planIds, const QByteArray& category) const
    {
        return "GET /task-service/projects/project-1/planNodes?where=%7B%22planId%22:%7B%22$in%22:%5B" +
               planIds + "%5D%7D%7D&category=" + category + "&expand=true";
    }
    static QJsonObject planOf(const QString& id, const QString& category)
    {
        return {{QStringLiteral("_id"), id}, {QStringLiteral("category"), category}};
    }
};

void KvPlanNodeOperationsReadTest::nodeIsReadAndCached()
{
    for (const QString& name : {one, two}) { // asks each time
        m_server.enqueue(Reply::json(record(n1, name)));
        KvPlanNode node;
        QVERIFY(data().getPlanNodeById(n1, node));
        QCOMPARE(node.name, name);
        QCOMPARE(cachedName(n1), name);
    }
    const QByteArray target("GET /task-service/planNodes/n1?expand=true");
    QCOMPARE(targets(), (QByteArrayList{target, target}));
    KvPlanNode cached = fullPlanNode();
    QVERIFY(isCached(n1, cached));
    KvPlanNode wanted;
    wanted.id = wanted.guid = n1;
    wanted.name = two;
    wanted.planNodeId = wanted.uniqueId = wanted.parentTaskId = 0;
    wanted.displaySimulation = false;
    QCOMPARE(difference(dump(cached), dump(wanted)), QString());
}

void KvPlanNodeOperationsReadTest::nodeIsCachedUnderTheRequestedId()
{
    m_server.enqueue(Reply::json(record(n2, one)));
    KvPlanNode node;
    QVERIFY(data().getPlanNodeById(n1, node));
    QCOMPARE(node.id, n2);
    QCOMPARE(cachedName(n1), one);
    QCOMPARE(cachedName(n2), QStringLiteral("-"));
}

void KvPlanNodeOperationsReadTest::failedReadKeepsTheCachedNode()
{
    readNodeAs(n1, one);
    m_server.enqueue(Reply::json(record(n1, two), 500));
    m_server.enqueue(Reply::json(record(n2, two), 404));
    KvPlanNode node = fullPlanNode();
    QVERIFY(!data().getPlanNodeById(n1, node));
    QCOMPARE(node.name, QString());
    QCOMPARE(cachedName(n1), one);
    QVERIFY(!data().getPlanNodeById(n2, node));
    QCOMPARE(cachedName(n2), QStringLiteral("-"));
    QCOMPARE(cachedName(QString()), QStringLiteral("-"));
}

void KvPlanNodeOperationsReadTest::idMayBeTheNodesOwn()
{
    m_server.enqueue(Reply::json(record(n2, one)));
    KvPlanNode node = nodeOf(n1, two);
    QVERIFY(data().getPlanNodeById(node.id, node));
    QCOMPARE(node.id, n2);
    QCOMPARE(cachedName(n1), one);
}

void KvPlanNodeOperationsReadTest::nodesOfOnePlan()
{
    m_server.enqueue(Reply::json(planOf(p1, QStringLiteral("c"))));
    m_server.enqueue(Reply::json(QJsonArray{record(n2, two), record(n1, one)}));
    NodeList nodes{nodeOf(n3, changed)};
    QVERIFY(data().getPlanNodesByPlanId(p1, nodes));
    QCOMPARE(targets(), (QByteArrayList{"GET /task-service/plans/p1", nodesTarget("%22p1%22", "c")}));
    QCOMPARE(namesOfNodes(nodes), (QStringList{changed, two, one}));
    QCOMPARE(cachedName(n1), one);
    QCOMPARE(cachedName(n2), two);
    QCOMPARE(cachedName(n3), QStringLiteral("-")); // was there before, and was not returned
    // With the plan in the cache, and a failure that is not told.
    m_server.forgetRequests();
    m_server.enqueue(Reply::json(QJsonArray{record(n3, one)}, 500));
    QVERIFY(data().getPlanNodesByPlanId(p1, nodes));
    QCOMPARE(targets(), QByteArrayList{nodesTarget("%22p1%22", "c")});
    QCOMPARE(nodes.size(), 3);
}

void KvPlanNodeOperationsReadTest::nodesOfPlansAreCached()
{
    readPlan(p1, one);
    readNodeAs(n1, QStringLiteral("old"));
    readNodeAs(n3, QStringLiteral("kept"));
    m_server.enqueue(Reply::json(
        QJsonArray{record(n1, one), record(n2, one), record(n2, two), record(QString(), changed)}));
    NodeList nodes;
    QVERIFY(data().getPlanNodesByPlanIds({p1, p2}, nodes));
    QCOMPARE(namesOfNodes(nodes), (QStringList{one, one, two, changed}));
    QCOMPARE(cachedName(n1), one);
    QCOMPARE(cachedName(n2), two); // the later of two
    QCOMPARE(cachedName(n3), QStringLiteral("kept"));
    QCOMPARE(cachedName(QString()), changed);
}

void KvPlanNodeOperationsReadTest::categoryOfTheFirstPlan_data()
{
    QTest::addColumn<QStringList>("cachedPlans"); // of the category "cat of " and the id
    QTest::addColumn<QStringList>("planIds");
    QTest::addColumn<int>("status"); // of the plan's read; 0: none is due
    QTest::addColumn<QByteArray>("expected");
    const QByteArray both("%22p1%22,%22p2%22");
    QTest::newRow("first is cached") << QStringList{p1} << QStringList{p1, p2} << 0
                                     << nodesTarget(both, "cat%20of%20p1");
    QTest::newRow("first of two that are cached") << QStringList{p1, p2} << QStringList{p2, p1} << 0
                                                  << nodesTarget("%22p2%22,%22p1%22", "cat%20of%20p2");
    QTest::newRow("only the second is cached")
        << QStringList{p2} << QStringList{p1, p2} << 200 << nodesTarget(both, "asked");
    QTest::newRow("none is cached") << QStringList() << QStringList{p1, p2} << 200
                                    << nodesTarget(both, "asked");
    QTest::newRow("cannot be read") << QStringList{p2} << QStringList{p1, p2} << 404 << nodesTarget(both, "");
    QTest::newRow("empty id") << QStringList{p2} << QStringList{QString(), p2} << 200
                              << nodesTarget("null,%22p2%22", "asked");
}

void KvPlanNodeOperationsReadTest::categoryOfTheFirstPlan()
{
    QFETCH(QStringList, cachedPlans);
    QFETCH(QStringList, planIds);
    QFETCH(int, status);
    QFETCH(QByteArray, expected);
    for (const QString& id : qAsConst(cachedPlans)) {
        m_server.enqueue(Reply::json(planOf(id, QStringLiteral("cat of ") + id)));
        KvPlan plan;
        QVERIFY(data().getPlanById(id, plan));
    }
    m_server.forgetRequests();
    QByteArrayList wanted{expected};
    if (status != 0) {
        m_server.enqueue(Reply::json(planOf(planIds.first(), QStringLiteral("asked")), status));
        wanted.prepend("GET /task-service/plans/" + planIds.first().toLatin1());
    }
    m_server.enqueue(Reply::json(QJsonArray()));
    NodeList nodes;
    QVERIFY(data().getPlanNodesByPlanIds(planIds, nodes));
    QCOMPARE(targets(), wanted);
}

void KvPlanNodeOperationsReadTest::planOfTheCategoryIsCached()
{
    m_server.enqueue(Reply::json(record(p1, one)));
    m_server.enqueue(Reply::json(QJsonArray(), 500));
    NodeList nodes;
    QVERIFY(data().getPlanNodesByPlanIds({p1, p2}, nodes));
    QCOMPARE(data().getPlanName(p1), one);
    QCOMPARE(data().getAllPlanNames(), QStringList{one});
    // One that cannot be read is not.
    m_server.enqueue(Reply::json(record(p2, two), 404));
    m_server.enqueue(Reply::json(QJsonArray()));
    QVERIFY(data().getPlanNodesByPlanIds({p2}, nodes));
    QCOMPARE(data().getAllPlanNames(), QStringList{one});
}

void KvPlanNodeOperationsReadTest::nodesOfNoPlans()
{
    readNodeAs(n1, one);
    NodeList nodes{nodeOf(n2, two)};
    QVERIFY(data().getPlanNodesByPlanIds({}, nodes));
    QCOMPARE(m_server.requestCount(), 0);
    QCOMPARE(namesOfNodes(nodes), QStringList{two});
    QCOMPARE(cachedName(n1), one);
    QCOMPARE(cachedName(n2), QStringLiteral("-"));
}

void KvPlanNodeOperationsReadTest::failedReadOfPlansIsTrueAllTheSame()
{
    readPlan(p1, one);
    readNodeAs(n1, one);
    for (const Reply& reply : {Reply::json(QJsonArray{record(n1, two)}, 500),
                               Reply::json(record(n1, two), 403), Reply::text("[{", "application/json")}) {
        m_server.enqueue(reply);
        NodeList nodes{nodeOf(n2, two)};
        QVERIFY(data().getPlanNodesByPlanIds({p1}, nodes));
        QCOMPARE(namesOfNodes(nodes), QStringList{two});
        QCOMPARE(cachedName(n1), one);
    }
}

void KvPlanNodeOperationsReadTest::todoList()
{
    readNodeAs(n1, one);
    const QByteArray before(
        "GET /task-service/projects/project-1/planNodes?type=todo&category=a%20b&expand=true"
        "&order=finishDate&skip=");
    const QByteArray after("&state=%7B%22$in%22:%5B%22unstart%22,%22processing%22%5D%7D");
    m_server.enqueue(Reply::json(QJsonArray{record(n1, two), record(n2, two)}));
    m_server.enqueue(Reply::json(QJsonArray{record(n3, two)}, 500));
    NodeList nodes{nodeOf(n3, changed)};
    QVERIFY(data().getAllPlanNodes(40, 20, nodes, QStringLiteral("a b")));
    QVERIFY(!data().getAllPlanNodes(0, 1, nodes, QStringLiteral("a b")));
    QCOMPARE(targets(), (QByteArrayList{before + "40&limit=20" + after, before + "0&limit=1" + after}));
    QCOMPARE(namesOfNodes(nodes), (QStringList{changed, two, two}));
    QCOMPARE(cachedName(n1), one); // nothing is cached
    QCOMPARE(cachedName(n2), QStringLiteral("-"));
}

void KvPlanNodeOperationsReadTest::count()
{
    readNodeAs(n1, one);
    m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("count"), 12}}));
    m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("count"), 13}}, 400));
    int count = 77;
    QVERIFY(data().getPlanNodeRangeCount(nodesOf(p1), count));
    QCOMPARE(count, 12);
    QVERIFY(!data().getPlanNodeRangeCount(nodesOf(p1), count));
    QCOMPARE(count, 0);
    const QByteArray target(
        "GET /task-service/plans/p1/planNodes?where=%7B%22planId%22:%22p1%22%7D&only_count=true");
    QCOMPARE(targets(), (QByteArrayList{target, target}));
    count = 77;
    QVERIFY(!data().getPlanNodeRangeCount(nodesOf(QString()), count));
    QCOMPARE(count, 77);
    QCOMPARE(m_server.requestCount(), 2);
    QCOMPARE(cachedName(n1), one);
}

void KvPlanNodeOperationsReadTest::pageEmptiesTheNodeCache()
{
    readPlan(p1, one);
    readNodeAs(n1, one);
    readNodeAs(n2, two);
    m_server.enqueue(Reply::json(QJsonArray{record(n1, changed), record(n3, changed)}));
    NodeList nodes{nodeOf(n2, two)};
    QVERIFY(data().getPlanNodeRangeData(nodesOf(p1), 5, 10, nodes));
    QCOMPARE(targets(),
             QByteArrayList{"GET /task-service/plans/p1/planNodes?where=%7B%22planId%22:%22p1%22%7D"
                            "&skip=5&limit=10"});
    QCOMPARE(namesOfNodes(nodes), (QStringList{two, changed, changed}));
    // Not even the page's own nodes are in it.
    for (const QString& id : {n1, n2, n3})
        QCOMPARE(cachedName(id), QStringLiteral("-"));
    QCOMPARE(data().getPlanName(p1), one);
    m_server.enqueue(Reply::json(record(n1, one)));
    KvPlanNode node;
    QVERIFY(data().getPlanNodeFromCacheById(n1, node));
    QCOMPARE(targets().last(), QByteArray("GET /task-service/planNodes/n1?expand=true"));
    // An empty page empties it as well.
    m_server.enqueue(Reply::json(QJsonArray()));
    QVERIFY(data().getPlanNodeRangeData(nodesOf(p1), 5, 10, nodes));
    QCOMPARE(cachedName(n1), QStringLiteral("-"));
}

void KvPlanNodeOperationsReadTest::failedPageKeepsTheNodeCache()
{
    readNodeAs(n1, one);
    m_server.enqueue(Reply::json(QJsonArray{record(n2, two)}, 503));
    NodeList nodes{nodeOf(n2, two)};
    QVERIFY(data().getPlanNodeRangeData(nodesOf(p1), 0, 10, nodes));
    QCOMPARE(nodes.size(), 1);
    QCOMPARE(cachedName(n1), one);
}

void KvPlanNodeOperationsReadTest::pageWithoutPlanAsksNobody()
{
    readNodeAs(n1, one);
    NodeList nodes{nodeOf(n2, two)};
    KvPlanNodeCondition condition = nodesOf(QString());
    condition.withoutPlan = true;
    condition.name = one;
    QVERIFY(data().getPlanNodeRangeData(condition, 0, 10, nodes));
    QCOMPARE(m_server.requestCount(), 0);
    QCOMPARE(nodes.size(), 1);
    QCOMPARE(cachedName(n1), one);
}

QTEST_GUILESS_MAIN(KvPlanNodeOperationsReadTest)
#include "KvPlanNodeOperationsReadTest.moc"
