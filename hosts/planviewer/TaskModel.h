#pragma once

#include "TaskList.h"

#include <QtCore/QAbstractItemModel>
#include <QtCore/QDate>
#include <QtCore/QSet>

class QUndoStack;

/// The tasks of a plan as a tree, with what the Gantt chart asks for under the roles of KGantt. What a user
/// types becomes a command on the undo stack; nothing here asks the service.
///
/// A finished edit of a date also moves the dates of the summary tasks above, which span their subtasks.
class TaskModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    /// @param undoStack outlives the model.
    explicit TaskModel(QUndoStack* undoStack, QObject* parent = nullptr);

    /// Shows another plan's tasks, or the same anew; forgets what was touched and the undo stack.
    void setTasks(const QList<KvPlanNode>& nodes);
    const TaskList& tasks() const { return m_tasks; }

    /// The position of a task in tasks(); TaskList::none for an invalid index.
    int positionOf(const QModelIndex& index) const;
    QModelIndex indexOf(int position, int column = 0) const;

    /// The tasks that an edit touched since they were read; undone edits included.
    QList<KvPlanNode> touched() const;

    /// Whether cells can be edited. @param reason shown in the tooltip when not.
    void setEditable(bool isEditable, const QString& reason);
    /// The day that states are told for.
    void setToday(const QDate& today);
    QDate today() const { return m_today; }

    /// Makes a new task, to be undone: the last one below @p parent.
    void addTask(int parent, const QString& name, const QString& planId);

    /// An edited task of the service, with what it was before.
    struct Edit
    {
        KvPlanNode before;
        KvPlanNode after;
    };
    /// Brings what was edited, and tasks that are not saved yet, into tasks that were read anew; as one edit
    /// to be undone. What others changed meanwhile stays, except where the edit changes the same.
    void editAgain(const QList<Edit>& edits, const QList<KvPlanNode>& additions);

    bool isMilestone(int position) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

Q_SIGNALS:
    /// What the user typed cannot be taken, and why.
    void rejected(const QString& reason);

private:
    friend class EditTaskCommand;
    friend class AddTaskCommand;

    // To be used by the commands alone.
    void replace(int position, const KvPlanNode& node);
    int append(const KvPlanNode& node, int parent);
    void removeLast();

    QString displayText(int position, int column) const;
    QVariant editValue(int position, int column) const;
    QString toolTip(int position, int column) const;

    TaskList m_tasks;
    QSet<int> m_touched;
    QUndoStack* m_undoStack;
    QDate m_today;
    QString m_lockReason;
    bool m_isEditable = true;
};
