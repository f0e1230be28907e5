// Which keys each field is written under, and when it is left out.

#include "KvPlanRecordsDump.h"

#include <model/KvPlanCodec.h>

#include <QtCore/QJsonArray>
#include <QtTest/QtTest>

#include <limits>

using KvTest::difference;
using KvTest::fullPlanNode;

namespace {

using Change = void (*)(KvPlanNode&);

QJsonObject written(const KvPlanNode& node, bool withId = true)
{
    QJsonObject json;
    Kv::planNodeToJsonObject(node, json, withId);
    return json;
}

// What a default node is written as, spelled out.
QJsonObject defaultNodeJson()
{
    QJsonObject json{{QStringLiteral("id"), -1},
                     {QStringLiteral("category"), QString()},
                     {QStringLiteral("uniqueId"), -1},
                     {QStringLiteral("parentTaskID"), -1},
                     {QStringLiteral("planWorkload"), 0},
                     {QStringLiteral("actualWorkload"), 0},
                     {QStringLiteral("dynamicEffect"), 0},
                     {QStringLiteral("entityHideType"), 0},
                     {QStringLiteral("isDistributed"), false},
                     {QStringLiteral("displaySimulation"), true},
                     {QStringLiteral("finishedPercentage"), 0.0}};
    for (const char* key : {"createdAt", "updatedAt", "startDate", "finishDate", "actualStartDate",
                            "actualFinishDate", "entityHideDate"})
        json.insert(QLatin1String(key), QString());
    for (const char* key :
         {"predecessors", "links", "userIds", "executeIds", "cooperateIds", "documentIds", "materialBills"})
        json.insert(QLatin1String(key), QJsonArray());
    return json;
}

QDateTime someDate()
{
    return QDateTime(QDate(2024, 3, 15), QTime(8, 5, 9, 7));
}

const QString someDateText = QStringLiteral("2024-03-15T08:05:09.007");

} // namespace

Q_DECLARE_METATYPE(Change)

class KvPlanCodecWriteTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaultNode();
    void nodeField_data();
    void nodeField();
    void fieldsWithoutAKey();
    void everyFieldEmptyOrUnset();
    void withoutId_data();
    void withoutId();
    void targetKeepsWhatItHolds();
};

void KvPlanCodecWriteTest::defaultNode()
{
    QCOMPARE(difference(written(KvPlanNode()), defaultNodeJson()), QString());
    QCOMPARE(difference(written(KvPlanNode(), false), defaultNodeJson()), QString());
}

