// Creating, changing and deleting plan nodes through the exported interface: results and the node cache.

#include "FacadeCopies.h"
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
static_assert(std::is_same_v<decltype(&KvPlanData::createPlanNode), Operation<bool(KvPlanNode&)>>);
static_assert(
    std::is_same_v<decltype(&KvPlanData::createPlanNodes), Operation<bool(const QString&, NodeList&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::updatePlanNode), Operation<bool(KvPlanNode&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::updatePlanNodes), Operation<bool(NodeList&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::deletePlanNodeById), Operation<bool(const QString&)>>);
static_assert(
    std::is_same_v<decltype(&KvPlanData::deletePlanNodesByIds), Operation<bool(const QStringList&)>>);

class KvPlanNodeOperationsWriteTest : public KvPlanNodeOperationsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void createdNodeIsCached();
    void failedCreationCachesNothing();
    void createdNodesAreCached();
    void failedCreationOfManyCachesNothing();
    void updatedNodeIsCached();
    void updateWithoutDifferenceAsksNobody();
    void updateOfAnUncachedNode();
    void failedUpdateKeepsTheCachedNode();
    void failedUpdateOfAnUncachedNodeLeavesAnEntry();
    void updateGoesToTheIdInsideTheCachedNode();
    void predecessorsAreAddedInTheCacheToo();
    void batchLeavesTheCacheAsItWas_data() { statuses(); }
    void batchLeavesTheCacheAsItWas();
    void batchOfUncachedNodes_data() { statuses(); }
    void batchOfUncachedNodes();
    void batchWithoutDifferenceIsSent_data() { statuses(); }
    void batchWithoutDifferenceIsSent();
    void batchOfOneNodeTwice();
    void deletedNodesStayCached_data() { statuses(); }
    void deletedNodesStayCached();
    void twoHostsChangeDifferentFields();

private:
    static void statuses()
    {
        QTest::addColumn<int>("status");
        QTest::newRow("success") << 200;
        QTest::newRow("failure") << 403;
    }
};

void KvPlanNodeOperationsWriteTest::createdNodeIsCached()
{
    m_server.enqueue(Reply::json(record(n1, one)));
    KvPlanNode node = fullPlanNode();
    QVERIFY(data().createPlanNode(node));
    QCOMPARE(targets(), QByteArrayList{"POST /task-service/planNodes"});
    QCOMPARE(node.id, n1);
    KvPlanNode cached;
    QVERIFY(isCached(n1, cached));
    QCOMPARE(difference(dump(cached), dump(node)), QString()); // as the endpoint left it
    QCOMPARE(cached.notes, fullPlanNode().notes);
    QCOMPARE(cachedName(fullPlanNode().id), QStringLiteral("-"));
}

void KvPlanNodeOperationsWriteTest::failedCreationCachesNothing()
{
    m_server.enqueue(Reply::json(record(n1, one), 409));
    KvPlanNode node = fullPlanNode();
    QVERIFY(!data().createPlanNode(node));
    QCOMPARE(node.id, QString());
    for (const QString& id : {n1, fullPlanNode().id, QString()})
        QCOMPARE(cachedName(id), QStringLiteral("-"));
}

void KvPlanNodeOperationsWriteTest::createdNodesAreCached()
{
    readNodeAs(n3, QStringLiteral("kept"));
    readNodeAs(n1, QStringLiteral("old"));
    m_server.enqueue(Reply::json(QJsonArray{record(n2, two), record(n1, one), record(n2, changed)}));
    NodeList nodes{fullPlanNode(1), fullPlanNode(2), fullPlanNode(3)};
    QVERIFY(data().createPlanNodes(p1, nodes));
    QCOMPARE(targets(), QByteArrayList{"POST /task-service/plans/p1/planNodes"});
    QCOMPARE(namesOfNodes(nodes), (QStringList{two, one, changed}));
    QCOMPARE(cachedName(n1), one);
    QCOMPARE(cachedName(n2), changed); // the later of two
    QCOMPARE(cachedName(n3), QStringLiteral("kept"));
    QCOMPARE(cachedName(fullPlanNode(1).id), QStringLiteral("-"));
    // The plan may be named by one of the nodes.
    m_server.enqueue(Reply::json(QJsonArray()));
    nodes.first().planId = p2;
    QVERIFY(data().createPlanNodes(nodes.first().planId, nodes));
    QCOMPARE(targets().last(), QByteArray("POST /task-service/plans/p2/planNodes"));
}

