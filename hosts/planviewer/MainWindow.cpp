#include "MainWindow.h"

#include "CellText.h"
#include "ColumnLayout.h"
#include "GanttChart.h"
#include "GanttExport.h"
#include "PlanActions.h"
#include "PlanListPanel.h"
#include "PlanPage.h"
#include "SimulationPage.h"
#include "StatisticsPage.h"

#include <QtGui/QCloseEvent>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QTreeView>

namespace {

constexpr int nameCells = 80; // of a plan's name in a message

} // namespace

MainWindow::MainWindow(PlanClient* client, QWidget* parent)
    : QMainWindow(parent)
    , m_client(client)
    , m_list(new PlanListPanel(client))
    , m_page(new PlanPage(client))
    , m_statistics(new StatisticsPage(client))
    , m_simulation(new SimulationPage(m_page))
    , m_tabs(new QTabWidget)
    , m_planActions(new PlanActions(client, m_list, this))
    , m_search(new QLineEdit)
    , m_waiting(new QLabel)
    , m_busy(new QProgressBar)
{
    auto* const dock = new QDockWidget(tr("Plans"));
    dock->setObjectName(QStringLiteral("plansDock"));
    dock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetClosable);
    dock->setWidget(m_list);
    addDockWidget(Qt::LeftDockWidgetArea, dock);
    m_tabs->addTab(m_page, tr("Plan"));
    m_tabs->addTab(m_statistics, tr("Statistics"));
    m_tabs->setDocumentMode(true);
    setCentralWidget(m_tabs);
    buildPlanMenu();
    buildEditMenu();
    buildViewMenu();
    menuBar()->actions().last()->menu()->addAction(dock->toggleViewAction());
    buildSimulationMenu();
    buildToolBar();
    buildStatusBar();
    resizeDocks({dock}, {270}, Qt::Horizontal);
    resize(1680, 900);
    restoreGeometry(Preferences::windowGeometry());

    connect(m_list, &PlanListPanel::opened, this, &MainWindow::openPlan);
    connect(m_page, &PlanPage::editedChanged, this, &MainWindow::updateTitle);
    connect(m_page, &PlanPage::editedChanged, this, &MainWindow::updateActions);
    connect(m_page, &PlanPage::planChanged, this, &MainWindow::updateTitle);
    connect(m_page, &PlanPage::planChanged, this, &MainWindow::updateActions);
    connect(m_page, &PlanPage::currentTaskChanged, this, &MainWindow::updateActions);
    connect(m_page, &PlanPage::told, this,
            [this](const QString& text) { statusBar()->showMessage(text, 8000); });
    connect(m_simulation, &SimulationPage::told, this,
            [this](const QString& text) { statusBar()->showMessage(text, 8000); });
    connect(m_simulation, &SimulationPage::changed, this, &MainWindow::updateActions);
    connect(m_planActions, &PlanActions::told, this,
            [this](const QString& text) { statusBar()->showMessage(text, 8000); });
    connect(m_planActions, &PlanActions::planMade, this, &MainWindow::openPlan);
    connect(m_planActions, &PlanActions::planRenamed, this, [this](const QString& id, const QString& name) {
        if (id == m_page->plan().id)
            m_page->setPlanName(name);
    });
    connect(m_planActions, &PlanActions::planRemoved, this, [this](const QString& id) {
        if (id == m_page->plan().id)
            m_page->close();
    });
    connect(m_tabs, &QTabWidget::currentChanged, this, [this](int tab) {
        if (m_tabs->widget(tab) == m_statistics)
            m_statistics->refresh();
    });
    connect(client, &PlanClient::quitRequested, this, &QWidget::close);
    updateActions();
    updateTitle();
}

// Before the windows that its scene draws on.
MainWindow::~MainWindow()
{
    delete m_simulation;
}

QAction* MainWindow::add(QMenu* menu, const char* name, const QString& text, const QKeySequence& keys,
                         const std::function<void()>& run)
{
    QAction* const action = menu->addAction(text);
    action->setObjectName(QString::fromLatin1(name));
    action->setIconText(plainText(text));
    action->setShortcut(keys);
    connect(action, &QAction::triggered, this, run);
    return action;
}

void MainWindow::buildStatusBar()
{
    m_busy->setRange(0, 0);
    m_busy->setMaximumWidth(120);
    m_busy->setAccessibleName(tr("Waiting"));
    m_busy->hide();
    m_waiting->setObjectName(QStringLiteral("waiting"));
    statusBar()->addPermanentWidget(m_waiting);
    statusBar()->addPermanentWidget(m_busy);
    connect(m_client, &PlanClient::waitingFor, this, [this](const QString& task) {
        m_waiting->setText(task.isEmpty() ? QString() : tr("Waiting: %1 …").arg(task));
        m_busy->setVisible(!task.isEmpty());
    });
}

void MainWindow::start()
{
    m_list->refresh();
    readRights(QString());
    m_page->columns()->restoreHidden();
}

void MainWindow::readRights(const QString& category)
{
    m_client->readRights(category);
    m_planActions->setRights(m_client->rights());
    updateActions();
}

bool MainWindow::openPlan(const KvPlan& plan)
{
    if (!leaveEdits() || !m_page->open(plan))
        return false;
    m_tabs->setCurrentWidget(m_page);
    m_statistics->setCategory(plan.category);
    m_list->select(plan.id);
    readRights(plan.category);
    m_page->tree()->setFocus();
    return true;
}

