#pragma once

#include "../http/Router.h"

namespace PlanService {

/// What the endpoints of plans and their nodes share.

ApiError noSuchPlan(const QString& id);
ApiError noSuchPlanNode(const QString& id);
/// The plan as it stands now with its nodes. Throws ApiError 404.
Reply planReply(const Call& call, const QString& id);

} // namespace PlanService
