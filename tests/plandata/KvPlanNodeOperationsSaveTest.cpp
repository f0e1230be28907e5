// What of an edited plan has to be saved, and saving it.

#include "FacadeCopies.h"
#include "KvPlanNodeOperationsFixture.h"

#include <model/KvPlanRecordsDump.h>

#include <limits>
#include <type_traits>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlanNode;
using KvTest::Reply;

template<class Signature>
using Operation = Signature KvPlanData::*;
using NodeList = QList<KvPlanNode>;
static_assert(
    std::is_same_v<decltype(&KvPlanData::savePlanNodes), Operation<void(const QString&, const NodeList&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::distributePlanNodes),
                             Operation<void(const NodeList&, NodeList&, NodeList&, QStringList&) const>>);
static_assert(std::is_same_v<decltype(&KvPlanData::getPlanRelateModelInfo),
                             Operation<void(const QStringList&, QStringList&)>>);
[[maybe_unused]] constexpr Operation<bool() const> withoutList = &KvPlanData::hasChanged;
[[maybe_unused]] constexpr Operation<bool(const NodeList&) const> ofAList = &KvPlanData::hasChanged;
Q_DECLARE_METATYPE(NodeList)

class KvPlanNodeOperationsSaveTest : public KvPlanNodeOperationsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void hasChangedKnowsNothing();
    void distribution_data();
    void distribution();
    void distributionAddsToTheLists();
    void nothingToSave_data();
    void nothingToSave();
    void createsBeforeItUpdates();
    void createsOnly();
    void updatesOnly();
    void updatesAfterAFailedCreation();
    void savedNodesAndTheCache();
    void comparingCopiesNothing();
    void modelsOfPlans();

private:
    void readThree();
    KvPlanNode cachedNode(const QString& id)
    {
        KvPlanNode node;
        if (!isCached(id, node))
            qFatal("not cached");
        return node;
    }
    KvPlanNode renamed(const QString& id)
    {
        KvPlanNode node = cachedNode(id);
        node.name = changed;
        return node;
    }
};

void KvPlanNodeOperationsSaveTest::readThree()
{
    KvBaseApi::GetInstance().setBaseApi(m_server.baseUrl()); // tables are made before init() is called
    for (const QString& id : {n1, n2, n3})
        readNodeAs(id, QStringLiteral("wall ") + id);
}

void KvPlanNodeOperationsSaveTest::hasChangedKnowsNothing()
{
    QVERIFY(!data().hasChanged());
    readThree();
    KvPlanNode node = renamed(n1);
    QVERIFY(data().hasChanged({node}));
    QVERIFY(!data().hasChanged());
    m_server.enqueue(Reply::json(record(n1, changed)));
    QVERIFY(data().updatePlanNode(node));
    QVERIFY(!data().hasChanged());
}

void KvPlanNodeOperationsSaveTest::distribution_data()
{
    QTest::addColumn<NodeList>("nodes");
    QTest::addColumn<QStringList>("toCreate"); // by name
    QTest::addColumn<QStringList>("toUpdate"); // by id
    const auto row = [](const char* name, const NodeList& nodes, const QStringList& toCreate,
                        const QStringList& toUpdate) {
        QTest::newRow(name) << nodes << toCreate << toUpdate;
    };
    readThree();
    const KvPlanNode same = cachedNode(n1);
    const KvPlanNode fresh = nodeOf(QString(), one);
    row("nothing", {}, {}, {});
    row("unchanged", {same, cachedNode(n3)}, {}, {});
    row("without id", {fresh}, {one}, {});
    row("empty id", {nodeOf(QStringLiteral(""), two)}, {two}, {});
    row("an empty node", {KvPlanNode()}, {QString()}, {});
    row("changed", {renamed(n2)}, {}, {n2});
    row("not cached", {nodeOf(QStringLiteral("n9"), QString())}, {}, {QStringLiteral("n9")});
    row("another case of a cached id", {nodeOf(n1.toUpper(), same.name)}, {}, {n1.toUpper()});
    row("all sorts, in their order",
        {renamed(n3), nodeOf(QString(), two), same, fresh, nodeOf(QStringLiteral("n0"), one), renamed(n2)},
        {two, one}, {n3, QStringLiteral("n0"), n2});
    row("in the order of the cache", {renamed(n1), cachedNode(n2), renamed(n3)}, {}, {n1, n3});
    row("against the order of the cache", {renamed(n3), renamed(n2), same}, {}, {n3, n2});
    row("one between that is not cached", {same, nodeOf(QStringLiteral("n11"), one), renamed(n2)}, {},
        {QStringLiteral("n11"), n2});
    row("behind the last one of the cache", {renamed(n3), nodeOf(QStringLiteral("n9"), one), renamed(n1)}, {},
        {n3, QStringLiteral("n9"), n1});
    row("one node twice", {renamed(n1), same, renamed(n1)}, {}, {n1, n1});
    KvPlanNode other = same;
    other.remark = changed;
    other.milestone = !other.milestone;
    other.predecessors.append(KvPlanPredecessor());
    other.children.append(KvPlanNode());
    row("changed where nobody looks", {other}, {}, {});
    KvPlanNode nan = same;
    nan.finishedPercentage = std::numeric_limits<double>::quiet_NaN();
    row("no number", {nan}, {}, {n1});
}

