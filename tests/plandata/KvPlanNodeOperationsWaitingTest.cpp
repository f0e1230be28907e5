// What a host may do from a timer while one of the operations on plan nodes waits: any of them again, and
// whatever it likes with its own lists.

#include "KvPlanNodeOperationsFixture.h"

using KvTest::Reply;
using NodeList = QList<KvPlanNode>;

class KvPlanNodeOperationsWaitingTest : public KvPlanNodeOperationsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void listFilledDuringABatchUpdate_data();
    void listFilledDuringABatchUpdate();
    void cacheEmptiedDuringABatchUpdate();
    void cacheEmptiedDuringAnUpdate();
    void twoUpdatesOfOneNode();
    void listChangedDuringACreation();
    void creationDuringACreation();
    void listsChangedDuringAReadOfPlans();
    void plansForgottenDuringTheReadOfTheFirst();
    void cacheEmptiedDuringAReadOfPlans();
    void listEmptiedDuringAPage();
    void nodeReadDuringAPage();
    void pageDuringAPage();
    void listEditedDuringASave();
    void saveDuringASave();
    void deletionDuringAnUpdate();

private:
    void letGo()
    {
        m_server.enqueue(Reply::empty()); // for the request that lets the held reply go
    }
};

void KvPlanNodeOperationsWaitingTest::listFilledDuringABatchUpdate_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("cached");
    QTest::newRow("success: what is in the list is cached") << 200 << "two";
    QTest::newRow("failure: nothing is") << 500 << "-";
}

// The list is the host's again as soon as the request is on its way.
void KvPlanNodeOperationsWaitingTest::listFilledDuringABatchUpdate()
{
    QFETCH(int, status);
    QFETCH(QString, cached);
    NodeList nodes{readNodeAs(n1, one)};
    nodes[0].name = changed;
    m_server.enqueue(held(Reply::json(QJsonObject(), status)));
    letGo();
    duringTheWait([&] {
        QVERIFY(nodes.isEmpty());
        nodes.append(nodeOf(n2, two));
        QVERIFY(data().deletePlanNodeById(n3));
    });
    QCOMPARE(data().updatePlanNodes(nodes), status == 200);
    QCOMPARE(namesOfNodes(nodes), QStringList{two});
    QCOMPARE(cachedName(n1), one);
    QCOMPARE(cachedName(n2), cached);
}

void KvPlanNodeOperationsWaitingTest::cacheEmptiedDuringABatchUpdate()
{
    NodeList nodes{readNodeAs(n1, one), nodeOf(n2, two)};
    nodes[0].name = changed;
    m_server.enqueue(held(Reply::json(QJsonObject())));
    letGo();
    duringTheWait([&] {
        QCOMPARE(cachedName(n2), QString()); // the entry of a node that was not cached stands
        data().clear();
        QVERIFY(data().deletePlanNodeById(n3));
    });
    QVERIFY(data().updatePlanNodes(nodes));
    QCOMPARE(m_server.requests().first().body,
             QByteArray(R"([{"_id":"n1","name":"changed"},{"_id":"n2","name":"two"}])"));
    QCOMPARE(cachedName(n1), QStringLiteral("-"));
    QCOMPARE(cachedName(n2), QStringLiteral("-"));
}

void KvPlanNodeOperationsWaitingTest::cacheEmptiedDuringAnUpdate()
{
    KvPlanNode node = readNodeAs(n1, one);
    node.name = changed;
    m_server.enqueue(held(Reply::json(record(n1, changed))));
    letGo();
    duringTheWait([&] {
        data().clear();
        QVERIFY(data().deletePlanNodeById(n3));
    });
    QVERIFY(data().updatePlanNode(node));
    QCOMPARE(m_server.requests().first().body, QByteArray("{\"name\":\"changed\"}"));
    QCOMPARE(cachedName(n1), changed);
}

void KvPlanNodeOperationsWaitingTest::twoUpdatesOfOneNode()
{
    KvPlanNode outer = readNodeAs(n1, one);
    KvPlanNode inner = outer;
    outer.name = changed;
    inner.uniqueId = 4;
    m_server.enqueue(held(Reply::json(record(n1, changed))));
    m_server.enqueue(Reply::json(record(n1, two)));
    duringTheWait([&] {
        QVERIFY(data().updatePlanNode(inner));
        QCOMPARE(cachedName(n1), two);
    });
    QVERIFY(data().updatePlanNode(outer));
    // Each carries its own change alone.
    QCOMPARE(m_server.requests().at(0).body, QByteArray("{\"name\":\"changed\"}"));
    QCOMPARE(m_server.requests().at(1).body, QByteArray("{\"uniqueId\":4}"));
    QCOMPARE(inner.name, two);
    QCOMPARE(outer.name, changed);
    QCOMPARE(cachedName(n1), changed); // the outer one ends last
}

