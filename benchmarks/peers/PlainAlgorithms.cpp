#include "PlainAlgorithms.h"

#include <QtCore/QSet>

#include <algorithm>

namespace {

bool comesBefore(const KvPlanNode& a, const KvPlanNode& b)
{
    return a.planNodeId < b.planNodeId;
}

bool attach(const KvPlanNode& node, QList<KvPlanNode>& tree)
{
    for (KvPlanNode& candidate : tree) {
        if (candidate.uniqueId == node.parentTaskId) {
            candidate.children.append(node);
            return true;
        }
        if (!candidate.children.isEmpty() && attach(node, candidate.children))
            return true;
    }
    return false;
}

void flatten(KvPlanNode node, QList<KvPlanNode>& flat)
{
    for (const KvPlanNode& child : qAsConst(node.children))
        flatten(child, flat);
    node.children.clear();
    flat.append(node);
}

bool isSameInPlan(const KvPlanNode& a, const KvPlanNode& b)
{
    const auto links = [](const KvPlanNode& node) {
        QStringList all;
        for (const QString& model : node.links.keys())
            all << model << node.links.value(model);
        return all;
    };
    return a.id == b.id && a.planNodeId == b.planNodeId && a.uniqueId == b.uniqueId &&
           a.parentTaskId == b.parentTaskId && a.name == b.name && a.startDate == b.startDate &&
           a.finishDate == b.finishDate && a.finishedPercentage == b.finishedPercentage &&
           a.actualStartDate == b.actualStartDate && a.actualFinishDate == b.actualFinishDate &&
           a.displaySimulation == b.displaySimulation && a.planWorkload == b.planWorkload &&
           a.actualWorkload == b.actualWorkload && a.dynamicEffect == b.dynamicEffect &&
           a.entityHideDate == b.entityHideDate && a.entityHideType == b.entityHideType &&
           a.userIds == b.userIds && a.executeIds == b.executeIds && a.cooperateIds == b.cooperateIds &&
           links(a) == links(b);
}

} // namespace

void makeTreePlainly(QList<KvPlanNode>& nodes)
{
    std::sort(nodes.begin(), nodes.end(), comesBefore);
    QSet<int> numbers;
    for (const KvPlanNode& node : qAsConst(nodes))
        numbers.insert(node.uniqueId);
    QList<KvPlanNode> roots;
    while (!nodes.isEmpty()) {
        QList<KvPlanNode> waiting;
        for (const KvPlanNode& node : qAsConst(nodes)) {
            if (!numbers.contains(node.parentTaskId) || node.uniqueId == node.parentTaskId)
                roots.append(node);
            else if (!attach(node, roots))
                waiting.append(node);
        }
        nodes = waiting;
    }
    nodes = roots;
}

void makeFlatPlainly(QList<KvPlanNode>& nodes)
{
    QList<KvPlanNode> flat;
    for (const KvPlanNode& node : qAsConst(nodes))
        flatten(node, flat);
    std::sort(flat.begin(), flat.end(), comesBefore);
    nodes = flat;
}

bool hasChangedPlainly(const QList<KvPlanNode>& nodes, const QMap<QString, KvPlanNode>& cache)
{
    for (const KvPlanNode& node : nodes) {
        if (!cache.contains(node.id) || !isSameInPlan(node, cache.value(node.id)))
            return true;
    }
    return false;
}

bool isSamePlainly(const KvPlanNode& a, const KvPlanNode& b)
{
    const auto same = [](const KvPlanPredecessor& one, const KvPlanPredecessor& other) {
        return one.sourcePlanNodeName == other.sourcePlanNodeName &&
               one.targetPlanNodeName == other.targetPlanNodeName && one.type == other.type &&
               one.sourcePlanNodeUniqueId == other.sourcePlanNodeUniqueId &&
               one.targetPlanNodeUniqueId == other.targetPlanNodeUniqueId &&
               one.sourcePlanNodeId == other.sourcePlanNodeId &&
               one.targetPlanNodeId == other.targetPlanNodeId && one.lag.value == other.lag.value &&
               one.lag.units == other.lag.units;
    };
    return isSameInPlan(a, b) && a.guid == b.guid && a.planId == b.planId && a.planName == b.planName &&
           a.projectId == b.projectId && a.category == b.category && a.milestone == b.milestone &&
           a.summary == b.summary && a.isDistributed == b.isDistributed && a.remark == b.remark &&
           a.createdBy == b.createdBy && a.updatedBy == b.updatedBy && a.createdAt == b.createdAt &&
           a.updatedAt == b.updatedAt && a.documentIds == b.documentIds &&
           a.materialBills == b.materialBills &&
           std::equal(a.predecessors.begin(), a.predecessors.end(), b.predecessors.begin(),
                      b.predecessors.end(), same);
}
