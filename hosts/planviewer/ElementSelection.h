#pragma once

#include <SimulatedBuilding.h>

#include <QtCore/QObject>

class PlanPage;
class SimulationView;

/// Selected tasks and elements go together: a click on an element selects the tasks that name it, and
/// elements of selected tasks stand out.
class ElementSelection : public QObject
{
    Q_OBJECT

public:
    /// @param page whose tasks are selected; outlives this
    explicit ElementSelection(PlanPage* page, QObject* parent = nullptr);

    /// The model that @p view shows, null for none, and @p building that knows its tasks, of which so many
    /// elements are named; view and building are kept.
    void setBuilding(SimulationView* view, const std::shared_ptr<const BuildingModel>& model,
                     const SimulatedBuilding* building, int namedCount);

    /// The user clicked an element, or beside all with BuildingModel::none; its tasks become the selected
    /// ones, the first of them the current one, or join them.
    void select(int element, bool isAdding);
    /// Has the elements of the selected tasks, and of all below them, stand out.
    void highlightTasks();
    /// Selects an element and has it alone stand out. Nothing happens when the model has none of that name.
    void goTo(const QString& id);

Q_SIGNALS:
    /// Something the user should know.
    void told(const QString& text);

private:
    void highlight(const QVector<int>& elements);

    PlanPage* m_page;
    SimulationView* m_view = nullptr;
    std::shared_ptr<const BuildingModel> m_model;
    const SimulatedBuilding* m_building = nullptr;
    QVector<int> m_highlighted;
    int m_namedCount = 0;
};
