#include "GanttExport.h"

#include "GanttChart.h"
#include "GanttRows.h"
#include "PlanPage.h"
#include "TaskModel.h"
#include "TaskText.h"

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
                                metrics.horizontalAdvance(
                                    TaskText::label(page.model()->tasks().at(position).node.name)));
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
        width = qMax(width, int(end) + 30 + metrics.horizontalAdvance(chart.painter().labelOf(position)));
    }
    return width;
}

// The whole picture: the plan's name, the time axis, then the rows with the tasks' names at the left.
struct Sheet
{
    const PlanPage& page;
    QVector<int> levels;
    int names = 0; // width of the tasks' names
    QSize size;

    explicit Sheet(const PlanPage& shown)
        : page(shown)
        , levels(levelsOf(shown.model()->tasks()))
        , names(namesWidth(shown, levels))
        , size(names + chartWidth(shown), top + shown.rows()->count() * rowHeight())
    {
    }

    static constexpr int top = titleHeight + headerHeight;
    int rowHeight() const { return page.chart()->painter().rowHeight(); }

    // Paints what stands above the rows.
    void paintTop(QPainter* painter) const
    {
        GanttChart& chart = *page.chart();
        painter->fillRect(QRect(0, 0, size.width(), top), chart.palette().base());
        painter->setPen(chart.palette().color(QPalette::Text));
        painter->setFont(boldFont(chart.font()));
        painter->drawText(QRect(10, 0, size.width() - 20, titleHeight), Qt::AlignVCenter,
                          TaskText::label(page.plan().name));
        painter->setFont(chart.font());
        painter->save();
        painter->translate(names, titleHeight);
        painter->setClipRect(0, 0, size.width() - names, headerHeight);
        chart.painter().paintHeader(painter, 0, size.width() - names, headerHeight, &chart);
        painter->restore();
    }

    // Paints rows from @p first on, the first of them at the painter's origin.
    void paintRows(QPainter* painter, int first, int count) const
    {
        GanttChart& chart = *page.chart();
        const QPalette palette = chart.palette();
        const TaskList& tasks = page.model()->tasks();
        const int height = count * rowHeight();
        painter->fillRect(QRect(0, 0, names, height), palette.base());
        for (int row = first; row < first + count; ++row) {
            const int position = page.rows()->positionAt(row);
            const int left = 10 + indent * levels.at(position);
            const QRect cell(left, (row - first) * rowHeight(), names - 10 - left, rowHeight());
            painter->setFont(tasks.at(position).children.isEmpty() ? chart.font() : boldFont(chart.font()));
            painter->setPen(palette.color(QPalette::Text));
            painter->drawText(cell, Qt::AlignVCenter,
                              painter->fontMetrics().elidedText(TaskText::label(tasks.at(position).node.name),
                                                                Qt::ElideRight, cell.width()));
        }
        painter->setFont(chart.font());
        painter->save();
        painter->translate(names, -first * rowHeight());
        const QRectF body(0, first * rowHeight(), size.width() - names, height);
        painter->setClipRect(body);
        chart.painter().paintBody(painter, body, palette, chart.font());
        painter->restore();
    }

    void paint(QPainter* painter) const
    {
        paintTop(painter);
        painter->translate(0, top);
        paintRows(painter, 0, page.rows()->count());
    }
};

// Qt paints no pixel beyond 32,767, so a larger picture is painted part by part.
bool paintPicture(const Sheet& sheet, QSaveFile& file)
{
    constexpr int part = 16384;
    constexpr int bytes = 4; // a pixel
    QImage image(sheet.size, QImage::Format_RGB32);
    if (image.isNull())
        return false;
    image.fill(sheet.page.chart()->palette().color(QPalette::Base));
    const int rowHeight = sheet.rowHeight();
    for (int x = 0; x < image.width(); x += part) {
        for (int y = 0; y < image.height(); y += part) {
            const int height = qMin(part, image.height() - y);
            QImage piece(image.scanLine(y) + qptrdiff(x) * bytes, qMin(part, image.width() - x), height,
                         image.bytesPerLine(), image.format());
            QPainter painter;
            if (!painter.begin(&piece))
                return false;
            painter.translate(-x, -y);
            sheet.paintTop(&painter);
            const int first = qBound(0, (y - Sheet::top) / rowHeight, sheet.page.rows()->count());
            const int last = qMin((y + height - Sheet::top) / rowHeight, sheet.page.rows()->count() - 1);
            painter.translate(0, Sheet::top + first * rowHeight);
            if (last >= first)
                sheet.paintRows(&painter, first, last - first + 1);
        }
    }
    return image.save(&file, "PNG");
}

