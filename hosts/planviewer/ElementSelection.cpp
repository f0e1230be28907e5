#include "ElementSelection.h"

#include "PlanPage.h"
#include "TaskModel.h"

#include <SimulationView.h>

#include <algorithm>

ElementSelection::ElementSelection(PlanPage* page, QObject* parent)
    : QObject(parent)
    , m_page(page)
{
}

void ElementSelection::setBuilding(SimulationView* view, const std::shared_ptr<const BuildingModel>& model,
                                   const SimulatedBuilding* building, int namedCount)
{
    if (model != m_model)
        m_highlighted.clear(); // a new model comes with new looks
    m_view = view;
    m_model = model;
    m_building = building;
    m_namedCount = namedCount;
}

void ElementSelection::select(int element, bool isAdding)
{
    if (!m_model)
        return;
    QVector<int> tasks;
    if (element != BuildingModel::none)
        tasks = m_building->tasksOf(element);
    if (isAdding)
        tasks = m_page->selectedTasks() + tasks;
    m_page->selectTasks(tasks);
    if (element != BuildingModel::none) {
        const QString& id = m_model->elements().at(element).id;
        Q_EMIT told(tasks.isEmpty() ? tr("Element %1: no task names it.").arg(id) : tr("Element %1").arg(id));
    }
}

// The whole building, as of the topmost task, has nothing that it would stand out from.
void ElementSelection::highlightTasks()
{
    if (!m_model)
        return;
    const TaskList& tasks = m_page->model()->tasks();
    QVector<int> open = m_page->selectedTasks();
    QVector<bool> isSeen(tasks.size(), false);
    QVector<int> elements;
    while (!open.isEmpty()) {
        const int task = open.takeLast();
        if (isSeen.at(task))
            continue;
        isSeen[task] = true;
        elements += m_building->elementsOf(task);
        open += tasks.at(task).children;
    }
    std::sort(elements.begin(), elements.end());
    elements.erase(std::unique(elements.begin(), elements.end()), elements.end());
    if (elements.size() == m_namedCount)
        elements.clear();
    highlight(elements);
}

void ElementSelection::goTo(const QString& id)
{
    const int element = m_model ? m_model->elementOf(id) : int(BuildingModel::none);
    if (element == BuildingModel::none)
        return;
    select(element, false);
    highlight({element});
}

void ElementSelection::highlight(const QVector<int>& elements)
{
    for (const auto view : {BuildingScene::Planned, BuildingScene::Actual}) {
        ElementLooks& looks = *m_view->looks(view);
        for (const int element : qAsConst(m_highlighted))
            looks.setHighlighted(element, false);
        for (const int element : elements)
            looks.setHighlighted(element, true);
    }
    m_highlighted = elements;
    m_view->update3d();
}
