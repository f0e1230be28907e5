#include "RecordJson.h"

#include <QtCore/QJsonArray>

namespace {

QJsonValue dateValue(const QDateTime& dateTime)
{
    return dateTime.isValid() ? QJsonValue(dateTime.toString(Qt::ISODateWithMs))
                              : QJsonValue(QJsonValue::Null);
}

QJsonObject durationToJson(const KvDuration& duration)
{
    return {{QStringLiteral("value"), duration.value}, {QStringLiteral("units"), duration.units}};
}

QJsonObject predecessorToJson(const KvPlanPredecessor& link)
{
    return {
        {QStringLiteral("sourcePlanNodeName"), link.sourcePlanNodeName},
        {QStringLiteral("targetPlanNodeName"), link.targetPlanNodeName},
        {QStringLiteral("lag"), durationToJson(link.lag)},
        {QStringLiteral("type"), link.type},
        {QStringLiteral("sourcePlanNodeUniqueId"), link.sourcePlanNodeUniqueId},
        {QStringLiteral("targetPlanNodeUniqueId"), link.targetPlanNodeUniqueId},
        {QStringLiteral("sourcePlanNodeId"), link.sourcePlanNodeId},
        {QStringLiteral("targetPlanNodeId"), link.targetPlanNodeId},
    };
}

QJsonObject documentToJson(const KvDocument& document)
{
    return {
        {QStringLiteral("id"), document.id},
        {QStringLiteral("name"), document.name},
        {QStringLiteral("fileSize"), document.fileSize},
        {QStringLiteral("suffix"), document.suffix},
        {QStringLiteral("createdAt"), document.createdAt},
        {QStringLiteral("createdBy"), document.createdBy},
    };
}

QJsonObject listsToJson(const QMap<QString, QStringList>& lists)
{
    QJsonObject json;
    for (auto entry = lists.constBegin(); entry != lists.constEnd(); ++entry)
        json.insert(entry.key(), QJsonArray::fromStringList(entry.value()));
    return json;
}

template<class Record>
QJsonArray arrayOf(const QList<Record>& records, QJsonObject (*toJson)(const Record&))
{
    QJsonArray array;
    for (const Record& record : records)
        array.append(toJson(record));
    return array;
}

} // namespace

QJsonObject nodeToJson(const KvPlanNode& node)
{
    return {
        {QStringLiteral("id"), node.id},
        {QStringLiteral("category"), node.category},
        {QStringLiteral("name"), node.name},
        {QStringLiteral("finishedPercentage"), node.finishedPercentage},
        {QStringLiteral("planNodeId"), node.planNodeId},
        {QStringLiteral("uniqueId"), node.uniqueId},
        {QStringLiteral("parentTaskId"), node.parentTaskId},
        {QStringLiteral("guid"), node.guid},
        {QStringLiteral("planId"), node.planId},
        {QStringLiteral("planName"), node.planName},
        {QStringLiteral("projectId"), node.projectId},
        {QStringLiteral("notes"), node.notes},
        {QStringLiteral("summary"), node.summary},
        {QStringLiteral("milestone"), node.milestone},
        {QStringLiteral("predecessors"), arrayOf(node.predecessors, predecessorToJson)},
        {QStringLiteral("startDate"), dateValue(node.startDate)},
        {QStringLiteral("finishDate"), dateValue(node.finishDate)},
        {QStringLiteral("duration"), durationToJson(node.duration)},
        {QStringLiteral("startText"), node.startText},
        {QStringLiteral("durationText"), node.durationText},
        {QStringLiteral("finishSlack"), durationToJson(node.finishSlack)},
        {QStringLiteral("finishText"), node.finishText},
        {QStringLiteral("type"), node.type},
        {QStringLiteral("remark"), node.remark},
        {QStringLiteral("isDistributed"), node.isDistributed},
        {QStringLiteral("dynamicEffect"), node.dynamicEffect},
        {QStringLiteral("displaySimulation"), node.displaySimulation},
        {QStringLiteral("entityHideDate"), dateValue(node.entityHideDate)},
        {QStringLiteral("entityHideType"), node.entityHideType},
        {QStringLiteral("planWorkload"), node.planWorkload},
        {QStringLiteral("actualWorkload"), node.actualWorkload},
        {QStringLiteral("createdAt"), dateValue(node.createdAt)},
        {QStringLiteral("updatedAt"), dateValue(node.updatedAt)},
        {QStringLiteral("createdBy"), node.createdBy},
        {QStringLiteral("updatedBy"), node.updatedBy},
        {QStringLiteral("actualStartDate"), dateValue(node.actualStartDate)},
        {QStringLiteral("actualFinishDate"), dateValue(node.actualFinishDate)},
        {QStringLiteral("userIds"), QJsonArray::fromStringList(node.userIds)},
        {QStringLiteral("executeIds"), QJsonArray::fromStringList(node.executeIds)},
        {QStringLiteral("cooperateIds"), QJsonArray::fromStringList(node.cooperateIds)},
        {QStringLiteral("links"), listsToJson(node.links)},
        {QStringLiteral("documentIds"), QJsonArray::fromStringList(node.documentIds)},
        {QStringLiteral("documents"), arrayOf(node.documents, documentToJson)},
        {QStringLiteral("materialBills"), listsToJson(node.materialBills)},
    };
}

QJsonObject planToJson(const KvPlan& plan)
{
    return {
        {QStringLiteral("id"), plan.id},
        {QStringLiteral("category"), plan.category},
        {QStringLiteral("projectId"), plan.projectId},
        {QStringLiteral("name"), plan.name},
        {QStringLiteral("mppFilePath"), plan.mppFilePath},
        {QStringLiteral("projectFileId"), plan.projectFileId},
        {QStringLiteral("createdAt"), dateValue(plan.createdAt)},
        {QStringLiteral("updatedAt"), dateValue(plan.updatedAt)},
        {QStringLiteral("createdBy"), plan.createdBy},
        {QStringLiteral("updatedBy"), plan.updatedBy},
        {QStringLiteral("isPublic"), plan.isPublic},
        {QStringLiteral("ranges"), QJsonArray::fromStringList(plan.ranges)},
        {QStringLiteral("planNodes"), arrayOf(plan.planNodes, nodeToJson)},
    };
}
