#include <model/KvNodeList.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace Kv {

void sortByPlanNodeId(std::vector<KvSortKey>& keys)
{
    const auto goesBefore = [](const KvSortKey& a, const KvSortKey& b) {
        return a.planNodeId < b.planNodeId;
    };
    const auto isOutOfOrder = [](const KvSortKey& a, const KvSortKey& b) {
        return a.planNodeId >= b.planNodeId;
    };
    if (std::adjacent_find(keys.begin(), keys.end(), isOutOfOrder) != keys.end())
        std::sort(keys.begin(), keys.end(), goesBefore);
}

void rearrange(QList<KvPlanNode>& nodes, int begin, std::vector<int> sources)
{
    const auto sourceOf = [&](int place) -> int& {
        return sources[static_cast<std::size_t>(place - begin)];
    };
    for (int start = begin; start < nodes.size(); ++start) {
        int place = start;
        while (sourceOf(place) != start) {
            const int source = std::exchange(sourceOf(place), place);
            nodes.swapItemsAt(place, source);
            place = source;
        }
        sourceOf(place) = place;
    }
}

KvPlanNode& appendMoved(QList<KvPlanNode>& list, KvPlanNode& node)
{
    static const auto* const empty = new KvPlanNode; // for good: static objects of hosts may still ask
    list.append(*empty);
    KvPlanNode& appended = list.last();
    appended = std::move(node);
    return appended;
}

void fetch(const KvPlanNode& node)
{
    constexpr std::size_t cacheLine = 64;
    const auto* memory = reinterpret_cast<const volatile unsigned char*>(&node);
    for (std::size_t at = 0; at < sizeof node; at += cacheLine)
        static_cast<void>(memory[at]);
    static_cast<void>(memory[sizeof node - 1]);
}

void fetchChildList(const KvPlanNode& node)
{
    volatile int size = node.children.size();
    static_cast<void>(size);
}

} // namespace Kv
