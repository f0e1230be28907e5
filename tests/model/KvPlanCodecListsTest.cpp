// Reading what holds other records: a plan's tasks, a node's predecessors, links, documents and bills.

#include "KvPlanRecordsDump.h"

#include <model/KvPlanCodec.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlan;
using KvTest::fullPlanNode;

namespace {

QJsonObject parsed(const char* json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (!document.isObject())
        qFatal("no JSON object: %s: %s", json, qPrintable(error.errorString()));
    return document.object();
}

QString idsOf(const QList<KvPlanNode>& nodes)
{
    QStringList ids;
    for (const KvPlanNode& node : nodes)
        ids.append(node.id.isEmpty() ? QStringLiteral("-") : node.id);
    return ids.join(QLatin1Char(' '));
}

QString read(const QMap<QString, QStringList>& map)
{
    QStringList entries;
    for (auto entry = map.constBegin(); entry != map.constEnd(); ++entry)
        entries.append(entry.key() + QLatin1Char('=') + entry.value().join(QLatin1Char(',')));
    return entries.join(QLatin1Char(' '));
}

} // namespace

class KvPlanCodecListsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tasks_data();
    void tasks();
    void predecessors_data();
    void predecessors();
    void predecessorsAreAppended();
    void documents_data();
    void documents();
    void materialBills_data();
    void materialBills();
    void entity_data();
    void entity();
    void lag_data();
    void lag();
    void wholeListsAreReplaced();
    void otherMissingListsAreEmptied();
    void orderOfKeysMakesNoDifference();
    void unknownKeysAreIgnored();
    void lastOfRepeatedKeysCounts();
    void hundredThousandNodes();
    void longTexts();
};

void KvPlanCodecListsTest::tasks_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("ids");
    QTest::newRow("missing") << QByteArray("{}") << "";
    QTest::newRow("null") << QByteArray(R"({"tasks": null})") << "";
    QTest::newRow("object") << QByteArray(R"({"tasks": {"_id": "a"}})") << "";
    QTest::newRow("text") << QByteArray(R"({"tasks": "a"})") << "";
    QTest::newRow("number") << QByteArray(R"({"tasks": 3})") << "";
    QTest::newRow("empty") << QByteArray(R"({"tasks": []})") << "";
    QTest::newRow("one") << QByteArray(R"({"tasks": [{"_id": "a"}]})") << "a";
    QTest::newRow("in array order") << QByteArray(R"({"tasks": [{"_id": "b"}, {"_id": "c"}, {"_id": "a"}]})")
                                    << "b c a";
    QTest::newRow("same node twice") << QByteArray(R"({"tasks": [{"_id": "b"}, {"_id": "b"}]})") << "b b";
    QTest::newRow("elements that are no objects")
        << QByteArray(R"({"tasks": [1, {"_id": "a"}, null, "x", [{"_id": "b"}], true]})") << "- a - - - -";
}

void KvPlanCodecListsTest::tasks()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, ids);
    KvPlan plan = fullPlan();
    Kv::jsonObjectToPlan(parsed(json.constData()), plan);
    QCOMPARE(idsOf(plan.planNodes), ids);
    // Each node starts from a fresh record and is then read like any node, also when its element is none.
    for (const KvPlanNode& node : qAsConst(plan.planNodes)) {
        KvPlanNode wanted;
        Kv::jsonObjectToPlanNode({{QStringLiteral("_id"), node.id}}, wanted);
        QCOMPARE(difference(dump(node), dump(wanted)), QString());
        QCOMPARE(node.planNodeId, 0);
        QCOMPARE(node.displaySimulation, false);
    }
}

void KvPlanCodecListsTest::predecessors_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("sources");
    QTest::newRow("missing") << QByteArray("{}") << "";
    QTest::newRow("null") << QByteArray(R"({"predecessors": null})") << "";
    QTest::newRow("object") << QByteArray(R"({"predecessors": {"SourcePlanNodeName": "a"}})") << "";
    QTest::newRow("text") << QByteArray(R"({"predecessors": "a"})") << "";
    QTest::newRow("empty") << QByteArray(R"({"predecessors": []})") << "";
    QTest::newRow("in array order")
        << QByteArray(R"({"predecessors": [{"SourcePlanNodeName": "b"}, {"SourcePlanNodeName": "a"}]})")
        << "b a";
    QTest::newRow("elements that are no objects")
        << QByteArray(R"({"predecessors": [7, {"SourcePlanNodeName": "a"}, null]})") << "- a -";
}

