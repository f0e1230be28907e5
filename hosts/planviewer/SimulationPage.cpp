#include "SimulationPage.h"

#include "ElementSelection.h"
#include "GanttChart.h"
#include "PlanPage.h"
#include "SimulationStage.h"
#include "TaskModel.h"

#include <FloorHeightsPanel.h>
#include <GraphicsCheck.h>
#include <PlaybackBar.h>
#include <SimulationGaps.h>
#include <SimulationView.h>
#include <TimeLineSetPanel.h>

#include <QtCore/QItemSelectionModel>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QTreeView>
#include <QtWidgets/QVBoxLayout>

namespace {

constexpr BuildingScene::View views[] = {BuildingScene::Planned, BuildingScene::Actual};

QScrollArea* scrolled(QWidget* widget)
{
    auto* const area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setWidget(widget);
    area->setAccessibleName(SimulationPage::tr("Settings"));
    area->setFocusPolicy(Qt::NoFocus);
    return area;
}

} // namespace

SimulationPage::SimulationPage(PlanPage* page, QWidget* parent)
    : QWidget(parent)
    , m_page(page)
    , m_stage(new SimulationStage)
    , m_selection(new ElementSelection(page, this))
    , m_playback(new PlaybackBar)
    , m_panel(new TimeLineSetPanel(&m_settings))
    , m_floors(new FloorHeightsPanel(&m_settings))
    , m_gaps(new SimulationGapsPanel)
{
    setObjectName(QStringLiteral("simulationPage"));
    auto* const left = new QWidget;
    auto* const column = new QVBoxLayout(left);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_stage, 1);
    column->addWidget(m_playback);
    auto* const panels = new QTabWidget;
    panels->setObjectName(QStringLiteral("simulationPanels"));
    panels->setDocumentMode(true);
    panels->addTab(scrolled(m_panel), tr("Settings"));
    panels->addTab(m_floors, tr("Floors"));
    panels->addTab(m_gaps, tr("Gaps"));
    auto* const splitter = new QSplitter;
    splitter->addWidget(left);
    splitter->addWidget(panels);
    splitter->setStretchFactor(0, 1);
    splitter->setSizes({900, 260});
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(splitter);

    // Several edits in a row, as a reading of the plan is, are taken at once.
    m_tasksTimer.setSingleShot(true);
    m_tasksTimer.setInterval(0);
    connect(&m_tasksTimer, &QTimer::timeout, this, &SimulationPage::takeTasks);
    const auto tasksChanged = [this] {
        m_isStale = true;
        if (isVisible())
            m_tasksTimer.start();
    };
    TaskModel* const tasks = page->model();
    connect(tasks, &QAbstractItemModel::modelReset, this, tasksChanged);
    connect(tasks, &QAbstractItemModel::dataChanged, this, tasksChanged);
    connect(tasks, &QAbstractItemModel::rowsInserted, this, tasksChanged);
    connect(tasks, &QAbstractItemModel::rowsRemoved, this, tasksChanged);
    connect(page, &PlanPage::planChanged, this, &SimulationPage::takePlan);
    connect(page->tree()->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (!m_isStale)
            m_selection->highlightTasks();
    });
    connect(m_selection, &ElementSelection::told, this, &SimulationPage::told);
    connect(m_stage, &SimulationStage::viewMade, this, [this](SimulationView* view) {
        connect(view, &SimulationView::elementClicked, m_selection, &ElementSelection::select);
    });

    connect(&m_reader, &ModelReader::done, this, &SimulationPage::takeModel);
    connect(&m_reader, &ModelReader::failed, this, [this](const QString& fault) {
        dropModel();
        m_stage->showMessage(fault, false);
    });
    connect(&m_reader, &ModelReader::canceled, this, [this] {
        dropModel();
        m_stage->showMessage(tr("Reading the model was canceled."), false);
    });
    connect(m_stage, &SimulationStage::cancelWanted, &m_reader, &ModelReader::cancel);
    connect(m_playback, &PlaybackBar::dateChanged, this, &SimulationPage::showDate);
    connect(m_playback, &PlaybackBar::speedChanged, this, [this](double speed) {
        TimeLineSet set = m_settings.set();
        set.DayForS = speed;
        m_settings.setSet(set);
    });
    connect(&m_settings, &SimulationSettings::setChanged, this, [this] {
        m_playback->setSpeed(m_settings.set().DayForS);
        if (!m_isStale)
            m_playback->setPeriod(simulatedPeriod(planPeriod(nodes()), m_settings.set()));
        repaintBuilding();
    });
    connect(&m_settings, &SimulationSettings::coloursChanged, this, [this] {
        // The bars of the chart have the same.
        m_page->chart()->painter().setStateColours(m_settings.colours());
        m_page->chart()->viewport()->update();
        repaintBuilding();
    });
    connect(&m_settings, &SimulationSettings::floorHeightsChanged, this, &SimulationPage::showLifts);
    connect(&m_settings, &SimulationSettings::viewsChanged, this, [this] {
        showViews();
        takeTasks();
    });
    connect(m_floors, &FloorHeightsPanel::spreadChanged, this, [this] {
        showLifts();
        if (view())
            view()->fit();
    });
    connect(m_gaps, &SimulationGapsPanel::taskActivated, this,
            [this](int task) { m_page->selectTasks({task}); });
    connect(m_gaps, &SimulationGapsPanel::elementActivated, m_selection, &ElementSelection::goTo);
    showViews();
    takePlan();
}

