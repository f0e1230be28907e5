#pragma once

#include "GanttScale.h"

#include <KGanttItemDelegate>

#include <QtCore/QDate>
#include <QtGui/QColor>
#include <QtGui/QFont>
#include <QtGui/QPalette>

class GanttRows;
class TaskModel;

/// Draws a plan's bars, milestones and arrows, on a widget, a picture or a page alike, with KGantt's grid and
/// item delegate. What lies outside the exposed part costs next to nothing.
class GanttPainter
{
public:
    enum class Colouring
    {
        ByState, ///< the seven colours of the simulation
        ByPlan
    };

    /// @param rows may be null until there are some; all outlive the painter.
    GanttPainter(const TaskModel* model, const GanttRows* rows, GanttScale* scale);

    void setRowHeight(int pixels) { m_rowHeight = pixels; }
    int rowHeight() const { return m_rowHeight; }
    void setColouring(Colouring colouring) { m_colouring = colouring; }
    Colouring colouring() const { return m_colouring; }
    void setPlanColour(const QColor& colour) { m_planColour = colour; }
    /// By state, from 0.
    void setStateColours(const QList<QColor>& colours) { m_stateColours = colours; }
    /// The moment of the vertical line.
    void setNow(const QDateTime& now) { m_now = now; }
    void setMarkedDate(const QDateTime& date) { m_marked = date; }
    /// Null while the line marks now.
    const QDateTime& markedDate() const { return m_marked; }
    /// The task whose row is marked; -1: none.
    void setCurrent(int position) { m_current = position; }
    /// Tasks whose rows are marked beside it.
    void setSelected(const QSet<int>& positions) { m_selected = positions; }
    const QSet<int>& selected() const { return m_selected; }

    /// @p exposed in pixels of the whole chart, whose origin is the painter's.
    void paintBody(QPainter* painter, const QRectF& exposed, const QPalette& palette, const QFont& font);
    /// The two lines of the time axis, @p width pixels from @p offset on.
    void paintHeader(QPainter* painter, int offset, int width, int height, QWidget* widget);

    /// What stands beside the bar of a task.
    QString labelOf(int position) const;
    /// Where the bar of a task is planned, in pixels of the whole chart; null for a hidden or dateless task.
    QRectF barOf(int position) const;
    /// The same for what was really done, up to now.
    QRectF actualBarOf(int position) const;

private:
    void paintRows(QPainter* painter, const QRectF& exposed, const QPalette& palette, int first, int last);
    void paintItem(QPainter* painter, int position, const QPalette& palette, const QFont& font);
    void paintLinks(QPainter* painter, const QRectF& exposed, const QPalette& palette, int first, int last);
    QColor colourOf(int position) const;

    const TaskModel* m_model;
    const GanttRows* m_rows;
    GanttScale* m_scale;
    KGantt::ItemDelegate m_delegate;
    QDateTime m_now;
    QDateTime m_marked; // by the line, instead of now
    QColor m_planColour;
    QList<QColor> m_stateColours;
    Colouring m_colouring = Colouring::ByState;
    int m_rowHeight = 26;
    int m_current = -1;
    QSet<int> m_selected;
};
