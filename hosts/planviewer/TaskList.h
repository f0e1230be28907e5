#pragma once

#include <model/KvPlanNode.h>

#include <QtCore/QHash>
#include <QtCore/QVector>

/// The tasks of a plan with their places in its tree. A task keeps its position in this list as long as the
/// list lives: tasks are only added at the end and taken from there.
class TaskList
{
public:
    static constexpr int none = -1;
    /// Levels that are shown. What is deeper stands below the task of the last level: Qt's tree view descends
    /// by recursion and ends the program some ten thousand levels down.
    static constexpr int deepest = 500;

    struct Entry
    {
        KvPlanNode node; // without children
        int parent = none;
        int row = 0; // among its siblings
        QVector<int> children;
    };

    /// A predecessor link between two tasks of the list.
    struct Link
    {
        int from; // the predecessor
        int to;
        int type; // 0 finish-finish, 1 finish-start, 2 start-finish, 3 start-start
    };

    TaskList() = default;
    /// Takes a flat list, in any order. Positions are in reading order, a task before its subtasks. Tasks
    /// that name each other as parents in a circle stand at the top level, the first of each circle as the
    /// root.
    explicit TaskList(QList<KvPlanNode> nodes);

    int size() const { return m_entries.size(); }
    const Entry& at(int position) const { return m_entries.at(position); }
    KvPlanNode& node(int position) { return m_entries[position].node; }
    const QVector<int>& roots() const { return m_roots; }
    const QVector<int>& childrenOf(int position) const;
    const QVector<Link>& links() const { return m_links; }
    /// The position of the task with that number; none when there is no such task.
    int positionOf(int uniqueId) const { return m_positions.value(uniqueId, none); }

    /// Adds a task as the last child of @p parent. @return its position.
    int append(const KvPlanNode& node, int parent);
    /// Takes the last task of the list away again; it has no subtasks.
    void removeLast();

    /// The numbers for one more task.
    int nextUniqueId() const { return m_highestUniqueId + 1; }
    int nextPlanNodeId() const { return m_highestPlanNodeId + 1; }

private:
    void place(const KvPlanNode& node, int parent);

    QVector<Entry> m_entries;
    QVector<int> m_roots;
    QVector<Link> m_links;
    QHash<int, int> m_positions; // by uniqueId; the first in reading order
    int m_highestUniqueId = 0;
    int m_highestPlanNodeId = 0;
};
