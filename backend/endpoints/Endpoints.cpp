#include "Endpoints.h"

namespace PlanService {

const std::vector<Route>& serviceRoutes()
{
    static const std::vector<Route> routes{
        {"GET", "/health", getHealth, NeedsToken::No},
        {"GET", "/metrics", getMetrics},
        {"GET", "/task-service/plans/{planId}", getPlan, NeedsToken::Yes, ReplySize::Large},
        {"PUT", "/task-service/plans/{planId}", putPlan, NeedsToken::Yes, ReplySize::Large},
        {"DELETE", "/task-service/plans/{planId}", deletePlan},
        {"POST", "/task-service/plans", postPlan, NeedsToken::Yes, ReplySize::Large},
        {"PUT", "/task-service/plans/{planId}/copy", copyPlan, NeedsToken::Yes, ReplySize::Large},
        {"GET", "/task-service/projects/{projectId}/plans", getPlans, NeedsToken::Yes, ReplySize::Large},
        {"GET", "/task-service/planNodes/{planNodeId}", getPlanNode},
        {"GET", "/task-service/planNodes/{planNodeId}/responses", getResponses, NeedsToken::Yes,
         ReplySize::Large},
        {"POST", "/task-service/planNodes/{planNodeId}/responses", postResponse},
        {"GET", "/task-service/projects/{projectId}/planNodes_statistics", getStatistics},
        {"GET", "/task-service/projects/{projectId}/planNodes_quantities_statistics", getQuantities},
        {"GET", "/task-service/projects/{projectId}/auth", getRight},
        {"GET", "/ka-rond-service/projects/{projectId}/taskstates", getTaskStates, NeedsToken::Yes,
         ReplySize::Large},
        {"POST", "/ka-rond-service/taskstates", postTaskState},
        {"PUT", "/ka-rond-service/tasks/{taskId}/taskstates", putTaskState},
        {"PUT", "/task-service/planNodes/{planNodeId}", putPlanNode},
        {"DELETE", "/task-service/planNodes/{planNodeId}", deletePlanNode},
        {"POST", "/task-service/planNodes", postPlanNode},
        {"PUT", "/task-service/planNodes", putPlanNodes},
        {"DELETE", "/task-service/planNodes", deletePlanNodes},
        {"GET", "/task-service/plans/{planId}/planNodes", getPlanNodesOfPlan, NeedsToken::Yes,
         ReplySize::Large},
        {"POST", "/task-service/plans/{planId}/planNodes", postPlanNodes, NeedsToken::Yes, ReplySize::Large},
        {"GET", "/task-service/projects/{projectId}/planNodes", getPlanNodes, NeedsToken::Yes,
         ReplySize::Large},
        {"GET", "/user-service/settings/{key}", getUserSetting},
        {"PUT", "/user-service/settings/{key}", putUserSetting},
    };
    return routes;
}

} // namespace PlanService
