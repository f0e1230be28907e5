#pragma once

#include "GanttPainter.h"

#include <QtCore/QTimer>
#include <QtWidgets/QAbstractScrollArea>

class QTreeView;

/// The Gantt chart beside a task tree, row by row in step with it. It shows the tree's expanded rows, scrolls
/// with it and shares its current task. Only what is visible is drawn, so that size costs nothing.
class GanttChart : public QAbstractScrollArea
{
    Q_OBJECT

public:
    /// @param tree shows @p model with rows of one height; all outlive the chart.
    GanttChart(QTreeView* tree, TaskModel* model, GanttRows* rows, QWidget* parent = nullptr);
    ~GanttChart() override;

    GanttPainter& painter() { return m_painter; }
    GanttScale& scale() { return m_scale; }

    void setColouring(GanttPainter::Colouring colouring);
    void setNow(const QDateTime& now);
    /// Another date for the line to mark; null for now again. As long as the line is in sight it stays so
    /// when it moves: the chart scrolls.
    void setMarkedDate(const QDateTime& date);

    void zoomIn() { zoomTo(m_scale.step() - 1, viewport()->width() / 2); }
    void zoomOut() { zoomTo(m_scale.step() + 1, viewport()->width() / 2); }
    /// Makes the whole plan fit into the visible width, or into that of a picture.
    void zoomToFit() { zoomToFit(viewport()->width()); }
    void zoomToFit(int width);
    /// Scrolls so that the date, the bar of the task or the line of today can be seen.
    void showDate(const QDateTime& date);
    void showTask(int position);

    /// The first planned or actual date and the last; a month from today when there is none.
    QPair<QDateTime, QDateTime> span() const;

    /// Takes the height of rows and header from the tree. Called by itself when the chart is resized.
    void followTree();

Q_SIGNALS:
    void zoomChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void zoomTo(int step, int anchor);
    void tasksChanged();
    void updateScrollBars();
    int positionAt(const QPoint& point) const;
    bool isInSight(const QDateTime& date) const;

    QTreeView* m_tree;
    TaskModel* m_model;
    GanttRows* m_rows;
    GanttScale m_scale;
    GanttPainter m_painter;
    QWidget* m_header;
    QTimer m_changes;
};
