// How elements look along time: the cursor against the rule worked out for every element at every date.

#include <SimulationClock.h>
#include <SimulationTimeline.h>

#include <QtTest/QtTest>

#include <algorithm>
#include <random>

namespace {

QDateTime day(int number)
{
    return QDateTime(QDate(2026, 1, 1), QTime(8, 0)).addDays(number);
}

KvPlanNode task(const QDateTime& start, const QDateTime& finish, const QStringList& entities)
{
    KvPlanNode node;
    node.dynamicEffect = Kv::GrowBottomToTop;
    node.startDate = start;
    node.finishDate = finish;
    node.links.insert(QStringLiteral("model"), entities);
    return node;
}

QVector<const KvPlanNode*> pointers(const QList<KvPlanNode>& nodes)
{
    QVector<const KvPlanNode*> list;
    for (const KvPlanNode& node : nodes)
        list.append(&node);
    return list;
}

/// The rule as it is told, for one element: nothing sorted beforehand, nothing kept.
class PlainRule
{
public:
    PlainRule(const QList<KvPlanNode>& nodes, const QVector<int>& tasks, const SimulationRule& rule)
        : m_firstGrowth(growthOfEffect(nodes.at(tasks.first()).dynamicEffect))
    {
        for (const int task : tasks) {
            if (nodes.at(task).displaySimulation)
                m_courses.append(SimulationCourse(nodes.at(task), rule));
        }
    }

    SimulationState at(const QDateTime& date) const
    {
        const qint64 time = simulationTime(date, SimulationCourse::always);
        if (m_courses.isEmpty()) {
            SimulationState state;
            state.presence = SimulationPresence::Hidden;
            state.growth = m_firstGrowth;
            return state;
        }
        return at(time, m_courses.size(), true);
    }

private:
    bool startsBefore(int a, int b) const // at one time: the later finish wins, then the later in the list
    {
        const SimulationCourse& first = m_courses.at(a);
        const SimulationCourse& second = m_courses.at(b);
        if (first.start() != second.start())
            return first.start() < second.start();
        return first.finish() != second.finish() ? first.finish() < second.finish() : a < b;
    }

    /// As if only the @p started tasks that started first had started; @p isWhole: with what others hide at
    /// that very moment.
    SimulationState at(qint64 time, int started, bool isWhole) const
    {
        QVector<int> order;
        for (int i = 0; i < m_courses.size(); ++i) {
            if (m_courses.at(i).start() <= time && m_courses.at(i).start() != SimulationCourse::never)
                order.append(i);
        }
        std::sort(order.begin(), order.end(), [this](int a, int b) { return startsBefore(a, b); });
        order = order.mid(0, started);
        int teller = 0;
        double least = 0.0;
        qint64 since = SimulationCourse::always;
        if (order.isEmpty()) {
            for (int i = 1; i < m_courses.size(); ++i) {
                if (m_courses.at(i).expectedStart() < m_courses.at(teller).expectedStart())
                    teller = i;
            }
        } else {
            teller = order.last();
            since = m_courses.at(teller).start();
            least = at(since, order.size() - 1, false).share;
        }
        SimulationState state = m_courses.at(teller).at(time);
        bool isHidden = state.presence == SimulationPresence::Hidden;
        for (const SimulationCourse& course : m_courses) {
            if (course.hidden() >= since && (course.hidden() < time || (isWhole && course.hidden() == time)))
                isHidden = true;
        }
        if (isHidden) {
            state.presence = SimulationPresence::Hidden;
            state.share = 0.0;
        } else if (state.growth != Kv::GrowDisappear && least > 0.0 && state.share <= least) {
            state.share = least;
            state.presence = least < 1.0 ? SimulationPresence::Growing : SimulationPresence::Complete;
        }
        return state;
    }

    Kv::QGrowthType m_firstGrowth;
    QVector<SimulationCourse> m_courses;
};

} // namespace

