// What lists of nodes hold and in which order, for every field that they are searched by.

#include "Text.h"
#include "filters/FilterText.h"
#include "filters/PlanNodeFields.h"
#include "http/Reply.h"
#include "records/FieldReader.h"
#include "records/PlanInput.h"
#include "records/PlanNodeWriter.h"
#include "store/OpenStore.h"
#include "store/PlanNodeListSql.h"
#include "store/SqliteDatabase.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using namespace PlanService;
using KvTest::operator""_s;

namespace {

using Fields = QJsonObject;

void addPlan(Store& store, const QString& id, const QString& project)
{
    PlanRecord plan;
    plan.id = id;
    plan.projectId = project;
    plan.category = "c1"_s;
    plan.name = "Tower "_s + id;
    plan.document = QJsonDocument(QJsonObject{{"_id"_s, id}}).toJson(QJsonDocument::Compact);
    store.insertPlan(plan);
}

void add(Store& store, const QString& id, const QString& plan, const QString& project, const Fields& fields,
         const QString& creator = "ann"_s, const QString& created = "2026-03-02T08:00:00.000"_s)
{
    PlanNodeRecord node;
    node.id = id;
    node.planId = plan;
    node.projectId = project;
    node.category = "c1"_s;
    writePlanNode(node, FieldReader(fields), {created, creator, created, creator});
    store.insertPlanNode(node);
}

PlanNodeQuery queryFor(const QString& where)
{
    PlanNodeQuery query;
    query.projectId = "p1"_s;
    query.visible.elsewhere = ReadScope::All;
    query.where = readFilter(where, planNodeFields());
    return query;
}

QJsonArray nodesOf(const JsonPieces& pieces)
{
    return QJsonDocument::fromJson(pieces.join()).array();
}

QStringList idsOf(const QJsonArray& nodes)
{
    QStringList ids;
    for (const QJsonValue& node : nodes) {
        ids.append(node.toObject().value("_id"_s).toString());
    }
    return ids;
}

QStringList ids(Store& store, const PlanNodeQuery& query)
{
    return idsOf(nodesOf(store.planNodeListJson(query)));
}

QStringList words(const QString& text)
{
    return text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/// Code and field of the refusal; empty when there is none.
QString refusalOf(const QString& where)
{
    try {
        readFilter(where, planNodeFields());
    } catch (const ApiError& error) {
        const QJsonObject body =
            QJsonDocument::fromJson(error.reply().body.first()).object().value("error"_s).toObject();
        return body.value("code"_s).toString() + QLatin1Char(' ') + body.value("field"_s).toString();
    }
    return QString();
}

} // namespace

class TestPlanNodeFilters : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    std::unique_ptr<Store> m_store;

