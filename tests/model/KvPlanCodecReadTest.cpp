// What each key of the service's JSON reads as, whatever its value: every key of every record meets every
// kind of JSON value, alone, in a record that held something else before.

#include "KvPlanCodecMeetings.h"
#include "KvPlanRecordsDump.h"

#include <model/KvPlanCodec.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlan;
using KvTest::fullPlanNode;
using namespace KvTest::Meetings;

namespace {

struct KeyOf
{
    const char* key;
    const char* field;
    Kind kind;
};

const KeyOf nodeKeys[] = {
    {"_id", "id", Text},
    {"category", "category", Text},
    {"GUID", "guid", Text},
    {"planId", "planId", Text},
    {"planName", "planName", Text},
    {"projectId", "projectId", Text},
    {"id", "planNodeId", Whole},
    {"uniqueId", "uniqueId", Whole},
    {"parentTaskID", "parentTaskId", Whole},
    {"name", "name", Text},
    {"isDistributed", "isDistributed", Flag},
    {"remark", "remark", Text},
    {"finishedPercentage", "finishedPercentage", Real},
    {"createdBy", "createdBy", Text},
    {"updatedBy", "updatedBy", Text},
    {"updatedAt", "updatedAt", Date},
    {"createdAt", "createdAt", Date},
    {"startDate", "startDate", Date},
    {"finishDate", "finishDate", Date},
    {"actualStartDate", "actualStartDate", Date},
    {"actualFinishDate", "actualFinishDate", Date},
    {"milestone", "milestone", Flag},
    {"summary", "summary", Flag},
    {"dynamicEffect", "dynamicEffect", Whole},
    {"displaySimulation", "displaySimulation", NumberAsFlag},
    {"entityHideDate", "entityHideDate", Date},
    {"entityHideType", "entityHideType", Whole},
    {"planWorkload", "planWorkload", Whole},
    {"actualWorkload", "actualWorkload", Whole},
    {"userIds", "userIds", Ids},
    {"executeIds", "executeIds", Ids},
    {"cooperateIds", "cooperateIds", Ids},
    {"documentIds", "documentIds", Ids},
};

const KeyOf planKeys[] = {
    {"_id", "id", Text},
    {"category", "category", Text},
    {"projectId", "projectId", Text},
    {"name", "name", Text},
    {"projectFileId", "projectFileId", Text},
    {"createdAt", "createdAt", Date},
    {"createdBy", "createdBy", Text},
    {"updatedAt", "updatedAt", Date},
    {"updatedBy", "updatedBy", Text},
    {"public", "isPublic", Whole},
    {"ranges", "ranges", Ids},
};

const KeyOf predecessorKeys[] = {
    {"SourcePlanNodeName", "sourcePlanNodeName", Text},
    {"TargetPlanNodeName", "targetPlanNodeName", Text},
    {"Type", "type", Whole},
    {"SourcePlanNodeUniqueID", "sourcePlanNodeUniqueId", Whole},
    {"TargetPlanNodeUniqueID", "targetPlanNodeUniqueId", Text},
    {"SourcePlanNodeID", "sourcePlanNodeId", Whole},
    {"TargetPlanNodeID", "targetPlanNodeId", Whole},
};

const KeyOf durationKeys[] = {
    {"Duration", "value", Real},
    {"Units", "units", Whole},
};

const KeyOf documentKeys[] = {
    {"_id", "id", Text},        {"name", "name", Text},           {"fileSize", "fileSize", Whole},
    {"suffix", "suffix", Text}, {"createdAt", "createdAt", Text}, {"createdBy", "createdBy", Text},
};

template<std::size_t count>
void addRows(const KeyOf (&keys)[count])
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<QJsonValue>("expected");
    const QList<Meeting> all = meetings();
    for (const KeyOf& key : keys) {
        for (const Meeting& meeting : all) {
            QTest::addRow("%s: %s", key.key, meeting.name)
                << QString::fromLatin1(key.key) << QString::fromLatin1(key.field) << meeting.value
                << meeting.readAs(key.kind);
        }
    }
}

QJsonObject holding(const QString& key, const QJsonValue& value)
{
    QJsonObject object;
    if (!value.isUndefined())
        object.insert(key, value);
    return object;
}

// A reply is parsed from text, which keeps numbers and texts in another form than an object made in memory.
QJsonObject parsedAgain(const QJsonObject& json)
{
    return QJsonDocument::fromJson(QJsonDocument(json).toJson()).object();
}

// The dump of a record of which no key was there: what missing keys read as.
template<std::size_t count>
QJsonObject withoutKeys(QJsonObject before, const KeyOf (&keys)[count])
{
    const Meeting missing = meetings().first();
    for (const KeyOf& key : keys)
        before.insert(QLatin1String(key.field), missing.readAs(key.kind));
    return before;
}

} // namespace

class KvPlanCodecReadTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nodeKey_data() { addRows(nodeKeys); }
    void nodeKey();
    void planKey_data() { addRows(planKeys); }
    void planKey();
    void predecessorKey_data() { addRows(predecessorKeys); }
    void predecessorKey();
    void durationKey_data() { addRows(durationKeys); }
    void durationKey();
    void documentKey_data() { addRows(documentKeys); }
    void documentKey();
    void guid_data();
    void guid();
    void displaySimulation_data();
    void displaySimulation();
    void projectFile_data();
    void projectFile();
    void writersKeysAreNotRead();
    void planKeepsFilePathOnly();
};

void KvPlanCodecReadTest::nodeKey()
{
    QFETCH(QString, key);
    QFETCH(QString, field);
    QFETCH(QJsonValue, value);
    QFETCH(QJsonValue, expected);

    KvPlanNode node = fullPlanNode();
    QJsonObject wanted = withoutKeys(dump(node), nodeKeys);
    wanted.insert(QStringLiteral("links"), QJsonObject());
    wanted.insert(QStringLiteral("documents"), QJsonArray());
    wanted.insert(QStringLiteral("materialBills"), QJsonObject());
    wanted.insert(field, expected);
    if (field == QLatin1String("id"))
        wanted.insert(QStringLiteral("guid"), expected); // as there is no "GUID"

    KvPlanNode parsed = node;
    Kv::jsonObjectToPlanNode(holding(key, value), node);
    QCOMPARE(difference(dump(node), wanted), QString());
    Kv::jsonObjectToPlanNode(parsedAgain(holding(key, value)), parsed);
    QCOMPARE(difference(dump(parsed), wanted), QString());
}

void KvPlanCodecReadTest::planKey()
{
    QFETCH(QString, key);
    QFETCH(QString, field);
    QFETCH(QJsonValue, value);
    QFETCH(QJsonValue, expected);

    KvPlan plan = fullPlan();
    QJsonObject wanted = withoutKeys(dump(plan), planKeys);
    wanted.insert(QStringLiteral("planNodes"), QJsonArray());
    wanted.insert(field, expected);

    KvPlan parsed = plan;
    Kv::jsonObjectToPlan(holding(key, value), plan);
    QCOMPARE(difference(dump(plan), wanted), QString());
    Kv::jsonObjectToPlan(parsedAgain(holding(key, value)), parsed);
    QCOMPARE(difference(dump(parsed), wanted), QString());
}

void KvPlanCodecReadTest::predecessorKey()
{
    QFETCH(QString, key);
    QFETCH(QString, field);
    QFETCH(QJsonValue, value);
    QFETCH(QJsonValue, expected);

    QJsonObject wanted = withoutKeys({}, predecessorKeys);
    // A missing lag reads as an object without keys.
    wanted.insert(QStringLiteral("lag"),
                  QJsonObject{{QStringLiteral("value"), 0.0}, {QStringLiteral("units"), 0}});
    wanted.insert(field, expected);
    const QJsonObject json = holding(key, value);
    QCOMPARE(difference(dump(Kv::jsonObjectToPredecessor(json)), wanted), QString());
    QCOMPARE(difference(dump(Kv::jsonObjectToPredecessor(parsedAgain(json))), wanted), QString());
}

void KvPlanCodecReadTest::durationKey()
{
    QFETCH(QString, key);
    QFETCH(QString, field);
    QFETCH(QJsonValue, value);
    QFETCH(QJsonValue, expected);

    QJsonObject wanted = withoutKeys({}, durationKeys);
    wanted.insert(field, expected);
    const QJsonObject json = holding(key, value);
    QCOMPARE(difference(dump(Kv::jsonObjectToDuration(json)), wanted), QString());
    QCOMPARE(difference(dump(Kv::jsonObjectToDuration(parsedAgain(json))), wanted), QString());
    const KvPlanPredecessor linked =
        Kv::jsonObjectToPredecessor({{QStringLiteral("Lag"), holding(key, value)}});
    QCOMPARE(difference(dump(linked.lag), wanted), QString());
}

void KvPlanCodecReadTest::documentKey()
{
    QFETCH(QString, key);
    QFETCH(QString, field);
    QFETCH(QJsonValue, value);
    QFETCH(QJsonValue, expected);

    QJsonObject wanted = withoutKeys({}, documentKeys);
    wanted.insert(field, expected);
    const QJsonObject json = holding(key, value);
    QCOMPARE(difference(dump(Kv::jsonObjectToDocument(json)), wanted), QString());
    QCOMPARE(difference(dump(Kv::jsonObjectToDocument(parsedAgain(json))), wanted), QString());
}

void KvPlanCodecReadTest::guid_data()
{
    QTest::addColumn<QJsonObject>("json");
    QTest::addColumn<QString>("guid");
    const QString guidKey = QStringLiteral("GUID");
    const QString idKey = QStringLiteral("_id");
    QTest::newRow("missing: the id") << QJsonObject{{idKey, QStringLiteral("n1")}} << QStringLiteral("n1");
    QTest::newRow("empty: the id") << QJsonObject{{idKey, QStringLiteral("n1")}, {guidKey, QString()}}
                                   << QStringLiteral("n1");
    QTest::newRow("a number: the id")
        << QJsonObject{{idKey, QStringLiteral("n1")}, {guidKey, 7}} << QStringLiteral("n1");
    QTest::newRow("its own") << QJsonObject{{idKey, QStringLiteral("n1")}, {guidKey, QStringLiteral("g1")}}
                             << QStringLiteral("g1");
    QTest::newRow("blank is not empty")
        << QJsonObject{{idKey, QStringLiteral("n1")}, {guidKey, QStringLiteral(" ")}} << QStringLiteral(" ");
    QTest::newRow("neither") << QJsonObject() << QString();
}

