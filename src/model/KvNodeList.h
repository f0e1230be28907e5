#pragma once

#include <model/KvPlanNode.h>

#include <vector>

/// What the tree functions have in common: sorting and moving the nodes of long lists without copying them.
namespace Kv {

/// A node's position in a list and what it is sorted by. The records themselves are too large to be sorted.
struct KvSortKey
{
    int planNodeId;
    int position;
};

/// Sorts in the way the records would be sorted themselves: the standard algorithm takes the same steps, so
/// that even nodes with equal numbers end up in the same order.
void sortByPlanNodeId(std::vector<KvSortKey>& keys);

/// Rearranges the nodes from `begin` to the end so that each place gets the node that stood at
/// `sources[place - begin]`. Moves pointers only.
void rearrange(QList<KvPlanNode>& nodes, int begin, std::vector<int> sources);

/// Appends a node by moving it. QList can but copy what it is given, but copying an empty node costs little.
KvPlanNode& appendMoved(QList<KvPlanNode>& list, KvPlanNode& node);

/// Reads a node's memory before it is needed. In a large plan in arbitrary order most of the work is waiting
/// for memory; asked for together, several nodes come in the time of one.
void fetch(const KvPlanNode& node);
/// The same for the list of its children, but not for these.
void fetchChildList(const KvPlanNode& node);

/// How many nodes are best fetched together.
constexpr int FetchCount = 16;

} // namespace Kv
