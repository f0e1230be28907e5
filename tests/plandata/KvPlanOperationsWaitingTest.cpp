// What a host may do from a timer while one of the plan operations waits: any of them again.

#include "KvPlanOperationsFixture.h"

#include <QtCore/QTimer>

#include <functional>

using KvTest::Reply;

class KvPlanOperationsWaitingTest : public KvPlanOperationsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void readDuringTheListRead();
    void listReadDuringAnUpdate();
    void cachesEmptiedDuringAnUpdate();
    void entryOfAnUncachedPlanStandsDuringTheUpdate();
    void twoUpdatesOfOnePlan();
    void creationDuringACreation();
    void innerFailureLeavesTheOuterCreation();
    void pageDuringAPage_data();
    void pageDuringAPage();
    void listEmptiedDuringAPage();
    void listReadDuringAListRead();
    void deletionDuringTheListRead();

private:
    void duringTheWait(const std::function<void()>& work);
    static Reply held(Reply reply) { return reply.heldUntil(2); }
};

// Runs `work` from a timer once the server has its first request, and so a call is waiting. The reply to that
// one is to be held until `work` has sent a second request.
void KvPlanOperationsWaitingTest::duringTheWait(const std::function<void()>& work)
{
    connect(&m_server, &KvTest::ScriptedServer::requestReceived, this, [this, work](int count) {
        if (count == 1)
            QTimer::singleShot(0, this, work);
    });
}

void KvPlanOperationsWaitingTest::readDuringTheListRead()
{
    m_server.enqueue(held(Reply::json(QJsonArray{record(p1, one)})));
    m_server.enqueue(Reply::json(record(p2, two)));
    KvPlan inner;
    duringTheWait([&] {
        QVERIFY(data().getPlanById(p2, inner));
        QCOMPARE(data().getAllPlanNames(), QStringList{two});
    });
    QList<KvPlan> plans;
    QVERIFY(data().getAllPlan(plans, false));
    QCOMPARE(inner.id, p2);
    QCOMPARE(namesOf(plans), QStringList{one});
    // Emptied before the wait, not behind it: what was read meanwhile stays.
    QCOMPARE(data().getAllPlanNames(), (QStringList{one, two}));
}

void KvPlanOperationsWaitingTest::listReadDuringAnUpdate()
{
    readPlan(p1, one);
    m_server.enqueue(held(Reply::json(record(p1, changed))));
    m_server.enqueue(Reply::json(QJsonArray{record(p1, one), record(p2, two)}));
    QList<KvPlan> plans;
    duringTheWait([&] { QVERIFY(data().getAllPlan(plans, false)); });
    KvPlan plan;
    plan.id = p1;
    plan.name = changed;
    QVERIFY(data().updatePlan(plan));
    QCOMPARE(targets(),
             (QByteArrayList{"PUT /task-service/plans/p1", "GET /task-service/projects/project-1/plans"}));
    QCOMPARE(namesOf(plans), (QStringList{one, two}));
    QCOMPARE(plan.name, changed);
    QCOMPARE(data().getAllPlanNames(), (QStringList{changed, two}));
}

void KvPlanOperationsWaitingTest::cachesEmptiedDuringAnUpdate()
{
    readPlan(p1, one);
    readPlan(p2, two);
    m_server.enqueue(held(Reply::json(record(p1, changed))));
    m_server.enqueue(Reply::empty());
    duringTheWait([&] {
        data().clear();
        QVERIFY(data().deletePlan(p3)); // lets the update's reply go
    });
    KvPlan plan;
    plan.id = p1;
    plan.name = changed;
    QVERIFY(data().updatePlan(plan));
    QCOMPARE(m_server.requests().first().body, QByteArray("{\"name\":\"changed\"}"));
    QCOMPARE(data().getAllPlanNames(), QStringList{changed});
}

void KvPlanOperationsWaitingTest::entryOfAnUncachedPlanStandsDuringTheUpdate()
{
    m_server.enqueue(held(Reply::json(QJsonObject(), 500)));
    m_server.enqueue(Reply::empty());
    QStringList namesMeanwhile;
    duringTheWait([&] {
        namesMeanwhile = data().getAllPlanNames();
        QVERIFY(data().deletePlan(p3));
    });
    KvPlan plan;
    plan.id = p1;
    plan.name = one;
    QVERIFY(!data().updatePlan(plan));
    QCOMPARE(namesMeanwhile, QStringList{QString()});
    QCOMPARE(data().getAllPlanNames(), QStringList{QString()});
}

void KvPlanOperationsWaitingTest::twoUpdatesOfOnePlan()
{
    readPlan(p1, one);
    m_server.enqueue(held(Reply::json(record(p1, changed))));
    m_server.enqueue(Reply::json(record(p1, two)));
    KvPlan inner;
    QString nameBetween;
    duringTheWait([&] {
        QVERIFY(data().getPlanFromCacheById(p1, inner));
        inner.category = QStringLiteral("c");
        QVERIFY(data().updatePlan(inner));
        nameBetween = data().getPlanName(p1);
    });
    KvPlan outer;
    outer.id = p1;
    outer.name = changed;
    QVERIFY(data().updatePlan(outer));
    // Each carries its own change alone.
    QCOMPARE(m_server.requests().at(0).body, QByteArray("{\"name\":\"changed\"}"));
    QCOMPARE(m_server.requests().at(1).body, QByteArray("{\"category\":\"c\"}"));
    QCOMPARE(inner.name, two);
    QCOMPARE(nameBetween, two);
    QCOMPARE(outer.name, changed);
    QCOMPARE(data().getPlanName(p1), changed); // the outer one ends last
}

