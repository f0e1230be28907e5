// The exchange format: kept files, what a schedule file says, the record it reads as, and what that is
// written as; and what the files cannot show.

#include "KvPlanRecordsDump.h"

#include <model/KvPlanDataUtils.h>
#include <support/ScopedTimeZone.h>

#include <QtCore/QJsonArray>
#include <QtTest/QtTest>

using KvTest::difference;
using KvTest::dump;

namespace {

QJsonObject kept(const QString& name, const char* part)
{
    return KvTest::readJsonFile(QStringLiteral(KV_TEST_DATA "/exchange/") + name + QLatin1Char('.') +
                                QLatin1String(part) + QStringLiteral(".json"));
}

KvPlan planOf(const QJsonObject& json)
{
    KvPlan plan;
    KvPlanDataUtils::jsonObjectToPlanMPXJ(json, plan);
    return plan;
}

KvPlanNode nodeOf(const QJsonObject& json)
{
    KvPlanNode node;
    KvPlanDataUtils::jsonObjectToPlanNodeMPJX(json, node);
    return node;
}

QJsonObject written(const KvPlanNode& node)
{
    QJsonObject json;
    KvPlanDataUtils::planNodeToJsonObjectMPXJ(node, json);
    return json;
}

QJsonObject with(const char* key, const QJsonValue& value)
{
    return {{QLatin1String(key), value}};
}

/// A task with every key that is read.
QJsonObject fullTask()
{
    const QJsonArray tasks = kept(QStringLiteral("plan"), "in").value(QLatin1String("AllTasks")).toArray();
    return tasks.at(2).toObject();
}

/// The fields of a node that the format has a key for when it is read.
const QStringList readFields = {
    QStringLiteral("parentTaskId"), QStringLiteral("guid"),         QStringLiteral("planNodeId"),
    QStringLiteral("uniqueId"),     QStringLiteral("name"),         QStringLiteral("durationText"),
    QStringLiteral("milestone"),    QStringLiteral("summary"),      QStringLiteral("notes"),
    QStringLiteral("startText"),    QStringLiteral("type"),         QStringLiteral("duration"),
    QStringLiteral("finishSlack"),  QStringLiteral("finishText"),   QStringLiteral("startDate"),
    QStringLiteral("finishDate"),   QStringLiteral("predecessors"),
};

} // namespace

class KvPlanExchangeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsKeptFiles_data() { keptFiles(); }
    void readsKeptFiles();
    void writesKeptFiles_data() { keptFiles(); }
    void writesKeptFiles();
    void appendsTheTasks();
    void leavesOtherFieldsAlone();
    void replacesEveryFieldItReads();
    void readsNotesAsAFlag_data();
    void readsNotesAsAFlag();
    void readsATargetNumberAsACharacter_data();
    void readsATargetNumberAsACharacter();
    void readsLocalTime_data();
    void readsLocalTime();
    void writesEveryKeyOfADefaultNode();
    void keepsOtherKeysOfTheObject();
    void doesNotWriteChildren();
    void losesOnTheWayRound();

private:
    static void keptFiles()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : {"plan", "empty", "again"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
};

void KvPlanExchangeTest::readsKeptFiles()
{
    QFETCH(QString, name);
    QCOMPARE(difference(dump(planOf(kept(name, "in"))), kept(name, "record")), QString());
}

void KvPlanExchangeTest::writesKeptFiles()
{
    QFETCH(QString, name);
    QJsonObject json;
    KvPlanDataUtils::planToJsonObjectMPXJ(planOf(kept(name, "in")), json);
    QCOMPARE(difference(json, kept(name, "out")), QString());
}

void KvPlanExchangeTest::appendsTheTasks()
{
    KvPlan plan = KvTest::fullPlan();
    const KvPlan before = plan;
    KvPlanDataUtils::jsonObjectToPlanMPXJ(kept(QStringLiteral("plan"), "in"), plan);
    QCOMPARE(plan.planNodes.size(), before.planNodes.size() + 4);
    for (int i = 0; i < before.planNodes.size(); ++i)
        QCOMPARE(difference(dump(plan.planNodes.at(i)), dump(before.planNodes.at(i))), QString());
    QCOMPARE(plan.planNodes.last().planNodeId, 0);

    plan.planNodes = before.planNodes;
    QCOMPARE(plan.name, QString::fromUtf8("Tower A, structure 结构"));
    QCOMPARE(plan.mppFilePath, QStringLiteral("C:\\Schedules\\tower a.mpp"));
    plan.name = before.name;
    plan.mppFilePath = before.mppFilePath;
    QCOMPARE(difference(dump(plan), dump(before)), QString());
}

