// The menus and the tool bar of the main window.

#include "Appearance.h"
#include "ColumnLayout.h"
#include "GanttChart.h"
#include "MainWindow.h"
#include "PlanActions.h"
#include "PlanListPanel.h"
#include "PlanPage.h"

#include <QtWidgets/QActionGroup>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QTreeView>
#include <QtWidgets/QUndoStack>

void MainWindow::buildPlanMenu()
{
    QMenu* const menu = menuBar()->addMenu(tr("&Plan"));
    menu->setToolTipsVisible(true);
    add(menu, "openPlan", tr("&Open"), Qt::CTRL | Qt::Key_O, [this] {
        const KvPlan plan = m_list->selected();
        if (!plan.id.isEmpty())
            openPlan(plan);
    });
    menu->addActions(m_planActions->actions());
    menu->addSeparator();
    m_save = add(menu, "save", tr("&Save…"), QKeySequence::Save, [this] { m_page->save(); });
    m_reload = add(menu, "reload", tr("Read &again"), QKeySequence::Refresh, [this] {
        m_list->refresh();
        if (m_page->hasPlan() && leaveEdits())
            m_page->reload();
    });
    m_picture = add(menu, "exportGantt", tr("Export &Gantt chart…"), Qt::CTRL | Qt::Key_G,
                    [this] { exportPicture(); });
    menu->addSeparator();
    add(menu, "quit", tr("&Quit"), QKeySequence::Quit, [this] { close(); });
}

void MainWindow::buildEditMenu()
{
    QMenu* const menu = menuBar()->addMenu(tr("&Edit"));
    menu->setToolTipsVisible(true);
    QAction* const undo = m_page->undoStack()->createUndoAction(this, tr("Undo"));
    undo->setObjectName(QStringLiteral("undo"));
    undo->setShortcut(QKeySequence::Undo);
    QAction* const redo = m_page->undoStack()->createRedoAction(this, tr("Redo"));
    redo->setObjectName(QStringLiteral("redo"));
    undo->setIconText(tr("Undo")); // the tool bar has no room for what it undoes
    redo->setIconText(tr("Redo"));
    redo->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_Z);
    const auto tellWhy = [](QAction* action, const QString& reason) {
        return [action, reason](bool isPossible) {
            allow(action, isPossible, reason);
        };
    };
    connect(m_page->undoStack(), &QUndoStack::canUndoChanged, undo,
            tellWhy(undo, tr("Nothing was changed.")));
    connect(m_page->undoStack(), &QUndoStack::canRedoChanged, redo, tellWhy(redo, tr("Nothing was undone.")));
    allow(undo, false, tr("Nothing was changed."));
    allow(redo, false, tr("Nothing was undone."));
    menu->addActions({undo, redo});
    menu->addSeparator();
    m_addTask = add(menu, "addTask", tr("&Add task"), Qt::Key_Insert, [this] { m_page->addTask(false); });
    m_addSubtask = add(menu, "addSubtask", tr("Add &subtask"), Qt::SHIFT | Qt::Key_Insert,
                       [this] { m_page->addTask(true); });
    m_report = add(menu, "reportProgress", tr("&Report progress…"), Qt::CTRL | Qt::Key_P,
                   [this] { m_page->reportProgress(); });
    menu->addSeparator();
    add(menu, "findTask", tr("&Find a task"), QKeySequence::Find, [this] {
        m_search->setFocus();
        m_search->selectAll();
    });
    add(menu, "findNext", tr("Find &next"), QKeySequence::FindNext, [this] { search(); });
    add(menu, "filterPlans", tr("Find &plans"), Qt::CTRL | Qt::Key_L, [this] { m_list->focusFilter(); });
}