void KvPlanCodecListsTest::predecessors()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, sources);
    KvPlanNode node;
    Kv::jsonObjectToPlanNode(parsed(json.constData()), node);
    QStringList names;
    for (const KvPlanPredecessor& link : qAsConst(node.predecessors)) {
        names.append(link.sourcePlanNodeName.isEmpty() ? QStringLiteral("-") : link.sourcePlanNodeName);
        QCOMPARE(link.lag.units, 0);
    }
    QCOMPARE(names.join(QLatin1Char(' ')), sources);
}

// The only list that a reader does not replace: it expects a fresh node.
void KvPlanCodecListsTest::predecessorsAreAppended()
{
    KvPlanNode node;
    const QJsonObject json = parsed(R"({"predecessors": [{"SourcePlanNodeName": "a"}]})");
    Kv::jsonObjectToPlanNode(json, node);
    Kv::jsonObjectToPlanNode(json, node);
    Kv::jsonObjectToPlanNode(QJsonObject(), node);
    QCOMPARE(node.predecessors.size(), 2);
}

void KvPlanCodecListsTest::documents_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("ids");
    QTest::newRow("missing") << QByteArray("{}") << "";
    QTest::newRow("object") << QByteArray(R"({"documents": {"_id": "a"}})") << "";
    QTest::newRow("text") << QByteArray(R"({"documents": "a"})") << "";
    QTest::newRow("empty") << QByteArray(R"({"documents": []})") << "";
    QTest::newRow("in array order") << QByteArray(R"({"documents": [{"_id": "b"}, {"_id": "a"}]})") << "b a";
    QTest::newRow("elements that are no objects")
        << QByteArray(R"({"documents": ["x", {"_id": "b"}, 1]})") << "- b -";
}

void KvPlanCodecListsTest::documents()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, ids);
    KvPlanNode node = fullPlanNode();
    Kv::jsonObjectToPlanNode(parsed(json.constData()), node);
    QStringList read;
    for (const KvDocument& document : qAsConst(node.documents))
        read.append(document.id.isEmpty() ? QStringLiteral("-") : document.id);
    QCOMPARE(read.join(QLatin1Char(' ')), ids);
    QCOMPARE(node.documentIds, QStringList()); // a key of its own
}

void KvPlanCodecListsTest::materialBills_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("bills");
    QTest::newRow("missing") << QByteArray("{}") << "";
    QTest::newRow("object") << QByteArray(R"({"materialBills": {"rId": "a", "statusIds": ["s"]}})") << "";
    QTest::newRow("text") << QByteArray(R"({"materialBills": "a"})") << "";
    QTest::newRow("empty") << QByteArray(R"({"materialBills": []})") << "";
    QTest::newRow("two") << QByteArray(R"({"materialBills": [{"rId": "b", "statusIds": ["s", "t"]},
                                                            {"rId": "a", "statusIds": []}]})")
                         << "a= b=s,t";
    QTest::newRow("repeated: the second counts")
        << QByteArray(R"({"materialBills": [{"rId": "a", "statusIds": ["s", "t"]},
                                            {"rId": "a", "statusIds": ["u"]}]})")
        << "a=u";
    QTest::newRow("repeated without ids: empty") << QByteArray(R"({"materialBills": [
                                            {"rId": "a", "statusIds": ["s", "t"]}, {"rId": "a"}]})")
                                                 << "a=";
    QTest::newRow("without rId") << QByteArray(R"({"materialBills": [{"statusIds": ["s"]}]})") << "=s";
    QTest::newRow("mistyped") << QByteArray(R"({"materialBills": [{"rId": 7, "statusIds": "s"}]})") << "=";
    QTest::newRow("no object") << QByteArray(R"({"materialBills": [{"rId": "a", "statusIds": ["s"]}, 3]})")
                               << "= a=s";
}

void KvPlanCodecListsTest::materialBills()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, bills);
    KvPlanNode node = fullPlanNode();
    Kv::jsonObjectToPlanNode(parsed(json.constData()), node);
    QCOMPARE(read(node.materialBills), bills);
}

