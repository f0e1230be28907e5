// How a plan, its links between nodes and their lags are written.

#include "KvPlanRecordsDump.h"

#include <model/KvPlanCodec.h>

#include <QtCore/QJsonArray>
#include <QtTest/QtTest>

using KvTest::difference;
using KvTest::fullPlan;

namespace {

using PlanChange = void (*)(KvPlan&);

QJsonObject written(const KvPlan& plan)
{
    QJsonObject json;
    Kv::planToJsonObject(plan, json);
    return json;
}

QJsonObject written(const KvPlanNode& node)
{
    QJsonObject json;
    Kv::planNodeToJsonObject(node, json, true);
    return json;
}

} // namespace

Q_DECLARE_METATYPE(PlanChange)

class KvPlanCodecPlanTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaultPlan();
    void planField_data();
    void planField();
    void targetKeepsWhatItHolds();
    void planNodesInListOrder();
    void childrenAreNotWritten();
    void predecessor();
    void duration();
};

void KvPlanCodecPlanTest::defaultPlan()
{
    QCOMPARE(difference(written(KvPlan()), {{QStringLiteral("projectData"), QJsonArray()}}), QString());
}

void KvPlanCodecPlanTest::planField_data()
{
    QTest::addColumn<PlanChange>("change");
    QTest::addColumn<QString>("key"); // empty: nothing is written
    QTest::addColumn<QJsonValue>("value");
    const auto row = [](const char* name, PlanChange change, const char* key, const QJsonValue& value) {
        QTest::newRow(name) << change << QString::fromLatin1(key) << value;
    };
    const QString x = QStringLiteral("x");
    row(
        "projectId", [](KvPlan& p) { p.projectId = QStringLiteral("x"); }, "projectId", x);
    row(
        "category", [](KvPlan& p) { p.category = QStringLiteral("x"); }, "category", x);
    row(
        "name", [](KvPlan& p) { p.name = QStringLiteral("x"); }, "name", x);
    row(
        "projectFileId", [](KvPlan& p) { p.projectFileId = QStringLiteral("x"); }, "projectFileId", x);
    row(
        "isPublic 0", [](KvPlan& p) { p.isPublic = 0; }, "public", 0);
    row(
        "isPublic -1", [](KvPlan& p) { p.isPublic = -1; }, "public", -1);
    row(
        "isPublic 99", [](KvPlan& p) { p.isPublic = 99; }, "public", 99);
    row(
        "isPublic 101", [](KvPlan& p) { p.isPublic = 101; }, "public", 101);
    row(
        "ranges",
        [](KvPlan& p) {
            p.ranges = QStringList{QStringLiteral("b"), QStringLiteral("a")};
        },
        "ranges", QJsonArray{QStringLiteral("b"), QStringLiteral("a")});
    row(
        "ranges of one empty text", [](KvPlan& p) { p.ranges = QStringList{QString()}; }, "ranges",
        QJsonArray{QString()});
    row("empty texts",
        [](KvPlan& p) { p.projectId = p.category = p.name = p.projectFileId = QLatin1String(""); }, "", {});
    row("id", [](KvPlan& p) { p.id = QStringLiteral("x"); }, "", {});
    row("mppFilePath", [](KvPlan& p) { p.mppFilePath = QStringLiteral("x"); }, "", {});
    row("dates", [](KvPlan& p) { p.createdAt = p.updatedAt = QDateTime(QDate(2024, 3, 15), QTime(8, 5)); },
        "", {});
    row("people", [](KvPlan& p) { p.createdBy = p.updatedBy = QStringLiteral("x"); }, "", {});
}

void KvPlanCodecPlanTest::planField()
{
    QFETCH(PlanChange, change);
    QFETCH(QString, key);
    QFETCH(QJsonValue, value);
    KvPlan plan;
    change(plan);
    QJsonObject wanted{{QStringLiteral("projectData"), QJsonArray()}};
    if (!key.isEmpty())
        wanted.insert(key, value);
    QCOMPARE(difference(written(plan), wanted), QString());
}

