#include "GanttScale.h"

#include <QtCore/QtMath>

namespace {

using Formatter = KGantt::DateTimeScaleFormatter;

struct Step
{
    double dayWidth; // pixels
    Formatter::Range lower;
    const char* lowerFormat;
    Formatter::Range upper;
    const char* upperFormat;
};

constexpr Step steps[] = {
    {720, Formatter::Hour, "HH", Formatter::Day, "yyyy-MM-dd"},
    {360, Formatter::Hour, "H", Formatter::Day, "yyyy-MM-dd"},
    {96, Formatter::Day, "MM-dd", Formatter::Month, "yyyy-MM"},
    {48, Formatter::Day, "dd", Formatter::Month, "yyyy-MM"},
    {24, Formatter::Day, "d", Formatter::Month, "yyyy-MM"},
    {12, Formatter::Week, "MM-dd", Formatter::Month, "yyyy-MM"},
    {7, Formatter::Week, "dd", Formatter::Month, "yyyy-MM"},
    {3, Formatter::Month, "MM", Formatter::Year, "yyyy"},
    {1.5, Formatter::Month, "MM", Formatter::Year, "yyyy"},
    {0.8, Formatter::Month, "M", Formatter::Year, "yyyy"},
    {0.3, Formatter::Year, "yyyy", Formatter::Year, ""},
    {0.12, Formatter::Year, "yyyy", Formatter::Year, ""},
};

constexpr int margin = 60; // pixels before the first and after the last date

constexpr double widestAxis = 1e9; // pixels; what scroll bars count still

QDateTime beginOf(Formatter::Range unit, const QDateTime& moment)
{
    const QDate day = moment.date();
    switch (unit) {
    case Formatter::Hour:
        return QDateTime(day, QTime(moment.time().hour(), 0));
    case Formatter::Week:
        return day.addDays(1 - day.dayOfWeek()).startOfDay();
    case Formatter::Month:
        return QDate(day.year(), day.month(), 1).startOfDay();
    case Formatter::Year:
        return QDate(day.year(), 1, 1).startOfDay();
    default:
        return day.startOfDay();
    }
}

Formatter* formatter(Formatter::Range range, const char* format)
{
    return new Formatter(range, QString::fromLatin1(format));
}

} // namespace

GanttScale::GanttScale()
    : m_grid(std::make_unique<KGantt::DateTimeGrid>())
    , m_from(QDate::currentDate().startOfDay())
    , m_to(m_from.addDays(30))
{
    m_grid->setScale(KGantt::DateTimeGrid::ScaleUserDefined);
    m_grid->setRowSeparators(false);
    m_grid->setFreeDays({Qt::Saturday, Qt::Sunday});
    setStep(4);
}

GanttScale::~GanttScale() = default;

int GanttScale::stepCount()
{
    return int(std::size(steps));
}

void GanttScale::setStep(int step)
{
    step = qBound(finestStep(), step, stepCount() - 1);
    if (step == m_step)
        return;
    m_step = step;
    const Step& chosen = steps[step];
    const QSignalBlocker blocker(m_grid.get());
    m_grid->setUserDefinedLowerScale(formatter(chosen.lower, chosen.lowerFormat)); // the grid takes them
    m_grid->setUserDefinedUpperScale(formatter(chosen.upper, chosen.upperFormat));
    // Stripes of weekends are noise when a day is narrow.
    m_grid->setFreeDays(chosen.dayWidth < 6 ? QSet<Qt::DayOfWeek>()
                                            : QSet<Qt::DayOfWeek>{Qt::Saturday, Qt::Sunday});
    m_grid->setDayWidth(chosen.dayWidth);
    setSpan(m_from, m_to);
}

int GanttScale::stepFor(double days, int width)
{
    for (int step = 0; step < stepCount(); ++step) {
        if (days * steps[step].dayWidth <= width - 2 * margin)
            return step;
    }
    return stepCount() - 1;
}

void GanttScale::setSpan(const QDateTime& from, const QDateTime& to)
{
    m_from = from;
    m_to = to;
    if (m_step < finestStep()) {
        setStep(finestStep());
        return;
    }
    const double marginDays = margin / steps[m_step].dayWidth;
    // A whole unit, so that the header's first text has room.
    m_grid->setStartDateTime(beginOf(steps[m_step].lower, from.addSecs(-qint64(marginDays * 86400))));
}

int GanttScale::finestStep() const
{
    int step = 0;
    while (step < stepCount() - 1 && double(m_from.daysTo(m_to)) * steps[step].dayWidth > widestAxis)
        ++step;
    return step;
}

int GanttScale::width() const
{
    return qCeil(m_grid->mapFromDateTime(m_to)) + margin;
}
