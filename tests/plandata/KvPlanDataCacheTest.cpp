// The facade as a host has it, through the library's exported interface: the one object, and its caches.

#include "KvPlanOperationsFixture.h"
#include "ServiceReplies.h"

#include <model/KvPlanRecordsDump.h>

#include <atomic>
#include <thread>
#include <type_traits>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlan;
using KvTest::fullPlanNode;
using KvTest::nodeReply;
using KvTest::planReply;
using KvTest::Reply;

// Who may make and end the object is part of the interface.
static_assert(!std::is_default_constructible_v<KvPlanData>);
static_assert(!std::is_destructible_v<KvPlanData>);
static_assert(std::is_copy_assignable_v<KvPlanData>);
static_assert(!std::is_polymorphic_v<KvPlanData>);
// Four maps and five flags, and nothing else.
static_assert(sizeof(KvPlanData) ==
              (4 * sizeof(QMap<QString, KvPlan>) + 5 + alignof(void*) - 1) / alignof(void*) * alignof(void*));
static_assert(std::is_same_v<decltype(&KvPlanData::instance), KvPlanData* (*)()>);
static_assert(std::is_same_v<decltype(&KvPlanData::clear), void (KvPlanData::*)()>);
static_assert(
    std::is_same_v<decltype(&KvPlanData::getPlanById), bool (KvPlanData::*)(const QString&, KvPlan&)>);
static_assert(std::is_same_v<decltype(&KvPlanData::getPlanFromCacheById),
                             bool (KvPlanData::*)(const QString&, KvPlan&)>);
static_assert(std::is_same_v<decltype(&KvPlanData::getPlanNodeFromCacheById),
                             bool (KvPlanData::*)(const QString&, KvPlanNode&)>);
static_assert(
    std::is_same_v<decltype(&KvPlanData::getPlanName), QString (KvPlanData::*)(const QString&) const>);
static_assert(
    std::is_same_v<decltype(std::declval<KvPlanData&>() = std::declval<const KvPlanData&>()), KvPlanData&>);

struct KvPlanDataTestAccess
{
    static QMap<QString, bool> cameByItself(const KvPlanData& data) { return data.m_planDetailLoaded; }
};

class KvPlanDataCacheTest : public KvPlanOperationsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void planIsReadAndCached();
    void getPlanByIdAlwaysAsks();
    void laterReadReplacesTheCachedPlan();
    void cacheHitMakesNoRequest();
    void cacheMissReadsAndCaches();
    void cachedPlanReplacesTheWholeRecord();
    void nodeIsReadAndCached();
    void cachedNodeReplacesTheWholeRecord();
    void nameOfAPlanNeverRead();
    void nameOfACachedPlan();
    void clearEmptiesTheCaches();
    void howPlansCame();
    void failureCachesNothing();
    void failureKeepsWhatIsCached();

private:
    int requests() const { return m_server.requestCount(); }
    bool isPlanCached(KvPlanData& facade, const QString& id);
};

// Must be the first use of the object: many threads ask for it while it is being made.
void KvPlanDataCacheTest::initTestCase()
{
    constexpr int threadCount = 8;
    std::atomic<int> ready{0};
    KvPlanData* seen[threadCount] = {};
    std::thread threads[threadCount];
    for (int i = 0; i < threadCount; ++i) {
        threads[i] = std::thread([&, i] {
            ++ready;
            while (ready < threadCount)
                std::this_thread::yield();
            seen[i] = KvPlanData::instance();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const KvPlanData* object : seen) {
        QVERIFY(object != nullptr);
        QCOMPARE(object, KvPlanData::instance());
    }
}

bool KvPlanDataCacheTest::isPlanCached(KvPlanData& facade, const QString& id)
{
    // A plan that is not cached would be asked for.
    const int before = requests();
    m_server.enqueue(Reply::json(QJsonObject(), 404));
    KvPlan plan;
    const bool found = facade.getPlanFromCacheById(id, plan);
    if (requests() != before)
        return false;
    KvPlan other;
    facade.getPlanById(QStringLiteral("uses up the reply"), other);
    return found;
}

void KvPlanDataCacheTest::planIsReadAndCached()
{
    m_server.enqueue(planReply(p1, QStringLiteral("主楼")));
    KvPlan plan;
    QVERIFY(data().getPlanById(p1, plan));
    QCOMPARE(m_server.lastRequest().method, QByteArray("GET"));
    QCOMPARE(m_server.lastRequest().target, QByteArray("/task-service/plans/p1"));
    QCOMPARE(plan.id, p1);
    QCOMPARE(plan.name, QStringLiteral("主楼"));
    QCOMPARE(plan.planNodes.size(), 1);
    KvPlan cached;
    QVERIFY(data().getPlanFromCacheById(p1, cached));
    QCOMPARE(difference(dump(cached), dump(plan)), QString());
    QCOMPARE(requests(), 1);
}

void KvPlanDataCacheTest::getPlanByIdAlwaysAsks()
{
    KvPlan plan;
    for (int turn = 1; turn <= 3; ++turn) {
        m_server.enqueue(planReply(p1, QString::number(turn)));
        QVERIFY(data().getPlanById(p1, plan));
        QCOMPARE(plan.name, QString::number(turn));
        QCOMPARE(requests(), turn);
    }
}

void KvPlanDataCacheTest::laterReadReplacesTheCachedPlan()
{
    KvPlan plan;
    m_server.enqueue(planReply(p1, QStringLiteral("old")));
    QVERIFY(data().getPlanById(p1, plan));
    m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("_id"), p1}}));
    QVERIFY(data().getPlanById(p1, plan));
    KvPlan cached;
    QVERIFY(data().getPlanFromCacheById(p1, cached));
    QCOMPARE(cached.name, QString());
    QVERIFY(cached.planNodes.isEmpty());
    QCOMPARE(data().getPlanName(p1), QString());
}