void KvPlanNodeOperationsWaitingTest::listChangedDuringACreation()
{
    NodeList nodes{nodeOf(QString(), one), nodeOf(QString(), two)};
    m_server.enqueue(held(Reply::json(QJsonArray{record(n1, one)})));
    letGo();
    duringTheWait([&] {
        nodes.removeFirst();
        nodes.append(nodeOf(n3, changed));
        QVERIFY(data().deletePlanNodeById(n3));
    });
    QVERIFY(data().createPlanNodes(p1, nodes));
    QCOMPARE(m_server.requests().first().array().size(), 2);
    QCOMPARE(namesOfNodes(nodes), QStringList{one}); // replaced by the reply, whatever was put in
    QCOMPARE(cachedName(n1), one);
    QCOMPARE(cachedName(n3), QStringLiteral("-"));
}

void KvPlanNodeOperationsWaitingTest::creationDuringACreation()
{
    KvPlanNode outer = nodeOf(QString(), one);
    NodeList inner{nodeOf(QString(), two)};
    m_server.enqueue(held(Reply::json(record(n1, one))));
    m_server.enqueue(Reply::json(QJsonArray{record(n2, two)}));
    duringTheWait([&] { QVERIFY(data().createPlanNodes(p1, inner)); });
    QVERIFY(data().createPlanNode(outer));
    QCOMPARE(outer.id, n1);
    QCOMPARE(inner.first().id, n2);
    QCOMPARE(cachedName(n1), one);
    QCOMPARE(cachedName(n2), two);
}

void KvPlanNodeOperationsWaitingTest::listsChangedDuringAReadOfPlans()
{
    readPlan(p1, one);
    QStringList planIds{p1, p2};
    NodeList nodes{nodeOf(n1, one), nodeOf(n2, two)};
    m_server.enqueue(held(Reply::json(QJsonArray{record(n3, changed)})));
    letGo();
    duringTheWait([&] {
        planIds.clear();
        nodes.removeFirst(); // the host's own nodes are not the ones that were returned
        QVERIFY(data().deletePlanNodeById(n3));
    });
    QVERIFY(data().getPlanNodesByPlanIds(planIds, nodes));
    QCOMPARE(namesOfNodes(nodes), (QStringList{two, changed}));
    QCOMPARE(cachedName(n2), QStringLiteral("-"));
    QCOMPARE(cachedName(n3), changed);
}

// The list whose first plan is being read goes away: nothing is left to ask for.
void KvPlanNodeOperationsWaitingTest::plansForgottenDuringTheReadOfTheFirst()
{
    QStringList planIds{p1, p2};
    NodeList nodes{nodeOf(n1, one)};
    m_server.enqueue(held(Reply::json(record(p1, one))));
    letGo();
    duringTheWait([&] {
        planIds.clear();
        QVERIFY(data().deletePlanNodeById(n3));
    });
    QVERIFY(data().getPlanNodesByPlanIds(planIds, nodes));
    QCOMPARE(targets(), (QByteArrayList{"GET /task-service/plans/p1", "DELETE /task-service/planNodes/n3"}));
    QCOMPARE(nodes.size(), 1);
    QCOMPARE(data().getPlanName(p1), one);
}

void KvPlanNodeOperationsWaitingTest::cacheEmptiedDuringAReadOfPlans()
{
    readPlan(p1, one);
    readNodeAs(n1, one);
    m_server.enqueue(held(Reply::json(QJsonArray{record(n2, two)})));
    letGo();
    duringTheWait([&] {
        data().clear();
        QVERIFY(data().deletePlanNodeById(n3));
    });
    NodeList nodes;
    QVERIFY(data().getPlanNodesByPlanIds({p1}, nodes));
    QCOMPARE(cachedName(n1), QStringLiteral("-"));
    QCOMPARE(cachedName(n2), two);
    QVERIFY(data().getPlanName(p1).isNull());
}

