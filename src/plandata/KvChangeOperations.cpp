// The facade's answers to what an edited plan would have to save.

#include <plandata/KvPlanData.h>

#include <plandata/KvPlanNodeComparison.h>

#include <QtCore/QSet>

#include <algorithm>
#include <iterator>

namespace {

bool isNew(const KvPlanNode& node)
{
    return node.id.isEmpty();
}

// Nodes mostly come in the order of their ids, in which the cache stands too: the entry behind the last one
// found is then the next one, and need not be looked up.
class CachedNodes
{
public:
    explicit CachedNodes(const QMap<QString, KvPlanNode>& cache)
        : m_cache(cache)
        , m_next(cache.constBegin())
    {
    }

    // A node with an id that is not cached is an update too: it would differ from an empty node by its id
    // alone.
    bool isEdited(const KvPlanNode& node)
    {
        const bool isNext = m_next != m_cache.constEnd() && m_next.key() == node.id;
        const auto cached = isNext ? m_next : m_cache.constFind(node.id);
        if (cached == m_cache.constEnd())
            return true;
        m_next = std::next(cached);
        return !Kv::isSamePlanNode(node, *cached);
    }

private:
    const QMap<QString, KvPlanNode>& m_cache;
    QMap<QString, KvPlanNode>::const_iterator m_next;
};

} // namespace

// Nothing keeps a flag of changes; existing hosts call this and count on the answer.
bool KvPlanData::hasChanged() const
{
    return false;
}

bool KvPlanData::hasChanged(const QList<KvPlanNode>& nodes) const
{
    CachedNodes cached(m_planNodeCache);
    return std::any_of(nodes.cbegin(), nodes.cend(),
                       [&](const KvPlanNode& node) { return isNew(node) || cached.isEdited(node); });
}

void KvPlanData::distributePlanNodes(const QList<KvPlanNode>& nodes, QList<KvPlanNode>& toCreate,
                                     QList<KvPlanNode>& toUpdate, QStringList& toDeleteIds) const
{
    Q_UNUSED(toDeleteIds) // no rule says that a node is to be deleted; the parameter is part of the interface
    CachedNodes cached(m_planNodeCache);
    for (const KvPlanNode& node : nodes) {
        if (isNew(node))
            toCreate.append(node);
        else if (cached.isEdited(node))
            toUpdate.append(node);
    }
}

void KvPlanData::getPlanRelateModelInfo(const QStringList& planIds, QStringList& modelIds)
{
    const QSet<QString> plans(planIds.cbegin(), planIds.cend());
    for (const KvPlanNode& node : qAsConst(m_planNodeCache)) {
        if (plans.contains(node.planId))
            modelIds.append(node.links.keys());
    }
}
