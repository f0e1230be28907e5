#include "ShowCommand.h"

#include "Arguments.h"
#include "RecordJson.h"
#include "Session.h"
#include "TextTable.h"

#include <plandata/KvPlanData.h>

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

QString planText(const KvPlan& plan, int rows)
{
    QString text = plan.name + QLatin1Char('\n');
    const auto addLine = [&](const QString& label, const QString& value) {
        if (!value.isEmpty())
            text += QStringLiteral("  %1  %2\n").arg(label.leftJustified(9), fitted(value, 0));
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

    TextTable table;
    table.addColumn(QStringLiteral("Row"), TextTable::Right);
    table.addColumn(QStringLiteral("Task"));
    table.addColumn(QStringLiteral("Start"));
    table.addColumn(QStringLiteral("Finish"));
    table.addColumn(QStringLiteral("Done"), TextTable::Right);
    table.addColumn(QStringLiteral("After"));
    for (int i = 0; i < qMin(rows, plan.planNodes.size()); ++i) {
        const KvPlanNode& node = plan.planNodes.at(i);
        table.addRow({QString::number(node.planNodeId), node.name, minuteText(node.startDate),
                      minuteText(node.finishDate),
                      QString::number(node.finishedPercentage, 'f', 0) + QLatin1Char('%'),
                      predecessorRows(node)});
    }
    text += QLatin1Char('\n') + table.toText(terminalWidth());
    if (rows < plan.planNodes.size())
        text += QStringLiteral("… and %1 more\n").arg(plan.planNodes.size() - rows);
    return text;
}

} // namespace

int runShow(const QStringList& arguments)
{
    Arguments line(QStringLiteral("show"), QStringLiteral("Shows one plan and its tasks."),
                   QStringLiteral("PLAN"));
    line.addOption("rows", "count", "Show at most this many tasks (all when left out).");
    int rows = std::numeric_limits<int>::max();
    if (!line.read(arguments, 1) || !line.needService() || !line.readNumber("rows", 0, rows, rows))
        return line.exitCode();

    const Session session;
    KvPlan plan;
    if (!KvPlanData::instance()->getPlanById(line.positional(0), plan)) {
        complain(session.failure(QStringLiteral("read the plan \"%1\"").arg(line.positional(0))));
        return RequestFailed;
    }
    const bool written = line.wantsJson()
                             ? say(QJsonDocument(planToJson(plan)).toJson(QJsonDocument::Indented))
                             : say(planText(plan, rows));
    return written ? Success : OutputFailed;
}
