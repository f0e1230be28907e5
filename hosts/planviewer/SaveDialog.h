#pragma once

#include "PlanClient.h"

#include <QtWidgets/QDialog>

class QTreeWidget;

/// What differs between two states of a task, in words: "Start: 2026-03-05 → 2026-03-06".
QStringList taskDifferences(const KvPlanNode& before, const KvPlanNode& after);

/// Shows what a save will create and update before it is sent.
class SaveDialog : public QDialog
{
    Q_OBJECT

public:
    /// @param before the tasks of @p list.toUpdate as they were read.
    SaveDialog(const SaveList& list, const QList<KvPlanNode>& before, QWidget* parent = nullptr);
};
