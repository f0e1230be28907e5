#pragma once

#include "../http/Router.h"

namespace PlanService {

/// Every path and method of the service.
const std::vector<Route>& serviceRoutes();

Reply getHealth(const Call& call);
Reply getMetrics(const Call& call);
Reply getPlan(const Call& call);
Reply getPlans(const Call& call);
Reply postPlan(const Call& call);
Reply putPlan(const Call& call);
Reply copyPlan(const Call& call);
Reply deletePlan(const Call& call);
Reply getPlanNode(const Call& call);
Reply getResponses(const Call& call);
Reply postResponse(const Call& call);
Reply getStatistics(const Call& call);
Reply getQuantities(const Call& call);
Reply getRight(const Call& call);
Reply getTaskStates(const Call& call);
Reply postTaskState(const Call& call);
Reply putTaskState(const Call& call);
Reply getPlanNodesOfPlan(const Call& call);
Reply getPlanNodes(const Call& call);
Reply postPlanNode(const Call& call);
Reply postPlanNodes(const Call& call);
Reply putPlanNode(const Call& call);
Reply putPlanNodes(const Call& call);
Reply deletePlanNode(const Call& call);
Reply deletePlanNodes(const Call& call);
Reply getUserSetting(const Call& call);
Reply putUserSetting(const Call& call);

} // namespace PlanService
