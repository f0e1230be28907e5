#pragma once

#include <QtCore/QSize>
#include <QtCore/QVector>
#include <QtGui/QImage>
#include <QtGui/QMatrix4x4>
#include <QtGui/QWindow>

#include <functional>
#include <memory>

/// Boxes of one size and of one colour each, drawn by Qt 3D as plainly as can be: one entity, whose box is
/// drawn as many times as there are places, again and again. What a simulation is measured against.
class BareScene
{
public:
    /// @param size of each box; @param places of their low corners; @param views drawn side by side, each
    /// with all boxes. Draws onto the window until it is destroyed, calling with each frame.
    BareScene(QWindow& window, const QVector3D& size, const QVector<QVector3D>& places,
              const QMatrix4x4& view, const QMatrix4x4& projection, int views,
              std::function<void()> frameDrawn);
    ~BareScene();

    /// Hands over what is drawn, later.
    void takePicture(std::function<void(const QImage&)> take);

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};
