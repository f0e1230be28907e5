#include "../access/Caller.h"
#include "../store/Store.h"
#include "Endpoints.h"

namespace PlanService {

Reply getPlan(const Call& call)
{
    const QString id = call.parameter("planId");
    const std::optional<Ownership> plan = call.store.planOwnership(id);
    if (!plan) {
        throw ApiError(404, QStringLiteral("planNotFound"), QStringLiteral("there is no plan '%1'").arg(id),
                       QStringLiteral("planId"));
    }
    call.caller.requireRead(*plan);
    return {200, call.store.planJson(id), {}, {}};
}

Reply getPlanNode(const Call& call)
{
    const QString id = call.parameter("planNodeId");
    const bool expand = call.queryFlag("expand");
    const std::optional<Ownership> node = call.store.planNodeOwnership(id);
    if (!node) {
        throw ApiError(404, QStringLiteral("planNodeNotFound"),
                       QStringLiteral("there is no plan node '%1'").arg(id), QStringLiteral("planNodeId"));
    }
    call.caller.requireRead(*node);
    return {200, call.store.planNodeJson(id, expand), {}, {}};
}

} // namespace PlanService
