#pragma once

#include "Preferences.h"

#include <model/KvPlan.h>

#include <QtWidgets/QMainWindow>

#include <functional>

class PlanActions;
class PlanClient;
class PlanListPanel;
class PlanPage;
class QLabel;
class QLineEdit;
class QProgressBar;
class QTabWidget;
class QDockWidget;
class SimulationPage;
class StatisticsPage;

/// The program's window: plans at the left, the open plan and the statistics beside them.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(PlanClient* client, QWidget* parent = nullptr);
    ~MainWindow() override;

    /// Asks for rights, hidden columns and the list of plans.
    void start();
    /// Opens a plan unless the user wants to keep the edits of the one that is open.
    bool openPlan(const KvPlan& plan);

    PlanClient* client() const { return m_client; }
    PlanListPanel* planList() const { return m_list; }
    PlanPage* planPage() const { return m_page; }
    SimulationPage* simulationPage() const { return m_simulation; }
    /// Opens the simulation beside the plan.
    void showSimulation();
    StatisticsPage* statisticsPage() const { return m_statistics; }
    /// The tabs of the open plan and the statistics.
    QTabWidget* tabs() const { return m_tabs; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildPlanMenu();
    void buildEditMenu();
    void buildViewMenu();
    void buildSimulationMenu();
    void buildToolBar();
    void buildStatusBar();
    QAction* add(QMenu* menu, const char* name, const QString& text, const QKeySequence& keys,
                 const std::function<void()>& run);
    void updateActions();
    void updateTitle();
    void readRights(const QString& category);
    bool leaveEdits();
    bool leaveEditsWhileBusy();
    void exportPicture();
    void openModel();
    void exportSimulationPicture();
    void exportFrames();
    void search();

    PlanClient* m_client;
    PlanListPanel* m_list;
    PlanPage* m_page;
    StatisticsPage* m_statistics;
    SimulationPage* m_simulation;
    QDockWidget* m_simulationDock = nullptr;
    QTabWidget* m_tabs;
    PlanActions* m_planActions;
    QLineEdit* m_search;
    QLabel* m_waiting;
    QProgressBar* m_busy;
    QAction* m_save = nullptr;
    QAction* m_reload = nullptr;
    QAction* m_addTask = nullptr;
    QAction* m_addSubtask = nullptr;
    QAction* m_report = nullptr;
    QAction* m_picture = nullptr;
    QAction* m_model = nullptr;
    QList<QAction*> m_buildingViews; // that need a model
    QList<QAction*> m_planViews;     // that need an open plan
    bool m_isAsking = false;         // during a request, about edits
};
