#pragma once

#include "BuildingScene.h"

#include <QtWidgets/QWidget>

class QWindow;

/// A building on the screen, that can be turned, moved and clicked on: one view or two side by side with one
/// camera. Turn with the left button or the arrow keys, move with the right or middle button or with Shift,
/// zoom with the wheel or + and -, see all with Home or F. Make one only where GraphicsCheck::fault() is
/// empty.
class SimulationView : public QWidget
{
    Q_OBJECT

public:
    explicit SimulationView(QWidget* parent = nullptr);
    ~SimulationView() override;

    /// All of it undrawn, seen whole.
    void setModel(const std::shared_ptr<const BuildingModel>& model);
    const std::shared_ptr<const BuildingModel>& model() const { return m_model; }
    void setViews(bool planned, bool actual);
    bool isShown(BuildingScene::View view) const { return m_isShown[view]; }
    /// Null without a model. Change them, then call update3d().
    ElementLooks* looks(BuildingScene::View view) const { return m_looks[view].get(); }
    /// Sends changed looks to the views that are shown.
    void update3d();
    void setBackground(const QColor& colour);

    const SceneCamera& camera() const { return m_camera; }
    void setCamera(const SceneCamera& camera);
    /// All that is or will be to be seen, lifted as it is.
    void fit();
    /// Width by height of one view.
    double aspect() const;

    /// The element at a place of the widget, or BuildingModel::none, and the view that the place is in.
    int elementAt(const QPoint& place, BuildingScene::View* view = nullptr) const;
    /// Where the middle of what is drawn of an element is seen; null when nothing of it is drawn.
    QPoint placeOf(int element, BuildingScene::View view) const;
    /// What is on the screen, later.
    void takePicture(std::function<void(const QImage&)> take) { m_scene->takePicture(std::move(take)); }
    BuildingScene& scene() { return *m_scene; }
    QWindow* sceneWindow() const { return m_window; }

Q_SIGNALS:
    /// BuildingModel::none where there is none. @p isAdding with Ctrl.
    void elementClicked(int element, bool isAdding);
    void cameraChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    BuildingScene::View viewAt(double across, double& within) const;
    void sendCamera();
    void press(const QPoint& place);
    bool drag(const QPoint& place, Qt::MouseButtons buttons, Qt::KeyboardModifiers keys);
    bool press(int key, Qt::KeyboardModifiers keys);

    QWindow* m_window;
    QWidget* m_container;
    std::unique_ptr<BuildingScene> m_scene;
    std::shared_ptr<const BuildingModel> m_model;
    std::unique_ptr<ElementLooks> m_looks[BuildingScene::viewCount];
    bool m_isShown[BuildingScene::viewCount] = {true, false};
    SceneCamera m_camera;
    QPoint m_pressedAt;
    QPoint m_draggedTo;
    bool m_isDragged = false;
};
