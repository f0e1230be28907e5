#pragma once

#include <FrameExport.h>
#include <ModelReader.h>

#include <QtCore/QTimer>
#include <QtWidgets/QWidget>

class FloorHeightsPanel;
class PlanPage;
class PlaybackBar;
class QLabel;
class QProgressBar;
class QPushButton;
class QStackedWidget;
class SimulationGapsPanel;
class SimulationView;
class TimeLineSetPanel;

/// The plan that is open, played on the model of its building. Does nothing before it is seen first, and says
/// so where nothing can be drawn in three dimensions.
class SimulationPage : public QWidget
{
    Q_OBJECT

public:
    /// @param page whose tasks are played, and selected together with elements; outlives this
    explicit SimulationPage(PlanPage* page, QWidget* parent = nullptr);
    ~SimulationPage() override;

    /// Reads a model file and keeps it for the plan; later, in the background.
    void openModel(const QString& path);
    bool hasModel() const { return m_model != nullptr; }
    bool isReading() const { return m_reader.isReading(); }
    /// What stands in place of the building; empty when it is seen.
    QString message() const;
    /// Instead of the program beside this one.
    void setReaderProgram(const QString& path) { m_reader.setProgram(path); }

    /// What pictures show that are made now.
    PictureContent pictureContent() const;
    /// The sequence of the period that is played, at its speed.
    FrameExport::Sequence sequence() const;

    PlaybackBar* playback() const { return m_playback; }
    SimulationSettings* settings() { return &m_settings; }
    /// Null before there is a model, and where nothing can be drawn.
    SimulationView* view() const { return m_view; }
    SimulationGapsPanel* gaps() const { return m_gaps; }
    FloorHeightsPanel* floors() const { return m_floors; }
    const std::shared_ptr<const BuildingModel>& model() const { return m_model; }

Q_SIGNALS:
    /// Whether there is a model, or a plan.
    void changed();
    /// Something the user should know, for the status bar.
    void told(const QString& text);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void buildMessage();
    void takePlan();
    void takeTasks();
    void takeModel(const ModelData& read);
    void dropModel();
    void showMessage(const QString& text, bool isBusy);
    void showDate();
    void showLifts();
    void showViews();
    void showBackground();
    void repaintBuilding();
    void selectElement(int element, bool isAdding);
    void highlightTasks();
    void goToElement(const QString& id);
    QVector<const KvPlanNode*> nodes() const;
    QVector<double> floorHeights() const;
    SimulatedBuilding::Paint paint() const;

    PlanPage* m_page;
    SimulationSettings m_settings;
    ModelReader m_reader;
    SimulatedBuilding m_building[BuildingScene::viewCount];
    std::shared_ptr<const BuildingModel> m_model;
    QSet<QString> m_known; // when the model was put together
    QTimer m_tasksTimer;
    QVector<int> m_highlighted;
    QString m_planId;
    SimulationView* m_view = nullptr;
    QStackedWidget* m_stage;
    QLabel* m_message;
    QProgressBar* m_busy;
    QPushButton* m_cancel;
    QLabel* m_titles[BuildingScene::viewCount];
    PlaybackBar* m_playback;
    TimeLineSetPanel* m_panel;
    FloorHeightsPanel* m_floors;
    SimulationGapsPanel* m_gaps;
    int m_namedCount = 0;  // elements of the model that tasks name
    bool m_isStale = true; // the tasks were not taken since they changed
};
