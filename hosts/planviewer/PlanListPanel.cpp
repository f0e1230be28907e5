#include "PlanListPanel.h"

#include "PlanClient.h"

#include <QtWidgets/QCheckBox>
#include <QtWidgets/QDateEdit>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTableView>

namespace {

// The service takes a pattern; a person types what a name contains.
QString literal(const QString& text)
{
    QString pattern;
    for (const QChar character : text) {
        if (QStringLiteral("\\.+*?()|[]{}^$").contains(character))
            pattern += QLatin1Char('\\');
        pattern += character;
    }
    return pattern;
}

} // namespace

PlanListPanel::PlanListPanel(PlanClient* client, QWidget* parent)
    : QWidget(parent)
    , m_client(client)
    , m_view(new QTableView)
    , m_name(new QLineEdit)
    , m_category(new QLineEdit)
    , m_isDated(new QCheckBox(tr("Changed &between")))
    , m_from(new QDateEdit(QDate::currentDate().addMonths(-1)))
    , m_to(new QDateEdit(QDate::currentDate()))
    , m_count(new QLabel)
{
    m_view->setObjectName(QStringLiteral("planList"));
    m_view->setAccessibleName(tr("Plans"));
    m_view->setModel(&m_model);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setTabKeyNavigation(false);
    m_view->setShowGrid(false);
    m_view->setWordWrap(true);
    m_view->verticalHeader()->hide();
    m_view->horizontalHeader()->setSectionResizeMode(PlanListModel::Name, QHeaderView::Stretch);
    for (int column = PlanListModel::Category; column < PlanListModel::ColumnCount; ++column)
        m_view->horizontalHeader()->setSectionResizeMode(column, QHeaderView::ResizeToContents);
    m_view->setColumnHidden(PlanListModel::ChangedBy, true); // the panel is narrow; the plan's tooltip has it
    m_view->setColumnHidden(PlanListModel::Changed, true);
    buildFilter();
    connect(m_view, &QTableView::activated, this,
            [this](const QModelIndex& index) { Q_EMIT opened(m_model.plans().at(index.row())); });
    connect(m_view->horizontalHeader(), &QHeaderView::sectionResized, this, &PlanListPanel::fitRows);
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &PlanListPanel::selectionChanged);
}

void PlanListPanel::buildFilter()
{
    m_name->setObjectName(QStringLiteral("nameFilter"));
    m_name->setPlaceholderText(tr("any"));
    m_name->setClearButtonEnabled(true);
    m_category->setObjectName(QStringLiteral("categoryFilter"));
    m_category->setPlaceholderText(tr("any"));
    m_category->setClearButtonEnabled(true);
    m_isDated->setObjectName(QStringLiteral("dateFilter"));
    m_from->setAccessibleName(tr("First day"));
    m_to->setAccessibleName(tr("Last day"));
    for (QDateEdit* const edit : {m_from, m_to}) {
        edit->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
        edit->setCalendarPopup(true);
        edit->setEnabled(false);
        connect(m_isDated, &QCheckBox::toggled, edit, &QWidget::setEnabled);
    }
    auto* const button = new QPushButton(tr("&Find"));
    button->setObjectName(QStringLiteral("find"));
    connect(button, &QPushButton::clicked, this, &PlanListPanel::refresh);
    connect(m_name, &QLineEdit::returnPressed, this, &PlanListPanel::refresh);
    connect(m_category, &QLineEdit::returnPressed, this, &PlanListPanel::refresh);

    auto* const form = new QFormLayout(this);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    form->addRow(tr("&Name"), m_name);
    form->addRow(tr("C&ategory"), m_category);
    form->addRow(m_isDated);
    auto* const days = new QHBoxLayout;
    days->addWidget(m_from, 1);
    days->addWidget(new QLabel(QStringLiteral("–")));
    days->addWidget(m_to, 1);
    form->addRow(days);
    auto* const line = new QHBoxLayout;
    line->addWidget(m_count, 1);
    line->addWidget(button);
    form->addRow(line);
    form->addRow(m_view);
}

void PlanListPanel::refresh()
{
    KvPlanCondition condition;
    condition.allTime = !m_isDated->isChecked();
    condition.startDate = m_from->date().startOfDay();
    condition.endDate = m_to->date().startOfDay();
    condition.name = literal(m_name->text().trimmed());
    condition.category = m_category->text().trimmed();
    QList<KvPlan> plans;
    if (!m_client->readPlans(condition, plans))
        return;
    const QString id = selected().id;
    m_model.setPlans(plans);
    fitRows();
    m_count->setText(tr("Plans: %1").arg(plans.size()));
    select(id);
    Q_EMIT selectionChanged();
}

// Long names go on in the next line; measuring very many would take its time.
void PlanListPanel::fitRows()
{
    constexpr int most = 300;
    if (m_model.plans().size() <= most)
        m_view->resizeRowsToContents();
}

void PlanListPanel::select(const QString& planId)
{
    const int row = m_model.rowOf(planId);
    if (row >= 0)
        m_view->setCurrentIndex(m_model.index(row, 0));
    else
        m_view->clearSelection();
}

KvPlan PlanListPanel::selected() const
{
    const QModelIndexList rows = m_view->selectionModel()->selectedRows();
    return rows.isEmpty() ? KvPlan() : m_model.plans().at(rows.first().row());
}

void PlanListPanel::focusFilter()
{
    m_name->setFocus();
    m_name->selectAll();
}
