#include "PlainTree.h"

#include <algorithm>

namespace PlainTree {

namespace {

void sortByPlanNodeId(QList<KvPlanNode>& nodes)
{
    std::sort(nodes.begin(), nodes.end(),
              [](const KvPlanNode& a, const KvPlanNode& b) { return a.planNodeId < b.planNodeId; });
}

QList<KvPlanNode> onePass(const QList<KvPlanNode>& nodes, const QList<int>& known, QList<KvPlanNode>& roots)
{
    QList<KvPlanNode> pending;
    for (const KvPlanNode& node : nodes) {
        if (!known.contains(node.parentTaskId) || node.uniqueId == node.parentTaskId) {
            roots.append(node);
            continue;
        }
        bool taken = false;
        for (KvPlanNode& root : roots) {
            if (root.uniqueId == node.parentTaskId) {
                root.children.append(node);
                taken = true;
            } else if (!root.children.isEmpty()) {
                taken = attachChildNode(node, root.children);
            }
            if (taken)
                break;
        }
        if (!taken)
            pending.append(node);
    }
    return pending;
}

QList<int> knownNumbers(const QList<KvPlanNode>& nodes)
{
    QList<int> known;
    for (const KvPlanNode& node : nodes)
        known.append(node.uniqueId);
    return known;
}

} // namespace

bool attachChildNode(const KvPlanNode& node, QList<KvPlanNode>& tree)
{
    for (KvPlanNode& other : tree) {
        if (other.uniqueId == node.parentTaskId) {
            other.children.append(node);
            return true;
        }
        if (!other.children.isEmpty() && attachChildNode(node, other.children))
            return true;
    }
    return false;
}

void makePlanNodeListTree(QList<KvPlanNode>& nodes)
{
    sortByPlanNodeId(nodes);
    const QList<int> known = knownNumbers(nodes);
    QList<KvPlanNode> roots;
    while (!nodes.isEmpty())
        nodes = onePass(nodes, known, roots);
    nodes = roots;
}

bool treeReturns(QList<KvPlanNode> nodes)
{
    sortByPlanNodeId(nodes);
    const QList<int> known = knownNumbers(nodes);
    QList<KvPlanNode> roots;
    while (!nodes.isEmpty()) {
        const QList<KvPlanNode> pending = onePass(nodes, known, roots);
        if (pending.size() == nodes.size())
            return false;
        nodes = pending;
    }
    return true;
}

void addPlanNode(KvPlanNode node, QList<KvPlanNode>& flat)
{
    for (const KvPlanNode& child : node.children)
        addPlanNode(child, flat);
    node.children.clear();
    flat.append(node);
}

void makePlanNodeListFlat(QList<KvPlanNode>& nodes)
{
    QList<KvPlanNode> flat;
    for (const KvPlanNode& node : nodes)
        addPlanNode(node, flat);
    sortByPlanNodeId(flat);
    nodes = flat;
}

} // namespace PlainTree