class TimelineTest : public QObject
{
    Q_OBJECT

private:
    /// Few days and few elements, so that dates and elements meet often.
    static QList<KvPlanNode> randomPlan(std::mt19937& random)
    {
        const auto number = [&random](int below) {
            return static_cast<int>(random() % static_cast<unsigned int>(below));
        };
        const auto maybeDay = [&number] {
            return number(4) == 0 ? QDateTime() : day(number(12));
        };
        QList<KvPlanNode> nodes;
        const int count = 1 + number(12);
        for (int i = 0; i < count; ++i) {
            KvPlanNode node = task(maybeDay(), maybeDay(), {});
            node.actualStartDate = maybeDay();
            node.actualFinishDate = maybeDay();
            node.finishedPercentage = number(5) * 25.0;
            node.displaySimulation = number(6) != 0;
            node.entityHideDate = number(3) == 0 ? day(number(14)) : QDateTime();
            node.entityHideType = number(3);
            node.dynamicEffect = number(5) == 0 ? Kv::GrowDisappear : number(14);
            for (int link = number(5); link > 0; --link)
                node.links[QString::number(number(2))].append(QString::number(number(6)));
            nodes.append(node);
        }
        return nodes;
    }

private Q_SLOTS:
    void oneTaskIsTheFunctionOfTheTask()
    {
        const QList<KvPlanNode> nodes{task(day(2), day(6), {QStringLiteral("wall")})};
        SimulationTimeline timeline;
        timeline.setTasks(pointers(nodes), {});
        const int wall = timeline.elementOf(QStringLiteral("wall"));
        for (int hour = 0; hour < 240; ++hour) {
            const QDateTime date = day(0).addSecs(hour * 3600);
            timeline.moveTo(date);
            QVERIFY(timeline.stateOf(wall) == simulationState(nodes.first(), {}, date));
        }
    }

    void whoNamesWhat()
    {
        QList<KvPlanNode> nodes{
            task(day(2), day(6), {QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("b")}),
            task(day(2), day(6), {}), task(day(2), day(6), {QStringLiteral("a")})};
        nodes[2].links.insert(QStringLiteral("other model"), {QStringLiteral("a"), QStringLiteral("c")});
        SimulationTimeline timeline;
        timeline.setTasks(pointers(nodes), {});
        QCOMPARE(timeline.elementCount(), 3);
        QCOMPARE(timeline.taskCount(), 3);
        const int a = timeline.elementOf(QStringLiteral("a"));
        const int b = timeline.elementOf(QStringLiteral("b"));
        const int c = timeline.elementOf(QStringLiteral("c"));
        QCOMPARE(timeline.elementId(a), QStringLiteral("a"));
        QCOMPARE(timeline.elementOf(QStringLiteral("d")), int(SimulationTimeline::none));
        QCOMPARE(timeline.tasksOf(a), QVector<int>({0, 2}));
        QCOMPARE(timeline.tasksOf(b), QVector<int>({0}));
        QCOMPARE(timeline.elementsOf(0), QVector<int>({b, a}));
        QCOMPARE(timeline.elementsOf(1), QVector<int>());
        QCOMPARE(timeline.elementsOf(2), QVector<int>({a, c}));
    }

    void nothingToShow()
    {
        SimulationTimeline timeline;
        QVERIFY(timeline.moveTo(day(1)).isEmpty());
        timeline.setTasks({}, {});
        QVERIFY(timeline.moveTo(day(1)).isEmpty());
    }

    void theFirstMoveTellsAllAndLaterOnesWhatChanged()
    {
        const QList<KvPlanNode> nodes{task(day(2), day(6), {QStringLiteral("wall"), QStringLiteral("slab")}),
                                      task(day(8), day(9), {QStringLiteral("roof")})};
        SimulationTimeline timeline;
        timeline.setTasks(pointers(nodes), {});
        QCOMPARE(timeline.moveTo(day(0)), QVector<int>({0, 1, 2}));
        QCOMPARE(timeline.moveTo(day(1)), QVector<int>());
        QVector<int> begun = timeline.moveTo(day(2));
        std::sort(begun.begin(), begun.end());
        QCOMPARE(begun, QVector<int>({0, 1}));
        QCOMPARE(timeline.growing().size(), 2);
        QCOMPARE(timeline.moveTo(day(3)).size(), 2); // they grow
        QCOMPARE(timeline.moveTo(day(3)), QVector<int>());
        QCOMPARE(timeline.moveTo(day(6)).size(), 2);
        QVERIFY(timeline.growing().isEmpty());
        QCOMPARE(timeline.moveTo(day(7)), QVector<int>());
        QCOMPARE(timeline.moveTo(day(20)), QVector<int>({2}));
        QCOMPARE(timeline.moveTo(day(0)).size(), 3);
        QCOMPARE(timeline.moveTo(QDateTime()), QVector<int>());
    }

