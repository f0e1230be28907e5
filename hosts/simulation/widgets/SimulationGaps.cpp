#include "SimulationGaps.h"

#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QTreeView>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>

namespace {

// The id of an index: 0 for a group, otherwise its group and one more.
constexpr quintptr groupId = 0;

bool needsElements(const KvPlanNode& node)
{
    const bool isMoment = node.milestone || (node.startDate.isValid() && node.startDate == node.finishDate);
    return node.displaySimulation && !node.summary && !isMoment;
}

bool hasElements(const KvPlanNode& node)
{
    return std::any_of(node.links.constBegin(), node.links.constEnd(),
                       [](const QStringList& ids) { return !ids.isEmpty(); });
}

} // namespace

void SimulationGapsModel::setPlan(const QVector<const KvPlanNode*>& nodes, const SimulationTimeline& timeline,
                                  const QStringList& geometry)
{
    beginResetModel();
    for (QVector<Entry>& group : m_groups)
        group.clear();
    const QSet<QString> known(geometry.begin(), geometry.end());
    for (int element = 0; element < timeline.elementCount(); ++element) {
        const QString& id = timeline.elementId(element);
        if (known.contains(id))
            continue;
        QStringList rows;
        for (const int task : timeline.tasksOf(element))
            rows.append(QString::number(nodes.at(task)->planNodeId));
        m_groups[ElementsWithoutGeometry].append(
            {id, rows.join(QStringLiteral(", ")), timeline.tasksOf(element).first()});
    }
    for (int task = 0; task < nodes.size(); ++task) {
        const KvPlanNode& node = *nodes.at(task);
        if (needsElements(node) && !hasElements(node))
            m_groups[TasksWithoutElements].append({node.name, QString::number(node.planNodeId), task});
    }
    for (const QString& id : geometry) {
        if (timeline.elementOf(id) == SimulationTimeline::none)
            m_groups[GeometryWithoutTasks].append({id, QString(), -1});
    }
    endResetModel();
}

QModelIndex SimulationGapsModel::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, parent.isValid() ? static_cast<quintptr>(parent.row()) + 1 : groupId);
}

QModelIndex SimulationGapsModel::parent(const QModelIndex& index) const
{
    if (!index.isValid() || index.internalId() == groupId)
        return {};
    return createIndex(static_cast<int>(index.internalId()) - 1, 0, groupId);
}

int SimulationGapsModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return GroupCount;
    return parent.internalId() == groupId && parent.column() == 0 ? m_groups[parent.row()].size() : 0;
}

int SimulationGapsModel::columnCount(const QModelIndex&) const
{
    return ColumnCount;
}

QVariant SimulationGapsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    if (index.internalId() == groupId) {
        if (role != Qt::DisplayRole || index.column() != Name)
            return role == TaskRole ? QVariant(-1) : QVariant();
        const int entries = m_groups[index.row()].size();
        switch (index.row()) {
        case ElementsWithoutGeometry:
            return tr("Elements without geometry: %1").arg(entries);
        case TasksWithoutElements:
            return tr("Tasks without elements: %1").arg(entries);
        default:
            return tr("Geometry without tasks: %1").arg(entries);
        }
    }
    const int group = static_cast<int>(index.internalId()) - 1;
    const Entry& entry = m_groups[group].at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return index.column() == Name ? entry.name : entry.tasks;
    case TaskRole:
        return entry.task;
    case ElementRole:
        return group == TasksWithoutElements ? QString() : entry.name;
    default:
        return {};
    }
}

QVariant SimulationGapsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return section == Name ? tr("Name") : tr("Rows");
}

SimulationGapsPanel::SimulationGapsPanel(QWidget* parent)
    : QWidget(parent)
    , m_model(new SimulationGapsModel(this))
    , m_summary(new QLabel)
    , m_view(new QTreeView)
{
    m_summary->setObjectName(QStringLiteral("gapsSummary"));
    m_summary->setWordWrap(true);
    m_view->setObjectName(QStringLiteral("gaps"));
    m_view->setAccessibleName(tr("What the simulation cannot show"));
    m_view->setUniformRowHeights(true);
    m_view->setModel(m_model);
    m_view->header()->setStretchLastSection(false);
    m_view->header()->setSectionResizeMode(SimulationGapsModel::Name, QHeaderView::Stretch);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_summary);
    layout->addWidget(m_view, 1);
    connect(m_model, &QAbstractItemModel::modelReset, this, &SimulationGapsPanel::showCounts);
    connect(m_view, &QAbstractItemView::activated, this, [this](const QModelIndex& index) {
        const int task = index.data(SimulationGapsModel::TaskRole).toInt();
        const QString element = index.data(SimulationGapsModel::ElementRole).toString();
        if (task >= 0)
            Q_EMIT taskActivated(task);
        else if (!element.isEmpty())
            Q_EMIT elementActivated(element);
    });
    showCounts();
}

void SimulationGapsPanel::showCounts()
{
    for (int group = 0; group < SimulationGapsModel::GroupCount; ++group)
        m_view->setFirstColumnSpanned(group, QModelIndex(), true);
    const bool isComplete = m_model->count(SimulationGapsModel::ElementsWithoutGeometry) == 0 &&
                            m_model->count(SimulationGapsModel::TasksWithoutElements) == 0;
    m_summary->setText(isComplete ? tr("Every task has elements, and every element its geometry.")
                                  : tr("Some of the plan cannot be seen in the model."));
}
