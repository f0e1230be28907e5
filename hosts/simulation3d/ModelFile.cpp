#include "ModelFile.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace {

constexpr int headSize = 4096;

// A text file that is an OBJ file has one of its statements at the start of a line.
bool looksLikeObj(const QByteArray& head)
{
    if (head.contains('\0'))
        return false;
    const QList<QByteArray> lines = head.split('\n');
    for (const QByteArray& line : lines) {
        const QByteArray word = line.trimmed().split(' ').first();
        if (word == "v" || word == "vn" || word == "vt" || word == "f" || word == "o" || word == "g" ||
            word == "mtllib" || word == "usemtl" || word == "s")
            return true;
        if (!word.isEmpty() && !word.startsWith('#'))
            return false;
    }
    return true; // nothing but comments so far
}

bool looksLikeModel(const QString& path, const QByteArray& head)
{
    if (path.endsWith(QLatin1String(".glb"), Qt::CaseInsensitive))
        return head.startsWith("glTF");
    if (path.endsWith(QLatin1String(".gltf"), Qt::CaseInsensitive)) {
        QByteArray text = head;
        if (text.startsWith("\xEF\xBB\xBF")) // byte order mark
            text.remove(0, 3);
        return text.trimmed().startsWith('{');
    }
    return looksLikeObj(head);
}

} // namespace

bool ModelFile::isGltf(const QString& path)
{
    return path.endsWith(QLatin1String(".gltf"), Qt::CaseInsensitive) ||
           path.endsWith(QLatin1String(".glb"), Qt::CaseInsensitive);
}

QString ModelFile::dialogFilter()
{
    return tr("Building models (*.gltf *.glb *.obj)");
}

QString ModelFile::fault(const QString& path)
{
    const QString name = QDir::toNativeSeparators(path);
    const QFileInfo info(path);
    if (!info.exists())
        return tr("there is no model file %1; choose another one").arg(name);
    if (!info.isFile())
        return tr("%1 is no file; choose a model file (.gltf, .glb or .obj)").arg(name);
    if (!isGltf(path) && !path.endsWith(QLatin1String(".obj"), Qt::CaseInsensitive))
        return tr("%1 is no model file by its name; choose a .gltf, .glb or .obj file").arg(name);
    if (info.size() == 0)
        return tr("the model file %1 is empty; export the model again").arg(name);
    if (info.size() > largestSize) {
        constexpr qint64 megabyte = 1024 * 1024;
        return tr("the model file %1 has %2 MB, more than the %3 MB that are read; export the model without "
                  "details that the schedule does not name")
            .arg(name)
            .arg(info.size() / megabyte)
            .arg(largestSize / megabyte);
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return tr("the model file %1 cannot be read: %2; check its permissions")
            .arg(name, file.errorString());
    if (!looksLikeModel(path, file.read(headSize)))
        return tr("the file %1 holds no building model; choose a glTF or OBJ file").arg(name);
    return {};
}
