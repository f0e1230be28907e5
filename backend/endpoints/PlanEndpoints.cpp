#include "../access/Caller.h"
#include "../records/FieldReader.h"
#include "../store/Store.h"
#include "Endpoints.h"
#include "PlanReply.h"

namespace PlanService {

ApiError noSuchPlan(const QString& id)
{
    return {404, QStringLiteral("planNotFound"), QStringLiteral("there is no plan '%1'").arg(shortened(id)),
            QStringLiteral("planId")};
}

ApiError noSuchPlanNode(const QString& id)
{
    return {404, QStringLiteral("planNodeNotFound"),
            QStringLiteral("there is no plan node '%1'").arg(shortened(id)), QStringLiteral("planNodeId")};
}

Reply planReply(const Call& call, const QString& id, const QString& version)
{
    const std::shared_ptr<PlanText> text = call.store.planText(id, version);
    if (!text) {
        throw noSuchPlan(id); // it went between the two looks
    }
    Reply reply{200, text->pieces, {}, {}};
    reply.sharedLease = {text, &text->lease};
    return reply;
}

Reply getPlan(const Call& call)
{
    const QString id = call.parameter("planId");
    const std::optional<Ownership> plan = call.store.planOwnership(id);
    if (!plan) {
        throw noSuchPlan(id);
    }
    call.caller.requireRead(*plan);
    return planReply(call, id, plan->planVersion);
}

Reply getPlanNode(const Call& call)
{
    const QString id = call.parameter("planNodeId");
    const bool expand = call.queryFlag("expand");
    const std::optional<Ownership> node = call.store.planNodeOwnership(id);
    if (!node) {
        throw noSuchPlanNode(id);
    }
    call.caller.requireRead(*node);
    const JsonPieces json = call.store.planNodeJson(id, expand);
    if (json.isEmpty()) {
        throw noSuchPlanNode(id); // it went between the two looks
    }
    return {200, json, {}, {}};
}

} // namespace PlanService
