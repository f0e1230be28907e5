// Reading and writing a plan, against Qt's own reading and writing of the same bytes.

#include "LeastReading.h"
#include "RatioMain.h"
#include "SamplePlan.h"
#include "peers/PlainAlgorithms.h"

#include <model/KvPlanCodec.h>

#include <QtCore/QJsonDocument>

#include <algorithm>
#include <cstdio>

namespace {

void parse(benchmark::State& state)
{
    const QByteArray& json = keptSamplePlanJson(int(state.range(0)));
    for (auto _ : state) {
        const QJsonDocument document = QJsonDocument::fromJson(json);
        benchmark::DoNotOptimize(&document);
    }
}

QJsonObject sampleObject(int nodes)
{
    return QJsonDocument::fromJson(keptSamplePlanJson(nodes)).object();
}

template<void (*Read)(const QJsonObject&, KvPlan&)>
void read(benchmark::State& state)
{
    const QJsonObject object = sampleObject(int(state.range(0)));
    for (auto _ : state) {
        KvPlan plan;
        Read(object, plan);
        benchmark::DoNotOptimize(&plan);
    }
}

KvPlan samplePlan(int nodes)
{
    KvPlan plan;
    Kv::jsonObjectToPlan(sampleObject(nodes), plan);
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

// The least is only the least if it reads the same.
bool leastIsTheSame()
{
    const QList<KvPlanNode> own = samplePlan(1000).planNodes;
    KvPlan least;
    readLeast(sampleObject(1000), least);
    return std::equal(own.begin(), own.end(), least.planNodes.begin(), least.planNodes.end(), isSamePlainly);
}

} // namespace

int main(int argc, char* argv[])
{
    if (!leastIsTheSame()) {
        std::fprintf(stderr, "the least reads another plan\n");
        return 2;
    }
    stayOnOneProcessor();
    const std::vector<int> sizes = {1000, 10000, 100000, 1000000};
    for (const int nodes : sizes) {
        const std::string size = "/" + std::to_string(nodes);
        for (const auto& [name, function] :
             {std::pair{"parse", parse}, std::pair{"decode", read<Kv::jsonObjectToPlan>},
              std::pair{"least", read<readLeast>}, std::pair{"encode", encode}, std::pair{"write", write}}) {
            auto* registered = benchmark::RegisterBenchmark(name, function)->Arg(nodes);
            registered->Unit(benchmark::kMicrosecond);
            // What fits into a cache that others share is read at another speed from second to second.
            if (nodes <= 10000)
                registered->MinTime(0.5);
        }
        compareWithLeast("decode / QJsonDocument::fromJson" + size, "decode" + size, "parse" + size,
                         "least" + size, 0.4);
        compare("encode / QJsonDocument::toJson" + size, "encode" + size, "write" + size, 1.0);
    }
    growth("decode", "decode", sizes, 1.1);
    growth("encode", "encode", sizes, 1.1);
    return runBenchmarks(argc, argv);
}
