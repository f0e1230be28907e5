// What the endpoint functions for plan nodes make of a reply.

#include "EndpointsFixture.h"
#include "KvPlanNodeCalls.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlanNode;
using KvTest::Reply;

namespace {

QStringList namesOf(const QList<KvPlanNode>& nodes)
{
    QStringList names;
    for (const KvPlanNode& node : nodes)
        names.append(node.name);
    return names;
}

} // namespace

class KvPlanNodeEndpointsReplyTest : public EndpointsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void nodeIsRead_data() { nodeCalls(); }
    void nodeIsRead();
    void predecessorsOfTheReplyAreAdded_data() { nodeCalls(); }
    void predecessorsOfTheReplyAreAdded();
    void keysOfOtherTypes_data() { nodeCalls(); }
    void keysOfOtherTypes();
    void listIsAppended_data() { listCalls(); }
    void listIsAppended();
    void listTakesObjectsOnly_data() { listCalls(); }
    void listTakesObjectsOnly();
    void createdNodesReplaceTheList();
    void updatedNodesAreNotRead();
    void count_data();
    void count();
    void largeList();

private:
    static void nodeCalls();
    static void listCalls();
};

void KvPlanNodeEndpointsReplyTest::nodeCalls()
{
    QTest::addColumn<NodeCall>("call");
    QTest::newRow("read") << readOne;
    QTest::newRow("create") << create;
    QTest::newRow("update") << update;
}

void KvPlanNodeEndpointsReplyTest::listCalls()
{
    QTest::addColumn<ListCall>("call");
    QTest::newRow("page") << readPage;
    QTest::newRow("of plans") << readPlans;
    QTest::newRow("to do") << readTodo;
}

void KvPlanNodeEndpointsReplyTest::nodeIsRead()
{
    QFETCH(NodeCall, call);
    QJsonObject object = nodeObject(QStringLiteral("new"), QStringLiteral("墙"));
    object.insert(QStringLiteral("projectId"), QStringLiteral("project-9"));
    object.insert(QStringLiteral("uniqueId"), 12);
    object.insert(QStringLiteral("displaySimulation"), 1);
    object.insert(QStringLiteral("documents"), QJsonArray{nodeObject(QStringLiteral("d1"), told)});
    m_server.enqueue(Reply::json(object));
    KvPlanNode node = fullPlanNode();
    KvPlanNode wanted = emptied(node);
    QVERIFY(call(node));
    wanted.id = wanted.guid = QStringLiteral("new");
    wanted.name = QStringLiteral("墙");
    wanted.projectId = QStringLiteral("project-9");
    wanted.uniqueId = 12;
    wanted.displaySimulation = true;
    KvDocument document;
    document.id = QStringLiteral("d1");
    document.name = told;
    wanted.documents = {document}; // those of the reply alone
    QCOMPARE(difference(dump(node), dump(wanted)), QString());
    QCOMPARE(m_server.requestCount(), 1);

    // JSON of another shape is a success that tells nothing.
    m_server.enqueue(Reply::json(QJsonArray{object}));
    node = fullPlanNode();
    QVERIFY(call(node));
    QCOMPARE(difference(dump(node), dump(emptied(fullPlanNode()))), QString());
}

// To those that the record passed in holds, as its reader does it: a host that wants the reply's alone passes
// a record without any.
void KvPlanNodeEndpointsReplyTest::predecessorsOfTheReplyAreAdded()
{
    QFETCH(NodeCall, call);
    QJsonObject object = nodeObject(n1, told);
    object.insert(
        QStringLiteral("predecessors"),
        QJsonArray{QJsonObject{{QStringLiteral("SourcePlanNodeName"), QStringLiteral("of the reply")}}});
    KvPlanNode node = fullPlanNode();
    const QString own = node.predecessors.first().sourcePlanNodeName;
    m_server.enqueue(Reply::json(object));
    m_server.enqueue(Reply::json(object));
    QVERIFY(call(node));
    QCOMPARE(node.predecessors.size(), 2);
    QCOMPARE(node.predecessors.at(0).sourcePlanNodeName, own);
    QCOMPARE(node.predecessors.at(1).sourcePlanNodeName, QStringLiteral("of the reply"));
    QVERIFY(call(node));
    QCOMPARE(node.predecessors.size(), 3);
}

void KvPlanNodeEndpointsReplyTest::keysOfOtherTypes()
{
    QFETCH(NodeCall, call);
    QJsonObject object;
    for (const char* key : {"_id",
                            "category",
                            "GUID",
                            "planId",
                            "planName",
                            "projectId",
                            "id",
                            "uniqueId",
                            "parentTaskID",
                            "name",
                            "isDistributed",
                            "remark",
                            "finishedPercentage",
                            "createdBy",
                            "updatedBy",
                            "updatedAt",
                            "createdAt",
                            "startDate",
                            "finishDate",
                            "actualStartDate",
                            "actualFinishDate",
                            "milestone",
                            "summary",
                            "dynamicEffect",
                            "displaySimulation",
                            "entityHideDate",
                            "entityHideType",
                            "planWorkload",
                            "actualWorkload",
                            "predecessors",
                            "entity",
                            "userIds",
                            "executeIds",
                            "cooperateIds",
                            "documentIds",
                            "documents",
                            "materialBills"})
        object.insert(QLatin1String(key), QJsonObject{{QStringLiteral("0"), QJsonArray{1}}});
    m_server.enqueue(Reply::json(object));
    KvPlanNode node = fullPlanNode();
    QVERIFY(call(node));
    QCOMPARE(difference(dump(node), dump(emptied(fullPlanNode()))), QString());
}

