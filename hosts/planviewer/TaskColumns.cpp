#include "TaskColumns.h"

#include <QtCore/QCoreApplication>

namespace {

struct Description
{
    const char* key;
    const char* title;
    int width; // pixels
};

constexpr Description columns[TaskColumn::Count] = {
    {"name", QT_TRANSLATE_NOOP("TaskColumn", "Task"), 260},
    {"startDate", QT_TRANSLATE_NOOP("TaskColumn", "Start"), 100},
    {"finishDate", QT_TRANSLATE_NOOP("TaskColumn", "Finish"), 100},
    {"finishedPercentage", QT_TRANSLATE_NOOP("TaskColumn", "Done"), 70},
    {"actualStartDate", QT_TRANSLATE_NOOP("TaskColumn", "Actual start"), 110},
    {"actualFinishDate", QT_TRANSLATE_NOOP("TaskColumn", "Actual finish"), 110},
    {"state", QT_TRANSLATE_NOOP("TaskColumn", "State"), 160},
    {"predecessors", QT_TRANSLATE_NOOP("TaskColumn", "Predecessors"), 130},
    {"userIds", QT_TRANSLATE_NOOP("TaskColumn", "Responsible"), 120},
    {"planWorkload", QT_TRANSLATE_NOOP("TaskColumn", "Planned work"), 110},
    {"actualWorkload", QT_TRANSLATE_NOOP("TaskColumn", "Actual work"), 110},
};

} // namespace

namespace TaskColumn {

QString key(int column)
{
    return QString::fromLatin1(columns[column].key);
}

QString title(int column)
{
    return QCoreApplication::translate("TaskColumn", columns[column].title);
}

int defaultWidth(int column)
{
    return columns[column].width;
}

} // namespace TaskColumn
