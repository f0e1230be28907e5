#pragma once

#include <BuildingModel.h>

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>

/// A box as a node of a model: metres, y upwards.
struct NamedBox
{
    QString name;
    QVector3D low;
    QVector3D high;
    int parent = -1;
};

namespace Models {

/// The corners of the six faces, each face with corners of its own.
inline QVector<QVector3D> corners(const QVector3D& low, const QVector3D& high)
{
    QVector<QVector3D> all;
    for (int axis = 0; axis < 3; ++axis) {
        for (const bool isHigh : {false, true}) {
            const int u = (axis + (isHigh ? 1 : 2)) % 3; // counterclockwise from outside
            const int v = (axis + (isHigh ? 2 : 1)) % 3;
            for (int corner = 0; corner < 4; ++corner) {
                QVector3D point;
                point[axis] = isHigh ? high[axis] : low[axis];
                point[u] = corner == 1 || corner == 2 ? high[u] : low[u];
                point[v] = corner >= 2 ? high[v] : low[v];
                all.append(point);
            }
        }
    }
    return all;
}

/// The triangles of these faces.
inline QVector<quint32> faces(quint32 first)
{
    QVector<quint32> all;
    for (quint32 face = 0; face < 6; ++face) {
        const quint32 at = first + face * 4;
        all << at << at + 1 << at + 2 << at << at + 2 << at + 3;
    }
    return all;
}

/// As the reader hands boxes over, without a file.
inline ModelData data(const QVector<NamedBox>& boxes)
{
    ModelData made;
    for (const NamedBox& box : boxes) {
        const int node = made.nodes.size();
        made.nodes.append({box.name, box.parent});
        if (box.low == box.high) // a group
            continue;
        const QVector<QVector3D> points = corners(box.low, box.high);
        const quint32 first = made.vertexCount();
        const QVector<quint32> triangles = faces(first);
        made.parts.append(
            {node, first, quint32(points.size()), quint32(made.indices.size()), quint32(triangles.size())});
        made.indices += triangles;
        for (const QVector3D& point : points)
            made.positions << point.x() << point.y() << point.z();
    }
    return made;
}

inline bool write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

inline QByteArray obj(const QVector<NamedBox>& boxes)
{
    QByteArray text("# boxes\n");
    quint32 first = 1;
    for (const NamedBox& box : boxes) {
        text += "o " + box.name.toUtf8() + '\n';
        const QVector<QVector3D> points = corners(box.low, box.high);
        for (const QVector3D& p : points)
            text += "v " + QByteArray::number(double(p.x())) + ' ' + QByteArray::number(double(p.y())) + ' ' +
                    QByteArray::number(double(p.z())) + '\n';
        const QVector<quint32> triangles = faces(first);
        for (int i = 0; i < triangles.size(); i += 3)
            text += "f " + QByteArray::number(triangles.at(i)) + ' ' +
                    QByteArray::number(triangles.at(i + 1)) + ' ' + QByteArray::number(triangles.at(i + 2)) +
                    '\n';
        first += quint32(points.size());
    }
    return text;
}

/// glTF 2.0: one unit cube, which every box places by translation and scale. @p buffer receives what the file
/// names @p uri, or has to be inside for an empty one.
inline QJsonObject gltf(const QVector<NamedBox>& boxes, const QString& uri, QByteArray& buffer)
{
    buffer.clear();
    const QVector<QVector3D> points = corners({0, 0, 0}, {1, 1, 1});
    for (const QVector3D& p : points) {
        for (int axis = 0; axis < 3; ++axis) {
            const float value = p[axis];
            buffer.append(reinterpret_cast<const char*>(&value), sizeof value);
        }
    }
    const int pointBytes = buffer.size();
    const QVector<quint32> triangles = faces(0);
    for (const quint32 index : triangles) {
        const quint16 value = quint16(index);
        buffer.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    const auto list = [](const QVector3D& v) {
        return QJsonArray{double(v.x()), double(v.y()), double(v.z())};
    };
    QJsonArray nodes;
    QJsonArray top;
    for (int i = 0; i < boxes.size(); ++i) {
        const NamedBox& box = boxes.at(i);
        QJsonObject node{{QStringLiteral("name"), box.name}};
        if (box.low != box.high) {
            node.insert(QStringLiteral("mesh"), 0);
            node.insert(QStringLiteral("translation"), list(box.low));
            node.insert(QStringLiteral("scale"), list(box.high - box.low));
        }
        nodes.append(node);
        if (box.parent < 0)
            top.append(i);
    }
    for (int i = 0; i < boxes.size(); ++i) {
        if (boxes.at(i).parent < 0)
            continue;
        QJsonObject parent = nodes.at(boxes.at(i).parent).toObject();
        QJsonArray children = parent.value(QStringLiteral("children")).toArray();
        children.append(i);
        parent.insert(QStringLiteral("children"), children);
        nodes.replace(boxes.at(i).parent, parent);
    }
    QJsonObject stored{{QStringLiteral("byteLength"), buffer.size()}};
    if (!uri.isEmpty())
        stored.insert(QStringLiteral("uri"), uri);
    const QByteArray rest = QByteArray(R"({"asset":{"version":"2.0"},"scene":0,
        "materials":[{"name":"concrete"}],
        "bufferViews":[{"buffer":0,"byteOffset":0,"byteLength":)") +
                            QByteArray::number(pointBytes) + R"(},{"buffer":0,"byteOffset":)" +
                            QByteArray::number(pointBytes) + R"(,"byteLength":)" +
                            QByteArray::number(buffer.size() - pointBytes) + R"(}],
        "accessors":[{"bufferView":0,"componentType":5126,"count":24,"type":"VEC3","min":[0,0,0],"max":[1,1,1]},
                     {"bufferView":1,"componentType":5123,"count":36,"type":"SCALAR"}],
        "meshes":[{"name":"cube","primitives":[{"attributes":{"POSITION":0},"indices":1,"mode":4,"material":0}]}]})";
    QJsonObject made = QJsonDocument::fromJson(rest).object();
    made.insert(QStringLiteral("buffers"), QJsonArray{stored});
    made.insert(QStringLiteral("nodes"), nodes);
    made.insert(QStringLiteral("scenes"), QJsonArray{QJsonObject{{QStringLiteral("nodes"), top}}});
    return made;
}

inline QByteArray glb(const QVector<NamedBox>& boxes)
{
    QByteArray buffer;
    QByteArray json = QJsonDocument(gltf(boxes, {}, buffer)).toJson(QJsonDocument::Compact);
    while (json.size() % 4 != 0)
        json.append(' ');
    while (buffer.size() % 4 != 0)
        buffer.append('\0');
    const auto word = [](quint32 value) {
        QByteArray bytes;
        for (int i = 0; i < 4; ++i)
            bytes.append(char(value >> (8 * i)));
        return bytes;
    };
    const QByteArray chunks = word(quint32(json.size())) + "JSON" + json + word(quint32(buffer.size())) +
                              QByteArray("BIN\0", 4) + buffer;
    return QByteArray("glTF") + word(2) + word(quint32(12 + chunks.size())) + chunks;
}

} // namespace Models