void KvPlanCodecWriteTest::nodeField_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QJsonValue>("value"); // Undefined: the key is left out
    const QJsonValue leftOut(QJsonValue::Undefined);
    const auto row = [](const char* name, Change change, const char* key, const QJsonValue& value) {
        QTest::newRow(name) << change << QString::fromLatin1(key) << value;
    };
    const QString x = QStringLiteral("x");
    const auto text = [](const char* content) {
        return QJsonValue(QString::fromUtf8(content));
    };

    row(
        "id", [](KvPlanNode& n) { n.id = QStringLiteral("x"); }, "_id", x);
    row(
        "empty id", [](KvPlanNode& n) { n.id = QLatin1String(""); }, "_id", leftOut);
    row(
        "guid", [](KvPlanNode& n) { n.guid = QStringLiteral("x"); }, "GUID", x);
    row(
        "empty guid", [](KvPlanNode& n) { n.guid = QLatin1String(""); }, "GUID", leftOut);
    row(
        "planId", [](KvPlanNode& n) { n.planId = QStringLiteral("x"); }, "planId", x);
    row(
        "projectId", [](KvPlanNode& n) { n.projectId = QStringLiteral("x"); }, "projectId", x);
    row(
        "planNodeId", [](KvPlanNode& n) { n.planNodeId = 7; }, "id", 7);
    row(
        "planNodeId 0", [](KvPlanNode& n) { n.planNodeId = 0; }, "id", 0);
    row(
        "category", [](KvPlanNode& n) { n.category = QStringLiteral("x"); }, "category", x);
    row(
        "uniqueId", [](KvPlanNode& n) { n.uniqueId = 7; }, "uniqueId", 7);
    row(
        "parentTaskId", [](KvPlanNode& n) { n.parentTaskId = 7; }, "parentTaskID", 7);
    row(
        "name", [](KvPlanNode& n) { n.name = QStringLiteral("墙 \"W\" \\ 🏗"); }, "name",
        text("墙 \"W\" \\ 🏗"));
    row(
        "blank name", [](KvPlanNode& n) { n.name = QStringLiteral(" "); }, "name", text(" "));
    row(
        "isDistributed", [](KvPlanNode& n) { n.isDistributed = true; }, "isDistributed", true);
    row(
        "remark", [](KvPlanNode& n) { n.remark = QStringLiteral("x"); }, "remark", x);
    row(
        "createdBy", [](KvPlanNode& n) { n.createdBy = QStringLiteral("x"); }, "createdBy", x);
    row(
        "updatedBy", [](KvPlanNode& n) { n.updatedBy = QStringLiteral("x"); }, "updatedBy", x);
    row(
        "createdAt", [](KvPlanNode& n) { n.createdAt = someDate(); }, "createdAt", someDateText);
    row(
        "updatedAt", [](KvPlanNode& n) { n.updatedAt = someDate(); }, "updatedAt", someDateText);
    row(
        "startDate", [](KvPlanNode& n) { n.startDate = someDate(); }, "startDate", someDateText);
    row(
        "finishDate", [](KvPlanNode& n) { n.finishDate = someDate(); }, "finishDate", someDateText);
    row(
        "actualStartDate", [](KvPlanNode& n) { n.actualStartDate = someDate(); }, "actualStartDate",
        someDateText);
    row(
        "actualFinishDate", [](KvPlanNode& n) { n.actualFinishDate = someDate(); }, "actualFinishDate",
        someDateText);
    row(
        "displaySimulation", [](KvPlanNode& n) { n.displaySimulation = false; }, "displaySimulation", false);

    row(
        "finishedPercentage -0.5", [](KvPlanNode& n) { n.finishedPercentage = -0.5; }, "finishedPercentage",
        leftOut);
    row(
        "finishedPercentage just below 0",
        [](KvPlanNode& n) { n.finishedPercentage = -std::numeric_limits<double>::denorm_min(); },
        "finishedPercentage", leftOut);
    row(
        "finishedPercentage just above 0",
        [](KvPlanNode& n) { n.finishedPercentage = std::numeric_limits<double>::denorm_min(); },
        "finishedPercentage", std::numeric_limits<double>::denorm_min());
    row(
        "finishedPercentage minus zero", [](KvPlanNode& n) { n.finishedPercentage = -0.0; },
        "finishedPercentage", -0.0);
    row(
        "finishedPercentage no number",
        [](KvPlanNode& n) { n.finishedPercentage = std::numeric_limits<double>::quiet_NaN(); },
        "finishedPercentage", leftOut);
    row(
        "finishedPercentage 62.5", [](KvPlanNode& n) { n.finishedPercentage = 62.5; }, "finishedPercentage",
        62.5);
    row(
        "finishedPercentage 150", [](KvPlanNode& n) { n.finishedPercentage = 150; }, "finishedPercentage",
        150);
    row(
        "planWorkload -1", [](KvPlanNode& n) { n.planWorkload = -1; }, "planWorkload", leftOut);
    row(
        "planWorkload -2", [](KvPlanNode& n) { n.planWorkload = -2; }, "planWorkload", leftOut);
    row(
        "planWorkload 1", [](KvPlanNode& n) { n.planWorkload = 1; }, "planWorkload", 1);
    row(
        "actualWorkload -1", [](KvPlanNode& n) { n.actualWorkload = -1; }, "actualWorkload", leftOut);
    row(
        "actualWorkload -2", [](KvPlanNode& n) { n.actualWorkload = -2; }, "actualWorkload", leftOut);
    row(
        "actualWorkload 1", [](KvPlanNode& n) { n.actualWorkload = 1; }, "actualWorkload", 1);
    row(
        "dynamicEffect -1", [](KvPlanNode& n) { n.dynamicEffect = -1; }, "dynamicEffect", leftOut);
    row(
        "dynamicEffect -2", [](KvPlanNode& n) { n.dynamicEffect = -2; }, "dynamicEffect", -2);
    row(
        "dynamicEffect 1", [](KvPlanNode& n) { n.dynamicEffect = 1; }, "dynamicEffect", 1);

    row(
        "predecessors",
        [](KvPlanNode& n) {
            n.predecessors = {KvPlanPredecessor(), KvPlanPredecessor()};
        },
        "predecessors",
        QJsonArray{Kv::predecessorToJsonObject(KvPlanPredecessor()),
                   Kv::predecessorToJsonObject(KvPlanPredecessor())});
    row(
        "links",
        [](KvPlanNode& n) {
            n.links = {{QStringLiteral("n"), {QStringLiteral("e"), QStringLiteral("f")}},
                       {QStringLiteral("m"), {}}};
        },
        "links",
        QJsonArray{QJsonObject{{QStringLiteral("modelId"), QStringLiteral("m")},
                               {QStringLiteral("entityIds"), QJsonArray()}},
                   QJsonObject{
                       {QStringLiteral("modelId"), QStringLiteral("n")},
                       {QStringLiteral("entityIds"), QJsonArray{QStringLiteral("e"), QStringLiteral("f")}}}});
    row(
        "entityHideDate", [](KvPlanNode& n) { n.entityHideDate = someDate(); }, "entityHideDate",
        someDateText);
    row(
        "entityHideType", [](KvPlanNode& n) { n.entityHideType = -1; }, "entityHideType", -1);
    const QJsonArray ids{QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("b")};
    row(
        "userIds",
        [](KvPlanNode& n) {
            n.userIds = QStringList{QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("b")};
        },
        "userIds", ids);
    row(
        "executeIds",
        [](KvPlanNode& n) {
            n.executeIds = QStringList{QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("b")};
        },
        "executeIds", ids);
    row(
        "cooperateIds",
        [](KvPlanNode& n) {
            n.cooperateIds = QStringList{QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("b")};
        },
        "cooperateIds", ids);
    row(
        "documentIds",
        [](KvPlanNode& n) {
            n.documentIds = QStringList{QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("b")};
        },
        "documentIds", ids);
    row(
        "materialBills",
        [](KvPlanNode& n) {
            n.materialBills = {{QStringLiteral("b"), {QStringLiteral("t"), QStringLiteral("s")}},
                               {QStringLiteral("B"), {}},
                               {QStringLiteral("a"), {QStringLiteral("u")}}};
        },
        "materialBills",
        QJsonArray{QJsonObject{{QStringLiteral("rId"), QStringLiteral("B")},
                               {QStringLiteral("statusIds"), QJsonArray()}},
                   QJsonObject{{QStringLiteral("rId"), QStringLiteral("a")},
                               {QStringLiteral("statusIds"), QJsonArray{QStringLiteral("u")}}},
                   QJsonObject{
                       {QStringLiteral("rId"), QStringLiteral("b")},
                       {QStringLiteral("statusIds"), QJsonArray{QStringLiteral("t"), QStringLiteral("s")}}}});
}