void KvPlanDataCacheTest::cacheHitMakesNoRequest()
{
    KvPlan plan;
    m_server.enqueue(planReply(p1, QStringLiteral("one")));
    QVERIFY(data().getPlanById(p1, plan));
    // The service has meanwhile deleted it, and has even gone away.
    KvBaseApi::GetInstance().setBaseApi(KvTest::ScriptedServer::refusingUrl());
    for (int turn = 0; turn < 3; ++turn) {
        KvPlan cached;
        QVERIFY(data().getPlanFromCacheById(p1, cached));
        QCOMPARE(cached.name, QStringLiteral("one"));
    }
    QCOMPARE(requests(), 1);
}

void KvPlanDataCacheTest::cacheMissReadsAndCaches()
{
    m_server.enqueue(planReply(p1, QStringLiteral("one")));
    KvPlan plan;
    QVERIFY(data().getPlanFromCacheById(p1, plan));
    QCOMPARE(plan.name, QStringLiteral("one"));
    QCOMPARE(m_server.lastRequest().target, QByteArray("/task-service/plans/p1"));
    QVERIFY(data().getPlanFromCacheById(p1, plan));
    QCOMPARE(requests(), 1);
    QCOMPARE(data().getPlanName(p1), QStringLiteral("one"));
}

void KvPlanDataCacheTest::cachedPlanReplacesTheWholeRecord()
{
    KvPlan plan;
    m_server.enqueue(planReply(p1, QStringLiteral("one")));
    QVERIFY(data().getPlanById(p1, plan));
    KvPlan other = fullPlan();
    QVERIFY(data().getPlanFromCacheById(p1, other));
    QCOMPARE(difference(dump(other), dump(plan)), QString());
    // A read keeps the file path, and the cache keeps it with the rest.
    m_server.enqueue(planReply(p2, QStringLiteral("two")));
    other = fullPlan();
    QVERIFY(data().getPlanById(p2, other));
    QCOMPARE(other.mppFilePath, fullPlan().mppFilePath);
    QVERIFY(data().getPlanFromCacheById(p2, plan));
    QCOMPARE(plan.mppFilePath, fullPlan().mppFilePath);
}

void KvPlanDataCacheTest::nodeIsReadAndCached()
{
    m_server.enqueue(nodeReply(n1, QStringLiteral("wall")));
    KvPlanNode node;
    QVERIFY(data().getPlanNodeFromCacheById(n1, node));
    QCOMPARE(m_server.lastRequest().method, QByteArray("GET"));
    QCOMPARE(m_server.lastRequest().target, QByteArray("/task-service/planNodes/n1?expand=true"));
    QCOMPARE(node.name, QStringLiteral("wall"));
    KvPlanNode cached;
    QVERIFY(data().getPlanNodeFromCacheById(n1, cached));
    QCOMPARE(difference(dump(cached), dump(node)), QString());
    QCOMPARE(requests(), 1);
}

void KvPlanDataCacheTest::cachedNodeReplacesTheWholeRecord()
{
    m_server.enqueue(nodeReply(n1, QStringLiteral("wall")));
    KvPlanNode node;
    QVERIFY(data().getPlanNodeFromCacheById(n1, node));
    KvPlanNode other = fullPlanNode();
    QVERIFY(data().getPlanNodeFromCacheById(n1, other));
    QCOMPARE(difference(dump(other), dump(node)), QString());
}

