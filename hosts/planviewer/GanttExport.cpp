#include "GanttExport.h"

#include "GanttChart.h"
#include "GanttRows.h"
#include "PlanPage.h"
#include "TaskModel.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtGui/QImage>
#include <QtGui/QPainter>
#include <QtGui/QPdfWriter>
#include <QtSvg/QSvgGenerator>
#include <QtWidgets/QTreeView>

namespace {

constexpr int headerHeight = 48;
constexpr int titleHeight = 34;
constexpr int indent = 14; // pixels a level
// A picture of more pixels than this is refused rather than left half painted.
constexpr qint64 largestPicture = 200LL * 1000 * 1000;

QString say(const char* text)
{
    return QCoreApplication::translate("GanttExport", text);
}

// By position; a task stands behind its parent.
QVector<int> levelsOf(const TaskList& tasks)
{
    QVector<int> levels(tasks.size(), 0);
    for (int i = 0; i < tasks.size(); ++i) {
        if (tasks.at(i).parent != TaskList::none)
            levels[i] = levels.at(tasks.at(i).parent) + 1;
    }
    return levels;
}

QFont boldFont(QFont font)
{
    font.setBold(true);
    return font;
}

int namesWidth(const PlanPage& page, const QVector<int>& levels)
{
    const QFontMetrics metrics(boldFont(page.chart()->font()));
    int width = 120;
    for (int row = 0; row < page.rows()->count(); ++row) {
        const int position = page.rows()->positionAt(row);
        width = qMax(width, indent * levels.at(position) + 32 +
                                metrics.horizontalAdvance(page.model()->tasks().at(position).node.name));
    }
    return qMin(width, 520);
}

// As wide as the time axis, and as the names at the right of the bars.
int chartWidth(const PlanPage& page)
{
    GanttChart& chart = *page.chart();
    const QFontMetrics metrics(chart.font());
    int width = chart.scale().width();
    for (int row = 0; row < page.rows()->count(); ++row) {
        const int position = page.rows()->positionAt(row);
        const double end =
            qMax(chart.painter().barOf(position).right(), chart.painter().actualBarOf(position).right());
        width = qMax(width,
                     int(end) + 30 + metrics.horizontalAdvance(page.model()->tasks().at(position).node.name));
    }
    return width;
}

void paint(QPainter* painter, const PlanPage& page, const QSize& size, int namesWidth,
           const QVector<int>& levels)
{
    GanttChart& chart = *page.chart();
    const QPalette palette = chart.palette();
    const QFont font = chart.font();
    const int rowHeight = chart.painter().rowHeight();
    painter->fillRect(QRect(QPoint(), size), palette.base());
    painter->setPen(palette.color(QPalette::Text));
    const QFont titleFont = boldFont(font);
    painter->setFont(titleFont);
    painter->drawText(QRect(10, 0, size.width() - 20, titleHeight), Qt::AlignVCenter, page.plan().name);

    const TaskList& tasks = page.model()->tasks();
    for (int row = 0; row < page.rows()->count(); ++row) {
        const int position = page.rows()->positionAt(row);
        const QRect cell(10 + indent * levels.at(position), titleHeight + headerHeight + row * rowHeight,
                         namesWidth - 20 - indent * levels.at(position), rowHeight);
        painter->setFont(tasks.at(position).children.isEmpty() ? font : titleFont);
        painter->setPen(palette.color(QPalette::Text));
        painter->drawText(
            cell, Qt::AlignVCenter,
            painter->fontMetrics().elidedText(tasks.at(position).node.name, Qt::ElideRight, cell.width()));
    }
    painter->setFont(font);
    const int width = size.width() - namesWidth;
    painter->save();
    painter->translate(namesWidth, titleHeight);
    painter->setClipRect(0, 0, width, headerHeight);
    chart.painter().paintHeader(painter, 0, width, headerHeight, &chart);
    painter->restore();
    painter->save();
    painter->translate(namesWidth, titleHeight + headerHeight);
    const QRectF body(0, 0, width, size.height() - titleHeight - headerHeight);
    painter->setClipRect(body);
    chart.painter().paintBody(painter, body, palette, font);
    painter->restore();
}

} // namespace

QString exportGantt(const PlanPage& page, const QString& path)
{
    GanttChart& chart = *page.chart();
    const QVector<int> levels = levelsOf(page.model()->tasks());
    const int names = namesWidth(page, levels);
    const QSize size(names + chartWidth(page),
                     titleHeight + headerHeight + page.rows()->count() * chart.painter().rowHeight());
    const QString kind = QFileInfo(path).suffix().toLower();
    if (kind != QLatin1String("png") && kind != QLatin1String("svg") && kind != QLatin1String("pdf"))
        return say(QT_TRANSLATE_NOOP("GanttExport", "A picture's name ends in .png, .svg or .pdf."));
    if (kind == QLatin1String("png") && qint64(size.width()) * size.height() > largestPicture)
        return say(QT_TRANSLATE_NOOP(
            "GanttExport", "The picture would be too large; zoom out, collapse tasks, or take SVG or PDF."));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    const int current = page.model()->positionOf(page.tree()->currentIndex());
    chart.painter().setCurrent(TaskList::none); // a mark on the screen is none on paper
    bool isPainted = true;
    QPainter painter;
    if (kind == QLatin1String("png")) {
        QImage image(size, QImage::Format_RGB32);
        isPainted = painter.begin(&image);
        paint(&painter, page, size, names, levels);
        painter.end();
        isPainted = isPainted && image.save(&file, "PNG");
    } else if (kind == QLatin1String("svg")) {
        QSvgGenerator svg;
        svg.setOutputDevice(&file);
        svg.setSize(size);
        svg.setViewBox(QRect(QPoint(), size));
        svg.setTitle(page.plan().name);
        isPainted = painter.begin(&svg);
        paint(&painter, page, size, names, levels);
        painter.end();
    } else {
        QPdfWriter pdf(&file);
        pdf.setTitle(page.plan().name);
        constexpr double pointsPerPixel = 0.75;
        pdf.setPageSize(
            QPageSize(QSizeF(size) * pointsPerPixel, QPageSize::Point, QString(), QPageSize::ExactMatch));
        pdf.setPageMargins(QMarginsF());
        pdf.setResolution(96);
        isPainted = painter.begin(&pdf);
        paint(&painter, page, size, names, levels);
        painter.end();
    }
    chart.painter().setCurrent(current);
    if (!isPainted)
        return say(
            QT_TRANSLATE_NOOP("GanttExport", "The picture could not be painted; it may be too large."));
    return file.commit() ? QString() : file.errorString();
}
