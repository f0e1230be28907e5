#include "TaskColumns.h"

#include <QtCore/QCoreApplication>
#include <QtGui/QFontMetrics>

namespace {

struct Description
{
    const char* key;
    const char* title;
    const char* sample; // about as wide as its contents get
};

constexpr Description columns[TaskColumn::Count] = {
    {"name", QT_TRANSLATE_NOOP("TaskColumn", "Task"), "Reinforcement and formwork"},
    {"startDate", QT_TRANSLATE_NOOP("TaskColumn", "Start"), "2026-03-05"},
    {"finishDate", QT_TRANSLATE_NOOP("TaskColumn", "Finish"), "2026-03-05"},
    {"finishedPercentage", QT_TRANSLATE_NOOP("TaskColumn", "Done"), "100 %"},
    {"actualStartDate", QT_TRANSLATE_NOOP("TaskColumn", "Actual start"), "2026-03-05"},
    {"actualFinishDate", QT_TRANSLATE_NOOP("TaskColumn", "Actual finish"), "2026-03-05"},
    {"state", QT_TRANSLATE_NOOP("TaskColumn", "State"), "Finished (ahead of time)"},
    {"predecessors", QT_TRANSLATE_NOOP("TaskColumn", "Predecessors"), "123FS+12d, 124SS"},
    {"userIds", QT_TRANSLATE_NOOP("TaskColumn", "Responsible"), "chen.jie, li.na"},
    {"planWorkload", QT_TRANSLATE_NOOP("TaskColumn", "Planned work"), "12000"},
    {"actualWorkload", QT_TRANSLATE_NOOP("TaskColumn", "Actual work"), "12000"},
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

int defaultWidth(int column, const QFontMetrics& metrics)
{
    constexpr int margins = 30; // with the sort mark that some styles leave room for
    return margins + qMax(metrics.horizontalAdvance(QString::fromLatin1(columns[column].sample)),
                          metrics.horizontalAdvance(title(column)));
}

} // namespace TaskColumn