    QString stepsOf(const PlanNodeQuery& query)
    {
        SqliteDatabase database(m_folder.filePath("a.db"_s));
        const SqlStatement statement = planNodeListSql(query);
        QSqlQuery rows = database.runOnce("EXPLAIN QUERY PLAN "_s + statement.text, statement.parameters);
        QStringList steps;
        while (database.next(rows)) {
            steps.append(rows.value(3).toString());
        }
        return steps.join(QLatin1Char('\n'));
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_store = openStore(m_folder.filePath("a.db"_s), MissingDatabase::Create);
        addPlan(*m_store, "A"_s, "p1"_s);
        addPlan(*m_store, "B"_s, "p1"_s);
        addPlan(*m_store, "X"_s, "p2"_s);
        m_store->insertDocument({"d1"_s, "p1"_s, "{\"_id\":\"d1\"}"});
        m_store->insertDocument({"d2"_s, "p2"_s, "{\"_id\":\"d2\"}"});
        // Rows in another order than ids.
        add(*m_store, "a3"_s, "A"_s, "p1"_s,
            {{"id"_s, 1},
             {"uniqueId"_s, 10},
             {"name"_s, "Dig 10% \"deep\""_s},
             {"GUID"_s, "guid-3"_s},
             {"remark"_s, "wet"_s},
             {"startDate"_s, "2026-03-02"_s},
             {"finishDate"_s, "2026-03-09T17:00:00.000"_s},
             {"actualStartDate"_s, "2026-03-03"_s},
             {"actualFinishDate"_s, "2026-03-08"_s},
             {"userIds"_s, QJsonArray{"ann"_s}},
             {"executeIds"_s, QJsonArray{"bo"_s, "李"_s}},
             {"documentIds"_s, QJsonArray{"d1"_s, "d2"_s}},
             {"isDistributed"_s, true},
             {"finishedPercentage"_s, 100},
             {"planWorkload"_s, 0},
             {"entityHideDate"_s, "2026-09-01"_s}});
        add(*m_store, "a1"_s, "A"_s, "p1"_s,
            {{"id"_s, 2},
             {"uniqueId"_s, 11},
             {"parentTaskID"_s, 10},
             {"name"_s, "第2层 pour"_s},
             {"category"_s, "c2"_s},
             {"startDate"_s, "2026-03-05"_s},
             {"finishDate"_s, "2026-03-05"_s},
             {"actualStartDate"_s, "2026-03-05"_s},
             {"userIds"_s, QJsonArray{"bo"_s}},
             {"cooperateIds"_s, QJsonArray{"ann"_s}},
             {"displaySimulation"_s, false},
             {"finishedPercentage"_s, 37.5},
             {"planWorkload"_s, 12},
             {"actualWorkload"_s, 5},
             {"dynamicEffect"_s, 3},
             {"entityHideType"_s, 2}},
            "bo"_s, "2026-03-04T00:00:00.000"_s);
        add(*m_store, "a2"_s, "A"_s, "p1"_s,
            {{"id"_s, 2}, {"uniqueId"_s, 12}, {"name"_s, "'; DROP TABLE planNodes; --"_s}}, "cy"_s,
            "2026-03-05T00:00:00.000"_s);
        add(*m_store, "b1"_s, "B"_s, "p1"_s,
            {{"id"_s, 1},
             {"uniqueId"_s, 10},
             {"name"_s, "dig"_s},
             {"finishDate"_s, "2026-03-01"_s},
             {"userIds"_s, QJsonArray{"an"_s, "ann\nbo"_s}}});
        add(*m_store, "n1"_s, QString(), "p1"_s,
            {{"id"_s, 1},
             {"uniqueId"_s, 10},
             {"parentTaskID"_s, 10},
             {"name"_s, "Call the mayor"_s},
             {"finishDate"_s, "2026-03-05"_s},
             {"userIds"_s, QJsonArray{"ann"_s}}});
        add(*m_store, "x1"_s, "X"_s, "p2"_s, {{"name"_s, "Dig"_s}, {"userIds"_s, QJsonArray{"ann"_s}}});
        add(*m_store, "x2"_s, QString(), "p2"_s, {{"name"_s, "Dig"_s}, {"userIds"_s, QJsonArray{"ann"_s}}});
    }

