#include "DetailsPanel.h"

#include "TaskState.h"
#include "TaskText.h"

#include <QtCore/QLocale>

namespace {

QString heading(const QString& text)
{
    return QStringLiteral("<h4 style=\"margin-bottom:2px\">%1</h4>").arg(text.toHtmlEscaped());
}

QString line(const QString& label, const QString& text)
{
    return text.isEmpty()
               ? QString()
               : QStringLiteral("<div>%1 %2</div>").arg(label.toHtmlEscaped(), text.toHtmlEscaped());
}

QString span(const QDateTime& from, const QDateTime& to)
{
    return from.isValid() || to.isValid()
               ? TaskText::dateTime(from) + QStringLiteral(" – ") + TaskText::dateTime(to)
               : QString();
}

QString documentLine(const KvDocument& document)
{
    return QStringLiteral("<div>%1%2</div>")
        .arg(document.name.toHtmlEscaped(),
             document.fileSize > 0
                 ? QStringLiteral(" (%1)").arg(QLocale().formattedDataSize(document.fileSize))
                 : QString());
}

// Each by its name, with the type of the link and its lag.
QString predecessorLines(const TaskList& tasks, const KvPlanNode& task)
{
    QString html;
    for (const KvPlanPredecessor& predecessor : task.predecessors) {
        const int from = tasks.positionOf(predecessor.sourcePlanNodeUniqueId);
        html += line(TaskText::link(predecessor), from == TaskList::none
                                                      ? DetailsPanel::tr("a task that is not in the plan")
                                                      : TaskText::label(tasks.at(from).node.name));
    }
    return html.isEmpty() ? html : heading(DetailsPanel::tr("Predecessors")) + html;
}

QString listLines(const QMap<QString, QStringList>& lists)
{
    QString html;
    for (auto entry = lists.constBegin(); entry != lists.constEnd(); ++entry)
        html += QStringLiteral("<div>%1: %2</div>")
                    .arg(entry.key().toHtmlEscaped(), entry->join(QStringLiteral(", ")).toHtmlEscaped());
    return html;
}

} // namespace

DetailsPanel::DetailsPanel(QWidget* parent)
    : QTextBrowser(parent)
{
    setObjectName(QStringLiteral("details"));
    setAccessibleName(tr("Details of the task"));
    setOpenLinks(false);
    setTabChangesFocus(true);
    connect(this, &QTextBrowser::anchorClicked, this, &DetailsPanel::responsesWanted);
    showNothing();
}

void DetailsPanel::showNothing()
{
    m_task.clear();
    setHtml(QStringLiteral("<p>%1</p>").arg(tr("Select a task to see its details.")));
}

void DetailsPanel::showTask(const TaskList& tasks, int position, const QDate& today)
{
    const KvPlanNode& task = tasks.at(position).node;
    QString html = QStringLiteral("<h3>%1</h3>").arg(task.name.toHtmlEscaped());
    html += line(tr("State:"), taskStateText(taskState(task, today)));
    html += line(tr("Planned:"), span(task.startDate, task.finishDate));
    html += line(tr("Actual:"), span(task.actualStartDate, task.actualFinishDate));
    html += line(tr("Done:"), TaskText::percent(task.finishedPercentage));
    html += line(tr("Workload, planned / actual:"),
                 QStringLiteral("%1 / %2").arg(TaskText::count(task.planWorkload),
                                               TaskText::count(task.actualWorkload)));
    html += line(tr("Remark:"), task.remark);
    html += predecessorLines(tasks, task);
    if (!task.userIds.isEmpty() || !task.executeIds.isEmpty() || !task.cooperateIds.isEmpty()) {
        const QString comma = QStringLiteral(", ");
        html += heading(tr("People")) + line(tr("Responsible:"), task.userIds.join(comma)) +
                line(tr("Executing:"), task.executeIds.join(comma)) +
                line(tr("Cooperating:"), task.cooperateIds.join(comma));
    }
    if (!task.documents.isEmpty()) {
        html += heading(tr("Documents"));
        for (const KvDocument& document : task.documents)
            html += documentLine(document);
    }
    if (!task.materialBills.isEmpty())
        html += heading(tr("Material bills")) + listLines(task.materialBills);
    if (!task.links.isEmpty())
        html += heading(tr("Linked entities")) + listLines(task.links);
    m_task = html;
    if (!task.id.isEmpty())
        html += heading(tr("Reports")) +
                QStringLiteral("<div><a href=\"reports\">%1</a></div>").arg(tr("Show what was reported"));
    setHtml(html);
}

void DetailsPanel::showResponses(const QList<KvPlanNodeResponse>& responses)
{
    QString html = m_task + heading(tr("Reports"));
    if (responses.isEmpty())
        html += QStringLiteral("<div>%1</div>").arg(tr("Nothing was reported yet."));
    for (const KvPlanNodeResponse& response : responses) {
        html += QStringLiteral("<div style=\"margin-top:4px\"><b>%1</b> %2 %3</div>")
                    .arg(TaskText::percent(response.percentage), TaskText::dateTime(response.createdAt),
                         response.createdBy.toHtmlEscaped());
        html += line(tr("Actual:"), span(response.actualStartDate, response.actualFinishDate));
        html += line(QString(), response.remark);
        for (const KvDocument& document : response.documents)
            html += documentLine(document);
        if (!response.media.isEmpty())
            html += line(tr("Photos and videos:"), QString::number(response.media.size()));
    }
    setHtml(html);
}