void KvPlanCodecListsTest::entity_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("links");
    QTest::newRow("missing") << QByteArray("{}") << "";
    QTest::newRow("object") << QByteArray(R"({"entity": {"modelId": "m", "entityIds": ["e"]}})") << "";
    QTest::newRow("text") << QByteArray(R"({"entity": "m"})") << "";
    QTest::newRow("two models") << QByteArray(R"({"entity": [{"modelId": "n", "entityIds": ["e", "f"]},
                                                             {"modelId": "m", "entityIds": []}]})")
                                << "m= n=e,f";
    QTest::newRow("the writer's key")
        << QByteArray(R"({"links": [{"modelId": "n", "entityIds": ["e"]}]})") << "";
}

void KvPlanCodecListsTest::entity()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, links);
    KvPlanNode node = fullPlanNode();
    Kv::jsonObjectToPlanNode(parsed(json.constData()), node);
    QCOMPARE(read(node.links), links);
}

void KvPlanCodecListsTest::lag_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("units");
    QTest::newRow("missing") << QByteArray("{}") << 0.0 << 0;
    QTest::newRow("number") << QByteArray(R"({"Lag": 3})") << 0.0 << 0;
    QTest::newRow("array") << QByteArray(R"({"Lag": [{"Duration": 3}]})") << 0.0 << 0;
    QTest::newRow("without units") << QByteArray(R"({"Lag": {"Duration": 3}})") << 3.0 << 0;
    QTest::newRow("lead in hours") << QByteArray(R"({"Lag": {"Duration": -1.5, "Units": 1}})") << -1.5 << 1;
    QTest::newRow("lag in days") << QByteArray(R"({"Lag": {"Duration": 2, "Units": 2}})") << 2.0 << 2;
}

void KvPlanCodecListsTest::lag()
{
    QFETCH(QByteArray, json);
    QFETCH(double, value);
    QFETCH(int, units);
    const KvDuration lag = Kv::jsonObjectToPredecessor(parsed(json.constData())).lag;
    QCOMPARE(lag.value, value);
    QCOMPARE(lag.units, units);
}

void KvPlanCodecListsTest::wholeListsAreReplaced()
{
    KvPlanNode node = fullPlanNode();
    Kv::jsonObjectToPlanNode(parsed(R"({"userIds": ["a"], "executeIds": ["b"], "cooperateIds": ["c"],
        "documentIds": ["d"], "documents": [{"_id": "d"}], "entity": [{"modelId": "m", "entityIds": ["e"]}],
        "materialBills": [{"rId": "r", "statusIds": ["s"]}]})"),
                             node);
    QCOMPARE(node.userIds, QStringList(QStringLiteral("a")));
    QCOMPARE(node.executeIds, QStringList(QStringLiteral("b")));
    QCOMPARE(node.cooperateIds, QStringList(QStringLiteral("c")));
    QCOMPARE(node.documentIds, QStringList(QStringLiteral("d")));
    QCOMPARE(node.documents.size(), 1);
    QCOMPARE(read(node.links), QStringLiteral("m=e"));
    QCOMPARE(read(node.materialBills), QStringLiteral("r=s"));

    KvPlan plan = fullPlan();
    Kv::jsonObjectToPlan(parsed(R"({"ranges": ["r"], "tasks": [{"_id": "n"}]})"), plan);
    QCOMPARE(plan.ranges, QStringList(QStringLiteral("r")));
    QCOMPARE(idsOf(plan.planNodes), QStringLiteral("n"));
}

void KvPlanCodecListsTest::otherMissingListsAreEmptied()
{
    KvPlanNode node = fullPlanNode();
    Kv::jsonObjectToPlanNode(QJsonObject(), node);
    QVERIFY(node.userIds.isEmpty() && node.executeIds.isEmpty() && node.cooperateIds.isEmpty());
    QVERIFY(node.documentIds.isEmpty() && node.documents.isEmpty());
    QVERIFY(node.links.isEmpty() && node.materialBills.isEmpty());
    QCOMPARE(node.children.size(), 1);
    QCOMPARE(node.reservedList, fullPlanNode().reservedList);
}

