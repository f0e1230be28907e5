// What it costs to learn that nothing changed: hasChanged over nodes as they were read, against looking each
// of their ids up in an equal map. In the shared case the nodes share their text with the cache, as those
// that a host keeps from a read do; in the apart case both were read by themselves; the shuffled ones are in
// no order. The processor has other things in its caches each time, as after a host's own work: what 10,000
// nodes would leave there would make them look quicker, one by one, than a million. And how other walks over
// the same nodes grow: telling apart what is to be created and updated, and the models of what is cached.

#include "RatioMain.h"
#include "SamplePlan.h"

#include <KvNetwork/KvBaseApi.h>
#include <plandata/KvPlanData.h>
#include <support/ScriptedServer.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>
#include <list>
#include <random>
#include <vector>

namespace {

constexpr int nodesARead = 10000;

// A facade with so many cached nodes, the nodes, and a map like its cache.
struct Cached
{
    KvPlanData* facade;
    QList<KvPlanNode> nodes;
    QMap<QString, KvPlanNode> map;
};

// Sample nodes without end: each round of the same ones gets ids of its own.
QJsonArray numberedNodes(const QJsonArray& sample, int round)
{
    QJsonArray nodes;
    for (const QJsonValue& element : sample) {
        QJsonObject node = element.toObject();
        const QString id = node.value(QLatin1String("_id")).toString();
        node.insert(QLatin1String("_id"), QStringLiteral("%1%2").arg(round, 4, 16, QLatin1Char('0')).arg(id));
        nodes.append(node);
    }
    return nodes;
}

QList<KvPlanNode> readRounds(KvTest::ScriptedServer& server, const QJsonArray& sample, int first, int last)
{
    QList<KvPlanNode> nodes;
    for (int round = first; round < last; ++round) {
        server.enqueue(KvTest::Reply::json(QJsonObject())); // the plan, for its category
        server.enqueue(KvTest::Reply::json(numberedNodes(sample, round)));
        KvPlanData::instance()->getPlanNodesByPlanId(QStringLiteral("plan %1").arg(round), nodes);
    }
    return nodes;
}

Cached cachedNow(const QList<KvPlanNode>& nodes)
{
    Cached cached{new KvPlanData(*KvPlanData::instance()), nodes, {}}; // kept: only the library destroys one
    for (const KvPlanNode& node : nodes)
        cached.map.insert(node.id, node);
    return cached;
}

void hasChanged(benchmark::State& state, const Cached* cached)
{
    for (auto _ : state) {
        fillCaches(state);
        if (cached->facade->hasChanged(cached->nodes))
            return state.SkipWithError("a node counts as changed");
    }
}

// Every node was edited.
void distribute(benchmark::State& state, const Cached* cached)
{
    QList<KvPlanNode> edited = cached->nodes;
    for (KvPlanNode& node : edited)
        node.planWorkload += 1;
    for (auto _ : state) {
        fillCaches(state);
        QList<KvPlanNode> toCreate;
        QList<KvPlanNode> toUpdate;
        QStringList toDelete;
        cached->facade->distributePlanNodes(edited, toCreate, toUpdate, toDelete);
        if (toUpdate.size() != edited.size())
            return state.SkipWithError("an edited node does not count as changed");
    }
}

void relatedModels(benchmark::State& state, const Cached* cached)
{
    const QStringList planIds{cached->nodes.first().planId};
    for (auto _ : state) {
        fillCaches(state);
        QStringList modelIds;
        cached->facade->getPlanRelateModelInfo(planIds, modelIds);
        if (modelIds.isEmpty())
            return state.SkipWithError("no model was found");
    }
}

void lookUp(benchmark::State& state, const Cached* cached)
{
    for (auto _ : state) {
        fillCaches(state);
        for (const KvPlanNode& node : cached->nodes) {
            if (cached->map.constFind(node.id) == cached->map.constEnd())
                return state.SkipWithError("a node was not found");
        }
    }
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    KvTest::ScriptedServer server;
    KvBaseApi::GetInstance().setBaseApi(server.baseUrl());
    const QJsonArray sample =
        QJsonDocument::fromJson(samplePlanJson(nodesARead)).object().value(QLatin1String("tasks")).toArray();

    stayOnOneProcessor();
    std::list<Cached> all;
    const auto add = [&all](const std::string& kind, const QList<KvPlanNode>& nodes, double limit) {
        all.push_back(cachedNow(nodes));
        const std::string of = " " + kind + "/" + std::to_string(nodes.size());
        for (const auto& [name, function] :
             {std::pair{"hasChanged", hasChanged}, std::pair{"look-ups", lookUp}}) {
            auto* registered = benchmark::RegisterBenchmark((name + of).c_str(), function, &all.back());
            registered->Unit(benchmark::kMicrosecond);
        }
        compare("hasChanged / look-ups" + of, "hasChanged" + of, "look-ups" + of, limit);
    };

    QList<KvPlanNode> nodes;
    for (const int rounds : {1, 10, 100}) {
        nodes += readRounds(server, sample, nodes.size() / nodesARead, rounds);
        add("shared", nodes, 1.5);
        for (const auto& [name, function] : {std::pair{"distributePlanNodes", distribute},
                                             std::pair{"getPlanRelateModelInfo", relatedModels}}) {
            const std::string size = "/" + std::to_string(nodes.size());
            benchmark::RegisterBenchmark((name + size).c_str(), function, &all.back())
                ->Unit(benchmark::kMicrosecond);
        }
        if (rounds != 10)
            continue;
        QList<KvPlanNode> shuffled = nodes;
        std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(1));
        add("shuffled", shuffled, 1.5);
    }
    KvPlanData::instance()->clear();
    readRounds(server, sample, 0, 10);
    add("apart", nodes.mid(0, 10 * nodesARead), 0);
    growth("hasChanged", "hasChanged shared", {10000, 100000, 1000000}, 1.1);
    for (const char* name : {"distributePlanNodes", "getPlanRelateModelInfo"})
        growth(name, name, {10000, 100000, 1000000}, 1.1);
    return runBenchmarks(argc, argv);
}
