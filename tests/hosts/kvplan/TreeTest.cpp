// Walking a tree, and bars at the edges of their period.

#include <GanttBar.h>
#include <TreeWalk.h>

#include <model/KvPlanDataUtils.h>

#include <QtTest/QtTest>

#include <limits>

Q_DECLARE_METATYPE(KvPlanNode)

namespace {

constexpr int everyLevel = std::numeric_limits<int>::max();

KvPlanNode node(const QString& name, const QList<KvPlanNode>& children = {})
{
    KvPlanNode made;
    made.name = name;
    made.children = children;
    return made;
}

// "a(b(c)d)e": names, with brackets around the children of each.
QString walked(const QList<KvPlanNode>& roots, int depth)
{
    QString text;
    walkTree(
        roots, depth,
        [&](const KvPlanNode& entered, int level) {
            text += QStringLiteral("%1%2(").arg(entered.name).arg(level);
        },
        [&] { text += QLatin1Char(')'); });
    return text.remove(QStringLiteral("()"));
}

QDateTime day(int number)
{
    return QDateTime(QDate(2026, 1, 1).addDays(number), QTime(0, 0));
}

KvPlanNode task(const QDateTime& start, const QDateTime& finish, double done = 0)
{
    KvPlanNode made;
    made.startDate = start;
    made.finishDate = finish;
    made.finishedPercentage = done;
    return made;
}

} // namespace

class TreeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void walk_data()
    {
        QTest::addColumn<int>("depth");
        QTest::addColumn<QString>("expected");
        QTest::newRow("one level") << 1 << QStringLiteral("a0f0");
        QTest::newRow("two levels") << 2 << QStringLiteral("a0(b1e1)f0(g1)");
        QTest::newRow("three levels") << 3 << QStringLiteral("a0(b1(c2d2)e1)f0(g1)");
        QTest::newRow("all levels") << everyLevel << QStringLiteral("a0(b1(c2d2)e1)f0(g1)");
    }

    void walk()
    {
        QFETCH(int, depth);
        const auto n = [](const char* name, const QList<KvPlanNode>& children = {}) {
            return node(QString::fromLatin1(name), children);
        };
        QTEST(walked({n("a", {n("b", {n("c"), n("d")}), n("e")}), n("f", {n("g")})}, depth), "expected");
    }

    void walkOfNothing() { QCOMPARE(walked({}, everyLevel), QString()); }

    void walkOfADeepChain()
    {
        constexpr int levels = 100000;
        QList<KvPlanNode> nodes;
        for (int i = 1; i <= levels; ++i) {
            KvPlanNode link;
            link.planNodeId = i;
            link.uniqueId = i;
            link.parentTaskId = i - 1;
            nodes.append(link);
        }
        KvPlanDataUtils::makePlanNodeListTree(nodes);
        QCOMPARE(nodes.size(), 1);
        int deepest = -1;
        int left = 0;
        walkTree(
            nodes, everyLevel,
            [&](const KvPlanNode& entered, int level) {
                QCOMPARE(entered.planNodeId, level + 1);
                deepest = qMax(deepest, level);
            },
            [&] { ++left; });
        QCOMPARE(deepest, levels - 1);
        QCOMPARE(left, levels);
    }

    void period()
    {
        QVERIFY(periodOf({}).isEmpty());
        QVERIFY(periodOf({task(day(1), QDateTime()), task(QDateTime(), day(2))}).isEmpty());
        const Period two = periodOf({task(day(3), day(5)), task(day(1), day(4)), task(QDateTime(), day(9))});
        QCOMPARE(two.start, day(1).toMSecsSinceEpoch());
        QCOMPARE(two.finish, day(5).toMSecsSinceEpoch());
    }

    void title_data()
    {
        QTest::addColumn<int>("cells");
        QTest::addColumn<QString>("expected");
        QTest::newRow("both days") << 24 << QStringLiteral("2026-01-01    2026-01-11");
        QTest::newRow("just both days") << 21 << QStringLiteral("2026-01-01 2026-01-11");
        QTest::newRow("the first day alone") << 20 << QStringLiteral("2026-01-01");
    }

    void title()
    {
        QFETCH(int, cells);
        QTEST(periodTitle(periodOf({task(day(0), day(10))}), cells), "expected");
        QCOMPARE(periodTitle(Period(), cells), QString());
    }

    // Ten days in ten cells: a cell a day.
    void bar_data()
    {
        QTest::addColumn<KvPlanNode>("node");
        QTest::addColumn<QString>("expected");
        QTest::newRow("the whole period") << task(day(0), day(10)) << QStringLiteral("░░░░░░░░░░");
        QTest::newRow("all of it done") << task(day(0), day(10), 100) << QStringLiteral("██████████");
        QTest::newRow("half of it done") << task(day(0), day(10), 50) << QStringLiteral("█████░░░░░");
        QTest::newRow("the first day") << task(day(0), day(1)) << QStringLiteral("░");
        QTest::newRow("the last day") << task(day(9), day(10)) << QStringLiteral("         ░");
        QTest::newRow("a day in the middle") << task(day(4), day(5)) << QStringLiteral("    ░");
        QTest::newRow("a begun cell counts whole")
            << task(day(4), day(5).addSecs(1)) << QStringLiteral("    ░░");
        QTest::newRow("no time at all") << task(day(4), day(4)) << QStringLiteral("    ░");
        QTest::newRow("no time at the very end") << task(day(10), day(10)) << QStringLiteral("         ░");
        QTest::newRow("finish before start") << task(day(6), day(2)) << QStringLiteral("      ░");
        QTest::newRow("before the period") << task(day(-9), day(-5)) << QStringLiteral("░");
        QTest::newRow("after the period") << task(day(20), day(30)) << QStringLiteral("         ░");
        QTest::newRow("ends of time")
            << task(QDateTime(QDate(1, 1, 1), QTime(0, 0)), QDateTime(QDate(9999, 12, 31), QTime(0, 0)))
            << QStringLiteral("░░░░░░░░░░");
        QTest::newRow("more than done") << task(day(0), day(2), 1e300) << QStringLiteral("██");
        QTest::newRow("progress not set") << task(day(0), day(2), -1) << QStringLiteral("░░");
        QTest::newRow("no start") << task(QDateTime(), day(2)) << QString();
        QTest::newRow("no finish") << task(day(2), QDateTime()) << QString();
        KvPlanNode milestone = task(day(3), day(3));
        milestone.milestone = true;
        QTest::newRow("milestone") << milestone << QStringLiteral("   ◆");
        milestone.startDate = milestone.finishDate = day(10);
        QTest::newRow("milestone at the very end") << milestone << QStringLiteral("         ◆");
    }

    void bar()
    {
        QFETCH(KvPlanNode, node);
        QTEST(ganttBar(node, periodOf({task(day(0), day(10))}), 10), "expected");
    }

    void barsWithoutAPeriod()
    {
        QCOMPARE(ganttBar(task(day(0), day(1)), Period(), 10), QString());
        // All tasks at one instant: the period has no length, and its only place is the first cell.
        QCOMPARE(ganttBar(task(day(0), day(0)), periodOf({task(day(0), day(0))}), 10), QStringLiteral("░"));
    }

    void barsStayWithinTheirCells()
    {
        const Period tenDays = periodOf({task(day(0), day(10))});
        for (int cells = 1; cells <= 40; ++cells) {
            for (int start = -2; start <= 12; ++start) {
                for (int finish = -2; finish <= 12; ++finish) {
                    const int length = ganttBar(task(day(start), day(finish), 33), tenDays, cells).size();
                    QVERIFY(length >= 1 && length <= cells);
                }
            }
        }
    }
};

QTEST_GUILESS_MAIN(TreeTest)
#include "TreeTest.moc"
