#include "TaskList.h"

#include "TreeWalk.h"

#include <model/KvPlanDataUtils.h>

#include <limits>
#include <utility>

namespace {

// The parents that make circles are left out for the time of building; a task keeps its number all the same.
QHash<int, int> openCircles(QList<KvPlanNode>& nodes)
{
    QHash<int, int> parents; // by uniqueId
    for (;;) {
        const QList<QList<int>> circles = KvPlanDataUtils::findParentCycles(nodes);
        if (circles.isEmpty())
            return parents;
        for (const QList<int>& circle : circles) {
            KvPlanNode& first = nodes[circle.first()];
            parents.insert(first.uniqueId, first.parentTaskId);
            first.parentTaskId = first.uniqueId; // names itself: a root
        }
    }
}

} // namespace

TaskList::TaskList(QList<KvPlanNode> nodes)
{
    const int count = nodes.size();
    const QHash<int, int> circleParents = openCircles(nodes);
    KvPlanDataUtils::makePlanNodeListTree(nodes);
    m_entries.reserve(count);
    m_positions.reserve(count);
    QVector<int> path; // positions of the tasks above
    walkTree(
        nodes, std::numeric_limits<int>::max(),
        [&](const KvPlanNode& node, int) {
            place(node, path.isEmpty() ? none : path.at(qMin(path.size(), deepest) - 1));
            path.append(m_entries.size() - 1);
        },
        [&] {
            if (!path.isEmpty())
                path.removeLast();
        });
    for (auto entry = circleParents.constBegin(); entry != circleParents.constEnd(); ++entry)
        m_entries[positionOf(entry.key())].node.parentTaskId = entry.value();
    for (int to = 0; to < m_entries.size(); ++to) {
        for (const KvPlanPredecessor& link : std::as_const(m_entries).at(to).node.predecessors) {
            const int from = positionOf(link.sourcePlanNodeUniqueId);
            if (from != none && from != to)
                m_links.append({from, to, link.type});
        }
    }
}

void TaskList::place(const KvPlanNode& node, int parent)
{
    const int position = m_entries.size();
    QVector<int>& siblings = parent == none ? m_roots : m_entries[parent].children;
    Entry entry;
    entry.parent = parent;
    entry.row = siblings.size();
    siblings.append(position);
    entry.node = node;
    entry.node.children.clear();
    m_entries.append(std::move(entry));
    if (!m_positions.contains(node.uniqueId))
        m_positions.insert(node.uniqueId, position);
    m_highestUniqueId = qMax(m_highestUniqueId, node.uniqueId);
    m_highestPlanNodeId = qMax(m_highestPlanNodeId, node.planNodeId);
}

const QVector<int>& TaskList::childrenOf(int position) const
{
    return position == none ? m_roots : m_entries.at(position).children;
}

int TaskList::append(const KvPlanNode& node, int parent)
{
    place(node, parent);
    return m_entries.size() - 1;
}

void TaskList::removeLast()
{
    const Entry entry = m_entries.takeLast();
    (entry.parent == none ? m_roots : m_entries[entry.parent].children).removeLast();
    if (m_positions.value(entry.node.uniqueId) == m_entries.size())
        m_positions.remove(entry.node.uniqueId);
}
