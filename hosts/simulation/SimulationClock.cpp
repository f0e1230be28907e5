#include "SimulationClock.h"

#include "SimulationState.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double millisecondsPerDay = 24.0 * 60.0 * 60.0 * 1000.0;

} // namespace

SimulationPeriod planPeriod(const QVector<const KvPlanNode*>& nodes)
{
    constexpr qint64 never = SimulationCourse::never;
    qint64 first = never;
    qint64 last = SimulationCourse::always;
    for (const KvPlanNode* const node : nodes) {
        if (!node->displaySimulation)
            continue;
        for (const QDateTime* const date :
             {&node->startDate, &node->finishDate, &node->actualStartDate, &node->actualFinishDate}) {
            const qint64 time = simulationTime(*date, never);
            if (time == never)
                continue;
            first = std::min(first, time);
            last = std::max(last, time);
        }
    }
    if (first == never)
        return {};
    return {QDateTime::fromMSecsSinceEpoch(first), QDateTime::fromMSecsSinceEpoch(last)};
}

SimulationPeriod simulatedPeriod(const SimulationPeriod& plan, const TimeLineSet& set)
{
    if (set.UsePlanTime)
        return plan;
    SimulationPeriod period{set.TimeStart.isValid() ? set.TimeStart : plan.start,
                            set.TimeFinish.isValid() ? set.TimeFinish : plan.finish};
    if (period.isValid())
        period.finish = std::max(period.start, period.finish);
    return period;
}

void SimulationClock::setPeriod(const SimulationPeriod& period)
{
    const QDateTime before = date();
    m_period = period;
    m_elapsed = 0.0;
    if (before.isValid())
        setDate(before);
    if (!period.isValid())
        m_isPlaying = false;
}

void SimulationClock::setSpeed(double daysPerSecond)
{
    m_speed = std::isnan(daysPerSecond) ? TimeLineSet().DayForS : std::clamp(daysPerSecond, slowest, fastest);
}

void SimulationClock::play()
{
    if (!m_period.isValid())
        return;
    if (isAtEnd())
        m_elapsed = 0.0;
    m_isPlaying = true;
}

void SimulationClock::setDate(const QDateTime& date)
{
    if (m_period.isValid() && date.isValid())
        m_elapsed = std::clamp(static_cast<double>(m_period.start.msecsTo(date)), 0.0, length());
}

void SimulationClock::step(double days)
{
    pause();
    m_elapsed = std::clamp(m_elapsed + days * millisecondsPerDay, 0.0, length());
}

bool SimulationClock::advance(qint64 milliseconds)
{
    if (!m_isPlaying || milliseconds <= 0)
        return false;
    const double before = m_elapsed;
    m_elapsed += static_cast<double>(milliseconds) / 1000.0 * m_speed * millisecondsPerDay;
    if (isAtEnd()) {
        if (m_isLooping && length() > 0.0) {
            m_elapsed = std::fmod(m_elapsed, length());
        } else {
            m_elapsed = length();
            m_isPlaying = false;
        }
    }
    return m_elapsed != before;
}

QDateTime SimulationClock::date() const
{
    return m_period.isValid() ? m_period.start.addMSecs(std::llround(m_elapsed)) : QDateTime();
}

double SimulationClock::position() const
{
    return length() > 0.0 ? m_elapsed / length() : 1.0;
}

double SimulationClock::length() const
{
    return m_period.isValid() ? static_cast<double>(m_period.start.msecsTo(m_period.finish)) : 0.0;
}
