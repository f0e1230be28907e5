#pragma once

#include <model/KvGrowingForest.h>
#include <model/KvPlanNode.h>
#include <model/KvReadySet.h>

#include <optional>
#include <vector>

namespace Kv {

class KvNumberRanks;

/// What the tree depends on, read out of the nodes in one go, since touching all records is most of the cost.
struct KvTreeFields
{
    explicit KvTreeFields(const QList<KvPlanNode>& nodes);

    std::vector<int> planNodeIds;
    std::vector<int> uniqueIds;
    std::vector<int> parentTaskIds;
    bool anyChildren = false; ///< whether some node brings children along
};

/// Finds out where each node of a flat list goes in the tree, and in which order, without touching the nodes.
///
/// The rule is one of rounds: in each, the nodes that are not yet placed are gone through in order, and each
/// that finds its parent in the tree goes there. Only what changes is looked at here: when the first node of
/// some number gets its place, all who wait for that number become ready, and are placed when the round, or
/// the next one, comes to them.
///
/// Nodes are known by their rank, the position in the order of the rounds. Children that nodes bring along
/// ("carried") have the ranks behind the last of these.
class KvTreePlacement
{
public:
    struct Placed
    {
        int node;
        int parent; ///< may be carried
    };

    /// @p order: the positions in @p nodes in the order of the rounds. @p fields: those of @p nodes.
    KvTreePlacement(const QList<KvPlanNode>& nodes, const KvTreeFields& fields,
                    const std::vector<int>& order);

    /// The roots, in order.
    const std::vector<int>& roots() const { return m_roots; }
    /// All others, each behind its parent; those of one parent in their order as children.
    const std::vector<Placed>& placed() const { return m_placed; }
    /// Whether every node has a place; those that have none wait for each other.
    bool isComplete() const { return m_roots.size() + m_placed.size() == static_cast<std::size_t>(m_count); }
    bool isWaiting(int node) const { return !m_isPlaced[index(node)]; }

    int carriedCount() const { return static_cast<int>(m_carried.size()); }
    int carriedParent(int node) const { return m_carried[index(node - m_count)].parent; }
    int carriedRow(int node) const { return m_carried[index(node - m_count)].row; }

private:
    struct Carried
    {
        int parent;
        int row; ///< position in the parent's children
        int group;
    };

    static std::size_t index(int number) { return static_cast<std::size_t>(number); }

    void listCarried(const KvPlanNode& carrier, int rank, const KvNumberRanks& numbers);
    void listWaiting();
    void run();
    void place(int node, int parent);
    void offer(int node, int group);

    int m_count;
    int m_groupCount = 0;        ///< a group is all nodes of one number
    std::vector<int> m_ownGroup; ///< by rank
    std::vector<int> m_awaited;  ///< by rank: the group of the parent; -1: a root
    std::vector<int> m_waiting;  ///< ranks by awaited group, ascending in each
    std::vector<int>
        m_waitingBegin; ///< by group: where its share of m_waiting begins; it ends where the next begins
    std::vector<Carried> m_carried;
    std::vector<int>
        m_carriedEnd; ///< by rank: where its share of m_carried ends; empty when nothing is carried

    std::vector<int> m_first; ///< by group: the first placed node in reading order; -1: none yet
    std::optional<KvGrowingForest> m_forest; ///< only when some number occurs more than once
    KvReadySet m_ready;
    std::vector<bool> m_isPlaced;
    std::vector<int> m_roots;
    std::vector<Placed> m_placed;
};

} // namespace Kv
