#include "TreeCommand.h"

#include "Arguments.h"
#include "CellText.h"
#include "GanttBar.h"
#include "Output.h"
#include "RecordJson.h"
#include "Session.h"
#include "TextTable.h"
#include "TreeWalk.h"

#include <model/KvPlanDataUtils.h>

#include <QtCore/QJsonDocument>

#include <limits>

namespace {

constexpr int deepestIndent = 8; // levels

// On a terminal the bars take their share of what dates and progress leave.
int barCells(int width)
{
    constexpr int widest = 32;
    constexpr int otherColumns = 32;
    return width == 0 ? widest : qBound(10, (width - otherColumns) / 2, widest);
}

// A tree hundreds of levels deep cannot be indented to the end; its level is told instead.
QString indentation(int level)
{
    const QString indent(2 * qMin(level, deepestIndent), QLatin1Char(' '));
    return level <= deepestIndent ? indent : indent + QStringLiteral("(%1) ").arg(level + 1);
}

QString treeText(const QList<KvPlanNode>& roots, const Period& period, int depth)
{
    const int width = terminalWidth();
    const int cells = barCells(width);
    TextTable table;
    table.addTextColumn(QStringLiteral("Task"));
    table.addColumn(QStringLiteral("Start"));
    table.addColumn(QStringLiteral("Finish"));
    table.addColumn(QStringLiteral("Done"), TextTable::Right);
    table.addColumn(periodTitle(period, cells));
    walkTree(roots, depth, [&](const KvPlanNode& node, int level) {
        table.addRow({indentation(level) + node.name, dayText(node.startDate), dayText(node.finishDate),
                      percentText(node.finishedPercentage), ganttBar(node, period, cells)});
    });
    return table.toText(width);
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
    walkTree(roots, depth, enter, [&] { text += "]}"; });
    return text + "]\n";
}

QString planText(KvPlan& plan, int depth)
{
    const QString title = fitted(plan.name, 0) + QLatin1Char('\n');
    const int tasks = plan.planNodes.size();
    if (tasks == 0)
        return title + QStringLiteral("no tasks\n");
    const Period period = periodOf(plan.planNodes);
    KvPlanDataUtils::makePlanNodeListTree(plan.planNodes);
    int shown = 0;
    walkTree(plan.planNodes, depth, [&](const KvPlanNode&, int) { ++shown; });
    const QString text = title + QLatin1Char('\n') + treeText(plan.planNodes, period, depth);
    return shown == tasks ? text : text + QStringLiteral("… and %1 below these\n").arg(tasks - shown);
}

// A circle of parents is no tree. Whoever made the plan has to correct it.
bool isTree(const KvPlan& plan)
{
    const QList<QList<int>> cycles = KvPlanDataUtils::findParentCycles(plan.planNodes);
    if (cycles.isEmpty())
        return true;
    const KvPlanNode& node = plan.planNodes.at(cycles.first().first());
    complain(QStringLiteral("the plan \"%1\" is no tree: its task %2 \"%3\" is its own ancestor; correct the "
                            "parent of that task")
                 .arg(plan.id)
                 .arg(node.planNodeId)
                 .arg(fitted(node.name, 60)));
    return false;
}

} // namespace

int runTree(const QStringList& arguments)
{
    Arguments line(QStringLiteral("tree"),
                   QStringLiteral("Shows the tasks of a plan as a tree, with dates, progress and bars."),
                   QStringLiteral("PLAN"));
    line.addOption("depth", "levels", "Show so many levels (all when left out).");
    line.addJsonOption();
    int depth = std::numeric_limits<int>::max();
    if (!line.read(arguments, 1) || !line.needService() || !line.readNumber("depth", 1, depth, depth))
        return line.exitCode();
    const Session session;
    KvPlan plan;
    if (!session.readPlan(line.positional(0), plan))
        return RequestFailed;
    if (!isTree(plan))
        return BadData;
    if (!line.wantsJson())
        return say(planText(plan, depth));
    KvPlanDataUtils::makePlanNodeListTree(plan.planNodes);
    return say(treeJson(plan.planNodes, depth));
}
