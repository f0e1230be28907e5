#include "ElementPick.h"

#include <algorithm>
#include <limits>

namespace {

constexpr float missed = std::numeric_limits<float>::infinity();

// Distance to a box, 0 from within.
float distanceTo(const Box& box, const SceneCamera::Ray& ray)
{
    float enter = 0.0F;
    float leave = missed;
    for (int axis = 0; axis < 3; ++axis) {
        if (ray.along[axis] == 0.0F) {
            if (ray.from[axis] < box.low[axis] || ray.from[axis] > box.high[axis])
                return missed;
            continue;
        }
        const float a = (box.low[axis] - ray.from[axis]) / ray.along[axis];
        const float b = (box.high[axis] - ray.from[axis]) / ray.along[axis];
        enter = std::max(enter, std::min(a, b));
        leave = std::min(leave, std::max(a, b));
    }
    return enter <= leave ? enter : missed;
}

float distanceTo(const QVector3D& a, const QVector3D& b, const QVector3D& c, const SceneCamera::Ray& ray)
{
    const QVector3D ab = b - a;
    const QVector3D ac = c - a;
    const QVector3D p = QVector3D::crossProduct(ray.along, ac);
    const float area = QVector3D::dotProduct(ab, p);
    if (area == 0.0F)
        return missed;
    const QVector3D from = ray.from - a;
    const float u = QVector3D::dotProduct(from, p) / area;
    const QVector3D q = QVector3D::crossProduct(from, ab);
    const float v = QVector3D::dotProduct(ray.along, q) / area;
    if (u < 0.0F || v < 0.0F || u + v > 1.0F)
        return missed;
    const float distance = QVector3D::dotProduct(ac, q) / area;
    return distance >= 0.0F ? distance : missed;
}

float distanceTo(const BuildingModel& model, const ElementLooks& looks, int element,
                 const SceneCamera::Ray& ray)
{
    const BuildingModel::Element& picked = model.elements().at(element);
    const ElementLooks::Look& look = looks.look(element);
    const ElementLooks::Clip clip = ElementLooks::clip(picked.box, look.growth, look.share);
    const float lift = looks.lift(element);
    const ModelData& data = model.data();
    const auto corner = [&](quint32 index) {
        const float* const at = data.positions.constData() + size_t(data.indices.at(int(index))) * 3;
        QVector3D point(at[0], at[1], at[2]);
        point[clip.axis] = std::min(clip.high, std::max(clip.low, point[clip.axis]));
        point.setY(point.y() + lift);
        return point;
    };
    float nearest = missed;
    for (const int number : picked.parts) {
        const ModelData::Part& part = data.parts.at(number);
        for (quint32 i = part.firstIndex; i < part.firstIndex + part.indexCount; i += 3)
            nearest = std::min(nearest, distanceTo(corner(i), corner(i + 1), corner(i + 2), ray));
    }
    return nearest;
}

} // namespace

int pickElement(const BuildingModel& model, const ElementLooks& looks, const SceneCamera::Ray& ray)
{
    struct Met
    {
        float distance;
        int element;
    };
    QVector<Met> met;
    for (int i = 0; i < model.elements().size(); ++i) {
        if (looks.look(i).solidity != ElementLooks::Solidity::Solid)
            continue;
        const float distance = distanceTo(looks.drawnBox(i), ray);
        if (distance < missed)
            met.append({distance, i});
    }
    std::sort(met.begin(), met.end(), [](const Met& a, const Met& b) { return a.distance < b.distance; });
    float nearest = missed;
    int picked = BuildingModel::none;
    for (const Met& candidate : qAsConst(met)) {
        if (candidate.distance > nearest) // so is all that follows
            break;
        const float distance = distanceTo(model, looks, candidate.element, ray);
        if (distance < nearest) {
            nearest = distance;
            picked = candidate.element;
        }
    }
    return picked;
}