void KvPlanExchangeTest::leavesOtherFieldsAlone()
{
    KvPlanNode node = KvTest::fullPlanNode();
    const int predecessorCount = node.predecessors.size();
    QJsonObject before = dump(node);
    KvPlanDataUtils::jsonObjectToPlanNodeMPJX(fullTask(), node);
    QJsonObject after = dump(node);
    QCOMPARE(node.predecessors.size(), predecessorCount + 4);
    for (const QString& field : readFields) {
        QVERIFY2(before.contains(field), qPrintable(field));
        before.remove(field);
        after.remove(field);
    }
    QCOMPARE(difference(after, before), QString());
}

// What a file does not say is empty afterwards, whatever was there; predecessors alone are added to.
void KvPlanExchangeTest::replacesEveryFieldItReads()
{
    KvPlanNode node = KvTest::fullPlanNode();
    node.predecessors.clear();
    KvPlanDataUtils::jsonObjectToPlanNodeMPJX(QJsonObject(), node);
    const QJsonObject after = dump(node);
    const QJsonObject fresh = dump(nodeOf(QJsonObject()));
    for (const QString& field : readFields)
        QCOMPARE(after.value(field), fresh.value(field));
    QCOMPARE(node.duration.units, 0);
    QCOMPARE(node.planNodeId, 0);
}

void KvPlanExchangeTest::readsNotesAsAFlag_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<int>("code");
    QTest::newRow("true") << QJsonValue(true) << 1;
    QTest::newRow("false") << QJsonValue(false) << 0;
    QTest::newRow("text") << QJsonValue(QStringLiteral("text")) << 0;
    QTest::newRow("the word true") << QJsonValue(QStringLiteral("true")) << 0;
    QTest::newRow("number") << QJsonValue(1) << 0;
    QTest::newRow("null") << QJsonValue() << 0;
    QTest::newRow("missing") << QJsonValue(QJsonValue::Undefined) << 0;
}

void KvPlanExchangeTest::readsNotesAsAFlag()
{
    QFETCH(QJsonValue, value);
    QFETCH(int, code);
    const QString notes = nodeOf(with("Notes", value)).notes;
    QCOMPARE(notes.size(), 1);
    QCOMPARE(int(notes.at(0).unicode()), code);
}

void KvPlanExchangeTest::readsATargetNumberAsACharacter_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<int>("code");
    QTest::newRow("65 is A") << QJsonValue(65) << int('A');
    QTest::newRow("321 is A too") << QJsonValue(321) << int('A');
    QTest::newRow("0") << QJsonValue(0) << 0;
    QTest::newRow("200") << QJsonValue(200) << 200;
    QTest::newRow("255") << QJsonValue(255) << 255;
    QTest::newRow("256") << QJsonValue(256) << 0;
    QTest::newRow("-1") << QJsonValue(-1) << 255;
    QTest::newRow("fraction") << QJsonValue(65.5) << 0;
    QTest::newRow("text") << QJsonValue(QStringLiteral("65")) << 0;
    QTest::newRow("missing") << QJsonValue(QJsonValue::Undefined) << 0;
}

void KvPlanExchangeTest::readsATargetNumberAsACharacter()
{
    QFETCH(QJsonValue, value);
    QFETCH(int, code);
    const KvPlanNode node = nodeOf(with("Predecessors", QJsonArray{with("TargetTaskUniqueID", value)}));
    QCOMPARE(node.predecessors.size(), 1);
    const QString target = node.predecessors.at(0).targetPlanNodeUniqueId;
    QCOMPARE(target.size(), 1);
    QCOMPARE(int(target.at(0).unicode()), code);
}

void KvPlanExchangeTest::readsLocalTime_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("written");
    const auto row = [](const char* name, const char* zone, const char* text, const char* written) {
        QTest::newRow(name) << QByteArray(zone) << QString::fromLatin1(text) << QString::fromLatin1(written);
    };
    row("in form", "Asia/Shanghai", "2024-03-05T08:00:00", "2024-03-05T08:00:00");
    row("without time", "Asia/Shanghai", "2024-03-05", "");
    row("with fraction", "Asia/Shanghai", "2024-03-05T08:00:00.000", "");
    row("with zone", "Asia/Shanghai", "2024-03-05T08:00:00Z", "");
    row("with a space", "Asia/Shanghai", "2024-03-05 08:00:00", "");
    row("empty", "Asia/Shanghai", "", "");
    row("no such day", "Asia/Shanghai", "2023-02-29T08:00:00", "");
    row("before the skipped hour", "Europe/Berlin", "2024-03-31T01:59:59", "2024-03-31T01:59:59");
    row("skipped hour", "Europe/Berlin", "2024-03-31T02:30:00", "");
    row("repeated hour", "Europe/Berlin", "2024-10-27T02:30:00", "2024-10-27T02:30:00");
}

