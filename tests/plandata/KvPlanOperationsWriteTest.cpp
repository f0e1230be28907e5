// Creating, changing, copying and deleting plans through the exported interface: results and caches.

#include "FacadeCopies.h"
#include "KvPlanOperationsFixture.h"

#include <model/KvPlanRecordsDump.h>

#include <type_traits>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlan;
using KvTest::Reply;

template<class Signature>
using Operation = Signature KvPlanData::*;
static_assert(std::is_same_v<decltype(&KvPlanData::createPlan), Operation<bool(KvPlan&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::updatePlan), Operation<bool(KvPlan&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::deletePlan), Operation<bool(const QString&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::copyPlanById), Operation<bool(const QString&, KvPlan&)>>);

class KvPlanOperationsWriteTest : public KvPlanOperationsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void createdPlanIsCached();
    void failedCreationCachesNothing();
    void updatedPlanIsCached();
    void updateWithoutDifferenceAsksNobody();
    void updateOfAnUncachedPlan();
    void failedUpdateKeepsTheCachedPlan();
    void failedUpdateOfAnUncachedPlanLeavesAnEntry();
    void updateGoesToTheIdInsideTheCachedPlan();
    void updatedPlanIsCachedUnderItsNewId();
    void deletedPlanKeepsItsName_data();
    void deletedPlanKeepsItsName();
    void copiedPlanIsCachedUnderItsOwnId();
    void failedCopyCachesNothing();
    void twoHostsChangeDifferentFields();
};

void KvPlanOperationsWriteTest::createdPlanIsCached()
{
    m_server.enqueue(Reply::json(record(p1, one)));
    KvPlan plan = fullPlan();
    QVERIFY(data().createPlan(plan));
    QCOMPARE(targets(), QByteArrayList{"POST /task-service/plans"});
    QCOMPARE(plan.id, p1);
    KvPlan cached;
    QVERIFY(data().getPlanFromCacheById(p1, cached));
    QCOMPARE(m_server.requestCount(), 1);
    QCOMPARE(difference(dump(cached), dump(plan)), QString()); // as the service made it
    QCOMPARE(cached.mppFilePath, fullPlan().mppFilePath);
    QVERIFY(data().getPlanName(fullPlan().id).isNull());
}

void KvPlanOperationsWriteTest::failedCreationCachesNothing()
{
    m_server.enqueue(Reply::json(record(p1, one), 409));
    KvPlan plan = fullPlan();
    QVERIFY(!data().createPlan(plan));
    QCOMPARE(data().getAllPlanNames(), QStringList());
    QCOMPARE(plan.id, QString());
}

void KvPlanOperationsWriteTest::updatedPlanIsCached()
{
    readPlan(p1, one);
    m_server.enqueue(Reply::json(record(p1, QStringLiteral("as the service has it"))));
    KvPlan plan;
    QVERIFY(data().getPlanFromCacheById(p1, plan));
    plan.name = changed;
    QVERIFY(data().updatePlan(plan));
    QCOMPARE(targets(), QByteArrayList{"PUT /task-service/plans/p1"});
    QCOMPARE(m_server.lastRequest().body, QByteArray("{\"name\":\"changed\"}"));
    QCOMPARE(plan.name, QStringLiteral("as the service has it"));
    QCOMPARE(data().getAllPlanNames(), QStringList{plan.name});

    // The next change is told from what the service answered.
    m_server.enqueue(Reply::json(record(p1, changed)));
    plan.category = QStringLiteral("c");
    QVERIFY(data().updatePlan(plan));
    QCOMPARE(m_server.lastRequest().body, QByteArray("{\"category\":\"c\"}"));
}

void KvPlanOperationsWriteTest::updateWithoutDifferenceAsksNobody()
{
    readPlan(p1, one);
    KvPlan plan;
    plan.id = p1;
    plan.name = one;
    plan.isPublic = 0;
    plan.updatedBy = QStringLiteral("not written");
    QVERIFY(data().updatePlan(plan));
    QCOMPARE(m_server.requestCount(), 0);
    KvPlan cached;
    QVERIFY(data().getPlanFromCacheById(p1, cached));
    QCOMPARE(difference(dump(plan), dump(cached)), QString());
    QCOMPARE(cached.updatedBy, QString());
}

void KvPlanOperationsWriteTest::updateOfAnUncachedPlan()
{
    m_server.enqueue(Reply::json(record(p1, one)));
    KvPlan plan;
    plan.id = p1;
    plan.name = one;
    QVERIFY(data().updatePlan(plan));
    // Told from an empty plan, which has no id to go to.
    QCOMPARE(targets(), QByteArrayList{"PUT /task-service/plans/"});
    QCOMPARE(m_server.lastRequest().body, QByteArray("{\"name\":\"one\"}"));
    QCOMPARE(data().getAllPlanNames(), QStringList{one});

    // A plan that says no more than an empty one: nothing to send, and nothing is left of its id.
    KvPlan empty;
    empty.id = p2;
    QVERIFY(data().updatePlan(empty));
    QCOMPARE(m_server.requestCount(), 1);
    QCOMPARE(empty.id, QString());
    QCOMPARE(data().getAllPlanNames(), (QStringList{QString(), one, QString()})); // "", p1, p2
}

void KvPlanOperationsWriteTest::failedUpdateKeepsTheCachedPlan()
{
    readPlan(p1, one);
    m_server.enqueue(Reply::json(record(p1, changed), 500));
    KvPlan plan;
    QVERIFY(data().getPlanFromCacheById(p1, plan));
    plan.name = changed;
    QVERIFY(!data().updatePlan(plan));
    QCOMPARE(plan.name, QString());
    QCOMPARE(data().getPlanName(p1), one);
    QCOMPARE(data().getAllPlanNames(), QStringList{one});
}

