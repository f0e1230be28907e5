// 50,000 elements built by 5,000 tasks, played in a window: how long a frame takes, measured against a bare
// Qt 3D scene that draws as many boxes in the same window, in turns.

#include "BareScene.h"
#include "RatioMain.h"
#include "SimulatedPlan.h"

#include <BuildingScene.h>
#include <GraphicsCheck.h>
#include <SimulatedBuilding.h>
#include <SimulationClock.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QEventLoop>
#include <QtCore/QTimer>
#include <QtWidgets/QApplication>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int taskCount = 5000;
constexpr int elementCount = taskCount * SimulatedPlan::elementsOfTask;
constexpr int rounds = 3;
constexpr int framesOfRound = 25;
constexpr qint64 longestWait = 60000; // milliseconds

struct Boxes
{
    QVector3D size{0.8F, 0.8F, 0.8F};
    QVector<QVector3D> places; // on fifty floors
    std::shared_ptr<const BuildingModel> model;
    SceneCamera camera;
};

// In the file elements stand in another order than they are built in, as in the files of the usual
// converters.
Boxes makeBoxes(double aspect)
{
    constexpr int across = 40;
    constexpr int deep = 25;
    constexpr int stride = 7919; // has no divisor in common with their number
    Boxes boxes;
    ModelData data;
    for (int i = 0; i < elementCount; ++i) {
        const QVector3D low(float(i % across), float(i / across / deep), float(i / across % deep));
        boxes.places.append(low);
        const quint32 first = data.vertexCount();
        const int node = data.nodes.size();
        data.nodes.append({SimulatedPlan::elementName(int(qint64(i) * stride % elementCount)), -1});
        for (int axis = 0; axis < 3; ++axis) {
            for (int high = 0; high < 2; ++high) {
                const int u = (axis + (high ? 1 : 2)) % 3;
                const int v = 3 - axis - u;
                const quint32 corner = data.vertexCount();
                for (int k = 0; k < 4; ++k) {
                    QVector3D point = low;
                    point[axis] += high ? boxes.size[axis] : 0.0F;
                    point[u] += k == 1 || k == 2 ? boxes.size[u] : 0.0F;
                    point[v] += k >= 2 ? boxes.size[v] : 0.0F;
                    data.positions << point.x() << point.y() << point.z();
                }
                data.indices << corner << corner + 1 << corner + 2 << corner << corner + 2 << corner + 3;
            }
        }
        data.parts.append({node, first, data.vertexCount() - first, quint32(data.indices.size() - 36), 36});
    }
    boxes.model = std::make_shared<const BuildingModel>(std::move(data), QSet<QString>());
    boxes.camera.fit(boxes.model->box(), aspect);
    return boxes;
}

