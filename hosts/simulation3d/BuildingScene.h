#pragma once

#include "ElementLooks.h"
#include "SceneCamera.h"

#include <QtCore/QObject>
#include <QtGui/QColor>
#include <QtGui/QImage>

#include <functional>
#include <memory>

/// A building in three dimensions, drawn by Qt 3D onto a window or into pictures: one view, or two side by
/// side that look at it from the same place. All triangles are one piece of geometry, drawn at once; how each
/// element looks comes out of two small textures, of which changed rows alone are sent.
class BuildingScene : public QObject
{
    Q_OBJECT

public:
    enum View
    {
        Planned = 0,
        Actual = 1,
    };
    static constexpr int viewCount = 2;

    /// @param surface a window or an offscreen surface, made with GraphicsCheck::format(); it has to outlive
    /// the scene. @param pictureSize draws pictures of that size instead of onto the surface.
    explicit BuildingScene(QObject* surface, const QSize& pictureSize = {}, QObject* parent = nullptr);
    ~BuildingScene() override;

    /// Takes the place of the model before; null for none. Nothing is drawn until setLooks().
    void setModel(const std::shared_ptr<const BuildingModel>& model);
    /// Sends what has changed in the looks since the last call, all the first time after setModel().
    void setLooks(View view, ElementLooks& looks);
    /// Which views are drawn; of two the planned one is at the left. One has the whole picture.
    void setViews(bool planned, bool actual);
    /// @param aspect width by height of one view
    void setCamera(const SceneCamera& camera, double aspect);
    void setBackground(const QColor& colour);

    /// Draws once more and hands the picture over, later. Pictures come in the order asked for; none when the
    /// scene is gone before.
    void takePicture(std::function<void(const QImage&)> take);
    /// Draws without end, calling with each frame, for measuring. Otherwise it is drawn when something
    /// changed.
    void drawAlways(std::function<void()> frameDrawn);

private:
    struct Parts; // what Qt 3D holds
    std::unique_ptr<Parts> m_parts;
};
