#include "NodeListCommands.h"

#include "Arguments.h"
#include "CellText.h"
#include "Output.h"
#include "Progress.h"
#include "RecordJson.h"
#include "Session.h"
#include "TextTable.h"

#include <plandata/KvPlanData.h>

#include <QtCore/QJsonDocument>

#include <limits>

namespace {

constexpr int usualPage = 50;
constexpr int largestPage = 100000;

struct Page
{
    int skip = 0;
    int limit = usualPage;
};

void addPageOptions(Arguments& line)
{
    line.addOption("skip", "count", "Leave out so many tasks at the beginning.");
    line.addOption("limit", "count", "Show so many tasks at most (50).");
}

bool readPage(Arguments& line, Page& page)
{
    return line.readNumber("skip", 0, std::numeric_limits<int>::max(), page.skip) &&
           line.readNumber("limit", 1, largestPage, page.limit);
}

bool readListType(Arguments& line, int& listType)
{
    const QStringList words{QStringLiteral("all"), QStringLiteral("received"), QStringLiteral("post")};
    listType = line.isSet("list") ? words.indexOf(line.value("list")) : 0;
    return listType >= 0 ||
           line.refuse(
               QStringLiteral("--list takes all, received or post, not \"%1\"").arg(line.value("list")));
}

bool readCondition(Arguments& line, KvPlanNodeCondition& condition)
{
    if (line.isSet("finished") && line.isSet("unfinished"))
        return line.refuse(QStringLiteral("--finished and --unfinished exclude each other"));
    condition.planId = line.positional(0);
    condition.name = line.value("name");
    condition.category = line.value("category");
    condition.userId = line.value("user");
    condition.relativeUserId = line.value("related-user");
    condition.withoutPlan = line.isSet("without-plan");
    condition.finishState = line.isSet("finished") ? 1 : line.isSet("unfinished") ? 0 : -1;
    return readListType(line, condition.listType) &&
           line.readPeriod(condition.allTime, condition.startDate, condition.endDate);
}

QString nodesText(const QList<KvPlanNode>& nodes)
{
    TextTable table;
    table.addColumn(QStringLiteral("Node"));
    table.addColumn(QStringLiteral("Row"), TextTable::Right);
    table.addTextColumn(QStringLiteral("Task"));
    table.addColumn(QStringLiteral("Start"));
    table.addColumn(QStringLiteral("Finish"));
    table.addColumn(QStringLiteral("Done"), TextTable::Right);
    for (const KvPlanNode& node : nodes)
        table.addRow({node.id, QString::number(node.planNodeId), node.name, dayText(node.startDate),
                      dayText(node.finishDate), percentText(node.finishedPercentage)});
    return table.toText(terminalWidth());
}

QString todoText(const QList<KvPlanNode>& nodes)
{
    TextTable table;
    table.addColumn(QStringLiteral("Node"));
    table.addTextColumn(QStringLiteral("Task"));
    table.addTextColumn(QStringLiteral("Plan"));
    table.addColumn(QStringLiteral("Finish"));
    table.addColumn(QStringLiteral("Done"), TextTable::Right);
    for (const KvPlanNode& node : nodes)
        table.addRow({node.id, node.name, node.planName, dayText(node.finishDate),
                      percentText(node.finishedPercentage)});
    return table.toText(terminalWidth());
}

QString nodesFooter(const Page& page, int shown, int count)
{
    if (shown == 0)
        return count == 0
                   ? QStringLiteral("no tasks\n")
                   : QStringLiteral("no tasks from %1 on; there are %2\n").arg(page.skip + 1).arg(count);
    const int end = page.skip + shown;
    const QString place = QStringLiteral("tasks %1 to %2 of %3").arg(page.skip + 1).arg(end).arg(count);
    return end < count ? place + QStringLiteral("; --skip %1 shows the next\n").arg(end)
                       : place + QLatin1Char('\n');
}

QString todoFooter(const Page& page, int shown)
{
    if (shown == 0)
        return page.skip == 0 ? QStringLiteral("nothing to do\n") : QStringLiteral("no more tasks\n");
    return shown < page.limit
               ? QString()
               : QStringLiteral("--skip %1 shows the next, if there are more\n").arg(page.skip + shown);
}

ExitCode sayCount(const Arguments& line, int count)
{
    return line.wantsJson() ? say(QJsonDocument(QJsonObject{{QStringLiteral("count"), count}}).toJson())
                            : say(QStringLiteral("%1\n").arg(count));
}

} // namespace