void KvPlanNodeOperationsWriteTest::failedCreationOfManyCachesNothing()
{
    readNodeAs(n1, one);
    m_server.enqueue(Reply::json(QJsonArray{record(n1, two), record(n2, two)}, 500));
    NodeList nodes{fullPlanNode(1), fullPlanNode(2)};
    QVERIFY(!data().createPlanNodes(p1, nodes));
    QVERIFY(nodes.isEmpty());
    QCOMPARE(cachedName(n1), one);
    QCOMPARE(cachedName(n2), QStringLiteral("-"));
}

void KvPlanNodeOperationsWriteTest::updatedNodeIsCached()
{
    KvPlanNode node = readNodeAs(n1, one);
    m_server.enqueue(Reply::json(record(n1, QStringLiteral("as the service has it"))));
    node.name = changed;
    QVERIFY(data().updatePlanNode(node));
    QCOMPARE(targets(), QByteArrayList{"PUT /task-service/planNodes/n1"});
    QCOMPARE(m_server.lastRequest().body, QByteArray("{\"name\":\"changed\"}"));
    QCOMPARE(node.name, QStringLiteral("as the service has it"));
    QCOMPARE(cachedName(n1), node.name);
    // The next change is told from what the service answered.
    m_server.enqueue(Reply::json(record(n1, changed)));
    node.uniqueId = 4;
    QVERIFY(data().updatePlanNode(node));
    QCOMPARE(m_server.lastRequest().body, QByteArray("{\"uniqueId\":4}"));
}

void KvPlanNodeOperationsWriteTest::updateWithoutDifferenceAsksNobody()
{
    const KvPlanNode cached = readNodeAs(n1, one);
    KvPlanNode node = cached;
    node.notes = QStringLiteral("not written");
    node.milestone = true;
    QVERIFY(data().updatePlanNode(node));
    QCOMPARE(m_server.requestCount(), 0);
    QCOMPARE(difference(dump(node), dump(cached)), QString());
    QCOMPARE(cachedName(n1), one);
}

void KvPlanNodeOperationsWriteTest::updateOfAnUncachedNode()
{
    m_server.enqueue(Reply::json(record(n1, one)));
    KvPlanNode node = nodeOf(n1, one);
    QVERIFY(data().updatePlanNode(node));
    // Told from an empty node, which has no id to go to.
    QCOMPARE(targets(), QByteArrayList{"PUT /task-service/planNodes/"});
    QCOMPARE(m_server.lastRequest().body, QByteArray(R"({"_id":"n1","name":"one"})"));
    QCOMPARE(cachedName(n1), one);
}

void KvPlanNodeOperationsWriteTest::failedUpdateKeepsTheCachedNode()
{
    KvPlanNode node = readNodeAs(n1, one);
    m_server.enqueue(Reply::json(record(n1, changed), 500));
    node.name = changed;
    QVERIFY(!data().updatePlanNode(node));
    QCOMPARE(node.name, QString());
    QCOMPARE(cachedName(n1), one);
    QCOMPARE(cachedName(QString()), QStringLiteral("-"));
}

void KvPlanNodeOperationsWriteTest::failedUpdateOfAnUncachedNodeLeavesAnEntry()
{
    m_server.enqueue(Reply::json(QJsonObject(), 404));
    KvPlanNode node = fullPlanNode();
    const QString id = node.id;
    QVERIFY(!data().updatePlanNode(node));
    KvPlanNode cached = fullPlanNode(2);
    QVERIFY(isCached(id, cached));
    QCOMPARE(difference(dump(cached), dump(KvPlanNode())), QString());
    QCOMPARE(cachedName(QString()), QStringLiteral("-"));
}

