// planviewer's page with 20,000 tasks and as many links against a bare KGantt view of the same rows without
// links.

#include "RatioMain.h"

#include <GanttChart.h>
#include <PlanClient.h>
#include <PlanPage.h>
#include <TaskModel.h>

#include <KGanttDateTimeGrid>
#include <KGanttGraphicsView>
#include <KGanttView>

#include <QtWidgets/QApplication>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QTreeView>
#include <QtWidgets/QUndoStack>

#include <memory>

namespace {

constexpr int taskCount = 20000;
constexpr int places = 4; // that are scrolled or zoomed to in one round

QList<KvPlanNode> tasks(int count)
{
    QList<KvPlanNode> nodes;
    nodes.reserve(count);
    const QDateTime begin(QDate(2026, 3, 2), QTime(8, 0));
    for (int i = 1; i <= count; ++i) {
        KvPlanNode node;
        node.uniqueId = i;
        node.planNodeId = i;
        node.name = QStringLiteral("Task %1").arg(i);
        node.startDate = begin.addDays(i % 400);
        node.finishDate = node.startDate.addDays(5);
        node.finishedPercentage = 40;
        KvPlanPredecessor link;
        link.sourcePlanNodeUniqueId = i == 1 ? count : i - 1;
        link.type = i % 4;
        node.predecessors.append(link);
        nodes.append(node);
    }
    return nodes;
}

void show(QWidget& widget)
{
    widget.resize(1400, 800);
    widget.show();
    QApplication::processEvents();
    benchmark::DoNotOptimize(widget.grab());
}

struct BareView
{
    QUndoStack undo;
    TaskModel model{&undo};
    KGantt::DateTimeGrid* grid = new KGantt::DateTimeGrid;
    KGantt::View view;

    BareView()
    {
        model.setTasks(tasks(taskCount));
        view.setGrid(grid);
    }
    void open()
    {
        view.setModel(&model);
        show(view);
    }
};

struct Page
{
    PlanClient client;
    PlanPage page{&client};

    void open(const QList<KvPlanNode>& nodes)
    {
        page.model()->setTasks(nodes);
        page.expandAll();
        page.chart()->followTree();
        show(page);
    }
};

// Opened once for the rounds that scroll and zoom.
BareView& openBareView()
{
    static auto* const view = [] {
        auto* const made = new BareView;
        made->open();
        return made;
    }();
    return *view;
}

Page& openPage()
{
    static auto* const page = [] {
        auto* const made = new Page;
        made->open(tasks(taskCount));
        return made;
    }();
    return *page;
}

void scroll(QScrollBar& bar, QWidget& widget)
{
    for (int i = 1; i <= places; ++i) {
        bar.setValue(bar.maximum() * i / places);
        QApplication::processEvents();
        benchmark::DoNotOptimize(widget.grab());
    }
    bar.setValue(0);
}

void openBare(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        auto view = std::make_unique<BareView>();
        state.ResumeTiming();
        view->open();
        state.PauseTiming();
        view.reset();
        state.ResumeTiming();
    }
}

void openViewer(benchmark::State& state)
{
    const QList<KvPlanNode> nodes = tasks(int(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        auto page = std::make_unique<Page>();
        state.ResumeTiming();
        page->open(nodes);
        state.PauseTiming();
        page.reset();
        state.ResumeTiming();
    }
}

void scrollBare(benchmark::State& state)
{
    BareView& bare = openBareView();
    for (auto _ : state)
        scroll(*bare.view.graphicsView()->verticalScrollBar(), bare.view);
}

void scrollViewer(benchmark::State& state)
{
    Page& page = openPage();
    for (auto _ : state)
        scroll(*page.page.chart()->verticalScrollBar(), page.page);
}

void zoomBare(benchmark::State& state)
{
    BareView& bare = openBareView();
    for (auto _ : state) {
        for (int i = 0; i < places; ++i) {
            bare.grid->setDayWidth(i % 2 == 0 ? 24 : 12);
            QApplication::processEvents();
            benchmark::DoNotOptimize(bare.view.grab());
        }
    }
}

void zoomViewer(benchmark::State& state)
{
    Page& page = openPage();
    for (auto _ : state) {
        for (int i = 0; i < places; ++i) {
            if (i % 2 == 0)
                page.page.chart()->zoomIn();
            else
                page.page.chart()->zoomOut();
            QApplication::processEvents();
            benchmark::DoNotOptimize(page.page.grab());
        }
    }
}

BENCHMARK(openBare)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(openViewer)->Arg(taskCount)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(openViewer)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(scrollBare)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(scrollViewer)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(zoomBare)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(zoomViewer)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const std::string iterations = "/iterations:1";
    compare("opening 20,000 linked tasks / bare view", "openViewer/20000" + iterations,
            "openBare" + iterations, 1.5);
    compare("opening 100,000 linked tasks / bare view of 20,000", "openViewer/100000" + iterations,
            "openBare" + iterations, 1.5);
    compare("scrolling / bare view", "scrollViewer" + iterations, "scrollBare" + iterations, 1.5);
    compare("zooming / bare view", "zoomViewer" + iterations, "zoomBare" + iterations, 1.5);
    return runBenchmarks(argc, argv);
}
