#pragma once

#include "NodeChanges.h"

#include <QtCore/QStringList>

class QJsonDocument;

/// A task of a file that is to be created or changed.
struct NodeEdit
{
    KvPlanNode node;
    bool isNew = false;
    QVector<FieldChange> changes;
};

/// What a file of edited tasks means for a plan. Nothing of it may be saved while `problems` has an entry.
struct EditFindings
{
    /// One line each, in the words of the file; the first few of each kind, then a count.
    QStringList problems;
    /// Tasks that differ from the plan, in the order of the file.
    QVector<NodeEdit> edits;
};

/// Compares the tasks in @p file, in the form in which kvplan prints plans and lists of tasks, with those
/// that the plan has.
///
/// An object with an "id" is that task of the plan; one without is a new task. What is not in an object stays
/// as it is or, in a new task, as in an empty one; numbers that a new task lacks are given. What the service
/// tells by itself is passed over. Problems are: another shape of the file, unknown names, values of a wrong
/// type, tasks that the plan does not have or that stand in the file twice, texts and numbers that cannot be
/// taken away again, numbers that two tasks would share, predecessors that do not exist, and parents in a
/// circle.
/// @param overwrites false: a task that was changed in the plan after the file was written is a problem too,
/// as the file would undo that.
EditFindings checkEdits(const QJsonDocument& file, const QString& planId, const QList<KvPlanNode>& stored,
                        bool overwrites);