void KvPlanCodecListsTest::orderOfKeysMakesNoDifference()
{
    const QByteArray folder = KV_TEST_DATA "/codec/";
    const QJsonObject whole = KvTest::readJsonFile(QString::fromUtf8(folder + "node.in.json"));
    KvPlanNode wanted;
    Kv::jsonObjectToPlanNode(whole, wanted);

    QStringList keys = whole.keys();
    std::reverse(keys.begin(), keys.end());
    for (int turn = 0; turn < keys.size(); ++turn) {
        keys.append(keys.takeFirst());
        QByteArray text;
        for (const QString& key : qAsConst(keys)) {
            const QByteArray member = QJsonDocument(QJsonObject{{key, whole.value(key)}}).toJson();
            text += (text.isEmpty() ? "{" : ",") + member.mid(1, member.lastIndexOf('}') - 1);
        }
        KvPlanNode node;
        Kv::jsonObjectToPlanNode(parsed((text + '}').constData()), node);
        QCOMPARE(difference(dump(node), dump(wanted)), QString());
    }
}

void KvPlanCodecListsTest::unknownKeysAreIgnored()
{
    KvPlanNode node;
    Kv::jsonObjectToPlanNode(
        parsed(R"({"": 1, "ID": 9, "_Id": "x", "_id": "n", "_id2": "x", "aaa": [], "id": 4,
        "idd": 5, "Name": "x", "name": "Wall", "name ": "x", "zzz": {"name": "x"}, "工序": "x"})"),
        node);
    QCOMPARE(node.id, QStringLiteral("n"));
    QCOMPARE(node.planNodeId, 4);
    QCOMPARE(node.name, QStringLiteral("Wall"));
    KvPlanNode wanted;
    Kv::jsonObjectToPlanNode(parsed(R"({"_id": "n", "id": 4, "name": "Wall"})"), wanted);
    QCOMPARE(difference(dump(node), dump(wanted)), QString());
}

// With plain values only: of a repeated array or object Qt 5.15 leaks the earlier one.
void KvPlanCodecListsTest::lastOfRepeatedKeysCounts()
{
    KvPlan plan;
    Kv::jsonObjectToPlan(parsed(R"({"name": "a", "tasks": [{"name": "x", "_id": "n", "name": "y", "id": 1,
        "displaySimulation": 1, "id": 2, "displaySimulation": 0}], "name": "b", "public": 1, "public": "x"})"),
                         plan);
    QCOMPARE(plan.name, QStringLiteral("b"));
    QCOMPARE(plan.isPublic, 0);
    QCOMPARE(plan.planNodes.size(), 1);
    QCOMPARE(plan.planNodes.first().name, QStringLiteral("y"));
    QCOMPARE(plan.planNodes.first().planNodeId, 2);
    QCOMPARE(plan.planNodes.first().displaySimulation, false);
}

void KvPlanCodecListsTest::hundredThousandNodes()
{
    constexpr int count = 100000;
    QJsonArray tasks;
    for (int i = 0; i < count; ++i) {
        tasks.append(QJsonObject{{QStringLiteral("_id"), QString::number(i)},
                                 {QStringLiteral("id"), i},
                                 {QStringLiteral("planId"), QStringLiteral("p1")},
                                 {QStringLiteral("remark"), QStringLiteral("remark of %1").arg(i)},
                                 {QStringLiteral("startDate"), QStringLiteral("2024-03-15T08:00:00.000")}});
    }
    KvPlan plan;
    Kv::jsonObjectToPlan({{QStringLiteral("_id"), QStringLiteral("p1")}, {QStringLiteral("tasks"), tasks}},
                         plan);
    QCOMPARE(plan.planNodes.size(), count);
    for (int i = 0; i < count; ++i) {
        const KvPlanNode& node = plan.planNodes.at(i);
        if (node.planNodeId != i || node.id != QString::number(i) || node.planId != QLatin1String("p1") ||
            node.remark != QStringLiteral("remark of %1").arg(i) || !node.startDate.isValid())
            QFAIL(qPrintable(QStringLiteral("node %1 reads as %2").arg(i).arg(node.id)));
    }
    QJsonObject written;
    Kv::planToJsonObject(plan, written);
    const QJsonArray data = written.value(QStringLiteral("projectData")).toArray();
    QCOMPARE(data.size(), count);
    QCOMPARE(data.last().toObject().value(QStringLiteral("id")).toInt(), count - 1);
}

void KvPlanCodecListsTest::longTexts()
{
    const QString text(1000000, QChar(0x697c));
    KvPlanNode node;
    Kv::jsonObjectToPlanNode({{QStringLiteral("name"), text}, {QStringLiteral("remark"), text}}, node);
    QCOMPARE(node.name, text);
    QCOMPARE(node.remark, text);
}

QTEST_APPLESS_MAIN(KvPlanCodecListsTest)
#include "KvPlanCodecListsTest.moc"
