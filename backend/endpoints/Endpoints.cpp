#include "Endpoints.h"

namespace PlanService {

const std::vector<Route>& serviceRoutes()
{
    static const std::vector<Route> routes{
        {"GET", "/health", getHealth, NeedsToken::No},
        {"GET", "/task-service/plans/{planId}", getPlan, NeedsToken::Yes, ReplySize::Large},
        {"GET", "/task-service/planNodes/{planNodeId}", getPlanNode},
        {"GET", "/user-service/settings/{key}", getUserSetting},
        {"PUT", "/user-service/settings/{key}", putUserSetting},
    };
    return routes;
}

} // namespace PlanService
