// A copy of the facade is a snapshot: from then on each goes its own way.

#include "FacadeCopies.h"
#include "KvPlanOperationsFixture.h"
#include "ServiceReplies.h"

using KvTest::nodeReply;
using KvTest::planReply;

class KvPlanDataCopiesTest : public KvPlanOperationsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void copyIsIndependentOfTheOriginal();
    void originalIsIndependentOfTheCopy();
    void assignmentReplacesTheCaches();
    void assignmentToItself();
};

void KvPlanDataCopiesTest::copyIsIndependentOfTheOriginal()
{
    m_server.enqueue(planReply(p1, QStringLiteral("one")));
    KvPlan plan;
    QVERIFY(data().getPlanById(p1, plan));
    KvPlanData& copy = *copyOf(data());
    QVERIFY(&copy != &data());
    QCOMPARE(copy.getPlanName(p1), QStringLiteral("one"));

    m_server.enqueue(planReply(p1, QStringLiteral("changed")));
    m_server.enqueue(planReply(p2, QStringLiteral("two")));
    QVERIFY(data().getPlanById(p1, plan));
    QVERIFY(data().getPlanById(p2, plan));
    QCOMPARE(copy.getPlanName(p1), QStringLiteral("one"));
    QVERIFY(copy.getPlanName(p2).isNull());
    data().clear();
    QCOMPARE(copy.getPlanName(p1), QStringLiteral("one"));
}

void KvPlanDataCopiesTest::originalIsIndependentOfTheCopy()
{
    m_server.enqueue(planReply(p1, QStringLiteral("one")));
    KvPlan plan;
    QVERIFY(data().getPlanById(p1, plan));
    KvPlanData& copy = *copyOf(data());
    m_server.enqueue(planReply(p2, QStringLiteral("two")));
    m_server.enqueue(nodeReply(n1, QStringLiteral("wall")));
    KvPlanNode node;
    QVERIFY(copy.getPlanById(p2, plan));
    QVERIFY(copy.getPlanNodeFromCacheById(n1, node));
    QVERIFY(data().getPlanName(p2).isNull());
    m_server.enqueue(nodeReply(n1, QStringLiteral("asked for")));
    QVERIFY(data().getPlanNodeFromCacheById(n1, node));
    QCOMPARE(node.name, QStringLiteral("asked for"));
    copy.clear();
    QCOMPARE(data().getPlanName(p1), QStringLiteral("one"));
}

void KvPlanDataCopiesTest::assignmentReplacesTheCaches()
{
    m_server.enqueue(planReply(p1, QStringLiteral("one")));
    m_server.enqueue(planReply(p2, QStringLiteral("two")));
    KvPlan plan;
    QVERIFY(data().getPlanById(p1, plan));
    KvPlanData& copy = *copyOf(data());
    QVERIFY(copy.getPlanById(p2, plan));
    data().clear();
    KvPlanData& result = (copy = data());
    QCOMPARE(&result, &copy);
    QVERIFY(copy.getPlanName(p1).isNull());
    QVERIFY(copy.getPlanName(p2).isNull());
}

void KvPlanDataCopiesTest::assignmentToItself()
{
    m_server.enqueue(planReply(p1, QStringLiteral("one")));
    KvPlan plan;
    QVERIFY(data().getPlanById(p1, plan));
    KvPlanData& same = data();
    data() = same;
    QCOMPARE(data().getPlanName(p1), QStringLiteral("one"));
}

QTEST_GUILESS_MAIN(KvPlanDataCopiesTest)
#include "KvPlanDataCopiesTest.moc"
