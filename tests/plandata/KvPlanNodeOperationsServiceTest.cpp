// A host's day with plan nodes on the real service: create, change, save.

#include "KvPlanNodeServiceFixture.h"

#include <model/KvPlanRecordsDump.h>

#include <functional>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlanNode;

using Edit = std::function<void(KvPlanNode&)>;
Q_DECLARE_METATYPE(Edit)

namespace {

// All that the service keeps of a node as it is sent.
KvPlanNode wholeNode()
{
    KvPlanNode node = fullPlanNode();
    node.id = QStringLiteral("whole \"1\" #+%");
    node.guid = QStringLiteral("guid");
    node.category.clear(); // as its plan
    node.planId.clear();
    node.projectId.clear();
    node.displaySimulation = true;
    node.finishedPercentage = 100.0 / 3;
    node.documentIds.clear();
    node.documents.clear();
    return node;
}

} // namespace

class KvPlanNodeOperationsServiceTest : public KvPlanNodeServiceFixture
{
    Q_OBJECT

private Q_SLOTS:
    void createdNodeComesBackWhole();
    void createdNodesComeBackInOrder();
    void creationIsAllOrNothing();
    void changedFieldIsKept_data();
    void changedFieldIsKept();
    void updateOfAnUncachedNodeIsRefused();
    void batchIsAllOrNothing();
    void savingAnEditedPlan();
};

void KvPlanNodeOperationsServiceTest::createdNodeComesBackWhole()
{
    const KvPlan plan = newPlan(QStringLiteral("construction"));
    const KvPlanNode sent = wholeNode();
    KvPlanNode node = sent;
    node.planId = plan.id;
    QVERIFY(data().createPlanNode(node));
    KvPlanNode wanted = sent;
    wanted.planId = plan.id;
    wanted.planName = plan.name;
    wanted.projectId = plan.projectId;
    wanted.category = plan.category;
    wanted.summary = false;
    wanted.milestone = false;
    wanted.createdBy = wanted.updatedBy = node.createdBy;
    wanted.createdAt = wanted.updatedAt = node.createdAt;
    wanted.predecessors += sent.predecessors; // the reply's are added to those that were sent
    QVERIFY(node.createdAt.isValid());
    QCOMPARE(difference(dump(node), dump(wanted)), QString());
    // Read into a fresh one: without what only this host knows.
    const KvPlanNode read = stored(node);
    QCOMPARE(read.predecessors.size(), 1);
    QVERIFY(!data().hasChanged({sent, node}));
    KvPlanNode known = node;
    known.predecessors = sent.predecessors;
    KvTest::visitPlanNodeFields([&, fresh = KvPlanNode()](const char* name, auto member) {
        const QByteArray field(name);
        if (field.startsWith("reserved") || field.endsWith("Text") || field == "notes" ||
            field == "duration" || field == "finishSlack" || field == "type" || field == "children")
            known.*member = fresh.*member;
    });
    QCOMPARE(difference(dump(read), dump(known)), QString());
}

void KvPlanNodeOperationsServiceTest::createdNodesComeBackInOrder()
{
    const KvPlan plan = newPlan();
    NodeList nodes;
    for (int i = 0; i < 500; ++i) {
        nodes.append(nodeNamed(QStringLiteral("墙 %1").arg((i * 7) % 500), i + 1));
        nodes.last().projectId = QStringLiteral("of the caller");
    }
    const QStringList names = namesOf(nodes);
    QVERIFY(data().createPlanNodes(plan.id, nodes));
    QCOMPARE(namesOf(nodes), names);
    QSet<QString> ids;
    for (const KvPlanNode& node : qAsConst(nodes)) {
        ids.insert(node.id);
        QCOMPARE(node.projectId, plan.projectId);
        QCOMPARE(node.planId, plan.id);
    }
    QCOMPARE(ids.size(), 500);
    QVERIFY(!ids.contains(QString()));
    QVERIFY(!data().hasChanged(nodes)); // cached as they came
    QCOMPARE(namesOf(stored(plan.id)), names);
}

