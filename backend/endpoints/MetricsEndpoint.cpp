#include "../operation/Metrics.h"
#include "Endpoints.h"

namespace PlanService {

Reply getMetrics(const Call& call)
{
    Reply reply{200, {call.metrics.text()}, {}, {}};
    reply.contentType = Metrics::contentType();
    return reply;
}

} // namespace PlanService
