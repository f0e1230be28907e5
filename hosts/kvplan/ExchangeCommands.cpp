#include "ExchangeCommands.h"

#include "Arguments.h"
#include "ImportCheck.h"
#include "Progress.h"
#include "Session.h"
#include "TextTable.h"

#include <model/KvPlanDataUtils.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
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

bool sayFindings(const Arguments& line, const ImportFindings& findings)
{
    if (findings.problems.isEmpty())
        return say(QStringLiteral("%1: %2 tasks, nothing wrong\n")
                       .arg(line.positional(0))
                       .arg(findings.plan.planNodes.size()));
    for (const QString& problem : findings.problems)
        complain(QStringLiteral("%1: %2").arg(line.positional(0), problem));
    return true;
}

} // namespace

int runImport(const QStringList& arguments)
{
    Arguments line(
        QStringLiteral("import"),
        QStringLiteral("Checks a schedule in exchange JSON and creates a plan from it. A file in which "
                       "something is wrong is not sent."),
        QStringLiteral("FILE"));
    line.addOption("dry-run", nullptr, "Check only; send nothing.");
    line.addOption("name", "name", "Name of the plan (the file's own when left out).");
    line.addOption("category", "name", "Plan category.");
    if (!line.read(arguments, 1) || (!line.isSet("dry-run") && !(line.needService() && line.needProject())))
        return line.exitCode();
    QFile file(line.positional(0));
    if (!file.open(QIODevice::ReadOnly)) {
        complain(QStringLiteral("cannot read \"%1\": %2").arg(file.fileName(), file.errorString()));
        return BadData;
    }

    KvPlan plan;
    {
        Progress progress;
        const ImportFindings findings = checkImport(file.readAll(), progress);
        if (!sayFindings(line, findings))
            return OutputFailed;
        if (!findings.problems.isEmpty())
            return BadData;
        if (line.isSet("dry-run"))
            return Success;
        plan = findings.plan;
        plan.name = planName(line, plan);
        plan.category = line.value("category");
        for (KvPlanNode& task : plan.planNodes)
            task.category = plan.category;
        progress.show(QStringLiteral("sending"));
    }
    const Session session;
    if (!KvPlanData::instance()->createPlan(plan)) {
        complain(session.failure(QStringLiteral("create the plan")));
        return RequestFailed;
    }
    return say(QStringLiteral("%1  %2\n").arg(plan.id, fitted(plan.name, 0))) ? Success : OutputFailed;
}

int runExport(const QStringList& arguments)
{
    Arguments line(QStringLiteral("export"),
                   QStringLiteral("Writes a plan as exchange JSON. FILE \"-\": to the "
                                  "standard output."),
                   QStringLiteral("PLAN FILE"));
    if (!line.read(arguments, 2) || !line.needService())
        return line.exitCode();
    const Session session;
    KvPlan plan;
    if (!KvPlanData::instance()->getPlanById(line.positional(0), plan)) {
        complain(session.failure(QStringLiteral("read the plan \"%1\"").arg(line.positional(0))));
        return RequestFailed;
    }
    QByteArray json;
    {
        Progress progress;
        progress.show(QStringLiteral("writing %1 tasks").arg(plan.planNodes.size()));
        QJsonObject object;
        KvPlanDataUtils::planToJsonObjectMPXJ(plan, object);
        json = QJsonDocument(object).toJson(QJsonDocument::Indented);
    }
    if (line.positional(1) == QLatin1String("-"))
        return say(json) ? Success : OutputFailed;
    QSaveFile file(line.positional(1)); // the old file stays until the new one is whole
    if (!file.open(QIODevice::WriteOnly) || file.write(json) != json.size() || !file.commit()) {
        complain(QStringLiteral("cannot write \"%1\": %2").arg(file.fileName(), file.errorString()));
        return OutputFailed;
    }
    return Success;
}
