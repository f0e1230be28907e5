#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace Kv {

/// A forest that grows by one last child at a time and tells which of two nodes comes first in reading order
/// (a node before its descendants, siblings in order). Adding takes constant time, asking logarithmic time in
/// the depth: besides its parent, each node knows one ancestor further up, chosen by depth alone, so that two
/// nodes of equal depth climb in step.
class KvGrowingForest
{
public:
    /// For nodes 0 to size-1, none of which is in the forest yet.
    explicit KvGrowingForest(int size)
        : m_nodes(static_cast<std::size_t>(size) + 1)
        , m_top(size)
    {
        m_nodes.back().parent = m_nodes.back().jump = m_top;
    }

    /// Adds a node as the last child of `parent`, or as the last root when that is -1.
    void add(int node, int parent)
    {
        const int under = parent < 0 ? m_top : parent;
        Node& upper = at(under);
        const Node& jump = at(upper.jump);
        const bool equalSteps = upper.depth - jump.depth == jump.depth - at(jump.jump).depth;
        at(node) = {under, equalSteps ? jump.jump : under, upper.depth + 1, upper.childCount++, 0};
    }

    bool isBefore(int a, int b) const
    {
        int upperA = a;
        int upperB = b;
        climbTo(upperA, at(b).depth);
        climbTo(upperB, at(a).depth);
        if (upperA == upperB)
            return at(a).depth < at(b).depth; // one is above the other
        while (at(upperA).parent != at(upperB).parent) {
            const bool meetBelow = at(upperA).jump == at(upperB).jump;
            upperA = meetBelow ? at(upperA).parent : at(upperA).jump;
            upperB = meetBelow ? at(upperB).parent : at(upperB).jump;
        }
        return at(upperA).row < at(upperB).row;
    }

private:
    struct Node // of zeros until it is added
    {
        int parent;
        int jump;
        int depth;
        int row;
        int childCount;
    };

    Node& at(int node) { return m_nodes[static_cast<std::size_t>(node)]; }
    const Node& at(int node) const { return m_nodes[static_cast<std::size_t>(node)]; }

    void climbTo(int& node, int depth) const
    {
        while (at(node).depth > depth)
            node = at(at(node).jump).depth >= depth ? at(node).jump : at(node).parent;
    }

    std::vector<Node> m_nodes; ///< the last one is above all roots
    int m_top;
};

} // namespace Kv