void KvPlanNodeOperationsSaveTest::distribution()
{
    QFETCH(NodeList, nodes);
    QFETCH(QStringList, toCreate);
    QFETCH(QStringList, toUpdate);
    data().clear();
    readThree();
    const KvPlanData& facade = data();
    NodeList creates;
    NodeList updates;
    QStringList deletes;
    facade.distributePlanNodes(nodes, creates, updates, deletes);
    QCOMPARE(namesOfNodes(creates), toCreate);
    QStringList ids;
    for (const KvPlanNode& node : qAsConst(updates))
        ids.append(node.id);
    QCOMPARE(ids, toUpdate);
    QVERIFY(deletes.isEmpty());
    QCOMPARE(facade.hasChanged(nodes), !toCreate.isEmpty() || !toUpdate.isEmpty());
    QCOMPARE(m_server.requestCount(), 0);
    // Looking an id up has put nothing into the cache.
    for (const char* id : {"n9", "n0", "N1", ""})
        QCOMPARE(cachedName(QString::fromLatin1(id)), QStringLiteral("-"));
    QCOMPARE(cachedName(n1), QStringLiteral("wall n1"));
}

void KvPlanNodeOperationsSaveTest::distributionAddsToTheLists()
{
    readThree();
    NodeList creates{nodeOf(QString(), two)};
    NodeList updates{nodeOf(n3, two)};
    QStringList deletes{n1, QString()};
    data().distributePlanNodes({renamed(n1), fullPlanNode(), KvPlanNode()}, creates, updates, deletes);
    QCOMPARE(namesOfNodes(creates), (QStringList{two, QString()}));
    QCOMPARE(namesOfNodes(updates), (QStringList{two, changed, fullPlanNode().name}));
    QCOMPARE(difference(dump(updates.last()), dump(fullPlanNode())), QString()); // whole
    QCOMPARE(deletes, (QStringList{n1, QString()}));
}

void KvPlanNodeOperationsSaveTest::nothingToSave_data()
{
    QTest::addColumn<NodeList>("nodes");
    readThree();
    QTest::newRow("no nodes") << NodeList();
    QTest::newRow("unchanged nodes") << NodeList{cachedNode(n1), cachedNode(n2)};
    KvPlanNode node = cachedNode(n1);
    node.remark = changed;
    QTest::newRow("changed where nobody looks") << NodeList{node};
}

void KvPlanNodeOperationsSaveTest::nothingToSave()
{
    QFETCH(NodeList, nodes);
    data().clear();
    readThree();
    data().savePlanNodes(p1, nodes);
    QCOMPARE(m_server.requestCount(), 0);
}

