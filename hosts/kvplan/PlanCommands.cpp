#include "PlanCommands.h"

#include "Arguments.h"
#include "RecordJson.h"
#include "Session.h"
#include "TextTable.h"

#include <plandata/KvPlanData.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <cstdio>
#include <optional>

namespace {

bool sayPlans(const QList<KvPlan>& plans, bool asJson)
{
    if (asJson) {
        QJsonArray array;
        for (const KvPlan& plan : plans)
            array.append(planToJson(plan));
        return say(QJsonDocument(array).toJson(QJsonDocument::Indented));
    }
    TextTable table;
    table.addColumn(QStringLiteral("Plan"));
    table.addColumn(QStringLiteral("Name"));
    table.addColumn(QStringLiteral("Category"));
    table.addColumn(QStringLiteral("Changed"));
    table.addColumn(QStringLiteral("By"));
    for (const KvPlan& plan : plans)
        table.addRow({plan.id, plan.name, plan.category, minuteText(plan.updatedAt), plan.updatedBy});
    return say(table.toText(terminalWidth()));
}

int sayPlan(const KvPlan& plan, bool asJson)
{
    const bool written = asJson ? say(QJsonDocument(planToJson(plan)).toJson(QJsonDocument::Indented))
                                : say(QStringLiteral("%1  %2\n").arg(plan.id, fitted(plan.name, 0)));
    return written ? Success : OutputFailed;
}

// The filter as the options say it; nothing when one of them cannot be read.
std::optional<KvPlanCondition> readCondition(Arguments& line)
{
    KvPlanCondition condition;
    condition.name = line.value("name");
    condition.category = line.value("category");
    condition.allTime = !line.isSet("from") && !line.isSet("to");
    if (condition.allTime)
        return condition;
    const QString from = line.isSet("from") ? line.value("from") : QStringLiteral("1970-01-01");
    const QString to = line.isSet("to") ? line.value("to") : QStringLiteral("9999-12-30");
    condition.startDate = QDateTime(QDate::fromString(from, Qt::ISODate), QTime(0, 0));
    condition.endDate = QDateTime(QDate::fromString(to, Qt::ISODate), QTime(0, 0));
    for (const auto& [date, text] :
         {std::pair{condition.startDate, from}, std::pair{condition.endDate, to}}) {
        if (!date.isValid()) {
            complain(QStringLiteral("\"%1\" is no date; one looks like 2026-03-05").arg(text));
            return std::nullopt;
        }
    }
    return condition;
}

int sayFilteredPlans(const Session& session, const Arguments& line, const KvPlanCondition& condition,
                     int page, int pageSize)
{
    int count = 0;
    if (!KvPlanData::instance()->getPlanRangeCount(condition, count)) {
        complain(session.failure(QStringLiteral("count the plans")));
        return RequestFailed;
    }
    QList<KvPlan> plans;
    KvPlanData::instance()->getPlanRangeData(condition, (page - 1) * pageSize, pageSize, plans);
    if (session.hasFailed()) {
        complain(session.failure(QStringLiteral("read the plans")));
        return RequestFailed;
    }
    bool written = sayPlans(plans, line.wantsJson());
    if (written && !line.wantsJson()) {
        const int pages = (count + pageSize - 1) / pageSize;
        written = say(QStringLiteral("%1 plans, page %2 of %3\n").arg(count).arg(page).arg(qMax(1, pages)));
    }
    return written ? Success : OutputFailed;
}

bool readPlan(const Session& session, const QString& id, KvPlan& plan)
{
    if (KvPlanData::instance()->getPlanById(id, plan))
        return true;
    complain(session.failure(QStringLiteral("read the plan \"%1\"").arg(id)));
    return false;
}

// Only a whole "y" or "yes" is a yes; no answer at all is a no.
bool agrees(const QString& question)
{
    const QByteArray prompt = question.toUtf8() + " [y/N] ";
    std::fwrite(prompt.constData(), 1, size_t(prompt.size()), stderr);
    char answer[16] = {};
    if (!std::fgets(answer, sizeof answer, stdin))
        return false;
    const QByteArray word = QByteArray(answer).trimmed().toLower();
    return word == "y" || word == "yes";
}

} // namespace

int runPlans(const QStringList& arguments)
{
    Arguments line(
        QStringLiteral("plans"),
        QStringLiteral("Lists the project's plans, all in natural order of their names, or those that meet "
                       "a filter, page by page."),
        QString());
    line.addOption("name", "pattern", "Name matches this pattern, letter case ignored.");
    line.addOption("category", "name", "Plan category.");
    line.addOption("from", "date", "Created or changed on this day or later, as in 2026-03-05.");
    line.addOption("to", "date", "Created or changed on this day or earlier.");
    line.addOption("page", "number", "Page to show, from 1.");
    line.addOption("page-size", "count", "Plans on a page (50).");
    int page = 1;
    int pageSize = 50;
    if (!line.read(arguments, 0) || !line.needService() || !line.readNumber("page", 1, 1000000, page) ||
        !line.readNumber("page-size", 1, 1000, pageSize) || !line.needProject())
        return line.exitCode();

    const Session session;
    bool filtered = false;
    for (const char* option : {"name", "category", "from", "to", "page", "page-size"})
        filtered = filtered || line.isSet(option);
    if (filtered) {
        const std::optional<KvPlanCondition> condition = readCondition(line);
        return condition ? sayFilteredPlans(session, line, *condition, page, pageSize) : WrongUsage;
    }
    QList<KvPlan> plans;
    if (!KvPlanData::instance()->getAllPlan(plans, true)) {
        complain(session.failure(QStringLiteral("read the plans")));
        return RequestFailed;
    }
    return sayPlans(plans, line.wantsJson()) ? Success : OutputFailed;
}

int runCreate(const QStringList& arguments)
{
    Arguments line(QStringLiteral("create"), QStringLiteral("Creates an empty plan in the project."),
                   QStringLiteral("NAME"));
    line.addOption("category", "name", "Plan category.");
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
    if (!line.read(arguments, 2) || !line.needService())
        return line.exitCode();
    const Session session;
    KvPlan plan;
    if (!readPlan(session, line.positional(0), plan))
        return RequestFailed;
    plan.name = line.positional(1);
    if (!KvPlanData::instance()->updatePlan(plan)) {
        complain(session.failure(QStringLiteral("rename the plan \"%1\"").arg(line.positional(0))));
        return RequestFailed;
    }
    return sayPlan(plan, line.wantsJson());
}

int runDelete(const QStringList& arguments)
{
    Arguments line(QStringLiteral("delete"), QStringLiteral("Deletes a plan with its tasks, after asking."),
                   QStringLiteral("PLAN"));
    line.addOption("yes", nullptr, "Do not ask.");
    if (!line.read(arguments, 1) || !line.needService())
        return line.exitCode();
    const Session session;
    const QString id = line.positional(0);
    if (!line.isSet("yes")) {
        KvPlan plan;
        if (!readPlan(session, id, plan))
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