void MainWindow::buildViewMenu()
{
    QMenu* const menu = menuBar()->addMenu(tr("&View"));
    menu->setToolTipsVisible(true);
    m_planViews = {
        add(menu, "zoomIn", tr("Zoom &in"), QKeySequence::ZoomIn, [this] { m_page->chart()->zoomIn(); }),
        add(menu, "zoomOut", tr("Zoom &out"), QKeySequence::ZoomOut, [this] { m_page->chart()->zoomOut(); }),
        add(menu, "zoomFit", tr("&Whole plan"), Qt::CTRL | Qt::Key_0,
            [this] { m_page->chart()->zoomToFit(); }),
        add(menu, "today", tr("&Today"), Qt::CTRL | Qt::Key_T,
            [this] { m_page->chart()->showDate(QDateTime::currentDateTime()); }),
        add(menu, "expandAll", tr("&Expand all"), Qt::CTRL | Qt::SHIFT | Qt::Key_Plus,
            [this] { m_page->expandAll(); }),
        add(menu, "collapseAll", tr("&Collapse all"), Qt::CTRL | Qt::SHIFT | Qt::Key_Minus,
            [this] { m_page->collapseAll(); }),
    };
    menu->addSeparator();
    auto* const colours = new QActionGroup(this);
    const auto addColouring = [&](const char* name, const QString& text, GanttPainter::Colouring colouring) {
        QAction* const action =
            add(menu, name, text, {}, [this, colouring] { m_page->setColouring(colouring); });
        action->setCheckable(true);
        action->setChecked(colouring == GanttPainter::Colouring::ByState);
        colours->addAction(action);
    };
    addColouring("colourByState", tr("Colour by &state"), GanttPainter::Colouring::ByState);
    addColouring("colourByPlan", tr("Colour by &plan"), GanttPainter::Colouring::ByPlan);
    menu->addSeparator();
    menu->addMenu(m_page->columns()->menu());
    QMenu* const look = menu->addMenu(tr("&Appearance"));
    auto* const themes = new QActionGroup(this);
    const auto addTheme = [&](const char* name, const QString& text, Preferences::Theme theme) {
        QAction* const action = add(look, name, text, {}, [theme] {
            Appearance::apply(theme);
            Preferences::setTheme(theme);
        });
        action->setCheckable(true);
        action->setChecked(theme == Preferences::theme());
        themes->addAction(action);
    };
    addTheme("themeSystem", tr("As the &system"), Preferences::Theme::System);
    addTheme("themeLight", tr("&Light"), Preferences::Theme::Light);
    addTheme("themeDark", tr("&Dark"), Preferences::Theme::Dark);
    look->addSeparator();
    const auto addLanguage = [&](const char* name, const QString& text, const QString& language) {
        add(look, name, text, {}, [this, language] {
            Preferences::setLanguage(language);
            statusBar()->showMessage(tr("The language changes with the next start."), 8000);
        });
    };
    addLanguage("languageChinese", QStringLiteral("中文"), QStringLiteral("zh"));
    addLanguage("languageEnglish", QStringLiteral("English"), QStringLiteral("en"));
    menu->addSeparator();
}

void MainWindow::buildToolBar()
{
    QToolBar* const bar = addToolBar(tr("Tools"));
    bar->setObjectName(QStringLiteral("toolBar"));
    bar->setMovable(false);
    bar->addActions(
        {m_save, findChild<QAction*>(QStringLiteral("undo")), findChild<QAction*>(QStringLiteral("redo"))});
    bar->addSeparator();
    bar->addActions({m_addTask, m_report});
    bar->addSeparator();
    bar->addActions(m_planViews.mid(0, 4));
    bar->addSeparator();
    m_search->setObjectName(QStringLiteral("search"));
    m_search->setPlaceholderText(tr("Find a task"));
    m_search->setAccessibleName(tr("Find a task"));
    m_search->setClearButtonEnabled(true);
    m_search->setMaximumWidth(220);
    connect(m_search, &QLineEdit::returnPressed, this, &MainWindow::search);
    bar->addWidget(m_search);
}