void KvPlanNodeOperationsSaveTest::createsBeforeItUpdates()
{
    readThree();
    m_server.enqueue(
        Reply::json(QJsonArray{record(QStringLiteral("new"), one), record(QStringLiteral("new2"), two)}));
    m_server.enqueue(Reply::json(QJsonArray()));
    data().savePlanNodes(p1, {renamed(n3), nodeOf(QString(), one), cachedNode(n2),
                              nodeOf(QStringLiteral("n9"), two), nodeOf(QString(), two), renamed(n1)});
    QCOMPARE(targets(),
             (QByteArrayList{"POST /task-service/plans/p1/planNodes", "PUT /task-service/planNodes"}));
    const QJsonArray created = m_server.requests().at(0).array();
    QCOMPARE(created.size(), 2);
    QCOMPARE(created.at(0).toObject().value(QLatin1String("name")).toString(), one);
    QCOMPARE(created.at(1).toObject().value(QLatin1String("name")).toString(), two);
    QCOMPARE(
        m_server.requests().at(1).body,
        QByteArray(
            R"([{"_id":"n3","name":"changed"},{"_id":"n9","name":"two"},{"_id":"n1","name":"changed"}])"));
}

void KvPlanNodeOperationsSaveTest::createsOnly()
{
    readThree();
    m_server.enqueue(Reply::json(QJsonArray{record(QStringLiteral("new"), one)}));
    data().savePlanNodes(p1, {cachedNode(n1), nodeOf(QString(), one)});
    QCOMPARE(targets(), QByteArrayList{"POST /task-service/plans/p1/planNodes"});
    QCOMPARE(cachedName(QStringLiteral("new")), one);
}

void KvPlanNodeOperationsSaveTest::updatesOnly()
{
    m_server.enqueue(Reply::json(QJsonArray()));
    data().savePlanNodes(p1, {nodeOf(n1, one)}); // not cached, and yet no new one
    QCOMPARE(targets(), QByteArrayList{"PUT /task-service/planNodes"});
    QCOMPARE(m_server.lastRequest().body, QByteArray(R"([{"_id":"n1","name":"one"}])"));
}

void KvPlanNodeOperationsSaveTest::updatesAfterAFailedCreation()
{
    readThree();
    m_server.enqueue(Reply::json(QJsonArray(), 500));
    m_server.enqueue(Reply::json(QJsonArray(), 500));
    data().savePlanNodes(p1, {renamed(n1), nodeOf(QString(), one)});
    QCOMPARE(targets(),
             (QByteArrayList{"POST /task-service/plans/p1/planNodes", "PUT /task-service/planNodes"}));
}

void KvPlanNodeOperationsSaveTest::savedNodesAndTheCache()
{
    readThree();
    m_server.enqueue(Reply::json(QJsonArray{record(QStringLiteral("new"), one)}));
    m_server.enqueue(Reply::json(QJsonArray{record(n1, changed)}));
    const NodeList nodes{renamed(n1), nodeOf(QString(), one), nodeOf(QStringLiteral("n9"), two)};
    data().savePlanNodes(p1, nodes);
    QCOMPARE(namesOfNodes(nodes), (QStringList{changed, one, two})); // the caller's list stays
    QVERIFY(nodes.at(1).id.isEmpty());
    QCOMPARE(cachedName(QStringLiteral("new")), one);
    QCOMPARE(cachedName(n1), QStringLiteral("wall n1"));
    QCOMPARE(cachedName(QStringLiteral("n9")), QString());
    // The same again: the new one has no id in the caller's list, and the changed ones count as changed.
    m_server.forgetRequests();
    m_server.enqueue(Reply::json(QJsonArray()));
    m_server.enqueue(Reply::json(QJsonArray()));
    data().savePlanNodes(p1, nodes);
    QCOMPARE(m_server.requestCount(), 2);
    QCOMPARE(m_server.requests().at(0).array().size(), 1);
    QCOMPARE(m_server.requests().at(1).array().size(), 2);
}

