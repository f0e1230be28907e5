#pragma once

#include <KGanttDateTimeGrid>

#include <memory>

/// The time axis: how wide a day is, and what its header says. From hours to years in steps.
class GanttScale
{
public:
    GanttScale();
    ~GanttScale();

    /// Steps from the finest, hours, to the coarsest, years.
    static int stepCount();
    int step() const { return m_step; }
    void setStep(int step);
    /// The finest step in which @p days fit into @p width pixels; the coarsest when they fit in none.
    static int stepFor(double days, int width);

    /// The first and the last moment that the axis has to reach.
    void setSpan(const QDateTime& from, const QDateTime& to);

    /// Pixels from the start of the axis.
    double xOf(const QDateTime& date) const { return m_grid->mapFromDateTime(date); }
    QDateTime dateAt(double x) const { return m_grid->mapToDateTime(x); }
    /// The width of the whole axis.
    int width() const;

    KGantt::DateTimeGrid& grid() { return *m_grid; }

private:
    int finestStep() const;

    std::unique_ptr<KGantt::DateTimeGrid> m_grid;
    QDateTime m_from;
    QDateTime m_to;
    int m_step = -1;
};
