#include "BarChart.h"

#include <QtGui/QPainter>

#include <numeric>

int BarChart::Bar::total() const
{
    return std::accumulate(parts.begin(), parts.end(), 0,
                           [](int sum, const Part& part) { return sum + part.count; });
}

BarChart::BarChart(const QString& title, QWidget* parent)
    : QWidget(parent)
    , m_title(title)
{
    setAccessibleName(title);
}

void BarChart::setBars(const QVector<Bar>& bars)
{
    m_bars = bars;
    QStringList spoken;
    for (const Bar& bar : bars) {
        QStringList parts;
        for (const Part& part : bar.parts) {
            if (!part.name.isEmpty())
                parts.append(QStringLiteral("%1 %2").arg(part.name).arg(part.count));
        }
        spoken.append(
            QStringLiteral("%1 %2").arg(bar.caption).arg(bar.total()) +
            (parts.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(parts.join(QStringLiteral(", ")))));
    }
    setAccessibleDescription(spoken.join(QStringLiteral("; ")));
    setToolTip(accessibleDescription());
    update();
}

QSize BarChart::minimumSizeHint() const
{
    return {320, 220};
}

int BarChart::paintLegend(QPainter& painter, int top) const
{
    QStringList shown;
    int x = 8;
    const int height = fontMetrics().height();
    for (const Bar& bar : m_bars) {
        for (const Part& part : bar.parts) {
            if (part.name.isEmpty() || shown.contains(part.name))
                continue;
            shown.append(part.name);
            painter.fillRect(x, top + 3, height - 6, height - 6, part.colour);
            painter.drawText(x + height, top + fontMetrics().ascent(), part.name);
            x += height + fontMetrics().horizontalAdvance(part.name) + 16;
        }
    }
    return shown.isEmpty() ? top : top + height + 6;
}

void BarChart::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().base());
    painter.setPen(palette().color(QPalette::Text));
    QFont bold = font();
    bold.setBold(true);
    painter.setFont(bold);
    painter.drawText(8, 6 + fontMetrics().ascent(), m_title);
    painter.setFont(font());
    const int line = fontMetrics().height();
    const int top = paintLegend(painter, line + 12) + line + 4;
    const int bottom = height() - line - 10;
    if (m_bars.isEmpty()) {
        painter.drawText(rect(), Qt::AlignCenter, tr("Nothing to count yet"));
        return;
    }
    int highest = 1;
    int widestCaption = 0;
    for (const Bar& bar : m_bars) {
        highest = qMax(highest, bar.total());
        widestCaption = qMax(widestCaption, fontMetrics().horizontalAdvance(bar.caption));
    }
    const double step = (width() - 16.0) / m_bars.size();
    const int everyCaption = qMax(1, int((widestCaption + 10) / step) + 1); // as many as have room
    for (int i = 0; i < m_bars.size(); ++i) {
        const Bar& bar = m_bars.at(i);
        const double x = 8 + step * i;
        const double barWidth = qMin(step * 0.7, 70.0);
        double y = bottom;
        for (const Part& part : bar.parts) {
            const double height = double(bottom - top) * part.count / highest;
            y -= height;
            painter.fillRect(QRectF(x + (step - barWidth) / 2, y, barWidth, height), part.colour);
        }
        const QString number = QString::number(bar.total());
        if (fontMetrics().horizontalAdvance(number) <= step)
            painter.drawText(QRectF(x, y - line - 2, step, line), Qt::AlignHCenter, number);
        if (i % everyCaption == 0)
            painter.drawText(QRectF(x, bottom + 4, step * everyCaption, line),
                             everyCaption == 1 ? Qt::AlignHCenter : Qt::AlignLeft, bar.caption);
    }
    painter.drawLine(8, bottom, width() - 8, bottom);
}
