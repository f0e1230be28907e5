#include "PlanListModel.h"

#include "TaskText.h"

void PlanListModel::setPlans(const QList<KvPlan>& plans)
{
    beginResetModel();
    m_plans = plans;
    endResetModel();
}

int PlanListModel::rowOf(const QString& id) const
{
    for (int row = 0; row < m_plans.size(); ++row) {
        if (m_plans.at(row).id == id)
            return row;
    }
    return -1;
}

int PlanListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_plans.size();
}

int PlanListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant PlanListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole))
        return {};
    const KvPlan& plan = m_plans.at(index.row());
    if (role == Qt::ToolTipRole)
        return toolTip(plan);
    switch (index.column()) {
    case Name:
        return plan.name.isEmpty() ? tr("(no name)") : TaskText::label(plan.name);
    case Category:
        return plan.category;
    case Changed:
        return TaskText::dateTime(plan.updatedAt.isValid() ? plan.updatedAt : plan.createdAt);
    case ChangedBy:
        return plan.updatedBy.isEmpty() ? plan.createdBy : plan.updatedBy;
    default:
        return {};
    }
}

// With the columns that the narrow list leaves out.
QString PlanListModel::toolTip(const KvPlan& plan) const
{
    const QDateTime changed = plan.updatedAt.isValid() ? plan.updatedAt : plan.createdAt;
    return TaskText::plain(QStringLiteral("%1\n%2 %3")
                               .arg(TaskText::label(plan.name), TaskText::dateTime(changed),
                                    plan.updatedBy.isEmpty() ? plan.createdBy : plan.updatedBy)
                               .trimmed());
}

QVariant PlanListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole) {
        switch (section) {
        case Name:
            return tr("Plan");
        case Category:
            return tr("Category");
        case Changed:
            return tr("Changed");
        case ChangedBy:
            return tr("By");
        default:
            break;
        }
    }
    return QAbstractTableModel::headerData(section, orientation, role);
}
