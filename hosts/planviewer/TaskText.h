#pragma once

#include "TaskList.h"

#include <QtCore/QDate>
#include <QtCore/QString>

/// What is known of a task, as a person reads it.
namespace TaskText {

/// A name on one line, as long as there is room for in lists and messages; @p cells is the width in letters.
QString label(const QString& name, int cells = 200);
/// Text that is shown as it is where Qt would take what looks like HTML for HTML.
QString plain(const QString& text);
/// As in 2026-03-05; empty for none.
QString date(const QDateTime& date);
/// With the time of day.
QString dateTime(const QDateTime& date);
/// Empty for a negative number, which stands for "not set".
QString percent(double percent);
QString count(int number);
/// A link's type and lag, as in FS+2d.
QString link(const KvPlanPredecessor& link);
/// The row of each predecessor, the type of its link and its lag, as in 4FS+2d.
QString predecessors(const TaskList& tasks, int position);
QString toolTip(const KvPlanNode& node, const QDate& today);

} // namespace TaskText
