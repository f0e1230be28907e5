// Makes a plan of a schedule in the exchange format.
//
//     import_schedule http://127.0.0.1:8700/ sample-project schedule.json

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvSoftBase/KvSoftBase.h>
#include <model/KvPlanDataUtils.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QTextStream>

namespace {

int end(const QString& line, int exitCode)
{
    QTextStream(stdout) << line << '\n';
    return exitCode;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    KvBaseApi::GetInstance().setBaseApi(arguments.value(1));
    GetSoftCache()->setCurrentProjectId(arguments.value(2));

    QString failure;
    QObject::connect(&NetworkManager::instance(), &NetworkManager::requestFinished,
                     [&failure](const KvNetworkReport& report) { failure = report.message; });

    QFile file(arguments.value(3));
    if (!file.open(QIODevice::ReadOnly))
        return end(QStringLiteral("cannot read the file: ") + file.errorString(), 1);

    // [import]
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (!document.isObject()) // the conversion itself never fails: it would read an empty plan
        return end(QStringLiteral("not a schedule: ") + error.errorString(), 1);

    KvPlan plan;
    KvPlanDataUtils::jsonObjectToPlanMPXJ(document.object(), plan);
    if (!KvPlanDataUtils::findParentCycles(plan.planNodes).isEmpty())
        return end(QStringLiteral("tasks are parents of each other in a circle"), 1);
    for (KvPlanNode& node : plan.planNodes) {
        node.notes.clear(); // one character, of code 0 or 1, and not the note
        for (KvPlanPredecessor& predecessor : node.predecessors)
            predecessor.targetPlanNodeUniqueId = QString::number(node.uniqueId); // likewise
    }

    if (!KvPlanData::instance()->createPlan(plan)) // plan is overwritten: it now holds the service's record
        return end(QStringLiteral("not created: ") + failure, 1);
    // [/import]
    return end(
        QStringLiteral("created %1, \"%2\", %3 tasks").arg(plan.id, plan.name).arg(plan.planNodes.size()), 0);
}
