#include "ColumnLayout.h"

#include "PlanClient.h"
#include "Preferences.h"
#include "TaskColumns.h"

#include <setting/KvPlanSetting.h>

#include <QtWidgets/QHeaderView>
#include <QtWidgets/QMenu>

namespace {

// Summary tasks are bold, and wider.
QFontMetrics boldMetrics(const QWidget* widget)
{
    QFont font = widget->font();
    font.setBold(true);
    return QFontMetrics(font);
}

} // namespace

ColumnLayout::ColumnLayout(QHeaderView* header, PlanClient* client, QObject* parent)
    : QObject(parent)
    , m_header(header)
    , m_client(client)
    , m_menu(new QMenu(header))
{
    m_menu->setTitle(tr("&Columns"));
    for (int column = 0; column < TaskColumn::Count; ++column) {
        QAction* const action = m_menu->addAction(TaskColumn::title(column));
        action->setCheckable(true);
        action->setChecked(true);
        action->setEnabled(column != TaskColumn::Name); // the tree itself
        m_actions.append(action);
        connect(action, &QAction::triggered, this,
                [this, column](bool isShown) { setColumnHidden(column, !isShown); });
        m_widths.insert(TaskColumn::key(column), TaskColumn::defaultWidth(column, boldMetrics(m_header)));
    }
    m_menu->addSeparator();
    connect(m_menu->addAction(tr("&Default columns")), &QAction::triggered, this,
            &ColumnLayout::resetToDefaults);
    m_later.setSingleShot(true);
    m_later.setInterval(200);
    connect(&m_later, &QTimer::timeout, this, &ColumnLayout::flush);

    header->setSectionsMovable(true);
    header->setFirstSectionMovable(false);
    header->setStretchLastSection(false);
    header->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(header, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& point) { m_menu->popup(m_header->viewport()->mapToGlobal(point)); });
    connect(header, &QHeaderView::sectionResized, this,
            [this](int column, int, int width) { resized(column, width); });
    connect(header, &QHeaderView::sectionMoved, this, [this] { m_later.start(); });
}

ColumnLayout::~ColumnLayout()
{
    if (m_later.isActive())
        flush();
}

void ColumnLayout::resized(int column, int width)
{
    // Hiding makes a column 0 wide; that is not its width.
    if (m_isApplying || width == 0 || m_header->isSectionHidden(column))
        return;
    m_widths.insert(TaskColumn::key(column), width);
    m_later.start();
}

void ColumnLayout::flush()
{
    m_later.stop();
    KvPlanSetting::instance()->SetGanttColumnWidth(m_widths);
    QStringList order;
    for (int visual = 0; visual < TaskColumn::Count; ++visual)
        order.append(TaskColumn::key(m_header->logicalIndex(visual)));
    Preferences::setColumnOrder(order);
}

void ColumnLayout::restore()
{
    KvPlanSetting::instance()->GetGanttColumnWidth(m_widths);
    m_isApplying = true;
    for (int column = 0; column < TaskColumn::Count; ++column)
        m_header->resizeSection(column, m_widths.value(TaskColumn::key(column)));
    int visual = 1; // the tree stays first
    const QStringList order = Preferences::columnOrder();
    for (const QString& key : order) {
        for (int column = 1; column < TaskColumn::Count; ++column) {
            if (TaskColumn::key(column) == key)
                m_header->moveSection(m_header->visualIndex(column), visual++);
        }
    }
    m_isApplying = false;
    m_later.stop();
}

void ColumnLayout::restoreHidden()
{
    QStringList hidden;
    if (m_client->readHiddenColumns(hidden))
        apply(hidden);
}

void ColumnLayout::apply(const QStringList& hiddenKeys)
{
    m_isApplying = true;
    for (int column = 0; column < TaskColumn::Count; ++column) {
        const bool isHidden = column != TaskColumn::Name && hiddenKeys.contains(TaskColumn::key(column));
        m_header->setSectionHidden(column, isHidden);
        if (!isHidden)
            m_header->resizeSection(column, m_widths.value(TaskColumn::key(column)));
        m_actions.at(column)->setChecked(!isHidden);
    }
    m_isApplying = false;
}

void ColumnLayout::setColumnHidden(int column, bool isHidden)
{
    QStringList hidden;
    for (int i = 0; i < TaskColumn::Count; ++i) {
        if (i == column ? isHidden : m_header->isSectionHidden(i))
            hidden.append(TaskColumn::key(i));
    }
    m_client->saveHiddenColumns(hidden);
    // As the service has it now: a choice that it did not take would be gone after the next start.
    apply(KvPlanSetting::instance()->GetGanttHideHeader());
}

void ColumnLayout::resetToDefaults()
{
    m_client->saveHiddenColumns({});
    for (int column = 0; column < TaskColumn::Count; ++column) {
        m_widths.insert(TaskColumn::key(column), TaskColumn::defaultWidth(column, boldMetrics(m_header)));
        m_header->moveSection(m_header->visualIndex(column), column);
    }
    apply(KvPlanSetting::instance()->GetGanttHideHeader());
    flush();
}
