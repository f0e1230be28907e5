#include <service/KvPlanEndpoints.h>

#include <model/KvDecodePool.h>
#include <model/KvPlanCodec.h>
#include <service/KvQueryFilter.h>
#include <service/KvRequestFrame.h>

#include <KvNetwork/NetworkEventLoop.h>
#include <KvNetwork/NetworkManager.h>
#include <KvPublicFun/KvPub.h>

#include <QtCore/QJsonArray>

namespace Kv {

namespace {

void appendPlans(const QJsonArray& elements, QList<KvPlan>& plans)
{
    plans.reserve(plans.size() + elements.size());
    KvDecodePool pool(elements.size());
    const KvPlan fresh;
    for (const QJsonValue& element : elements) {
        if (!element.isObject())
            continue;
        plans.append(fresh);
        jsonObjectToPlan(element.toObject(), plans.last(), pool);
    }
}

} // namespace

bool requestPlanById(const QString& planId, KvPlan& plan)
{
    return exchange(NetworkManager::instance().get(taskUrl("plans/%1", planId)),
                    [&](const NetworkEventLoop& reply) { jsonObjectToPlan(reply.object(), plan); });
}

bool requestAllPlans(QList<KvPlan>& plans)
{
    return exchange(NetworkManager::instance().get(taskUrl("projects/%1/plans", currentProject())),
                    [&](const NetworkEventLoop& reply) { appendPlans(reply.array(), plans); });
}

bool requestPlanRangeCount(const KvPlanCondition& condition, int& count)
{
    const QString url =
        taskUrl("projects/%1/plans?where=%2&only_count=true", currentProject(), buildPlanQuery(condition));
    return exchange(NetworkManager::instance().get(url), [&](const NetworkEventLoop& reply) {
        count = reply.object().value(QLatin1String("count")).toInt(0);
    });
}

bool requestPlanRangeData(const KvPlanCondition& condition, int skip, int limit, QList<KvPlan>& plans)
{
    // The filter comes last, for what a user searches for may look like a placeholder ("50%3"), and an
    // argument after it would be filled in there.
    const QString url = taskUrl("projects/%1/plans?where=%4&skip=%2&limit=%3", currentProject(), skip, limit,
                                buildPlanQuery(condition));
    return exchange(NetworkManager::instance().get(url),
                    [&](const NetworkEventLoop& reply) { appendPlans(reply.array(), plans); });
}

bool requestCreatePlan(KvPlan& plan)
{
    if (plan.projectId.isEmpty())
        plan.projectId = currentProject();
    QJsonObject body;
    planToJsonObject(plan, body);
    return exchange(NetworkManager::instance().postJson(taskUrl("plans"), body),
                    [&](const NetworkEventLoop& reply) { jsonObjectToPlan(reply.object(), plan); });
}

// A PUT with an empty body, though it makes a new plan: the service copies the plan that the path names.
bool requestCopyPlan(const QString& planId, KvPlan& plan)
{
    return exchange(NetworkManager::instance().putJson(taskUrl("plans/%1/copy", planId), QJsonObject()),
                    [&](const NetworkEventLoop& reply) { jsonObjectToPlan(reply.object(), plan); });
}

bool requestUpdatePlan(const KvPlan& cached, KvPlan& plan)
{
    QJsonObject before;
    QJsonObject changes;
    planToJsonObject(cached, before);
    planToJsonObject(plan, changes);
    KvPub::removeCommonJsonValue(before, changes);
    if (changes.isEmpty()) {
        plan = cached; // also resets what the service's JSON does not carry
        return true;
    }
    return exchange(NetworkManager::instance().putJson(taskUrl("plans/%1", cached.id), changes),
                    [&](const NetworkEventLoop& reply) { jsonObjectToPlan(reply.object(), plan); });
}

bool requestDeletePlan(const QString& planId)
{
    return exchange(NetworkManager::instance().deleteResource(taskUrl("plans/%1", planId)),
                    [](const NetworkEventLoop&) {});
}

} // namespace Kv