void KvPlanNodeOperationsWriteTest::updateGoesToTheIdInsideTheCachedNode()
{
    m_server.enqueue(Reply::json(record(n2, one))); // asked for n1
    KvPlanNode node;
    QVERIFY(data().getPlanNodeById(n1, node));
    m_server.enqueue(Reply::json(record(n3, changed)));
    node.id = n1;
    node.name = changed;
    QVERIFY(data().updatePlanNode(node));
    QCOMPARE(m_server.lastRequest().target, QByteArray("/task-service/planNodes/n2"));
    QCOMPARE(cachedName(n1), one);
    QCOMPARE(cachedName(n2), QStringLiteral("-"));
    QCOMPARE(cachedName(n3), changed); // under the id of the answer
}

// As the reader does it for every record passed in; existing hosts take the node from the cache, or read it.
void KvPlanNodeOperationsWriteTest::predecessorsAreAddedInTheCacheToo()
{
    QJsonObject object = record(n1, one);
    object.insert(QStringLiteral("predecessors"),
                  QJsonArray{QJsonObject{{QStringLiteral("SourcePlanNodeName"), two}}});
    KvPlanNode node = readNodeAs(object);
    QCOMPARE(node.predecessors.size(), 1);
    m_server.enqueue(Reply::json(object));
    m_server.enqueue(Reply::json(object));
    node.uniqueId = 4;
    QVERIFY(data().updatePlanNode(node));
    QCOMPARE(node.predecessors.size(), 2);
    KvPlanNode cached;
    QVERIFY(isCached(n1, cached));
    QCOMPARE(cached.predecessors.size(), 2);
    QVERIFY(data().createPlanNode(node));
    QCOMPARE(node.predecessors.size(), 3);
    QVERIFY(isCached(n1, cached));
    QCOMPARE(cached.predecessors.size(), 3);
}

// Kept as it is: existing hosts read the plan again after a save.
void KvPlanNodeOperationsWriteTest::batchLeavesTheCacheAsItWas()
{
    QFETCH(int, status);
    NodeList nodes{readNodeAs(n1, one), readNodeAs(n2, two)};
    nodes[0].name = changed;
    nodes[1].uniqueId = 4;
    const NodeList edited = nodes;
    m_server.enqueue(Reply::json(QJsonArray{record(n1, changed), record(n2, changed)}, status));
    QCOMPARE(data().updatePlanNodes(nodes), status == 200);
    QCOMPARE(targets(), QByteArrayList{"PUT /task-service/planNodes"});
    QCOMPARE(m_server.lastRequest().body,
             QByteArray(R"([{"_id":"n1","name":"changed"},{"_id":"n2","uniqueId":4}])"));
    QVERIFY(nodes.isEmpty());
    QCOMPARE(cachedName(n1), one);
    KvPlanNode cached;
    QVERIFY(isCached(n2, cached));
    QCOMPARE(cached.uniqueId, 0);
    // So the same edits are reported again.
    QVERIFY(data().hasChanged(edited));
    NodeList toCreate;
    NodeList toUpdate;
    QStringList toDelete;
    data().distributePlanNodes(edited, toCreate, toUpdate, toDelete);
    QCOMPARE(toUpdate.size(), 2);
}

void KvPlanNodeOperationsWriteTest::batchOfUncachedNodes()
{
    QFETCH(int, status);
    readNodeAs(n1, one);
    NodeList nodes{nodeOf(n2, two), nodeOf(n3, QString()), nodeOf(QString(), changed)};
    m_server.enqueue(Reply::json(QJsonObject(), status));
    QCOMPARE(data().updatePlanNodes(nodes), status == 200);
    QCOMPARE(m_server.lastRequest().body,
             QByteArray(R"([{"_id":"n2","name":"two"},{"_id":"n3"},{"_id":"","name":"changed"}])"));
    QVERIFY(nodes.isEmpty());
    for (const QString& id : {n2, n3, QString()}) {
        KvPlanNode cached = fullPlanNode();
        QVERIFY(isCached(id, cached));
        QCOMPARE(difference(dump(cached), dump(KvPlanNode())), QString());
    }
    QCOMPARE(cachedName(n1), one);
}

