// Finding plan nodes on the real service: filters, pages, plans, the to-do list; and removing them.

#include "KvPlanNodeServiceFixture.h"

#include <functional>

class KvPlanNodeListsServiceTest : public KvPlanNodeServiceFixture
{
    Q_OBJECT

private Q_SLOTS:
    void nodeOutsideAnyPlan();
    void filtersAndPages();
    void nodesOfSeveralPlans();
    void documentsComeWithTheNodes();
    void todoListIsInTheOrderOfItsDates();
    void deletion();
};

void KvPlanNodeListsServiceTest::nodeOutsideAnyPlan()
{
    const KvPlan plan = newPlan();
    KvPlanNode node = nodeNamed(QStringLiteral("lonely"));
    QVERIFY(data().createPlanNode(node));
    QCOMPARE(node.planId, QString());
    QCOMPARE(node.projectId, QStringLiteral("nodeOutsideAnyPlan")); // the current one
    KvPlanNodeCondition condition = nodesOf(plan.id);
    int count = -1;
    QVERIFY(data().getPlanNodeRangeCount(condition, count));
    QCOMPARE(count, 0);
    condition.withoutPlan = true;
    QVERIFY(data().getPlanNodeRangeCount(condition, count));
    QCOMPARE(count, 1);
    NodeList page;
    QVERIFY(data().getPlanNodeRangeData(condition, 0, 10, page));
    QCOMPARE(namesOf(page), QStringList{QStringLiteral("lonely")});
}

void KvPlanNodeListsServiceTest::filtersAndPages()
{
    const KvPlan plan = newPlan(QStringLiteral("c"));
    NodeList nodes;
    for (int i = 1; i <= 30; ++i) {
        nodes.append(nodeNamed(QStringLiteral("Wall %1 50%3").arg(i), i));
        if (i % 3 == 0)
            nodes.last().userIds = QStringList{QStringLiteral("li")};
        if (i % 5 == 0)
            nodes.last().executeIds = QStringList{QStringLiteral("li")};
        if (i % 2 == 0)
            nodes.last().actualFinishDate = QDateTime(QDate(2026, 5, 4), QTime(17, 0));
    }
    QVERIFY(data().createPlanNodes(plan.id, nodes));
    const auto count = [&](const std::function<void(KvPlanNodeCondition&)>& fill) {
        KvPlanNodeCondition condition = nodesOf(plan.id);
        fill(condition);
        int number = -1;
        NodeList page;
        if (!data().getPlanNodeRangeCount(condition, number))
            return -1;
        data().getPlanNodeRangeData(condition, 0, 100, page);
        return page.size() == number ? number : -2; // list and count agree
    };
    QCOMPARE(count([](KvPlanNodeCondition&) {}), 30);
    QCOMPARE(count([](KvPlanNodeCondition& c) { c.name = QStringLiteral("^wall 2"); }), 11);
    QCOMPARE(count([](KvPlanNodeCondition& c) { c.name = QStringLiteral("50%3$"); }), 30);
    QCOMPARE(count([](KvPlanNodeCondition& c) { c.userId = QStringLiteral("li"); }), 10);
    QCOMPARE(count([](KvPlanNodeCondition& c) { c.relativeUserId = QStringLiteral("li"); }), 14);
    QCOMPARE(count([](KvPlanNodeCondition& c) { c.finishState = 1; }), 15);
    QCOMPARE(count([](KvPlanNodeCondition& c) { c.finishState = 0; }), 15);
    QCOMPARE(count([](KvPlanNodeCondition& c) { c.category = QStringLiteral("c"); }), 30);
    QCOMPARE(count([](KvPlanNodeCondition& c) { c.category = QStringLiteral("other"); }), 0);
    const QDateTime today = nodes.first().createdAt;
    QCOMPARE(count([=](KvPlanNodeCondition& c) {
                 c.allTime = false;
                 c.startDate = c.endDate = today.date().startOfDay();
             }),
             30);
    QCOMPARE(count([=](KvPlanNodeCondition& c) {
                 c.allTime = false;
                 c.startDate = today.addDays(-9);
                 c.endDate = today.addDays(-2);
             }),
             0);
    // A pattern that is none is the service's refusal.
    QCOMPARE(count([](KvPlanNodeCondition& c) { c.name = QStringLiteral("("); }), -1);

    NodeList all;
    for (int skip = 0; skip < 30; skip += 7)
        QVERIFY(data().getPlanNodeRangeData(nodesOf(plan.id), skip, 7, all));
    QCOMPARE(namesOf(all), namesOf(nodes));
}