void KvPlanDataCacheTest::nameOfAPlanNeverRead()
{
    m_server.setHandler([this](const KvTest::Request&) { return planReply(p1, QStringLiteral("there")); });
    QVERIFY(data().getPlanName(p1).isNull());
    QCOMPARE(requests(), 0);
}

void KvPlanDataCacheTest::nameOfACachedPlan()
{
    m_server.enqueue(planReply(p1, QStringLiteral("one")));
    KvPlan plan;
    QVERIFY(data().getPlanById(p1, plan));
    const KvPlanData& facade = data();
    QCOMPARE(facade.getPlanName(p1), QStringLiteral("one"));
    QVERIFY(facade.getPlanName(p2).isNull());
    QCOMPARE(requests(), 1);
}

void KvPlanDataCacheTest::clearEmptiesTheCaches()
{
    m_server.enqueue(planReply(p1, QStringLiteral("one")));
    m_server.enqueue(nodeReply(n1, QStringLiteral("wall")));
    KvPlan plan;
    KvPlanNode node;
    QVERIFY(data().getPlanById(p1, plan));
    QVERIFY(data().getPlanNodeFromCacheById(n1, node));
    data().clear();
    QVERIFY(data().getPlanName(p1).isNull());
    m_server.enqueue(planReply(p1, QStringLiteral("again")));
    m_server.enqueue(nodeReply(n1, QStringLiteral("wall again")));
    QVERIFY(data().getPlanFromCacheById(p1, plan));
    QVERIFY(data().getPlanNodeFromCacheById(n1, node));
    QCOMPARE(requests(), 4);
    QCOMPARE(plan.name, QStringLiteral("again"));
    QCOMPARE(node.name, QStringLiteral("wall again"));
    data().clear();
    data().clear();
}

// By the id in the plan, for each plan that came by itself or in the list of all, and for no other.
void KvPlanDataCacheTest::howPlansCame()
{
    using Notes = QMap<QString, bool>;
    const auto notes = [] {
        return KvPlanDataTestAccess::cameByItself(data());
    };
    data().clear();
    m_server.enqueue(planReply(p2, QStringLiteral("two")));
    KvPlan plan;
    QVERIFY(data().getPlanById(p1, plan));
    QCOMPARE(notes(), (Notes{{p2, true}}));
    m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("_id"), p3}}, 500));
    QVERIFY(!data().getPlanById(p3, plan));
    QCOMPARE(notes(), (Notes{{p2, true}}));
    QList<KvPlan> plans;
    m_server.enqueue(Reply::json(QJsonArray{record(p1, one), record(p3, two)}));
    QVERIFY(data().getAllPlan(plans, false));
    QCOMPARE(notes(), (Notes{{p1, false}, {p3, false}}));
    m_server.enqueue(planReply(p3, QStringLiteral("three")));
    QVERIFY(data().getPlanById(p3, plan));
    QCOMPARE(notes(), (Notes{{p1, false}, {p3, true}}));
    data().clear();
    QCOMPARE(notes(), Notes());
}

void KvPlanDataCacheTest::failureCachesNothing()
{
    KvPlan plan = fullPlan();
    KvPlan wanted;
    wanted.mppFilePath = plan.mppFilePath;
    wanted.isPublic = 0;
    m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("_id"), p1}}, 404));
    QVERIFY(!data().getPlanById(p1, plan));
    QCOMPARE(difference(dump(plan), dump(wanted)), QString());
    QVERIFY(!isPlanCached(data(), p1));
    QVERIFY(!isPlanCached(data(), QString()));

    KvPlanNode node = fullPlanNode();
    m_server.enqueue(Reply::json(QJsonObject(), 404));
    QVERIFY(!data().getPlanNodeFromCacheById(n1, node));
    QCOMPARE(node.id, QString());
    m_server.enqueue(nodeReply(n1, QStringLiteral("wall")));
    QVERIFY(data().getPlanNodeFromCacheById(n1, node));
    QCOMPARE(node.name, QStringLiteral("wall"));
}

void KvPlanDataCacheTest::failureKeepsWhatIsCached()
{
    KvPlan plan;
    m_server.enqueue(planReply(p1, QStringLiteral("one")));
    QVERIFY(data().getPlanById(p1, plan));
    m_server.enqueue(Reply::json(QJsonObject(), 500));
    QVERIFY(!data().getPlanById(p1, plan));
    QCOMPARE(plan.name, QString());
    QCOMPARE(data().getPlanName(p1), QStringLiteral("one"));
}

QTEST_GUILESS_MAIN(KvPlanDataCacheTest)
#include "KvPlanDataCacheTest.moc"