void KvPlanCodecPlanTest::planNodesInListOrder()
{
    const KvPlan plan = fullPlan();
    QJsonArray wanted;
    for (const KvPlanNode& node : plan.planNodes)
        wanted.append(written(node));
    QCOMPARE(wanted.size(), 2);
    QCOMPARE(wanted.at(0).toObject().value(QStringLiteral("_id")).toString(), plan.planNodes.at(0).id);
    QCOMPARE(written(plan).value(QStringLiteral("projectData")), QJsonValue(wanted));
}

void KvPlanCodecPlanTest::childrenAreNotWritten()
{
    KvPlanNode child;
    child.id = QStringLiteral("child");
    KvPlan plan;
    plan.planNodes = {KvPlanNode()};
    plan.planNodes.first().children = {child};
    QCOMPARE(written(plan).value(QStringLiteral("projectData")),
             QJsonValue(QJsonArray{written(KvPlanNode())}));
}

void KvPlanCodecPlanTest::predecessor()
{
    const auto lag = [](double value, int units) {
        return QJsonObject{{QStringLiteral("Duration"), value}, {QStringLiteral("Units"), units}};
    };
    QCOMPARE(difference(Kv::predecessorToJsonObject(KvPlanPredecessor()),
                        {{QStringLiteral("SourcePlanNodeName"), QString()},
                         {QStringLiteral("TargetPlanNodeName"), QString()},
                         {QStringLiteral("Lag"), lag(0.0, 2)},
                         {QStringLiteral("Type"), 0},
                         {QStringLiteral("SourcePlanNodeUniqueID"), 0},
                         {QStringLiteral("TargetPlanNodeUniqueID"), QString()},
                         {QStringLiteral("SourcePlanNodeID"), 0},
                         {QStringLiteral("TargetPlanNodeID"), 0}}),
             QString());
    const KvPlanPredecessor link{
        QStringLiteral("from"), QStringLiteral("to"), {-2.5, 1}, 3, 12, QStringLiteral("012"), 5, 6};
    QCOMPARE(difference(Kv::predecessorToJsonObject(link),
                        {{QStringLiteral("SourcePlanNodeName"), QStringLiteral("from")},
                         {QStringLiteral("TargetPlanNodeName"), QStringLiteral("to")},
                         {QStringLiteral("Lag"), lag(-2.5, 1)},
                         {QStringLiteral("Type"), 3},
                         {QStringLiteral("SourcePlanNodeUniqueID"), 12},
                         {QStringLiteral("TargetPlanNodeUniqueID"), QStringLiteral("012")},
                         {QStringLiteral("SourcePlanNodeID"), 5},
                         {QStringLiteral("TargetPlanNodeID"), 6}}),
             QString());
    const KvPlanPredecessor again = Kv::jsonObjectToPredecessor(Kv::predecessorToJsonObject(link));
    QCOMPARE(difference(KvTest::dump(again), KvTest::dump(link)), QString());
}

void KvPlanCodecPlanTest::duration()
{
    QCOMPARE(difference(Kv::durationToJsonObject(KvDuration()),
                        {{QStringLiteral("Duration"), 0.0}, {QStringLiteral("Units"), 2}}),
             QString());
    QCOMPARE(difference(Kv::durationToJsonObject({-0.25, 0}),
                        {{QStringLiteral("Duration"), -0.25}, {QStringLiteral("Units"), 0}}),
             QString());
}

void KvPlanCodecPlanTest::targetKeepsWhatItHolds()
{
    QJsonObject planJson{{QStringLiteral("own"), 1}, {QStringLiteral("projectData"), 99}};
    Kv::planToJsonObject(KvPlan(), planJson);
    QCOMPARE(
        difference(planJson, {{QStringLiteral("own"), 1}, {QStringLiteral("projectData"), QJsonArray()}}),
        QString());
}

QTEST_APPLESS_MAIN(KvPlanCodecPlanTest)
#include "KvPlanCodecPlanTest.moc"
