#include "PlanPage.h"

#include "ColumnLayout.h"
#include "DetailsPanel.h"
#include "GanttChart.h"
#include "GanttRows.h"
#include "PlanClient.h"
#include "ReportDialog.h"
#include "SaveDialog.h"
#include "TaskColumns.h"
#include "TaskDelegate.h"
#include "TaskModel.h"
#include "TaskText.h"

#include <setting/KvPlanSetting.h>

#include <QtCore/QHash>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QTreeView>
#include <QtWidgets/QUndoStack>

namespace {

// A large plan opens with few rows, so that a person sees its parts first.
constexpr int rowsAtFirst = 2000;

} // namespace

PlanPage::PlanPage(PlanClient* client, QWidget* parent)
    : QWidget(parent)
    , m_client(client)
    , m_undoStack(new QUndoStack(this))
    , m_model(new TaskModel(m_undoStack, this))
    , m_tree(new QTreeView)
    , m_details(new DetailsPanel)
{
    m_tree->setObjectName(QStringLiteral("taskTree"));
    m_tree->setAccessibleName(tr("Tasks"));
    m_tree->setUniformRowHeights(true);
    m_tree->setItemDelegate(new TaskDelegate(m_tree));
    m_tree->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_tree->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_tree->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_tree->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // the chart has one for both
    m_tree->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    m_tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_tree->setModel(m_model);
    // The chart's header beside it has two lines.
    m_tree->header()->setFixedHeight(2 * m_tree->fontMetrics().height() + 14);
    m_rows = new GanttRows(m_tree, m_model, this);
    m_chart = new GanttChart(m_tree, m_model, m_rows);
    m_chart->setObjectName(QStringLiteral("ganttChart"));
    m_columns = new ColumnLayout(m_tree->header(), client, this);
    m_columns->restore();

    auto* const splitter = new QSplitter;
    splitter->addWidget(m_tree);
    splitter->addWidget(m_chart);
    splitter->addWidget(m_details);
    splitter->setStretchFactor(0, 4);
    splitter->setStretchFactor(1, 5);
    splitter->setStretchFactor(2, 2);
    splitter->setChildrenCollapsible(true);
    // Whole columns, up to the progress.
    int columns = 2 * m_tree->frameWidth() + 12; // the splitter rounds
    for (const int column : {TaskColumn::Name, TaskColumn::Start, TaskColumn::Finish, TaskColumn::Progress})
        columns += m_tree->header()->sectionSize(column);
    splitter->setSizes({columns, 1180 - columns, 210});
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(splitter);

    connect(m_undoStack, &QUndoStack::indexChanged, this, &PlanPage::checkEdited);
    connect(m_model, &TaskModel::rejected, this, &PlanPage::told);
    connect(m_model, &QAbstractItemModel::dataChanged, this, [this](const QModelIndex& changed) {
        if (changed.internalId() == m_tree->currentIndex().internalId())
            showDetails();
    });
    connect(m_tree->selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this] {
        showDetails();
        Q_EMIT currentTaskChanged();
    });
    connect(m_tree, &QAbstractItemView::clicked, this,
            [this](const QModelIndex& index) { m_chart->showTask(m_model->positionOf(index)); });
    connect(m_details, &DetailsPanel::responsesWanted, this, [this] {
        const int position = m_model->positionOf(m_tree->currentIndex());
        QList<KvPlanNodeResponse> responses;
        if (position != TaskList::none &&
            m_client->readResponses(m_model->tasks().at(position).node.id, responses))
            m_details->showResponses(responses);
    });
}

PlanPage::~PlanPage()
{
    disconnect(m_undoStack, nullptr, this,
               nullptr); // it tells of being emptied when the page is no page any more
}

bool PlanPage::open(const KvPlan& plan)
{
    QList<KvPlanNode> nodes;
    if (!m_client->readNodes(plan.id, nodes))
        return false;
    m_plan = plan;
    m_plan.planNodes.clear();
    m_chart->painter().setPlanColour(KvPlanSetting::instance()->GetPlanColor(plan.id));
    showTasks(nodes);
    expandSome();
    m_chart->followTree();
    m_chart->zoomToFit();
    if (m_model->rowCount() > 0)
        m_tree->setCurrentIndex(m_model->index(0, 0));
    Q_EMIT planChanged();
    return true;
}

void PlanPage::close()
{
    m_plan = KvPlan();
    showTasks({});
    Q_EMIT planChanged();
}

bool PlanPage::reload()
{
    QList<KvPlanNode> nodes;
    if (!hasPlan() || !m_client->readNodes(m_plan.id, nodes))
        return false;
    showAnew(nodes);
    return true;
}