    void theTaskThatStartedLastTells_data()
    {
        QTest::addColumn<int>("firstEffect");
        QTest::addColumn<int>("secondEffect");
        QTest::addColumn<int>("hiddenOn"); // by the first; -1: never
        QTest::addColumn<int>("on");
        QTest::addColumn<double>("share");
        QTest::addColumn<int>("state");
        const int up = Kv::GrowBottomToTop;
        const int down = Kv::GrowDisappear;
        // The first from day 2 to 6, the second from day 4 to 12.
        QTest::newRow("before both") << up << up << -1 << 1 << 0.0 << 0;
        QTest::newRow("the first alone") << up << up << -1 << 3 << 0.25 << 2;
        QTest::newRow("the second starts: what stood stays") << up << up << -1 << 4 << 0.5 << 2;
        QTest::newRow("the first is finished: the second tells") << up << up << -1 << 7 << 0.5 << 2;
        QTest::newRow("the second passes what stood") << up << up << -1 << 10 << 0.75 << 2;
        QTest::newRow("both are finished") << up << up << -1 << 12 << 1.0 << 4;
        QTest::newRow("taken down by the second") << up << down << -1 << 6 << 0.75 << 2;
        QTest::newRow("gone") << up << down << -1 << 12 << 0.0 << 4;
        QTest::newRow("hidden by the first") << up << up << 8 << 8 << 0.0 << 2;
        QTest::newRow("hidden before the second started: no more") << up << up << 3 << 8 << 0.5 << 2;
        QTest::newRow("nothing stood, as it was hidden") << up << up << 3 << 6 << 0.25 << 2;
        QTest::newRow("hidden as the second starts") << up << up << 4 << 4 << 0.0 << 2;
    }
    void theTaskThatStartedLastTells()
    {
        QFETCH(int, firstEffect);
        QFETCH(int, secondEffect);
        QFETCH(int, hiddenOn);
        QFETCH(int, on);
        QList<KvPlanNode> nodes{task(day(2), day(6), {QStringLiteral("wall")}),
                                task(day(4), day(12), {QStringLiteral("wall")})};
        nodes[0].dynamicEffect = firstEffect;
        nodes[1].dynamicEffect = secondEffect;
        if (hiddenOn >= 0)
            nodes[0].entityHideDate = day(hiddenOn);
        SimulationTimeline timeline;
        timeline.setTasks(pointers(nodes), {});
        const SimulationState state = timeline.stateAt(0, day(on));
        QTEST(state.share, "share");
        QTEST(state.state, "state");
        QCOMPARE(state.presence == SimulationPresence::Hidden, hiddenOn >= 4 && on >= hiddenOn);
    }

    void tasksOutsideTheSimulationHaveNoSay()
    {
        QList<KvPlanNode> nodes{task(day(2), day(4), {QStringLiteral("wall"), QStringLiteral("crane")}),
                                task(day(6), day(8), {QStringLiteral("wall")})};
        nodes[0].displaySimulation = false;
        SimulationTimeline timeline;
        timeline.setTasks(pointers(nodes), {});
        timeline.moveTo(day(5));
        QCOMPARE(timeline.stateOf(0).presence, SimulationPresence::Absent);
        QCOMPARE(timeline.stateOf(1).presence, SimulationPresence::Hidden);
        timeline.moveTo(day(9));
        QCOMPARE(timeline.stateOf(0).presence, SimulationPresence::Complete);
        QCOMPARE(timeline.stateOf(1).presence, SimulationPresence::Hidden);
    }