void KvPlanNodeOperationsWriteTest::batchWithoutDifferenceIsSent()
{
    QFETCH(int, status);
    NodeList nodes{readNodeAs(n1, one)};
    m_server.enqueue(Reply::json(QJsonObject(), status));
    QCOMPARE(data().updatePlanNodes(nodes), status == 200);
    QCOMPARE(m_server.lastRequest().body, QByteArray("[]"));
    QVERIFY(nodes.isEmpty());
    m_server.enqueue(Reply::json(QJsonObject(), status));
    QCOMPARE(data().updatePlanNodes(nodes), status == 200); // of no node at all
    QCOMPARE(m_server.lastRequest().body, QByteArray("[]"));
    QCOMPARE(m_server.requestCount(), 2);
}

// Each against what is cached, not against the one before it.
void KvPlanNodeOperationsWriteTest::batchOfOneNodeTwice()
{
    const KvPlanNode cached = readNodeAs(n1, one);
    NodeList nodes{cached, cached};
    nodes[0].name = changed;
    nodes[1].uniqueId = 4;
    m_server.enqueue(Reply::json(QJsonObject()));
    QVERIFY(data().updatePlanNodes(nodes));
    QCOMPARE(m_server.lastRequest().body,
             QByteArray(R"([{"_id":"n1","name":"changed"},{"_id":"n1","uniqueId":4}])"));
}

void KvPlanNodeOperationsWriteTest::deletedNodesStayCached()
{
    QFETCH(int, status);
    const KvPlanNode node = readNodeAs(n1, one);
    for (int i = 0; i < 3; ++i)
        m_server.enqueue(Reply::empty(status));
    QCOMPARE(data().deletePlanNodeById(n1), status == 200);
    QCOMPARE(data().deletePlanNodesByIds({n1, n2}), status == 200);
    QCOMPARE(data().deletePlanNodesByIds({}), status == 200);
    QCOMPARE(targets(),
             (QByteArrayList{
                 "DELETE /task-service/planNodes/n1",
                 "DELETE /task-service/planNodes?queryParam=%7B%22ids%22%3A%5B%22n1%22%2C%22n2%22%5D%7D",
                 "DELETE /task-service/planNodes?queryParam=%7B%22ids%22%3A%5B%5D%7D"}));
    QCOMPARE(cachedName(n1), one);
    QCOMPARE(cachedName(n2), QStringLiteral("-"));
    // Compared with its last known state, it has not changed.
    QVERIFY(!data().hasChanged({node}));
}

void KvPlanNodeOperationsWriteTest::twoHostsChangeDifferentFields()
{
    // A service with one node that merges what it gets, key by key.
    QJsonObject stored = record(n1, one);
    m_server.setHandler([&](const KvTest::Request& request) {
        const QJsonObject changes =
            request.body.startsWith('[') ? request.array().at(0).toObject() : request.object();
        for (auto it = changes.begin(); it != changes.end(); ++it)
            stored.insert(it.key(), it.value());
        return Reply::json(stored);
    });
    KvPlanNode mine;
    QVERIFY(data().getPlanNodeById(n1, mine));
    KvPlanData& second = *copyOf(data());
    KvPlanNode theirs = mine;
    mine.name = changed;
    QVERIFY(data().updatePlanNode(mine));
    QCOMPARE(cachedName(n1, second), one);
    theirs.uniqueId = 4;
    NodeList list{theirs};
    QVERIFY(second.updatePlanNodes(list));
    QCOMPARE(m_server.lastRequest().body, QByteArray(R"([{"_id":"n1","uniqueId":4}])"));
    QCOMPARE(stored.value(QLatin1String("name")).toString(), changed);
    QCOMPARE(stored.value(QLatin1String("uniqueId")).toInt(), 4);
    QCOMPARE(cachedName(n1, second), one);
    QCOMPARE(cachedName(n1), changed);
}

QTEST_GUILESS_MAIN(KvPlanNodeOperationsWriteTest)
#include "KvPlanNodeOperationsWriteTest.moc"
