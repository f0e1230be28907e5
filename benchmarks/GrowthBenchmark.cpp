// How the facade's operations over lists of nodes grow, on the real service with an SQLite database: what is
// read, each list in a plan of its size; and what is written.

#include "RatioMain.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>
#include <ServiceProcess.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonObject>

#include <cstdio>
#include <list>
#include <vector>

namespace {

constexpr const char* noSuccess = "the operation failed";

KvPlanData& data()
{
    return *KvPlanData::instance();
}

// A plan of the service, alone in its project.
struct Sample
{
    QString project;
    QString planId;
};

// Read now, so that they are in the cache, too.
QList<KvPlanNode> nodesOf(const Sample* sample)
{
    QList<KvPlanNode> nodes;
    data().getPlanNodesByPlanId(sample->planId, nodes);
    return nodes;
}

KvPlanNodeCondition allNodesOf(const QString& planId)
{
    KvPlanNodeCondition condition;
    condition.planId = planId;
    condition.allTime = true;
    condition.finishState = -1;
    return condition;
}

QList<KvPlanNode> withoutIds(QList<KvPlanNode> nodes)
{
    for (KvPlanNode& node : nodes) {
        node.id.clear();
        node.guid.clear();
    }
    return nodes;
}

// Each time with another value.
void edit(QList<KvPlanNode>& nodes)
{
    static int edits = 0;
    ++edits;
    for (KvPlanNode& node : nodes)
        node.planWorkload = edits;
}

void getPlanNodesByPlanIds(benchmark::State& state, const Sample* sample)
{
    for (auto _ : state) {
        QList<KvPlanNode> nodes;
        if (!data().getPlanNodesByPlanIds({sample->planId}, nodes) || nodes.size() != state.range(0))
            return state.SkipWithError(noSuccess);
    }
}

void getPlanNodeRangeData(benchmark::State& state, const Sample* sample)
{
    for (auto _ : state) {
        QList<KvPlanNode> nodes;
        if (!data().getPlanNodeRangeData(allNodesOf(sample->planId), 0, int(state.range(0)), nodes) ||
            nodes.size() != state.range(0))
            return state.SkipWithError(noSuccess);
    }
}

// What is not finished.
void getAllPlanNodes(benchmark::State& state, const Sample*)
{
    for (auto _ : state) {
        QList<KvPlanNode> nodes;
        if (!data().getAllPlanNodes(0, int(state.range(0)), nodes, QString()) ||
            nodes.size() < state.range(0) / 10)
            return state.SkipWithError(noSuccess);
    }
}

void createPlan(benchmark::State& state, const Sample* sample)
{
    const QList<KvPlanNode> nodes = withoutIds(nodesOf(sample));
    for (auto _ : state) {
        KvPlan plan;
        plan.name = QStringLiteral("Created whole");
        plan.planNodes = nodes;
        if (!data().createPlan(plan) || plan.planNodes.size() != nodes.size())
            return state.SkipWithError(noSuccess);
    }
}

void updatePlan(benchmark::State& state, const Sample* sample)
{
    KvPlan plan;
    data().getPlanById(sample->planId, plan);
    for (auto _ : state) {
        edit(plan.planNodes);
        if (!data().updatePlan(plan) || plan.planNodes.size() != state.range(0))
            return state.SkipWithError(noSuccess);
    }
}

void copyPlanById(benchmark::State& state, const Sample* sample)
{
    for (auto _ : state) {
        KvPlan copy;
        if (!data().copyPlanById(sample->planId, copy) || copy.planNodes.size() != state.range(0))
            return state.SkipWithError(noSuccess);
    }
}

void updatePlanNodes(benchmark::State& state, const Sample* sample)
{
    QList<KvPlanNode> nodes = nodesOf(sample);
    for (auto _ : state) {
        edit(nodes);
        QList<KvPlanNode> sent = nodes;
        if (!data().updatePlanNodes(sent))
            return state.SkipWithError(noSuccess);
    }
}

// Which tells no failure, so the nodes that it created are counted. Every tenth is new.
void savePlanNodes(benchmark::State& state, const Sample* sample)
{
    KvPlan plan;
    plan.name = QStringLiteral("Saved into");
    if (!data().createPlan(plan))
        return state.SkipWithError(noSuccess);
    QList<KvPlanNode> nodes = nodesOf(sample);
    for (int i = 0; i < nodes.size(); i += 10)
        nodes[i] = withoutIds({nodes.at(i)}).first();
    for (auto _ : state) {
        edit(nodes);
        data().savePlanNodes(plan.id, nodes);
    }
    int created = 0;
    if (!data().getPlanNodeRangeCount(allNodesOf(plan.id), created) ||
        created != state.iterations() * nodes.size() / 10)
        state.SkipWithError(noSuccess);
}

void deletePlanNodesByIds(benchmark::State& state, const Sample* sample)
{
    KvPlan plan;
    plan.name = QStringLiteral("Deleted from");
    if (!data().createPlan(plan))
        return state.SkipWithError(noSuccess);
    const QList<KvPlanNode> all = withoutIds(nodesOf(sample));
    for (auto _ : state) {
        state.PauseTiming();
        QList<KvPlanNode> nodes = all;
        QStringList ids;
        if (!data().createPlanNodes(plan.id, nodes))
            return state.SkipWithError(noSuccess);
        for (const KvPlanNode& node : qAsConst(nodes))
            ids.append(node.id);
        state.ResumeTiming();
        if (!data().deletePlanNodesByIds(ids))
            return state.SkipWithError(noSuccess);
    }
}

struct Operation
{
    const char* name;
    void (*run)(benchmark::State&, const Sample*);
    double exponent = 1.1;
};

constexpr Operation reading[] = {{"getPlanNodesByPlanIds", getPlanNodesByPlanIds},
                                 {"getPlanNodeRangeData", getPlanNodeRangeData},
                                 {"getAllPlanNodes", getAllPlanNodes, 1.15}}; // sorted by finish
constexpr Operation writing[] = {
    {"createPlan", createPlan},       {"updatePlan", updatePlan},
    {"copyPlanById", copyPlanById},   {"updatePlanNodes", updatePlanNodes},
    {"savePlanNodes", savePlanNodes}, {"deletePlanNodesByIds", deletePlanNodesByIds}};

void inItsProject(benchmark::State& state, void (*run)(benchmark::State&, const Sample*), Sample* sample)
{
    data().clear();
    GetSoftCache()->setCurrentProjectId(sample->project);
    run(state, sample);
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    KvTest::ServiceProcess service;
    // What is small takes time for the way, which does not grow, so the larger ones are read.
    const std::vector<int> read = {10000, 30000, 100000};
    const std::vector<int> written = {1000, 3000, 10000};
    std::list<Sample> samples;
    const auto add = [&](const Operation& operation, const std::vector<int>& sizes) {
        for (const int nodes : sizes) {
            samples.push_back({QStringLiteral("%1 of %2").arg(QLatin1String(operation.name)).arg(nodes), {}});
            Sample& sample = samples.back();
            const QJsonObject seeded = service.seed({QStringLiteral("--nodes"), QString::number(nodes),
                                                     QStringLiteral("--project"), sample.project});
            sample.planId = seeded.value(QLatin1String("planId")).toString();
            benchmark::RegisterBenchmark(operation.name, inItsProject, operation.run, &sample)
                ->Arg(nodes)
                ->UseRealTime()
                ->Unit(benchmark::kMillisecond);
        }
        growth(operation.name, operation.name, sizes, operation.exponent);
    };
    for (const Operation& operation : reading)
        add(operation, read);
    for (const Operation& operation : writing)
        add(operation, written);
    if (!service.start()) {
        std::fprintf(stderr, "no service to ask: %s\n", qUtf8Printable(service.failure()));
        return 2;
    }
    KvBaseApi::GetInstance().setBaseApi(service.baseUrl());
    return runBenchmarks(argc, argv);
}
