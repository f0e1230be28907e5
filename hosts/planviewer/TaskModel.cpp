#include "TaskModel.h"

#include "TaskColumns.h"
#include "TaskCommands.h"
#include "TaskEdit.h"
#include "TaskState.h"
#include "TaskText.h"

#include <KGanttGlobal>

#include <QtGui/QFont>
#include <QtWidgets/QUndoStack>

#include <algorithm>

TaskModel::TaskModel(QUndoStack* undoStack, QObject* parent)
    : QAbstractItemModel(parent)
    , m_undoStack(undoStack)
    , m_today(QDate::currentDate())
{
}

void TaskModel::setTasks(const QList<KvPlanNode>& nodes)
{
    TaskList tasks(nodes);
    beginResetModel();
    m_tasks = std::move(tasks);
    m_touched.clear();
    m_undoStack->clear();
    endResetModel();
}

int TaskModel::positionOf(const QModelIndex& index) const
{
    return index.isValid() ? int(index.internalId()) : TaskList::none;
}

QModelIndex TaskModel::indexOf(int position, int column) const
{
    return position < 0 || position >= m_tasks.size()
               ? QModelIndex()
               : createIndex(m_tasks.at(position).row, column, quintptr(position));
}

QList<KvPlanNode> TaskModel::touched() const
{
    QList<int> positions = m_touched.values();
    std::sort(positions.begin(), positions.end());
    QList<KvPlanNode> nodes;
    for (const int position : qAsConst(positions))
        nodes.append(m_tasks.at(position).node);
    return nodes;
}

void TaskModel::setEditable(bool isEditable, const QString& reason)
{
    m_isEditable = isEditable;
    m_lockReason = reason;
}

void TaskModel::setToday(const QDate& today)
{
    m_today = today;
    if (m_tasks.size() > 0)
        Q_EMIT dataChanged(indexOf(m_tasks.roots().first()),
                           indexOf(m_tasks.roots().last(), TaskColumn::Count - 1));
}

void TaskModel::addTask(int parent, const QString& name, const QString& planId)
{
    KvPlanNode node;
    node.name = name;
    node.planId = planId;
    node.uniqueId = m_tasks.nextUniqueId();
    node.planNodeId = m_tasks.nextPlanNodeId();
    QDate day = m_today;
    if (parent != TaskList::none) {
        const KvPlanNode& above = m_tasks.at(parent).node;
        node.parentTaskId = above.uniqueId;
        node.category = above.category;
        if (above.startDate.isValid())
            day = above.startDate.date();
    } else if (m_tasks.size() > 0) {
        node.category = m_tasks.at(0).node.category;
    }
    node.startDate = QDateTime(day, TaskEdit::morning());
    node.finishDate = QDateTime(day, TaskEdit::evening());
    m_undoStack->push(new AddTaskCommand(this, node, parent));
}

void TaskModel::editAgain(const QList<Edit>& edits, const QList<KvPlanNode>& additions)
{
    QHash<QString, int> positions;
    for (int i = 0; i < m_tasks.size(); ++i)
        positions.insert(m_tasks.at(i).node.id, i);
    QList<QUndoCommand*> commands;
    for (const Edit& edit : edits) {
        const int position = positions.value(edit.after.id, TaskList::none);
        if (position == TaskList::none)
            continue;
        KvPlanNode node = m_tasks.at(position).node;
        if (TaskEdit::transfer(edit.before, edit.after, node))
            commands.append(new EditTaskCommand(this, position, node, TaskColumn::Name));
    }
    if (commands.isEmpty() && additions.isEmpty())
        return; // an empty edit could be undone
    m_undoStack->beginMacro(tr("what was not saved"));
    for (QUndoCommand* const command : qAsConst(commands))
        m_undoStack->push(command);
    QHash<int, int> renumbered; // others may have used the numbers meanwhile
    for (KvPlanNode node : additions) {
        node.parentTaskId = renumbered.value(node.parentTaskId, node.parentTaskId);
        if (m_tasks.positionOf(node.uniqueId) != TaskList::none) {
            renumbered.insert(node.uniqueId, m_tasks.nextUniqueId());
            node.uniqueId = m_tasks.nextUniqueId();
        }
        node.planNodeId = m_tasks.nextPlanNodeId();
        const int parent = node.parentTaskId > 0 ? m_tasks.positionOf(node.parentTaskId) : TaskList::none;
        m_undoStack->push(new AddTaskCommand(this, node, parent));
    }
    m_undoStack->endMacro();
}

bool TaskModel::isMilestone(int position) const
{
    const TaskList::Entry& entry = m_tasks.at(position);
    return entry.children.isEmpty() && entry.node.startDate.isValid() &&
           entry.node.startDate == entry.node.finishDate;
}

QModelIndex TaskModel::index(int row, int column, const QModelIndex& parent) const
{
    if (column < 0 || column >= TaskColumn::Count || row < 0 || (parent.isValid() && parent.column() != 0))
        return {};
    const QVector<int>& siblings = m_tasks.childrenOf(positionOf(parent));
    return row < siblings.size() ? createIndex(row, column, quintptr(siblings.at(row))) : QModelIndex();
}

QModelIndex TaskModel::parent(const QModelIndex& index) const
{
    return index.isValid() ? indexOf(m_tasks.at(positionOf(index)).parent) : QModelIndex();
}

int TaskModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() && parent.column() != 0 ? 0 : m_tasks.childrenOf(positionOf(parent)).size();
}

int TaskModel::columnCount(const QModelIndex&) const
{
    return TaskColumn::Count;
}

QVariant TaskModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const int position = positionOf(index);
    const TaskList::Entry& entry = m_tasks.at(position);
    switch (role) {
    case Qt::DisplayRole:
        return displayText(position, index.column());
    case Qt::EditRole:
        return editValue(position, index.column());
    case Qt::ToolTipRole:
        return toolTip(position, index.column());
    case Qt::TextAlignmentRole:
        if (index.column() == TaskColumn::Progress || index.column() == TaskColumn::PlanWorkload ||
            index.column() == TaskColumn::ActualWorkload)
            return int(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    case Qt::FontRole:
        if (!entry.children.isEmpty()) {
            QFont font;
            font.setBold(true);
            return font;
        }
        return {};
    case KGantt::StartTimeRole:
        return entry.node.startDate;
    case KGantt::EndTimeRole:
        return entry.node.finishDate;
    case KGantt::TaskCompletionRole:
        return qBound(0.0, entry.node.finishedPercentage, 100.0);
    case KGantt::ItemTypeRole:
        if (!entry.children.isEmpty())
            return int(KGantt::TypeSummary);
        return int(isMilestone(position) ? KGantt::TypeEvent : KGantt::TypeTask);
    default:
        return {};
    }
}

QString TaskModel::displayText(int position, int column) const
{
    const KvPlanNode& node = m_tasks.at(position).node;
    switch (column) {
    case TaskColumn::Name:
        return TaskText::label(node.name);
    case TaskColumn::Start:
        return TaskText::date(node.startDate);
    case TaskColumn::Finish:
        return TaskText::date(node.finishDate);
    case TaskColumn::Progress:
        return TaskText::percent(node.finishedPercentage);
    case TaskColumn::ActualStart:
        return TaskText::date(node.actualStartDate);
    case TaskColumn::ActualFinish:
        return TaskText::date(node.actualFinishDate);
    case TaskColumn::State:
        return taskStateText(taskState(node, m_today));
    case TaskColumn::Predecessors:
        return TaskText::predecessors(m_tasks, position);
    case TaskColumn::People:
        return node.userIds.join(QStringLiteral(", "));
    case TaskColumn::PlanWorkload:
        return TaskText::count(node.planWorkload);
    case TaskColumn::ActualWorkload:
        return TaskText::count(node.actualWorkload);
    default:
        return {};
    }
}

QVariant TaskModel::editValue(int position, int column) const
{
    if (column == TaskColumn::Progress)
        return qBound(0, qRound(m_tasks.at(position).node.finishedPercentage), 100);
    return column == TaskColumn::Name ? m_tasks.at(position).node.name : displayText(position, column);
}

QString TaskModel::toolTip(int position, int column) const
{
    if (TaskEdit::isEditableColumn(column)) {
        if (!m_isEditable)
            return m_lockReason;
        if (!m_tasks.at(position).children.isEmpty() && column != TaskColumn::Name)
            return tr("A summary task follows its subtasks.");
    }
    return TaskText::toolTip(m_tasks.at(position).node, m_today);
}

QVariant TaskModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 &&
        section < TaskColumn::Count)
        return TaskColumn::title(section);
    return QAbstractItemModel::headerData(section, orientation, role);
}

Qt::ItemFlags TaskModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags flags = QAbstractItemModel::flags(index);
    if (index.isValid() && m_isEditable && TaskEdit::isEditableColumn(index.column()) &&
        (index.column() == TaskColumn::Name || m_tasks.at(positionOf(index)).children.isEmpty()))
        flags |= Qt::ItemIsEditable;
    return flags;
}

bool TaskModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::EditRole || !(flags(index) & Qt::ItemIsEditable) ||
        value == editValue(positionOf(index), index.column()))
        return false;
    const int position = positionOf(index);
    KvPlanNode edited = m_tasks.at(position).node;
    const QString fault = TaskEdit::apply(edited, index.column(), value);
    if (!fault.isEmpty()) {
        Q_EMIT rejected(fault);
        return false;
    }
    m_undoStack->push(new EditTaskCommand(this, position, edited, index.column()));
    return true;
}

void TaskModel::replace(int position, const KvPlanNode& node)
{
    m_tasks.node(position) = node;
    m_touched.insert(position);
    Q_EMIT dataChanged(indexOf(position), indexOf(position, TaskColumn::Count - 1));
}

int TaskModel::append(const KvPlanNode& node, int parent)
{
    const int row = m_tasks.childrenOf(parent).size();
    beginInsertRows(indexOf(parent), row, row);
    const int position = m_tasks.append(node, parent);
    m_touched.insert(position);
    endInsertRows();
    return position;
}

void TaskModel::removeLast()
{
    const int position = m_tasks.size() - 1;
    const TaskList::Entry& last = m_tasks.at(position);
    const int row = last.row;
    beginRemoveRows(indexOf(last.parent), row, row);
    m_tasks.removeLast();
    m_touched.remove(position);
    endRemoveRows();
}
