// planviewer-model FILE: reads a model file with Qt 3D's scene loader and writes its geometry to the standard
// output. A program of its own, because an importer that meets a file it does not expect may end it, or take
// minutes; planviewer outlives the one and can cut off the other.
#include "GltfFile.h"
#include "ReaderExit.h"
#include "SceneGeometry.h"

#include <GraphicsCheck.h>
#include <ModelFile.h>

#include <Qt3DCore/QAspectEngine>
#include <Qt3DCore/QEntity>
#include <Qt3DRender/QNoDraw>
#include <Qt3DRender/QRenderAspect>
#include <Qt3DRender/QRenderSettings>
#include <Qt3DRender/QRenderSurfaceSelector>
#include <Qt3DRender/QSceneLoader>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>
#include <QtCore/QUrl>
#include <QtGui/QGuiApplication>
#include <QtGui/QOffscreenSurface>

#include <cstdio>
#include <cstdlib>

using Qt3DRender::QSceneLoader;

namespace {

int writeScene(const Qt3DCore::QEntity& root)
{
    const ModelData data = sceneGeometry(root);
    if (data.isEmpty())
        return ReaderExit::NoGeometry;
    QFile out;
    if (!out.open(stdout, QIODevice::WriteOnly) || !writeModelData(data, out) || !out.flush())
        return ReaderExit::NotWritten;
    return ReaderExit::Done;
}

// Takes the importer's scene apart only with the process: node by node, that takes longer than reading it.
[[noreturn]] void leave(int result, QTemporaryDir& folder)
{
    folder.remove();
    std::fflush(nullptr);
    std::_Exit(result);
}

} // namespace

int main(int argc, char* argv[])
{
    // What importers say of parts that are not shown helps nobody.
    qputenv("QT_LOGGING_RULES", "Qt3D.*=false;*.debug=false;*.warning=false");
    QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2) {
        std::fputs("usage: planviewer-model FILE\nplanviewer runs it to read a model file\n", stderr);
        return ReaderExit::Usage;
    }
    const QString& path = arguments.at(1);
    if (!ModelFile::fault(path).isEmpty())
        return ReaderExit::NotAModel;
    if (!GraphicsCheck::fault().isEmpty())
        return ReaderExit::NoGraphics;
    QTemporaryDir folder;
    const QString prepared =
        ModelFile::isGltf(path) ? plainGltf(path, folder) : QFileInfo(path).absoluteFilePath();
    if (prepared.isEmpty())
        return ReaderExit::NotAModel;

    // The loader works in the frames of a scene that draws nothing.
    QOffscreenSurface surface;
    surface.setFormat(GraphicsCheck::format());
    surface.create();
    auto* const root = new Qt3DCore::QEntity;
    auto* const settings = new Qt3DRender::QRenderSettings(root);
    auto* const selector = new Qt3DRender::QRenderSurfaceSelector;
    selector->setSurface(&surface);
    new Qt3DRender::QNoDraw(selector);
    settings->setActiveFrameGraph(selector);
    root->addComponent(settings);
    auto* const model = new Qt3DCore::QEntity(root);
    auto* const loader = new QSceneLoader(model);
    model->addComponent(loader);
    QObject::connect(loader, &QSceneLoader::statusChanged, [&](QSceneLoader::Status status) {
        if (status == QSceneLoader::Ready)
            leave(writeScene(*model), folder);
        if (status == QSceneLoader::Error)
            leave(ReaderExit::NotAModel, folder);
    });
    Qt3DCore::QAspectEngine engine;
    engine.registerAspect(new Qt3DRender::QRenderAspect);
    engine.setRootEntity(Qt3DCore::QEntityPtr(root));
    loader->setSource(QUrl::fromLocalFile(prepared));
    return QCoreApplication::exec();
}
