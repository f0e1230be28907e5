#pragma once

#include "SimulationTimeline.h"

#include <QtCore/QAbstractItemModel>
#include <QtCore/QSet>
#include <QtWidgets/QWidget>

class QLabel;
class QTreeView;

/// What the simulation cannot show, in three groups: elements that tasks name and the model has no geometry
/// for, tasks that name no element, and geometry that no task names.
class SimulationGapsModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Group
    {
        ElementsWithoutGeometry,
        TasksWithoutElements,
        GeometryWithoutTasks,
        GroupCount
    };
    enum Column
    {
        Name,
        Tasks, ///< the row numbers of the tasks
        ColumnCount
    };
    enum Role
    {
        TaskRole =
            Qt::UserRole, ///< position of the (first) task, as in the list given to setPlan(); -1: none
        ElementRole       ///< identifier of the element; empty for a task
    };

    using QAbstractItemModel::QAbstractItemModel;

    /// The nodes and the time line made of them, and the names of all geometry. All are read within the call
    /// only. Summary tasks, milestones and tasks outside the simulation need no elements.
    void setPlan(const QVector<const KvPlanNode*>& nodes, const SimulationTimeline& timeline,
                 const QStringList& geometry);
    int count(Group group) const { return m_groups[group].size(); }

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    struct Entry
    {
        QString name;
        QString tasks;
        int task = -1;
    };

    QVector<Entry> m_groups[GroupCount];
};

/// The gaps as a tree, for a dock.
class SimulationGapsPanel : public QWidget
{
    Q_OBJECT

public:
    explicit SimulationGapsPanel(QWidget* parent = nullptr);

    SimulationGapsModel* model() const { return m_model; }
    QTreeView* view() const { return m_view; }

Q_SIGNALS:
    /// The user wants to see the task at that position.
    void taskActivated(int task);
    /// The user wants to see that element of the model.
    void elementActivated(const QString& id);

private:
    void showCounts();

    SimulationGapsModel* m_model;
    QLabel* m_summary;
    QTreeView* m_view;
};
