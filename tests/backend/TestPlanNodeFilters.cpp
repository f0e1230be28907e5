// What every filter on nodes finds, and which ones are refused.

#include "FilterQueries.h"
#include "FreshDatabase.h"
#include "PlanNodeSample.h"
#include "store/PlanNodeListSql.h"

#include <QtTest>

using namespace PlanService;
using namespace KvTest;

class TestPlanNodeFilters : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    KvTest::FreshDatabase m_database{m_folder.filePath("a.db"_s)};
    std::unique_ptr<Store> m_store;

private Q_SLOTS:
    void initTestCase() { m_store = openNodeSample(m_database.name()); }

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
        QCOMPARE(refusalOf(where, planNodeFields()), refusal);
    }
};

QTEST_GUILESS_MAIN(TestPlanNodeFilters)
#include "TestPlanNodeFilters.moc"