    void finds_data()
    {
        QTest::addColumn<QString>("where");
        QTest::addColumn<QString>("found");
        const QString all = "n1 a3 a1 a2 b1"_s;
        const auto row = [](const char* name, const char* where, const QString& found) {
            QTest::newRow(name) << QString::fromUtf8(where) << found;
        };
        row("everything, by plan and row, then by id", "{}", all);
        row("id", "{\"_id\":\"a1\"}", "a1"_s);
        row("ids in", "{\"_id\":{\"$in\":[\"a1\",\"b1\",\"x1\"]}}", "a1 b1"_s);
        row("category", "{\"category\":\"c2\"}", "a1"_s);
        row("GUID", "{\"GUID\":\"guid-3\"}", "a3"_s);
        row("GUID that is the id", "{\"GUID\":\"b1\"}", "b1"_s);
        row("plan", "{\"planId\":\"B\"}", "b1"_s);
        row("plans in", "{\"planId\":{\"$in\":[\"B\",\"A\"]}}", "a3 a1 a2 b1"_s);
        row("no plan", "{\"planId\":null}", "n1"_s);
        row("no plan, as an empty id", "{\"planId\":\"\"}", "n1"_s);
        row("plans in, with none", "{\"planId\":{\"$in\":[\"B\",null]}}", "n1 b1"_s);
        row("plan of another project", "{\"planId\":\"X\"}", ""_s);
        row("plan by pattern", "{\"planId\":{\"$regex\":\"^[AX]$\"}}", "a3 a1 a2"_s);
        row("plan's name", "{\"planName\":\"Tower B\"}", "b1"_s);
        row("plan's name by pattern", "{\"planName\":{\"$regex\":\"a$\",\"$options\":\"i\"}}", "a3 a1 a2"_s);
        row("no plan's name", "{\"planName\":null}", "n1"_s);
        row("project", "{\"projectId\":\"p1\"}", all);
        row("another project", "{\"projectId\":\"p2\"}", ""_s);
        row("row", "{\"id\":2}", "a1 a2"_s);
        row("rows from", "{\"id\":{\"$gte\":2}}", "a1 a2"_s);
        row("rows below", "{\"id\":{\"$lt\":2}}", "n1 a3 b1"_s);
        row("unique id", "{\"uniqueId\":{\"$in\":[11,12]}}", "a1 a2"_s);
        row("parent", "{\"parentTaskID\":10}", "n1 a1"_s);
        row("no parent", "{\"parentTaskID\":-1}", "a3 a2 b1"_s);
        row("name", "{\"name\":\"dig\"}", "b1"_s);
        row("display name", "{\"displayName\":\"dig\"}", "b1"_s);
        row("name with quotes and percent", "{\"displayName\":\"Dig 10% \\\"deep\\\"\"}", "a3"_s);
        row("display name in any case", "{\"displayName\":{\"$regex\":\"DIG\",\"$options\":\"i\"}}",
            "a3 b1"_s);
        row("display name in this case", "{\"displayName\":{\"$regex\":\"^Dig\"}}", "a3"_s);
        row("pattern on Chinese", "{\"displayName\":{\"$regex\":\"^第.层\"}}", "a1"_s);
        row("SQL as a name", "{\"displayName\":\"'; DROP TABLE planNodes; --\"}", "a2"_s);
        row("SQL that is nobody's name", "{\"displayName\":\"' OR 1=1 --\"}", ""_s);
        row("SQL as a user", "{\"userIds\":\"') OR 1=1 --\"}", ""_s);
        row("distributed", "{\"isDistributed\":true}", "a3"_s);
        row("not distributed", "{\"isDistributed\":false}", "n1 a1 a2 b1"_s);
        row("flags in", "{\"isDistributed\":{\"$in\":[true,false]}}", all);
        row("remark", "{\"remark\":{\"$regex\":\"^w\"}}", "a3"_s);
        row("no remark", "{\"remark\":null}", "n1 a1 a2 b1"_s);
        row("percentage", "{\"finishedPercentage\":37.5}", "a1"_s);
        row("percentage from", "{\"finishedPercentage\":{\"$gte\":37.5}}", "a3 a1"_s);
        row("percentage below", "{\"finishedPercentage\":{\"$lt\":100}}", "a1"_s);
        row("percentages in", "{\"finishedPercentage\":{\"$in\":[100,37.5]}}", "a3 a1"_s);
        row("no percentage", "{\"finishedPercentage\":null}", "n1 a2 b1"_s);
        row("planned workload of nothing", "{\"planWorkload\":0}", "a3"_s);
        row("planned workload not set", "{\"planWorkload\":null}", "n1 a2 b1"_s);
        row("planned workload below", "{\"planWorkload\":{\"$lt\":13}}", "a3 a1"_s);
        row("actual workload", "{\"actualWorkload\":5}", "a1"_s);
        row("actual workload in, with not set", "{\"actualWorkload\":{\"$in\":[5,null]}}", all);
        row("effect", "{\"dynamicEffect\":3}", "a1"_s);
        row("no effect", "{\"dynamicEffect\":null}", "n1 a3 a2 b1"_s);
        row("hidden in simulations", "{\"displaySimulation\":0}", "a1"_s);
        row("shown in simulations", "{\"displaySimulation\":true}", "n1 a3 a2 b1"_s);
        row("milestones", "{\"milestone\":true}", "a1"_s);
        row("no milestones", "{\"milestone\":false}", "n1 a3 a2 b1"_s);
        row("summaries", "{\"summary\":true}", "a3"_s);
        row("no summaries", "{\"summary\":false}", "n1 a1 a2 b1"_s);
        row("created from", "{\"createdAt\":{\"$gte\":\"2026-03-04\"}}", "a1 a2"_s);
        row("created before", "{\"createdAt\":{\"$gte\":\"2026-03-02\",\"$lt\":\"2026-03-05\"}}",
            "n1 a3 a1 b1"_s);
        row("created at", "{\"createdAt\":\"2026-03-04 00:00\"}", "a1"_s);
        row("created never", "{\"createdAt\":null}", ""_s);
        row("created by", "{\"createdBy\":\"cy\"}", "a2"_s);
        row("changed", "{\"updatedAt\":{\"$gte\":\"2026-03-05\"}}", "a2"_s);
        row("changed by", "{\"updatedBy\":{\"$in\":[\"bo\",\"cy\"]}}", "a1 a2"_s);
        row("starts", "{\"startDate\":\"2026-03-05\"}", "a1"_s);
        row("start not planned", "{\"startDate\":null}", "n1 a2 b1"_s);
        row("finishes in a range", "{\"finishDate\":{\"$gte\":\"2026-03-02\",\"$lt\":\"2026-03-09\"}}",
            "n1 a1"_s);
        row("finishes in, with not planned", "{\"finishDate\":{\"$in\":[\"2026-03-01\",null]}}", "a2 b1"_s);
        row("began", "{\"actualStartDate\":{\"$lt\":\"2026-03-05\"}}", "a3"_s);
        row("not begun", "{\"actualStartDate\":null}", "n1 a2 b1"_s);
        row("finished", "{\"actualFinishDate\":{\"$gte\":\"2026-01-01\"}}", "a3"_s);
        row("not finished", "{\"actualFinishDate\":null}", "n1 a1 a2 b1"_s);
        row("hidden from", "{\"entityHideDate\":{\"$gte\":\"2026-09-01\"}}", "a3"_s);
        row("never hidden", "{\"entityHideDate\":null}", "n1 a1 a2 b1"_s);
        row("how hidden", "{\"entityHideType\":2}", "a1"_s);
        row("responsible", "{\"userIds\":\"ann\"}", "n1 a3"_s);
        row("responsible in", "{\"userIds\":{\"$in\":[\"bo\",\"an\"]}}", "a1 b1"_s);
        row("responsible, with a line end in the name", "{\"userIds\":\"ann\\nbo\"}", "b1"_s);
        row("nobody responsible", "{\"userIds\":null}", "a2"_s);
        row("responsible in, with nobody", "{\"userIds\":{\"$in\":[\"bo\",null]}}", "a1 a2"_s);
        row("part of a name", "{\"userIds\":\"nn\"}", ""_s);
        row("executing", "{\"executeIds\":\"bo\"}", "a3"_s);
        row("executing, Chinese", "{\"executeIds\":\"李\"}", "a3"_s);
        row("cooperating", "{\"cooperateIds\":\"ann\"}", "a1"_s);
        row("nobody cooperating", "{\"cooperateIds\":null}", "n1 a3 a2 b1"_s);
        row("related by any role", "{\"relativeUserIds\":\"ann\"}", "n1 a3 a1 b1"_s);
        row("related by making it", "{\"relativeUserIds\":\"cy\"}", "a2"_s);
        row("related by executing", "{\"relativeUserIds\":\"bo\"}", "a3 a1"_s);
        row("related in", "{\"relativeUserIds\":{\"$in\":[\"cy\",\"an\"]}}", "a2 b1"_s);
        row("related to nobody", "{\"relativeUserIds\":null}", ""_s);
        row("with a document", "{\"documentIds\":\"d1\"}", "a3"_s);
        row("with a document in", "{\"documentIds\":{\"$in\":[\"d2\",\"d9\"]}}", "a3"_s);
        row("without documents", "{\"documentIds\":null}", "n1 a1 a2 b1"_s);
        row("either", "{\"$or\":[{\"userIds\":\"bo\"},{\"planId\":null},{\"id\":{\"$gte\":2}}]}",
            "n1 a1 a2"_s);
        row("all members hold", "{\"planId\":\"A\",\"finishDate\":{\"$gte\":\"2026-03-06\"}}", "a3"_s);
        row("what a client asks for",
            "{\"createdAt\":{\"$gte\":\"2026-03-01T00:00:00.000\",\"$lt\":\"2026-03-04T00:00:00.000\"},"
            "\"displayName\":{\"$options\":\"i\",\"$regex\":\"dig\"},\"planId\":\"A\",\"relativeUserIds\":"
            "\"ann\",\"userIds\":\"ann\"}",
            "a3"_s);
    }
    void finds()
    {
        QFETCH(QString, where);
        QFETCH(QString, found);
        const PlanNodeQuery query = queryFor(where);
        const QStringList expected = words(found);
        QCOMPARE(ids(*m_store, query), expected);
        QCOMPARE(m_store->planNodeListCount(query), expected.size());
        for (int skip = 0; skip <= expected.size(); ++skip) {
            PlanNodeQuery page = query;
            page.skip = skip;
            page.limit = 2;
            QCOMPARE(ids(*m_store, page), expected.mid(skip, 2));
        }
        const SqlStatement statement = planNodeListSql(query);
        QCOMPARE(statement.text.count(QLatin1Char('?')), statement.parameters.size());
    }

