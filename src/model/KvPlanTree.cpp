#include <model/KvPlanDataUtils.h>

#include <model/KvNodeList.h>
#include <model/KvTreePlacement.h>

#include <QtCore/QThread>

#include <cstddef>
#include <utility>
#include <vector>

namespace {

std::size_t index(int number)
{
    return static_cast<std::size_t>(number);
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

    /// Gets ready for adding children to a node, if that is in the tree already.
    void fetch(int node) const
    {
        if (m_nodes[index(node)] != nullptr)
            Kv::fetchChildList(*m_nodes[index(node)]);
    }

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

std::vector<int> positionsByPlanNodeId(const Kv::KvTreeFields& fields)
{
    std::vector<Kv::KvSortKey> keys;
    keys.reserve(fields.planNodeIds.size());
    for (const int planNodeId : fields.planNodeIds)
        keys.push_back({planNodeId, static_cast<int>(keys.size())});
    Kv::sortByPlanNodeId(keys);
    std::vector<int> positions;
    positions.reserve(keys.size());
    for (const Kv::KvSortKey& key : keys)
        positions.push_back(key.position);
    return positions;
}

/// Builds the tree out of the nodes themselves. The roots keep their place in memory; all others are put into
/// the order in which the tree takes them, the first one last, so that each leaves its memory to the next.
void moveIntoTree(QList<KvPlanNode>& nodes, const std::vector<int>& positions,
                  const Kv::KvTreePlacement& placement)
{
    const std::vector<Kv::KvTreePlacement::Placed>& placed = placement.placed();
    std::vector<int> sources;
    sources.reserve(positions.size());
    for (const int root : placement.roots())
        sources.push_back(positions[index(root)]);
    for (auto it = placed.rbegin(); it != placed.rend(); ++it)
        sources.push_back(positions[index(it->node)]);
    Kv::rearrange(nodes, 0, std::move(sources));

    Locations locations(placement, nodes.size());
    int at = 0;
    for (const int root : placement.roots())
        locations.set(root, nodes[at++]);
    for (std::size_t i = 0; i < placed.size(); ++i) {
        if (i % Kv::FetchCount == 0) {
            for (std::size_t ahead = i; ahead < qMin(i + Kv::FetchCount, placed.size()); ++ahead) {
                Kv::fetch(nodes.at(nodes.size() - 1 - static_cast<int>(ahead - i)));
                locations.fetch(placed[ahead].parent);
            }
        }
        QList<KvPlanNode>& children = locations.of(placed[i].parent).children;
        locations.set(placed[i].node, Kv::appendMoved(children, nodes.last()));
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

} // namespace

namespace KvPlanDataUtils {

void makePlanNodeListTree(QList<KvPlanNode>& nodes)
{
    if (nodes.isEmpty())
        return;
    const Kv::KvTreeFields fields(nodes);
    const std::vector<int> positions = positionsByPlanNodeId(fields);
    const Kv::KvTreePlacement placement(nodes, fields, positions);
    // Kept on purpose, for compatibility with existing hosts: a circle of parents never ends.
    while (!placement.isComplete())
        QThread::sleep(1);
    if (nodes.isDetached())
        moveIntoTree(nodes, positions, placement);
    else
        nodes = copyIntoTree(nodes, positions, placement);
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