void PlanPage::showAnew(const QList<KvPlanNode>& nodes)
{
    QSet<QString> expanded;
    for (int i = 0; i < m_model->tasks().size(); ++i) {
        if (m_tree->isExpanded(m_model->indexOf(i)))
            expanded.insert(m_model->tasks().at(i).node.id);
    }
    const int current = m_model->positionOf(m_tree->currentIndex());
    const QString currentId = current == TaskList::none ? QString() : m_model->tasks().at(current).node.id;
    const int top = m_tree->verticalScrollBar()->value();
    showTasks(nodes);
    int currentNow = TaskList::none;
    for (int i = 0; i < m_model->tasks().size(); ++i) {
        const QString& id = m_model->tasks().at(i).node.id;
        if (expanded.contains(id))
            m_tree->expand(m_model->indexOf(i));
        if (id == currentId && !id.isEmpty())
            currentNow = i;
    }
    // Only now: the tree lays its rows out for it, and each expansion after that would move them all.
    m_tree->setCurrentIndex(m_model->indexOf(currentNow));
    m_tree->verticalScrollBar()->setValue(top);
}

bool PlanPage::readKeepingEdits()
{
    QList<TaskModel::Edit> edits;
    QList<KvPlanNode> unsaved;
    QHash<int, KvPlanNode> sent; // by uniqueId
    for (const KvPlanNode& node : qAsConst(m_unread))
        sent.insert(node.uniqueId, node);
    const QList<KvPlanNode> touched = m_model->touched();
    for (const KvPlanNode& node : touched) {
        if (node.id.isEmpty())
            unsaved.append(node);
        else
            edits.append({m_client->asRead({node}).first(), node});
    }
    QList<KvPlanNode> nodes;
    if (!m_client->readNodes(m_plan.id, nodes))
        return false;
    showAnew(nodes);
    QList<KvPlanNode> additions;
    for (KvPlanNode& node : unsaved) {
        const auto before = sent.constFind(node.uniqueId);
        const int position =
            before == sent.constEnd() ? TaskList::none : m_model->tasks().positionOf(node.uniqueId);
        if (position == TaskList::none || m_model->tasks().at(position).node.name != before->name) {
            additions.append(node);
            continue;
        }
        node.id = m_model->tasks().at(position).node.id;
        edits.append({*before, node});
    }
    m_model->editAgain(edits, additions);
    return true;
}

void PlanPage::showTasks(const QList<KvPlanNode>& nodes)
{
    m_isUnread = false;
    m_unread.clear();
    m_model->setTasks(nodes);
    checkEdited();
    showDetails();
    Q_EMIT currentTaskChanged();
}

// Level by level, as long as there are not too many rows.
void PlanPage::expandSome()
{
    const TaskList& tasks = m_model->tasks();
    QVector<int> level = tasks.roots();
    int rows = level.size();
    while (!level.isEmpty()) {
        QVector<int> below;
        for (const int position : qAsConst(level))
            below += tasks.at(position).children;
        rows += below.size();
        if (rows > rowsAtFirst)
            break;
        for (const int position : qAsConst(level)) {
            if (!tasks.at(position).children.isEmpty())
                m_tree->setExpanded(m_model->indexOf(position), true);
        }
        level = below;
    }
    m_rows->invalidate();
}

void PlanPage::expandLevels(int levels)
{
    m_tree->collapseAll();
    if (levels > 1)
        m_tree->expandToDepth(levels - 2);
    m_rows->invalidate(); // neither tells anybody
}

void PlanPage::expandAll()
{
    m_tree->expandAll();
    m_rows->invalidate(); // it tells nobody
}

void PlanPage::collapseAll()
{
    m_tree->collapseAll();
    m_rows->invalidate();
}

void PlanPage::checkEdited()
{
    const bool isEdited = m_client->hasChanged(m_model->touched());
    if (isEdited == m_isEdited)
        return;
    m_isEdited = isEdited;
    Q_EMIT editedChanged(isEdited);
}

void PlanPage::showDetails()
{
    const int position = m_model->positionOf(m_tree->currentIndex());
    if (position == TaskList::none)
        m_details->showNothing();
    else
        m_details->showTask(m_model->tasks(), position, m_model->today());
}

bool PlanPage::save()
{
    if (m_isUnread && !readKeepingEdits())
        return false;
    const SaveList list = m_client->changes(m_model->touched());
    if (list.isEmpty())
        return true;
    SaveDialog dialog(list, m_client->asRead(list.toUpdate), this);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    const PlanClient::Saved saved = m_client->saveNodes(m_plan.id, list);
    if (saved == PlanClient::Saved::Nothing)
        return false;
    m_isUnread = true;
    m_unread = list.toCreate;
    if (saved == PlanClient::Saved::Unknown)
        return false; // it was told; the next save looks first what is there
    if (saved == PlanClient::Saved::Created) {
        readKeepingEdits();
        return false;
    }
    if (!reload()) {
        Q_EMIT told(tr("Saved, but what the service keeps could not be read. Save again to read it."));
        return false;
    }
    compareKept(list);
    return true;
}