// Runs the event loop until it is over; false when that takes too long.
bool waitFor(const std::function<bool()>& isOver)
{
    QElapsedTimer time;
    time.start();
    while (!isOver()) {
        if (time.elapsed() > longestWait)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}

bool hasBoxes(const QImage& image, int views)
{
    for (int view = 0; view < views; ++view) {
        const QColor middle =
            image.pixelColor(image.width() * (2 * view + 1) / (2 * views), image.height() / 2);
        if (middle == QColor(Qt::white))
            return false;
    }
    return true;
}

// Until the boxes are there, which takes some frames.
template<typename Scene>
bool waitForBoxes(Scene& scene, int views)
{
    bool isThere = false;
    std::function<void()> look = [&] {
        scene.takePicture([&](const QImage& image) {
            isThere = !image.isNull() && hasBoxes(image, views);
            if (!isThere)
                look();
        });
    };
    look();
    return waitFor([&] { return isThere; });
}

struct Measured
{
    double frame = 0.0;  // milliseconds
    double update = 0.0; // of these, to tell the scene what to show
};

// Of a round of frames; @p frames counts on by itself.
Measured measure(const int& frames, const qint64& updateNanoseconds)
{
    const int first = frames;
    const qint64 updatedBefore = updateNanoseconds;
    QElapsedTimer time;
    time.start();
    if (!waitFor([&] { return frames - first >= framesOfRound; }))
        return {};
    const double nanoseconds = double(time.nsecsElapsed());
    const int drawn = frames - first;
    return {nanoseconds / drawn / 1e6, double(updateNanoseconds - updatedBefore) / drawn / 1e6};
}

Measured bare(QWindow& window, const Boxes& boxes, int views, double aspect)
{
    int frames = 0;
    const qint64 none = 0;
    BareScene scene(window, boxes.size, boxes.places, boxes.camera.view(), boxes.camera.projection(aspect),
                    views, [&] { ++frames; });
    if (!waitForBoxes(scene, views))
        return {};
    return measure(frames, none);
}

Measured played(QWindow& window, const Boxes& boxes, const QList<KvPlanNode>& nodes, int views, double aspect)
{
    int frames = 0;
    qint64 updates = 0;
    BuildingScene scene(&window);
    scene.setModel(boxes.model);
    scene.setViews(true, views == 2);
    scene.setCamera(boxes.camera, aspect);
    SimulatedBuilding buildings[2];
    std::vector<ElementLooks> looks(size_t(views), ElementLooks(*boxes.model));
    for (int view = 0; view < views; ++view) {
        const auto dates = view == 0 ? SimulationDates::Planned : SimulationDates::Actual;
        buildings[view].setTasks(SimulatedPlan::listed(nodes), {dates, SimulationShare::ByTime});
        buildings[view].setModel(boxes.model);
    }
    const QList<QColor> colours{Qt::gray, Qt::yellow, Qt::green, Qt::red, Qt::blue, Qt::cyan, Qt::magenta};
    SimulationClock clock;
    clock.setPeriod(planPeriod(SimulatedPlan::listed(nodes)));
    clock.setDate(SimulatedPlan::dateOf(0, taskCount));
    clock.play();
    const auto show = [&] {
        QElapsedTimer time;
        time.start();
        for (int view = 0; view < views; ++view) {
            buildings[view].show(clock.date(), {TimeLineSet(), colours}, looks[size_t(view)]);
            scene.setLooks(BuildingScene::View(view), looks[size_t(view)]);
        }
        updates += time.nsecsElapsed();
    };
    show();
    QElapsedTimer sinceFrame;
    sinceFrame.start();
    scene.drawAlways([&] {
        clock.advance(sinceFrame.restart());
        show();
        ++frames;
    });
    if (!waitForBoxes(scene, views))
        return {};
    return measure(frames, updates);
}

double median(QVector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

bool compareScenes(QWindow& window, const QList<KvPlanNode>& nodes, int views)
{
    const double aspect = double(window.width()) / views / window.height();
    const Boxes boxes = makeBoxes(aspect);
    QVector<double> bareFrames;
    QVector<double> frames;
    QVector<double> updates;
    for (int round = 0; round < rounds; ++round) {
        const Measured reference = bare(window, boxes, views, aspect);
        const Measured simulation = played(window, boxes, nodes, views, aspect);
        if (reference.frame <= 0.0 || simulation.frame <= 0.0) {
            std::fprintf(stderr, "nothing was drawn\n");
            return false;
        }
        bareFrames.append(reference.frame);
        frames.append(simulation.frame);
        updates.append(simulation.update);
    }
    std::printf("%d view%s: bare %.2f ms a frame, played %.2f ms, of these %.3f ms to tell what to show\n",
                views, views == 1 ? "" : "s", median(bareFrames), median(frames), median(updates));
    const std::string which = views == 1 ? "one view" : "two views";
    report("frame of a simulation / bare scene, " + which, median(frames) / median(bareFrames), 2.0);
    report("per cent of a frame to tell what to show, " + which, 100.0 * median(updates) / median(frames), 0);
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    if (!GraphicsCheck::fault().isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(GraphicsCheck::fault()));
        return 1;
    }
    const QList<KvPlanNode> nodes = SimulatedPlan::nodes(taskCount);
    QWindow window;
    window.setSurfaceType(QSurface::OpenGLSurface);
    window.setFormat(GraphicsCheck::format());
    window.resize(800, 600);
    window.show();
    if (!waitFor([&] { return window.isExposed(); }))
        return 1;
    for (const int views : {1, 2}) {
        if (!compareScenes(window, nodes, views))
            return 1;
    }
    return printReports(argv[0]);
}