void KvPlanNodeEndpointsReplyTest::listIsAppended()
{
    QFETCH(ListCall, call);
    const QStringList order{QStringLiteral("b 10"), QStringLiteral("a"), QString(), QStringLiteral("b 2"),
                            QStringLiteral("a")}; // the service's
    QJsonArray array;
    for (const QString& name : order)
        array.append(nodeObject(QStringLiteral("id of ") + name, name));
    m_server.enqueue(Reply::json(array));
    m_server.enqueue(Reply::json(array));
    m_server.enqueue(Reply::json(QJsonArray()));
    QList<KvPlanNode> nodes{fullPlanNode()};
    QVERIFY(call(nodes));
    QVERIFY(call(nodes));
    QVERIFY(call(nodes));
    QCOMPARE(namesOf(nodes), QStringList{fullPlanNode().name} + order + order);
    QCOMPARE(difference(dump(nodes.first()), dump(fullPlanNode())), QString());
    KvPlanNode wanted = emptied(KvPlanNode()); // made of a fresh record
    wanted.id = wanted.guid = QStringLiteral("id of b 10");
    wanted.name = QStringLiteral("b 10");
    QCOMPARE(difference(dump(nodes.at(1)), dump(wanted)), QString());
}

void KvPlanNodeEndpointsReplyTest::listTakesObjectsOnly()
{
    QFETCH(ListCall, call);
    m_server.enqueue(Reply::json(QJsonArray{QJsonValue(), 1, QStringLiteral("text"), QJsonArray{1},
                                            nodeObject(n1, told), QJsonObject()}));
    QList<KvPlanNode> nodes;
    QVERIFY(call(nodes));
    QCOMPARE(namesOf(nodes), (QStringList{told, QString()}));
    // One object is no list.
    m_server.enqueue(Reply::json(nodeObject(n1, told)));
    QVERIFY(call(nodes));
    QCOMPARE(nodes.size(), 2);
}

void KvPlanNodeEndpointsReplyTest::createdNodesReplaceTheList()
{
    // In the reply's order and number; each element counts, also one that is no object.
    m_server.enqueue(Reply::json(QJsonArray{nodeObject(QStringLiteral("z"), told), QJsonValue(),
                                            nodeObject(QStringLiteral("a"), n1)}));
    QList<KvPlanNode> nodes{fullPlanNode(1), fullPlanNode(2)};
    const QList<KvPlanNode> before = nodes;
    QVERIFY(createMany(nodes));
    QCOMPARE(namesOf(nodes), (QStringList{told, QString(), n1}));
    KvPlanNode wanted = emptied(KvPlanNode());
    QCOMPARE(difference(dump(nodes.at(1)), dump(wanted)), QString());
    wanted.id = wanted.guid = QStringLiteral("a");
    wanted.name = n1;
    QCOMPARE(difference(dump(nodes.at(2)), dump(wanted)), QString());
    QCOMPARE(difference(dump(before.at(0)), dump(fullPlanNode(1))), QString());
    // Nothing comes back: nothing is left.
    for (const Reply& reply :
         {Reply::json(QJsonArray()), Reply::json(nodeObject(n1, told)), Reply::empty()}) {
        m_server.enqueue(reply);
        nodes = before;
        QVERIFY(createMany(nodes));
        QVERIFY(nodes.isEmpty());
    }
}

void KvPlanNodeEndpointsReplyTest::updatedNodesAreNotRead()
{
    for (const Reply& reply :
         {Reply::json(QJsonArray{nodeObject(n1, told)}), Reply::json(nodeObject(n1, told)), Reply::empty()}) {
        m_server.enqueue(reply);
        QList<KvPlanNode> nodes{fullPlanNode()};
        QVERIFY(updateMany(nodes));
        QVERIFY(nodes.isEmpty());
    }
}

void KvPlanNodeEndpointsReplyTest::count_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("expected");
    QTest::newRow("some") << QByteArray(R"({"count": 1234})") << 1234;
    QTest::newRow("none") << QByteArray(R"({"count": 0})") << 0;
    QTest::newRow("largest") << QByteArray(R"({"count": 2147483647})") << 2147483647;
    QTest::newRow("missing") << QByteArray(R"({"total": 5})") << 0;
    QTest::newRow("null") << QByteArray(R"({"count": null})") << 0;
    QTest::newRow("text") << QByteArray(R"({"count": "5"})") << 0;
    QTest::newRow("no whole number") << QByteArray(R"({"count": 5.5})") << 0;
    QTest::newRow("too large") << QByteArray(R"({"count": 1e12})") << 0;
    QTest::newRow("list") << QByteArray(R"([{"count": 5}])") << 0;
}

void KvPlanNodeEndpointsReplyTest::count()
{
    QFETCH(QByteArray, body);
    QFETCH(int, expected);
    m_server.enqueue(Reply::text(body, "application/json"));
    int result = 77;
    QVERIFY(Kv::requestPlanNodeRangeCount(ofP1(), result));
    QCOMPARE(result, expected);
}

void KvPlanNodeEndpointsReplyTest::largeList()
{
    constexpr int size = 20000;
    QJsonArray array;
    for (int i = 0; i < size; ++i)
        array.append(nodeObject(QString::number(i), told));
    for (const ListCall& call : {readPage, readPlans, readTodo, createMany}) {
        m_server.enqueue(Reply::json(array));
        QList<KvPlanNode> nodes;
        QVERIFY(call(nodes));
        QCOMPARE(nodes.size(), size);
        QCOMPARE(nodes.first().id, QStringLiteral("0"));
        QCOMPARE(nodes.last().id, QString::number(size - 1));
    }
}

QTEST_GUILESS_MAIN(KvPlanNodeEndpointsReplyTest)
#include "KvPlanNodeEndpointsReplyTest.moc"
