// In which colour an element of a state is drawn, and how.

#include <SimulationColours.h>

#include <QtTest/QtTest>

Q_DECLARE_METATYPE(SimulationPresence)

class ColoursTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void colours_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<bool>("delays");
        QTest::addColumn<bool>("painted");
        QTest::addColumn<int>("off"); // the state whose flag is off
        QTest::addColumn<int>("colour");
        for (int state = 0; state < TaskState::count; ++state) {
            QTest::addRow("state %d", state) << state << true << true << -1 << state;
            QTest::addRow("state %d, painting off", state) << state << true << false << -1 << -1;
            QTest::addRow("state %d, its flag off", state) << state << true << true << state << -1;
            QTest::addRow("state %d, another's flag off", state)
                << state << true << true << (state + 1) % TaskState::count << state;
        }
        QTest::newRow("not started, delays not shown") << 1 << false << true << -1 << 0;
        QTest::newRow("in progress, delays not shown") << 3 << false << true << -1 << 2;
        QTest::newRow("finished, delays not shown") << 6 << false << true << -1 << 4;
        QTest::newRow("ahead, delays not shown") << 5 << false << true << -1 << 5;
        QTest::newRow("the flag of the state that is shown counts") << 6 << false << true << 4 << -1;
        QTest::newRow("that of the other does not") << 6 << false << true << 6 << 4;
        QTest::newRow("no state") << 7 << true << true << -1 << -1;
        QTest::newRow("no state either") << -1 << true << true << -1 << -1;
    }
    void colours()
    {
        QFETCH(int, state);
        QFETCH(bool, delays);
        QFETCH(bool, painted);
        QFETCH(int, off);
        QFETCH(int, colour);
        QList<QColor> colours;
        for (int i = 0; i < TaskState::count; ++i)
            colours.append(QColor(i, 100, 200));
        TimeLineSet set;
        set.DisplayDelay = delays;
        set.DisplayStateColor = painted;
        setStateFlag(off, false, set);
        QCOMPARE(stateColour(state, set, colours), colour < 0 ? QColor() : colours.at(colour));
    }

    void paint_data()
    {
        QTest::addColumn<SimulationPresence>("presence");
        QTest::addColumn<int>("state");
        QTest::addColumn<bool>("painted");
        QTest::addColumn<int>("kind");
        QTest::newRow("not built yet") << SimulationPresence::Absent << 0 << true << int(ElementPaint::Hint);
        QTest::newRow("late to begin") << SimulationPresence::Absent << 1 << true << int(ElementPaint::Hint);
        QTest::newRow("not built yet, not painted")
            << SimulationPresence::Absent << 0 << false << int(ElementPaint::Nothing);
        QTest::newRow("taken down") << SimulationPresence::Absent << 4 << true << int(ElementPaint::Nothing);
        QTest::newRow("taken down late")
            << SimulationPresence::Absent << 6 << true << int(ElementPaint::Nothing);
        QTest::newRow("growing") << SimulationPresence::Growing << 2 << true << int(ElementPaint::Solid);
        QTest::newRow("growing, not painted")
            << SimulationPresence::Growing << 2 << false << int(ElementPaint::Solid);
        QTest::newRow("complete") << SimulationPresence::Complete << 4 << true << int(ElementPaint::Solid);
        QTest::newRow("standing until it is taken down")
            << SimulationPresence::Complete << 0 << true << int(ElementPaint::Solid);
        QTest::newRow("hidden") << SimulationPresence::Hidden << 4 << true << int(ElementPaint::Nothing);
        QTest::newRow("hidden before it starts")
            << SimulationPresence::Hidden << 0 << true << int(ElementPaint::Nothing);
    }
    void paint()
    {
        QFETCH(SimulationPresence, presence);
        QFETCH(int, state);
        QFETCH(bool, painted);
        QList<QColor> colours;
        for (int i = 0; i < TaskState::count; ++i)
            colours.append(QColor(i, 100, 200));
        TimeLineSet set;
        set.DisplayStateColor = painted;
        const ElementPaint paint = elementPaint({presence, 0.375, state, Kv::GrowLeftToRight}, set, colours);
        QTEST(int(paint.kind), "kind");
        QCOMPARE(paint.growth, Kv::GrowLeftToRight);
        QCOMPARE(paint.colour, painted ? colours.at(state) : QColor());
        QCOMPARE(paint.share, paint.kind == ElementPaint::Solid ? 0.375 : 0.0);
    }

    void whatHasBegunAndStandsNowhereIsHintedAt_data()
    {
        QTest::addColumn<int>("growth");
        QTest::addColumn<bool>("painted");
        QTest::addColumn<int>("kind");
        QTest::newRow("upwards") << int(Kv::GrowBottomToTop) << true << int(ElementPaint::Hint);
        QTest::newRow("upwards, not painted")
            << int(Kv::GrowBottomToTop) << false << int(ElementPaint::Nothing);
        QTest::newRow("sideways") << int(Kv::GrowLeftToRight) << true << int(ElementPaint::Hint);
        QTest::newRow("from nothing, it is there at once")
            << int(Kv::GrowAppear) << true << int(ElementPaint::Solid);
        QTest::newRow("to nothing, it is gone")
            << int(Kv::GrowDisappear) << true << int(ElementPaint::Nothing);
    }
    void whatHasBegunAndStandsNowhereIsHintedAt()
    {
        QFETCH(int, growth);
        QFETCH(bool, painted);
        QList<QColor> colours;
        for (int i = 0; i < TaskState::count; ++i)
            colours.append(QColor(i, 100, 200));
        TimeLineSet set;
        set.ProcessingClr = painted;
        const ElementPaint paint = elementPaint(
            {SimulationPresence::Growing, 0.0, TaskState::InProgress, Kv::QGrowthType(growth)}, set, colours);
        QTEST(int(paint.kind), "kind");
    }

    void eachFlagIsItsStates()
    {
        TimeLineSet set;
        set.NonStartClr = false;
        QVERIFY(!isStatePainted(TaskState::NotStarted, set));
        set = {};
        set.NotStartDelayClr = false;
        QVERIFY(!isStatePainted(TaskState::NotStartedLate, set));
        set = {};
        set.ProcessingClr = false;
        QVERIFY(!isStatePainted(TaskState::InProgress, set));
        set = {};
        set.ProcessingDelayClr = false;
        QVERIFY(!isStatePainted(TaskState::InProgressLate, set));
        set = {};
        set.FinishClr = false;
        QVERIFY(!isStatePainted(TaskState::Finished, set));
        set = {};
        set.FinishAheadClr = false;
        QVERIFY(!isStatePainted(TaskState::FinishedAhead, set));
        set = {};
        set.FinishBehindClr = false;
        QVERIFY(!isStatePainted(TaskState::FinishedLate, set));
    }
};

QTEST_GUILESS_MAIN(ColoursTest)
#include "ColoursTest.moc"
