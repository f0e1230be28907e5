// Listing, counting and paging plans through the exported interface: results and caches.

#include "KvPlanOperationsFixture.h"

#include <model/KvPlanRecordsDump.h>

#include <type_traits>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlan;
using KvTest::Reply;

template<class Signature>
using Operation = Signature KvPlanData::*;
static_assert(std::is_same_v<decltype(&KvPlanData::getAllPlan), Operation<bool(QList<KvPlan>&, bool)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::getAllPlanNames), Operation<QStringList()>>);
static_assert(
    std::is_same_v<decltype(&KvPlanData::getPlanRangeCount), Operation<bool(const KvPlanCondition&, int&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::getPlanRangeData),
                             Operation<bool(const KvPlanCondition&, int, int, QList<KvPlan>&)>>);

class KvPlanOperationsReadTest : public KvPlanOperationsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void allPlansAreCached();
    void flagHasNoEffect();
    void allPlansEmptyTheCachesFirst_data();
    void allPlansEmptyTheCachesFirst();
    void allPlansOfAFailure();
    void namesStandInTheOrderOfIds();
    void countCachesNothing();
    void pageReplacesThePlanCacheOnly();
    void pageOfAFailure();
    void secondPageCachesItselfOnly();
};

void KvPlanOperationsReadTest::allPlansAreCached()
{
    m_server.enqueue(Reply::json(QJsonArray{record(p2, two), record(p1, one)}));
    QList<KvPlan> plans;
    QVERIFY(data().getAllPlan(plans, false));
    QCOMPARE(plans.size(), 2);
    QCOMPARE(data().getPlanName(p1), one);
    QCOMPARE(data().getPlanName(p2), two);
    KvPlan cached;
    for (const KvPlan& plan : qAsConst(plans)) {
        QVERIFY(data().getPlanFromCacheById(plan.id, cached));
        QCOMPARE(difference(dump(cached), dump(plan)), QString());
    }
    QCOMPARE(m_server.requestCount(), 1);
}

void KvPlanOperationsReadTest::flagHasNoEffect()
{
    QJsonArray shown;
    for (const bool flag : {true, false}) {
        readNode();
        m_server.enqueue(Reply::json(QJsonArray{record(p2, two), record(p1, one)}));
        QList<KvPlan> plans;
        QVERIFY(data().getAllPlan(plans, flag));
        QCOMPARE(targets(), QByteArrayList{"GET /task-service/projects/project-1/plans"});
        QCOMPARE(m_server.lastRequest().body, QByteArray());
        QCOMPARE(data().getAllPlanNames(), (QStringList{one, two}));
        shown.append(QJsonArray{dump(plans.at(0)), dump(plans.at(1)), isNodeCached()});
    }
    QCOMPARE(shown.at(0), shown.at(1));
}

void KvPlanOperationsReadTest::allPlansEmptyTheCachesFirst_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("success") << 200;
    QTest::newRow("failure") << 500;
}

void KvPlanOperationsReadTest::allPlansEmptyTheCachesFirst()
{
    QFETCH(int, status);
    readPlan(p1, one);
    readNode();
    QVERIFY(isNodeCached());
    int namesWhenAsked = -1; // emptied before the request, not behind it
    const auto watch = connect(&m_server, &KvTest::ScriptedServer::requestReceived, this,
                               [&] { namesWhenAsked = data().getAllPlanNames().size(); });
    m_server.enqueue(Reply::json(QJsonArray(), status));
    QList<KvPlan> plans;
    QCOMPARE(data().getAllPlan(plans, true), status == 200);
    disconnect(watch);
    QCOMPARE(namesWhenAsked, 0);
    QVERIFY(data().getPlanName(p1).isNull());
    QCOMPARE(data().getAllPlanNames(), QStringList());
    QVERIFY(!isNodeCached());
}

void KvPlanOperationsReadTest::allPlansOfAFailure()
{
    m_server.enqueue(Reply::json(QJsonArray{record(p1, one)}, 403));
    QList<KvPlan> plans;
    QVERIFY(!data().getAllPlan(plans, false));
    QVERIFY(plans.isEmpty());
    QCOMPARE(data().getAllPlanNames(), QStringList());
}

