// What created and changed plan nodes send: the project of the new ones, the differences of the edited ones,
// and nothing where there is none.

#include "EndpointsFixture.h"

#include <service/KvPlanNodeEndpoints.h>

#include <model/KvPlanRecordsDump.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

#include <functional>
#include <limits>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlanNode;
using KvTest::Reply;

using Edit = std::function<void(KvPlanNode&)>;
using Changes = QList<QPair<KvPlanNode, KvPlanNode>>;
Q_DECLARE_METATYPE(Edit)

namespace {

const QString p1 = QStringLiteral("p1");

KvPlanNode edited(const KvPlanNode& node, const Edit& edit)
{
    KvPlanNode copy = node;
    edit(copy);
    return copy;
}

KvPlanNode nodeOf(const char* id, const char* name)
{
    KvPlanNode node;
    node.id = QString::fromLatin1(id);
    node.name = QString::fromLatin1(name);
    return node;
}

// Fields that are not written, or not written when they are empty: nobody can tell such a change.
void changeWhatIsNotWritten(KvPlanNode& node)
{
    node.planName = QStringLiteral("other");
    node.milestone = !node.milestone;
    node.summary = !node.summary;
    node.documents.clear();
    node.children.clear();
    node.notes = node.startText = node.finishText = node.durationText = QStringLiteral("other");
    node.duration.value += 1;
    node.finishSlack.units += 1;
    node.type += 1;
    node.reservedText1 = node.reservedText5 = QStringLiteral("other");
    node.reservedTail += 1;
    node.name.clear();
    node.remark.clear();
    node.planId.clear();
    node.projectId.clear();
    node.createdBy.clear();
    node.updatedBy.clear();
    node.guid.clear();
    node.id.clear();
    node.finishedPercentage = -0.5;
    node.planWorkload = -1;
    node.actualWorkload = -7;
    node.dynamicEffect = -1;
}

} // namespace

class KvPlanNodeEndpointsWriteTest : public EndpointsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void createdNodeGetsTheProject_data();
    void createdNodeGetsTheProject();
    void createdNodesAllGetTheProject();
    void sendsWhatDiffers_data();
    void sendsWhatDiffers();
    void updateGoesToTheCachedNode();
    void updateWithoutDifference_data();
    void updateWithoutDifference();
    void manyUpdatesInOneRequest();
    void manyUpdatesWithoutDifference();
    void idInTheBatchIsTheEditedOne();
    void listIsEmptiedBeforeTheRequest();
};

void KvPlanNodeEndpointsWriteTest::createdNodeGetsTheProject_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("sent");
    QTest::newRow("none: the current one") << QString() << "project-1";
    QTest::newRow("empty: the current one") << ""
                                            << "project-1";
    QTest::newRow("another: kept") << "project-2"
                                   << "project-2";
}

void KvPlanNodeEndpointsWriteTest::createdNodeGetsTheProject()
{
    QFETCH(QString, given);
    QFETCH(QString, sent);
    m_server.enqueue(Reply::json(QJsonObject()));
    KvPlanNode node = fullPlanNode();
    const QString id = node.id;
    node.projectId = given;
    QVERIFY(Kv::requestCreatePlanNode(node));
    const QJsonObject body = m_server.lastRequest().object();
    QCOMPARE(body.value(QLatin1String("projectId")).toString(), sent);
    QCOMPARE(body.value(QLatin1String("_id")).toString(), id);
}

// Whatever project they say, in the caller's own list; their plan is sent as it is.
void KvPlanNodeEndpointsWriteTest::createdNodesAllGetTheProject()
{
    QList<KvPlanNode> nodes;
    for (const char* project : {"project-2", "", "project-1"}) {
        nodes.append(fullPlanNode(nodes.size()));
        nodes.last().projectId = QString::fromLatin1(project);
    }
    const QList<KvPlanNode> before = nodes;
    QStringList duringTheRequest;
    m_server.setHandler([&](const KvTest::Request&) {
        for (const KvPlanNode& node : qAsConst(nodes))
            duringTheRequest.append(node.projectId);
        return Reply::json(QJsonArray());
    });
    QVERIFY(Kv::requestCreatePlanNodes(p1, nodes));
    m_server.setHandler(nullptr);
    const QString current = QStringLiteral("project-1");
    QCOMPARE(duringTheRequest, (QStringList{current, current, current}));
    QCOMPARE(before.at(0).projectId, QStringLiteral("project-2")); // a list that shared the nodes
    const QJsonArray body = m_server.lastRequest().array();
    QCOMPARE(body.size(), 3);
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(body.at(i).toObject().value(QLatin1String("projectId")).toString(), current);
        QCOMPARE(body.at(i).toObject().value(QLatin1String("_id")).toString(), before.at(i).id);
        QCOMPARE(body.at(i).toObject().value(QLatin1String("planId")).toString(), before.at(i).planId);
    }
}

