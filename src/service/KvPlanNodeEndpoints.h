#pragma once

#include <model/KvPlanNode.h>

/// The task service's endpoints for plan nodes, one function each; rules as for the plan endpoints.
namespace Kv {

/// GET planNodes/%1, with the node's documents. What the service leaves out of @p node is emptied in it,
/// except predecessors, which are added to those already there.
bool requestPlanNodeById(const QString& planNodeId, KvPlanNode& node);

} // namespace Kv
