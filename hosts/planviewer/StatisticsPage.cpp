#include "StatisticsPage.h"

#include "BarChart.h"
#include "PlanClient.h"

#include <QtWidgets/QComboBox>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

namespace {

// A word of the service, in the user's language when it is one that is known.
QString wordText(const QString& word)
{
    if (word == QLatin1String("unstart"))
        return StatisticsPage::tr("Not started");
    if (word == QLatin1String("processing"))
        return StatisticsPage::tr("In progress");
    if (word == QLatin1String("finished"))
        return StatisticsPage::tr("Finished");
    if (word == QLatin1String("normal"))
        return StatisticsPage::tr("On time");
    if (word == QLatin1String("delay"))
        return StatisticsPage::tr("Delayed");
    if (word == QLatin1String("ahead"))
        return StatisticsPage::tr("Ahead");
    return word;
}

QColor situationColour(const QString& situation)
{
    if (situation == QLatin1String("delay"))
        return QColor(0xd9, 0x5f, 0x3b);
    if (situation == QLatin1String("ahead"))
        return QColor(0x3a, 0x9d, 0x6e);
    return QColor(0x4c, 0x84, 0xc8);
}

QString bucketText(const KvStatisticsQuantity& bucket)
{
    QString text = QString::number(bucket.year);
    if (bucket.week > 0)
        return text + QStringLiteral("-W%1").arg(bucket.week, 2, 10, QLatin1Char('0'));
    if (bucket.month > 0)
        text += QStringLiteral("-%1").arg(bucket.month, 2, 10, QLatin1Char('0'));
    if (bucket.day > 0)
        text += QStringLiteral("-%1").arg(bucket.day, 2, 10, QLatin1Char('0'));
    return text;
}

} // namespace

StatisticsPage::StatisticsPage(PlanClient* client, QWidget* parent)
    : QWidget(parent)
    , m_client(client)
    , m_category(new QLineEdit)
    , m_period(new QComboBox)
    , m_total(new QLabel)
    , m_status(new BarChart(tr("Tasks by status and situation")))
    , m_quantities(new BarChart(tr("Finished tasks over time")))
{
    m_status->setObjectName(QStringLiteral("statusChart"));
    m_quantities->setObjectName(QStringLiteral("quantityChart"));
    m_category->setObjectName(QStringLiteral("statisticsCategory"));
    m_category->setPlaceholderText(tr("any category"));
    m_category->setAccessibleName(tr("Category"));
    m_period->setObjectName(QStringLiteral("period"));
    m_period->setAccessibleName(tr("Period"));
    m_period->addItem(tr("by day"), QStringLiteral("day"));
    m_period->addItem(tr("by week"), QStringLiteral("week"));
    m_period->addItem(tr("by month"), QStringLiteral("month"));
    m_period->addItem(tr("by year"), QStringLiteral("year"));
    m_period->setCurrentIndex(2);
    auto* const button = new QPushButton(tr("&Count"));
    button->setObjectName(QStringLiteral("count"));
    connect(button, &QPushButton::clicked, this, &StatisticsPage::refresh);
    connect(m_category, &QLineEdit::returnPressed, this, &StatisticsPage::refresh);
    connect(m_period, QOverload<int>::of(&QComboBox::activated), this, &StatisticsPage::refresh);
    auto* const line = new QHBoxLayout;
    line->addWidget(new QLabel(tr("Your tasks")));
    line->addWidget(m_category);
    line->addWidget(m_period);
    line->addWidget(button);
    line->addWidget(m_total);
    line->addStretch();
    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(line);
    layout->addWidget(m_status, 1);
    layout->addWidget(m_quantities, 1);
}

void StatisticsPage::setCategory(const QString& category)
{
    m_category->setText(category);
}

bool StatisticsPage::refresh()
{
    const QString category = m_category->text().trimmed();
    KvPlanStatistics statistics;
    QList<KvStatisticsQuantity> quantities;
    if (!m_client->readStatistics(category, statistics) ||
        !m_client->readQuantities(category, m_period->currentData().toString(), quantities))
        return false;
    showStatistics(statistics);
    showQuantities(quantities);
    return true;
}

void StatisticsPage::showStatistics(const KvPlanStatistics& statistics)
{
    m_total->setText(tr("Tasks in all: %1").arg(statistics.total));
    QVector<BarChart::Bar> bars;
    for (const KvStatusStatistics& status : statistics.items) {
        BarChart::Bar bar{wordText(status.status), {}};
        for (const KvSituationCount& situation : status.items)
            bar.parts.append(
                {wordText(situation.situation), situationColour(situation.situation), situation.total});
        bars.append(bar);
    }
    m_status->setBars(bars);
}

void StatisticsPage::showQuantities(const QList<KvStatisticsQuantity>& quantities)
{
    QVector<BarChart::Bar> bars;
    for (const KvStatisticsQuantity& bucket : quantities)
        bars.append({bucketText(bucket), {{QString(), QColor(0x4c, 0x84, 0xc8), bucket.total}}});
    m_quantities->setBars(bars);
}
