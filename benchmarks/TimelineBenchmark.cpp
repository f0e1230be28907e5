// The time line of the simulation: a picture costs what changes in it, however large the plan is; and how
// taking a plan grows with its size.

#include "RatioMain.h"
#include "SimulatedPlan.h"

#include <SimulationTimeline.h>

namespace {

using namespace SimulatedPlan;

constexpr int pictures = 100;

SimulationTimeline timelineOf(const QList<KvPlanNode>& nodes)
{
    SimulationTimeline timeline;
    timeline.setTasks(listed(nodes), {SimulationDates::Actual, SimulationShare::ByTime});
    return timeline;
}

void play(benchmark::State& state)
{
    const int tasks = int(state.range(0)) / elementsOfTask;
    SimulationTimeline timeline = timelineOf(nodes(tasks));
    timeline.moveTo(dateOf(-1, tasks));
    for (auto _ : state) {
        qint64 changed = 0;
        for (int picture = 0; picture < pictures; ++picture)
            changed += timeline.moveTo(dateOf(picture, tasks)).size();
        benchmark::DoNotOptimize(changed);
    }
}

void take(benchmark::State& state)
{
    const QList<KvPlanNode> all = nodes(int(state.range(0)) / elementsOfTask);
    for (auto _ : state)
        benchmark::DoNotOptimize(timelineOf(all).elementCount());
}

} // namespace

int main(int argc, char* argv[])
{
    stayOnOneProcessor();
    for (const int elements : {5000, 50000})
        benchmark::RegisterBenchmark("play", play)->Arg(elements)->Unit(benchmark::kMicrosecond);
    compare("play 50,000 elements / 5,000, as many at work", "play/50000", "play/5000", 1.5);
    const std::vector<int> sizes = {2000, 20000, 200000};
    for (const int elements : sizes)
        benchmark::RegisterBenchmark("take", take)->Arg(elements)->Unit(benchmark::kMillisecond);
    growth("take a plan, elements", "take", sizes, 1.15);
    return runBenchmarks(argc, argv);
}
