// Puts a task off by a day, adds another one, saves both and reports progress.
//
//     edit_and_save http://127.0.0.1:8700/ sample-project PLAN

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvSoftBase/KvSoftBase.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

#include <algorithm>

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
    const QString planId = arguments.value(3);

    QStringList failures;
    QObject::connect(&NetworkManager::instance(), &NetworkManager::requestFinished,
                     [&failures](const KvNetworkReport& report) {
                         if (report.category != KvNetworkReport::Ok)
                             failures.append(report.message);
                     });

    // [edit]
    KvPlanData& data = *KvPlanData::instance();
    QList<KvPlanNode> nodes; // what the user edits; the cache keeps what the service has
    data.getPlanNodesByPlanId(planId, nodes);
    if (!failures.isEmpty())
        return end(QStringLiteral("no tasks: ") + failures.join(QStringLiteral("; ")), 1);

    const auto open = std::find_if(nodes.begin(), nodes.end(), [](const KvPlanNode& node) {
        return !node.summary && node.actualFinishDate.isNull() && node.finishDate.isValid();
    });
    if (open == nodes.end())
        return end(QStringLiteral("every task is finished"), 0);
    open->finishDate = open->finishDate.addDays(1);
    const KvPlanNode putOff = *open;

    KvPlanNode added; // without an id: the service gives it one
    added.planId = planId;
    added.name = putOff.name + QStringLiteral(", second look");
    added.parentTaskId = putOff.parentTaskId;
    for (const KvPlanNode& node : qAsConst(nodes)) {
        added.planNodeId = std::max(added.planNodeId, node.planNodeId + 1);
        added.uniqueId = std::max(added.uniqueId, node.uniqueId + 1);
    }
    added.startDate = putOff.finishDate;
    added.finishDate = putOff.finishDate.addDays(1);
    nodes.append(added);
    // [/edit]

    // [detect]
    QList<KvPlanNode> toCreate;
    QList<KvPlanNode> toUpdate;
    QStringList toDelete; // stays empty: deleting is a call of its own, deletePlanNodesByIds()
    if (data.hasChanged(nodes))
        data.distributePlanNodes(nodes, toCreate, toUpdate, toDelete);
    // [/detect]
    QTextStream(stdout) << toCreate.size() << " to create, " << toUpdate.size() << " to update\n";

    // [save]
    data.savePlanNodes(planId, nodes);
    if (!failures.isEmpty())
        return end(QStringLiteral("not saved: ") + failures.join(QStringLiteral("; ")), 1);
    nodes.clear();
    data.getPlanNodesByPlanId(planId, nodes); // until then the cache holds what was before the edit
    // [/save]
    if (data.hasChanged(nodes))
        return end(QStringLiteral("the service kept something else"), 1);

    // [progress]
    KvPlanNodeResponse response;
    response.percentage = 50;
    response.remark = QStringLiteral("half done");
    response.actualStartDate = putOff.startDate;
    if (!data.createPlanNodeResponse(putOff.id, response))
        return end(QStringLiteral("not reported: ") + failures.join(QStringLiteral("; ")), 1);
    KvPlanNode reported;
    data.getPlanNodeById(putOff.id, reported); // the report may have moved the task along
    // [/progress]
    return end(QStringLiteral("saved %1, now at %2 %").arg(putOff.id).arg(reported.finishedPercentage), 0);
}
