// The time line of the simulation: a picture costs what changes in it, however large the plan is; and how
// taking a plan grows with its size.

#include "RatioMain.h"

#include <SimulationTimeline.h>

namespace {

constexpr int elementsOfTask = 10;
constexpr int tasksAtATime = 50;
constexpr int daysOfTask = 5;
constexpr int pictures = 100;

QDateTime firstDay()
{
    return {QDate(2026, 3, 2), QTime(8, 0)};
}

// Some fifty tasks are at work on every day, each on elements of its own.
QList<KvPlanNode> plan(int tasks)
{
    QList<KvPlanNode> nodes;
    nodes.reserve(tasks);
    for (int i = 0; i < tasks; ++i) {
        KvPlanNode node;
        node.dynamicEffect = Kv::GrowBottomToTop;
        node.startDate = firstDay().addDays(i / tasksAtATime * daysOfTask);
        node.finishDate = node.startDate.addDays(daysOfTask);
        node.actualStartDate = node.startDate.addDays(i % 3);
        node.actualFinishDate = node.finishDate.addDays(i % 4);
        QStringList elements;
        for (int k = 0; k < elementsOfTask; ++k)
            elements.append(QStringLiteral("element-%1").arg(i * elementsOfTask + k));
        node.links.insert(QStringLiteral("model"), elements);
        nodes.append(node);
    }
    return nodes;
}

SimulationTimeline timelineOf(const QList<KvPlanNode>& nodes)
{
    QVector<const KvPlanNode*> list;
    list.reserve(nodes.size());
    for (const KvPlanNode& node : nodes)
        list.append(&node);
    SimulationTimeline timeline;
    timeline.setTasks(list, {SimulationDates::Actual, SimulationShare::ByTime});
    return timeline;
}

// In the middle of the plan, at half a day in a second and thirty pictures a second.
QDateTime dateOf(int picture, int tasks)
{
    constexpr int secondsOfPicture = 24 * 60 * 60 / 2 / 30;
    return firstDay().addDays(tasks / tasksAtATime * daysOfTask / 2).addSecs(picture * secondsOfPicture);
}

void play(benchmark::State& state)
{
    const int tasks = int(state.range(0)) / elementsOfTask;
    SimulationTimeline timeline = timelineOf(plan(tasks));
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
    const QList<KvPlanNode> nodes = plan(int(state.range(0)) / elementsOfTask);
    for (auto _ : state)
        benchmark::DoNotOptimize(timelineOf(nodes).elementCount());
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
    growth("take a plan, elements", "take", sizes, 1.35);
    return runBenchmarks(argc, argv);
}
