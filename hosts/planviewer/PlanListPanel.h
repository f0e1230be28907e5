#pragma once

#include "PlanListModel.h"

#include <QtWidgets/QWidget>

class PlanClient;
class QCheckBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QTableView;

/// The plans of the project, with a filter by name, category and dates.
class PlanListPanel : public QWidget
{
    Q_OBJECT

public:
    explicit PlanListPanel(PlanClient* client, QWidget* parent = nullptr);

    /// Asks the service for the plans that meet the filter; the selected plan stays selected.
    void refresh();
    void select(const QString& planId);
    /// The selected plan; one without an id when there is none.
    KvPlan selected() const;
    const QList<KvPlan>& plans() const { return m_model.plans(); }
    QTableView* view() const { return m_view; }
    void focusFilter();

Q_SIGNALS:
    void opened(const KvPlan& plan);
    void selectionChanged();

private:
    void buildFilter();
    void fitRows();

    PlanClient* m_client;
    PlanListModel m_model;
    QTableView* m_view;
    QLineEdit* m_name;
    QLineEdit* m_category;
    QCheckBox* m_isDated;
    QDateEdit* m_from;
    QDateEdit* m_to;
    QLabel* m_count;
};
