#pragma once

#include <FrameExport.h>
#include <ModelReader.h>

#include <QtCore/QTimer>
#include <QtWidgets/QWidget>

class ElementSelection;
class FloorHeightsPanel;
class PlanPage;
class PlaybackBar;
class SimulationGapsPanel;
class SimulationStage;
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
    SimulationView* view() const;
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

private:
    void takePlan();
    void takeTasks();
    void takeModel(const ModelData& read);
    void dropModel();
    void showDate();
    void showLifts();
    void showViews();
    void repaintBuilding();
    QVector<const KvPlanNode*> nodes() const;
    SimulatedBuilding::Paint paint() const;

    PlanPage* m_page;
    SimulationSettings m_settings;
    ModelReader m_reader;
    SimulatedBuilding m_building[BuildingScene::viewCount];
    std::shared_ptr<const BuildingModel> m_model;
    QSet<QString> m_known; // when the model was put together
    QTimer m_tasksTimer;
    QString m_planId;
    SimulationStage* m_stage;
    ElementSelection* m_selection;
    PlaybackBar* m_playback;
    TimeLineSetPanel* m_panel;
    FloorHeightsPanel* m_floors;
    SimulationGapsPanel* m_gaps;
    int m_namedCount = 0;  // elements of the model that tasks name
    bool m_isStale = true; // the tasks were not taken since they changed
};
