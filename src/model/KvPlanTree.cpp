#include <model/KvPlanDataUtils.h>

#include <model/KvTreePlacement.h>

#include <QtCore/QThread>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

std::size_t index(int number)
{
    return static_cast<std::size_t>(number);
}

/// A node's place in a list and what it is sorted by. The records themselves are too large to be sorted.
struct SortKey
{
    int planNodeId;
    int position;
};

/// Sorts as the records would be sorted themselves: the standard algorithm does the same steps, so that even
/// nodes with equal numbers end up in the same order.
void sortKeys(std::vector<SortKey>& keys)
{
    const auto goesBefore = [](const SortKey& a, const SortKey& b) {
        return a.planNodeId < b.planNodeId;
    };
    const auto goesNotBefore = [](const SortKey& a, const SortKey& b) {
        return a.planNodeId >= b.planNodeId;
    };
    if (std::adjacent_find(keys.begin(), keys.end(), goesNotBefore) != keys.end())
        std::sort(keys.begin(), keys.end(), goesBefore);
}

std::vector<int> positionsByPlanNodeId(const QList<KvPlanNode>& nodes)
{
    std::vector<SortKey> keys;
    keys.reserve(index(nodes.size()));
    for (const KvPlanNode& node : nodes)
        keys.push_back({node.planNodeId, static_cast<int>(keys.size())});
    sortKeys(keys);
    std::vector<int> positions;
    positions.reserve(keys.size());
    for (const SortKey& key : keys)
        positions.push_back(key.position);
    return positions;
}

/// Rearranges `nodes` so that each place gets the node that stood at `sources[place]`. Moves pointers only.
void rearrange(QList<KvPlanNode>& nodes, std::vector<int> sources)
{
    for (int start = 0; start < nodes.size(); ++start) {
        int place = start;
        while (sources[index(place)] != start) {
            const int source = sources[index(place)];
            sources[index(place)] = place;
            nodes.swapItemsAt(place, source);
            place = source;
        }
        sources[index(place)] = place;
    }
}

/// Appends a node by moving it: QList can but copy what it is given, and copying what is empty costs little.
KvPlanNode& appendMoved(QList<KvPlanNode>& list, KvPlanNode& node, const KvPlanNode& empty)
{
    list.append(empty);
    KvPlanNode& appended = list.last();
    appended = std::move(node);
    return appended;
}

/// Where the placed nodes stand in memory. That does not change while children are added, because a list
/// keeps its nodes where they are when it grows.
class Locations
{
public:
    Locations(const Kv::KvTreePlacement& placement, int nodeCount)
        : m_placement(placement)

        , m_nodes(index(nodeCount + placement.carriedCount()), nullptr)
    {
    }

    void set(int node, KvPlanNode& location) { m_nodes[index(node)] = &location; }

    /// Of a node that was brought along only when it is asked for, since its list may be shared: then it and
    /// the lists above it are detached, once.
    KvPlanNode& of(int node)
    {
        std::vector<int> unknown;
        for (; m_nodes[index(node)] == nullptr; node = m_placement.carriedParent(node))
            unknown.push_back(node);
        KvPlanNode* location = m_nodes[index(node)];
        for (auto it = unknown.rbegin(); it != unknown.rend(); ++it) {
            location = &location->children[m_placement.carriedRow(*it)];
            m_nodes[index(*it)] = location;
        }
        return *location;
    }

private:
    const Kv::KvTreePlacement& m_placement;
    std::vector<KvPlanNode*> m_nodes;
};

/// Builds the tree out of the nodes themselves. The roots keep their place in memory; all others are put into
/// the order in which the tree takes them, the first one last, so that each leaves its memory to the next.
void moveIntoTree(QList<KvPlanNode>& nodes, const std::vector<int>& positions,
                  const Kv::KvTreePlacement& placement)
{
    Locations locations(placement, nodes.size());
    std::vector<int> sources;
    sources.reserve(positions.size());
    for (const int root : placement.roots())
        sources.push_back(positions[index(root)]);
    const auto& placed = placement.placed();
    for (auto it = placed.rbegin(); it != placed.rend(); ++it)
        sources.push_back(positions[index(it->node)]);
    rearrange(nodes, std::move(sources));

    int at = 0;
    for (const int root : placement.roots())
        locations.set(root, nodes[at++]);
    const KvPlanNode empty;
    for (const auto& [node, parent] : placed) {
        QList<KvPlanNode>& children = locations.of(parent).children;
        locations.set(node, appendMoved(children, nodes.last(), empty));
        nodes.removeLast();
    }
}