void KvPlanNodeOperationsWaitingTest::listEmptiedDuringAPage()
{
    m_server.enqueue(held(Reply::json(QJsonArray{record(n1, one)})));
    letGo();
    NodeList nodes{KvPlanNode(), KvPlanNode(), KvPlanNode()};
    duringTheWait([&] {
        nodes.clear(); // the host closes its list
        QVERIFY(data().deletePlanNodeById(n3));
    });
    QVERIFY(data().getPlanNodeRangeData(nodesOf(p1), 0, 1, nodes));
    QCOMPARE(namesOfNodes(nodes), QStringList{one});
}

// Emptied behind the wait, not before it: what was read meanwhile goes as well.
void KvPlanNodeOperationsWaitingTest::nodeReadDuringAPage()
{
    m_server.enqueue(held(Reply::json(QJsonArray{record(n1, one)})));
    m_server.enqueue(Reply::json(record(n2, two)));
    duringTheWait([&] {
        KvPlanNode node;
        QVERIFY(data().getPlanNodeById(n2, node));
        QCOMPARE(cachedName(n2), two);
    });
    NodeList nodes;
    QVERIFY(data().getPlanNodeRangeData(nodesOf(p1), 0, 1, nodes));
    QCOMPARE(cachedName(n2), QStringLiteral("-"));
}

// As a list that is scrolled on before its first page has come.
void KvPlanNodeOperationsWaitingTest::pageDuringAPage()
{
    m_server.enqueue(held(Reply::json(QJsonArray{record(n1, one)})));
    m_server.enqueue(Reply::json(QJsonArray{record(n2, two)}));
    NodeList nodes;
    duringTheWait([&] { QVERIFY(data().getPlanNodeRangeData(nodesOf(p1), 1, 1, nodes)); });
    QVERIFY(data().getPlanNodeRangeData(nodesOf(p1), 0, 1, nodes));
    QCOMPARE(namesOfNodes(nodes), (QStringList{two, one}));
}

void KvPlanNodeOperationsWaitingTest::listEditedDuringASave()
{
    NodeList nodes{readNodeAs(n1, one), nodeOf(QString(), two)};
    nodes[0].name = changed;
    m_server.enqueue(held(Reply::json(QJsonArray{record(n2, two)})));
    letGo();
    m_server.enqueue(Reply::json(QJsonArray()));
    duringTheWait([&] {
        nodes.clear();
        QVERIFY(data().deletePlanNodeById(n3));
    });
    data().savePlanNodes(p1, nodes);
    QCOMPARE(targets(), (QByteArrayList{"POST /task-service/plans/p1/planNodes",
                                        "DELETE /task-service/planNodes/n3", "PUT /task-service/planNodes"}));
    // What was to be saved when it began.
    QCOMPARE(m_server.lastRequest().body, QByteArray(R"([{"_id":"n1","name":"changed"}])"));
    QVERIFY(nodes.isEmpty());
    QCOMPARE(cachedName(n2), two);
}

void KvPlanNodeOperationsWaitingTest::saveDuringASave()
{
    const NodeList outer{nodeOf(QString(), one)};
    KvPlanNode edited = readNodeAs(n1, one);
    edited.name = changed;
    m_server.enqueue(held(Reply::json(QJsonArray{record(n2, one)})));
    m_server.enqueue(Reply::json(QJsonArray()));
    duringTheWait([&] { data().savePlanNodes(p2, {edited}); });
    data().savePlanNodes(p1, outer);
    QCOMPARE(targets(),
             (QByteArrayList{"POST /task-service/plans/p1/planNodes", "PUT /task-service/planNodes"}));
    QCOMPARE(cachedName(n1), one);
    QCOMPARE(cachedName(n2), one);
}

void KvPlanNodeOperationsWaitingTest::deletionDuringAnUpdate()
{
    KvPlanNode node = readNodeAs(n1, one);
    node.name = changed;
    m_server.enqueue(held(Reply::json(QJsonObject(), 404)));
    m_server.enqueue(Reply::empty());
    duringTheWait([&] { QVERIFY(data().deletePlanNodesByIds({n1})); });
    QVERIFY(!data().updatePlanNode(node));
    QCOMPARE(cachedName(n1), one);
}

QTEST_GUILESS_MAIN(KvPlanNodeOperationsWaitingTest)
#include "KvPlanNodeOperationsWaitingTest.moc"
