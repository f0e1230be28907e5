#include <model/KvTreePlacement.h>

#include <model/KvNumberRanks.h>

#include <utility>

namespace Kv {

KvTreeFields::KvTreeFields(const QList<KvPlanNode>& nodes)
{
    const std::size_t count = static_cast<std::size_t>(nodes.size());
    planNodeIds.reserve(count);
    uniqueIds.reserve(count);
    parentTaskIds.reserve(count);
    for (const KvPlanNode& node : nodes) {
        planNodeIds.push_back(node.planNodeId);
        uniqueIds.push_back(node.uniqueId);
        parentTaskIds.push_back(node.parentTaskId);
        anyChildren = anyChildren || !node.children.isEmpty();
    }
}

KvTreePlacement::KvTreePlacement(const QList<KvPlanNode>& nodes, const KvTreeFields& fields,
                                 const std::vector<int>& order)
    : m_count(nodes.size())
    , m_ready(m_count)
    , m_isPlaced(order.size(), false)
{
    if (m_count == 0)
        return;
    const KvNumberRanks numbers(fields.uniqueIds);
    m_groupCount = numbers.count();
    m_ownGroup.reserve(order.size());
    m_awaited.reserve(order.size());
    for (const int position : order) {
        const int uniqueId = fields.uniqueIds[index(position)];
        const int parentTaskId = fields.parentTaskIds[index(position)];
        m_ownGroup.push_back(numbers.rankOf(uniqueId));
        m_awaited.push_back(uniqueId == parentTaskId ? -1 : numbers.rankOf(parentTaskId));
    }
    if (fields.anyChildren) {
        m_carriedEnd.reserve(order.size());
        for (const int position : order) {
            listCarried(nodes.at(position), static_cast<int>(m_carriedEnd.size()), numbers);
            m_carriedEnd.push_back(carriedCount());
        }
    }
    listWaiting();
    m_first.assign(index(m_groupCount), -1);
    if (m_groupCount < m_count || fields.anyChildren)
        m_forest.emplace(m_count + carriedCount());
    run();
}

/// Lists what a node brings along, in reading order.
void KvTreePlacement::listCarried(const KvPlanNode& carrier, int rank, const KvNumberRanks& numbers)
{
    struct Level
    {
        const QList<KvPlanNode>* nodes;
        int parent;
        int row;
    };
    std::vector<Level> levels;
    if (!carrier.children.isEmpty())
        levels.push_back({&carrier.children, rank, 0});
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.row == level.nodes->size()) {
            levels.pop_back();
            continue;
        }
        const KvPlanNode& node = level.nodes->at(level.row);
        m_carried.push_back({level.parent, level.row, numbers.rankOf(node.uniqueId)});
        ++level.row;
        if (!node.children.isEmpty())
            levels.push_back({&node.children, m_count + carriedCount() - 1, 0});
    }
}

void KvTreePlacement::listWaiting()
{
    // Counted, summed up, then filled from behind, so that each share ends up ascending and begins where the
    // sums have come down to.
    std::vector<int> begin(index(m_groupCount) + 1, 0);
    for (const int group : m_awaited) {
        if (group >= 0)
            ++begin[index(group)];
    }
    int sum = 0;
    for (int& share : begin) {
        sum += share;
        share = sum;
    }
    m_waiting.resize(index(sum));
    for (int rank = m_count - 1; rank >= 0; --rank) {
        const int group = m_awaited[index(rank)];
        if (group >= 0)
            m_waiting[index(--begin[index(group)])] = rank;
    }
    m_waitingBegin = std::move(begin);
}

void KvTreePlacement::run()
{
    m_placed.reserve(m_waiting.size());
    m_roots.reserve(index(m_count) - m_waiting.size());
    for (int rank = 0; rank < m_count; ++rank) {
        if (m_awaited[index(rank)] < 0)
            m_ready.insert(rank);
    }
    // One sweep over the ready nodes is one round. Whatever becomes ready behind the sweep waits for the
    // next.
    for (int node = m_ready.next(0); node >= 0;) {
        m_ready.remove(node);
        const int group = m_awaited[index(node)];
        place(node, group < 0 ? -1 : m_first[index(group)]);
        const int sameRound = m_ready.next(node);
        node = sameRound >= 0 ? sameRound : m_ready.next(0);
    }
}

void KvTreePlacement::place(int node, int parent)
{
    m_isPlaced[index(node)] = true;
    if (parent < 0)
        m_roots.push_back(node);
    else
        m_placed.push_back({node, parent});
    if (m_forest)
        m_forest->add(node, parent);
    offer(node, m_ownGroup[index(node)]);
    if (m_carriedEnd.empty())
        return;
    const int end = m_carriedEnd[index(node)];
    for (int at = node == 0 ? 0 : m_carriedEnd[index(node - 1)]; at < end; ++at) {
        m_forest->add(m_count + at, m_carried[index(at)].parent);
        offer(m_count + at, m_carried[index(at)].group);
    }
}

/// Makes a node that has just got its place a possible parent of those who wait for its number.
void KvTreePlacement::offer(int node, int group)
{
    if (group < 0)
        return;
    int& first = m_first[index(group)];
    if (first < 0) {
        first = node;
        for (int at = m_waitingBegin[index(group)]; at < m_waitingBegin[index(group) + 1]; ++at)
            m_ready.insert(m_waiting[index(at)]);
    } else if (m_forest->isBefore(node, first)) {
        first = node;
    }
}

} // namespace Kv