void PlanPage::compareKept(const SaveList& sent)
{
    m_lastDifferences.clear();
    QHash<QString, int> byId;
    for (int i = 0; i < m_model->tasks().size(); ++i)
        byId.insert(m_model->tasks().at(i).node.id, i);
    const auto compare = [&](const KvPlanNode& task, int position) {
        if (position == TaskList::none)
            m_lastDifferences.append(tr("\"%1\" is not in the plan.").arg(TaskText::label(task.name, 60)));
        else
            for (const QString& difference : taskDifferences(task, m_model->tasks().at(position).node))
                m_lastDifferences.append(
                    QStringLiteral("%1: %2").arg(TaskText::label(task.name, 60), difference));
    };
    for (const KvPlanNode& task : sent.toCreate)
        compare(task, m_model->tasks().positionOf(task.uniqueId));
    for (const KvPlanNode& task : sent.toUpdate)
        compare(task, byId.value(task.id, TaskList::none));
    const QString counts =
        tr("Saved: %1 created, %2 updated.").arg(sent.toCreate.size()).arg(sent.toUpdate.size());
    if (m_lastDifferences.isEmpty()) {
        Q_EMIT told(counts + QLatin1Char(' ') + tr("The service keeps them as they were sent."));
        return;
    }
    Q_EMIT told(counts);
    QMessageBox box(QMessageBox::Information, tr("Kept otherwise"),
                    tr("The service keeps some tasks otherwise than they were sent."), QMessageBox::NoButton,
                    this);
    box.setInformativeText(TaskText::plain(m_lastDifferences.mid(0, 12).join(QLatin1Char('\n'))));
    box.addButton(tr("&Close"), QMessageBox::AcceptRole);
    box.exec();
}

bool PlanPage::find(const QString& text)
{
    const int count = m_model->tasks().size();
    const int current = m_model->positionOf(m_tree->currentIndex());
    for (int step = 1; step <= count; ++step) {
        const int position = (current + step + count) % count;
        if (!m_model->tasks().at(position).node.name.contains(text, Qt::CaseInsensitive))
            continue;
        const QModelIndex index = m_model->indexOf(position);
        m_tree->setCurrentIndex(index);
        m_tree->scrollTo(index);
        m_chart->showTask(position);
        return true;
    }
    return false;
}

void PlanPage::addTask(bool asSubtask)
{
    const int current = m_model->positionOf(m_tree->currentIndex());
    const int parent = current == TaskList::none || asSubtask ? current : m_model->tasks().at(current).parent;
    m_model->addTask(parent, tr("New task"), m_plan.id);
    const QModelIndex index = m_model->indexOf(m_model->tasks().size() - 1);
    m_tree->expand(index.parent());
    m_tree->setCurrentIndex(index);
    m_tree->edit(index);
}

void PlanPage::reportProgress()
{
    const int position = m_model->positionOf(m_tree->currentIndex());
    if (position == TaskList::none)
        return;
    const KvPlanNode task = m_model->tasks().at(position).node;
    ReportDialog dialog(task, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    KvPlanNodeResponse response = dialog.response();
    if (!m_client->reportProgress(task.id, response) || !reload())
        return;
    QList<KvPlanNodeResponse> responses;
    if (m_client->readResponses(task.id, responses))
        m_details->showResponses(responses);
    Q_EMIT told(tr("Reported on \"%1\".").arg(TaskText::label(task.name, 60)));
}

void PlanPage::setNow(const QDateTime& now)
{
    m_model->setToday(now.date());
    m_chart->setNow(now);
    showDetails();
}

void PlanPage::setPlaybackDate(const QDateTime& date)
{
    m_chart->setMarkedDate(date);
}

void PlanPage::selectTasks(const QVector<int>& positions)
{
    QItemSelectionModel& selection = *m_tree->selectionModel();
    if (positions.isEmpty()) {
        selection.clear();
        return;
    }
    QItemSelection tasks;
    for (const int position : positions) {
        const QModelIndex index = m_model->indexOf(position);
        tasks.select(index, index);
    }
    const QModelIndex first = m_model->indexOf(positions.first());
    selection.setCurrentIndex(first, QItemSelectionModel::NoUpdate);
    selection.select(tasks, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_tree->scrollTo(first);
    m_chart->showTask(positions.first());
}

QVector<int> PlanPage::selectedTasks() const
{
    QVector<int> positions;
    const QModelIndexList rows = m_tree->selectionModel()->selectedRows();
    for (const QModelIndex& row : rows)
        positions.append(m_model->positionOf(row));
    return positions;
}

void PlanPage::setColouring(GanttPainter::Colouring colouring)
{
    m_chart->setColouring(colouring);
}

void PlanPage::setEditable(bool isEditable, const QString& reason)
{
    m_model->setEditable(isEditable, reason);
}

bool PlanPage::hasCurrentTask() const
{
    return m_tree->currentIndex().isValid();
}

QString PlanPage::currentTaskId() const
{
    const int position = m_model->positionOf(m_tree->currentIndex());
    return position == TaskList::none ? QString() : m_model->tasks().at(position).node.id;
}

void PlanPage::setPlanName(const QString& name)
{
    m_plan.name = name;
    Q_EMIT planChanged();
}
