#pragma once

#include "BuildingScene.h"

class QOffscreenSurface;

/// Draws pictures of a building without a window. Make one only where GraphicsCheck::fault() is empty.
class SceneRenderer : public QObject
{
    Q_OBJECT

public:
    static constexpr int smallestSide = 16;
    static constexpr int largestSide = 4096;

    /// @param size of the pictures, each side from smallestSide to largestSide
    SceneRenderer(const std::shared_ptr<const BuildingModel>& model, const QSize& size, bool planned,
                  bool actual, QObject* parent = nullptr);
    ~SceneRenderer() override;

    ElementLooks& looks(BuildingScene::View view) { return *m_looks[view]; }
    /// Instead of one that sees all.
    void setCamera(const SceneCamera& camera) { m_camera = camera; }
    void setBackground(const QColor& colour);
    /// Draws what the looks are now and hands the picture over, later. It is null when nothing could be
    /// drawn. Wait for it before the next call.
    void draw(std::function<void(const QImage&)> take);
    const QSize& size() const { return m_size; }

private:
    double aspect() const;
    void warmUp();
    void drawNow();

    std::shared_ptr<const BuildingModel> m_model;
    QSize m_size;
    bool m_isDrawn[BuildingScene::viewCount];
    std::unique_ptr<QOffscreenSurface> m_surface;
    std::unique_ptr<BuildingScene> m_scene;
    std::unique_ptr<ElementLooks> m_looks[BuildingScene::viewCount];
    std::function<void(const QImage&)> m_take;
    SceneCamera m_camera;
    int m_tries = 0;
    bool m_isWarm = false;
};
