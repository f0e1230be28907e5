#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QStringList>
#include <QtCore/QVector>

class QIODevice;

/// What a model file holds, as the reader program hands it over: its nodes, and the triangles of each in the
/// coordinates of the whole, y upwards.
struct ModelData
{
    struct Node
    {
        QString name;    ///< empty when the file names none
        int parent = -1; ///< position in nodes, before this one; -1 at the top
    };
    struct Part
    {
        int node = 0;
        quint32 firstVertex = 0;
        quint32 vertexCount = 0;
        quint32 firstIndex = 0;
        quint32 indexCount = 0; ///< a multiple of 3
    };

    QVector<Node> nodes;
    QVector<Part> parts;
    QVector<float> positions; ///< x, y, z of each vertex
    QVector<quint32> indices; ///< of vertices, from 0 over all parts

    bool isEmpty() const { return parts.isEmpty(); }
    quint32 vertexCount() const { return quint32(positions.size() / 3); }
};

/// Everything, in a form of its own that only programs of one build share. @return whether all was written.
bool writeModelData(const ModelData& data, QIODevice& device);
/// @return false when the bytes are not wholly what writeModelData() writes; @p data is then empty.
bool readModelData(const QByteArray& bytes, ModelData& data);
