#include "TaskText.h"

#include "CellText.h"
#include "TaskState.h"

#include <QtCore/QCoreApplication>
#include <QtGui/QTextDocument>

namespace {

QString say(const char* text)
{
    return QCoreApplication::translate("TaskText", text);
}

QString lagText(const KvDuration& lag)
{
    if (qFuzzyIsNull(lag.value))
        return {};
    static const char* const units[] = {"min", "h", "d", "w", "mo"};
    const QString unit = lag.units >= 0 && lag.units < 5 ? QLatin1String(units[lag.units]) : QString();
    return (lag.value > 0 ? QStringLiteral("+") : QString()) + QString::number(lag.value) + unit;
}

} // namespace

namespace TaskText {

QString label(const QString& name, int cells)
{
    return fitted(name.left(2 * cells + 1), cells); // measuring a text costs its length
}

QString plain(const QString& text)
{
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text;
}

QString link(const KvPlanPredecessor& link)
{
    static const char* const types[] = {"FF", "FS", "SF", "SS"};
    const QString type = link.type >= 0 && link.type < 4 ? QLatin1String(types[link.type]) : QString();
    return type + lagText(link.lag);
}

QString date(const QDateTime& date)
{
    return date.isValid() ? date.date().toString(Qt::ISODate) : QString();
}

QString dateTime(const QDateTime& date)
{
    return date.isValid() ? date.toString(QStringLiteral("yyyy-MM-dd HH:mm")) : QString();
}

QString percent(double percent)
{
    return percent < 0 ? QString() : QStringLiteral("%1 %").arg(qRound(percent));
}

QString count(int number)
{
    return number < 0 ? QString() : QString::number(number);
}

QString predecessors(const TaskList& tasks, int position)
{
    QString text;
    for (const KvPlanPredecessor& predecessor : tasks.at(position).node.predecessors) {
        const int from = tasks.positionOf(predecessor.sourcePlanNodeUniqueId);
        if (!text.isEmpty())
            text += QLatin1String(", ");
        text +=
            from == TaskList::none ? QStringLiteral("?") : QString::number(tasks.at(from).node.planNodeId);
        text += link(predecessor);
    }
    return text;
}

QString toolTip(const KvPlanNode& node, const QDate& today)
{
    QString text = label(node.name);
    const auto add = [&](const QString& label, const QDateTime& from, const QDateTime& to) {
        if (from.isValid() || to.isValid())
            text += QStringLiteral("\n%1 %2 – %3").arg(label, dateTime(from), dateTime(to));
    };
    add(say(QT_TRANSLATE_NOOP("TaskText", "Planned:")), node.startDate, node.finishDate);
    add(say(QT_TRANSLATE_NOOP("TaskText", "Actual:")), node.actualStartDate, node.actualFinishDate);
    return plain(text + QLatin1Char('\n') + taskStateText(taskState(node, today)) + QStringLiteral("  ") +
                 percent(node.finishedPercentage));
}

} // namespace TaskText
