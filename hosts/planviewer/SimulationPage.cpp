#include "SimulationPage.h"

#include "GanttChart.h"
#include "PlanPage.h"
#include "TaskModel.h"

#include <FloorHeightsPanel.h>
#include <GraphicsCheck.h>
#include <PlaybackBar.h>
#include <SimulationGaps.h>
#include <SimulationView.h>
#include <TimeLineSetPanel.h>

#include <QtCore/QItemSelectionModel>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QStackedWidget>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QTreeView>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>

namespace {

constexpr BuildingScene::View views[] = {BuildingScene::Planned, BuildingScene::Actual};

bool shows(SimulationViews which, BuildingScene::View view)
{
    return which == SimulationViews::Both ||
           (which == SimulationViews::Planned) == (view == BuildingScene::Planned);
}

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
    , m_stage(new QStackedWidget)
    , m_message(new QLabel)
    , m_busy(new QProgressBar)
    , m_cancel(new QPushButton(tr("&Cancel")))
    , m_titles{new QLabel(tr("Planned")), new QLabel(tr("Actual"))}
    , m_playback(new PlaybackBar)
    , m_panel(new TimeLineSetPanel(&m_settings))
    , m_floors(new FloorHeightsPanel(&m_settings))
    , m_gaps(new SimulationGapsPanel)
{
    setObjectName(QStringLiteral("simulationPage"));
    buildMessage();
    auto* const titles = new QHBoxLayout;
    for (QLabel* const title : m_titles) {
        title->setAlignment(Qt::AlignCenter);
        titles->addWidget(title);
    }
    auto* const left = new QWidget;
    auto* const column = new QVBoxLayout(left);
    column->setContentsMargins(0, 0, 0, 0);
    column->addLayout(titles);
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
    connect(page->tree()->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &SimulationPage::highlightTasks);

    connect(&m_reader, &ModelReader::done, this, &SimulationPage::takeModel);
    connect(&m_reader, &ModelReader::failed, this, [this](const QString& fault) {
        dropModel();
        showMessage(fault, false);
    });
    connect(&m_reader, &ModelReader::canceled, this, [this] {
        dropModel();
        showMessage(tr("Reading the model was canceled."), false);
    });
    connect(m_cancel, &QPushButton::clicked, &m_reader, &ModelReader::cancel);
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
        if (m_view)
            m_view->fit();
    });
    connect(m_gaps, &SimulationGapsPanel::taskActivated, this,
            [this](int task) { m_page->selectTasks({task}); });
    connect(m_gaps, &SimulationGapsPanel::elementActivated, this, &SimulationPage::goToElement);
    showViews();
    takePlan();
}

// The scene first, as long as there is the window that it draws on.
SimulationPage::~SimulationPage()
{
    delete m_view;
}

void SimulationPage::buildMessage()
{
    m_message->setObjectName(QStringLiteral("simulationMessage"));
    m_message->setAlignment(Qt::AlignCenter);
    m_message->setWordWrap(true);
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_busy->setRange(0, 0);
    m_busy->setMaximumWidth(240);
    m_busy->setAccessibleName(tr("Reading the model"));
    m_cancel->setObjectName(QStringLiteral("cancelModel"));
    auto* const instead = new QWidget;
    auto* const column = new QVBoxLayout(instead);
    column->addStretch();
    column->addWidget(m_message);
    column->addWidget(m_busy, 0, Qt::AlignCenter);
    column->addWidget(m_cancel, 0, Qt::AlignCenter);
    column->addStretch();
    m_stage->addWidget(instead);
}

QString SimulationPage::message() const
{
    return m_stage->currentIndex() == 0 ? m_message->text() : QString();
}

void SimulationPage::showMessage(const QString& text, bool isBusy)
{
    m_message->setText(text);
    m_busy->setVisible(isBusy);
    m_cancel->setVisible(isBusy);
    m_stage->setCurrentIndex(0);
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

void SimulationPage::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        showBackground();
}

void SimulationPage::showBackground()
{
    if (m_view)
        m_view->setBackground(palette().color(QPalette::Base));
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
        showMessage(GraphicsCheck::fault(), false);
    else if (id.isEmpty())
        showMessage(tr("Open a plan first."), false);
    else if (m_settings.modelFile().isEmpty())
        showMessage(tr("Choose the file with the model of the building: Simulation, Open a model…"), false);
    else
        openModel(m_settings.modelFile());
}

void SimulationPage::openModel(const QString& path)
{
    if (!GraphicsCheck::fault().isEmpty()) {
        showMessage(GraphicsCheck::fault(), false);
        return;
    }
    m_planId = m_page->plan().id;
    dropModel();
    showMessage(tr("Reading the model %1 …").arg(path), true);
    m_reader.read(path);
}

void SimulationPage::dropModel()
{
    m_model.reset();
    for (SimulatedBuilding& building : m_building)
        building.setModel(nullptr);
    m_highlighted.clear();
    if (m_view)
        m_view->setModel(nullptr);
    m_floors->setFloors({});
    m_gaps->model()->setPlan({}, {}, {});
    Q_EMIT changed();
}

