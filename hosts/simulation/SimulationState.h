#pragma once

#include "TaskState.h"

#include <model/KvPlanNode.h>
#include <setting/KvGrowthType.h>

#include <QtCore/QVector>

/// Which of a task's dates the building follows.
enum class SimulationDates
{
    Planned, ///< the planned ones, as if all went well: states 0, 2 and 4 alone
    Actual,  ///< the actual ones, measured against the planned: all seven states
};

/// What an unfinished task has built, by its actual dates.
enum class SimulationShare
{
    ByTime,     ///< evenly over its planned length, from its actual start on
    ByProgress, ///< the same, and never more than the progress that was reported
};

struct SimulationRule
{
    SimulationDates dates = SimulationDates::Planned;
    SimulationShare share = SimulationShare::ByTime;
};

/// How much of an element stands.
enum class SimulationPresence
{
    Absent,   ///< nothing, as it is not built yet or was taken down
    Growing,  ///< a share
    Complete, ///< all
    Hidden,   ///< nothing, as it is not shown: neither solid nor as a hint of what is to come
};

struct SimulationState
{
    SimulationPresence presence = SimulationPresence::Absent;
    double share = 0.0; ///< what stands, 0 to 1: 0 when absent or hidden, 1 when complete
    int state = TaskState::NotStarted;
    Kv::QGrowthType growth = Kv::GrowBottomToTop;

    bool operator==(const SimulationState& other) const
    {
        return presence == other.presence && share == other.share && state == other.state &&
               growth == other.growth;
    }
    bool operator!=(const SimulationState& other) const { return !(*this == other); }
};

/// How the element of a task looks at a moment; asks nothing else, neither clock nor settings.
///
/// A task is started, finished and hidden from the very millisecond of the date on. It is late from the first
/// millisecond after a planned date that passed without its start or finish. Ahead of time or late is what
/// finished in another second than planned. An invalid @p moment is before everything.
///
/// Missing dates: a milestone, and a finish before the start, count as one moment, the finish. Without a
/// planned start the task is there from its planned finish on; without a planned finish it grows by the
/// progress that was reported, and is never late. A task reported with progress has started, at its planned
/// start if nothing else is known; one reported with 100 % has finished, at its planned finish, but not
/// before its actual start. A task without any date stays absent. One outside the simulation
/// (displaySimulation) is always hidden, with state 0.
SimulationState simulationState(const KvPlanNode& node, const SimulationRule& rule, const QDateTime& moment);

/// The direction of an effect code: the codes are those of Kv::QGrowthType. Any other, -1 (not set) among
/// them, is bottom to top.
Kv::QGrowthType growthOfEffect(int dynamicEffect);

/// What simulationState() needs of a task, worked out once. Times are milliseconds since 1970 UTC.
class SimulationCourse
{
public:
    static constexpr qint64 never = Q_INT64_C(0x7fffffffffffffff);
    static constexpr qint64 always = -never;

    SimulationCourse() = default;
    SimulationCourse(const KvPlanNode& node, const SimulationRule& rule);

    SimulationState at(qint64 time) const;
    /// When it starts by the dates of the rule; never when that is not known.
    qint64 start() const { return m_start; }
    /// When it is finished by the dates of the rule; never when that is not known.
    qint64 finish() const { return m_finish; }
    /// When it starts or should: start(), or the planned start of a task that has not started.
    qint64 expectedStart() const { return m_start != never ? m_start : m_dueStart; }
    /// From when on it is hidden; never when it is not, always when it is not part of the simulation.
    qint64 hidden() const { return m_hidden; }
    bool isShown() const { return m_hidden != always; }
    /// Times from which on the state is another, growing aside, in no order.
    QVector<qint64> changes() const;
    Kv::QGrowthType growth() const { return m_growth; }

private:
    void takePlanned(qint64 start, qint64 finish);
    void takeActual(const KvPlanNode& node, qint64 plannedStart, qint64 plannedFinish);
    double doneAt(qint64 time) const;

    qint64 m_start = never;
    qint64 m_finish = never;
    qint64 m_growsUntil = never; // the finish, or where an unfinished task would have it; never: unknown
    qint64 m_dueStart = never;   // a later start is late
    qint64 m_dueFinish = never;
    qint64 m_hidden = never;
    double m_most = 1.0; // share of an unfinished task
    int m_finishedState = TaskState::Finished;
    Kv::QGrowthType m_growth = Kv::GrowBottomToTop;
};

/// Milliseconds since 1970 UTC; @p missing when there is no date. A local time that a clock change skips
/// counts as the same distance after the change.
qint64 simulationTime(const QDateTime& date, qint64 missing);
