#pragma once

#include <model/KvPlanRecords.h>

/// The tree functions as they are described, step by step and without any thought for speed or depth: what
/// the real ones are compared with.
namespace PlainTree {

bool attachChildNode(const KvPlanNode& node, QList<KvPlanNode>& tree);
void makePlanNodeListTree(QList<KvPlanNode>& nodes);
void addPlanNode(KvPlanNode node, QList<KvPlanNode>& flat);
void makePlanNodeListFlat(QList<KvPlanNode>& nodes);

/// Whether makePlanNodeListTree returns: whether some pass places nothing although nodes are left.
bool treeReturns(QList<KvPlanNode> nodes);

} // namespace PlainTree
