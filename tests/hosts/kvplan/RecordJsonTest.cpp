// JSON for programs: every field of the records under its own name and with its own value.

#include <RecordJson.h>

#include <model/KvPlanRecordsDump.h>

#include <QtCore/QJsonArray>
#include <QtTest/QtTest>

namespace {

// The dump that other tests compare records by, in the shape that programs get: without the reserved fields
// and the children.
QJsonObject expectedNode(const KvPlanNode& node)
{
    QJsonObject json = KvTest::dump(node);
    const QStringList keys = json.keys();
    for (const QString& key : keys) {
        if (key.startsWith(QLatin1String("reserved")) || key == QLatin1String("children"))
            json.remove(key);
    }
    return json;
}

QJsonObject expectedPlan(const KvPlan& plan)
{
    QJsonObject json = KvTest::dump(plan);
    QJsonArray nodes;
    for (const KvPlanNode& node : plan.planNodes)
        nodes.append(expectedNode(node));
    json.insert(QStringLiteral("planNodes"), nodes);
    return json;
}

} // namespace

class RecordJsonTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFieldOfANode()
    {
        for (const int seed : {1, 2}) {
            const KvPlanNode node = KvTest::fullPlanNode(seed);
            const QJsonObject expected = expectedNode(node);
            QVERIFY(expected.size() > 40);
            QCOMPARE(KvTest::difference(nodeToJson(node), expected), QString());
        }
    }

    void everyFieldOfAPlan()
    {
        for (const int seed : {1, 2}) {
            const KvPlan plan = KvTest::fullPlan(seed);
            QVERIFY(!plan.planNodes.isEmpty());
            QCOMPARE(KvTest::difference(planToJson(plan), expectedPlan(plan)), QString());
        }
    }

    void whatIsNotSet()
    {
        QCOMPARE(KvTest::difference(nodeToJson(KvPlanNode()), expectedNode(KvPlanNode())), QString());
        QCOMPARE(KvTest::difference(planToJson(KvPlan()), expectedPlan(KvPlan())), QString());
        QVERIFY(nodeToJson(KvPlanNode()).value(QLatin1String("startDate")).isNull());
    }
};

QTEST_GUILESS_MAIN(RecordJsonTest)
#include "RecordJsonTest.moc"