void KvPlanNodeEndpointsWriteTest::sendsWhatDiffers_data()
{
    QTest::addColumn<Edit>("edit");
    QTest::addColumn<QString>("keys");
    const auto row = [](const char* keys, const Edit& edit, const char* name = nullptr) {
        QTest::newRow(name ? name : keys) << edit << QString::fromLatin1(keys);
    };
    const QDateTime day(QDate(2030, 1, 2), QTime(3, 4));
    row("_id", [](KvPlanNode& node) { node.id += QLatin1Char('x'); });
    row("GUID", [](KvPlanNode& node) { node.guid += QLatin1Char('x'); });
    row("planId", [](KvPlanNode& node) { node.planId += QLatin1Char('x'); });
    row("projectId", [](KvPlanNode& node) { node.projectId += QLatin1Char('x'); });
    row("id", [](KvPlanNode& node) { ++node.planNodeId; });
    row("category", [](KvPlanNode& node) { node.category += QLatin1Char('x'); });
    row(
        "category", [](KvPlanNode& node) { node.category.clear(); }, "category cleared, which is sent");
    row("uniqueId", [](KvPlanNode& node) { node.uniqueId = -1; });
    row("parentTaskID", [](KvPlanNode& node) { ++node.parentTaskId; });
    row("name", [](KvPlanNode& node) { node.name = node.name.toUpper(); });
    row("isDistributed", [](KvPlanNode& node) { node.isDistributed = !node.isDistributed; });
    row("remark", [](KvPlanNode& node) { node.remark += QLatin1Char('x'); });
    row("createdBy", [](KvPlanNode& node) { node.createdBy += QLatin1Char('x'); });
    row("updatedBy", [](KvPlanNode& node) { node.updatedBy += QLatin1Char('x'); });
    row("createdAt", [=](KvPlanNode& node) { node.createdAt = day; });
    row("updatedAt", [=](KvPlanNode& node) { node.updatedAt = day; });
    row("startDate", [=](KvPlanNode& node) { node.startDate = node.startDate.addMSecs(1); });
    row("finishDate", [=](KvPlanNode& node) { node.finishDate = day; });
    row(
        "finishDate", [=](KvPlanNode& node) { node.finishDate = QDateTime(); },
        "finish cleared, which is sent");
    row("actualStartDate", [=](KvPlanNode& node) { node.actualStartDate = day; });
    row("actualFinishDate", [=](KvPlanNode& node) { node.actualFinishDate = day; });
    row("displaySimulation", [](KvPlanNode& node) { node.displaySimulation = !node.displaySimulation; });
    row("finishedPercentage", [](KvPlanNode& node) { node.finishedPercentage = 0; });
    row("planWorkload", [](KvPlanNode& node) { node.planWorkload = 0; });
    row("actualWorkload", [](KvPlanNode& node) { ++node.actualWorkload; });
    row("dynamicEffect", [](KvPlanNode& node) { node.dynamicEffect = -2; });
    row("predecessors", [](KvPlanNode& node) { node.predecessors.first().lag.value += 1; });
    row(
        "predecessors", [](KvPlanNode& node) { node.predecessors.clear(); }, "no predecessors");
    row("links", [](KvPlanNode& node) { node.links.first().append(QStringLiteral("e")); });
    row("entityHideDate", [=](KvPlanNode& node) { node.entityHideDate = day; });
    row("entityHideType", [](KvPlanNode& node) { ++node.entityHideType; });
    row("userIds", [](KvPlanNode& node) { std::swap(node.userIds[0], node.userIds[1]); });
    row("executeIds", [](KvPlanNode& node) { node.executeIds.clear(); });
    row("cooperateIds", [](KvPlanNode& node) { node.cooperateIds.append(QString()); });
    row("documentIds", [](KvPlanNode& node) { node.documentIds.removeFirst(); });
    row("materialBills", [](KvPlanNode& node) { node.materialBills.clear(); });
    row("name uniqueId", [](KvPlanNode& node) {
        node.name = QStringLiteral("x");
        node.uniqueId = 0;
    });
    row(
        "userIds",
        [](KvPlanNode& node) {
            changeWhatIsNotWritten(node);
            node.userIds.clear();
        },
        "one changed, and what nobody can tell");
}

