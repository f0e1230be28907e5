#include "ModelData.h"

#include <QtCore/QDataStream>
#include <QtCore/QIODevice>

#include <cstring>

namespace {

constexpr quint32 mark = 0x4B764D31; // the first bytes; another number with each change of the form

template<typename T>
QByteArray bytesOf(const QVector<T>& values)
{
    return QByteArray::fromRawData(reinterpret_cast<const char*>(values.constData()),
                                   int(sizeof(T)) * values.size());
}

template<typename T>
bool takeBytes(QDataStream& stream, QVector<T>& values)
{
    QByteArray bytes;
    stream >> bytes;
    if (bytes.size() % int(sizeof(T)) != 0)
        return false;
    values.resize(bytes.size() / int(sizeof(T)));
    if (!bytes.isEmpty())
        std::memcpy(values.data(), bytes.constData(), size_t(bytes.size()));
    return true;
}

bool isSound(const ModelData& data)
{
    if (data.positions.size() % 3 != 0)
        return false;
    for (int i = 0; i < data.nodes.size(); ++i) {
        if (data.nodes.at(i).parent < -1 || data.nodes.at(i).parent >= i)
            return false;
    }
    const quint64 vertices = data.vertexCount();
    const quint64 indices = quint64(data.indices.size());
    for (const ModelData::Part& part : data.parts) {
        if (part.node < 0 || part.node >= data.nodes.size() || part.indexCount % 3 != 0 ||
            quint64(part.firstVertex) + part.vertexCount > vertices ||
            quint64(part.firstIndex) + part.indexCount > indices)
            return false;
        for (quint32 i = 0; i < part.indexCount; ++i) {
            const quint32 vertex = data.indices.at(int(part.firstIndex + i));
            if (vertex < part.firstVertex || vertex - part.firstVertex >= part.vertexCount)
                return false;
        }
    }
    return true;
}

} // namespace

bool writeModelData(const ModelData& data, QIODevice& device)
{
    QDataStream stream(&device);
    stream.setVersion(QDataStream::Qt_5_15);
    stream << mark << qint32(data.nodes.size());
    for (const ModelData::Node& node : data.nodes)
        stream << node.name << qint32(node.parent);
    stream << qint32(data.parts.size());
    for (const ModelData::Part& part : data.parts)
        stream << qint32(part.node) << part.firstVertex << part.vertexCount << part.firstIndex
               << part.indexCount;
    stream << bytesOf(data.positions) << bytesOf(data.indices) << mark;
    return stream.status() == QDataStream::Ok;
}

bool readModelData(const QByteArray& bytes, ModelData& data)
{
    data = {};
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_5_15);
    quint32 first = 0;
    quint32 last = 0;
    qint32 count = 0;
    stream >> first >> count;
    // What counts say is believed only as far as bytes are there.
    for (qint32 i = 0; first == mark && i < count && stream.status() == QDataStream::Ok; ++i) {
        ModelData::Node node;
        qint32 parent = -1;
        stream >> node.name >> parent;
        node.parent = parent;
        data.nodes.append(node);
    }
    stream >> count;
    for (qint32 i = 0; first == mark && i < count && stream.status() == QDataStream::Ok; ++i) {
        ModelData::Part part;
        qint32 node = 0;
        stream >> node >> part.firstVertex >> part.vertexCount >> part.firstIndex >> part.indexCount;
        part.node = node;
        data.parts.append(part);
    }
    const bool isWhole = takeBytes(stream, data.positions) && takeBytes(stream, data.indices);
    stream >> last;
    if (isWhole && first == mark && last == mark && stream.status() == QDataStream::Ok && stream.atEnd() &&
        isSound(data))
        return true;
    data = {};
    return false;
}
