#include <plandata/KvPlanNodeComparison.h>

#include <KvPublicFun/KvPub.h>

namespace Kv {

namespace {

// Maps of as many keys, walked side by side: equal keys stand at equal places, and none is copied.
bool isSameLinks(const KvLinksEntity& a, const KvLinksEntity& b)
{
    if (a.size() != b.size())
        return false;
    auto other = b.constBegin();
    for (auto link = a.constBegin(); link != a.constEnd(); ++link, ++other) {
        if (link.key() != other.key() || !KvPub::isStringListSame(link.value(), other.value()))
            return false;
    }
    return true;
}

} // namespace

bool isSamePlanNode(const KvPlanNode& a, const KvPlanNode& b)
{
    return a.id == b.id && a.planNodeId == b.planNodeId && a.uniqueId == b.uniqueId &&
           a.parentTaskId == b.parentTaskId && a.name == b.name && a.startDate == b.startDate &&
           a.finishDate == b.finishDate && a.finishedPercentage == b.finishedPercentage &&
           a.actualStartDate == b.actualStartDate && a.actualFinishDate == b.actualFinishDate &&
           a.displaySimulation == b.displaySimulation && a.planWorkload == b.planWorkload &&
           a.actualWorkload == b.actualWorkload && a.dynamicEffect == b.dynamicEffect &&
           a.entityHideDate == b.entityHideDate && a.entityHideType == b.entityHideType &&
           KvPub::isStringListSame(a.userIds, b.userIds) &&
           KvPub::isStringListSame(a.executeIds, b.executeIds) &&
           KvPub::isStringListSame(a.cooperateIds, b.cooperateIds) && isSameLinks(a.links, b.links);
}

} // namespace Kv
