#include "GanttChart.h"

#include "GanttRows.h"
#include "TaskModel.h"
#include "TaskText.h"

#include <QtGui/QHelpEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QToolTip>
#include <QtWidgets/QTreeView>

GanttChart::GanttChart(QTreeView* tree, TaskModel* model, GanttRows* rows, QWidget* parent)
    : QAbstractScrollArea(parent)
    , m_tree(tree)
    , m_model(model)
    , m_rows(rows)
    , m_painter(model, rows, &m_scale)
    , m_header(new QWidget(this))
{
    setAccessibleName(tr("Gantt chart"));
    setFocusPolicy(Qt::StrongFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_header->installEventFilter(this);
    connect(rows, &GanttRows::changed, this, &GanttChart::updateScrollBars);
    connect(model, &QAbstractItemModel::modelReset, this, &GanttChart::tasksChanged);
    m_changes.setSingleShot(true);
    m_changes.setInterval(0);
    connect(&m_changes, &QTimer::timeout, this, &GanttChart::tasksChanged);
    // An edit may change many tasks one by one, and each look at the span looks at all.
    connect(model, &QAbstractItemModel::dataChanged, &m_changes, QOverload<>::of(&QTimer::start));
    connect(tree->verticalScrollBar(), &QScrollBar::valueChanged, verticalScrollBar(), &QScrollBar::setValue);
    connect(tree->verticalScrollBar(), &QScrollBar::rangeChanged, this, &GanttChart::updateScrollBars);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, tree->verticalScrollBar(), &QScrollBar::setValue);
    connect(tree->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) {
                const int position = m_model->positionOf(current);
                m_painter.setCurrent(position);
                setAccessibleDescription(
                    position < 0 ? QString()
                                 : TaskText::toolTip(m_model->tasks().at(position).node, m_model->today()));
                viewport()->update();
            });
    connect(tree->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        QSet<int> selected;
        const QModelIndexList rowsOfTree = m_tree->selectionModel()->selectedRows();
        for (const QModelIndex& row : rowsOfTree)
            selected.insert(m_model->positionOf(row));
        m_painter.setSelected(selected);
        viewport()->update();
    });
    tasksChanged();
}

GanttChart::~GanttChart() = default;

QPair<QDateTime, QDateTime> GanttChart::span() const
{
    QDateTime from;
    QDateTime to;
    for (int i = 0; i < m_model->tasks().size(); ++i) {
        const KvPlanNode& node = m_model->tasks().at(i).node;
        for (const QDateTime* date :
             {&node.startDate, &node.finishDate, &node.actualStartDate, &node.actualFinishDate}) {
            if (!date->isValid())
                continue;
            if (!from.isValid() || *date < from)
                from = *date;
            if (!to.isValid() || *date > to)
                to = *date;
        }
    }
    if (!from.isValid()) {
        from = m_model->today().startOfDay();
        to = from.addDays(30);
    }
    return {from, to};
}

void GanttChart::tasksChanged()
{
    const auto [from, to] = span();
    // A moved first date must not move everything else on the screen.
    const QDateTime left = m_scale.dateAt(horizontalScrollBar()->value());
    m_scale.setSpan(from, to.addDays(30)); // the names of the last bars need room
    updateScrollBars();
    horizontalScrollBar()->setValue(qRound(m_scale.xOf(left)));
    viewport()->update();
    m_header->update();
}

void GanttChart::setColouring(GanttPainter::Colouring colouring)
{
    m_painter.setColouring(colouring);
    viewport()->update();
}

void GanttChart::setMarkedDate(const QDateTime& date)
{
    const bool wasInSight = isInSight(m_painter.markedDate());
    m_painter.setMarkedDate(date);
    viewport()->update();
    // Whoever looks elsewhere is left there.
    if (wasInSight && date.isValid() && !isInSight(date))
        showDate(date);
}

bool GanttChart::isInSight(const QDateTime& date) const
{
    const double x = date.isValid() ? m_scale.xOf(date) - horizontalScrollBar()->value() : -1.0;
    return x >= 0.0 && x < viewport()->width();
}

void GanttChart::setNow(const QDateTime& now)
{
    m_painter.setNow(now);
    viewport()->update();
}

void GanttChart::zoomTo(int step, int anchor)
{
    const QDateTime date = m_scale.dateAt(horizontalScrollBar()->value() + anchor);
    m_scale.setStep(step);
    updateScrollBars();
    horizontalScrollBar()->setValue(qRound(m_scale.xOf(date)) - anchor);
    viewport()->update();
    m_header->update();
    Q_EMIT zoomChanged();
}

void GanttChart::zoomToFit(int width)
{
    const auto [from, to] = span();
    zoomTo(GanttScale::stepFor(double(from.daysTo(to)) + 1, width), 0);
    horizontalScrollBar()->setValue(0);
}

void GanttChart::showDate(const QDateTime& date)
{
    horizontalScrollBar()->setValue(qRound(m_scale.xOf(date)) - viewport()->width() / 3);
}

