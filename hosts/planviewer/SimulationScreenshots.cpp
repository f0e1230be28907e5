#include "SimulationScreenshots.h"

#include "GanttChart.h"
#include "MainWindow.h"
#include "PlanPage.h"
#include "SimulationPage.h"
#include "TaskColumns.h"
#include "TaskModel.h"

#include <FloorHeightsPanel.h>
#include <PlaybackBar.h>
#include <SimulationView.h>

#include <QtCore/QDir>
#include <QtCore/QEventLoop>
#include <QtCore/QTextStream>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QSlider>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QTreeView>

#include <functional>

namespace {

using Take = std::function<void(const QImage&)>;

// What is handed over later, now.
QImage waitFor(const std::function<void(const Take&)>& draw)
{
    QImage drawn;
    QEventLoop loop;
    bool isDone = false;
    draw([&](const QImage& picture) {
        drawn = picture;
        isDone = true;
        loop.quit();
    });
    if (!isDone)
        loop.exec();
    return drawn;
}

bool isPlain(const QImage& image)
{
    const QRgb first = image.pixel(0, 0);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) != first)
                return false;
        }
    }
    return true;
}

// The first pictures are of the scene before the last changes, or of nothing at all.
QImage settledPicture(SimulationView& view)
{
    constexpr int mostTries = 300;
    QImage before;
    for (int i = 0; i < mostTries; ++i) {
        QImage picture = waitFor([&view](const Take& take) { view.takePicture(take); });
        if (!picture.isNull() && picture == before && !isPlain(picture))
            return picture;
        before = picture;
    }
    return {};
}

bool write(const QImage& picture, const QString& path)
{
    const QString fault = writePicture(picture, path);
    if (!fault.isEmpty())
        QTextStream(stderr) << fault << '\n';
    return fault.isEmpty();
}

// A widget's own picture has a hole where the building is drawn by other means.
bool grab(QWidget& widget, SimulationView& view, const QString& path)
{
    const QImage building = settledPicture(view);
    QImage picture = widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
    if (building.isNull())
        return write({}, path);
    QPainter(&picture).drawImage(QRect(view.mapTo(&widget, QPoint(0, 0)), view.size()), building);
    return write(picture, path);
}

// An unfinished task whose elements stand in part, for the selection.
int taskUnderWay(const TaskList& tasks)
{
    for (int i = 0; i < tasks.size(); ++i) {
        const KvPlanNode& node = tasks.at(i).node;
        if (!node.links.isEmpty() && node.finishedPercentage > 0.0 && node.finishedPercentage < 100.0)
            return i;
    }
    return 0;
}

bool writeWindow(MainWindow& window, const QString& path)
{
    PlanPage& page = *window.planPage();
    window.findChild<QDockWidget*>(QStringLiteral("plansDock"))->hide();
    window.resize(1500, 1120);
    window.resizeDocks({window.findChild<QDockWidget*>(QStringLiteral("simulationDock"))}, {720},
                       Qt::Vertical);
    QApplication::processEvents();
    page.findChild<QSplitter*>()->setSizes({680, 820, 0});
    page.tree()->header()->resizeSection(TaskColumn::Name, 380);
    const int task = taskUnderWay(page.model()->tasks());
    page.selectTasks({task});
    page.tree()->scrollTo(page.model()->indexOf(task), QAbstractItemView::PositionAtCenter);
    while (page.chart()->scale().step() > 4)
        page.chart()->zoomIn();
    page.chart()->showDate(page.model()->tasks().at(task).node.startDate);
    window.simulationPage()->view()->fit();
    return grab(window, *window.simulationPage()->view(), path);
}

bool writeFloors(MainWindow& window, const QString& path)
{
    SimulationPage& simulation = *window.simulationPage();
    window.planPage()->selectTasks({});
    window.resize(1100, 1240); // a tower taken apart is high
    simulation.findChild<QTabWidget*>(QStringLiteral("simulationPanels"))
        ->setCurrentWidget(simulation.floors());
    auto* const spread = simulation.floors()->findChild<QSlider*>(QStringLiteral("spread"));
    spread->setValue(spread->maximum() * 2 / 3);
    const bool isWritten = grab(simulation, *simulation.view(), path);
    spread->setValue(0);
    return isWritten;
}

// The planned dates above, the actual ones below.
bool writeStrip(const SimulationPage& simulation, const QString& path)
{
    constexpr int columns = 6;
    const QSize size(220, 320);
    const SimulationPeriod period = simulation.sequence().period;
    QImage strip(size.width() * columns, size.height() * BuildingScene::viewCount, QImage::Format_RGB32);
    PictureContent content = simulation.pictureContent();
    content.hasCamera = false;
    content.title.clear();
    QPainter painter(&strip);
    for (int row = 0; row < BuildingScene::viewCount; ++row) {
        content.views = row == 0 ? SimulationViews::Planned : SimulationViews::Actual;
        PictureMaker maker(content, size);
        for (int column = 0; column < columns; ++column) {
            const QDateTime date =
                period.start.addMSecs(period.start.msecsTo(period.finish) * (column + 1) / columns);
            const QImage frame = waitFor([&](const Take& take) { maker.draw(date, take); });
            if (frame.isNull())
                return write(frame, path);
            painter.drawImage(column * size.width(), row * size.height(), frame);
        }
    }
    painter.end();
    return write(strip, path);
}

} // namespace

bool writeSimulationScreenshots(MainWindow& window, const QString& folder, const QDateTime& date)
{
    const QDir dir(folder);
    if (!dir.mkpath(QStringLiteral("."))) {
        QTextStream(stderr) << "cannot make the folder " << folder << '\n';
        return false;
    }
    window.simulationPage()->playback()->setDate(date);
    const bool isWritten = writeWindow(window, dir.filePath(QStringLiteral("simulation.png")));
    return writeFloors(window, dir.filePath(QStringLiteral("floors.png"))) &&
           writeStrip(*window.simulationPage(), dir.filePath(QStringLiteral("strip.png"))) && isWritten;
}
