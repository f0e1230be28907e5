// How the element of a task looks at a moment: the one function of node and date.

#include <SimulationState.h>
#include <support/ScopedTimeZone.h>

#include <QtTest/QtTest>

namespace {

QDateTime date(const QString& text)
{
    return text.isEmpty() ? QDateTime() : QDateTime::fromString(text, Qt::ISODateWithMs);
}

/// "planned start, planned finish, actual start, actual finish, percent", missing ones empty.
KvPlanNode task(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    KvPlanNode node;
    node.dynamicEffect = Kv::GrowBottomToTop;
    node.startDate = date(parts.value(0).trimmed());
    node.finishDate = date(parts.value(1).trimmed());
    node.actualStartDate = date(parts.value(2).trimmed());
    node.actualFinishDate = date(parts.value(3).trimmed());
    node.finishedPercentage = parts.value(4).toDouble();
    return node;
}

const auto planned = SimulationRule{SimulationDates::Planned, SimulationShare::ByTime};
const auto actual = SimulationRule{SimulationDates::Actual, SimulationShare::ByTime};
const auto reported = SimulationRule{SimulationDates::Actual, SimulationShare::ByProgress};

constexpr auto Absent = SimulationPresence::Absent;
constexpr auto Growing = SimulationPresence::Growing;
constexpr auto Complete = SimulationPresence::Complete;
constexpr auto Hidden = SimulationPresence::Hidden;

} // namespace

Q_DECLARE_METATYPE(SimulationRule)
Q_DECLARE_METATYPE(SimulationPresence)

class StateTest : public QObject
{
    Q_OBJECT

private:
    static void row(const char* name, const QByteArray& zone, const SimulationRule& rule, const char* node,
                    const char* moment, SimulationPresence presence, double share, int state)
    {
        QTest::newRow(name) << zone << rule << QString::fromLatin1(node) << QString::fromLatin1(moment)
                            << presence << share << state;
    }
    static void addColumns()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<SimulationRule>("rule");
        QTest::addColumn<QString>("node");
        QTest::addColumn<QString>("moment");
        QTest::addColumn<SimulationPresence>("presence");
        QTest::addColumn<double>("share");
        QTest::addColumn<int>("state");
    }
    static void check()
    {
        QFETCH(QByteArray, zone);
        QFETCH(SimulationRule, rule);
        QFETCH(QString, node);
        QFETCH(QString, moment);
        const ScopedTimeZone here(zone);
        const SimulationState state = simulationState(task(node), rule, date(moment));
        QTEST(state.presence, "presence");
        QTEST(state.share, "share");
        QTEST(state.state, "state");
        QCOMPARE(state.growth, Kv::GrowBottomToTop);
    }

