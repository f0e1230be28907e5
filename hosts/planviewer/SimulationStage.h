#pragma once

#include <SimulationSettings.h>

#include <QtWidgets/QWidget>

class QLabel;
class QProgressBar;
class QPushButton;
class QStackedWidget;
class SimulationView;

/// The place of the building: its views with their titles, or a message about why it is not seen.
class SimulationStage : public QWidget
{
    Q_OBJECT

public:
    explicit SimulationStage(QWidget* parent = nullptr);
    ~SimulationStage() override;

    /// Null before the first showBuilding(): it needs graphics, which there need not be.
    SimulationView* view() const { return m_view; }
    void showBuilding();
    /// @param isBusy that something is being done, which the user can cancel
    void showMessage(const QString& text, bool isBusy);
    /// What is said in place of the building; empty while that is seen.
    QString message() const;
    void setViews(SimulationViews views);

Q_SIGNALS:
    void cancelWanted();
    void viewMade(SimulationView* view);

protected:
    void changeEvent(QEvent* event) override;

private:
    QWidget* makeMessagePage();
    void showBackground();

    QStackedWidget* m_stack;
    QLabel* m_message;
    QProgressBar* m_busy;
    QPushButton* m_cancel;
    QLabel* m_planned;
    QLabel* m_actual;
    SimulationView* m_view = nullptr;
    SimulationViews m_views = SimulationViews::Both;
};
