// The facade's operations on plan nodes.

#include <plandata/KvPlanData.h>

#include <service/KvPlanNodeEndpoints.h>

namespace {

void insertById(QMap<QString, KvPlanNode>& cache, const QList<KvPlanNode>& nodes)
{
    for (const KvPlanNode& node : nodes)
        cache.insert(node.id, node);
}

} // namespace

bool KvPlanData::createPlanNode(KvPlanNode& node)
{
    if (!Kv::requestCreatePlanNode(node))
        return false;
    m_planNodeCache.insert(node.id, node);
    return true;
}

bool KvPlanData::createPlanNodes(const QString& planId, QList<KvPlanNode>& nodes)
{
    if (!Kv::requestCreatePlanNodes(planId, nodes))
        return false;
    insertById(m_planNodeCache, nodes);
    return true;
}

bool KvPlanData::updatePlanNode(KvPlanNode& node)
{
    // A copy, because the host may come back in during the wait and change the cache. A node that is not
    // cached gets an empty entry, which stays when the request fails: existing hosts count on the entry.
    const KvPlanNode cached = m_planNodeCache[node.id];
    if (!Kv::requestUpdatePlanNode(cached, node))
        return false;
    m_planNodeCache.insert(node.id, node);
    return true;
}

bool KvPlanData::updatePlanNodes(QList<KvPlanNode>& nodes)
{
    QList<QPair<KvPlanNode, KvPlanNode>> changes;
    changes.reserve(nodes.size());
    for (const KvPlanNode& node : qAsConst(nodes))
        changes.append(qMakePair(m_planNodeCache[node.id], node)); // an empty entry, as in updatePlanNode
    if (!Kv::requestUpdatePlanNodes(changes, nodes))
        return false;
    // The request has emptied the list, so the cache keeps the nodes as they were before the edit; existing
    // hosts read the plan again after a save. Only what a host puts into its list during the wait is cached.
    insertById(m_planNodeCache, nodes);
    return true;
}

// The cache keeps the entry, as for a deleted plan.
bool KvPlanData::deletePlanNodeById(const QString& id)
{
    return Kv::requestDeletePlanNode(id);
}

bool KvPlanData::deletePlanNodesByIds(const QStringList& ids)
{
    return Kv::requestDeletePlanNodes(ids);
}

bool KvPlanData::getPlanNodeById(const QString& id, KvPlanNode& node)
{
    const QString requested = id; // `id` may be the caller's node.id, which the reply overwrites
    if (!Kv::requestPlanNodeById(requested, node))
        return false;
    m_planNodeCache.insert(requested, node);
    return true;
}

bool KvPlanData::getPlanNodeFromCacheById(const QString& id, KvPlanNode& node)
{
    const auto cached = m_planNodeCache.constFind(id);
    if (cached == m_planNodeCache.constEnd())
        return getPlanNodeById(id, node);
    node = *cached;
    return true;
}

bool KvPlanData::getPlanNodesByPlanId(const QString& planId, QList<KvPlanNode>& nodes)
{
    return getPlanNodesByPlanIds({planId}, nodes);
}

bool KvPlanData::getPlanNodesByPlanIds(const QStringList& planIds, QList<KvPlanNode>& nodes)
{
    KvPlan first;
    const bool isRead = !planIds.isEmpty() && getPlanFromCacheById(planIds.first(), first);
    const QString category = isRead ? first.category : QString(); // of all plans
    QList<KvPlanNode> read; // apart from the host's list, which the host may change during the wait
    if (Kv::requestPlanNodesByPlanIds(planIds, category, read))
        insertById(m_planNodeCache, read);
    nodes.append(read);
    return true; // also after a failure, which existing hosts tell by the unchanged list
}

bool KvPlanData::getAllPlanNodes(int skip, int limit, QList<KvPlanNode>& nodes, const QString& category)
{
    return Kv::requestTodoPlanNodes(skip, limit, nodes, category);
}

bool KvPlanData::getPlanNodeRangeCount(const KvPlanNodeCondition& condition, int& count)
{
    return Kv::requestPlanNodeRangeCount(condition, count);
}

bool KvPlanData::getPlanNodeRangeData(const KvPlanNodeCondition& condition, int skip, int limit,
                                      QList<KvPlanNode>& nodes)
{
    // Unlike a page of plans, the page is not cached: hosts page through nodes to show them, not to edit.
    if (Kv::requestPlanNodeRangeData(condition, skip, limit, nodes))
        m_planNodeCache.clear();
    return true; // also after a failure, as above
}

void KvPlanData::savePlanNodes(const QString& planId, const QList<KvPlanNode>& nodes)
{
    QList<KvPlanNode> toCreate;
    QList<KvPlanNode> toUpdate;
    QStringList toDeleteIds;
    distributePlanNodes(nodes, toCreate, toUpdate, toDeleteIds);
    if (!toCreate.isEmpty())
        createPlanNodes(planId, toCreate);
    if (!toUpdate.isEmpty())
        updatePlanNodes(toUpdate);
    if (!toDeleteIds.isEmpty()) // not as long as distributePlanNodes() knows no rule for it
        Kv::requestDeletePlanNodes(toDeleteIds);
}
