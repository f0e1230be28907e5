#include "SimulationTimeline.h"

#include <algorithm>
#include <numeric>
#include <tuple>

void SimulationTimeline::setTasks(const QVector<const KvPlanNode*>& nodes, const SimulationRule& rule)
{
    *this = SimulationTimeline();
    m_tasks.reserve(nodes.size());
    for (const KvPlanNode* const node : nodes) {
        const int task = m_tasks.size();
        m_tasks.append({SimulationCourse(*node, rule), {}});
        addLinks(*node, task);
        const QVector<qint64> times = m_tasks.at(task).course.changes();
        if (m_tasks.at(task).elements.isEmpty())
            continue;
        for (const qint64 time : times)
            m_events.append({time, task});
    }
    std::sort(m_events.begin(), m_events.end(), [](const Event& a, const Event& b) {
        return std::tie(a.time, a.task) < std::tie(b.time, b.task);
    });
    for (Element& element : m_elements)
        addStretches(element);
}

int SimulationTimeline::findOrAdd(const QString& id)
{
    const auto found = m_byId.constFind(id);
    if (found != m_byId.constEnd())
        return *found;
    m_byId.insert(id, m_elements.size());
    m_elements.append(Element());
    m_elements.last().id = id;
    return m_elements.size() - 1;
}

void SimulationTimeline::addLinks(const KvPlanNode& node, int task)
{
    for (const QStringList& ids : node.links) {
        for (const QString& id : ids) {
            const int element = findOrAdd(id);
            QVector<int>& tasks = m_elements[element].tasks;
            if (!tasks.isEmpty() && tasks.last() == task)
                continue; // named twice
            tasks.append(task);
            m_tasks[task].elements.append(element);
        }
    }
}

void SimulationTimeline::addStretches(Element& element) const
{
    struct Step
    {
        qint64 time;
        bool hides;
        qint64 finish;
        int task;
    };
    QVector<Step> steps;
    int first = none;
    for (const int task : qAsConst(element.tasks)) {
        const SimulationCourse& course = m_tasks.at(task).course;
        if (!course.isShown())
            continue;
        if (first == none || course.expectedStart() < m_tasks.at(first).course.expectedStart())
            first = task;
        if (course.start() != SimulationCourse::never)
            steps.append({course.start(), false, course.finish(), task});
        if (course.hidden() != SimulationCourse::never)
            steps.append({course.hidden(), true, 0, task});
    }
    if (first == none) {
        element.stretches.push_back({SimulationCourse::always, element.tasks.first(), 0.0, true});
        return;
    }
    std::sort(steps.begin(), steps.end(), [](const Step& a, const Step& b) {
        return std::tie(a.time, a.hides, a.finish, a.task) < std::tie(b.time, b.hides, b.finish, b.task);
    });
    Stretch stretch{SimulationCourse::always, first, 0.0, false};
    element.stretches.push_back(stretch);
    for (const Step& step : qAsConst(steps)) {
        if (!step.hides)
            stretch = {step.time, step.task, stateIn(stretch, step.time).share, false};
        stretch.from = step.time;
        stretch.isHidden = step.hides;
        element.stretches.push_back(stretch);
    }
}

SimulationState SimulationTimeline::stateIn(const Stretch& stretch, qint64 time) const
{
    SimulationState state = m_tasks.at(stretch.task).course.at(time);
    if (stretch.isHidden) {
        state.presence = SimulationPresence::Hidden;
        state.share = 0.0;
    } else if (state.presence != SimulationPresence::Hidden && state.growth != Kv::GrowDisappear &&
               stretch.least > 0.0 && state.share <= stretch.least) {
        state.share = stretch.least;
        state.presence = stretch.least < 1.0 ? SimulationPresence::Growing : SimulationPresence::Complete;
    }
    return state;
}

SimulationState SimulationTimeline::stateAt(const Element& element, qint64 time) const
{
    const auto next =
        std::upper_bound(element.stretches.begin() + 1, element.stretches.end(), time,
                         [](qint64 wanted, const Stretch& stretch) { return wanted < stretch.from; });
    return stateIn(*(next - 1), time);
}

SimulationState SimulationTimeline::stateAt(int element, const QDateTime& date) const
{
    return stateAt(m_elements.at(element), simulationTime(date, SimulationCourse::always));
}

const QVector<int>& SimulationTimeline::moveTo(const QDateTime& date)
{
    const qint64 time = simulationTime(date, SimulationCourse::always);
    m_changed.clear();
    ++m_visit;
    if (m_isFresh) {
        m_isFresh = false;
        for (int i = 0; i < m_elements.size(); ++i)
            look(i, time);
        m_changed.resize(m_elements.size());
        std::iota(m_changed.begin(), m_changed.end(), 0);
    }
    for (; m_next < m_events.size() && m_events.at(m_next).time <= time; ++m_next)
        lookAtTask(m_events.at(m_next).task, time);
    for (; m_next > 0 && m_events.at(m_next - 1).time > time; --m_next)
        lookAtTask(m_events.at(m_next - 1).task, time);
    const QVector<int> growing = m_growing; // some may stop
    for (const int element : growing)
        look(element, time);
    return m_changed;
}

void SimulationTimeline::lookAtTask(int task, qint64 time)
{
    for (const int element : qAsConst(m_tasks.at(task).elements))
        look(element, time);
}

void SimulationTimeline::look(int index, qint64 time)
{
    Element& element = m_elements[index];
    if (element.visit == m_visit)
        return;
    element.visit = m_visit;
    const SimulationState state = stateAt(element, time);
    if (state == element.state)
        return;
    element.state = state;
    setGrowing(index, state.presence == SimulationPresence::Growing);
    m_changed.append(index);
}

void SimulationTimeline::setGrowing(int index, bool isGrowing)
{
    Element& element = m_elements[index];
    if (isGrowing == (element.growingAt != none))
        return;
    if (isGrowing) {
        element.growingAt = m_growing.size();
        m_growing.append(index);
        return;
    }
    m_elements[m_growing.last()].growingAt = element.growingAt;
    m_growing[element.growingAt] = m_growing.last();
    m_growing.removeLast();
    element.growingAt = none;
}