void KvPlanOperationsWriteTest::failedUpdateOfAnUncachedPlanLeavesAnEntry()
{
    m_server.enqueue(Reply::json(QJsonObject(), 404));
    KvPlan plan = fullPlan();
    const QString id = plan.id;
    QVERIFY(!data().updatePlan(plan));
    QCOMPARE(data().getAllPlanNames(), QStringList{QString()});
    KvPlan cached = fullPlan(2);
    QVERIFY(data().getPlanFromCacheById(id, cached));
    QCOMPARE(difference(dump(cached), dump(KvPlan())), QString());
    QCOMPARE(m_server.requestCount(), 1);
}

void KvPlanOperationsWriteTest::updateGoesToTheIdInsideTheCachedPlan()
{
    m_server.enqueue(Reply::json(record(p2, one))); // asked for p1
    KvPlan plan;
    QVERIFY(data().getPlanById(p1, plan));
    m_server.enqueue(Reply::json(record(p2, changed)));
    plan.id = p1;
    plan.name = changed;
    QVERIFY(data().updatePlan(plan));
    QCOMPARE(m_server.lastRequest().target, QByteArray("/task-service/plans/p2"));
    QCOMPARE(data().getPlanName(p1), one);
    QCOMPARE(data().getPlanName(p2), changed);
}

void KvPlanOperationsWriteTest::updatedPlanIsCachedUnderItsNewId()
{
    readPlan(p1, one);
    m_server.enqueue(Reply::json(record(p2, two)));
    KvPlan plan;
    plan.id = p1;
    plan.name = two;
    QVERIFY(data().updatePlan(plan));
    QCOMPARE(data().getPlanName(p1), one);
    QCOMPARE(data().getPlanName(p2), two);
}

void KvPlanOperationsWriteTest::deletedPlanKeepsItsName_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("success") << 204;
    QTest::newRow("failure") << 403;
}

void KvPlanOperationsWriteTest::deletedPlanKeepsItsName()
{
    QFETCH(int, status);
    readPlan(p1, one);
    readNode();
    m_server.enqueue(Reply::empty(status));
    QCOMPARE(data().deletePlan(p1), status == 204);
    QCOMPARE(targets(), QByteArrayList{"DELETE /task-service/plans/p1"});
    QCOMPARE(data().getPlanName(p1), one);
    KvPlan plan;
    QVERIFY(data().getPlanFromCacheById(p1, plan));
    QCOMPARE(m_server.requestCount(), 1);
    QVERIFY(isNodeCached());
}

void KvPlanOperationsWriteTest::copiedPlanIsCachedUnderItsOwnId()
{
    readPlan(p1, one);
    m_server.enqueue(Reply::json(record(p2, two)));
    KvPlan plan = fullPlan();
    QVERIFY(data().copyPlanById(p1, plan));
    QCOMPARE(targets(), QByteArrayList{"PUT /task-service/plans/p1/copy"});
    QCOMPARE(plan.id, p2);
    QCOMPARE(data().getPlanName(p1), one);
    QCOMPARE(data().getPlanName(p2), two);

    m_server.enqueue(Reply::json(record(p3, changed)));
    QVERIFY(data().copyPlanById(plan.id, plan)); // the id may be the record's own
    QCOMPARE(m_server.lastRequest().target, QByteArray("/task-service/plans/p2/copy"));
    QCOMPARE(data().getAllPlanNames(), (QStringList{one, two, changed}));
}

void KvPlanOperationsWriteTest::failedCopyCachesNothing()
{
    readPlan(p1, one);
    m_server.enqueue(Reply::json(record(p2, two), 500));
    KvPlan plan = fullPlan();
    QVERIFY(!data().copyPlanById(p1, plan));
    QCOMPARE(plan.name, QString());
    QCOMPARE(data().getAllPlanNames(), QStringList{one});
}

void KvPlanOperationsWriteTest::twoHostsChangeDifferentFields()
{
    // A service with one plan that merges what it gets, key by key.
    QJsonObject stored = record(p1, one);
    stored.insert(QStringLiteral("category"), QStringLiteral("old"));
    stored.insert(QStringLiteral("tasks"), QJsonArray{record(n1, QStringLiteral("wall"))});
    m_server.setHandler([&](const KvTest::Request& request) {
        const QJsonObject changes = request.object();
        for (auto it = changes.begin(); it != changes.end(); ++it)
            stored.insert(it.key(), it.value());
        return Reply::json(stored);
    });
    KvPlanData& second = *copyOf(data());
    KvPlan mine;
    KvPlan theirs;
    QVERIFY(data().getPlanById(p1, mine));
    QVERIFY(second.getPlanById(p1, theirs));
    m_server.forgetRequests();

    mine.name = changed;
    QVERIFY(data().updatePlan(mine));
    QCOMPARE(m_server.lastRequest().body, QByteArray("{\"name\":\"changed\"}"));
    theirs.category = QStringLiteral("new");
    QVERIFY(second.updatePlan(theirs));
    QCOMPARE(m_server.lastRequest().body, QByteArray("{\"category\":\"new\"}"));
    QCOMPARE(m_server.requestCount(), 2);

    QCOMPARE(theirs.name, changed);
    QCOMPARE(theirs.category, QStringLiteral("new"));
    QCOMPARE(second.getPlanName(p1), changed);
    QCOMPARE(stored.value(QLatin1String("name")).toString(), changed);
    QCOMPARE(stored.value(QLatin1String("tasks")).toArray().size(), 1);
}

QTEST_GUILESS_MAIN(KvPlanOperationsWriteTest)
#include "KvPlanOperationsWriteTest.moc"