void KvPlanNodeEndpointsWriteTest::sendsWhatDiffers()
{
    QFETCH(Edit, edit);
    QFETCH(QString, keys);
    const KvPlanNode cached = fullPlanNode();
    KvPlanNode node = edited(cached, edit);
    KvPlanNode created = node;
    QList<KvPlanNode> list{node};
    Reply reply = Reply::json(QJsonObject());
    reply.closeAfter = true; // on a kept connection each body would wait some 40 ms for TCP
    for (int i = 0; i < 3; ++i)
        m_server.enqueue(reply);
    QVERIFY(Kv::requestUpdatePlanNode(cached, node));
    QCOMPARE(m_server.requestCount(), 1);
    QCOMPARE(m_server.lastRequest().method, QByteArray("PUT"));
    QCOMPARE(m_server.lastRequest().decodedPath(), QStringLiteral("/task-service/planNodes/") + cached.id);
    QJsonObject body = m_server.lastRequest().object();
    QCOMPARE(body.keys().join(QLatin1Char(' ')), keys);
    // With the values that the whole node would be sent with.
    created.projectId = created.projectId.isEmpty() ? QStringLiteral("project-1") : created.projectId;
    QVERIFY(Kv::requestCreatePlanNode(created));
    const QJsonObject whole = m_server.lastRequest().object();
    for (const QString& key : body.keys())
        QCOMPARE(body.value(key), whole.value(key));
    // The same in a batch, with the id.
    QVERIFY(Kv::requestUpdatePlanNodes({{cached, list.first()}}, list));
    body.insert(QStringLiteral("_id"), edited(cached, edit).id);
    QCOMPARE(m_server.lastRequest().array(), QJsonArray{body});
}

void KvPlanNodeEndpointsWriteTest::updateGoesToTheCachedNode()
{
    KvPlanNode node = nodeOf("edited", "new");
    m_server.enqueue(Reply::json(QJsonObject()));
    QVERIFY(Kv::requestUpdatePlanNode(nodeOf("cached one", "old"), node));
    QCOMPARE(m_server.lastRequest().target, QByteArray("/task-service/planNodes/cached%20one"));
    QCOMPARE(m_server.lastRequest().body, QByteArray(R"({"_id":"edited","name":"new"})"));

    node = nodeOf("n1", "new");
    m_server.enqueue(Reply::json(QJsonObject(), 404));
    QVERIFY(!Kv::requestUpdatePlanNode(KvPlanNode(), node)); // of a node that is not cached
    QCOMPARE(m_server.lastRequest().target, QByteArray("/task-service/planNodes/"));
    QCOMPARE(m_server.lastRequest().body, QByteArray(R"({"_id":"n1","name":"new"})"));
}

void KvPlanNodeEndpointsWriteTest::updateWithoutDifference_data()
{
    QTest::addColumn<Edit>("edit");
    QTest::newRow("nothing") << Edit([](KvPlanNode&) {});
    QTest::newRow("what nobody can tell") << Edit(changeWhatIsNotWritten);
    QTest::newRow("no progress at all")
        << Edit([](KvPlanNode& node) { node.finishedPercentage = std::numeric_limits<double>::quiet_NaN(); });
}

void KvPlanNodeEndpointsWriteTest::updateWithoutDifference()
{
    QFETCH(Edit, edit);
    const KvPlanNode cached = fullPlanNode();
    KvPlanNode node = edited(cached, edit);
    QVERIFY(Kv::requestUpdatePlanNode(cached, node));
    QCOMPARE(m_server.requestCount(), 0);
    QCOMPARE(difference(dump(node), dump(cached)), QString()); // the whole record
    // The same record twice, and where nobody listens.
    KvBaseApi::GetInstance().setBaseApi(KvTest::ScriptedServer::refusingUrl());
    QVERIFY(Kv::requestUpdatePlanNode(node, node));
    QCOMPARE(difference(dump(node), dump(cached)), QString());
}

