#include "Screenshots.h"

#include "ColumnLayout.h"
#include "DetailsPanel.h"
#include "GanttChart.h"
#include "MainWindow.h"
#include "PlanClient.h"
#include "PlanPage.h"
#include "ReportDialog.h"
#include "SaveDialog.h"
#include "StatisticsPage.h"
#include "TaskColumns.h"
#include "TaskModel.h"

#include <QtCore/QDir>
#include <QtCore/QTextStream>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QTreeView>
#include <QtWidgets/QUndoStack>

namespace {

bool grab(QWidget& widget, const QString& path)
{
    // Layouts settle in several rounds.
    for (int round = 0; round < 5; ++round)
        QApplication::processEvents();
    if (widget.grab().save(path))
        return true;
    QTextStream(stderr) << "cannot write " << path << '\n';
    return false;
}

// The first task with people, documents and bills, whose details show the most.
int fullestTask(const TaskList& tasks)
{
    int best = 0;
    int most = -1;
    for (int i = 0; i < tasks.size(); ++i) {
        const KvPlanNode& node = tasks.at(i).node;
        const int parts = int(!node.documents.isEmpty()) * 4 + int(!node.materialBills.isEmpty()) * 2 +
                          int(!node.links.isEmpty()) + int(!node.userIds.isEmpty());
        if (tasks.at(i).children.isEmpty() && parts > most) {
            most = parts;
            best = i;
        }
    }
    return best;
}

// The plan's name and whole columns up to the progress.
void showWholeColumns(MainWindow& window)
{
    PlanPage& page = *window.planPage();
    window.resizeDocks({window.findChild<QDockWidget*>(QStringLiteral("plansDock"))}, {330}, Qt::Horizontal);
    QApplication::processEvents();
    QHeaderView* const header = page.tree()->header();
    header->resizeSection(TaskColumn::Name, 430);
    int columns = 2 * page.tree()->frameWidth();
    for (const int column : {TaskColumn::Name, TaskColumn::Start, TaskColumn::Finish, TaskColumn::Progress})
        columns += header->sectionSize(column);
    constexpr int details = 210;
    page.findChild<QSplitter*>()->setSizes({columns, page.width() - columns - details, details});
    page.chart()->followTree();
}

} // namespace

bool writeScreenshots(MainWindow& window, const QString& folder)
{
    const QDir dir(folder);
    if (!dir.mkpath(QStringLiteral("."))) {
        QTextStream(stderr) << "cannot make the folder " << folder << '\n';
        return false;
    }
    const auto path = [&dir](const char* name) {
        return dir.filePath(QLatin1String(name) + QStringLiteral(".png"));
    };
    PlanPage& page = *window.planPage();
    window.resize(1920, 960); // room for whole names
    const int usualWidth = page.tree()->header()->sectionSize(TaskColumn::Name);
    showWholeColumns(window);
    page.chart()->zoomToFit();
    bool isWritten = grab(window, path("plan"));

    const int task = fullestTask(page.model()->tasks());
    const QModelIndex index = page.model()->indexOf(task);
    page.tree()->setCurrentIndex(index);
    page.tree()->scrollTo(index, QAbstractItemView::PositionAtCenter);
    while (page.chart()->scale().step() > 4)
        page.chart()->zoomIn();
    page.chart()->showDate(page.model()->tasks().at(task).node.startDate);
    Q_EMIT page.details()->responsesWanted();
    isWritten = grab(window, path("details")) && isWritten;

    page.model()->setData(page.model()->indexOf(task, TaskColumn::Progress), 55);
    page.model()->addTask(page.model()->tasks().at(task).parent, QStringLiteral("屋面样板 Roof mock-up"),
                          page.plan().id);
    const QList<KvPlanNode> touched = page.model()->touched();
    const SaveList list = window.client()->changes(touched);
    SaveDialog save(list, window.client()->asRead(list.toUpdate), &window);
    save.show();
    isWritten = grab(save, path("save")) && isWritten;
    save.hide();
    ReportDialog report(page.model()->tasks().at(task).node, &window);
    report.show();
    isWritten = grab(report, path("report")) && isWritten;
    report.hide();
    while (page.undoStack()->canUndo())
        page.undoStack()->undo();
    page.undoStack()->clear();

    page.tree()->header()->resizeSection(TaskColumn::Name, usualWidth); // it is kept for the user

    window.tabs()->setCurrentWidget(window.statisticsPage());
    return grab(window, path("statistics")) && isWritten;
}
