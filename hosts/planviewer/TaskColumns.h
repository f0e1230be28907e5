#pragma once

#include <QtCore/QString>

class QFontMetrics;

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
/// In pixels; wide enough for the heading and what usually stands below it.
int defaultWidth(int column, const QFontMetrics& metrics);

} // namespace TaskColumn
