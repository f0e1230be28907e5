#include "GanttBar.h"

#include "CellText.h"

#include <cmath>

namespace {

QString day(qint64 milliseconds)
{
    return dayText(QDateTime::fromMSecsSinceEpoch(milliseconds));
}

} // namespace

Period periodOf(const QList<KvPlanNode>& nodes)
{
    Period period;
    for (const KvPlanNode& node : nodes) {
        if (!node.startDate.isValid() || !node.finishDate.isValid())
            continue;
        period.start = qMin(period.start, node.startDate.toMSecsSinceEpoch());
        period.finish = qMax(period.finish, node.finishDate.toMSecsSinceEpoch());
    }
    return period;
}

QString periodTitle(const Period& period, int cells)
{
    if (period.isEmpty())
        return QString();
    const QString from = day(period.start);
    const QString to = day(period.finish);
    const int between = cells - from.size() - to.size();
    return between > 0 ? from + QString(between, QLatin1Char(' ')) + to : from;
}

QString ganttBar(const KvPlanNode& node, const Period& period, int cells)
{
    if (!node.startDate.isValid() || !node.finishDate.isValid() || period.isEmpty())
        return QString();
    const double length = qMax(1.0, double(period.finish) - double(period.start));
    // Dates that stand the wrong way round may lie outside the period.
    const auto placeOf = [&](const QDateTime& date) {
        return qBound(0.0, (double(date.toMSecsSinceEpoch()) - double(period.start)) / length, 1.0) * cells;
    };
    const int first = qMin(int(placeOf(node.startDate)), cells - 1);
    const QString indent(first, QLatin1Char(' '));
    if (node.milestone)
        return indent + QChar(0x25c6);
    const int taken = qMax(1, int(std::ceil(placeOf(node.finishDate))) - first);
    const int done = int(std::lround(taken * qBound(0.0, node.finishedPercentage, 100.0) / 100.0));
    return indent + QString(done, QChar(0x2588)) + QString(taken - done, QChar(0x2591));
}
