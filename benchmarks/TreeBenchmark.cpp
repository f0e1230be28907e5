// Making a tree of a flat list and the other way round, against sorting the same list by its rows; and how
// other walks over lists and trees of nodes grow.

#include "RatioMain.h"

#include <model/KvPlanDataUtils.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

namespace {

enum Shape
{
    Bushy,
    Chain,
    Reversed,
    Wide,
    Random
};

const std::pair<const char*, Shape> shapes[] = {
    {"bushy", Bushy}, {"chain", Chain}, {"reversed", Reversed}, {"wide", Wide}, {"random", Random}};

/// The position of a node's parent; -1: none.
int parentOf(Shape shape, int node, int count, std::mt19937& random)
{
    switch (shape) {
    case Bushy:
        return node == 0 ? -1 : (node - 1) / 8;
    case Chain:
        return node - 1;
    case Reversed: // each node comes before its parent, so that each needs a round of its own
        return node == count - 1 ? -1 : node + 1;
    case Wide:
        return node == 0 ? -1 : 0;
    case Random:
        return node == 0 ? -1 : int(random() % unsigned(node));
    }
    return -1;
}

/// A flat plan. Only of the random one do rows, numbers and memory stand in no order to each other.
QList<KvPlanNode> plan(Shape shape, int count)
{
    static const QString text = QStringLiteral("what nodes share");
    std::mt19937 random(7);
    std::vector<int> rows(static_cast<std::size_t>(count));
    std::iota(rows.begin(), rows.end(), 0);
    if (shape == Random)
        std::shuffle(rows.begin(), rows.end(), random);
    QList<KvPlanNode> nodes;
    nodes.reserve(count);
    for (int i = 0; i < count; ++i) {
        nodes.append(KvPlanNode());
        KvPlanNode& node = nodes.last();
        node.planNodeId = rows[static_cast<std::size_t>(i)];
        node.uniqueId = i;
        node.parentTaskId = parentOf(shape, i, count, random);
        node.planId = text;
        node.name = text;
    }
    for (int i = count - 1; shape == Random && i > 0; --i)
        nodes.swapItemsAt(i, int(random() % unsigned(i + 1)));
    return nodes;
}

void sort(benchmark::State& state, Shape shape)
{
    for (auto _ : state) {
        state.PauseTiming();
        QList<KvPlanNode> nodes = plan(shape, int(state.range(0)));
        state.ResumeTiming();
        std::sort(nodes.begin(), nodes.end(),
                  [](const KvPlanNode& a, const KvPlanNode& b) { return a.planNodeId < b.planNodeId; });
        state.PauseTiming();
        nodes.clear();
        state.ResumeTiming();
    }
}

void makeTree(benchmark::State& state, Shape shape)
{
    for (auto _ : state) {
        state.PauseTiming();
        QList<KvPlanNode> nodes = plan(shape, int(state.range(0)));
        state.ResumeTiming();
        KvPlanDataUtils::makePlanNodeListTree(nodes);
        state.PauseTiming();
        nodes.clear();
        state.ResumeTiming();
    }
}

void makeFlat(benchmark::State& state, Shape shape)
{
    for (auto _ : state) {
        state.PauseTiming();
        QList<KvPlanNode> nodes = plan(shape, int(state.range(0)));
        KvPlanDataUtils::makePlanNodeListTree(nodes);
        state.ResumeTiming();
        KvPlanDataUtils::makePlanNodeListFlat(nodes);
        state.PauseTiming();
        nodes.clear();
        state.ResumeTiming();
    }
}

void findCycles(benchmark::State& state, Shape shape)
{
    const QList<KvPlanNode> nodes = plan(shape, int(state.range(0)));
    for (auto _ : state) {
        fillCaches(state);
        if (!KvPlanDataUtils::findParentCycles(nodes).isEmpty())
            return state.SkipWithError("there is a circle");
    }
}

void addWithDescendants(benchmark::State& state, Shape shape)
{
    for (auto _ : state) {
        state.PauseTiming();
        QList<KvPlanNode> tree = plan(shape, int(state.range(0)));
        KvPlanDataUtils::makePlanNodeListTree(tree);
        KvPlanNode root = std::move(tree.first());
        QList<KvPlanNode> flat;
        state.ResumeTiming();
        KvPlanDataUtils::addPlanNode(std::move(root), flat);
        state.PauseTiming();
        flat.clear();
        tree.clear();
        state.ResumeTiming();
    }
}

// To a parent that is not there, so that every node is looked at.
void attachToNobody(benchmark::State& state, Shape shape)
{
    QList<KvPlanNode> tree = plan(shape, int(state.range(0)));
    KvPlanDataUtils::makePlanNodeListTree(tree);
    KvPlanNode orphan;
    orphan.parentTaskId = int(state.range(0));
    for (auto _ : state) {
        fillCaches(state);
        if (KvPlanDataUtils::attachChildNode(orphan, tree))
            return state.SkipWithError("a parent was found");
    }
}

} // namespace

int main(int argc, char* argv[])
{
    const std::pair<const char*, void (*)(benchmark::State&, Shape)> functions[] = {
        {"sort", sort}, {"tree", makeTree}, {"flat", makeFlat}};
    stayOnOneProcessor();
    const std::vector<int> sizes = {1000, 10000, 100000, 1000000};
    for (const auto& [shapeName, shape] : shapes) {
        const std::string of = std::string(" ") + shapeName;
        for (const int nodes : sizes) {
            const std::string size = "/" + std::to_string(nodes);
            for (const auto& [name, function] : functions) {
                auto* registered = benchmark::RegisterBenchmark((name + of).c_str(), function, shape)
                                       ->Arg(nodes)
                                       ->Unit(benchmark::kMicrosecond);
                if (nodes == 1000000)
                    registered->Iterations(1);
            }
            compare("tree / std::sort" + of + size, "tree" + of + size, "sort" + of + size, 2.0);
            compare("flat / std::sort" + of + size, "flat" + of + size, "sort" + of + size, 1.5);
        }
        // What is spread over memory at random costs more the more there is: std::sort itself grows faster
        // then.
        const double bound = shape == Random ? 1.2 : 0;
        for (const char* name : {"tree", "flat"})
            growth(name + of, name + of, sizes, 1.15, bound);
        growth("sort" + of, "sort" + of, sizes, 0);
    }
    // findParentCycles takes n log n time at most.
    const std::tuple<const char*, void (*)(benchmark::State&, Shape), double> walks[] = {
        {"findParentCycles", findCycles, 1.15},
        {"addPlanNode", addWithDescendants, 1.1},
        {"attachChildNode", attachToNobody, 1.1}};
    for (const auto& [name, function, exponent] : walks) {
        for (const int nodes : {10000, 100000, 1000000})
            benchmark::RegisterBenchmark(name, function, Bushy)
                ->Arg(nodes)
                ->Iterations(5)
                ->Unit(benchmark::kMicrosecond);
        growth(name, name, {10000, 100000, 1000000}, exponent);
    }
    return runBenchmarks(argc, argv);
}
