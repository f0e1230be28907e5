// Runs each operation over the nodes of a plan once, for valgrind's callgrind to count its instructions: they
// do not depend on what else the machine does. Says the name of each as callgrind is told to write what it
// counted.

#include "../../benchmarks/SamplePlan.h"

#include <model/KvPlanCodec.h>
#include <model/KvPlanDataUtils.h>
#include <plandata/KvPlanNodeComparison.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QMap>

#include <algorithm>
#include <valgrind/callgrind.h>

namespace {

template<class Operation>
void count(const char* name, Operation operation)
{
    CALLGRIND_TOGGLE_COLLECT;
    operation();
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(name);
}

} // namespace

int main()
{
    constexpr int nodes = 1000;
    const QByteArray json = samplePlanJson(nodes);

    QJsonDocument document;
    count("parse", [&] { document = QJsonDocument::fromJson(json); });
    KvPlan plan;
    count("decode", [&] { Kv::jsonObjectToPlan(document.object(), plan); });
    QJsonObject object;
    count("encode", [&] { Kv::planToJsonObject(plan, object); });
    QByteArray text;
    count("write", [&] { text = QJsonDocument(object).toJson(QJsonDocument::Compact); });
    QJsonObject exchange;
    count("export", [&] { KvPlanDataUtils::planToJsonObjectMPXJ(plan, exchange); });
    const QJsonObject tasks{{QStringLiteral("AllTasks"), exchange.value(QLatin1String("AllPlanNodes"))}};
    KvPlan imported;
    count("import", [&] { KvPlanDataUtils::jsonObjectToPlanMPXJ(tasks, imported); });

    // Lists with data of their own, in reverse, so that there is something to sort.
    QList<KvPlanNode> sorted(plan.planNodes.crbegin(), plan.planNodes.crend());
    QList<KvPlanNode> tree = sorted;
    tree.detach();
    count("sort", [&] {
        std::sort(sorted.begin(), sorted.end(),
                  [](const KvPlanNode& a, const KvPlanNode& b) { return a.planNodeId < b.planNodeId; });
    });
    count("tree", [&] { KvPlanDataUtils::makePlanNodeListTree(tree); });
    count("flat", [&] { KvPlanDataUtils::makePlanNodeListFlat(tree); });

    QMap<QString, KvPlanNode> cache;
    for (const KvPlanNode& node : qAsConst(plan.planNodes))
        cache.insert(node.id, node);
    int found = 0;
    count("look up", [&] {
        for (const KvPlanNode& node : qAsConst(plan.planNodes))
            found += cache.constFind(node.id) != cache.constEnd();
    });
    int same = 0;
    count("compare", [&] {
        for (const KvPlanNode& node : qAsConst(plan.planNodes))
            same += Kv::isSamePlanNode(node, *cache.constFind(node.id));
    });
    const bool done = plan.planNodes.size() == nodes && imported.planNodes.size() == nodes &&
                      tree.size() == nodes && sorted.size() == nodes && found == nodes && same == nodes &&
                      !text.isEmpty();
    return done ? 0 : 1;
}
