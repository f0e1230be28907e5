#pragma once

#include <model/KvPlan.h>

#include <QtCore/QAbstractTableModel>

/// The plans of a project, in the order they are given.
class PlanListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        Name,
        Category,
        Changed,
        ChangedBy,
        ColumnCount
    };

    using QAbstractTableModel::QAbstractTableModel;

    void setPlans(const QList<KvPlan>& plans);
    const QList<KvPlan>& plans() const { return m_plans; }
    /// The row of a plan; -1 when it is not in the list.
    int rowOf(const QString& id) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QString toolTip(const KvPlan& plan) const;

    QList<KvPlan> m_plans;
};