    void refuses_data()
    {
        QTest::addColumn<QString>("where");
        QTest::addColumn<QString>("refusal");
        const auto row = [](const char* name, const char* where, const char* refusal) {
            QTest::newRow(name) << QString::fromUtf8(where) << QString::fromLatin1(refusal);
        };
        row("unknown field", "{\"colour\":1}", "unknownField colour");
        row("a plan's field", "{\"ranges\":\"r\"}", "unknownField ranges");
        row("what is no single value", "{\"predecessors\":1}", "unknownField predecessors");
        row("unknown operator", "{\"userIds\":{\"$all\":[\"a\"]}}", "unknownOperator $all");
        row("unknown operator outside", "{\"$and\":[]}", "unknownOperator $and");
        row("number for a flag", "{\"isDistributed\":2}", "wrongType isDistributed");
        row("text for a flag", "{\"milestone\":\"true\"}", "wrongType milestone");
        row("flag that is larger", "{\"milestone\":{\"$gte\":true}}", "wrongType milestone");
        row("flag for a number", "{\"id\":true}", "wrongType id");
        row("text for a percentage", "{\"finishedPercentage\":\"1\"}", "wrongType finishedPercentage");
        row("list for a user", "{\"userIds\":[\"a\"]}", "wrongType userIds");
        row("range of users", "{\"relativeUserIds\":{\"$gte\":\"a\"}}", "wrongType relativeUserIds");
        row("pattern on users", "{\"userIds\":{\"$regex\":\"a\"}}", "wrongType userIds");
        row("pattern on a date", "{\"finishDate\":{\"$regex\":\"a\"}}", "wrongType finishDate");
        row("number for a plan", "{\"planId\":1}", "wrongType planId");
        row("pattern that is none", "{\"displayName\":{\"$regex\":\"(a\"}}", "badPattern $regex");
    }
    void refuses()
    {
        QFETCH(QString, where);
        QFETCH(QString, refusal);
        QCOMPARE(refusalOf(where), refusal);
    }