void KvPlanCodecWriteTest::nodeField()
{
    QFETCH(Change, change);
    QFETCH(QString, key);
    QFETCH(QJsonValue, value);
    KvPlanNode node;
    change(node);
    QJsonObject wanted = defaultNodeJson();
    wanted.remove(key);
    if (!value.isUndefined())
        wanted.insert(key, value);
    QCOMPARE(difference(written(node), wanted), QString());
}

// Told by the service, from the exchange format only, of the tree, or carried for nobody: never written.
void KvPlanCodecWriteTest::fieldsWithoutAKey()
{
    const KvPlanNode full = fullPlanNode();
    KvPlanNode node;
    node.planName = full.planName;
    node.milestone = node.summary = true;
    node.documents = full.documents;
    node.notes = full.notes;
    node.duration = full.duration;
    node.startText = full.startText;
    node.durationText = full.durationText;
    node.finishSlack = full.finishSlack;
    node.finishText = full.finishText;
    node.type = full.type;
    node.children = full.children;
    node.reservedText1 = node.reservedText2 = node.reservedText3 = full.reservedText1;
    node.reservedText4 = node.reservedText5 = full.reservedText1;
    node.reservedUnits = node.reservedInt1 = node.reservedInt2 = node.reservedInt3 = 5;
    node.reservedValue = node.reservedTail = 5;
    node.reservedList = full.reservedList;
    QCOMPARE(difference(written(node), defaultNodeJson()), QString());
}