void GanttChart::showTask(int position)
{
    const QRectF bar = m_painter.barOf(position);
    if (bar.isNull())
        return;
    const int left = horizontalScrollBar()->value();
    if (bar.left() < left || bar.left() > left + viewport()->width() - 40)
        horizontalScrollBar()->setValue(int(bar.left()) - 40);
}

void GanttChart::followTree()
{
    const int headerHeight = m_tree->header()->height();
    setViewportMargins(0, headerHeight, 0, 0);
    m_header->setGeometry(viewport()->x(), frameWidth(), viewport()->width(), headerHeight);
    const QModelIndex first = m_model->index(0, 0);
    const int height = first.isValid() ? m_tree->visualRect(first).height() : 0;
    if (height > 0)
        m_painter.setRowHeight(height);
    updateScrollBars();
}

void GanttChart::updateScrollBars()
{
    horizontalScrollBar()->setRange(0, qMax(0, m_scale.width() - viewport()->width()));
    horizontalScrollBar()->setPageStep(viewport()->width());
    horizontalScrollBar()->setSingleStep(20);
    verticalScrollBar()->setRange(m_tree->verticalScrollBar()->minimum(),
                                  m_tree->verticalScrollBar()->maximum());
    verticalScrollBar()->setPageStep(m_tree->verticalScrollBar()->pageStep());
    verticalScrollBar()->setSingleStep(m_painter.rowHeight());
    viewport()->update();
}

void GanttChart::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    const QPoint origin(horizontalScrollBar()->value(), verticalScrollBar()->value());
    painter.translate(-origin);
    painter.setClipRect(event->rect().translated(origin));
    m_painter.paintBody(&painter, event->rect().translated(origin), palette(), font());
}

bool GanttChart::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_header || event->type() != QEvent::Paint)
        return QAbstractScrollArea::eventFilter(watched, event);
    QPainter painter(m_header);
    m_painter.paintHeader(&painter, horizontalScrollBar()->value(), m_header->width(), m_header->height(),
                          m_header);
    return true;
}

void GanttChart::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    m_header->setGeometry(viewport()->x(), frameWidth(), viewport()->width(), m_tree->header()->height());
    updateScrollBars();
}

void GanttChart::scrollContentsBy(int, int)
{
    viewport()->update();
    m_header->update();
}

void GanttChart::wheelEvent(QWheelEvent* event)
{
    if (event->modifiers() & Qt::ControlModifier) {
        zoomTo(m_scale.step() + (event->angleDelta().y() > 0 ? -1 : 1), int(event->position().x()));
        event->accept();
        return;
    }
    QAbstractScrollArea::wheelEvent(event);
}

void GanttChart::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Left:
        horizontalScrollBar()->triggerAction(QScrollBar::SliderSingleStepSub);
        return;
    case Qt::Key_Right:
        horizontalScrollBar()->triggerAction(QScrollBar::SliderSingleStepAdd);
        return;
    case Qt::Key_Home:
        horizontalScrollBar()->setValue(0);
        return;
    case Qt::Key_End:
        horizontalScrollBar()->setValue(horizontalScrollBar()->maximum());
        return;
    case Qt::Key_Up:
    case Qt::Key_Down: {
        const int step = event->key() == Qt::Key_Up ? -1 : 1;
        const int row = m_rows->rowOf(m_model->positionOf(m_tree->currentIndex())) + step;
        if (row >= 0 && row < m_rows->count()) {
            m_tree->setCurrentIndex(m_model->indexOf(m_rows->positionAt(row)));
            showTask(m_rows->positionAt(row));
        }
        return;
    }
    default:
        QAbstractScrollArea::keyPressEvent(event);
    }
}

int GanttChart::positionAt(const QPoint& point) const
{
    const int row = (point.y() + verticalScrollBar()->value()) / m_painter.rowHeight();
    return row >= 0 && row < m_rows->count() ? m_rows->positionAt(row) : TaskList::none;
}

void GanttChart::mousePressEvent(QMouseEvent* event)
{
    const int position = positionAt(event->pos());
    if (event->button() == Qt::LeftButton && position != TaskList::none)
        m_tree->setCurrentIndex(m_model->indexOf(position));
}

bool GanttChart::viewportEvent(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QAbstractScrollArea::viewportEvent(event);
    auto* const help = static_cast<QHelpEvent*>(event);
    const int position = positionAt(help->pos());
    const QPointF place = help->pos() + QPoint(horizontalScrollBar()->value(), verticalScrollBar()->value());
    if (position != TaskList::none &&
        (m_painter.barOf(position).contains(place) || m_painter.actualBarOf(position).contains(place)))
        QToolTip::showText(help->globalPos(),
                           TaskText::toolTip(m_model->tasks().at(position).node, m_model->today()),
                           viewport());
    else
        QToolTip::hideText();
    return true;
}
