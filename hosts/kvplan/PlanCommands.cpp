#include "PlanCommands.h"

#include "Arguments.h"
#include "CellText.h"
#include "Output.h"
#include "PlanLine.h"
#include "Progress.h"
#include "Question.h"
#include "RecordJson.h"
#include "Session.h"
#include "TextTable.h"

#include <plandata/KvPlanData.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace {

QString plansText(const QList<KvPlan>& plans)
{
    TextTable table;
    table.addColumn(QStringLiteral("Plan"));
    table.addTextColumn(QStringLiteral("Name"));
    table.addTextColumn(QStringLiteral("Category"));
    table.addColumn(QStringLiteral("Changed"));
    table.addTextColumn(QStringLiteral("By"));
    for (const KvPlan& plan : plans)
        table.addRow({plan.id, plan.name, plan.category, minuteText(plan.updatedAt), plan.updatedBy});
    return table.toText(terminalWidth());
}

QByteArray plansJson(const QList<KvPlan>& plans)
{
    QJsonArray array;
    for (const KvPlan& plan : plans)
        array.append(planToJson(plan));
    return QJsonDocument(array).toJson();
}

// The filter as the options say it. @return false when one of them cannot be read.
bool readCondition(Arguments& line, KvPlanCondition& condition)
{
    condition.name = line.value("name");
    condition.category = line.value("category");
    return line.readPeriod(condition.allTime, condition.startDate, condition.endDate);
}

int sayAllPlans(const Session& session, const Arguments& line)
{
    QList<KvPlan> plans;
    bool isRead = false;
    {
        const Progress progress(QStringLiteral("reading the plans"));
        isRead = KvPlanData::instance()->getAllPlan(plans, true);
    }
    if (!isRead) {
        complain(session.failure(QStringLiteral("read the plans")));
        return RequestFailed;
    }
    if (line.wantsJson())
        return say(plansJson(plans));
    return say(plans.isEmpty() ? QStringLiteral("no plans\n") : plansText(plans));
}

int sayFilteredPlans(const Session& session, const Arguments& line, const KvPlanCondition& condition,
                     int page, int pageSize)
{
    int count = 0;
    QList<KvPlan> plans;
    {
        const Progress progress(QStringLiteral("reading the plans"));
        if (KvPlanData::instance()->getPlanRangeCount(condition, count))
            KvPlanData::instance()->getPlanRangeData(condition, (page - 1) * pageSize, pageSize, plans);
    }
    if (session.hasFailed()) {
        complain(session.failure(QStringLiteral("read the plans")));
        return RequestFailed;
    }
    if (line.wantsJson())
        return say(plansJson(plans));
    const int pages = count / pageSize + (count % pageSize > 0 ? 1 : 0);
    const QString footer = count == 0 ? QStringLiteral("no plans\n")
                                      : QStringLiteral("%1 of %2 plans, page %3 of %4\n")
                                            .arg(plans.size())
                                            .arg(count)
                                            .arg(page)
                                            .arg(pages);
    return say(plans.isEmpty() ? footer : plansText(plans) + footer);
}

} // namespace

int runPlans(const QStringList& arguments)
{
    Arguments line(QStringLiteral("plans"),
                   QStringLiteral("Lists the project's plans: all in natural order of their names, or those\n"
                                  "that meet a filter, page by page."),
                   QString());
    line.addOption("name", "pattern", "Name matches this pattern, letter case ignored.");
    line.addOption("category", "name", "Plan category.");
    line.addOption("from", "date", "Created or changed on this day or later, as in 2026-03-05.");
    line.addOption("to", "date", "Created or changed on this day or earlier.");
    line.addOption("page", "number", "Page to show, from 1.");
    line.addOption("page-size", "count", "Plans on a page (50).");
    line.addJsonOption();
    int page = 1;
    int pageSize = 50;
    KvPlanCondition condition;
    if (!line.read(arguments, 0) || !line.needService() || !line.readNumber("page", 1, 1000000, page) ||
        !line.readNumber("page-size", 1, 1000, pageSize) || !readCondition(line, condition) ||
        !line.needProject())
        return line.exitCode();

    const Session session;
    for (const char* option : {"name", "category", "from", "to", "page", "page-size"}) {
        if (line.isSet(option))
            return sayFilteredPlans(session, line, condition, page, pageSize);
    }
    return sayAllPlans(session, line);
}

int runCreate(const QStringList& arguments)
{
    Arguments line(QStringLiteral("create"), QStringLiteral("Creates an empty plan in the project."),
                   QStringLiteral("NAME"));
    line.addOption("category", "name", "Plan category.");
    line.addJsonOption();
    if (!line.read(arguments, 1) || !line.needService() || !line.needProject())
        return line.exitCode();
    const Session session;
    KvPlan plan;
    plan.name = line.positional(0);
    plan.category = line.value("category");
    if (!KvPlanData::instance()->createPlan(plan)) {
        complain(session.failure(QStringLiteral("create the plan \"%1\"").arg(line.positional(0))));
        return RequestFailed;
    }
    return sayPlan(plan, line.wantsJson());
}

int runCopy(const QStringList& arguments)
{
    Arguments line(QStringLiteral("copy"), QStringLiteral("Copies a plan with its tasks."),
                   QStringLiteral("PLAN"));
    line.addJsonOption();
    if (!line.read(arguments, 1) || !line.needService())
        return line.exitCode();
    const Session session;
    KvPlan copy;
    if (!KvPlanData::instance()->copyPlanById(line.positional(0), copy)) {
        complain(session.failure(QStringLiteral("copy the plan \"%1\"").arg(line.positional(0))));
        return RequestFailed;
    }
    return sayPlan(copy, line.wantsJson());
}

int runRename(const QStringList& arguments)
{
    Arguments line(QStringLiteral("rename"),
                   QStringLiteral("Gives a plan another name; nothing else of it changes."),
                   QStringLiteral("PLAN NAME"));
    line.addJsonOption();
    if (!line.read(arguments, 2) || !line.needService())
        return line.exitCode();
    const Session session;
    KvPlan plan;
    if (!session.readPlan(line.positional(0), plan))
        return RequestFailed;
    plan.id = line.positional(0); // the library compares with what it read under that identifier
    plan.name = line.positional(1);
    if (!KvPlanData::instance()->updatePlan(plan)) {
        complain(session.failure(QStringLiteral("rename the plan \"%1\"").arg(line.positional(0))));
        return RequestFailed;
    }
    return sayPlan(plan, line.wantsJson());
}

int runDelete(const QStringList& arguments)
{
    Arguments line(QStringLiteral("delete"),
                   QStringLiteral("Deletes a plan with its tasks, after asking; says nothing when done."),
                   QStringLiteral("PLAN"));
    line.addOption("yes", nullptr, "Do not ask.");
    if (!line.read(arguments, 1) || !line.needService())
        return line.exitCode();
    const Session session;
    const QString id = line.positional(0);
    if (!line.isSet("yes")) {
        KvPlan plan;
        if (!session.readPlan(id, plan))
            return RequestFailed;
        if (!agrees(QStringLiteral("Delete \"%1\" with its %2 tasks?")
                        .arg(fitted(plan.name, 0))
                        .arg(plan.planNodes.size()))) {
            complain(QStringLiteral("nothing was deleted"));
            return NotAgreed;
        }
    }
    if (!KvPlanData::instance()->deletePlan(id)) {
        complain(session.failure(QStringLiteral("delete the plan \"%1\"").arg(id)));
        return RequestFailed;
    }
    return Success;
}
