#pragma once

#include "TaskList.h"

#include <QtCore/QDate>
#include <QtCore/QString>

/// What is known of a task, as a person reads it.
namespace TaskText {

/// As in 2026-03-05; empty for none.
QString date(const QDateTime& date);
/// With the time of day.
QString dateTime(const QDateTime& date);
/// Empty for a negative number, which stands for "not set".
QString percent(double percent);
QString count(int number);
/// The row of each predecessor, the type of its link and its lag, as in 4FS+2d.
QString predecessors(const TaskList& tasks, int position);
QString toolTip(const KvPlanNode& node, const QDate& today);

} // namespace TaskText