// The scene first, as long as there is the window that it draws on.
SimulationPage::~SimulationPage()
{
    delete m_stage;
}

SimulationView* SimulationPage::view() const
{
    return m_stage->view();
}

QString SimulationPage::message() const
{
    return m_stage->message();
}

void SimulationPage::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (m_isStale)
        takeTasks();
    takePlan();
    showDate();
}

void SimulationPage::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    m_playback->pause();
    m_page->setPlaybackDate({});
}

// Of another plan: its settings and, as soon as somebody looks, its model.
void SimulationPage::takePlan()
{
    const QString id = m_page->plan().id;
    if (id != m_settings.planId()) {
        m_settings.setPlan(id);
        showViews();
    }
    if (!isVisible())
        return;
    if (id == m_planId && (m_model || !id.isEmpty()))
        return;
    m_planId = id;
    m_reader.cancel();
    dropModel();
    if (!GraphicsCheck::fault().isEmpty())
        m_stage->showMessage(GraphicsCheck::fault(), false);
    else if (id.isEmpty())
        m_stage->showMessage(tr("Open a plan first."), false);
    else if (m_settings.modelFile().isEmpty())
        m_stage->showMessage(tr("Choose the file with the model of the building: Simulation, Open a model…"),
                             false);
    else
        openModel(m_settings.modelFile());
}

void SimulationPage::openModel(const QString& path)
{
    if (!GraphicsCheck::fault().isEmpty()) {
        m_stage->showMessage(GraphicsCheck::fault(), false);
        return;
    }
    m_planId = m_page->plan().id;
    dropModel();
    m_stage->showMessage(tr("Reading the model %1 …").arg(path), true);
    m_reader.read(path);
}

void SimulationPage::dropModel()
{
    m_model.reset();
    for (SimulatedBuilding& building : m_building)
        building.setModel(nullptr);
    m_selection->setBuilding(nullptr, nullptr, nullptr, 0);
    if (view())
        view()->setModel(nullptr);
    m_floors->setFloors({});
    m_gaps->model()->setPlan({}, {}, {});
    Q_EMIT changed();
}

void SimulationPage::takeModel(const ModelData& read)
{
    m_settings.setModelFile(m_reader.path());
    m_known = linkedElements(nodes());
    m_model = std::make_shared<const BuildingModel>(read, m_known);
    m_stage->showBuilding();
    view()->setModel(m_model);
    m_floors->setFloors(m_model->floors());
    showViews();
    showLifts();
    takeTasks();
    view()->fit();
    if (m_namedCount == 0)
        Q_EMIT told(tr("no task names an element of this model; is it the model of another building?"));
    else
        Q_EMIT told(tr("Model read: %1 elements, %2 of them named by tasks.")
                        .arg(m_model->elements().size())
                        .arg(m_namedCount));
}