void KvPlanNodeOperationsServiceTest::creationIsAllOrNothing()
{
    const KvPlan plan = newPlan();
    NodeList nodes{nodeNamed(QStringLiteral("a")), nodeNamed(QStringLiteral("b"))};
    nodes[0].id = nodes[1].id = QStringLiteral("the same twice");
    QVERIFY(!data().createPlanNodes(plan.id, nodes));
    QVERIFY(nodes.isEmpty());
    QVERIFY(stored(plan.id).isEmpty());
    nodes.append(nodeNamed(QStringLiteral("a")));
    QVERIFY(!data().createPlanNodes(QStringLiteral("no such plan"), nodes));
}

void KvPlanNodeOperationsServiceTest::changedFieldIsKept_data()
{
    QTest::addColumn<Edit>("edit");
    const auto row = [](const char* name, const Edit& edit) {
        QTest::newRow(name) << edit;
    };
    const QDateTime day(QDate(2026, 5, 4), QTime(7, 30, 15, 250));
    row("row", [](KvPlanNode& node) { node.planNodeId = 77; });
    row("unique id", [](KvPlanNode& node) { node.uniqueId = 78; });
    row("parent", [](KvPlanNode& node) { node.parentTaskId = 5; });
    row("name", [](KvPlanNode& node) { node.name = QStringLiteral("墙 \"A\"\n"); });
    row("start", [=](KvPlanNode& node) { node.startDate = day; });
    row("start taken back", [](KvPlanNode& node) { node.startDate = QDateTime(); });
    row("finish", [=](KvPlanNode& node) { node.finishDate = day; });
    row("progress", [](KvPlanNode& node) { node.finishedPercentage = 12.345678901234567; });
    row("no progress", [](KvPlanNode& node) { node.finishedPercentage = 0; });
    row("actual start", [=](KvPlanNode& node) { node.actualStartDate = day; });
    row("actual finish", [=](KvPlanNode& node) { node.actualFinishDate = day; });
    row("simulation", [](KvPlanNode& node) { node.displaySimulation = !node.displaySimulation; });
    row("planned workload", [](KvPlanNode& node) { node.planWorkload = 0; });
    row("actual workload", [](KvPlanNode& node) { node.actualWorkload = 2147483647; });
    row("effect", [](KvPlanNode& node) { node.dynamicEffect = 3; });
    row("hide date", [=](KvPlanNode& node) { node.entityHideDate = day; });
    row("hide type", [](KvPlanNode& node) { node.entityHideType = -2; });
    row("users", [](KvPlanNode& node) {
        node.userIds = QStringList{QStringLiteral("b"), QStringLiteral("a")};
    });
    row("no users", [](KvPlanNode& node) { node.userIds.clear(); });
    row("executing users", [](KvPlanNode& node) { node.executeIds.append(QStringLiteral("c")); });
    row("cooperating users", [](KvPlanNode& node) { node.cooperateIds.append(QStringLiteral("d")); });
    row("links", [](KvPlanNode& node) { node.links.insert(QStringLiteral("m2"), {QStringLiteral("e9")}); });
    row("no links", [](KvPlanNode& node) { node.links.clear(); });
}