void MainWindow::updateTitle()
{
    const QString program = tr("Plans");
    // Twice written, the place of the mark is text.
    const QString name =
        fitted(m_page->plan().name, nameCells).replace(QLatin1String("[*]"), QLatin1String("[*][*]"));
    setWindowTitle(m_page->hasPlan() ? QStringLiteral("%1[*] – %2").arg(name, program)
                                     : QStringLiteral("[*]") + program);
    setWindowModified(m_page->isEdited());
    m_tabs->setTabText(0, m_page->isEdited() ? tr("Plan (edited)") : tr("Plan"));
}

void MainWindow::updateActions()
{
    const PlanRights rights = m_client->rights();
    const QString noPlan = tr("Open a plan first.");
    const QString mayNotEdit = tr("You may not edit plans of this category.");
    const bool hasPlan = m_page->hasPlan();
    const QString reason = hasPlan ? mayNotEdit : noPlan;
    const bool mayEdit = hasPlan && rights.mayEdit;
    m_page->setEditable(mayEdit, reason);
    allow(m_save, mayEdit && m_page->isEdited(), mayEdit ? tr("Nothing was changed.") : reason);
    allow(m_addTask, mayEdit, reason);
    const QString noTask = tr("Select a task first.");
    allow(m_addSubtask, mayEdit && m_page->hasCurrentTask(), mayEdit ? noTask : reason);
    const bool isKept = m_page->hasCurrentTask() && !m_page->currentTaskId().isEmpty();
    allow(m_report, mayEdit && isKept && !m_page->isEdited(),
          !mayEdit             ? reason
          : m_page->isEdited() ? tr("Save your changes first.")
                               : noTask);
    allow(m_picture, hasPlan && rights.mayExport,
          hasPlan ? tr("You may not export plans of this category.") : noPlan);
    for (QAction* const action : qAsConst(m_planViews))
        allow(action, hasPlan, noPlan);
    allow(m_model, hasPlan, noPlan);
    for (QAction* const action : qAsConst(m_buildingViews))
        allow(action, m_simulation->hasModel(), hasPlan ? tr("Open a model first.") : noPlan);
}

bool MainWindow::leaveEdits()
{
    if (!m_page->isEdited())
        return true;
    QMessageBox box(
        QMessageBox::Question, tr("Unsaved changes"),
        tr("The plan \"%1\" has changes that are not saved.").arg(fitted(m_page->plan().name, nameCells)),
        QMessageBox::NoButton, this);
    box.setTextFormat(Qt::PlainText);
    box.setObjectName(QStringLiteral("unsavedDialog"));
    QPushButton* const save = box.addButton(tr("&Save…"), QMessageBox::AcceptRole);
    save->setObjectName(QStringLiteral("saveFirst"));
    QPushButton* const discard = box.addButton(tr("&Discard"), QMessageBox::DestructiveRole);
    discard->setObjectName(QStringLiteral("discard"));
    QPushButton* const stay = box.addButton(tr("&Keep editing"), QMessageBox::RejectRole);
    stay->setObjectName(QStringLiteral("stay"));
    box.setDefaultButton(save);
    box.setEscapeButton(stay);
    box.exec();
    if (box.clickedButton() == save)
        return m_page->save() && !m_page->isEdited();
    return box.clickedButton() == discard;
}

// Nothing can be saved while a request waits, and the user can be asked all the same.
bool MainWindow::leaveEditsWhileBusy()
{
    if (!m_page->isEdited())
        return true;
    if (m_isAsking)
        return false;
    QMessageBox box(
        QMessageBox::Question, tr("Unsaved changes"),
        tr("The plan \"%1\" has changes that the service has not kept yet. They can be saved once it "
           "has answered what it is being asked now.")
            .arg(fitted(m_page->plan().name, nameCells)),
        QMessageBox::NoButton, this);
    box.setTextFormat(Qt::PlainText);
    box.setObjectName(QStringLiteral("unsavedDialog"));
    QPushButton* const discard = box.addButton(tr("&Discard"), QMessageBox::DestructiveRole);
    discard->setObjectName(QStringLiteral("discard"));
    QPushButton* const stay = box.addButton(tr("&Keep editing"), QMessageBox::RejectRole);
    stay->setObjectName(QStringLiteral("stay"));
    box.setDefaultButton(stay);
    box.setEscapeButton(stay);
    m_client->setQuestion(&box);
    m_isAsking = true;
    box.exec();
    m_isAsking = false;
    m_client->setQuestion(nullptr);
    return box.clickedButton() == discard;
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (!(m_client->isBusy() ? leaveEditsWhileBusy() : leaveEdits())) {
        event->ignore();
        return;
    }
    m_client->close();
    m_page->columns()->flush();
    Preferences::setWindowGeometry(saveGeometry());
    event->accept();
}

void MainWindow::exportPicture()
{
    const QString path = QFileDialog::getSaveFileName(
        this, tr("Export the Gantt chart"), fileName(m_page->plan().name) + QStringLiteral(".png"),
        tr("Picture (*.png);;Drawing (*.svg);;Document (*.pdf)"));
    if (path.isEmpty())
        return;
    const QString fault = exportGantt(*m_page, path);
    if (fault.isEmpty()) {
        statusBar()->showMessage(tr("Written: %1").arg(path), 8000);
        return;
    }
    QMessageBox box(QMessageBox::Warning, tr("Export the Gantt chart"),
                    tr("\"%1\" cannot be written.").arg(path), QMessageBox::NoButton, this);
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(fault);
    box.addButton(tr("&Close"), QMessageBox::AcceptRole);
    box.exec();
}

void MainWindow::search()
{
    const QString text = m_search->text().trimmed();
    if (!text.isEmpty() && !m_page->find(text))
        statusBar()->showMessage(tr("No task contains \"%1\".").arg(fitted(text, nameCells)), 8000);
}