void KvPlanExchangeTest::readsLocalTime()
{
    QFETCH(QByteArray, zone);
    QFETCH(QString, text);
    QFETCH(QString, written);
    const ScopedTimeZone timeZone(zone);
    const KvPlanNode node = nodeOf({{QStringLiteral("Start"), text}, {QStringLiteral("Finish"), text}});
    QCOMPARE(node.startDate.isValid(), !written.isEmpty());
    QCOMPARE(node.startDate.timeSpec(), Qt::LocalTime);
    QCOMPARE(node.finishDate, node.startDate);
    const QJsonObject json = ::written(node);
    QCOMPARE(json.value(QLatin1String("Start")).toString(QStringLiteral("no text")), written);
    QCOMPARE(json.value(QLatin1String("Finish")).toString(QStringLiteral("no text")), written);
}

void KvPlanExchangeTest::writesEveryKeyOfADefaultNode()
{
    const QJsonObject days{{QStringLiteral("Duration"), 0}, {QStringLiteral("Units"), 2}};
    const QString none = QStringLiteral("");
    const QJsonObject expected{
        {QStringLiteral("ParentTask"), -1},
        {QStringLiteral("UniqueID"), -1},
        {QStringLiteral("ID"), -1},
        {QStringLiteral("GUID"), none},
        {QStringLiteral("Name"), none},
        {QStringLiteral("Notes"), none},
        {QStringLiteral("Start"), none},
        {QStringLiteral("StartText"), none},
        {QStringLiteral("Finish"), none},
        {QStringLiteral("FinishSlack"), days},
        {QStringLiteral("FinishText"), none},
        {QStringLiteral("Duration"), days},
        {QStringLiteral("DurationText"), none},
        {QStringLiteral("Summary"), false},
        {QStringLiteral("Type"), 0},
        {QStringLiteral("Predecessors"), QJsonArray()},
    };
    QCOMPARE(difference(written(KvPlanNode()), expected), QString());
}

void KvPlanExchangeTest::keepsOtherKeysOfTheObject()
{
    QJsonObject json{{QStringLiteral("Milestone"), true}, {QStringLiteral("Name"), QStringLiteral("old")}};
    KvPlanNode node;
    node.name = QStringLiteral("new");
    KvPlanDataUtils::planNodeToJsonObjectMPXJ(node, json);
    QCOMPARE(json.value(QLatin1String("Milestone")), QJsonValue(true));
    QCOMPARE(json.value(QLatin1String("Name")), QJsonValue(QStringLiteral("new")));

    QJsonObject planJson{{QStringLiteral("MPPFilePath"), QStringLiteral("kept")}};
    KvPlanDataUtils::planToJsonObjectMPXJ(KvTest::fullPlan(), planJson);
    QCOMPARE(planJson.keys(), (QStringList{QStringLiteral("AllPlanNodes"), QStringLiteral("MPPFilePath"),
                                           QStringLiteral("Name")}));
    QCOMPARE(planJson.value(QLatin1String("MPPFilePath")), QJsonValue(QStringLiteral("kept")));
}

void KvPlanExchangeTest::doesNotWriteChildren()
{
    KvPlan plan;
    plan.planNodes.append(KvPlanNode());
    plan.planNodes.first().children.append(KvPlanNode());
    QJsonObject json;
    KvPlanDataUtils::planToJsonObjectMPXJ(plan, json);
    QCOMPARE(json.value(QLatin1String("AllPlanNodes")).toArray(), QJsonArray{written(KvPlanNode())});
}

void KvPlanExchangeTest::losesOnTheWayRound()
{
    const KvPlanNode before = nodeOf(fullTask());
    QVERIFY(before.milestone);
    QCOMPARE(before.predecessors.size(), 4);
    const KvPlanNode after = nodeOf(written(before));
    QVERIFY(!after.milestone);
    QCOMPARE(after.predecessors.size(), 4);
    for (int i = 0; i < after.predecessors.size(); ++i) {
        const KvPlanPredecessor& link = after.predecessors.at(i);
        QCOMPARE(link.sourcePlanNodeName, QString());
        QCOMPARE(link.targetPlanNodeName, QString());
        QCOMPARE(link.sourcePlanNodeUniqueId, 0);
        QCOMPARE(link.targetPlanNodeUniqueId, QString(QChar(0)));
        QCOMPARE(link.sourcePlanNodeId, 0);
        QCOMPARE(link.targetPlanNodeId, 0);
        QCOMPARE(link.type, before.predecessors.at(i).type);
        QCOMPARE(link.lag.value, before.predecessors.at(i).lag.value);
    }
    QCOMPARE(after.guid, before.guid);
    QCOMPARE(after.finishSlack.units, before.finishSlack.units);

    // A plan loses all its nodes: they are written under another key than they are read from.
    QJsonObject json;
    KvPlanDataUtils::planToJsonObjectMPXJ(planOf(kept(QStringLiteral("plan"), "in")), json);
    QVERIFY(planOf(json).planNodes.isEmpty());
    QCOMPARE(planOf(json).mppFilePath, QString());
}

QTEST_GUILESS_MAIN(KvPlanExchangeTest)
#include "KvPlanExchangeTest.moc"