void KvPlanCodecWriteTest::everyFieldEmptyOrUnset()
{
    KvPlanNode node;
    node.dynamicEffect = node.planWorkload = node.actualWorkload = -1;
    node.finishedPercentage = -0.5;
    QJsonObject wanted = defaultNodeJson();
    for (const char* key : {"dynamicEffect", "planWorkload", "actualWorkload", "finishedPercentage"})
        wanted.remove(QLatin1String(key));
    QCOMPARE(difference(written(node), wanted), QString());
}

void KvPlanCodecWriteTest::withoutId_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("guid");
    QTest::addColumn<bool>("withId");
    QTest::addColumn<QStringList>("keys");
    const QStringList none;
    const QStringList id{QStringLiteral("_id")};
    const QStringList guid{QStringLiteral("GUID")};
    QTest::newRow("both, the same") << "n1"
                                    << "n1" << true << id;
    QTest::newRow("both, the same, without id") << "n1"
                                                << "n1" << false << none;
    QTest::newRow("both, different") << "n1"
                                     << "g1" << true << (guid + id);
    QTest::newRow("both, different, without id") << "n1"
                                                 << "g1" << false << guid;
    QTest::newRow("differing in case") << "n1"
                                       << "N1" << true << (guid + id);
    QTest::newRow("no guid") << "n1"
                             << "" << true << id;
    QTest::newRow("no guid, without id") << "n1"
                                         << "" << false << none;
    QTest::newRow("no id") << ""
                           << "g1" << true << guid;
    QTest::newRow("no id, without id") << ""
                                       << "g1" << false << guid;
    QTest::newRow("neither") << ""
                             << "" << true << none;
}

void KvPlanCodecWriteTest::withoutId()
{
    QFETCH(QString, id);
    QFETCH(QString, guid);
    QFETCH(bool, withId);
    QFETCH(QStringList, keys);
    KvPlanNode node;
    node.id = id;
    node.guid = guid;
    QJsonObject wanted = defaultNodeJson();
    for (const QString& key : qAsConst(keys))
        wanted.insert(key, key == QLatin1String("_id") ? id : guid);
    QCOMPARE(difference(written(node, withId), wanted), QString());
}

void KvPlanCodecWriteTest::targetKeepsWhatItHolds()
{
    QJsonObject json{{QStringLiteral("own"), 1}, {QStringLiteral("id"), 99}, {QStringLiteral("_id"), 99}};
    Kv::planNodeToJsonObject(KvPlanNode(), json, true);
    QJsonObject wanted = defaultNodeJson();
    wanted.insert(QStringLiteral("own"), 1);
    wanted.insert(QStringLiteral("_id"), 99);
    QCOMPARE(difference(json, wanted), QString());
}

QTEST_APPLESS_MAIN(KvPlanCodecWriteTest)
#include "KvPlanCodecWriteTest.moc"
