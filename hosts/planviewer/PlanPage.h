#pragma once

#include "GanttPainter.h"

#include <model/KvPlan.h>

#include <QtWidgets/QWidget>

class ColumnLayout;
class DetailsPanel;
class GanttChart;
class GanttRows;
class PlanClient;

class QTreeView;
class QUndoStack;
class TaskModel;
struct SaveList;

/// One plan: its task tree and Gantt chart side by side, and the details of the current task. Keeps what the
/// user edits until it is saved.
class PlanPage : public QWidget
{
    Q_OBJECT

public:
    explicit PlanPage(PlanClient* client, QWidget* parent = nullptr);
    ~PlanPage() override;

    /// Reads the tasks of a plan and shows them, in place of the plan that was shown. Edits are gone; ask
    /// before. @return false when they could not be read; the page then stays as it is.
    bool open(const KvPlan& plan);
    /// Reads the tasks anew; what is expanded and the current task stay. Edits are gone.
    bool reload();
    void close();
    const KvPlan& plan() const { return m_plan; }
    bool hasPlan() const { return !m_plan.id.isEmpty(); }

    /// Whether there is something to save.
    bool isEdited() const { return m_isEdited; }
    /// Shows what would be saved and, if the user agrees, saves it and reads what the service kept.
    /// @return false when nothing was saved, or not all.
    bool save();
    /// What of the last save the service kept otherwise than it was sent, one line each.
    QStringList lastDifferences() const { return m_lastDifferences; }

    /// Selects the next task whose name contains @p text, after the current one and around. @return whether
    /// there is one.
    bool find(const QString& text);
    void addTask(bool asSubtask);
    void reportProgress();

    void expandAll();
    /// Shows the first levels of the tree; 1 shows the top level alone.
    void expandLevels(int levels);
    void collapseAll();
    /// The day that states are told for and that the line marks.
    void setNow(const QDateTime& now);
    /// The date of the simulation, which the chart's line marks instead of the day above; that day again for
    /// a null one.
    void setPlaybackDate(const QDateTime& date);
    void setColouring(GanttPainter::Colouring colouring);
    void setEditable(bool isEditable, const QString& reason);
    bool hasCurrentTask() const;
    /// Empty when there is none, and for a task that is not saved yet.
    QString currentTaskId() const;
    void setPlanName(const QString& name);
    /// Selects tasks by their positions, the first of them being the current one, and shows it; none
    /// deselects.
    void selectTasks(const QVector<int>& positions);
    QVector<int> selectedTasks() const;

    TaskModel* model() const { return m_model; }
    QTreeView* tree() const { return m_tree; }
    GanttChart* chart() const { return m_chart; }
    GanttRows* rows() const { return m_rows; }
    ColumnLayout* columns() const { return m_columns; }
    QUndoStack* undoStack() const { return m_undoStack; }
    DetailsPanel* details() const { return m_details; }

Q_SIGNALS:
    void planChanged();
    void editedChanged(bool isEdited);
    void currentTaskChanged();
    /// Something the user should know, for the status bar.
    void told(const QString& text);

private:
    void showTasks(const QList<KvPlanNode>& nodes);
    void showAnew(const QList<KvPlanNode>& nodes);
    bool readKeepingEdits();
    void checkEdited();
    void showDetails();
    void compareKept(const SaveList& sent);
    void expandSome();

    PlanClient* m_client;
    KvPlan m_plan; // without its tasks
    QUndoStack* m_undoStack;
    TaskModel* m_model;
    QTreeView* m_tree;
    GanttRows* m_rows;
    GanttChart* m_chart;
    ColumnLayout* m_columns;
    DetailsPanel* m_details;
    QStringList m_lastDifferences;
    // What was sent and not read since: nothing is saved before that, or new tasks were made twice.
    bool m_isUnread = false;
    QList<KvPlanNode> m_unread; // the new tasks of it
    bool m_isEdited = false;
};
