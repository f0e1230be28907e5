#include "GanttPainter.h"

#include "GanttRows.h"
#include "TaskModel.h"
#include "TaskState.h"
#include "TaskText.h"

#include <setting/KvPlanSetting.h>

#include <KGanttConstraint>
#include <KGanttStyleOptionGanttItem>

#include <QtGui/QPainter>

namespace {

// Parts of a row's height.
constexpr double barTop = 0.18;
constexpr double barHeight = 0.44;
constexpr double actualTop = 0.70;
constexpr double actualHeight = 0.14;
constexpr double shortestBar = 3; // pixels

KGantt::Constraint::RelationType relationOf(int linkType)
{
    switch (linkType) {
    case 0:
        return KGantt::Constraint::FinishFinish;
    case 2:
        return KGantt::Constraint::StartFinish;
    case 3:
        return KGantt::Constraint::StartStart;
    default:
        return KGantt::Constraint::FinishStart;
    }
}

bool isFromStart(int linkType)
{
    return linkType == 2 || linkType == 3;
}

bool isToStart(int linkType)
{
    return linkType != 0 && linkType != 2;
}

} // namespace

GanttPainter::GanttPainter(const TaskModel* model, const GanttRows* rows, GanttScale* scale)
    : m_model(model)
    , m_rows(rows)
    , m_scale(scale)
    , m_now(QDateTime::currentDateTime())
    , m_planColour(Qt::darkCyan)
    , m_stateColours(KvPlanSetting::instance()->GetSimulateColor())
{
}

QColor GanttPainter::colourOf(int position) const
{
    if (m_colouring == Colouring::ByPlan)
        return m_planColour;
    return m_stateColours.value(taskState(m_model->tasks().at(position).node, m_model->today()),
                                m_planColour);
}

QString GanttPainter::labelOf(int position) const
{
    constexpr int cells = 60; // a longer name would cover the chart
    return TaskText::label(m_model->tasks().at(position).node.name, cells);
}

QRectF GanttPainter::barOf(int position) const
{
    const int row = m_rows->rowOf(position);
    const KvPlanNode& node = m_model->tasks().at(position).node;
    if (row == GanttRows::hidden || !node.startDate.isValid() || !node.finishDate.isValid())
        return {};
    const double left = m_scale->xOf(node.startDate);
    const double width = qMax(shortestBar, m_scale->xOf(node.finishDate) - left);
    const QRectF bar(left, (row + barTop) * m_rowHeight, width, barHeight * m_rowHeight);
    if (!m_model->isMilestone(position))
        return bar;
    const double half = bar.height() / 2; // the diamond stands around its moment
    return QRectF(left - half, bar.top(), 2 * half, 2 * half);
}

QRectF GanttPainter::actualBarOf(int position) const
{
    const int row = m_rows->rowOf(position);
    const KvPlanNode& node = m_model->tasks().at(position).node;
    if (row == GanttRows::hidden || !node.actualStartDate.isValid())
        return {};
    const QDateTime end = node.actualFinishDate.isValid() ? node.actualFinishDate : m_now;
    const double left = m_scale->xOf(node.actualStartDate);
    return QRectF(left, (row + actualTop) * m_rowHeight, qMax(shortestBar, m_scale->xOf(end) - left),
                  actualHeight * m_rowHeight);
}

void GanttPainter::paintBody(QPainter* painter, const QRectF& exposed, const QPalette& palette,
                             const QFont& font)
{
    painter->save();
    painter->setFont(font);
    painter->setRenderHint(QPainter::Antialiasing);
    const int first = qMax(0, int(exposed.top()) / m_rowHeight);
    const int last = qMin(m_rows->count() - 1, int(exposed.bottom()) / m_rowHeight);
    paintRows(painter, exposed, palette, first, last);
    paintLinks(painter, exposed, palette, first, last);
    painter->setPen(QPen(QColor(0xd0, 0x30, 0x30), 1.5));
    const double today = m_scale->xOf(m_marked.isValid() ? m_marked : m_now);
    painter->drawLine(QPointF(today, exposed.top()), QPointF(today, exposed.bottom()));
    for (int row = first; row <= last; ++row)
        paintItem(painter, m_rows->positionAt(row), palette, font);
    painter->restore();
}