void KvPlanOperationsWaitingTest::creationDuringACreation()
{
    m_server.enqueue(held(Reply::json(record(p1, one))));
    m_server.enqueue(Reply::json(record(p2, two)));
    KvPlan inner;
    inner.name = two;
    duringTheWait([&] { QVERIFY(data().createPlan(inner)); });
    KvPlan outer;
    outer.name = one;
    QVERIFY(data().createPlan(outer));
    QCOMPARE(m_server.requestCount(), 2);
    QCOMPARE(outer.id, p1);
    QCOMPARE(inner.id, p2);
    QCOMPARE(data().getAllPlanNames(), (QStringList{one, two}));
}

void KvPlanOperationsWaitingTest::innerFailureLeavesTheOuterCreation()
{
    m_server.enqueue(held(Reply::json(record(p1, one))));
    m_server.enqueue(Reply::json(QJsonObject(), 500));
    KvPlan inner;
    bool copied = true;
    duringTheWait([&] { copied = data().copyPlanById(p2, inner); });
    KvPlan outer;
    QVERIFY(data().createPlan(outer));
    QVERIFY(!copied);
    QCOMPARE(outer.id, p1);
    QCOMPARE(data().getAllPlanNames(), QStringList{one});
}

void KvPlanOperationsWaitingTest::pageDuringAPage_data()
{
    QTest::addColumn<bool>("sameList");
    QTest::newRow("into a list of its own") << false;
    QTest::newRow("into the same list") << true;
}

// As a list that is scrolled on before its first page has come. The page whose call ends last is cached.
void KvPlanOperationsWaitingTest::pageDuringAPage()
{
    QFETCH(bool, sameList);
    m_server.enqueue(held(Reply::json(QJsonArray{record(p1, one)})));
    m_server.enqueue(Reply::json(QJsonArray{record(p2, two)}));
    QList<KvPlan> plans;
    QList<KvPlan> others;
    duringTheWait([&] {
        QVERIFY(data().getPlanRangeData(anyPlan(), 1, 1, sameList ? plans : others));
        QCOMPARE(data().getAllPlanNames(), QStringList{two});
    });
    QVERIFY(data().getPlanRangeData(anyPlan(), 0, 1, plans));
    QCOMPARE(namesOf(plans), sameList ? (QStringList{two, one}) : QStringList{one});
    QCOMPARE(namesOf(others), sameList ? QStringList() : QStringList{two});
    QCOMPARE(data().getAllPlanNames(), QStringList{one});
}

void KvPlanOperationsWaitingTest::listEmptiedDuringAPage()
{
    m_server.enqueue(held(Reply::json(QJsonArray{record(p1, one)})));
    m_server.enqueue(Reply::empty());
    QList<KvPlan> plans{KvPlan(), KvPlan(), KvPlan()};
    duringTheWait([&] {
        plans.clear(); // the host closes its list
        QVERIFY(data().deletePlan(p3));
    });
    QVERIFY(data().getPlanRangeData(anyPlan(), 0, 1, plans));
    QCOMPARE(namesOf(plans), QStringList{one});
    QCOMPARE(data().getAllPlanNames(), QStringList{one});
}

void KvPlanOperationsWaitingTest::listReadDuringAListRead()
{
    m_server.enqueue(held(Reply::json(QJsonArray{record(p2, two), record(p1, one)})));
    m_server.enqueue(Reply::json(QJsonArray{record(p3, changed)}));
    QList<KvPlan> plans;
    duringTheWait([&] {
        QVERIFY(data().getAllPlan(plans, true));
        QCOMPARE(namesOf(plans), QStringList{changed});
    });
    QVERIFY(data().getAllPlan(plans, false));
    QCOMPARE(namesOf(plans), (QStringList{changed, one, two}));
    QCOMPARE(data().getAllPlanNames(), (QStringList{one, two, changed}));
}

void KvPlanOperationsWaitingTest::deletionDuringTheListRead()
{
    m_server.enqueue(held(Reply::json(QJsonArray{record(p1, one)})));
    m_server.enqueue(Reply::empty());
    duringTheWait([&] { QVERIFY(data().deletePlan(p1)); });
    QList<KvPlan> plans;
    QVERIFY(data().getAllPlan(plans, false));
    QCOMPARE(targets(),
             (QByteArrayList{"GET /task-service/projects/project-1/plans", "DELETE /task-service/plans/p1"}));
    QCOMPARE(data().getPlanName(p1), one); // as the service told it
}

QTEST_GUILESS_MAIN(KvPlanOperationsWaitingTest)
#include "KvPlanOperationsWaitingTest.moc"