void KvPlanCodecReadTest::guid()
{
    QFETCH(QJsonObject, json);
    QFETCH(QString, guid);
    KvPlanNode node = fullPlanNode();
    Kv::jsonObjectToPlanNode(json, node);
    QCOMPARE(node.guid, guid);
}

void KvPlanCodecReadTest::displaySimulation_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<bool>("shown");
    QTest::newRow("missing") << QJsonValue(QJsonValue::Undefined) << false;
    QTest::newRow("true, as it is written") << QJsonValue(true) << false;
    QTest::newRow("false") << QJsonValue(false) << false;
    QTest::newRow("0") << QJsonValue(0) << false;
    QTest::newRow("1") << QJsonValue(1) << true;
    QTest::newRow("2") << QJsonValue(2) << true;
    QTest::newRow("-1") << QJsonValue(-1) << true;
    QTest::newRow("0.5 is no whole number") << QJsonValue(0.5) << false;
    QTest::newRow("1 as text") << QJsonValue(QStringLiteral("1")) << false;
}

void KvPlanCodecReadTest::displaySimulation()
{
    QFETCH(QJsonValue, value);
    QFETCH(bool, shown);
    KvPlanNode node;
    node.displaySimulation = !shown;
    Kv::jsonObjectToPlanNode(holding(QStringLiteral("displaySimulation"), value), node);
    QCOMPARE(node.displaySimulation, shown);
}

void KvPlanCodecReadTest::projectFile_data()
{
    QTest::addColumn<QJsonObject>("json");
    QTest::addColumn<QString>("projectFileId");
    const QString older = QStringLiteral("projectFile");
    const QString newer = QStringLiteral("projectFileId");
    QTest::newRow("older key alone empties") << QJsonObject{{older, QStringLiteral("a")}} << QString();
    QTest::newRow("newer key alone") << QJsonObject{{newer, QStringLiteral("b")}} << QStringLiteral("b");
    QTest::newRow("both") << QJsonObject{{older, QStringLiteral("a")}, {newer, QStringLiteral("b")}}
                          << QStringLiteral("b");
    QTest::newRow("newer key of another type")
        << QJsonObject{{older, QStringLiteral("a")}, {newer, 1}} << QString();
}

void KvPlanCodecReadTest::projectFile()
{
    QFETCH(QJsonObject, json);
    QFETCH(QString, projectFileId);
    KvPlan plan = fullPlan();
    Kv::jsonObjectToPlan(json, plan);
    QCOMPARE(plan.projectFileId, projectFileId);
}

// The names and types that the writer uses where they differ from the reader's.
void KvPlanCodecReadTest::writersKeysAreNotRead()
{
    KvPlanNode node;
    Kv::jsonObjectToPlanNode(
        {{QStringLiteral("links"),
          QJsonArray{QJsonObject{{QStringLiteral("modelId"), QStringLiteral("m")},
                                 {QStringLiteral("entityIds"), QJsonArray{QStringLiteral("e")}}}}},
         {QStringLiteral("children"), QJsonArray{QJsonObject()}},
         {QStringLiteral("guid"), QStringLiteral("g")},
         {QStringLiteral("planNodeId"), 4},
         {QStringLiteral("parentTaskId"), 4},
         {QStringLiteral("notes"), QStringLiteral("n")},
         {QStringLiteral("type"), 4},
         {QStringLiteral("Duration"), QJsonObject{{QStringLiteral("Duration"), 4}}}},
        node);
    KvPlanNode empty;
    Kv::jsonObjectToPlanNode({}, empty);
    QCOMPARE(difference(dump(node), dump(empty)), QString());

    KvPlan plan;
    Kv::jsonObjectToPlan({{QStringLiteral("projectData"), QJsonArray{QJsonObject()}},
                          {QStringLiteral("planNodes"), QJsonArray{QJsonObject()}},
                          {QStringLiteral("mppFilePath"), QStringLiteral("p")},
                          {QStringLiteral("isPublic"), 4}},
                         plan);
    KvPlan emptyPlan;
    Kv::jsonObjectToPlan({}, emptyPlan);
    QCOMPARE(difference(dump(plan), dump(emptyPlan)), QString());
}

void KvPlanCodecReadTest::planKeepsFilePathOnly()
{
    KvPlan plan = fullPlan();
    KvPlan wanted;
    wanted.mppFilePath = plan.mppFilePath;
    wanted.isPublic = 0; // not 100, which stands for "not set"
    Kv::jsonObjectToPlan({}, plan);
    QCOMPARE(difference(dump(plan), dump(wanted)), QString());
}

QTEST_APPLESS_MAIN(KvPlanCodecReadTest)
#include "KvPlanCodecReadTest.moc"