bool paintDrawing(const Sheet& sheet, QSaveFile& file)
{
    QSvgGenerator svg;
    svg.setOutputDevice(&file);
    svg.setSize(sheet.size);
    svg.setViewBox(QRect(QPoint(), sheet.size));
    svg.setTitle(sheet.page.plan().name);
    QPainter painter;
    if (!painter.begin(&svg))
        return false;
    sheet.paint(&painter);
    return true;
}

// One page when that is not larger than readers of PDF take. Else pages of the shape of paper, each with the
// time axis; what is too wide is made smaller.
bool paintDocument(const Sheet& sheet, QSaveFile& file)
{
    constexpr double pointsPerPixel = 0.75;
    constexpr double largestPage = 14400; // points
    const int count = sheet.page.rows()->count();
    const double scale = qMin(1.0, largestPage / pointsPerPixel / sheet.size.width());
    int rows = qMax(1, count);
    if (sheet.size.height() * scale * pointsPerPixel > largestPage) {
        constexpr double paperShape = 1.414;
        rows = qMax(20, (int(sheet.size.width() / paperShape) - Sheet::top) / sheet.rowHeight());
    }
    const QSizeF size(sheet.size.width() * scale,
                      (Sheet::top + qMin(rows, count) * sheet.rowHeight()) * scale);
    QPdfWriter pdf(&file);
    pdf.setTitle(sheet.page.plan().name);
    pdf.setPageSize(QPageSize(size * pointsPerPixel, QPageSize::Point, QString(), QPageSize::ExactMatch));
    pdf.setPageMargins(QMarginsF());
    pdf.setResolution(96);
    QPainter painter;
    if (!painter.begin(&pdf))
        return false;
    for (int first = 0; first == 0 || first < count; first += rows) {
        if (first > 0 && !pdf.newPage())
            return false;
        painter.save();
        painter.scale(scale, scale);
        sheet.paintTop(&painter);
        painter.translate(0, Sheet::top);
        sheet.paintRows(&painter, first, qMin(rows, count - first));
        painter.restore();
    }
    return true;
}

} // namespace

QString exportGantt(const PlanPage& page, const QString& path)
{
    const Sheet sheet(page);
    const QString kind = QFileInfo(path).suffix().toLower();
    if (kind != QLatin1String("png") && kind != QLatin1String("svg") && kind != QLatin1String("pdf"))
        return say(QT_TRANSLATE_NOOP("GanttExport", "A picture's name ends in .png, .svg or .pdf."));
    if (kind == QLatin1String("png") && qint64(sheet.size.width()) * sheet.size.height() > largestPicture)
        return say(QT_TRANSLATE_NOOP(
            "GanttExport", "The picture would be too large; zoom out, collapse tasks, or take SVG or PDF."));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    GanttPainter& painter = page.chart()->painter();
    const int current = page.model()->positionOf(page.tree()->currentIndex());
    const QSet<int> selected = painter.selected();
    painter.setSelected({});
    painter.setCurrent(TaskList::none); // a mark on the screen is none on paper
    const bool isPainted = kind == QLatin1String("png")   ? paintPicture(sheet, file)
                           : kind == QLatin1String("svg") ? paintDrawing(sheet, file)
                                                          : paintDocument(sheet, file);
    painter.setCurrent(current);
    painter.setSelected(selected);
    if (!isPainted)
        return say(
            QT_TRANSLATE_NOOP("GanttExport", "The picture could not be painted; it may be too large."));
    return file.commit() ? QString() : file.errorString();
}
