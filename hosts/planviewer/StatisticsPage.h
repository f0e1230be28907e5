#pragma once

#include <model/KvPlanRecords.h>

#include <QtWidgets/QWidget>

class BarChart;
class PlanClient;
class QComboBox;
class QLabel;
class QLineEdit;

/// The current user's tasks in numbers: by status and situation, and how many were finished over time.
class StatisticsPage : public QWidget
{
    Q_OBJECT

public:
    explicit StatisticsPage(PlanClient* client, QWidget* parent = nullptr);

    /// Asks the service for both charts. @return false when that failed.
    bool refresh();
    void setCategory(const QString& category);

    BarChart* statusChart() const { return m_status; }
    BarChart* quantityChart() const { return m_quantities; }

private:
    void showStatistics(const KvPlanStatistics& statistics);
    void showQuantities(const QList<KvStatisticsQuantity>& quantities);

    PlanClient* m_client;
    QLineEdit* m_category;
    QComboBox* m_period;
    QLabel* m_total;
    BarChart* m_status;
    BarChart* m_quantities;
};
