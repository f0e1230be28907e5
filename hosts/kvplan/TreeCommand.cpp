#include "TreeCommand.h"

#include "Arguments.h"
#include "RecordJson.h"
#include "Session.h"
#include "TextTable.h"

#include <model/KvPlanDataUtils.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QVector>

#include <cmath>
#include <functional>
#include <limits>

namespace {

constexpr int barCells = 32;

/// Visits a tree in reading order without recursing, as a tree may be as deep as it is large.
void visit(const QList<KvPlanNode>& roots, int depth,
           const std::function<void(const KvPlanNode&, int level)>& enter,
           const std::function<void(int level)>& leave)
{
    struct Place
    {
        const QList<KvPlanNode>* siblings;
        int next;
    };
    QVector<Place> path{{&roots, 0}};
    while (!path.isEmpty()) {
        Place& place = path.last();
        const int level = path.size() - 1;
        if (place.next > 0)
            leave(level);
        if (place.next == place.siblings->size()) {
            path.removeLast();
            continue;
        }
        const KvPlanNode& node = place.siblings->at(place.next++);
        enter(node, level);
        static const QList<KvPlanNode> cutOff;
        path.append({level + 1 < depth ? &node.children : &cutOff, 0});
    }
}

struct Period
{
    qint64 start = std::numeric_limits<qint64>::max(); // milliseconds of the epoch, as `finish`
    qint64 finish = std::numeric_limits<qint64>::min();
};

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

QString bar(const KvPlanNode& node, const Period& period)
{
    if (!node.startDate.isValid() || !node.finishDate.isValid() || period.finish <= period.start)
        return QString();
    const double length = double(period.finish - period.start);
    const auto cellAt = [&](const QDateTime& date) {
        return double(date.toMSecsSinceEpoch() - period.start) / length * barCells;
    };
    const int first = qBound(0, int(cellAt(node.startDate)), barCells - 1);
    const QString indent(first, QLatin1Char(' '));
    if (node.milestone)
        return indent + QChar(0x25c6);
    const int cells = qMax(1, int(std::ceil(cellAt(node.finishDate))) - first);
    const int done = qBound(0, int(std::lround(cells * node.finishedPercentage / 100.0)), cells);
    return indent + QString(done, QChar(0x2588)) + QString(cells - done, QChar(0x2591));
}

QString day(qint64 milliseconds)
{
    return QDateTime::fromMSecsSinceEpoch(milliseconds).toString(QStringLiteral("yyyy-MM-dd"));
}

QString treeText(const QList<KvPlanNode>& roots, const Period& period, int depth)
{
    TextTable table;
    table.addColumn(QStringLiteral("Task"));
    table.addColumn(QStringLiteral("Start"));
    table.addColumn(QStringLiteral("Finish"));
    table.addColumn(QStringLiteral("Done"), TextTable::Right);
    const QString from = period.finish > period.start ? day(period.start) : QString();
    const QString to = period.finish > period.start ? day(period.finish) : QString();
    table.addColumn(from + QString(barCells - from.size() - to.size(), QLatin1Char(' ')) + to);
    const auto enter = [&](const KvPlanNode& node, int level) {
        // A tree hundreds of levels deep cannot be indented to the end; its level is told instead.
        const QString indent = level <= 20
                                   ? QString(2 * level, QLatin1Char(' '))
                                   : QString(40, QLatin1Char(' ')) + QStringLiteral("(%1) ").arg(level + 1);
        table.addRow({indent + node.name, node.startDate.toString(QStringLiteral("yyyy-MM-dd")),
                      node.finishDate.toString(QStringLiteral("yyyy-MM-dd")),
                      QString::number(node.finishedPercentage, 'f', 0) + QLatin1Char('%'),
                      bar(node, period)});
    };
    visit(roots, depth, enter, [](int) {});
    return table.toText(terminalWidth());
}

// Written piece by piece: a JSON object holds its members by value, and freeing a deep one would recurse.
QByteArray treeJson(const QList<KvPlanNode>& roots, int depth)
{
    QByteArray text = "[";
    const auto enter = [&](const KvPlanNode& node, int) {
        if (text.endsWith('}'))
            text += ',';
        QByteArray object = QJsonDocument(nodeToJson(node)).toJson(QJsonDocument::Compact);
        object.chop(1);
        text += object + ",\"children\":[";
    };
    visit(roots, depth, enter, [&](int) { text += "]}"; });
    return text + "]\n";
}

} // namespace

int runTree(const QStringList& arguments)
{
    Arguments line(QStringLiteral("tree"),
                   QStringLiteral("Shows the tasks of a plan as a tree, with dates, progress and bars."),
                   QStringLiteral("PLAN"));
    line.addOption("depth", "levels", "Show so many levels (all when left out).");
    int depth = std::numeric_limits<int>::max();
    if (!line.read(arguments, 1) || !line.needService() ||
        !line.readNumber("depth", 1, std::numeric_limits<int>::max(), depth))
        return line.exitCode();
    const Session session;
    KvPlan plan;
    if (!KvPlanData::instance()->getPlanById(line.positional(0), plan)) {
        complain(session.failure(QStringLiteral("read the plan \"%1\"").arg(line.positional(0))));
        return RequestFailed;
    }
    const QList<QList<int>> cycles = KvPlanDataUtils::findParentCycles(plan.planNodes);
    if (!cycles.isEmpty()) {
        const KvPlanNode& node = plan.planNodes.at(cycles.first().first());
        complain(QStringLiteral(
                     "the plan \"%1\" is no tree: its task %2 \"%3\" is its own ancestor; correct the parent "
                     "of that task")
                     .arg(plan.id)
                     .arg(node.planNodeId)
                     .arg(fitted(node.name, 60)));
        return BadData;
    }
    const Period period = periodOf(plan.planNodes);
    KvPlanDataUtils::makePlanNodeListTree(plan.planNodes);
    const bool written =
        line.wantsJson()
            ? say(treeJson(plan.planNodes, depth))
            : say(fitted(plan.name, 0) + QStringLiteral("\n\n") + treeText(plan.planNodes, period, depth));
    return written ? Success : OutputFailed;
}
