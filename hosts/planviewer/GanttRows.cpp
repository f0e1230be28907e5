#include "GanttRows.h"

#include "TaskModel.h"

#include <QtWidgets/QTreeView>

GanttRows::GanttRows(QTreeView* tree, TaskModel* model, QObject* parent)
    : QObject(parent)
    , m_tree(tree)
    , m_model(model)
{
    connect(tree, &QTreeView::expanded, this, &GanttRows::invalidate);
    connect(tree, &QTreeView::collapsed, this, &GanttRows::invalidate);
    connect(model, &QAbstractItemModel::modelReset, this, &GanttRows::invalidate);
    connect(model, &QAbstractItemModel::rowsInserted, this, &GanttRows::invalidate);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &GanttRows::invalidate);
}

int GanttRows::rowOf(int position) const
{
    order();
    return position >= 0 && position < m_rows.size() ? m_rows.at(position) : hidden;
}

void GanttRows::invalidate()
{
    m_isValid = false;
    Q_EMIT changed();
}

const QVector<int>& GanttRows::order() const
{
    if (m_isValid)
        return m_order;
    m_isValid = true;
    const TaskList& tasks = m_model->tasks();
    m_order.clear();
    m_order.reserve(tasks.size());
    m_rows.fill(hidden, tasks.size());
    struct Place
    {
        const QVector<int>* siblings;
        int next;
    };
    QVector<Place> path{{&tasks.roots(), 0}};
    while (!path.isEmpty()) {
        Place& place = path.last();
        if (place.next == place.siblings->size()) {
            path.removeLast();
            continue;
        }
        const int position = place.siblings->at(place.next++);
        m_rows[position] = m_order.size();
        m_order.append(position);
        const QVector<int>& children = tasks.at(position).children;
        if (!children.isEmpty() && m_tree->isExpanded(m_model->indexOf(position)))
            path.append({&children, 0});
    }
    return m_order;
}