void SimulationPage::takeModel(const ModelData& read)
{
    m_settings.setModelFile(m_reader.path());
    m_known = linkedElements(nodes());
    m_model = std::make_shared<const BuildingModel>(read, m_known);
    if (!m_view) {
        m_view = new SimulationView;
        m_view->setObjectName(QStringLiteral("simulationView"));
        m_stage->addWidget(m_view);
        connect(m_view, &SimulationView::elementClicked, this, &SimulationPage::selectElement);
        showBackground();
    }
    m_stage->setCurrentWidget(m_view);
    m_view->setModel(m_model);
    m_floors->setFloors(m_model->floors());
    showViews();
    showLifts();
    takeTasks();
    m_view->fit();
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
            const SceneCamera camera = m_view->camera();
            m_view->setModel(m_model);
            m_view->setCamera(camera);
            m_highlighted.clear();
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
    highlightTasks();
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
    if (!m_view || !m_model)
        return;
    for (const BuildingScene::View view : views) {
        if (m_view->isShown(view))
            m_building[view].show(m_playback->date(), paint(), *m_view->looks(view));
    }
    m_view->update3d();
}

void SimulationPage::showViews()
{
    for (const BuildingScene::View view : views)
        m_titles[view]->setVisible(shows(m_settings.views(), view));
    if (!m_view)
        return;
    m_view->setViews(shows(m_settings.views(), BuildingScene::Planned),
                     shows(m_settings.views(), BuildingScene::Actual));
    repaintBuilding();
}

QVector<double> SimulationPage::floorHeights() const
{
    QVector<double> heights;
    if (m_model) {
        for (const QString& floor : m_model->floors())
            heights.append(m_settings.floorHeight(floor));
    }
    return heights;
}

void SimulationPage::showLifts()
{
    if (!m_view || !m_model)
        return;
    for (const BuildingScene::View view : views)
        spreadFloors(*m_model, floorHeights(), m_floors->spread(), *m_view->looks(view));
    m_view->update3d();
}

// Its tasks become the selected ones, the first of them the current one.
void SimulationPage::selectElement(int element, bool isAdding)
{
    QVector<int> tasks;
    if (element != BuildingModel::none)
        tasks = m_building[BuildingScene::Planned].tasksOf(element);
    if (isAdding)
        tasks = m_page->selectedTasks() + tasks;
    m_page->selectTasks(tasks);
    if (element != BuildingModel::none) {
        const QString& id = m_model->elements().at(element).id;
        Q_EMIT told(tasks.isEmpty() ? tr("Element %1: no task names it.").arg(id) : tr("Element %1").arg(id));
    }
}

// Elements of the selected tasks and of all below them. The whole building, as of the topmost task, has
// nothing that it would stand out from.
void SimulationPage::highlightTasks()
{
    if (!m_view || !m_model || m_isStale)
        return;
    const TaskList& tasks = m_page->model()->tasks();
    QVector<int> open = m_page->selectedTasks();
    QVector<bool> isSeen(tasks.size(), false);
    QVector<int> elements;
    while (!open.isEmpty()) {
        const int task = open.takeLast();
        if (isSeen.at(task))
            continue;
        isSeen[task] = true;
        elements += m_building[BuildingScene::Planned].elementsOf(task);
        open += tasks.at(task).children;
    }
    std::sort(elements.begin(), elements.end());
    elements.erase(std::unique(elements.begin(), elements.end()), elements.end());
    if (elements.size() == m_namedCount)
        elements.clear();
    for (const BuildingScene::View view : views) {
        ElementLooks& looks = *m_view->looks(view);
        for (const int element : qAsConst(m_highlighted))
            looks.setHighlighted(element, false);
        for (const int element : qAsConst(elements))
            looks.setHighlighted(element, true);
    }
    m_highlighted = elements;
    m_view->update3d();
}

void SimulationPage::goToElement(const QString& id)
{
    const int element = m_model ? m_model->elementOf(id) : int(BuildingModel::none);
    if (element == BuildingModel::none || !m_view)
        return;
    selectElement(element, false);
    for (const BuildingScene::View view : views) {
        ElementLooks& looks = *m_view->looks(view);
        for (const int before : qAsConst(m_highlighted))
            looks.setHighlighted(before, false);
        looks.setHighlighted(element, true);
    }
    m_highlighted = {element};
    m_view->update3d();
}

PictureContent SimulationPage::pictureContent() const
{
    PictureContent content;
    content.model = m_model;
    const TaskList& tasks = m_page->model()->tasks();
    for (int i = 0; i < tasks.size(); ++i)
        content.nodes.append(tasks.at(i).node);
    content.paint = paint();
    content.share = m_settings.share();
    content.views = m_settings.views();
    content.floorHeights = floorHeights();
    content.spread = m_floors->spread();
    content.background = palette().color(QPalette::Base);
    content.title = m_page->plan().name;
    if (m_view) {
        content.hasCamera = true;
        content.camera = m_view->camera();
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