int runNodes(const QStringList& arguments)
{
    Arguments line(QStringLiteral("nodes"),
                   QStringLiteral("Lists the tasks of a plan that meet a filter, page by page."),
                   QStringLiteral("PLAN"));
    line.addOption("name", "pattern", "Name matches this pattern, letter case ignored.");
    line.addOption("from", "date", "Created on this day or later, as in 2026-03-05.");
    line.addOption("to", "date", "Created on this day or earlier.");
    line.addOption("user", "id", "This user is responsible.");
    line.addOption("related-user", "id", "This user is responsible, executing, cooperating or the creator.");
    line.addOption("list", "kind", "all, received (handed to you) or post (made by you).");
    line.addOption("finished", nullptr, "Finished tasks only.");
    line.addOption("unfinished", nullptr, "Tasks that are not finished only.");
    line.addOption("category", "name", "Category.");
    line.addOption("without-plan", nullptr, "Tasks that belong to no plan.");
    addPageOptions(line);
    line.addOption("count", nullptr, "Tell only how many there are, on all pages.");
    line.addJsonOption();
    Page page;
    KvPlanNodeCondition condition;
    if (!line.read(arguments, 1) || !line.needService() || !readPage(line, page) ||
        !readCondition(line, condition))
        return line.exitCode();

    const Session session;
    int count = 0;
    QList<KvPlanNode> nodes;
    {
        const Progress progress(QStringLiteral("reading the tasks"));
        // Programs get the page alone, so nobody has to count for them.
        const bool mustCount = line.isSet("count") || !line.wantsJson();
        if ((!mustCount || KvPlanData::instance()->getPlanNodeRangeCount(condition, count)) &&
            !line.isSet("count"))
            KvPlanData::instance()->getPlanNodeRangeData(condition, page.skip, page.limit, nodes);
    }
    if (session.hasFailed())
        return session.complainOfFailure(QStringLiteral("read the tasks of \"%1\"").arg(condition.planId));
    if (line.isSet("count"))
        return sayCount(line, count);
    if (line.wantsJson())
        return say(QJsonDocument(nodesToJson(nodes)).toJson());
    return say((nodes.isEmpty() ? QString() : nodesText(nodes)) + nodesFooter(page, nodes.size(), count));
}

int runTodo(const QStringList& arguments)
{
    Arguments line(QStringLiteral("todo"),
                   QStringLiteral("Lists your tasks in the project that are not finished, the earliest\n"
                                  "planned finish first."),
                   QString());
    line.addOption("category", "name", "Category.");
    addPageOptions(line);
    line.addJsonOption();
    Page page;
    if (!line.read(arguments, 0) || !line.needService() || !readPage(line, page) || !line.needProject())
        return line.exitCode();

    const Session session;
    bool isRead = false;
    QList<KvPlanNode> nodes;
    {
        const Progress progress(QStringLiteral("reading your tasks"));
        isRead =
            KvPlanData::instance()->getAllPlanNodes(page.skip, page.limit, nodes, line.value("category"));
    }
    if (!isRead)
        return session.complainOfFailure(QStringLiteral("read your tasks"));
    if (line.wantsJson())
        return say(QJsonDocument(nodesToJson(nodes)).toJson());
    return say((nodes.isEmpty() ? QString() : todoText(nodes)) + todoFooter(page, nodes.size()));
}
