// What the library does against what one would write at first, and against other parsers: a plan from its
// bytes to records, a tree of its nodes, and whether one of them changed.

#include "RatioMain.h"
#include "SamplePlan.h"
#include "peers/OtherParsers.h"
#include "peers/PlainAlgorithms.h"
#include "peers/PlainReading.h"

#include <model/KvPlanCodec.h>
#include <model/KvPlanDataUtils.h>
#include <plandata/KvPlanNodeComparison.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QMap>

#include <cstdio>

namespace {

KvPlan planByLibrary(const QByteArray& json)
{
    KvPlan plan;
    Kv::jsonObjectToPlan(QJsonDocument::fromJson(json).object(), plan);
    return plan;
}

KvPlan planPlainly(const QByteArray& json)
{
    KvPlan plan;
    readPlainly(QtMembers(QJsonDocument::fromJson(json).object()), plan);
    return plan;
}

template<KvPlan (*Read)(const QByteArray&)>
void read(benchmark::State& state)
{
    const QByteArray& json = keptSamplePlanJson(int(state.range(0)));
    for (auto _ : state) {
        const KvPlan plan = Read(json);
        if (plan.planNodes.size() != state.range(0))
            return state.SkipWithError("the plan was not read");
    }
}

enum class From
{
    List,
    Tree
};

template<void (*Make)(QList<KvPlanNode>&), From from>
void shape(benchmark::State& state)
{
    const QByteArray& json = keptSamplePlanJson(int(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        QList<KvPlanNode> nodes = planByLibrary(json).planNodes;
        if (from == From::Tree)
            KvPlanDataUtils::makePlanNodeListTree(nodes);
        state.ResumeTiming();
        Make(nodes);
        state.PauseTiming();
        nodes.clear();
        state.ResumeTiming();
    }
}

// Nodes and a cache that were read by themselves, so that nothing is equal for being the same.
struct Known
{
    QList<KvPlanNode> nodes;
    QMap<QString, KvPlanNode> cache;
};

const Known& known(int count)
{
    static QMap<int, Known> all;
    if (!all.contains(count)) {
        Known made{planByLibrary(keptSamplePlanJson(count)).planNodes, {}};
        const QList<KvPlanNode> cached = planByLibrary(keptSamplePlanJson(count)).planNodes;
        for (const KvPlanNode& node : cached)
            made.cache.insert(node.id, node);
        all.insert(count, made);
    }
    return *all.constFind(count);
}

bool hasChanged(const QList<KvPlanNode>& nodes, const QMap<QString, KvPlanNode>& cache)
{
    for (const KvPlanNode& node : nodes) {
        const auto cached = cache.constFind(node.id);
        if (cached == cache.constEnd() || !Kv::isSamePlanNode(node, *cached))
            return true;
    }
    return false;
}

template<bool (*HasChanged)(const QList<KvPlanNode>&, const QMap<QString, KvPlanNode>&)>
void changes(benchmark::State& state)
{
    const Known& both = known(int(state.range(0)));
    for (auto _ : state) {
        if (HasChanged(both.nodes, both.cache))
            return state.SkipWithError("a node counts as changed");
    }
}

// The peers are only peers if they read the same.
bool peersAgree()
{
    const KvPlan own = planByLibrary(keptSamplePlanJson(1000));
    for (const auto& [name, other] : {std::pair{"plain look-ups", planPlainly(keptSamplePlanJson(1000))},
                                      std::pair{"nlohmann-json", planByNlohmann(keptSamplePlanJson(1000))},
                                      std::pair{"simdjson", planBySimdjson(keptSamplePlanJson(1000))}}) {
        bool same = own.planNodes.size() == other.planNodes.size();
        for (int i = 0; same && i < own.planNodes.size(); ++i)
            same = isSamePlainly(own.planNodes.at(i), other.planNodes.at(i));
        if (!same) {
            std::fprintf(stderr, "%s reads another plan\n", name);
            return false;
        }
    }
    return true;
}

// A million nodes take a quarter of a minute and up to fifteen gigabytes each time.
void add(const char* name, void (*function)(benchmark::State&), int nodes)
{
    auto* registered =
        benchmark::RegisterBenchmark(name, function)->Arg(nodes)->Unit(benchmark::kMicrosecond);
    if (nodes == 1000000)
        registered->Iterations(1)->Repetitions(3);
}

} // namespace

int main(int argc, char* argv[])
{
    if (!peersAgree())
        return 2;
    stayOnOneProcessor();
    for (const int nodes : {1000, 10000, 100000, 1000000}) {
        const std::string size = "/" + std::to_string(nodes);
        const std::pair<const char*, void (*)(benchmark::State&)> readers[] = {
            {"nlohmann-json", read<planByNlohmann>},
            {"simdjson", read<planBySimdjson>},
            {"plain look-ups", read<planPlainly>}};
        add("library", read<planByLibrary>, nodes);
        for (const auto& [name, function] : readers) {
            add(name, function, nodes);
            compare("bytes to records / " + std::string(name) + size, "library" + size, name + size, 0);
        }
        add("changes", changes<hasChanged>, nodes);
        add("plain changes", changes<hasChangedPlainly>, nodes);
        compare("changes / plain changes" + size, "changes" + size, "plain changes" + size, 0);
        add("flat", shape<KvPlanDataUtils::makePlanNodeListFlat, From::Tree>, nodes);
        add("plain flat", shape<makeFlatPlainly, From::Tree>, nodes);
        compare("flat / plain flat" + size, "flat" + size, "plain flat" + size, 0);
        if (nodes > 10000)
            continue; // the plain tree would take minutes
        add("tree", shape<KvPlanDataUtils::makePlanNodeListTree, From::List>, nodes);
        add("plain tree", shape<makeTreePlainly, From::List>, nodes);
        compare("tree / plain tree" + size, "tree" + size, "plain tree" + size, 0);
    }
    return runBenchmarks(argc, argv);
}