private Q_SLOTS:
    void asPlanned_data()
    {
        addColumns();
        const QByteArray zone = "Asia/Shanghai";
        const char* const week = "2026-03-02T08:00:00, 2026-03-06T08:00:00";
        row("long before", zone, planned, week, "2020-01-01T00:00:00", Absent, 0, 0);
        row("a second before the start", zone, planned, week, "2026-03-02T07:59:59", Absent, 0, 0);
        row("at the start", zone, planned, week, "2026-03-02T08:00:00", Growing, 0, 2);
        row("a quarter of the way", zone, planned, week, "2026-03-03T08:00:00", Growing, 0.25, 2);
        row("half way", zone, planned, week, "2026-03-04T08:00:00", Growing, 0.5, 2);
        row("at the finish", zone, planned, week, "2026-03-06T08:00:00", Complete, 1, 4);
        row("a second after the finish", zone, planned, week, "2026-03-06T08:00:01", Complete, 1, 4);
        row("no moment is before everything", zone, planned, week, "", Absent, 0, 0);
        row("actual dates do not matter", zone, planned,
            "2026-03-02T08:00:00, 2026-03-06T08:00:00, 2026-04-01T08:00:00, 2026-04-02T08:00:00, 100",
            "2026-03-04T08:00:00", Growing, 0.5, 2);
        row("nor does progress", zone, planned, "2026-03-02T08:00:00, 2026-03-06T08:00:00,,,10",
            "2026-03-05T08:00:00", Growing, 0.75, 2);
        row("no finish: by progress", zone, planned, "2026-03-02T08:00:00,,,,30", "2026-05-01T08:00:00",
            Growing, 0.3, 2);
        row("no finish, before the start", zone, planned, "2026-03-02T08:00:00,,,,30", "2026-03-02T07:59:59",
            Absent, 0, 0);
        row("no start: there from the finish", zone, planned, ",2026-03-06T08:00:00", "2026-03-06T08:00:00",
            Complete, 1, 4);
        row("no start, a second before the finish", zone, planned, ",2026-03-06T08:00:00",
            "2026-03-06T07:59:59", Absent, 0, 0);
        row("no dates", zone, planned, "", "2030-01-01T00:00:00", Absent, 0, 0);
        row("milestone, a second before", zone, planned, "2026-03-02T08:00:00, 2026-03-02T08:00:00",
            "2026-03-02T07:59:59", Absent, 0, 0);
        row("milestone at its moment", zone, planned, "2026-03-02T08:00:00, 2026-03-02T08:00:00",
            "2026-03-02T08:00:00", Complete, 1, 4);
        row("finish before start, between them", zone, planned, "2026-03-06T08:00:00, 2026-03-02T08:00:00",
            "2026-03-04T08:00:00", Complete, 1, 4);
        row("finish before start, before both", zone, planned, "2026-03-06T08:00:00, 2026-03-02T08:00:00",
            "2026-03-02T07:59:59", Absent, 0, 0);
    }
    void asPlanned() { check(); }

    void asItWent_data()
    {
        addColumns();
        const QByteArray zone = "Asia/Shanghai";
        const char* const idle = "2026-03-02T08:00:00, 2026-03-06T08:00:00";
        row("not started, before the plan", zone, actual, idle, "2026-03-01T08:00:00", Absent, 0, 0);
        row("not started at the planned second", zone, actual, idle, "2026-03-02T08:00:00", Absent, 0, 0);
        row("not started a second later", zone, actual, idle, "2026-03-02T08:00:01", Absent, 0, 1);
        row("not started after the planned finish", zone, actual, idle, "2026-04-02T08:00:01", Absent, 0, 1);

        const char* const begun = "2026-03-02T08:00:00, 2026-03-06T08:00:00, 2026-03-03T08:00:00,,40";
        row("late, a second before it starts", zone, actual, begun, "2026-03-03T07:59:59", Absent, 0, 1);
        row("starts", zone, actual, begun, "2026-03-03T08:00:00", Growing, 0, 2);
        row("in progress over its planned length", zone, actual, begun, "2026-03-05T08:00:00", Growing, 0.5,
            2);
        row("in progress at the planned finish", zone, actual, begun, "2026-03-06T08:00:00", Growing, 0.75,
            2);
        row("late a second after the planned finish", zone, actual, begun, "2026-03-07T08:00:00", Growing, 1,
            3);
        row("late ever after", zone, actual, begun, "2026-06-07T08:00:00", Growing, 1, 3);
        row("by progress: as time goes", zone, reported, begun, "2026-03-04T08:00:00", Growing, 0.25, 2);
        row("by progress: not beyond it", zone, reported, begun, "2026-03-06T08:00:00", Growing, 0.4, 2);
        row("by progress: late", zone, reported, begun, "2026-03-06T08:00:01", Growing, 0.4, 3);

        const char* const early = "2026-03-02T08:00:00, 2026-03-06T08:00:00, 2026-03-01T08:00:00,"
                                  "2026-03-05T08:00:00, 100";
        row("started early", zone, actual, early, "2026-03-01T08:00:00", Growing, 0, 2);
        row("half way of what it took", zone, actual, early, "2026-03-03T08:00:00", Growing, 0.5, 2);
        row("by progress: half way too", zone, reported, early, "2026-03-03T08:00:00", Growing, 0.5, 2);
        row("a second before its finish", zone, actual, early, "2026-03-05T07:59:59", Growing,
            1.0 - 1.0 / (4 * 86400), 2);
        row("finished ahead of time", zone, actual, early, "2026-03-05T08:00:00", Complete, 1, 5);
        row("ahead of time ever after", zone, actual, early, "2026-03-09T08:00:00", Complete, 1, 5);

        const char* const late = "2026-03-02T08:00:00, 2026-03-06T08:00:00, 2026-03-02T08:00:00,"
                                 "2026-03-10T08:00:00, 100";
        row("in progress until it is late", zone, actual, late, "2026-03-06T08:00:00", Growing, 0.5, 2);
        row("late in progress", zone, actual, late, "2026-03-08T08:00:00", Growing, 0.75, 3);
        row("finished late", zone, actual, late, "2026-03-10T08:00:00", Complete, 1, 6);

        row("finished to the second", zone, actual,
            "2026-03-02T08:00:00, 2026-03-06T08:00:00, 2026-03-02T08:00:00, 2026-03-06T08:00:00",
            "2026-03-07T08:00:00", Complete, 1, 4);
        row("finished within the second", zone, actual,
            "2026-03-02T08:00:00, 2026-03-06T08:00:00, 2026-03-02T08:00:00, 2026-03-06T08:00:00.999",
            "2026-03-07T08:00:00", Complete, 1, 4);
        row("finished a second ahead", zone, actual,
            "2026-03-02T08:00:00, 2026-03-06T08:00:00, 2026-03-02T08:00:00, 2026-03-06T07:59:59",
            "2026-03-07T08:00:00", Complete, 1, 5);
        row("finished a second late", zone, actual,
            "2026-03-02T08:00:00, 2026-03-06T08:00:00, 2026-03-02T08:00:00, 2026-03-06T08:00:01",
            "2026-03-07T08:00:00", Complete, 1, 6);
        row("before 1970, finished within the second", zone, actual,
            "1969-03-02T08:00:00, 1969-03-06T08:00:00.900, 1969-03-02T08:00:00, 1969-03-06T08:00:00.100",
            "1969-03-07T08:00:00", Complete, 1, 4);
    }
    void asItWent() { check(); }

    void missingActualDates_data()
    {
        addColumns();
        const QByteArray zone = "Asia/Shanghai";
        row("no dates", zone, actual, "", "2030-01-01T00:00:00", Absent, 0, 0);
        row("no dates, 100 %", zone, actual, ",,,,100", "2030-01-01T00:00:00", Absent, 0, 0);
        row("no dates, 50 %", zone, reported, ",,,,50", "2030-01-01T00:00:00", Absent, 0, 0);
        row("no planned dates, started: by progress", zone, actual, ",,2026-03-02T08:00:00,,30",
            "2026-03-05T08:00:00", Growing, 0.3, 2);
        row("no planned dates, finished", zone, actual, ",,2026-03-02T08:00:00, 2026-03-04T08:00:00",
            "2026-03-04T08:00:00", Complete, 1, 4);
        row("no planned start", zone, actual, ",2026-03-06T08:00:00", "2026-03-07T08:00:00", Absent, 0, 0);
        row("no planned start, started, late", zone, actual, ",2026-03-06T08:00:00,2026-03-02T08:00:00,,20",
            "2026-03-07T08:00:00", Growing, 0.2, 3);
        row("no planned finish is never late", zone, actual, "2026-03-02T08:00:00,,2026-03-02T08:00:00,,20",
            "2027-03-07T08:00:00", Growing, 0.2, 2);
        row("no planned finish: neither ahead nor late", zone, actual,
            "2026-03-02T08:00:00,,2026-03-02T08:00:00,2026-03-09T08:00:00", "2026-03-09T08:00:00", Complete,
            1, 4);
        row("no actual start: the planned one", zone, actual,
            "2026-03-02T08:00:00, 2026-03-06T08:00:00,, 2026-03-04T08:00:00", "2026-03-03T08:00:00", Growing,
            0.5, 2);
        row("no actual start and finished before the planned", zone, actual,
            "2026-03-02T08:00:00, 2026-03-06T08:00:00,, 2026-03-01T08:00:00", "2026-03-01T08:00:00", Complete,
            1, 5);
        row("no start at all", zone, actual, ",,,2026-03-04T08:00:00", "2026-03-04T07:59:59", Absent, 0, 0);
        row("no start at all, finished", zone, actual, ",,,2026-03-04T08:00:00", "2026-03-04T08:00:00",
            Complete, 1, 4);
        row("progress without a start: as planned", zone, actual,
            "2026-03-02T08:00:00, 2026-03-06T08:00:00,,,10", "2026-03-04T08:00:00", Growing, 0.5, 2);
        row("100 % without a finish: at the planned", zone, actual,
            "2026-03-02T08:00:00, 2026-03-06T08:00:00, 2026-03-02T08:00:00,,100", "2026-03-06T08:00:00",
            Complete, 1, 4);
        row("100 % without a finish, a second before", zone, actual,
            "2026-03-02T08:00:00, 2026-03-06T08:00:00, 2026-03-02T08:00:00,,100", "2026-03-06T07:59:59",
            Growing, 1.0 - 1.0 / (4 * 86400), 2);
        row("100 % without a finish, started after the planned one", zone, actual,
            "2026-03-02T08:00:00, 2026-03-06T08:00:00, 2026-03-07T08:00:00,,100", "2026-03-07T08:00:00",
            Complete, 1, 6);
        row("100 % without any finish", zone, actual, "2026-03-02T08:00:00,,,,100", "2026-03-02T08:00:00",
            Complete, 1, 4);
        row("100 % with a finish alone", zone, actual, ",2026-03-06T08:00:00,,,100", "2026-03-06T08:00:00",
            Complete, 1, 4);
        row("actual finish before the actual start", zone, actual,
            ",,2026-03-06T08:00:00, 2026-03-02T08:00:00", "2026-03-04T08:00:00", Complete, 1, 4);
        row("milestone done a day late", zone, actual,
            "2026-03-02T08:00:00, 2026-03-02T08:00:00, 2026-03-03T08:00:00, 2026-03-03T08:00:00",
            "2026-03-03T08:00:00", Complete, 1, 6);
        row("milestone not done a second after", zone, actual, "2026-03-02T08:00:00, 2026-03-02T08:00:00",
            "2026-03-02T08:00:01", Absent, 0, 1);
        row("milestone started and never finished", zone, reported,
            "2026-03-02T08:00:00, 2026-03-02T08:00:00, 2026-03-02T08:00:00,,50", "2026-03-02T08:00:01",
            Growing, 0.5, 3);
        row("more than 100 % is 100 %", zone, planned, "2026-03-02T08:00:00,,,,250", "2026-03-05T08:00:00",
            Growing, 1, 2);
        row("less than nothing is nothing", zone, planned, "2026-03-02T08:00:00,,,,-1", "2026-03-05T08:00:00",
            Growing, 0, 2);
    }
    void missingActualDates() { check(); }

    // In Berlin 29 March 2026 has 23 hours and 25 October 25; Shanghai has no such days.
    void daysOfClockChanges_data()
    {
        addColumns();
        const char* const spring = "2026-03-29T00:00:00, 2026-03-30T00:00:00";
        const char* const autumn = "2026-10-25T00:00:00, 2026-10-26T00:00:00";
        row("short day, noon", "Europe/Berlin", planned, spring, "2026-03-29T12:00:00", Growing, 11.0 / 23,
            2);
        row("no short day in Shanghai", "Asia/Shanghai", planned, spring, "2026-03-29T12:00:00", Growing, 0.5,
            2);
        row("long day, noon", "Europe/Berlin", planned, autumn, "2026-10-25T12:00:00", Growing, 13.0 / 25, 2);
        row("no long day in Shanghai", "Asia/Shanghai", planned, autumn, "2026-10-25T12:00:00", Growing, 0.5,
            2);
        row("short day, last second", "Europe/Berlin", planned, spring, "2026-03-29T23:59:59", Growing,
            1.0 - 1.0 / (23 * 3600), 2);
        row("short day is over", "Europe/Berlin", planned, spring, "2026-03-30T00:00:00", Complete, 1, 4);
        row("a start in the hour that is skipped", "Europe/Berlin", planned,
            "2026-03-29T02:30:00, 2026-03-29T05:30:00", "2026-03-29T04:30:00", Growing, 0.5, 2);
        row("before a start in the hour that is skipped", "Europe/Berlin", planned,
            "2026-03-29T02:30:00, 2026-03-29T05:30:00", "2026-03-29T01:59:59", Absent, 0, 0);
        row("late across the change, to the second", "Europe/Berlin", actual,
            "2026-03-28T08:00:00, 2026-03-29T03:00:00, 2026-03-28T08:00:00", "2026-03-29T03:00:01", Growing,
            1, 3);
        row("not yet late across the change", "Europe/Berlin", actual,
            "2026-03-28T03:00:00, 2026-03-29T03:00:00, 2026-03-28T04:00:00", "2026-03-29T03:00:00", Growing,
            22.0 / 23, 2);
        row("finished to the second on the long day", "Europe/Berlin", actual,
            "2026-10-25T00:00:00, 2026-10-25T17:00:00, 2026-10-25T00:00:00, 2026-10-25T17:00:00",
            "2026-10-25T17:00:00", Complete, 1, 4);
    }
    void daysOfClockChanges() { check(); }

    void aMilestoneNeedsNoFinish()
    {
        KvPlanNode node = task(QStringLiteral("2026-03-02T08:00:00"));
        node.milestone = true;
        QCOMPARE(simulationState(node, planned, node.startDate.addSecs(-1)).presence, Absent);
        QCOMPARE(simulationState(node, planned, node.startDate).presence, Complete);
    }

    // Whatever its dates are, a milestone is reached at its finish and does not grow before.
    void aMilestoneIsOneMoment()
    {
        KvPlanNode node = task(QStringLiteral("2026-03-02T08:00:00, 2026-03-06T08:00:00, 2026-03-03T08:00:00,"
                                              "2026-03-07T08:00:00, 100"));
        node.milestone = true;
        QCOMPARE(simulationState(node, planned, node.finishDate.addSecs(-1)).presence, Absent);
        QCOMPARE(simulationState(node, planned, node.finishDate).presence, Complete);
        const SimulationState due = simulationState(node, actual, node.finishDate);
        QCOMPARE(due.presence, Absent);
        QCOMPARE(due.state, int(TaskState::NotStarted));
        const SimulationState overdue = simulationState(node, actual, node.finishDate.addSecs(1));
        QCOMPARE(overdue.presence, Absent);
        QCOMPARE(overdue.state, int(TaskState::NotStartedLate));
        const SimulationState reached = simulationState(node, actual, node.actualFinishDate);
        QCOMPARE(reached.presence, Complete);
        QCOMPARE(reached.state, int(TaskState::FinishedLate));
    }

    void hidden_data()
    {
        QTest::addColumn<int>("hideType");
        QTest::addColumn<QString>("hideDate");
        QTest::addColumn<QString>("moment");
        QTest::addColumn<SimulationPresence>("presence");
        const QString tenth = QStringLiteral("2026-03-10T08:00:00");
        const QString fourth = QStringLiteral("2026-03-04T08:00:00");
        QTest::newRow("never") << 0 << QString() << QStringLiteral("2040-01-01T00:00:00") << Complete;
        QTest::newRow("a second before") << 0 << tenth << QStringLiteral("2026-03-10T07:59:59") << Complete;
        QTest::newRow("from the date on") << 0 << tenth << tenth << Hidden;
        QTest::newRow("ever after") << 0 << tenth << QStringLiteral("2040-01-01T00:00:00") << Hidden;
        QTest::newRow("while it grows, at once") << 0 << fourth << fourth << Hidden;
        QTest::newRow("type 1: not while it grows") << 1 << fourth << fourth << Growing;
        QTest::newRow("type 1: when it is finished")
            << 1 << fourth << QStringLiteral("2026-03-06T08:00:00") << Hidden;
        QTest::newRow("type 1: after it is finished, on the date")
            << 1 << tenth << QStringLiteral("2026-03-10T07:59:59") << Complete;
        QTest::newRow("type 1: on the date") << 1 << tenth << tenth << Hidden;
        QTest::newRow("type 1 without a date") << 1 << QString() << tenth << Complete;
        QTest::newRow("a type that is not known: at once") << 7 << fourth << fourth << Hidden;
        QTest::newRow("a negative type: at once") << -1 << fourth << fourth << Hidden;
    }
    void hidden()
    {
        QFETCH(int, hideType);
        QFETCH(QString, hideDate);
        QFETCH(QString, moment);
        KvPlanNode node = task(QStringLiteral("2026-03-02T08:00:00, 2026-03-06T08:00:00"));
        node.entityHideType = hideType;
        node.entityHideDate = date(hideDate);
        const SimulationState state = simulationState(node, planned, date(moment));
        QTEST(state.presence, "presence");
        if (state.presence == Hidden)
            QCOMPARE(state.share, 0.0);
    }

    void aTaskOutsideTheSimulationIsHidden()
    {
        KvPlanNode node = task(QStringLiteral("2026-03-02T08:00:00, 2026-03-06T08:00:00"));
        node.displaySimulation = false;
        for (const char* const moment :
             {"", "2026-03-01T00:00:00", "2026-03-04T00:00:00", "2027-03-01T00:00:00"})
            QCOMPARE(simulationState(node, planned, date(QString::fromLatin1(moment))).presence, Hidden);
    }

    void directions_data()
    {
        QTest::addColumn<int>("effect");
        QTest::addColumn<int>("growth");
        for (const int known : {0, 2, 4, 6, 8, 10, 12, 13})
            QTest::addRow("code %d", known) << known << known;
        for (const int unknown : {-1, 1, 3, 5, 7, 9, 11, 14, 1000, -1000})
            QTest::addRow("unknown code %d", unknown) << unknown << int(Kv::GrowBottomToTop);
    }
    void directions()
    {
        QFETCH(int, effect);
        QFETCH(int, growth);
        KvPlanNode node = task(QStringLiteral("2026-03-02T08:00:00, 2026-03-06T08:00:00"));
        node.dynamicEffect = effect;
        QCOMPARE(int(simulationState(node, planned, node.startDate).growth), growth);
    }

    void whatDisappearsStandsFirst_data()
    {
        QTest::addColumn<QString>("moment");
        QTest::addColumn<SimulationPresence>("presence");
        QTest::addColumn<double>("share");
        QTest::addColumn<int>("state");
        QTest::newRow("before") << QStringLiteral("2026-03-02T07:59:59") << Complete << 1.0 << 0;
        QTest::newRow("at the start") << QStringLiteral("2026-03-02T08:00:00") << Growing << 1.0 << 2;
        QTest::newRow("a quarter gone") << QStringLiteral("2026-03-03T08:00:00") << Growing << 0.75 << 2;
        QTest::newRow("gone") << QStringLiteral("2026-03-06T08:00:00") << Absent << 0.0 << 4;
    }
    void whatDisappearsStandsFirst()
    {
        QFETCH(QString, moment);
        KvPlanNode node = task(QStringLiteral("2026-03-02T08:00:00, 2026-03-06T08:00:00"));
        node.dynamicEffect = Kv::GrowDisappear;
        const SimulationState state = simulationState(node, planned, date(moment));
        QTEST(state.presence, "presence");
        QTEST(state.share, "share");
        QTEST(state.state, "state");
    }

    // Between two neighbouring changes nothing but the share moves, and at each something does.
    void changesAreAllThereAre()
    {
        const QStringList dates{QString(), QStringLiteral("2026-03-02T08:00:00"),
                                QStringLiteral("2026-03-04T08:00:00"), QStringLiteral("2026-03-06T08:00:00")};
        int looked = 0;
        for (int i = 0; i < 4 * 4 * 4 * 4 * 3 * 3; ++i) {
            const auto pick = [&dates, i](int place) {
                return date(dates.at((i >> (2 * place)) % 4));
            };
            KvPlanNode node;
            node.startDate = pick(0);
            node.finishDate = pick(1);
            node.actualStartDate = pick(2);
            node.actualFinishDate = pick(3);
            node.finishedPercentage = (i >> 8) % 3 * 50.0;
            if ((i >> 8) / 3 > 0)
                node.entityHideDate = date(dates.at((i >> 8) / 3));
            for (const SimulationRule& rule : {planned, actual, reported}) {
                const SimulationCourse course(node, rule);
                QVector<qint64> changes = course.changes();
                std::sort(changes.begin(), changes.end());
                changes.append(SimulationCourse::never);
                qint64 from = SimulationCourse::always;
                for (const qint64 until : qAsConst(changes)) {
                    const SimulationState atFirst = course.at(from);
                    for (const qint64 time : {from / 2 + until / 2, until - 1}) {
                        const SimulationState later = course.at(std::max(from, time));
                        if (from == until)
                            break;
                        QCOMPARE(later.presence, atFirst.presence);
                        QCOMPARE(later.state, atFirst.state);
                        ++looked;
                    }
                    from = until;
                }
            }
        }
        QVERIFY(looked > 10000);
    }
};

QTEST_GUILESS_MAIN(StateTest)
#include "StateTest.moc"
