#include "ShowCommand.h"

#include "Arguments.h"
#include "CellText.h"
#include "Output.h"
#include "RecordJson.h"
#include "Session.h"
#include "TextTable.h"

#include <QtCore/QJsonDocument>

#include <limits>

namespace {

QString predecessorRows(const KvPlanNode& node)
{
    QStringList rows;
    for (const KvPlanPredecessor& predecessor : node.predecessors)
        rows.append(QString::number(predecessor.sourcePlanNodeId));
    return rows.join(QLatin1Char(','));
}

QString taskTable(const QList<KvPlanNode>& nodes, int rows)
{
    TextTable table;
    table.addColumn(QStringLiteral("Row"), TextTable::Right);
    table.addTextColumn(QStringLiteral("Task"));
    table.addColumn(QStringLiteral("Start"));
    table.addColumn(QStringLiteral("Finish"));
    table.addColumn(QStringLiteral("Done"), TextTable::Right);
    table.addTextColumn(QStringLiteral("After row"));
    for (int i = 0; i < qMin(rows, nodes.size()); ++i) {
        const KvPlanNode& node = nodes.at(i);
        table.addRow({QString::number(node.planNodeId), node.name, minuteText(node.startDate),
                      minuteText(node.finishDate), percentText(node.finishedPercentage),
                      predecessorRows(node)});
    }
    return table.toText(terminalWidth());
}

QString planText(const KvPlan& plan, int rows)
{
    QString text = fitted(plan.name, 0) + QLatin1Char('\n');
    const auto addLine = [&](const QString& label, const QString& value) {
        if (!value.isEmpty())
            text += QStringLiteral("  %1  %2\n").arg(label.leftJustified(8), fitted(value, 0));
    };
    addLine(QStringLiteral("plan"), plan.id);
    addLine(QStringLiteral("project"), plan.projectId);
    addLine(QStringLiteral("category"), plan.category);
    addLine(QStringLiteral("created"),
            QStringLiteral("%1 %2").arg(minuteText(plan.createdAt), plan.createdBy).trimmed());
    addLine(QStringLiteral("changed"),
            QStringLiteral("%1 %2").arg(minuteText(plan.updatedAt), plan.updatedBy).trimmed());
    addLine(QStringLiteral("tasks"), QString::number(plan.planNodes.size()));
    if (plan.planNodes.isEmpty() || rows == 0)
        return text;
    text += QLatin1Char('\n') + taskTable(plan.planNodes, rows);
    if (rows < plan.planNodes.size())
        text += QStringLiteral("… and %1 more\n").arg(plan.planNodes.size() - rows);
    return text;
}

} // namespace

int runShow(const QStringList& arguments)
{
    Arguments line(QStringLiteral("show"), QStringLiteral("Shows one plan and its tasks."),
                   QStringLiteral("PLAN"));
    line.addOption("rows", "count", "Tasks in the table at most (all when left out); JSON has them all.");
    line.addJsonOption();
    int rows = std::numeric_limits<int>::max();
    if (!line.read(arguments, 1) || !line.needService() || !line.readNumber("rows", 0, rows, rows))
        return line.exitCode();

    const Session session;
    KvPlan plan;
    if (!session.readPlan(line.positional(0), plan))
        return RequestFailed;
    return line.wantsJson() ? say(QJsonDocument(planToJson(plan)).toJson()) : say(planText(plan, rows));
}