void KvPlanNodeListsServiceTest::nodesOfSeveralPlans()
{
    const KvPlan first = newPlan(QStringLiteral("one"));
    const KvPlan second = newPlan(QStringLiteral("one"));
    const KvPlan third = newPlan(QStringLiteral("three"));
    for (const KvPlan& plan : {first, second, third}) {
        NodeList nodes{nodeNamed(plan.category, 1), nodeNamed(plan.category, 2)};
        QVERIFY(data().createPlanNodes(plan.id, nodes));
    }
    data().clear();
    NodeList nodes;
    QVERIFY(data().getPlanNodesByPlanIds({second.id, first.id, third.id}, nodes));
    QCOMPARE(nodes.size(), 4); // of the first plan's category
    nodes.clear();
    QVERIFY(data().getPlanNodesByPlanIds({third.id, first.id}, nodes));
    QCOMPARE(namesOf(nodes), (QStringList{third.category, third.category}));
    nodes.clear();
    QVERIFY(data().getPlanNodesByPlanIds({QStringLiteral("no such plan"), third.id, first.id}, nodes));
    QCOMPARE(nodes.size(), 4); // of any
}

void KvPlanNodeListsServiceTest::documentsComeWithTheNodes()
{
    GetSoftCache()->setCurrentProjectId(m_seededProject);
    int documents = 0;
    const NodeList nodes = stored(m_seededPlan);
    QCOMPARE(nodes.size(), 200);
    for (const KvPlanNode& node : nodes) {
        QCOMPARE(node.documents.size(), node.documentIds.size());
        documents += node.documents.size();
    }
    QVERIFY(documents > 0);
    NodeList page;
    QVERIFY(data().getPlanNodeRangeData(nodesOf(m_seededPlan), 0, 200, page));
    QCOMPARE(page.size(), 200);
    for (const KvPlanNode& node : qAsConst(page))
        QVERIFY(node.documents.isEmpty()); // a page does not ask for them
}

void KvPlanNodeListsServiceTest::todoListIsInTheOrderOfItsDates()
{
    const KvPlan plan = newPlan(QStringLiteral("c"));
    NodeList nodes;
    for (int i = 0; i < 20; ++i) {
        nodes.append(nodeNamed(QString::number(i), i + 1));
        nodes.last().finishDate = QDateTime(QDate(2026, 5, 1).addDays((i * 7) % 20), QTime(17, 0));
        if (i % 4 == 0)
            nodes.last().actualFinishDate = nodes.last().finishDate;
    }
    QVERIFY(data().createPlanNodes(plan.id, nodes));
    NodeList todo;
    for (int skip = 0; skip < 20; skip += 4)
        QVERIFY(data().getAllPlanNodes(skip, 4, todo, QString()));
    QCOMPARE(todo.size(), 15);
    for (int i = 0; i < todo.size(); ++i) {
        QVERIFY(!todo.at(i).actualFinishDate.isValid());
        QVERIFY(i == 0 || todo.at(i - 1).finishDate < todo.at(i).finishDate);
    }
    NodeList none;
    QVERIFY(data().getAllPlanNodes(0, 100, none, QStringLiteral("other")));
    QVERIFY(none.isEmpty());
}

void KvPlanNodeListsServiceTest::deletion()
{
    const KvPlan plan = newPlan();
    NodeList nodes;
    for (const char* id : {"a", "b c", "d&e=\"f\"", "100%", "层", "g"}) {
        nodes.append(nodeNamed(QString::fromUtf8(id), nodes.size() + 1));
        nodes.last().id = QString::fromUtf8(id);
    }
    QVERIFY(data().createPlanNodes(plan.id, nodes));
    QVERIFY(data().deletePlanNodeById(QStringLiteral("a")));
    QVERIFY(!data().deletePlanNodeById(QStringLiteral("a")));
    QVERIFY(data().deletePlanNodesByIds({nodes[1].id, nodes[2].id, nodes[3].id, nodes[4].id, QString()}));
    QVERIFY(data().deletePlanNodesByIds({}));
    // The cache still has them all, and so sees no change.
    QVERIFY(!data().hasChanged(nodes));
    QCOMPARE(namesOf(stored(plan.id)), QStringList{QStringLiteral("g")});
}

QTEST_GUILESS_MAIN(KvPlanNodeListsServiceTest)
#include "KvPlanNodeListsServiceTest.moc"