    // Whatever way the cursor goes, each element looks as the rule says, and exactly those that look
    // otherwise than before are told, each once.
    void theCursorFollowsTheRule()
    {
        std::mt19937 random(20260302);
        int changes = 0;
        int growing = 0;
        for (int plan = 0; plan < 400; ++plan) {
            const QList<KvPlanNode> nodes = randomPlan(random);
            const SimulationRule rule{random() % 3 == 0 ? SimulationDates::Planned : SimulationDates::Actual,
                                      random() % 2 == 0 ? SimulationShare::ByTime
                                                        : SimulationShare::ByProgress};
            SimulationTimeline timeline;
            timeline.setTasks(pointers(nodes), rule);
            QVector<PlainRule> plain;
            for (int i = 0; i < timeline.elementCount(); ++i)
                plain.append(PlainRule(nodes, timeline.tasksOf(i), rule));
            QVector<SimulationState> before(timeline.elementCount());
            for (int move = 0; move < 40; ++move) {
                // Steps and jumps, both ways, often on the very dates.
                const QDateTime date =
                    random() % 40 == 0
                        ? QDateTime()
                        : day(static_cast<int>(random() % 16) - 1)
                              .addMSecs(static_cast<int>(random() % 3) - 1)
                              .addSecs(random() % 2 == 0 ? 0 : static_cast<int>(random() % 86400));
                QVector<int> told = timeline.moveTo(date);
                std::sort(told.begin(), told.end());
                QVector<int> expected;
                int growingNow = 0;
                for (int i = 0; i < timeline.elementCount(); ++i) {
                    const SimulationState state = plain.at(i).at(date);
                    QVERIFY2(timeline.stateOf(i) == state,
                             qPrintable(QStringLiteral(
                                            "plan %1, move %2, element %3: presence %4 and not %5, share %6 "
                                            "and not %7, state %8 and not %9")
                                            .arg(plan)
                                            .arg(move)
                                            .arg(i)
                                            .arg(int(timeline.stateOf(i).presence))
                                            .arg(int(state.presence))
                                            .arg(timeline.stateOf(i).share)
                                            .arg(state.share)
                                            .arg(timeline.stateOf(i).state)
                                            .arg(state.state)));
                    QVERIFY(timeline.stateAt(i, date) == state);
                    if (move == 0 || state != before.at(i))
                        expected.append(i);
                    growingNow += state.presence == SimulationPresence::Growing ? 1 : 0;
                    before[i] = state;
                }
                QCOMPARE(told, expected);
                QCOMPARE(timeline.growing().size(), growingNow);
                changes += expected.size();
                growing += growingNow;
            }
        }
        QVERIFY(changes > 5000 && growing > 2000);
    }

    // 50,000 elements of 5,000 tasks: a move between two dates asks nobody, so that thousands of them take
    // less than looking at all elements a few times.
    void aMoveCostsWhatChanges()
    {
        QList<KvPlanNode> nodes;
        for (int i = 0; i < 5000; ++i) {
            QStringList entities;
            for (int k = 0; k < 10; ++k)
                entities.append(QStringLiteral("e%1").arg(i * 10 + k));
            nodes.append(task(day(2 * i), day(2 * i + 1), entities));
        }
        SimulationTimeline timeline;
        timeline.setTasks(pointers(nodes), {});
        QCOMPARE(timeline.elementCount(), 50000);
        QCOMPARE(timeline.moveTo(day(-1)).size(), 50000);
        timeline.moveTo(day(5001));
        QElapsedTimer timer;
        timer.start();
        int changed = 0;
        for (int i = 0; i < 5000; ++i)
            changed += timeline.moveTo(day(5001).addSecs(i + 1)).size();
        const qint64 moves = timer.nsecsElapsed();
        timer.restart();
        int complete = 0;
        for (int round = 0; round < 5; ++round) {
            for (int i = 0; i < timeline.elementCount(); ++i)
                complete += timeline.stateAt(i, day(5001)).presence == SimulationPresence::Complete ? 1 : 0;
        }
        const qint64 all = timer.nsecsElapsed();
        QCOMPARE(changed, 0);
        QCOMPARE(complete, 5 * 10 * 2501);
        QVERIFY2(moves < all, qPrintable(QStringLiteral("%1 ns and %2 ns").arg(moves).arg(all)));
    }

    // One element of very many tasks, all at work on it together, plays as fast as any.
    void oneElementOfManyTasks()
    {
        QList<KvPlanNode> nodes;
        for (int i = 0; i < 20000; ++i)
            nodes.append(task(day(0).addSecs(i * 60), day(40), {QStringLiteral("all")}));
        SimulationTimeline timeline;
        timeline.setTasks(pointers(nodes), {});
        double share = 0.0;
        for (int i = 0; i <= 20000; ++i) {
            timeline.moveTo(day(0).addSecs(i * 60 + 30));
            QVERIFY(timeline.stateOf(0).share >= share);
            share = timeline.stateOf(0).share;
        }
        QVERIFY(share > 0.0);
    }
};

QTEST_GUILESS_MAIN(TimelineTest)
#include "TimelineTest.moc"
