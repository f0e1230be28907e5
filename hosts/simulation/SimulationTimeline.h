#pragma once

#include "SimulationState.h"

#include <QtCore/QHash>
#include <QtCore/QString>

#include <vector>

/// How the elements of a plan look along time: a cursor that is moved to any date, forwards and backwards,
/// and tells which elements look otherwise than before.
///
/// The rule for an element that several tasks name: it follows the task that started last (of several that
/// started at once the one that finishes later, then the later in the list). What stood of it when that task
/// started stays, unless the task takes it down (GrowDisappear). It is hidden when that task hides it, and
/// when another of its tasks hid it and none has started since. Before any has started, the one that starts
/// first, or should, tells. Tasks outside the simulation (displaySimulation) have no say; an element that has
/// no other is always hidden. Elements are told by their identifier alone, whichever model it stands under.
///
/// For n tasks that name m elements in all: setTasks() takes O((n + m) log(n + m)), a move O(k log k) for the
/// k elements whose tasks have a date between the two dates, and O(log m) for each that is growing. Nothing
/// is asked of all tasks on a move.
class SimulationTimeline
{
public:
    static constexpr int none = -1;

    /// Takes the tasks in reading order; their children are not looked at. The nodes are read within the call
    /// only. The cursor is before the first moveTo() afterwards.
    void setTasks(const QVector<const KvPlanNode*>& nodes, const SimulationRule& rule);

    int elementCount() const { return m_elements.size(); }
    /// In the order in which the tasks name them.
    const QString& elementId(int element) const { return m_elements.at(element).id; }
    /// None when no task names it.
    int elementOf(const QString& id) const { return m_byId.value(id, none); }
    /// Positions in the list given to setTasks(), ascending, each once.
    const QVector<int>& tasksOf(int element) const { return m_elements.at(element).tasks; }
    /// Elements that the task names, each once.
    const QVector<int>& elementsOf(int task) const { return m_tasks.at(task).elements; }
    int taskCount() const { return m_tasks.size(); }

    /// Moves the cursor and yields each element that looks otherwise than before, once. The first move after
    /// setTasks() yields all. An invalid date is before everything.
    const QVector<int>& moveTo(const QDateTime& date);
    /// How an element looks at the cursor.
    const SimulationState& stateOf(int element) const { return m_elements.at(element).state; }
    /// How an element looks at a date, wherever the cursor is.
    SimulationState stateAt(int element, const QDateTime& date) const;
    /// Elements that grow at the cursor, in no order.
    const QVector<int>& growing() const { return m_growing; }

private:
    /// From a time on, until the next stretch: which task tells, and what stays at least.
    struct Stretch
    {
        qint64 from = SimulationCourse::always;
        int task = none;
        double least = 0.0;
        bool isHidden = false;
    };
    struct Element
    {
        QString id;
        QVector<int> tasks;
        std::vector<Stretch> stretches;
        SimulationState state;
        int growingAt = none; // in m_growing
        int visit = 0;        // the last move that looked at it
    };
    struct Task
    {
        SimulationCourse course;
        QVector<int> elements;
    };
    struct Event
    {
        qint64 time;
        int task;
    };

    int findOrAdd(const QString& id);
    void addLinks(const KvPlanNode& node, int task);
    void addStretches(Element& element) const;
    SimulationState stateIn(const Stretch& stretch, qint64 time) const;
    SimulationState stateAt(const Element& element, qint64 time) const;
    void lookAtTask(int task, qint64 time);
    void look(int element, qint64 time);
    void setGrowing(int element, bool isGrowing);

    QVector<Element> m_elements;
    QHash<QString, int> m_byId;
    QVector<Task> m_tasks;
    QVector<Event> m_events; // by time
    QVector<int> m_growing;
    QVector<int> m_changed;
    int m_next = 0;        // the first event after the cursor
    bool m_isFresh = true; // not moved yet
    int m_visit = 0;
};