    void states_data()
    {
        QTest::addColumn<QString>("states");
        QTest::addColumn<QString>("found");
        QTest::newRow("none") << ""_s
                              << ""_s;
        QTest::newRow("unstart") << "unstart"_s
                                 << "n1 a2 b1"_s;
        QTest::newRow("processing") << "processing"_s
                                    << "a1"_s;
        QTest::newRow("finished") << "finished"_s
                                  << "a3"_s;
        QTest::newRow("not finished") << "unstart processing"_s
                                      << "n1 a1 a2 b1"_s;
        QTest::newRow("not at work") << "unstart finished"_s
                                     << "n1 a3 a2 b1"_s;
        QTest::newRow("begun") << "processing finished"_s
                               << "a3 a1"_s;
        QTest::newRow("all") << "unstart processing finished"_s
                             << "n1 a3 a1 a2 b1"_s;
    }
    void states()
    {
        QFETCH(QString, states);
        QFETCH(QString, found);
        PlanNodeQuery query = queryFor("{}"_s);
        query.unstart = states.contains("unstart"_s);
        query.processing = states.contains("processing"_s);
        query.finished = states.contains("finished"_s);
        QCOMPARE(ids(*m_store, query), words(found));
        QCOMPARE(m_store->planNodeListCount(query), words(found).size());
    }

    void narrowsByPlaceAndPerson()
    {
        const auto found = [&](const std::function<void(PlanNodeQuery&)>& narrow) {
            PlanNodeQuery query = queryFor("{}"_s);
            narrow(query);
            return ids(*m_store, query);
        };
        QCOMPARE(found([](PlanNodeQuery& q) { q.planId = "A"_s; }), words("a3 a1 a2"_s));
        QCOMPARE(found([](PlanNodeQuery& q) { q.planId = "X"_s; }), QStringList()); // of another project
        QCOMPARE(found([](PlanNodeQuery& q) { q.planId = QString(); }), words("n1"_s));
        QCOMPARE(found([](PlanNodeQuery& q) { q.category = "c2"_s; }), words("a1"_s));
        QCOMPARE(found([](PlanNodeQuery& q) { q.worker = "ann"_s; }), words("n1 a3 a1"_s));
        QCOMPARE(found([](PlanNodeQuery& q) { q.worker = "an"_s; }), words("b1"_s));
        QCOMPARE(found([](PlanNodeQuery& q) { q.creator = "bo"_s; }), words("a1"_s));
        QCOMPARE(found([](PlanNodeQuery& q) {
                     q.visible.elsewhere = ReadScope::Own;
                     q.visible.user = "bo"_s;
                 }),
                 words("a3 a1"_s));
        QCOMPARE(found([](PlanNodeQuery& q) {
                     q.visible.elsewhere = ReadScope::None;
                     q.visible.categories.insert("c2"_s, ReadScope::All);
                 }),
                 words("a1"_s));
    }

