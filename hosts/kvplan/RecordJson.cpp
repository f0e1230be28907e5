#include "RecordJson.h"

#include "NodeFields.h"
#include "RecordValues.h"

QJsonObject nodeToJson(const KvPlanNode& node)
{
    QJsonObject json;
    for (const NodeField& field : nodeFields())
        json.insert(field.name, field.value(node));
    return json;
}

QJsonArray nodesToJson(const QList<KvPlanNode>& nodes)
{
    QJsonArray array;
    for (const KvPlanNode& node : nodes)
        array.append(nodeToJson(node));
    return array;
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
        {QStringLiteral("createdAt"), toJson(plan.createdAt)},
        {QStringLiteral("updatedAt"), toJson(plan.updatedAt)},
        {QStringLiteral("createdBy"), plan.createdBy},
        {QStringLiteral("updatedBy"), plan.updatedBy},
        {QStringLiteral("isPublic"), plan.isPublic},
        {QStringLiteral("ranges"), toJson(plan.ranges)},
        {QStringLiteral("planNodes"), nodesToJson(plan.planNodes)},
    };
}

QJsonObject responseToJson(const KvPlanNodeResponse& response)
{
    return {
        {QStringLiteral("id"), response.id},
        {QStringLiteral("hostId"), response.hostId},
        {QStringLiteral("remark"), response.remark},
        {QStringLiteral("percentage"), response.percentage},
        {QStringLiteral("media"), toJson(response.media)},
        {QStringLiteral("documentIds"), toJson(response.documentIds)},
        {QStringLiteral("documents"), toJson(response.documents)},
        {QStringLiteral("actualStartDate"), toJson(response.actualStartDate)},
        {QStringLiteral("actualFinishDate"), toJson(response.actualFinishDate)},
        {QStringLiteral("createdAt"), toJson(response.createdAt)},
        {QStringLiteral("createdBy"), response.createdBy},
    };
}

QJsonObject statisticsToJson(const KvPlanStatistics& statistics)
{
    QJsonArray items;
    for (const KvStatusStatistics& status : statistics.items) {
        QJsonArray situations;
        for (const KvSituationCount& count : status.items)
            situations.append(QJsonObject{{QStringLiteral("situation"), count.situation},
                                          {QStringLiteral("total"), count.total}});
        items.append(QJsonObject{{QStringLiteral("status"), status.status},
                                 {QStringLiteral("total"), status.total},
                                 {QStringLiteral("items"), situations}});
    }
    return {{QStringLiteral("total"), statistics.total}, {QStringLiteral("items"), items}};
}

QJsonObject quantityToJson(const KvStatisticsQuantity& quantity)
{
    return {
        {QStringLiteral("type"), quantity.type},   {QStringLiteral("year"), quantity.year},
        {QStringLiteral("month"), quantity.month}, {QStringLiteral("week"), quantity.week},
        {QStringLiteral("day"), quantity.day},     {QStringLiteral("total"), quantity.total},
    };
}

QJsonObject stateToJson(const KvMeteringState& state)
{
    return {
        {QStringLiteral("id"), state.id},         {QStringLiteral("planId"), state.planId},
        {QStringLiteral("taskId"), state.taskId}, {QStringLiteral("responseId"), state.responseId},
        {QStringLiteral("state"), state.state},
    };
}
