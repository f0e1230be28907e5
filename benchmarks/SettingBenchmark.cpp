// Colours by key: that of a known key against the plain look-up, and what a new key costs.

#include "RatioMain.h"

#include <setting/KvPlanSetting.h>

#include <algorithm>
#include <random>

namespace {

using Colours = QMap<QString, QColor>;

constexpr int stored = 10000;

QString key(int number)
{
    return QStringLiteral("65f0c3a1b2d4e6f8%1")
        .arg(number, 8, 16, QLatin1Char('0')); // as long as identifiers are
}

/// In no order, so that no key is found by having been asked for.
QVector<QString> keys(int count)
{
    QVector<QString> all;
    all.reserve(count);
    for (int i = 0; i < count; ++i)
        all.append(key(i));
    std::shuffle(all.begin(), all.end(), std::mt19937(7));
    return all;
}

KvPlanSetting& setting()
{
    return *KvPlanSetting::instance();
}

QColor colourOf(int number)
{
    return QColor(number % 200, number / 200, 0);
}

void fill(int count)
{
    setting().ClearPlanColor();
    for (int i = 0; i < count; ++i)
        setting().SetPlanColor(key(i), colourOf(i));
}

template<class Find>
void findAll(benchmark::State& state, Find find)
{
    const QVector<QString> asked = keys(int(state.range(0)));
    auto next = asked.constBegin();
    for (auto _ : state) {
        benchmark::DoNotOptimize(find(*next));
        if (++next == asked.constEnd())
            next = asked.constBegin();
    }
}

void knownColour(benchmark::State& state)
{
    fill(int(state.range(0)));
    findAll(state, [](const QString& asked) { return setting().GetPlanColor(asked); });
}

void mapLookUp(benchmark::State& state)
{
    Colours map;
    for (int i = 0; i < int(state.range(0)); ++i)
        map.insert(key(i), colourOf(i));
    findAll(state, [&](const QString& asked) { return map.value(asked); });
}

void newColour(benchmark::State& state)
{
    const int before = int(state.range(0));
    fill(before);
    int number = before;
    for (auto _ : state)
        benchmark::DoNotOptimize(setting().GetPlanColor(key(number++)));
}

/// What each new colour would cost if it were compared with a snapshot of all others.
void snapshotWalk(benchmark::State& state)
{
    Colours map;
    for (int i = 0; i < int(state.range(0)); ++i)
        map.insert(key(i), colourOf(i));
    int number = 0;
    for (auto _ : state) {
        const QColor colour(number++ % 200, 0, 1);
        const QList<QColor> snapshot = map.values();
        benchmark::DoNotOptimize(snapshot.contains(colour));
    }
}

void burst(benchmark::State& state)
{
    for (auto _ : state) {
        setting().ClearPlanColor();
        for (int i = 0; i < int(state.range(0)); ++i)
            setting().GetPlanColor(key(i));
    }
}

} // namespace

int main(int argc, char* argv[])
{
    for (const int count : {100, stored}) {
        const std::string size = "/" + std::to_string(count);
        benchmark::RegisterBenchmark("known", knownColour)->Arg(count);
        benchmark::RegisterBenchmark("look-up", mapLookUp)->Arg(count);
        // So few that the number stored stays about what it was.
        benchmark::RegisterBenchmark("new", newColour)->Arg(count)->Iterations(100);
        compare("colour of a known key / map look-up, " + std::to_string(count), "known" + size,
                "look-up" + size, 1.2);
    }
    benchmark::RegisterBenchmark("snapshot", snapshotWalk)->Arg(stored);
    compare("new key: 10,000 stored / 100 stored", "new/10000", "new/100", 0);
    compare("walk over a snapshot of 10,000 / new key", "snapshot/10000", "new/10000", 0);
    for (const int count : {1000, 20000})
        benchmark::RegisterBenchmark("burst", burst)
            ->Arg(count)
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    compare("burst of 20,000 keys / of 1,000", "burst/20000", "burst/1000", 0);
    return runBenchmarks(argc, argv);
}
