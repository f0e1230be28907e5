#include <model/KvPlanDataUtils.h>

#include <model/KvNodeList.h>

#include <cstddef>
#include <utility>
#include <vector>

namespace {

/// Takes the descendants out of the nodes from `begin` on and appends them, all nodes then being without
/// children. Nodes that nobody else holds are moved.
class Unfolding
{
public:
    Unfolding(QList<KvPlanNode>& nodes, int begin)
        : m_nodes(nodes)
        , m_begin(begin)
    {
        for (int position = begin; position < nodes.size(); ++position)
            noteChildrenOf(position);
        // Level by level, because then the children of many nodes can be fetched together.
        for (std::size_t i = 0; i < m_families.size(); ++i) {
            if (i % Kv::FetchCount == 0)
                fetchFamilies(i);
            takeChildren(i);
        }
    }

    /// The positions of all nodes from `begin` on, each node's behind those of its descendants.
    std::vector<int> positionsInPostOrder() const;

private:
    struct Family
    {
        int parent;
        int firstChild;
        int end;
    };

    void noteChildrenOf(int position)
    {
        if (!m_nodes.at(position).children.isEmpty())
            m_families.push_back({position, 0, 0});
    }

    void fetchFamilies(std::size_t first) const;
    void takeChildren(std::size_t family);
    std::size_t index(int position) const { return static_cast<std::size_t>(position - m_begin); }

    QList<KvPlanNode>& m_nodes;
    int m_begin;
    std::vector<Family>
        m_families; ///< parents before their children; positions known once the children are taken
};

void Unfolding::fetchFamilies(std::size_t first) const
{
    const std::size_t end = qMin(first + Kv::FetchCount, m_families.size());
    for (std::size_t i = first; i < end; ++i)
        Kv::fetchChildList(m_nodes.at(m_families[i].parent));
    for (std::size_t i = first; i < end; ++i) {
        const QList<KvPlanNode>& children = m_nodes.at(m_families[i].parent).children;
        for (int row = 0; row < qMin(children.size(), 4); ++row)
            Kv::fetch(children.at(row));
    }
}

void Unfolding::takeChildren(std::size_t family)
{
    QList<KvPlanNode> children = std::move(m_nodes[m_families[family].parent].children);
    const bool isOurs = children.isDetached();
    const int count = children.size();
    m_families[family].firstChild = m_nodes.size();
    for (int row = 0; row < count; ++row) {
        if (isOurs) {
            if (row % Kv::FetchCount == 4) {
                for (int ahead = 0; ahead < qMin(int(Kv::FetchCount), children.size()); ++ahead)
                    Kv::fetch(children.at(ahead));
            }
            Kv::appendMoved(m_nodes, children.first());
            children.removeFirst();
        } else {
            m_nodes.append(children.at(row));
        }
        noteChildrenOf(m_nodes.size() - 1);
    }
    m_families[family].end = m_nodes.size();
}

std::vector<int> Unfolding::positionsInPostOrder() const
{
    std::vector<int> sizes(index(m_nodes.size()), 1); // of each node with its descendants
    for (auto family = m_families.rbegin(); family != m_families.rend(); ++family) {
        for (int child = family->firstChild; child < family->end; ++child)
            sizes[index(family->parent)] += sizes[index(child)];
    }

    std::vector<int> starts(sizes.size(), 0); // where each node with its descendants begins
    const int topEnd = m_families.empty() ? m_nodes.size() : m_families.front().firstChild;
    int start = 0;
    for (int top = m_begin; top < topEnd; ++top) {
        starts[index(top)] = start;
        start += sizes[index(top)];
    }
    for (const Family& family : m_families) {
        start = starts[index(family.parent)];
        for (int child = family.firstChild; child < family.end; ++child) {
            starts[index(child)] = start;
            start += sizes[index(child)];
        }
    }

    std::vector<int> positions(sizes.size());
    for (std::size_t i = 0; i < sizes.size(); ++i)
        positions[static_cast<std::size_t>(starts[i] + sizes[i] - 1)] = m_begin + static_cast<int>(i);
    return positions;
}

} // namespace

namespace KvPlanDataUtils {

void makePlanNodeListFlat(QList<KvPlanNode>& nodes)
{
    const std::vector<int> positions = Unfolding(nodes, 0).positionsInPostOrder();
    std::vector<int> planNodeIds;
    planNodeIds.reserve(positions.size());
    for (const KvPlanNode& node : std::as_const(nodes))
        planNodeIds.push_back(node.planNodeId);

    std::vector<Kv::KvSortKey> keys;
    keys.reserve(positions.size());
    for (const int position : positions)
        keys.push_back({planNodeIds[static_cast<std::size_t>(position)], position});
    Kv::sortByPlanNodeId(keys);

    std::vector<int> sources;
    sources.reserve(keys.size());
    for (const Kv::KvSortKey& key : keys)
        sources.push_back(key.position);
    Kv::rearrange(nodes, 0, std::move(sources));
}

void addPlanNode(KvPlanNode node, QList<KvPlanNode>& flat)
{
    const int begin = flat.size();
    Kv::appendMoved(flat, node);
    Kv::rearrange(flat, begin, Unfolding(flat, begin).positionsInPostOrder());
}

} // namespace KvPlanDataUtils
