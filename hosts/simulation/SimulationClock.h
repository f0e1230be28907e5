#pragma once

#include <model/KvPlanNode.h>
#include <setting/KvTimeLineSet.h>

#include <QtCore/QDateTime>
#include <QtCore/QVector>

/// A stretch of time; null dates when there is none.
struct SimulationPeriod
{
    QDateTime start;
    QDateTime finish; ///< not before the start

    bool isValid() const { return start.isValid() && finish.isValid(); }
};

/// From the first to the last of the planned and actual dates of the tasks that are part of the simulation.
SimulationPeriod planPeriod(const QVector<const KvPlanNode*>& nodes);

/// The period to play: the plan's own, or with UsePlanTime off that of the settings, an end that they lack
/// being the plan's. A finish before the start is taken for the start.
SimulationPeriod simulatedPeriod(const SimulationPeriod& plan, const TimeLineSet& set);

/// The clock of the playback. It does not run by itself: whoever has a timer tells it how much time has gone
/// by, so that nothing here waits. A day of the schedule is 24 hours, also when clocks are changed.
class SimulationClock
{
public:
    /// Speeds in days of the schedule per second.
    static constexpr double slowest = 0.01;
    static constexpr double fastest = 365.0;

    /// Stays at its date if that lies in the period, and goes to the nearer end otherwise; to the start when
    /// there was no period before.
    void setPeriod(const SimulationPeriod& period);
    const SimulationPeriod& period() const { return m_period; }
    /// A speed out of range counts as the nearest in range, one that is no number as the default of
    /// TimeLineSet.
    void setSpeed(double daysPerSecond);
    double speed() const { return m_speed; }
    /// Whether it begins anew at the end.
    void setLooping(bool isLooping) { m_isLooping = isLooping; }
    bool isLooping() const { return m_isLooping; }

    /// Starts to run; from the period's start when it is at its end. Does nothing without a period.
    void play();
    void pause() { m_isPlaying = false; }
    bool isPlaying() const { return m_isPlaying; }

    /// Goes to a date, or the nearer end of the period.
    void setDate(const QDateTime& date);
    /// Pauses, and goes so many days back or forth, not beyond the period.
    void step(double days);
    /// So much time has gone by. Moves the date while it plays; at the end of the period it pauses, or begins
    /// anew when it is looping. @return whether the date is another.
    bool advance(qint64 milliseconds);

    /// Null without a period.
    QDateTime date() const;
    /// Where in the period, 0 to 1; 1 in a period without length.
    double position() const;
    bool isAtEnd() const { return m_elapsed >= length(); }

private:
    double length() const; // milliseconds

    SimulationPeriod m_period;
    double m_speed = TimeLineSet().DayForS;
    double m_elapsed = 0.0; // milliseconds of the schedule, fractions of slow speeds included
    bool m_isPlaying = false;
    bool m_isLooping = false;
};
