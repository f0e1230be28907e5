#include "TaskEdit.h"

#include "TaskColumns.h"

#include <QtCore/QCoreApplication>

namespace {

QString say(const char* text)
{
    return QCoreApplication::translate("TaskEdit", text);
}

QDateTime* dateOf(KvPlanNode& node, int column)
{
    switch (column) {
    case TaskColumn::Start:
        return &node.startDate;
    case TaskColumn::Finish:
        return &node.finishDate;
    case TaskColumn::ActualStart:
        return &node.actualStartDate;
    case TaskColumn::ActualFinish:
        return &node.actualFinishDate;
    default:
        return nullptr;
    }
}

QString applyDate(KvPlanNode& node, int column, const QString& text)
{
    QDateTime& date = *dateOf(node, column);
    if (text.isEmpty()) {
        date = QDateTime();
        return {};
    }
    const QDate day = QDate::fromString(text, Qt::ISODate);
    if (!day.isValid())
        return say(QT_TRANSLATE_NOOP("TaskEdit", "\"%1\" is no date; write it as 2026-03-05.")).arg(text);
    const bool isStart = column == TaskColumn::Start || column == TaskColumn::ActualStart;
    const QTime time = date.isValid() ? date.time() : isStart ? TaskEdit::morning() : TaskEdit::evening();
    date = QDateTime(day, time);
    if (node.startDate.isValid() && node.finishDate.isValid() && node.finishDate < node.startDate)
        return say(QT_TRANSLATE_NOOP("TaskEdit", "The task would finish before it starts."));
    if (node.actualStartDate.isValid() && node.actualFinishDate.isValid() &&
        node.actualFinishDate < node.actualStartDate)
        return say(QT_TRANSLATE_NOOP("TaskEdit", "The task would have finished before it started."));
    return {};
}

} // namespace

namespace TaskEdit {

bool isEditableColumn(int column)
{
    return column >= TaskColumn::Name && column <= TaskColumn::ActualFinish;
}

QString apply(KvPlanNode& node, int column, const QVariant& typed)
{
    const QString text = typed.toString().trimmed();
    if (column == TaskColumn::Name) {
        if (text.isEmpty())
            return say(QT_TRANSLATE_NOOP("TaskEdit", "A task needs a name."));
        node.name = text;
        return {};
    }
    if (column == TaskColumn::Progress) {
        bool isNumber = false;
        const double percent = typed.toDouble(&isNumber);
        if (!isNumber || percent < 0.0 || percent > 100.0)
            return say(QT_TRANSLATE_NOOP("TaskEdit", "Progress is a number from 0 to 100."));
        node.finishedPercentage = percent;
        return {};
    }
    return applyDate(node, column, text);
}

bool transfer(const KvPlanNode& before, const KvPlanNode& after, KvPlanNode& node)
{
    bool hasChanged = false;
    const auto carry = [&](auto field) {
        if (before.*field == after.*field || node.*field == after.*field)
            return;
        node.*field = after.*field;
        hasChanged = true;
    };
    carry(&KvPlanNode::name);
    carry(&KvPlanNode::finishedPercentage);
    for (const auto date : {&KvPlanNode::startDate, &KvPlanNode::finishDate, &KvPlanNode::actualStartDate,
                            &KvPlanNode::actualFinishDate})
        carry(date);
    return hasChanged;
}

QTime morning()
{
    return {8, 0};
}

QTime evening()
{
    return {17, 0};
}

bool spanChildren(const TaskList& tasks, int parent, KvPlanNode& node)
{
    QDateTime start;
    QDateTime finish;
    for (const int child : tasks.childrenOf(parent)) {
        const KvPlanNode& task = tasks.at(child).node;
        if (task.startDate.isValid() && (!start.isValid() || task.startDate < start))
            start = task.startDate;
        if (task.finishDate.isValid() && (!finish.isValid() || task.finishDate > finish))
            finish = task.finishDate;
    }
    if (start == node.startDate && finish == node.finishDate)
        return false;
    node.startDate = start;
    node.finishDate = finish;
    return true;
}

} // namespace TaskEdit
