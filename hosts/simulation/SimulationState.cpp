#include "SimulationState.h"

#include <algorithm>

namespace {

// The codes of entityHideType that mean something here; any other hides at once too.
constexpr int hideWhenFinished = 1;

constexpr qint64 millisecondsPerSecond = 1000;
constexpr qint64 millisecondsPerDay = 24 * 60 * 60 * millisecondsPerSecond;

qint64 secondOf(qint64 time)
{
    const qint64 second = time / millisecondsPerSecond;
    return time % millisecondsPerSecond < 0 ? second - 1 : second;
}

int finishedState(qint64 finish, qint64 planned)
{
    if (planned == SimulationCourse::never || secondOf(finish) == secondOf(planned))
        return TaskState::Finished;
    return finish < planned ? TaskState::FinishedAhead : TaskState::FinishedLate;
}

} // namespace

qint64 simulationTime(const QDateTime& date, qint64 missing)
{
    if (date.isNull() || !date.date().isValid())
        return missing;
    if (date.isValid())
        return date.toMSecsSinceEpoch();
    // The clock change skips it: as long after the same time of the day before as days are.
    return QDateTime(date.date().addDays(-1), date.time()).toMSecsSinceEpoch() + millisecondsPerDay;
}

Kv::QGrowthType growthOfEffect(int dynamicEffect)
{
    switch (dynamicEffect) {
    case Kv::GrowFrontToBack:
    case Kv::GrowBackToFront:
    case Kv::GrowLeftToRight:
    case Kv::GrowRightToLeft:
    case Kv::GrowTopToBottom:
    case Kv::GrowBottomToTop:
    case Kv::GrowAppear:
    case Kv::GrowDisappear:
        return static_cast<Kv::QGrowthType>(dynamicEffect);
    default:
        return Kv::GrowBottomToTop;
    }
}

SimulationState simulationState(const KvPlanNode& node, const SimulationRule& rule, const QDateTime& moment)
{
    return SimulationCourse(node, rule).at(simulationTime(moment, SimulationCourse::always));
}

SimulationCourse::SimulationCourse(const KvPlanNode& node, const SimulationRule& rule)
    : m_growth(growthOfEffect(node.dynamicEffect))
{
    qint64 plannedStart = simulationTime(node.startDate, never);
    qint64 plannedFinish = simulationTime(node.finishDate, never);
    if (node.milestone && plannedFinish == never)
        plannedFinish = plannedStart;
    else if (node.milestone)
        plannedStart = plannedFinish;
    m_most = std::clamp(node.finishedPercentage / 100.0, 0.0, 1.0);
    if (rule.dates == SimulationDates::Planned)
        takePlanned(plannedStart, plannedFinish);
    else
        takeActual(node, plannedStart, plannedFinish);
    if (m_growsUntil != never && rule.share == SimulationShare::ByTime)
        m_most = 1.0;
    if (!node.displaySimulation) {
        m_hidden = always;
        return;
    }
    m_hidden = simulationTime(node.entityHideDate, never);
    if (node.entityHideType == hideWhenFinished)
        m_hidden = std::max(m_hidden, m_finish);
}

void SimulationCourse::takePlanned(qint64 start, qint64 finish)
{
    m_start = std::min(start, finish);
    m_finish = finish;
    m_growsUntil = finish;
    if (finish != never)
        m_most = 1.0; // a plan knows no progress
}

void SimulationCourse::takeActual(const KvPlanNode& node, qint64 plannedStart, qint64 plannedFinish)
{
    m_dueStart = plannedStart;
    m_dueFinish = plannedFinish;
    m_start = simulationTime(node.actualStartDate, never);
    m_finish = simulationTime(node.actualFinishDate, never);
    if (m_start == never && node.finishedPercentage > 0.0)
        m_start = plannedStart;
    if (m_finish == never && node.finishedPercentage >= 100.0)
        m_finish = plannedFinish == never ? m_start
                   : m_start == never     ? plannedFinish
                                          : std::max(plannedFinish, m_start);
    if (m_finish != never) {
        if (m_start == never)
            m_start = plannedStart;
        m_start = node.milestone ? m_finish : std::min(m_start, m_finish);
        m_growsUntil = m_finish;
        m_most = 1.0;
        m_finishedState = finishedState(m_finish, plannedFinish);
    } else if (m_start != never && plannedStart != never && plannedFinish > plannedStart &&
               plannedFinish != never) {
        m_growsUntil = m_start + (plannedFinish - plannedStart);
    }
}

double SimulationCourse::doneAt(qint64 time) const
{
    if (m_growsUntil == never)
        return m_most;
    if (m_growsUntil <= m_start)
        return m_most;
    const double share = static_cast<double>(time - m_start) / static_cast<double>(m_growsUntil - m_start);
    return std::min(std::min(share, 1.0), m_most);
}

SimulationState SimulationCourse::at(qint64 time) const
{
    SimulationState state;
    state.growth = m_growth;
    if (!isShown()) {
        state.presence = SimulationPresence::Hidden;
        return state;
    }
    double built = 0.0;
    if (time >= m_finish && m_finish != never) {
        state.state = m_finishedState;
        state.presence = SimulationPresence::Complete;
        built = 1.0;
    } else if (time >= m_start && m_start != never) {
        state.state = time > m_dueFinish ? TaskState::InProgressLate : TaskState::InProgress;
        state.presence = SimulationPresence::Growing;
        built = doneAt(time);
    } else {
        state.state = time > m_dueStart ? TaskState::NotStartedLate : TaskState::NotStarted;
    }
    // What disappears stands until its task starts, and is gone when it is finished.
    if (m_growth == Kv::GrowDisappear) {
        built = 1.0 - built;
        if (state.presence != SimulationPresence::Growing)
            state.presence = built > 0.0 ? SimulationPresence::Complete : SimulationPresence::Absent;
    }
    state.share = built;
    if (time >= m_hidden && m_hidden != never) {
        state.presence = SimulationPresence::Hidden;
        state.share = 0.0;
    }
    return state;
}

QVector<qint64> SimulationCourse::changes() const
{
    QVector<qint64> times;
    if (!isShown())
        return times;
    for (const qint64 time : {m_start, m_finish, m_hidden}) {
        if (time != never)
            times.append(time);
    }
    // Late from the first millisecond after.
    if (m_dueStart < m_start)
        times.append(m_dueStart + 1);
    if (m_start != never && m_dueFinish < m_finish)
        times.append(m_dueFinish + 1);
    return times;
}
