#include "ExchangeCommands.h"

#include "Arguments.h"
#include "ImportCheck.h"
#include "PlanLine.h"
#include "Progress.h"
#include "Session.h"

#include <model/KvPlanDataUtils.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QSaveFile>

namespace {

// A name is wanted by people who look for the plan later; a file without one lends its own.
QString planName(const Arguments& line, const KvPlan& plan)
{
    if (line.isSet("name"))
        return line.value("name");
    return plan.name.isEmpty() ? QFileInfo(line.positional(0)).completeBaseName() : plan.name;
}

ExitCode sayFindings(const Arguments& line, const ImportFindings& findings)
{
    for (const QString& problem : findings.problems)
        complain(QStringLiteral("%1: %2").arg(line.positional(0), problem));
    if (!line.isSet("dry-run"))
        return findings.problems.isEmpty() ? Success : BadData;
    const int tasks = findings.plan.planNodes.size();
    ExitCode said = Success;
    if (line.wantsJson())
        said =
            say(QJsonDocument(QJsonObject{
                                  {QStringLiteral("file"), line.positional(0)},
                                  {QStringLiteral("tasks"), tasks},
                                  {QStringLiteral("problems"), QJsonArray::fromStringList(findings.problems)},
                              })
                    .toJson());
    else if (findings.problems.isEmpty())
        said = say(QStringLiteral("%1: %2 tasks, nothing wrong\n").arg(line.positional(0)).arg(tasks));
    return said == Success && !findings.problems.isEmpty() ? BadData : said;
}

QByteArray exchangeJson(const KvPlan& plan)
{
    Progress progress(QStringLiteral("writing the tasks"));
    if (plan.planNodes.size() > 10000)
        progress.begin();
    QJsonObject object;
    KvPlanDataUtils::planToJsonObjectMPXJ(plan, object);
    return QJsonDocument(object).toJson();
}

} // namespace

int runImport(const QStringList& arguments)
{
    Arguments line(QStringLiteral("import"),
                   QStringLiteral("Checks a schedule in exchange JSON and creates a plan from it. A file in\n"
                                  "which something is wrong is not sent."),
                   QStringLiteral("FILE"));
    line.addOption("dry-run", nullptr, "Check only; send nothing.");
    line.addOption("name", "name", "Name of the plan (the file's own when left out).");
    line.addOption("category", "name", "Plan category.");
    line.addJsonOption();
    if (!line.read(arguments, 1) || (!line.isSet("dry-run") && !(line.needService() && line.needProject())))
        return line.exitCode();
    QFile file(line.positional(0));
    if (!file.open(QIODevice::ReadOnly)) {
        complain(QStringLiteral("cannot read \"%1\": %2").arg(file.fileName(), file.errorString()));
        return BadData;
    }
    const ImportFindings findings = checkImport(file);
    const ExitCode checked = sayFindings(line, findings);
    if (checked != Success || line.isSet("dry-run"))
        return checked;

    KvPlan plan = findings.plan;
    const QString name = planName(line, plan);
    plan.name = name;
    plan.category = line.value("category");
    for (KvPlanNode& task : plan.planNodes)
        task.category = plan.category;
    const Session session;
    bool isCreated = false;
    {
        const Progress progress(QStringLiteral("sending"));
        isCreated = KvPlanData::instance()->createPlan(plan);
    }
    if (!isCreated) {
        complain(session.failure(QStringLiteral("create the plan \"%1\"").arg(name)));
        return RequestFailed;
    }
    return sayPlan(plan, line.wantsJson());
}

int runExport(const QStringList& arguments)
{
    Arguments line(
        QStringLiteral("export"),
        QStringLiteral("Writes a plan as exchange JSON. FILE \"-\" is the standard output. A file that\n"
                       "exists is replaced once the new one is whole."),
        QStringLiteral("PLAN FILE"));
    if (!line.read(arguments, 2) || !line.needService())
        return line.exitCode();
    const Session session;
    KvPlan plan;
    if (!session.readPlan(line.positional(0), plan))
        return RequestFailed;
    const QByteArray json = exchangeJson(plan);
    if (line.positional(1) == QLatin1String("-"))
        return say(json);
    QSaveFile file(line.positional(1));
    if (!file.open(QIODevice::WriteOnly) || file.write(json) != json.size() || !file.commit()) {
        complain(QStringLiteral("cannot write \"%1\": %2").arg(file.fileName(), file.errorString()));
        return OutputFailed;
    }
    return Success;
}
