#include <service/KvPlanNodeEndpoints.h>

#include <model/KvDecodePool.h>
#include <model/KvEncodePool.h>
#include <model/KvPlanCodec.h>
#include <service/KvQueryFilter.h>
#include <service/KvRequestFrame.h>

#include <KvNetwork/KvBaseProxy.h>
#include <KvNetwork/NetworkEventLoop.h>
#include <KvNetwork/NetworkManager.h>
#include <KvPublicFun/KvPub.h>

#include <QtCore/QJsonArray>

namespace Kv {

namespace {

void appendPlanNodes(const QList<QJsonObject>& objects, QList<KvPlanNode>& nodes)
{
    nodes.reserve(nodes.size() + objects.size());
    KvDecodePool pool(objects.size());
    const KvPlanNode fresh;
    for (const QJsonObject& object : objects) {
        nodes.append(fresh);
        jsonObjectToPlanNode(object, nodes.last(), pool);
    }
}

// What has to be sent of `edited`: the values that `cached` does not have.
QJsonObject changedValues(const KvPlanNode& cached, const KvPlanNode& edited, KvEncodePool& pool)
{
    const QJsonObject before = planNodeToJsonObject(cached, true, pool);
    QJsonObject changes = planNodeToJsonObject(edited, true, pool);
    KvPub::removeCommonJsonValue(before, changes);
    return changes;
}

} // namespace

bool requestPlanNodeById(const QString& planNodeId, KvPlanNode& node)
{
    return exchange(NetworkManager::instance().get(taskUrl("planNodes/%1?expand=true", planNodeId)),
                    [&](const NetworkEventLoop& reply) { jsonObjectToPlanNode(reply.object(), node); });
}

bool requestPlanNodeRangeCount(const KvPlanNodeCondition& condition, int& count)
{
    if (condition.planId.isEmpty())
        return false;
    const QString url = taskUrl("plans/%1/planNodes?where=%2&only_count=true", condition.planId,
                                buildPlanNodeQuery(condition));
    return exchange(NetworkManager::instance().get(url), [&](const NetworkEventLoop& reply) {
        count = reply.object().value(QLatin1String("count")).toInt(0);
    });
}

bool requestPlanNodeRangeData(const KvPlanNodeCondition& condition, int skip, int limit,
                              QList<KvPlanNode>& nodes)
{
    if (condition.planId.isEmpty())
        return false;
    // The filter comes last, as for a page of plans: what a user searches for may look like a placeholder.
    const QString url = taskUrl("plans/%1/planNodes?where=%4&skip=%2&limit=%3", condition.planId, skip, limit,
                                buildPlanNodeQuery(condition));
    return exchange(NetworkManager::instance().get(url),
                    [&](const NetworkEventLoop& reply) { appendPlanNodes(reply.objectList(), nodes); });
}

bool requestPlanNodesByPlanIds(const QStringList& planIds, const QString& category, QList<KvPlanNode>& nodes)
{
    if (planIds.isEmpty())
        return false;
    const QJsonObject where{{QLatin1String("planId"), makeInFilter(planIds)}};
    const QString url = taskUrl("projects/%1/planNodes?where=%2&category=%3&expand=true", currentProject(),
                                filterText(where), category);
    return exchange(NetworkManager::instance().get(url),
                    [&](const NetworkEventLoop& reply) { appendPlanNodes(reply.objectList(), nodes); });
}

bool requestTodoPlanNodes(int skip, int limit, QList<KvPlanNode>& nodes, const QString& category)
{
    const QStringList states{QStringLiteral("unstart"), QStringLiteral("processing")};
    // The category comes last: the one text here that a user may have chosen.
    const QString url = taskUrl("projects/%1/planNodes?type=todo&category=%5&expand=true&order=finishDate"
                                "&skip=%2&limit=%3&state=%4",
                                currentProject(), skip, limit, filterText(makeInFilter(states)), category);
    return exchange(NetworkManager::instance().get(url),
                    [&](const NetworkEventLoop& reply) { appendPlanNodes(reply.objectList(), nodes); });
}

bool requestCreatePlanNode(KvPlanNode& node)
{
    if (node.projectId.isEmpty())
        node.projectId = currentProject();
    QJsonObject body;
    planNodeToJsonObject(node, body, true);
    return exchange(NetworkManager::instance().postJson(taskUrl("planNodes"), body),
                    [&](const NetworkEventLoop& reply) { jsonObjectToPlanNode(reply.object(), node); });
}

bool requestCreatePlanNodes(const QString& planId, QList<KvPlanNode>& nodes)
{
    const QString project = currentProject();
    QJsonArray body;
    KvEncodePool pool(nodes.size());
    for (KvPlanNode& node : nodes) {
        node.projectId = project;
        body.append(planNodeToJsonObject(node, true, pool));
    }
    const QString url = taskUrl("plans/%1/planNodes", planId);
    return exchange(NetworkManager::instance().postJson(url, body), [&](const NetworkEventLoop& reply) {
        QList<QJsonObject> created; // one for every element, also for one that is no object
        const QJsonArray elements = reply.array();
        for (const QJsonValue& element : elements)
            created.append(element.toObject());
        nodes.clear();
        appendPlanNodes(created, nodes);
    });
}

bool requestUpdatePlanNode(const KvPlanNode& cached, KvPlanNode& node)
{
    KvEncodePool pool;
    const QJsonObject changes = changedValues(cached, node, pool);
    if (changes.isEmpty()) {
        node = cached; // also resets what the service's JSON does not carry
        return true;
    }
    return exchange(NetworkManager::instance().putJson(taskUrl("planNodes/%1", cached.id), changes),
                    [&](const NetworkEventLoop& reply) { jsonObjectToPlanNode(reply.object(), node); });
}

bool requestUpdatePlanNodes(const QList<QPair<KvPlanNode, KvPlanNode>>& changes, QList<KvPlanNode>& nodes)
{
    QJsonArray body;
    KvEncodePool pool(changes.size());
    for (const QPair<KvPlanNode, KvPlanNode>& change : changes) {
        QJsonObject values = changedValues(change.first, change.second, pool);
        if (values.isEmpty())
            continue;
        values.insert(QLatin1String("_id"), change.second.id);
        body.append(values);
    }
    nodes.clear();
    return exchange(NetworkManager::instance().putJson(taskUrl("planNodes"), body),
                    [](const NetworkEventLoop&) {});
}

bool requestDeletePlanNode(const QString& planNodeId)
{
    return exchange(NetworkManager::instance().deleteResource(taskUrl("planNodes/%1", planNodeId)),
                    [](const NetworkEventLoop&) {});
}

bool requestDeletePlanNodes(const QStringList& ids)
{
    const QJsonObject list{{QLatin1String("ids"), QJsonArray::fromStringList(ids)}};
    QString parameter;
    KvBaseProxy::getQueryParam(filterText(list), parameter);
    return exchange(NetworkManager::instance().deleteResource(taskUrl("planNodes?queryParam=%1", parameter)),
                    [](const NetworkEventLoop&) {});
}

} // namespace Kv