void GanttPainter::paintRows(QPainter* painter, const QRectF& exposed, const QPalette& palette, int first,
                             int last)
{
    painter->fillRect(exposed, palette.base());
    QColor stripe = palette.color(QPalette::Text);
    stripe.setAlphaF(0.06);
    m_scale->grid().setFreeDaysBrush(stripe);
    painter->setPen(Qt::NoPen);
    m_scale->grid().paintGrid(painter, exposed, exposed);
    QColor line = palette.color(QPalette::Text);
    line.setAlphaF(0.10);
    QColor marked = palette.color(QPalette::Highlight);
    marked.setAlphaF(0.22);
    for (int row = first; row <= last; ++row) {
        const int position = m_rows->positionAt(row);
        if (position == m_current || m_selected.contains(position))
            painter->fillRect(QRectF(exposed.left(), row * m_rowHeight, exposed.width(), m_rowHeight),
                              marked);
        const double bottom = (row + 1) * m_rowHeight - 0.5;
        painter->setPen(line);
        painter->drawLine(QPointF(exposed.left(), bottom), QPointF(exposed.right(), bottom));
    }
}

void GanttPainter::paintItem(QPainter* painter, int position, const QPalette& palette, const QFont& font)
{
    const QRectF bar = barOf(position);
    const QRectF actual = actualBarOf(position);
    if (!actual.isNull()) {
        QColor colour = palette.color(QPalette::Text);
        colour.setAlphaF(0.55);
        painter->fillRect(actual, colour);
    }
    if (bar.isNull())
        return;
    const QModelIndex index = m_model->indexOf(position);
    const QColor colour = colourOf(position);
    const auto type = static_cast<KGantt::ItemType>(m_model->data(index, KGantt::ItemTypeRole).toInt());
    m_delegate.setDefaultBrush(type, type == KGantt::TypeSummary ? palette.color(QPalette::Text) : colour);
    m_delegate.setDefaultPen(
        type, QPen(type == KGantt::TypeSummary ? palette.color(QPalette::Text) : colour.darker(160)));
    KGantt::StyleOptionGanttItem option;
    option.palette = palette;
    option.font = font;
    option.fontMetrics = QFontMetrics(font);
    option.grid = &m_scale->grid();
    option.itemRect = bar;
    option.displayPosition = KGantt::StyleOptionGanttItem::Hidden;
    option.boundingRect = bar;
    option.rect = bar.toAlignedRect();
    m_delegate.paintGanttItem(painter, option, index);
    // The name, on a ground that keeps arrows out of it.
    const QString name = labelOf(position);
    const double end = qMax(bar.right(), actual.isNull() ? 0.0 : actual.right());
    const QRectF label(end + 8, m_rows->rowOf(position) * m_rowHeight + 2.0,
                       option.fontMetrics.horizontalAdvance(name) + 6, m_rowHeight - 4.0);
    if (position != m_current) {
        QColor ground = palette.color(QPalette::Base);
        ground.setAlphaF(0.8);
        painter->fillRect(label, ground);
    }
    painter->setPen(palette.color(QPalette::Text));
    painter->drawText(label, Qt::AlignCenter, name);
}

void GanttPainter::paintLinks(QPainter* painter, const QRectF& exposed, const QPalette& palette, int first,
                              int last)
{
    QColor colour = palette.color(QPalette::Text);
    colour.setAlphaF(0.5);
    const KGantt::Constraint::DataMap pens{
        {KGantt::Constraint::ValidConstraintPen, QPen(colour)},
        {KGantt::Constraint::InvalidConstraintPen, QPen(QColor(0xd0, 0x60, 0x20))}};
    QStyleOptionGraphicsItem option;
    option.palette = palette;
    for (const TaskList::Link& link : m_model->tasks().links()) {
        const int from = m_rows->rowOf(link.from);
        const int to = m_rows->rowOf(link.to);
        if (from == GanttRows::hidden || to == GanttRows::hidden || qMax(from, to) < first ||
            qMin(from, to) > last)
            continue;
        const QRectF source = barOf(link.from);
        const QRectF target = barOf(link.to);
        if (source.isNull() || target.isNull())
            continue;
        const QPointF start(isFromStart(link.type) ? source.left() : source.right(), source.center().y());
        const QPointF end(isToStart(link.type) ? target.left() : target.right(), target.center().y());
        constexpr double detour = 30; // pixels that an arrow goes around its bars
        if (qMax(start.x(), end.x()) + detour < exposed.left() ||
            qMin(start.x(), end.x()) - detour > exposed.right())
            continue;
        const KGantt::Constraint constraint(m_model->indexOf(link.from), m_model->indexOf(link.to),
                                            KGantt::Constraint::TypeSoft, relationOf(link.type), pens);
        m_delegate.paintConstraintItem(painter, option, start, end, constraint);
    }
}

void GanttPainter::paintHeader(QPainter* painter, int offset, int width, int height, QWidget* widget)
{
    const QRectF rect(0, 0, width, height);
    m_scale->grid().paintHeader(painter, rect, rect, offset, widget);
}
