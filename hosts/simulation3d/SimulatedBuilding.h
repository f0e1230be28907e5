#pragma once

#include "ElementLooks.h"

#include <SimulationColours.h>
#include <SimulationTimeline.h>

#include <memory>

/// The elements of a building along the tasks that name them: tells the looks of a view what to become at a
/// date, and touches only those that change.
class SimulatedBuilding
{
public:
    /// What is painted how.
    struct Paint
    {
        TimeLineSet set;
        QList<QColor> colours;

        bool operator==(const Paint& other) const;
    };

    /// What is not painted by state, and geometry that no task names.
    static QColor material() { return {190, 190, 190}; }

    /// As SimulationTimeline::setTasks(). The next show() writes all looks.
    void setTasks(const QVector<const KvPlanNode*>& nodes, const SimulationRule& rule);
    /// Null for none. The next show() writes all looks.
    void setModel(const std::shared_ptr<const BuildingModel>& model);
    const SimulationTimeline& timeline() const { return m_timeline; }

    /// Writes how elements look at a date: those that look otherwise than at the date before, and all of them
    /// when tasks, model, paint or the looks themselves are others.
    void show(const QDateTime& date, const Paint& paint, ElementLooks& looks);

    /// The element of the model that the element of the time line is; BuildingModel::none without geometry.
    int elementOf(int simulated) const { return m_elements.at(simulated); }
    /// Positions of the tasks that name an element of the model.
    QVector<int> tasksOf(int element) const;
    /// Elements of the model that a task names.
    QVector<int> elementsOf(int task) const;

private:
    void match();
    void write(int simulated, const Paint& paint, ElementLooks& looks) const;

    SimulationTimeline m_timeline;
    std::shared_ptr<const BuildingModel> m_model;
    QVector<int> m_elements;  // of the model, by those of the time line
    QVector<int> m_simulated; // the other way round
    Paint m_paint;
    const ElementLooks* m_looks = nullptr; // that were written last
};

/// All identifiers that tasks name.
QSet<QString> linkedElements(const QVector<const KvPlanNode*>& nodes);

/// Lifts each floor by the heights of those below it, times @p spread; what is on no floor stays.
/// @param heights of the floors of the model, from the lowest
void spreadFloors(const BuildingModel& model, const QVector<double>& heights, double spread,
                  ElementLooks& looks);