void KvPlanNodeEndpointsWriteTest::manyUpdatesInOneRequest()
{
    const KvPlanNode a = nodeOf("a", "old");
    const KvPlanNode b = nodeOf("b", "old");
    const KvPlanNode c = nodeOf("c", "old");
    const Changes changes{{b, edited(b, [](KvPlanNode& node) { node.name = QStringLiteral("new"); })},
                          {a, a},
                          {c, edited(c, changeWhatIsNotWritten)},
                          {KvPlanNode(), nodeOf("d", "")},
                          {a, edited(a, [](KvPlanNode& node) { node.uniqueId = 5; })},
                          {b, edited(b, [](KvPlanNode& node) { node.planWorkload = 3; })}};
    m_server.enqueue(Reply::json(QJsonObject()));
    QList<KvPlanNode> nodes{a, b};
    QVERIFY(Kv::requestUpdatePlanNodes(changes, nodes));
    QCOMPARE(m_server.requestCount(), 1);
    QCOMPARE(m_server.lastRequest().method, QByteArray("PUT"));
    QCOMPARE(m_server.lastRequest().target, QByteArray("/task-service/planNodes"));
    // In the order of the pairs, also of one node twice.
    QCOMPARE(m_server.lastRequest().body,
             QByteArray(R"([{"_id":"b","name":"new"},{"_id":"d"},{"_id":"a","uniqueId":5},)"
                        R"({"_id":"b","planWorkload":3}])"));
    QVERIFY(nodes.isEmpty());
}

// Sent all the same, and the answer is the service's.
void KvPlanNodeEndpointsWriteTest::manyUpdatesWithoutDifference()
{
    const KvPlanNode node = fullPlanNode();
    for (const Changes& changes : {Changes(), Changes{{node, node}}}) {
        for (const int status : {200, 403}) {
            m_server.enqueue(Reply::json(QJsonObject(), status));
            QList<KvPlanNode> nodes{node};
            QCOMPARE(Kv::requestUpdatePlanNodes(changes, nodes), status == 200);
            QCOMPARE(m_server.lastRequest().method, QByteArray("PUT"));
            QCOMPARE(m_server.lastRequest().target, QByteArray("/task-service/planNodes"));
            QCOMPARE(m_server.lastRequest().body, QByteArray("[]"));
            QVERIFY(nodes.isEmpty());
        }
    }
    QCOMPARE(m_server.requestCount(), 4);
}

void KvPlanNodeEndpointsWriteTest::idInTheBatchIsTheEditedOne()
{
    m_server.enqueue(Reply::empty());
    QList<KvPlanNode> nodes;
    QVERIFY(Kv::requestUpdatePlanNodes(
        {{nodeOf("a", "old"), nodeOf("b", "old")}, {nodeOf("a", "old"), nodeOf("", "new")}}, nodes));
    QCOMPARE(m_server.lastRequest().body, QByteArray(R"([{"_id":"b"},{"_id":"","name":"new"}])"));
}

void KvPlanNodeEndpointsWriteTest::listIsEmptiedBeforeTheRequest()
{
    QList<KvPlanNode> nodes{nodeOf("a", "new"), nodeOf("b", "new")};
    int duringTheRequest = -1;
    m_server.setHandler([&](const KvTest::Request&) {
        duringTheRequest = nodes.size();
        nodes.append(nodeOf("c", "put in meanwhile"));
        return Reply::json(QJsonArray{QJsonObject{{QStringLiteral("_id"), QStringLiteral("told")}}});
    });
    QVERIFY(Kv::requestUpdatePlanNodes({{nodeOf("a", "old"), nodes.first()}}, nodes));
    m_server.setHandler(nullptr);
    QCOMPARE(duringTheRequest, 0);
    // Nothing is read from the reply, and what the host did meanwhile stays.
    QCOMPARE(nodes.size(), 1);
    QCOMPARE(nodes.first().name, QStringLiteral("put in meanwhile"));
}

QTEST_GUILESS_MAIN(KvPlanNodeEndpointsWriteTest)
#include "KvPlanNodeEndpointsWriteTest.moc"
