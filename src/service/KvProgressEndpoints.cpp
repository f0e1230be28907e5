#include <service/KvProgressEndpoints.h>

#include <model/KvProgressCodec.h>
#include <service/KvQueryFilter.h>
#include <service/KvRequestFrame.h>

#include <KvNetwork/NetworkEventLoop.h>
#include <KvNetwork/NetworkManager.h>

namespace Kv {

bool requestPlanNodeResponses(const QString& planNodeId, QList<KvPlanNodeResponse>& responses)
{
    const QString url = taskUrl("planNodes/%1/responses?order=createdAt&expand=true", planNodeId);
    return exchange(NetworkManager::instance().get(url), [&](const NetworkEventLoop& reply) {
        const QList<QJsonObject> objects = reply.objectList();
        for (const QJsonObject& object : objects) {
            responses.append(KvPlanNodeResponse());
            jsonObjectToPlanNodeResponse(object, responses.last());
        }
    });
}

bool requestCreatePlanNodeResponse(const QString& planNodeId, KvPlanNodeResponse& response)
{
    QJsonObject body;
    planNodeResponseToJsonObject(response, body);
    return exchange(
        NetworkManager::instance().postJson(taskUrl("planNodes/%1/responses", planNodeId), body),
        [&](const NetworkEventLoop& reply) { jsonObjectToPlanNodeResponse(reply.object(), response); });
}

bool requestPlanNodeStatistics(const QString& category, KvPlanStatistics& statistics)
{
    QString url = taskUrl("projects/%1/planNodes_statistics?personal=true"
                          "&dimensions=[\"status\",\"situation\"]",
                          currentProject());
    if (!category.isEmpty())
        url += QLatin1String("&category=") + category;
    return exchange(NetworkManager::instance().get(url), [&](const NetworkEventLoop& reply) {
        statistics = jsonObjectToPlanStatistics(reply.object());
    });
}

bool requestPlanNodeQuantities(QList<KvStatisticsQuantity>& quantities, const QString& category,
                               const QString& period)
{
    // The category comes last, as for the to-do list: it may look like a placeholder.
    const QString url = taskUrl("projects/%1/planNodes_quantities_statistics?category=%3&personal=true"
                                "&period=%2",
                                currentProject(), period, category);
    return exchange(NetworkManager::instance().get(url), [&](const NetworkEventLoop& reply) {
        const QList<QJsonObject> objects = reply.objectList();
        for (const QJsonObject& object : objects)
            quantities.append(jsonObjectToStatisticsQuantity(object));
    });
}

bool requestAuthValue(const QString& category, const QString& key, QString& value)
{
    const QString url =
        taskUrl("projects/%1/auth?key=%2&moduleKey=plan&category=%3", currentProject(), key, category);
    return exchange(NetworkManager::instance().get(url), [&](const NetworkEventLoop& reply) {
        value = reply.object().value(QLatin1String("value")).toString();
    });
}

bool requestMeteringStates(const QStringList& planIds, QList<KvMeteringState>& states)
{
    const QJsonObject where{{QLatin1String("planId"), makeInFilter(planIds)}};
    const QString url = stateUrl("projects/%1/taskstates?where=%2", currentProject(), filterText(where));
    return exchange(NetworkManager::instance().get(url), [&](const NetworkEventLoop& reply) {
        const QList<QJsonObject> objects = reply.objectList();
        states.clear();
        states.reserve(objects.size());
        for (const QJsonObject& object : objects) {
            states.append(KvMeteringState());
            jsonObjectToMeteringState(object, states.last());
        }
    });
}

bool requestCreateMeteringState(KvMeteringState& state)
{
    QJsonObject body;
    meteringStateToJsonObject(state, body);
    return exchange(NetworkManager::instance().postJson(stateUrl("taskstates"), body),
                    [&](const NetworkEventLoop& reply) { jsonObjectToMeteringState(reply.object(), state); });
}

bool requestUpdateMeteringState(KvMeteringState& state)
{
    const QJsonObject body{{QLatin1String("taskId"), toIdValue(state.taskId)},
                           {QLatin1String("state"), state.state}};
    return exchange(NetworkManager::instance().putJson(stateUrl("tasks/%1/taskstates", state.taskId), body),
                    [&](const NetworkEventLoop& reply) { jsonObjectToMeteringState(reply.object(), state); });
}

} // namespace Kv
