// The clock of the playback, told how much time has gone by.

#include <SimulationClock.h>
#include <support/ScopedTimeZone.h>

#include <QtTest/QtTest>

#include <cmath>
#include <limits>

namespace {

QDateTime day(int number, int hour = 0)
{
    return QDateTime(QDate(2026, 3, number), QTime(hour, 0));
}

SimulationClock tenDays()
{
    SimulationClock clock;
    clock.setPeriod({day(1), day(11)});
    clock.setSpeed(1.0);
    return clock;
}

} // namespace

class ClockTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutAPeriodNothingRuns()
    {
        SimulationClock clock;
        clock.play();
        QVERIFY(!clock.isPlaying());
        QVERIFY(!clock.advance(1000));
        clock.step(1);
        clock.setDate(day(1));
        QVERIFY(clock.date().isNull());
    }

    void itStartsAtTheStart() { QCOMPARE(tenDays().date(), day(1)); }

    void speedIsDaysPerSecond()
    {
        SimulationClock clock = tenDays();
        QVERIFY(!clock.advance(1000)); // not playing
        clock.play();
        QVERIFY(clock.advance(1000));
        QCOMPARE(clock.date(), day(2));
        clock.setSpeed(0.5);
        QVERIFY(clock.advance(1000));
        QCOMPARE(clock.date(), day(2, 12));
        clock.setSpeed(4);
        QVERIFY(clock.advance(250));
        QCOMPARE(clock.date(), day(3, 12));
        QVERIFY(!clock.advance(0));
        QVERIFY(!clock.advance(-1000));
    }

    void manySmallStepsAreOneLarge()
    {
        SimulationClock small = tenDays();
        small.setSpeed(0.37);
        SimulationClock large = small;
        small.play();
        large.play();
        for (int i = 0; i < 7000; ++i)
            small.advance(1);
        large.advance(7000);
        QVERIFY(std::abs(small.date().msecsTo(large.date())) <= 1);
    }

    void speedsStayInRange_data()
    {
        QTest::addColumn<double>("speed");
        QTest::addColumn<double>("taken");
        QTest::newRow("half") << 0.5 << 0.5;
        QTest::newRow("none") << 0.0 << SimulationClock::slowest;
        QTest::newRow("backwards") << -3.0 << SimulationClock::slowest;
        QTest::newRow("too fast") << 1e9 << SimulationClock::fastest;
        QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << SimulationClock::fastest;
        QTest::newRow("no number") << std::nan("") << 0.5;
    }
    void speedsStayInRange()
    {
        QFETCH(double, speed);
        SimulationClock clock;
        clock.setSpeed(speed);
        QTEST(clock.speed(), "taken");
    }

    void itPausesAtTheEnd()
    {
        SimulationClock clock = tenDays();
        clock.play();
        QVERIFY(clock.advance(60000));
        QCOMPARE(clock.date(), day(11));
        QVERIFY(!clock.isPlaying());
        QVERIFY(clock.isAtEnd());
        QVERIFY(!clock.advance(1000));
        clock.play();
        QCOMPARE(clock.date(), day(1));
    }

    void itLoops()
    {
        SimulationClock clock = tenDays();
        clock.setLooping(true);
        clock.play();
        QVERIFY(clock.advance(32000));
        QVERIFY(clock.isPlaying());
        QCOMPARE(clock.date(), day(3));
    }

    void aMomentDoesNotLoop()
    {
        SimulationClock clock;
        clock.setPeriod({day(1), day(1)});
        clock.setLooping(true);
        clock.play();
        QVERIFY(!clock.advance(1000));
        QVERIFY(!clock.isPlaying());
        QCOMPARE(clock.date(), day(1));
        QCOMPARE(clock.position(), 1.0);
    }

    void pauseKeepsTheDate()
    {
        SimulationClock clock = tenDays();
        clock.play();
        clock.advance(1500);
        clock.pause();
        QVERIFY(!clock.advance(1000));
        QCOMPARE(clock.date(), day(2, 12));
        QCOMPARE(clock.position(), 0.15);
        clock.play();
        QVERIFY(clock.advance(500));
        QCOMPARE(clock.date(), day(3));
    }

    void stepsPauseAndStayInThePeriod()
    {
        SimulationClock clock = tenDays();
        clock.play();
        clock.step(1);
        QVERIFY(!clock.isPlaying());
        QCOMPARE(clock.date(), day(2));
        clock.step(-5);
        QCOMPARE(clock.date(), day(1));
        clock.step(100);
        QCOMPARE(clock.date(), day(11));
        clock.step(-0.5);
        QCOMPARE(clock.date(), day(10, 12));
    }

    void datesStayInThePeriod()
    {
        SimulationClock clock = tenDays();
        clock.setDate(day(5, 6));
        QCOMPARE(clock.date(), day(5, 6));
        clock.setDate(day(30));
        QCOMPARE(clock.date(), day(11));
        clock.setDate(QDateTime(QDate(2020, 1, 1), QTime(0, 0)));
        QCOMPARE(clock.date(), day(1));
        clock.setDate(QDateTime());
        QCOMPARE(clock.date(), day(1));
    }

    void anotherPeriodKeepsTheDateIfItCan()
    {
        SimulationClock clock = tenDays();
        clock.setDate(day(5));
        clock.setPeriod({day(3), day(20)});
        QCOMPARE(clock.date(), day(5));
        clock.setPeriod({day(8), day(20)});
        QCOMPARE(clock.date(), day(8));
        clock.play();
        clock.setPeriod({});
        QVERIFY(!clock.isPlaying());
        QVERIFY(clock.date().isNull());
    }

    void aDayIs24HoursWhenClocksChange()
    {
        const ScopedTimeZone here("Europe/Berlin");
        SimulationClock clock;
        clock.setPeriod({day(28), day(31)});
        clock.setSpeed(1);
        clock.play();
        clock.advance(2000);
        QCOMPARE(clock.date(), day(30, 1)); // the 29th had 23
        clock.advance(958);                 // 23 hours of the 30th, more or less
        QVERIFY(clock.date() < day(31));
        clock.advance(1);
        QCOMPARE(clock.date(), day(31));
    }

    void thePeriodOfAPlan()
    {
        KvPlanNode first;
        first.startDate = day(5);
        first.finishDate = day(7);
        KvPlanNode late;
        late.startDate = day(6);
        late.finishDate = day(8);
        late.actualStartDate = day(4);
        late.actualFinishDate = day(9);
        KvPlanNode unseen;
        unseen.startDate = day(1);
        unseen.displaySimulation = false;
        const KvPlanNode empty;
        QVERIFY(!planPeriod({}).isValid());
        QVERIFY(!planPeriod({&empty, &unseen}).isValid());
        const SimulationPeriod alone = planPeriod({&first});
        QCOMPARE(alone.start, day(5));
        QCOMPARE(alone.finish, day(7));
        const SimulationPeriod all = planPeriod({&empty, &first, &unseen, &late});
        QCOMPARE(all.start, day(4));
        QCOMPARE(all.finish, day(9));
    }

    void whichPeriodIsPlayed_data()
    {
        QTest::addColumn<bool>("usePlan");
        QTest::addColumn<QDateTime>("start");
        QTest::addColumn<QDateTime>("finish");
        QTest::addColumn<QDateTime>("playedStart");
        QTest::addColumn<QDateTime>("playedFinish");
        QTest::newRow("the plan's") << true << day(4) << day(6) << day(2) << day(9);
        QTest::newRow("its own") << false << day(4) << day(6) << day(4) << day(6);
        QTest::newRow("no start") << false << QDateTime() << day(6) << day(2) << day(6);
        QTest::newRow("no finish") << false << day(4) << QDateTime() << day(4) << day(9);
        QTest::newRow("neither") << false << QDateTime() << QDateTime() << day(2) << day(9);
        QTest::newRow("finish before start") << false << day(6) << day(4) << day(6) << day(6);
        QTest::newRow("start after the plan's finish")
            << false << day(20) << QDateTime() << day(20) << day(20);
    }
    void whichPeriodIsPlayed()
    {
        QFETCH(bool, usePlan);
        QFETCH(QDateTime, start);
        QFETCH(QDateTime, finish);
        TimeLineSet set;
        set.UsePlanTime = usePlan;
        set.TimeStart = start;
        set.TimeFinish = finish;
        const SimulationPeriod period = simulatedPeriod({day(2), day(9)}, set);
        QTEST(period.start, "playedStart");
        QTEST(period.finish, "playedFinish");
    }
};

QTEST_GUILESS_MAIN(ClockTest)
#include "ClockTest.moc"
