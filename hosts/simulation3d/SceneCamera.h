#pragma once

#include "BuildingModel.h"

#include <QtCore/QPointF>
#include <QtCore/QSizeF>
#include <QtGui/QMatrix4x4>

/// Where a building is looked at from: around a centre, at a distance. Positions are fractions of the picture
/// from its upper left corner.
class SceneCamera
{
public:
    struct Ray
    {
        QVector3D from;
        QVector3D along; ///< of length 1
    };

    /// From the front left and above, all of the box in sight.
    void fit(const Box& box, double aspect);
    /// All of the box in sight from the side that the camera is at.
    void fitFromHere(const Box& box, double aspect);
    /// Turns by so many degrees to the right and upwards; not beyond straight from above or below.
    void orbit(double right, double up);
    /// Moves the building by so much of the picture's height to the right and downwards.
    void pan(double right, double down);
    /// Comes nearer, with factors over 1, or goes away.
    void zoom(double factor);

    QVector3D position() const;
    const QVector3D& centre() const { return m_centre; }
    QVector3D up() const;
    double distance() const { return m_distance; }
    static double fieldOfView() { return 40.0; } ///< of the height, degrees
    double nearPlane() const;
    double farPlane() const;

    QMatrix4x4 projection(double aspect) const;
    QMatrix4x4 view() const;
    Ray ray(const QPointF& at, double aspect) const;
    /// Where a point is seen.
    QPointF seenAt(const QVector3D& point, double aspect) const;

private:
    QVector3D backwards() const;

    QVector3D m_centre;
    double m_yaw = -35.0; // degrees from the front to the right
    double m_pitch = 28.0;
    double m_distance = 50.0;
    double m_size = 50.0; // of what was fitted last
};
