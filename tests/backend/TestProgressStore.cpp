// How the store counts progress: whose nodes it takes, and what it looks at to do so.

#include "FilterQueries.h"
#include "FreshDatabase.h"
#include "store/OpenStore.h"
#include "store/SqliteDatabase.h"
#include "store/StatisticsSql.h"

#include <QtTest>

using namespace PlanService;
using KvTest::operator""_s;

class TestProgressStore : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    KvTest::FreshDatabase m_database{m_folder.filePath("a.db"_s)};
    std::unique_ptr<Store> m_store;
    int m_nodes = 0;

    void add(const QString& category, const QString& creator, const QStringList& people,
             const QString& finished = QString())
    {
        PlanNodeRecord node;
        node.id = QString::number(++m_nodes);
        node.planId = "plan"_s;
        node.projectId = "p1"_s;
        node.category = category;
        node.createdBy = creator;
        node.people = peopleText(people);
        node.actualFinishDate = finished;
        node.document = "{}";
        m_store->insertPlanNode(node);
    }
    NodeScope everything() const
    {
        NodeScope scope;
        scope.projectId = "p1"_s;
        scope.visible.elsewhere = ReadScope::All;
        return scope;
    }
    int count(const NodeScope& scope)
    {
        int total = 0;
        const QVector<NodeCount> counts = m_store->nodeCounts(scope, "2026-03-02"_s);
        for (const NodeCount& part : counts) {
            total += part.total;
        }
        return total;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_store = openStore(m_database.name(), MissingDatabase::Create);
        m_store->insertPlan({"plan"_s, "p1"_s, "c1"_s, "Tower"_s, {}, {}, "ann"_s, "{}"});
        add("c1"_s, "ann"_s, {});
        add("c1"_s, "bo"_s, {"ann"_s, "cy"_s}, "2026-03-09T17:00:00.000"_s);
        add("c2"_s, "bo"_s, {"anna"_s});
        add("c2"_s, "bo"_s, {"x\nann\ny"_s});
        add("c2"_s, "bo"_s, {"back\\slash"_s, "back\\nslash"_s}, "2026-03-08T17:00:00.000"_s);
        add(""_s, ""_s, {}, "2026-03-09T08:00:00.000"_s);
    }

    void findsUsersByTheirWholeName_data()
    {
        QTest::addColumn<QString>("user");
        QTest::addColumn<int>("nodes");
        QTest::newRow("creator or worker") << "ann"_s << 2;
        QTest::newRow("begins with another's name") << "anna"_s << 1;
        QTest::newRow("part of a name") << "an"_s << 0;
        QTest::newRow("second of several") << "cy"_s << 1;
        QTest::newRow("with line ends") << "x\nann\ny"_s << 1;
        QTest::newRow("with a backslash") << "back\\slash"_s << 1;
        QTest::newRow("with what a line end becomes") << "back\\nslash"_s << 1;
        QTest::newRow("with a line end in its place") << "back\nslash"_s << 0;
        QTest::newRow("wildcards are letters") << "%"_s << 0;
        QTest::newRow("two that stand together") << "ann\ncy"_s << 0;
    }
    void findsUsersByTheirWholeName()
    {
        QFETCH(QString, user);
        QFETCH(int, nodes);
        NodeScope scope = everything();
        scope.person = user;
        QCOMPARE(count(scope), nodes);
    }

    void countsWhatMayBeSeen()
    {
        QCOMPARE(count(everything()), 6);
        NodeScope scope = everything();
        scope.category = "c2"_s;
        QCOMPARE(count(scope), 3);
        scope.visible.categories.insert("c2"_s, ReadScope::None);
        QCOMPARE(count(scope), 0);
        scope.category.reset();
        QCOMPARE(count(scope), 3);
        scope.visible.user = "ann"_s;
        scope.visible.elsewhere = ReadScope::Own;
        QCOMPARE(count(scope), 2);
        scope.visible.categories.insert("c2"_s, ReadScope::All);
        QCOMPARE(count(scope), 5);
        scope.person = "anna"_s;
        QCOMPARE(count(scope), 1);
        scope.projectId = "p2"_s;
        QCOMPARE(count(scope), 0);
    }

    void countsDaysInOrder()
    {
        QStringList days;
        const QVector<DayCount> counts = m_store->finishedPerDay(everything());
        for (const DayCount& day : counts) {
            days.append("%1 %2"_s.arg(day.day).arg(day.total));
        }
        QCOMPARE(days, QStringList({"2026-03-08 1"_s, "2026-03-09 2"_s}));
    }

    void looksAtTheIndexAlone()
    {
        NodeScope narrow = everything();
        narrow.category = "c1"_s;
        narrow.person = "ann"_s;
        NodeScope own = narrow;
        own.visible.elsewhere = ReadScope::Own;
        own.visible.categories.insert("c2"_s, ReadScope::Own);
        for (const NodeScope& scope : {everything(), narrow, own}) {
            for (const SqlStatement& statement :
                 {nodeCountSql(scope, "2026-03-02"_s), finishedPerDaySql(scope)}) {
                const QString steps = KvTest::stepsOf(statement);
                QVERIFY2(steps.startsWith("SEARCH planNodes USING COVERING INDEX planNodesByProject"_s),
                         qPrintable(steps));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestProgressStore)
#include "TestProgressStore.moc"
