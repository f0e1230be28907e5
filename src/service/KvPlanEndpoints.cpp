#include <service/KvPlanEndpoints.h>

#include <model/KvPlanCodec.h>
#include <service/KvRequestFrame.h>

#include <KvNetwork/NetworkEventLoop.h>
#include <KvNetwork/NetworkManager.h>

namespace Kv {

bool requestPlanById(const QString& planId, KvPlan& plan)
{
    return exchange(NetworkManager::instance().get(taskUrl("plans/%1", planId)),
                    [&](const NetworkEventLoop& reply) { jsonObjectToPlan(reply.object(), plan); });
}

} // namespace Kv