/// Builds the tree out of copies, as somebody else holds the same list.
QList<KvPlanNode> copyIntoTree(const QList<KvPlanNode>& nodes, const std::vector<int>& positions,
                               const Kv::KvTreePlacement& placement)
{
    Locations locations(placement, nodes.size());
    QList<KvPlanNode> roots;
    roots.reserve(static_cast<int>(placement.roots().size()));
    for (const int root : placement.roots()) {
        roots.append(nodes.at(positions[index(root)]));
        locations.set(root, roots.last());
    }
    for (const auto& [node, parent] : placement.placed()) {
        QList<KvPlanNode>& children = locations.of(parent).children;
        children.append(nodes.at(positions[index(node)]));
        locations.set(node, children.last());
    }
    return roots;
}

/// Appends the nodes of `list` to `flat`, each behind its descendants and without children. Nodes that nobody
/// else holds are moved.
void appendFlat(QList<KvPlanNode> list, QList<KvPlanNode>& flat)
{
    struct Level
    {
        QList<KvPlanNode> nodes;
        int row; ///< of the node to be taken next; stays 0 where nodes are removed as they are taken
        bool isOurs;
    };
    const KvPlanNode empty;
    std::vector<Level> levels;
    const auto enter = [&levels](QList<KvPlanNode>&& nodes) {
        const bool isOurs = nodes.isDetached();
        levels.push_back({std::move(nodes), 0, isOurs});
    };
    const auto take = [&](Level& level) {
        if (level.isOurs) {
            appendMoved(flat, level.nodes.first(), empty);
            level.nodes.removeFirst();
        } else {
            flat.append(level.nodes.at(level.row++));
            flat.last().children = QList<KvPlanNode>();
        }
    };

    enter(std::move(list));
    while (true) {
        Level& level = levels.back();
        if (level.row == level.nodes.size()) {
            levels.pop_back();
            if (levels.empty())
                return;
            take(levels.back());
            continue;
        }
        const KvPlanNode& node = level.nodes.at(level.row);
        if (node.children.isEmpty())
            take(level);
        else if (level.isOurs)
            enter(std::move(level.nodes.first().children));
        else
            enter(QList<KvPlanNode>(node.children));
    }
}

} // namespace

namespace KvPlanDataUtils {

void makePlanNodeListTree(QList<KvPlanNode>& nodes)
{
    if (nodes.isEmpty())
        return;
    const std::vector<int> positions = positionsByPlanNodeId(nodes);
    const Kv::KvTreePlacement placement(nodes, positions);
    // Kept on purpose, for compatibility with existing hosts: a circle of parents never ends.
    while (!placement.isComplete())
        QThread::sleep(1);
    if (nodes.isDetached())
        moveIntoTree(nodes, positions, placement);
    else
        nodes = copyIntoTree(nodes, positions, placement);
}

void makePlanNodeListFlat(QList<KvPlanNode>& nodes)
{
    QList<KvPlanNode> flat = std::move(nodes);
    std::vector<SortKey> keys; // in the order in which the nodes come out of the tree
    const int topCount = flat.size();
    keys.reserve(index(topCount));
    for (int top = 0; top < topCount; ++top) {
        if (!flat.at(top).children.isEmpty()) {
            int position = flat.size();
            appendFlat(std::move(flat[top].children), flat);
            for (; position < flat.size(); ++position)
                keys.push_back({flat.at(position).planNodeId, position});
        }
        keys.push_back({flat.at(top).planNodeId, top});
    }
    sortKeys(keys);
    std::vector<int> sources;
    sources.reserve(keys.size());
    for (const SortKey& key : keys)
        sources.push_back(key.position);
    rearrange(flat, std::move(sources));
    nodes = std::move(flat);
}

void addPlanNode(KvPlanNode node, QList<KvPlanNode>& flat)
{
    QList<KvPlanNode> children = std::move(node.children);
    appendFlat(std::move(children), flat);
    appendMoved(flat, node, KvPlanNode());
}

bool attachChildNode(const KvPlanNode& node, QList<KvPlanNode>& tree)
{
    struct Level
    {
        const QList<KvPlanNode>* nodes;
        int row;
    };
    std::vector<Level> levels{{&tree, 0}};
    while (levels.back().row == levels.back().nodes->size() ||
           levels.back().nodes->at(levels.back().row).uniqueId != node.parentTaskId) {
        Level& level = levels.back();
        if (level.row == level.nodes->size()) {
            levels.pop_back();
            if (levels.empty())
                return false;
            ++levels.back().row;
        } else if (const KvPlanNode& other = level.nodes->at(level.row); !other.children.isEmpty()) {
            levels.push_back({&other.children, 0});
        } else {
            ++level.row;
        }
    }

    const KvPlanNode copy = node; // it may stand in the very lists that are about to be detached
    QList<KvPlanNode>* list = &tree;
    for (const Level& level : levels)
        list = &(*list)[level.row].children;
    list->append(copy);
    return true;
}

} // namespace KvPlanDataUtils
