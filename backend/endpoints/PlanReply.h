#pragma once

#include "../http/Router.h"
#include "../records/PlanNodeInput.h"

#include <functional>

namespace PlanService {

/// What the endpoints of plans and their nodes share.

ApiError noSuchPlan(const QString& id);
ApiError noSuchPlanNode(const QString& id);
/// The plan as it stands now with its nodes. Throws ApiError 404. @param version see Store::planText().
Reply planReply(const Call& call, const QString& id, const QString& version = QString());
/// What @p list gives or, with "only_count", {"count": what @p count gives}. Throws ApiError 400 for a search
/// that takes too long.
Reply listReply(const Call& call, const std::function<JsonPieces()>& list, const std::function<int()>& count);
/// Inserts the nodes; an id that another node has, in whatever plan, is replaced by a new one.
void insertNodes(Store& store, QVector<PlanNodeRecord>& nodes, NodeIds& ids);

} // namespace PlanService
