#include "GltfFile.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QSet>
#include <QtCore/QTemporaryDir>
#include <QtCore/QtEndian>

namespace {

QLatin1String key(const char* name)
{
    return QLatin1String(name);
}

// A GLB file: a head of three words, then chunks of length, type and content. The first is the text, the
// second its first buffer.
bool splitGlb(const QByteArray& file, QByteArray& json, QByteArray& buffer)
{
    constexpr int headSize = 12;
    constexpr int chunkHeadSize = 8;
    const auto word = [&file](int at) {
        return qFromLittleEndian<quint32>(file.constData() + at);
    };
    int at = headSize;
    QList<QByteArray> chunks;
    while (at + chunkHeadSize <= file.size() && chunks.size() < 2) {
        const quint32 length = word(at);
        at += chunkHeadSize;
        if (length > quint32(file.size() - at))
            return false;
        chunks.append(file.mid(at, int(length)));
        at += int(length);
    }
    if (chunks.isEmpty())
        return false;
    json = chunks.first();
    if (chunks.size() > 1)
        buffer = chunks.last();
    return true;
}

bool writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush();
}

// The importer takes a buffer's path as one below the folder of the file; links lead there.
bool bringBuffers(QJsonObject& gltf, const QDir& from, const QTemporaryDir& to, const QByteArray& glbBuffer)
{
    QJsonArray buffers = gltf.value(key("buffers")).toArray();
    for (int i = 0; i < buffers.size(); ++i) {
        QJsonObject buffer = buffers.at(i).toObject();
        const QString uri = buffer.value(key("uri")).toString();
        if (uri.startsWith(QLatin1String("data:")))
            continue;
        const QString name = QStringLiteral("buffer%1.bin").arg(i);
        if (uri.isEmpty()) {
            if (i != 0 || !writeFile(to.filePath(name), glbBuffer))
                return false;
        } else {
            const QFileInfo source(
                from.filePath(QString::fromUtf8(QByteArray::fromPercentEncoding(uri.toUtf8()))));
            if (!source.isFile() || !QFile::link(source.absoluteFilePath(), to.filePath(name)))
                return false;
        }
        buffer.insert(key("uri"), name);
        buffers.replace(i, buffer);
    }
    gltf.insert(key("buffers"), buffers);
    return true;
}

// All of them, whichever scenes the file has: an element of another scene is one that is not missed.
QJsonArray topNodes(const QJsonArray& nodes)
{
    QSet<int> below;
    for (const QJsonValue& node : nodes) {
        const QJsonArray children = node.toObject().value(key("children")).toArray();
        for (const QJsonValue& child : children)
            below.insert(child.toInt(-1));
    }
    QJsonArray top;
    for (int i = 0; i < nodes.size(); ++i) {
        if (!below.contains(i))
            top.append(i);
    }
    return top;
}

QJsonObject withoutMaterials(QJsonObject mesh)
{
    QJsonArray primitives = mesh.value(key("primitives")).toArray();
    for (int i = 0; i < primitives.size(); ++i) {
        QJsonObject primitive = primitives.at(i).toObject();
        const QJsonObject attributes = primitive.value(key("attributes")).toObject();
        primitive.remove(key("material"));
        primitive.remove(key("targets"));
        primitive.insert(key("attributes"),
                         QJsonObject{{key("POSITION"), attributes.value(key("POSITION"))}});
        primitives.replace(i, primitive);
    }
    mesh.insert(key("primitives"), primitives);
    mesh.remove(key("name"));
    return mesh;
}

} // namespace

QString plainGltf(const QString& path, const QTemporaryDir& folder)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QByteArray json = file.readAll();
    QByteArray glbBuffer;
    if (json.startsWith("glTF") && !splitGlb(QByteArray(json), json, glbBuffer))
        return {};
    QJsonObject gltf = QJsonDocument::fromJson(json).object();
    if (!gltf.value(key("asset")).toObject().value(key("version")).toString().startsWith(QLatin1Char('2')))
        return {};
    for (const char* const unused : {"materials", "textures", "images", "samplers", "animations", "skins",
                                     "cameras", "extensionsUsed", "extensions"})
        gltf.remove(key(unused));

    const QJsonArray meshes = gltf.value(key("meshes")).toArray();
    QJsonArray nodes = gltf.value(key("nodes")).toArray();
    QJsonArray ownMeshes;
    for (int i = 0; i < nodes.size(); ++i) {
        QJsonObject node = nodes.at(i).toObject();
        node.remove(key("skin"));
        node.remove(key("camera"));
        if (node.contains(key("mesh"))) {
            const int mesh = node.value(key("mesh")).toInt(-1);
            if (mesh < 0 || mesh >= meshes.size())
                return {};
            node.insert(key("mesh"), ownMeshes.size());
            ownMeshes.append(withoutMaterials(meshes.at(mesh).toObject()));
        }
        nodes.replace(i, node);
    }
    if (ownMeshes.isEmpty())
        return {};
    gltf.insert(key("scenes"), QJsonArray{QJsonObject{{key("nodes"), topNodes(nodes)}}});
    gltf.insert(key("scene"), 0);
    gltf.insert(key("nodes"), nodes);
    gltf.insert(key("meshes"), ownMeshes);
    const QString written = folder.filePath(QStringLiteral("model.gltf"));
    if (!bringBuffers(gltf, QFileInfo(path).absoluteDir(), folder, glbBuffer) ||
        !writeFile(written, QJsonDocument(gltf).toJson(QJsonDocument::Compact)))
        return {};
    return written;
}
