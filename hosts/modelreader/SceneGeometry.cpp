#include "SceneGeometry.h"

#include <Qt3DCore/QEntity>
#include <Qt3DCore/QTransform>
#include <Qt3DRender/QAttribute>
#include <Qt3DRender/QBuffer>
#include <Qt3DRender/QGeometry>
#include <Qt3DRender/QGeometryRenderer>

#include <QtGui/QMatrix4x4>

#include <cstring>

using Qt3DRender::QAttribute;
using Qt3DRender::QGeometryRenderer;

namespace {

struct Indexed
{
    QByteArray bytes;
    const QAttribute* attribute = nullptr;
    uint size = 0;

    explicit Indexed(const QAttribute* of, uint scalarSize)
        : attribute(of)
    {
        if (!of || !of->buffer())
            return;
        bytes = of->buffer()->data();
        const uint stride = of->byteStride() ? of->byteStride() : of->vertexSize() * scalarSize;
        m_stride = stride;
        const uint length = uint(bytes.size());
        const uint item = of->vertexSize() * scalarSize;
        if (of->byteOffset() > length || length - of->byteOffset() < item)
            return;
        const uint room = (length - of->byteOffset() - item) / stride + 1;
        // Of an index buffer Qt's importers tell the count, of some vertex buffers they leave it at 0.
        size = of->count() ? qMin(of->count(), room) : room;
    }

    template<typename T>
    T at(uint position, uint component = 0) const
    {
        T value;
        std::memcpy(&value,
                    bytes.constData() + attribute->byteOffset() + size_t(position) * m_stride +
                        component * sizeof(T),
                    sizeof(T));
        return value;
    }

private:
    uint m_stride = 1;
};

uint scalarSize(const QAttribute* attribute)
{
    if (!attribute)
        return 1;
    switch (attribute->vertexBaseType()) {
    case QAttribute::Byte:
    case QAttribute::UnsignedByte:
        return 1;
    case QAttribute::Short:
    case QAttribute::UnsignedShort:
    case QAttribute::HalfFloat:
        return 2;
    case QAttribute::Double:
        return 8;
    default:
        return 4;
    }
}

quint32 indexAt(const Indexed& indices, uint position)
{
    switch (indices.attribute->vertexBaseType()) {
    case QAttribute::UnsignedByte:
        return indices.at<quint8>(position);
    case QAttribute::UnsignedShort:
        return indices.at<quint16>(position);
    default:
        return indices.at<quint32>(position);
    }
}

class Flattening
{
public:
    ModelData data;

    void add(const QGeometryRenderer& mesh, int node, const QMatrix4x4& place)
    {
        if (!mesh.geometry())
            return;
        const QAttribute* position = nullptr;
        const QAttribute* index = nullptr;
        const QVector<QAttribute*> attributes = mesh.geometry()->attributes();
        for (const QAttribute* const attribute : attributes) {
            if (attribute->attributeType() == QAttribute::IndexAttribute)
                index = attribute;
            else if (attribute->name() == QAttribute::defaultPositionAttributeName())
                position = attribute;
        }
        if (!position || position->vertexBaseType() != QAttribute::Float || position->vertexSize() < 3)
            return;
        const Indexed points(position, sizeof(float));
        const Indexed order(index, scalarSize(index));
        ModelData::Part part;
        part.node = node;
        part.firstVertex = data.vertexCount();
        part.vertexCount = points.size;
        part.firstIndex = quint32(data.indices.size());
        addTriangles(mesh.primitiveType(), order, index ? order.size : points.size, part);
        part.indexCount = quint32(data.indices.size()) - part.firstIndex;
        if (part.indexCount == 0)
            return;
        data.positions.reserve(data.positions.size() + int(points.size) * 3);
        for (uint i = 0; i < points.size; ++i) {
            const QVector3D at =
                place.map(QVector3D(points.at<float>(i, 0), points.at<float>(i, 1), points.at<float>(i, 2)));
            data.positions << at.x() << at.y() << at.z();
        }
        data.parts.append(part);
    }

private:
    void addTriangles(QGeometryRenderer::PrimitiveType type, const Indexed& order, uint count,
                      const ModelData::Part& part)
    {
        const auto vertex = [&](uint i) {
            return order.attribute ? indexAt(order, i) : quint32(i);
        };
        const auto add = [&](uint a, uint b, uint c) {
            const quint32 corners[] = {vertex(a), vertex(b), vertex(c)};
            for (const quint32 corner : corners) {
                if (corner >= part.vertexCount)
                    return;
            }
            for (const quint32 corner : corners)
                data.indices.append(part.firstVertex + corner);
        };
        for (uint i = 0; i + 2 < count; ++i) {
            if (type == QGeometryRenderer::Triangles && i % 3 == 0)
                add(i, i + 1, i + 2);
            else if (type == QGeometryRenderer::TriangleStrip)
                add(i + i % 2, i + 1 - i % 2, i + 2);
            else if (type == QGeometryRenderer::TriangleFan)
                add(0, i + 1, i + 2);
        }
    }
};

} // namespace

ModelData sceneGeometry(const Qt3DCore::QEntity& root)
{
    struct Visit
    {
        const Qt3DCore::QEntity* entity;
        int parent;
        QMatrix4x4 place;
    };
    Flattening flattening;
    QVector<Visit> open{{&root, -1, {}}};
    while (!open.isEmpty()) {
        const Visit visit = open.takeLast();
        const int node = flattening.data.nodes.size();
        flattening.data.nodes.append({visit.entity->objectName(), visit.parent});
        QMatrix4x4 place = visit.place;
        const Qt3DCore::QComponentVector components = visit.entity->components();
        for (const Qt3DCore::QComponent* const component : components) {
            if (const auto* const transform = qobject_cast<const Qt3DCore::QTransform*>(component))
                place *= transform->matrix();
        }
        for (const Qt3DCore::QComponent* const component : components) {
            if (const auto* const mesh = qobject_cast<const QGeometryRenderer*>(component))
                flattening.add(*mesh, node, place);
        }
        // Backwards, as the last one is looked at first.
        const Qt3DCore::QNodeVector children = visit.entity->childNodes();
        for (auto child = children.crbegin(); child != children.crend(); ++child) {
            if (const auto* const entity = qobject_cast<const Qt3DCore::QEntity*>(*child))
                open.append({entity, node, place});
        }
    }
    return flattening.data;
}
