#include "../access/Caller.h"
#include "../records/FieldReader.h"
#include "../records/PlanNodeChange.h"
#include "../records/ResponseInput.h"
#include "../records/SiteClock.h"
#include "../store/Store.h"
#include "Endpoints.h"
#include "PlanReply.h"

#include <QJsonDocument>

namespace PlanService {

namespace {

constexpr int largestResponse = 1024 * 1024;

void requireFitting(const Call& call, const ResponseInput& input, const PlanNodeRecord& node)
{
    if (!input.hostId.isEmpty() && input.hostId != node.id) {
        throw ApiError(
            400, QStringLiteral("otherNode"),
            QStringLiteral("'hostId' names the node '%1', the path another one").arg(shortened(input.hostId)),
            QStringLiteral("hostId"));
    }
    const QStringList missing = call.store.missingDocuments(node.projectId, input.documentIds);
    if (!missing.isEmpty()) {
        throw ApiError(400, QStringLiteral("documentNotFound"),
                       QStringLiteral("the project has no document '%1'").arg(shortened(missing.first())),
                       QStringLiteral("documentIds[%1]").arg(input.documentIds.indexOf(missing.first())));
    }
}

} // namespace

Reply getResponses(const Call& call)
{
    call.queryWord("order", {QStringLiteral("createdAt")}, QStringLiteral("createdAt"));
    const bool expand = call.queryFlag("expand");
    const QString id = call.parameter("planNodeId");
    const std::optional<Ownership> node = call.store.planNodeOwnership(id);
    if (!node) {
        throw noSuchPlanNode(id);
    }
    call.caller.requireRead(*node);
    return {200, call.store.responseListJson(id, expand), {}, {}};
}

Reply postResponse(const Call& call)
{
    const ResponseInput input = readResponse(call.bodyObject(largestResponse));
    const QString id = call.parameter("planNodeId");
    Transaction transaction(call.store);
    const std::optional<Ownership> owner = call.store.planNodeOwnership(id);
    const std::optional<PlanNodeRecord> node = call.store.planNode(id);
    if (!owner || !node) {
        throw noSuchPlanNode(id);
    }
    call.caller.requireRead(*owner);
    call.caller.requireEdit(owner->projectId, owner->category);
    requireFitting(call, input, *node);
    // The time is taken by whose turn it is to write, so that the order of responses is that of their times.
    const QString now = siteStamp();
    const ResponseRecord response = newResponse(input, id, now, call.caller.userId());
    call.store.insertResponse(response);
    const PlanNodeRecord moved =
        changedPlanNode(*node, progressOf(input, QJsonDocument::fromJson(node->document).object(), now),
                        call.caller.userId());
    if (moved.document != node->document) {
        call.store.updatePlanNode(moved);
    }
    const JsonPieces json = call.store.responseJson(response.id);
    transaction.commit();
    return {200, json, {}, {}};
}

} // namespace PlanService
