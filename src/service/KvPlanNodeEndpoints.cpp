#include <service/KvPlanNodeEndpoints.h>

#include <model/KvPlanCodec.h>
#include <service/KvRequestFrame.h>

#include <KvNetwork/NetworkEventLoop.h>
#include <KvNetwork/NetworkManager.h>

namespace Kv {

bool requestPlanNodeById(const QString& planNodeId, KvPlanNode& node)
{
    return exchange(NetworkManager::instance().get(taskUrl("planNodes/%1?expand=true", planNodeId)),
                    [&](const NetworkEventLoop& reply) { jsonObjectToPlanNode(reply.object(), node); });
}

} // namespace Kv