    void ordersByFinishWithTheUnplannedLast()
    {
        PlanNodeQuery query = queryFor("{}"_s);
        query.order = PlanNodeOrder::FinishDate;
        QCOMPARE(ids(*m_store, query), words("b1 a1 n1 a3 a2"_s));
        for (int skip = 0; skip < 5; ++skip) {
            query.skip = skip;
            query.limit = 1;
            QCOMPARE(ids(*m_store, query), words("b1 a1 n1 a3 a2"_s).mid(skip, 1));
        }
    }

    void derivesAndEmbeds()
    {
        PlanNodeQuery query = queryFor("{\"_id\":{\"$in\":[\"a3\",\"n1\"]}}"_s);
        QVERIFY(!nodesOf(m_store->planNodeListJson(query)).first().toObject().contains("documents"_s));
        query.withDocuments = true;
        const QJsonArray nodes = nodesOf(m_store->planNodeListJson(query));
        const QJsonObject none = nodes.at(0).toObject();
        const QJsonObject node = nodes.at(1).toObject();
        QCOMPARE(node.value("planName"_s).toString(), "Tower A"_s);
        QCOMPARE(node.value("summary"_s), QJsonValue(true));
        // The document of another project is not shown, whoever names it.
        QCOMPARE(node.value("documents"_s), QJsonValue(QJsonArray{QJsonObject{{"_id"_s, "d1"_s}}}));
        QCOMPARE(none.value("documents"_s), QJsonValue(QJsonArray()));
        QCOMPARE(none.value("planName"_s), QJsonValue(QString()));
        QCOMPARE(none.value("planId"_s), QJsonValue(QString()));
        QCOMPARE(none.value("summary"_s), QJsonValue(false));
    }

    void givesNodesInTheOrderAskedFor()
    {
        QCOMPARE(idsOf(nodesOf(m_store->planNodesJson({"b1"_s, "gone"_s, "a3"_s, "n1"_s}))),
                 words("b1 a3 n1"_s));
        QCOMPARE(nodesOf(m_store->planNodesJson({})), QJsonArray());
    }

    void looksInTheIndexThatHelps()
    {
        PlanNodeQuery page = queryFor("{\"planId\":\"A\",\"createdAt\":{\"$gte\":\"2026-01-01\"}}"_s);
        page.planId = "A"_s;
        page.limit = 20;
        const QString ofPlan = stepsOf(page);
        QVERIFY2(ofPlan.contains("planNodesByRow"_s) && !ofPlan.contains("TEMP B-TREE"_s),
                 qPrintable(ofPlan));
        const QString ofPlans = stepsOf(queryFor("{\"planId\":{\"$in\":[\"A\",\"B\"]}}"_s));
        QVERIFY2(ofPlans.contains("planNodesByRow (planId=?)"_s), qPrintable(ofPlans));
        PlanNodeQuery toDo = queryFor("{}"_s);
        toDo.worker = "ann"_s;
        toDo.finished = false;
        toDo.order = PlanNodeOrder::FinishDate;
        const QString ofUser = stepsOf(toDo);
        QVERIFY2(ofUser.contains("planNodesByProject (projectId=?"_s), qPrintable(ofUser));
        PlanNodeQuery none = queryFor("{\"planId\":null}"_s);
        none.planId = QString();
        const QString ofNone = stepsOf(none);
        QVERIFY2(ofNone.contains("planNodesWithoutPlan"_s) && !ofNone.contains("TEMP B-TREE"_s),
                 qPrintable(ofNone));
    }
};

QTEST_GUILESS_MAIN(TestPlanNodeFilters)
#include "TestPlanNodeFilters.moc"
