// Reading and writing a plan, against Qt's own reading and writing of the same bytes.

#include "RatioMain.h"
#include "SamplePlan.h"

#include <model/KvPlanCodec.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QMap>

namespace {

const QByteArray& bytes(int nodes)
{
    static QMap<int, QByteArray> plans;
    if (!plans.contains(nodes))
        plans.insert(nodes, samplePlanJson(nodes));
    return *plans.constFind(nodes);
}

void parse(benchmark::State& state)
{
    const QByteArray& json = bytes(int(state.range(0)));
    for (auto _ : state) {
        const QJsonDocument document = QJsonDocument::fromJson(json);
        benchmark::DoNotOptimize(&document);
    }
}

void decode(benchmark::State& state)
{
    const QJsonObject object = QJsonDocument::fromJson(bytes(int(state.range(0)))).object();
    for (auto _ : state) {
        KvPlan plan;
        Kv::jsonObjectToPlan(object, plan);
        benchmark::DoNotOptimize(&plan);
    }
}

KvPlan samplePlan(int nodes)
{
    KvPlan plan;
    Kv::jsonObjectToPlan(QJsonDocument::fromJson(bytes(nodes)).object(), plan);
    return plan;
}

void encode(benchmark::State& state)
{
    const KvPlan plan = samplePlan(int(state.range(0)));
    for (auto _ : state) {
        QJsonObject object;
        Kv::planToJsonObject(plan, object);
        benchmark::DoNotOptimize(&object);
    }
}

void write(benchmark::State& state)
{
    QJsonObject object;
    Kv::planToJsonObject(samplePlan(int(state.range(0))), object);
    const QJsonDocument document(object);
    for (auto _ : state) {
        const QByteArray json = document.toJson(QJsonDocument::Compact);
        benchmark::DoNotOptimize(&json);
    }
}

} // namespace

int main(int argc, char* argv[])
{
    for (const int nodes : {1000, 10000, 100000}) {
        const std::string size = "/" + std::to_string(nodes);
        for (const auto& [name, function] : {std::pair{"parse", parse}, std::pair{"decode", decode},
                                             std::pair{"encode", encode}, std::pair{"write", write}})
            benchmark::RegisterBenchmark(name, function)->Arg(nodes)->Unit(benchmark::kMicrosecond);
        compare("decode / QJsonDocument::fromJson" + size, "decode" + size, "parse" + size, 0.5);
        compare("encode / QJsonDocument::toJson" + size, "encode" + size, "write" + size, 0);
    }
    return runBenchmarks(argc, argv);
}
