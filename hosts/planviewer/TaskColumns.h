#pragma once

#include <QtCore/QString>

/// The columns of the task tree, in their original order.
namespace TaskColumn {

enum Column
{
    Name,
    Start,
    Finish,
    Progress,
    ActualStart,
    ActualFinish,
    State,
    Predecessors,
    People,
    PlanWorkload,
    ActualWorkload,
    Count
};

/// The name under which settings keep a column; the same in every language.
QString key(int column);
/// The heading, in the user's language.
QString title(int column);
int defaultWidth(int column);

} // namespace TaskColumn