void KvPlanOperationsReadTest::namesStandInTheOrderOfIds()
{
    QCOMPARE(data().getAllPlanNames(), QStringList());
    // By code unit: digits, capitals, small letters, Chinese; "10" before "9".
    const QList<QPair<QString, QString>> plans{
        {QStringLiteral("层"), QStringLiteral("first")}, {QStringLiteral("a"), QString()},
        {QStringLiteral("B"), QStringLiteral("Z")},      {QStringLiteral("9"), QStringLiteral("twice")},
        {QStringLiteral("10"), QStringLiteral("twice")}, {QStringLiteral("b"), QString()}};
    QJsonArray array;
    for (const auto& plan : plans)
        array.append(record(plan.first, plan.second));
    m_server.enqueue(Reply::json(array));
    QList<KvPlan> list;
    QVERIFY(data().getAllPlan(list, false));
    QCOMPARE(data().getAllPlanNames(),
             (QStringList{QStringLiteral("twice"), QStringLiteral("twice"), QStringLiteral("Z"), QString(),
                          QString(), QStringLiteral("first")}));
    QCOMPARE(m_server.requestCount(), 1);
}

void KvPlanOperationsReadTest::countCachesNothing()
{
    readPlan(p1, one);
    m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("count"), 12}}));
    m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("count"), 12}}, 500));
    int count = 77;
    QVERIFY(data().getPlanRangeCount(anyPlan(), count));
    QCOMPARE(count, 12);
    QCOMPARE(targets(),
             QByteArrayList{"GET /task-service/projects/project-1/plans?where=%7B%7D&only_count=true"});
    QVERIFY(!data().getPlanRangeCount(anyPlan(), count));
    QCOMPARE(count, 0);
    QCOMPARE(data().getAllPlanNames(), QStringList{one});
}

void KvPlanOperationsReadTest::pageReplacesThePlanCacheOnly()
{
    readPlan(p1, one);
    readNode();
    m_server.enqueue(
        Reply::json(QJsonArray{record(p3, QStringLiteral("10")), record(p2, QStringLiteral("9"))}));
    QList<KvPlan> plans;
    QVERIFY(data().getPlanRangeData(anyPlan(), 40, 20, plans));
    QCOMPARE(targets(),
             QByteArrayList{"GET /task-service/projects/project-1/plans?where=%7B%7D&skip=40&limit=20"});
    QCOMPARE(plans.size(), 2);
    QCOMPARE(plans.at(0).id, p3); // in the service's order
    QCOMPARE(plans.at(1).id, p2);
    QVERIFY(data().getPlanName(p1).isNull());
    QCOMPARE(data().getAllPlanNames(), (QStringList{QStringLiteral("9"), QStringLiteral("10")}));
    QVERIFY(isNodeCached());

    m_server.enqueue(Reply::json(QJsonArray())); // beyond the last page
    QVERIFY(data().getPlanRangeData(anyPlan(), 60, 20, plans));
    QCOMPARE(plans.size(), 2);
    QCOMPARE(data().getAllPlanNames(), QStringList());
    QVERIFY(isNodeCached());
}

void KvPlanOperationsReadTest::pageOfAFailure()
{
    readPlan(p1, one);
    readNode();
    QList<KvPlan> plans{fullPlan()};
    for (const Reply& reply : {Reply::json(QJsonArray{record(p2, two)}, 500), Reply::empty(404),
                               Reply::text("<html></html>", "text/html")}) {
        m_server.enqueue(reply);
        QVERIFY(data().getPlanRangeData(anyPlan(), 0, 20, plans)); // existing hosts know it so
        QCOMPARE(plans.size(), 1);
        QCOMPARE(data().getAllPlanNames(), QStringList{one});
    }
    KvBaseApi::GetInstance().setBaseApi(KvTest::ScriptedServer::refusingUrl());
    QVERIFY(data().getPlanRangeData(anyPlan(), 0, 20, plans));
    QCOMPARE(data().getAllPlanNames(), QStringList{one});
    QVERIFY(isNodeCached());
}

// The list grows page by page; the cache holds what came last.
void KvPlanOperationsReadTest::secondPageCachesItselfOnly()
{
    m_server.enqueue(Reply::json(QJsonArray{record(p1, one)}));
    m_server.enqueue(Reply::json(QJsonArray{record(p2, two)}));
    QList<KvPlan> plans;
    QVERIFY(data().getPlanRangeData(anyPlan(), 0, 1, plans));
    QVERIFY(data().getPlanRangeData(anyPlan(), 1, 1, plans));
    QCOMPARE(plans.size(), 2);
    QCOMPARE(data().getAllPlanNames(), QStringList{two});
}

QTEST_GUILESS_MAIN(KvPlanOperationsReadTest)
#include "KvPlanOperationsReadTest.moc"
