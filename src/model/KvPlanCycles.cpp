#include <model/KvPlanDataUtils.h>

#include <model/KvNumberRanks.h>
#include <model/KvTreePlacement.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

namespace {

std::size_t index(int number)
{
    return static_cast<std::size_t>(number);
}

} // namespace

namespace KvPlanDataUtils {

QList<QList<int>> findParentCycles(const QList<KvPlanNode>& nodes)
{
    // Which nodes find a place does not depend on the order of the rounds, so none is made.
    std::vector<int> positions(index(nodes.size()));
    std::iota(positions.begin(), positions.end(), 0);
    const Kv::KvTreeFields fields(nodes);
    const Kv::KvTreePlacement placement(nodes, fields, positions);
    if (placement.isComplete())
        return {};

    // Whoever waits names a number of the list, and all nodes of that number wait too. So from each waiting
    // node one comes to the next, and at last into a circle.
    const Kv::KvNumberRanks numbers(fields.uniqueIds);
    std::vector<int> firstOfNumber(index(numbers.count())); // each gets a position below
    for (int position = nodes.size() - 1; position >= 0; --position)
        firstOfNumber[index(numbers.rankOf(fields.uniqueIds[index(position)]))] = position;
    const auto parentOf = [&](int position) {
        return firstOfNumber[index(numbers.rankOf(fields.parentTaskIds[index(position)]))];
    };
    QList<QList<int>> cycles;
    std::vector<int> walkOf(positions.size(), -1); // the start of the walk that has come by
    for (int start = 0; start < nodes.size(); ++start) {
        if (!placement.isWaiting(start))
            continue;
        QList<int> walk;
        int at = start;
        while (walkOf[index(at)] < 0) {
            walkOf[index(at)] = start;
            walk.append(at);
            at = parentOf(at);
        }
        if (walkOf[index(at)] != start)
            continue; // leads to a circle that is known
        QList<int> cycle = walk.mid(walk.indexOf(at));
        std::rotate(cycle.begin(), std::min_element(cycle.begin(), cycle.end()), cycle.end());
        cycles.append(cycle);
    }
    std::sort(cycles.begin(), cycles.end(),
              [](const QList<int>& a, const QList<int>& b) { return a.first() < b.first(); });
    return cycles;
}

} // namespace KvPlanDataUtils