// Neither the list nor a node of it, nor one of the cache, is copied to be compared.
void KvPlanNodeOperationsSaveTest::comparingCopiesNothing()
{
    QJsonArray array;
    for (int i = 0; i < 100; ++i)
        array.append(record(QString::number(i), QStringLiteral("node %1").arg(i)));
    readPlan(p1, one);
    m_server.enqueue(Reply::json(array));
    NodeList nodes;
    QVERIFY(data().getPlanNodesByPlanId(p1, nodes));
    m_server.forgetRequests();
    // The cache of a copy of the facade stays the same object as the original's until one of them writes: a
    // node of it is handed out with the very text that both keep.
    KvPlanData& second = *copyOf(data());
    for (KvPlanNode& node : nodes)
        node.name = QString(node.name.constData(), node.name.size()); // a text of its own
    const QChar* const text = nodes.at(50).name.constData();
    const KvPlanNode* const place = &nodes.at(50);
    const NodeList shared = nodes;
    KvPlanNode before;
    QVERIFY(isCached(QStringLiteral("50"), before));

    QVERIFY(!data().hasChanged(nodes));
    NodeList toCreate;
    NodeList toUpdate;
    QStringList toDelete;
    data().distributePlanNodes(nodes, toCreate, toUpdate, toDelete);
    data().savePlanNodes(p1, nodes);
    QCOMPARE(m_server.requestCount(), 0);
    QVERIFY(toCreate.isEmpty() && toUpdate.isEmpty());
    QVERIFY(nodes.isSharedWith(shared));
    QCOMPARE(&qAsConst(nodes).at(50), place);
    QCOMPARE(qAsConst(nodes).at(50).name.constData(), text);
    KvPlanNode after;
    QVERIFY(isCached(QStringLiteral("50"), after));
    QCOMPARE(after.name.constData(), before.name.constData());
    QVERIFY(isCached(QStringLiteral("50"), after, second));
    QCOMPARE(after.name.constData(), before.name.constData());

    // Nodes that differ are handed out, with the data of the caller's.
    nodes[50].uniqueId = 4;
    const NodeList edited = nodes;
    data().distributePlanNodes(nodes, toCreate, toUpdate, toDelete);
    QVERIFY(nodes.isSharedWith(edited));
    QCOMPARE(toUpdate.size(), 1);
    QCOMPARE(toUpdate.first().name.constData(), text);
    QVERIFY(data().hasChanged(nodes));
    QVERIFY(nodes.isSharedWith(edited));
}

void KvPlanNodeOperationsSaveTest::modelsOfPlans()
{
    const auto node = [](const char* id, const QString& planId, const QStringList& models) {
        QJsonArray entity;
        for (const QString& model : models)
            entity.append(QJsonObject{{QStringLiteral("modelId"), model},
                                      {QStringLiteral("entityIds"), QJsonArray{QString::fromLatin1(id)}}});
        return QJsonObject{{QStringLiteral("_id"), QString::fromLatin1(id)},
                           {QStringLiteral("planId"), planId},
                           {QStringLiteral("entity"), entity}};
    };
    const QString a = QStringLiteral("a");
    const QString b = QStringLiteral("b");
    const QString c = QStringLiteral("c");
    readNodeAs(node("9", p1, {c, a}));
    readNodeAs(node("10", p1, {b, a}));
    readNodeAs(node("11", p2, {b}));
    readNodeAs(node("12", QString(), {c}));
    readNodeAs(node("13", p1, {}));
    readNodeAs(node("14", p1.toUpper(), {c}));
    const auto modelsOf = [&](const QStringList& planIds, QStringList models = QStringList()) {
        data().getPlanRelateModelInfo(planIds, models);
        return models;
    };
    // By the nodes' ids as texts ("10" before "9"), in each by the models'; nothing twice is dropped.
    QCOMPARE(modelsOf({p1}), (QStringList{a, b, a, c}));
    QCOMPARE(modelsOf({p2, p1}), (QStringList{a, b, b, a, c}));
    QCOMPARE(modelsOf({p1, p1}), (QStringList{a, b, a, c}));
    QCOMPARE(modelsOf({p2}, {c, b}), (QStringList{c, b, b}));
    QCOMPARE(modelsOf({QString()}), QStringList{c});
    QCOMPARE(modelsOf({p3, QStringLiteral("p")}, {c}), QStringList{c}); // never read
    QCOMPARE(modelsOf({}, {c}), QStringList{c});
    QStringList both{p2}; // plans and models may even be one list
    data().getPlanRelateModelInfo(both, both);
    QCOMPARE(both, (QStringList{p2, b}));
    QCOMPARE(m_server.requestCount(), 0);
    data().clear();
    QCOMPARE(modelsOf({p1}, {c}), QStringList{c});
}

QTEST_GUILESS_MAIN(KvPlanNodeOperationsSaveTest)
#include "KvPlanNodeOperationsSaveTest.moc"
