#pragma once

#include <model/KvPlanNode.h>

#include <QtCore/QVector>
#include <QtWidgets/QUndoCommand>

class TaskModel;

/// An edited cell, with what it moves in the summary tasks above.
class EditTaskCommand : public QUndoCommand
{
public:
    EditTaskCommand(TaskModel* model, int position, const KvPlanNode& edited, int column);
    void undo() override;
    void redo() override;

private:
    struct Change
    {
        int position;
        KvPlanNode before;
        KvPlanNode after;
    };

    TaskModel* m_model;
    QVector<Change> m_changes; // the edited task, then those above it
    bool m_movesDates;
};

/// A new task.
class AddTaskCommand : public QUndoCommand
{
public:
    AddTaskCommand(TaskModel* model, const KvPlanNode& node, int parent);
    void undo() override;
    void redo() override;

private:
    TaskModel* m_model;
    KvPlanNode m_node;
    int m_parent;
};
