#pragma once

#include "TaskList.h"

#include <QtCore/QTime>
#include <QtCore/QVariant>

/// What it means to type something into a cell.
namespace TaskEdit {

bool isEditableColumn(int column);

/// Puts what was typed into @p node. A date keeps the time of day that stood there.
/// @return why it cannot be taken, in words for a person; empty when it was.
QString apply(KvPlanNode& node, int column, const QVariant& typed);

/// Puts what differs between @p before and @p after, in what can be edited, into @p node. @return whether
/// that changed it.
bool transfer(const KvPlanNode& before, const KvPlanNode& after, KvPlanNode& node);

/// When a day's work begins and ends, for dates that had no time of day.
QTime morning();
QTime evening();

/// The span of the subtasks of @p parent, put into its dates. @return whether they changed.
bool spanChildren(const TaskList& tasks, int parent, KvPlanNode& node);

} // namespace TaskEdit