QVector<const KvPlanNode*> SimulationPage::nodes() const
{
    const TaskList& tasks = m_page->model()->tasks();
    QVector<const KvPlanNode*> all;
    all.reserve(tasks.size());
    for (int i = 0; i < tasks.size(); ++i)
        all.append(&tasks.at(i).node);
    return all;
}

void SimulationPage::takeTasks()
{
    m_isStale = false;
    const QVector<const KvPlanNode*> tasks = nodes();
    const SimulationPeriod period = planPeriod(tasks);
    m_panel->setPlanPeriod(period);
    m_building[BuildingScene::Planned].setTasks(tasks, {SimulationDates::Planned, m_settings.share()});
    m_building[BuildingScene::Actual].setTasks(tasks, {SimulationDates::Actual, m_settings.share()});
    if (m_model) {
        // An edit may name elements that were parts of others, or none.
        const QSet<QString> known = linkedElements(tasks);
        if (known != m_known) {
            m_known = known;
            m_model = std::make_shared<const BuildingModel>(m_model->data(), known);
            const SceneCamera camera = view()->camera();
            view()->setModel(m_model);
            view()->setCamera(camera);
            m_floors->setFloors(m_model->floors());
            showLifts();
        }
        QStringList geometry;
        m_namedCount = 0;
        for (const BuildingModel::Element& element : m_model->elements()) {
            geometry.append(element.id);
            m_namedCount += known.contains(element.id) ? 1 : 0;
        }
        m_gaps->model()->setPlan(tasks, m_building[BuildingScene::Actual].timeline(), geometry);
    }
    for (SimulatedBuilding& building : m_building)
        building.setModel(m_model);
    m_playback->setPeriod(simulatedPeriod(period, m_settings.set()));
    m_playback->setSpeed(m_settings.set().DayForS);
    m_selection->setBuilding(view(), m_model, &m_building[BuildingScene::Planned], m_namedCount);
    m_selection->highlightTasks();
    showDate();
    Q_EMIT changed();
}

SimulatedBuilding::Paint SimulationPage::paint() const
{
    return {m_settings.set(), m_settings.colours()};
}

void SimulationPage::showDate()
{
    if (!isVisible())
        return;
    m_page->setPlaybackDate(m_playback->date());
    repaintBuilding();
}

void SimulationPage::repaintBuilding()
{
    if (!view() || !m_model)
        return;
    for (const BuildingScene::View which : views) {
        if (view()->isShown(which))
            m_building[which].show(m_playback->date(), paint(), *view()->looks(which));
    }
    view()->update3d();
}

void SimulationPage::showViews()
{
    m_stage->setViews(m_settings.views());
    repaintBuilding();
}

void SimulationPage::showLifts()
{
    if (!view() || !m_model)
        return;
    QVector<double> heights;
    for (const QString& floor : m_model->floors())
        heights.append(m_settings.floorHeight(floor));
    for (const BuildingScene::View which : views)
        spreadFloors(*m_model, heights, m_floors->spread(), *view()->looks(which));
    view()->update3d();
}

PictureContent SimulationPage::pictureContent() const
{
    PictureContent content;
    content.model = m_model;
    const TaskList& tasks = m_page->model()->tasks();
    for (int i = 0; i < tasks.size(); ++i)
        content.nodes.append(tasks.at(i).node);
    takeSettings(m_settings, content);
    content.spread = m_floors->spread();
    content.background = palette().color(QPalette::Base);
    content.title = m_page->plan().name;
    if (view()) {
        content.hasCamera = true;
        content.camera = view()->camera();
    }
    return content;
}

FrameExport::Sequence SimulationPage::sequence() const
{
    FrameExport::Sequence sequence;
    sequence.daysPerSecond = m_settings.set().DayForS;
    sequence.period = m_playback->clock().period();
    return sequence;
}
