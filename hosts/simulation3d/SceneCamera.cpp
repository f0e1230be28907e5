#include "SceneCamera.h"

#include <QtCore/QtMath>

#include <algorithm>

namespace {

constexpr double steepest = 89.0; // degrees; straight from above there is no upwards

} // namespace

void SceneCamera::fit(const Box& box, double aspect)
{
    *this = {};
    fitFromHere(box, aspect);
}

void SceneCamera::fitFromHere(const Box& box, double aspect)
{
    if (box.isNothing())
        return;
    m_centre = box.centre();
    m_size = std::max(1e-3, double(box.size().length()));
    const double halfHeight = qDegreesToRadians(fieldOfView()) / 2.0;
    const double halfWidth = std::atan(std::tan(halfHeight) * std::max(aspect, 1e-3));
    m_distance = m_size / 2.0 / std::sin(std::min(halfHeight, halfWidth));
    // The ball around the box fits by now. Come nearer until a corner of the box is nearly at the edge; as
    // that makes what is in front larger than what is behind, it takes some rounds.
    constexpr int rounds = 6;
    constexpr double margin = 1.08;
    for (int round = 0; round < rounds; ++round) {
        double reach = 0.0;
        for (int corner = 0; corner < 8; ++corner) {
            const QVector3D point((corner & 1 ? box.high : box.low).x(),
                                  (corner & 2 ? box.high : box.low).y(),
                                  (corner & 4 ? box.high : box.low).z());
            const QPointF at = seenAt(point, aspect) - QPointF(0.5, 0.5);
            reach = std::max({reach, std::abs(at.x()), std::abs(at.y())});
        }
        m_distance *= std::min(1.5, std::max(0.7, reach * 2.0 * margin));
    }
}

void SceneCamera::orbit(double right, double up)
{
    m_yaw = std::fmod(m_yaw - right, 360.0);
    m_pitch = std::min(steepest, std::max(-steepest, m_pitch + up));
}

void SceneCamera::pan(double right, double down)
{
    const double height = 2.0 * m_distance * std::tan(qDegreesToRadians(fieldOfView()) / 2.0);
    const QVector3D sideways = QVector3D::crossProduct(up(), backwards());
    m_centre += sideways * float(-right * height) + up() * float(down * height);
}

void SceneCamera::zoom(double factor)
{
    if (factor > 0.0)
        m_distance = std::min(m_size * 50.0, std::max(m_size * 1e-3, m_distance / factor));
}

QVector3D SceneCamera::backwards() const
{
    const double yaw = qDegreesToRadians(m_yaw);
    const double pitch = qDegreesToRadians(m_pitch);
    return {float(std::cos(pitch) * std::sin(yaw)), float(std::sin(pitch)),
            float(std::cos(pitch) * std::cos(yaw))};
}

QVector3D SceneCamera::up() const
{
    const double yaw = qDegreesToRadians(m_yaw);
    const double pitch = qDegreesToRadians(m_pitch);
    return {float(-std::sin(pitch) * std::sin(yaw)), float(std::cos(pitch)),
            float(-std::sin(pitch) * std::cos(yaw))};
}

QVector3D SceneCamera::position() const
{
    return m_centre + backwards() * float(m_distance);
}

double SceneCamera::nearPlane() const
{
    return std::max(m_distance - m_size * 2.0, m_distance * 0.01);
}

double SceneCamera::farPlane() const
{
    return m_distance + m_size * 4.0;
}

QMatrix4x4 SceneCamera::projection(double aspect) const
{
    QMatrix4x4 matrix;
    matrix.perspective(float(fieldOfView()), float(aspect), float(nearPlane()), float(farPlane()));
    return matrix;
}

QMatrix4x4 SceneCamera::view() const
{
    QMatrix4x4 matrix;
    matrix.lookAt(position(), m_centre, up());
    return matrix;
}

SceneCamera::Ray SceneCamera::ray(const QPointF& at, double aspect) const
{
    const double high = std::tan(qDegreesToRadians(fieldOfView()) / 2.0);
    const QVector3D back = backwards();
    const QVector3D upwards = up();
    const QVector3D sideways = QVector3D::crossProduct(upwards, back);
    const QVector3D along = sideways * float((at.x() * 2.0 - 1.0) * high * aspect) +
                            upwards * float((1.0 - at.y() * 2.0) * high) - back;
    return {position(), along.normalized()};
}

QPointF SceneCamera::seenAt(const QVector3D& point, double aspect) const
{
    const QVector3D at = projection(aspect) * (view() * point);
    return {(double(at.x()) + 1.0) / 2.0, (1.0 - double(at.y())) / 2.0};
}
