#pragma once

#include <model/KvPlanCondition.h>
#include <model/KvPlanNode.h>

#include <QtCore/QPair>

/// The task service's endpoints for plan nodes, one function each; rules as for the plan endpoints.
namespace Kv {

/// GET planNodes/%1, with the node's documents. What the service leaves out of @p node is emptied in it,
/// except predecessors, which are added to those already there.
bool requestPlanNodeById(const QString& planNodeId, KvPlanNode& node);

/// GET plans/%1/planNodes?where=…&only_count=true. @p count is 0 when the reply tells none. Without a plan id
/// false, without a request.
bool requestPlanNodeRangeCount(const KvPlanNodeCondition& condition, int& count);

/// GET plans/%1/planNodes?where=…&skip=…&limit=…. The page's nodes are added to @p nodes. Without a plan id
/// false, without a request.
bool requestPlanNodeRangeData(const KvPlanNodeCondition& condition, int skip, int limit,
                              QList<KvPlanNode>& nodes);

/// GET projects/%1/planNodes?where=…&category=…&expand=true. The nodes of the plans, with their documents,
/// are added to @p nodes. Without a plan id in the list false, without a request.
bool requestPlanNodesByPlanIds(const QStringList& planIds, const QString& category, QList<KvPlanNode>& nodes);

/// GET projects/%1/planNodes?type=todo…. A page of the user's tasks that are not finished, in the order of
/// their planned finish, is added to @p nodes.
bool requestTodoPlanNodes(int skip, int limit, QList<KvPlanNode>& nodes, const QString& category);

/// POST planNodes. A node without a project gets the current one first; the reply, with the id that the
/// service gave, is read into @p node.
bool requestCreatePlanNode(KvPlanNode& node);

/// POST plans/%1/planNodes. Every node gets the current project first, whatever it had; the reply then
/// replaces @p nodes, by nothing after a failure.
bool requestCreatePlanNodes(const QString& planId, QList<KvPlanNode>& nodes);

/// PUT planNodes/%1, with the values of @p node that differ from @p cached, to the node that @p cached names;
/// the reply is read into @p node. Without a difference nothing is sent, @p node becomes @p cached, and the
/// result is true.
bool requestUpdatePlanNode(const KvPlanNode& cached, KvPlanNode& node);

/// PUT planNodes, with what differs in each pair (reference, edited) and the edited node's id; sent also when
/// nothing differs. @p nodes, the host's list, is emptied before the request; nothing is read from the reply.
bool requestUpdatePlanNodes(const QList<QPair<KvPlanNode, KvPlanNode>>& changes, QList<KvPlanNode>& nodes);

/// DELETE planNodes/%1.
bool requestDeletePlanNode(const QString& planNodeId);

/// DELETE planNodes?queryParam=…, sent for an empty list too.
bool requestDeletePlanNodes(const QStringList& ids);

} // namespace Kv