// Each field that counts as a change, by the single update and by saving: it comes back, and nothing else has
// changed.
void KvPlanNodeOperationsServiceTest::changedFieldIsKept()
{
    QFETCH(Edit, edit);
    const KvPlan plan = newPlan();
    KvPlanNode node = wholeNode();
    node.id.clear();
    node.planId = plan.id;
    QVERIFY(data().createPlanNode(node));
    const KvPlanNode before = stored(node);
    KvPlanNode wanted = before;
    edit(wanted);
    QVERIFY(data().hasChanged({wanted}));
    for (const bool bySaving : {false, true}) {
        if (bySaving) {
            data().savePlanNodes(plan.id, {wanted});
            QVERIFY(data().hasChanged({wanted})); // until it is read again
        } else {
            KvPlanNode edited = wanted;
            QVERIFY(data().updatePlanNode(edited));
        }
        KvPlanNode after = stored(node);
        QVERIFY(!data().hasChanged({wanted}));
        after.updatedAt = wanted.updatedAt;
        QCOMPARE(difference(dump(after), dump(wanted)), QString());
        // And back again, for the other way.
        KvPlanNode back = before;
        QVERIFY(data().updatePlanNode(back));
        QVERIFY(!data().hasChanged({stored(node)}));
    }
}

void KvPlanNodeOperationsServiceTest::updateOfAnUncachedNodeIsRefused()
{
    const KvPlan plan = newPlan();
    NodeList nodes{nodeNamed(QStringLiteral("a"))};
    QVERIFY(data().createPlanNodes(plan.id, nodes));
    KvPlanNode edited = nodes.first();
    edited.name = QStringLiteral("b");
    data().clear();
    // An empty node has no id to send it to; a batch carries the id beside the whole node.
    KvPlanNode single = edited;
    QVERIFY(!data().updatePlanNode(single));
    QCOMPARE(stored(edited).name, QStringLiteral("a"));
    data().clear();
    data().savePlanNodes(plan.id, {edited});
    QCOMPARE(stored(edited).name, QStringLiteral("b"));
}

void KvPlanNodeOperationsServiceTest::batchIsAllOrNothing()
{
    const KvPlan plan = newPlan();
    NodeList nodes{nodeNamed(QStringLiteral("a"), 1), nodeNamed(QStringLiteral("b"), 2)};
    QVERIFY(data().createPlanNodes(plan.id, nodes));
    NodeList edited = nodes;
    edited[0].name = edited[1].name = QStringLiteral("changed");
    KvPlanNode gone = nodeNamed(QStringLiteral("gone"));
    gone.id = QStringLiteral("no such node");
    edited.append(gone);
    QVERIFY(!data().updatePlanNodes(edited));
    QVERIFY(edited.isEmpty());
    QCOMPARE(namesOf(stored(plan.id)), namesOf(nodes));
    // Nothing to change is a success as well.
    edited = nodes;
    QVERIFY(data().updatePlanNodes(edited));
    edited.clear();
    QVERIFY(data().updatePlanNodes(edited));
}

void KvPlanNodeOperationsServiceTest::savingAnEditedPlan()
{
    const KvPlan plan = newPlan();
    NodeList nodes;
    for (int i = 1; i <= 300; ++i)
        nodes.append(nodeNamed(QStringLiteral("task %1").arg(i), i));
    QVERIFY(data().createPlanNodes(plan.id, nodes));
    NodeList edited = nodes;
    for (int i = 0; i < edited.size(); i += 3)
        edited[i].planWorkload = i;
    for (int i = 301; i <= 310; ++i)
        edited.append(nodeNamed(QStringLiteral("task %1").arg(i), i));
    const int before = m_requests;
    data().savePlanNodes(plan.id, edited);
    QCOMPARE(m_requests - before, 2); // one to create, one to update
    const NodeList after = stored(plan.id);
    QCOMPARE(namesOf(after), namesOf(edited));
    for (int i = 0; i < after.size(); ++i)
        QCOMPARE(after.at(i).planWorkload, edited.at(i).planWorkload);
    // Saved and read again there is nothing left to save.
    const int saved = m_requests;
    QVERIFY(!data().hasChanged(after));
    data().savePlanNodes(plan.id, after);
    QCOMPARE(m_requests, saved);
}

QTEST_GUILESS_MAIN(KvPlanNodeOperationsServiceTest)
#include "KvPlanNodeOperationsServiceTest.moc"
