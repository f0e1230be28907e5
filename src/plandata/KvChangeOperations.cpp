// The facade's answers to what an edited plan would have to save.

#include <plandata/KvPlanData.h>

#include <plandata/KvPlanNodeComparison.h>

#include <QtCore/QSet>

#include <algorithm>

namespace {

bool isNew(const KvPlanNode& node)
{
    return node.id.isEmpty();
}

// A node with an id that is not cached is an update too: it would differ from an empty node by its id alone.
bool isEdited(const KvPlanNode& node, const QMap<QString, KvPlanNode>& cache)
{
    const auto cached = cache.constFind(node.id);
    return cached == cache.constEnd() || !Kv::isSamePlanNode(node, *cached);
}

} // namespace

// Nothing keeps a flag of changes; existing hosts call this and count on the answer.
bool KvPlanData::hasChanged() const
{
    return false;
}

bool KvPlanData::hasChanged(const QList<KvPlanNode>& nodes) const
{
    return std::any_of(nodes.cbegin(), nodes.cend(), [this](const KvPlanNode& node) {
        return isNew(node) || isEdited(node, m_planNodeCache);
    });
}

void KvPlanData::distributePlanNodes(const QList<KvPlanNode>& nodes, QList<KvPlanNode>& toCreate,
                                     QList<KvPlanNode>& toUpdate, QStringList& toDeleteIds) const
{
    Q_UNUSED(toDeleteIds) // no rule says that a node is to be deleted; the parameter is part of the interface
    for (const KvPlanNode& node : nodes) {
        if (isNew(node))
            toCreate.append(node);
        else if (isEdited(node, m_planNodeCache))
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
