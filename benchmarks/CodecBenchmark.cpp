// Reading and writing a plan, against Qt's own reading and writing of the same bytes.

#include "RatioMain.h"
#include "SamplePlan.h"

#include <model/KvPlanCodec.h>

#include <QtCore/QCborArray>
#include <QtCore/QCborMap>
#include <QtCore/QJsonDocument>

namespace {

void parse(benchmark::State& state)
{
    const QByteArray& json = keptSamplePlanJson(int(state.range(0)));
    for (auto _ : state) {
        const QJsonDocument document = QJsonDocument::fromJson(json);
        benchmark::DoNotOptimize(&document);
    }
}

// The least that reading through Qt's public interface takes: each key compared with the one that is expected
// there, each value taken out, and no record made of them.
void walk(const QCborMap& object, const QCborMap& expected)
{
    auto key = expected.constBegin();
    for (auto member = object.constBegin(); member != object.constEnd(); ++member) {
        bool same = key != expected.constEnd() && (*member).first == (*key).first;
        const QCborValue value = (*member).second;
        const QString text = value.toString();
        benchmark::DoNotOptimize(same);
        benchmark::DoNotOptimize(&text);
        if (same)
            ++key;
    }
}

void justWalk(benchmark::State& state)
{
    const QJsonObject object = QJsonDocument::fromJson(keptSamplePlanJson(int(state.range(0)))).object();
    const QCborArray tasks = QCborMap::fromJsonObject(object).value(QLatin1String("tasks")).toArray();
    for (auto _ : state) {
        const QCborMap first = tasks.first().toMap();
        for (const QCborValue& task : tasks)
            walk(task.toMap(), first);
    }
}

void decode(benchmark::State& state)
{
    const QJsonObject object = QJsonDocument::fromJson(keptSamplePlanJson(int(state.range(0)))).object();
    for (auto _ : state) {
        KvPlan plan;
        Kv::jsonObjectToPlan(object, plan);
        benchmark::DoNotOptimize(&plan);
    }
}

KvPlan samplePlan(int nodes)
{
    KvPlan plan;
    Kv::jsonObjectToPlan(QJsonDocument::fromJson(keptSamplePlanJson(nodes)).object(), plan);
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
    stayOnOneProcessor();
    const std::vector<int> sizes = {1000, 10000, 100000};
    for (const int nodes : sizes) {
        const std::string size = "/" + std::to_string(nodes);
        for (const auto& [name, function] :
             {std::pair{"parse", parse}, std::pair{"decode", decode}, std::pair{"walk", justWalk},
              std::pair{"encode", encode}, std::pair{"write", write}})
            benchmark::RegisterBenchmark(name, function)->Arg(nodes)->Unit(benchmark::kMicrosecond);
        compare("decode / QJsonDocument::fromJson" + size, "decode" + size, "parse" + size, 0.5);
        compare("walk along keys and values / fromJson" + size, "walk" + size, "parse" + size, 0);
        compare("encode / QJsonDocument::toJson" + size, "encode" + size, "write" + size, 1.0);
    }
    // A million nodes take some seconds and ten gigabytes, once.
    for (const auto& [name, function] : {std::pair{"parse", parse}, std::pair{"decode", decode}}) {
        benchmark::RegisterBenchmark(name, function)
            ->Arg(1000000)
            ->Iterations(1)
            ->Repetitions(3)
            ->Unit(benchmark::kMicrosecond);
    }
    compare("decode / QJsonDocument::fromJson/1000000", "decode/1000000", "parse/1000000", 0.5);
    growth("decode", "decode", {1000, 10000, 100000, 1000000}, 1.1);
    growth("encode", "encode", sizes, 1.1);
    return runBenchmarks(argc, argv);
}
