#pragma once

#include <QtCore/QObject>
#include <QtCore/QVector>

class QTreeView;
class TaskModel;

/// Which tasks stand in which rows while a tree view shows some of them and hides others under collapsed
/// ones.
class GanttRows : public QObject
{
    Q_OBJECT

public:
    static constexpr int hidden = -1;

    /// @param tree shows @p model; both outlive this object.
    GanttRows(QTreeView* tree, TaskModel* model, QObject* parent = nullptr);

    int count() const { return order().size(); }
    /// The position of the task in a row; see TaskModel::positionOf().
    int positionAt(int row) const { return order().at(row); }
    /// The row of a task, or hidden.
    int rowOf(int position) const;

    /// To be called when the view expanded or collapsed tasks without a signal, as expandAll() does.
    void invalidate();

Q_SIGNALS:
    void changed();

private:
    const QVector<int>& order() const;

    QTreeView* m_tree;
    TaskModel* m_model;
    mutable QVector<int> m_order; // positions, by row
    mutable QVector<int> m_rows;  // rows, by position
    mutable bool m_isValid = false;
};
