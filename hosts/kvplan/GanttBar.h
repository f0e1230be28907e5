#pragma once

#include <model/KvPlanNode.h>

#include <limits>

/// From the first planned start of a plan to its last planned finish.
struct Period
{
    qint64 start = std::numeric_limits<qint64>::max(); // milliseconds of the epoch, as `finish`
    qint64 finish = std::numeric_limits<qint64>::min();

    bool isEmpty() const { return finish < start; }
};

/// The period of a flat list; tasks without both dates do not count.
Period periodOf(const QList<KvPlanNode>& nodes);

/// The line of @p cells above the bars: the period's first day at its left end and, where both fit, the last
/// day at its right one.
QString periodTitle(const Period& period, int cells);

/// A task's time in the period as a bar of at least one of @p cells, filled as far as it is done; a milestone
/// as a diamond. Empty for a task without both dates.
QString ganttBar(const KvPlanNode& node, const Period& period, int cells);
