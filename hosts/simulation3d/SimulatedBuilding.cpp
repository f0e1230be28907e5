#include "SimulatedBuilding.h"

bool SimulatedBuilding::Paint::operator==(const Paint& other) const
{
    for (int state = 0; state < TaskState::count; ++state) {
        if (stateColour(state, set, colours) != stateColour(state, other.set, other.colours))
            return false;
    }
    return true;
}

void SimulatedBuilding::setTasks(const QVector<const KvPlanNode*>& nodes, const SimulationRule& rule)
{
    m_timeline.setTasks(nodes, rule);
    match();
}

void SimulatedBuilding::setModel(const std::shared_ptr<const BuildingModel>& model)
{
    m_model = model;
    match();
}

void SimulatedBuilding::match()
{
    m_looks = nullptr;
    m_elements.fill(BuildingModel::none, m_timeline.elementCount());
    m_simulated.fill(SimulationTimeline::none, m_model ? m_model->elements().size() : 0);
    for (int i = 0; m_model && i < m_elements.size(); ++i) {
        m_elements[i] = m_model->elementOf(m_timeline.elementId(i));
        if (m_elements.at(i) != BuildingModel::none)
            m_simulated[m_elements.at(i)] = i;
    }
}

void SimulatedBuilding::show(const QDateTime& date, const Paint& paint, ElementLooks& looks)
{
    const QVector<int>& changed = m_timeline.moveTo(date);
    if (m_looks == &looks && paint == m_paint) {
        for (const int simulated : changed)
            write(simulated, paint, looks);
        return;
    }
    m_looks = &looks;
    m_paint = paint;
    for (int i = 0; i < m_simulated.size(); ++i) {
        if (m_simulated.at(i) == SimulationTimeline::none)
            looks.set(i, {ElementLooks::Solidity::Solid, material(), 1.0, Kv::GrowBottomToTop});
        else
            write(m_simulated.at(i), paint, looks);
    }
}

void SimulatedBuilding::write(int simulated, const Paint& paint, ElementLooks& looks) const
{
    const int element = m_elements.at(simulated);
    if (element == BuildingModel::none)
        return;
    const ElementPaint drawn = elementPaint(m_timeline.stateOf(simulated), paint.set, paint.colours);
    ElementLooks::Look look;
    look.colour = drawn.colour.isValid() ? drawn.colour : material();
    look.growth = drawn.growth;
    if (drawn.kind == ElementPaint::Hint)
        look.solidity = ElementLooks::Solidity::Hint;
    if (drawn.kind == ElementPaint::Solid) {
        look.solidity = ElementLooks::Solidity::Solid;
        look.share = drawn.share;
    }
    looks.set(element, look);
}

QVector<int> SimulatedBuilding::tasksOf(int element) const
{
    const int simulated = m_simulated.value(element, SimulationTimeline::none);
    return simulated == SimulationTimeline::none ? QVector<int>() : m_timeline.tasksOf(simulated);
}

QVector<int> SimulatedBuilding::elementsOf(int task) const
{
    QVector<int> elements;
    if (task < 0 || task >= m_timeline.taskCount())
        return elements;
    for (const int simulated : m_timeline.elementsOf(task)) {
        if (m_elements.at(simulated) != BuildingModel::none)
            elements.append(m_elements.at(simulated));
    }
    return elements;
}

QSet<QString> linkedElements(const QVector<const KvPlanNode*>& nodes)
{
    QSet<QString> all;
    for (const KvPlanNode* const node : nodes) {
        for (const QStringList& ids : node->links) {
            for (const QString& id : ids)
                all.insert(id);
        }
    }
    return all;
}

void spreadFloors(const BuildingModel& model, const QVector<double>& heights, double spread,
                  ElementLooks& looks)
{
    QVector<float> lifts;
    double lift = 0.0;
    for (const double height : heights) {
        lifts.append(float(lift));
        lift += height * spread;
    }
    for (int i = 0; i < model.elements().size(); ++i)
        looks.setLift(i, lifts.value(model.elements().at(i).floor, 0.0F));
}
