#include "GraphicsCheck.h"

#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>

namespace {

constexpr int major = 3;
constexpr int minor = 2;

bool canDraw()
{
    QOffscreenSurface surface;
    surface.setFormat(GraphicsCheck::format());
    surface.create();
    QOpenGLContext context;
    context.setFormat(GraphicsCheck::format());
    if (!surface.isValid() || !context.create() || !context.makeCurrent(&surface))
        return false;
    const auto version = context.format().version();
    context.doneCurrent();
    return version >= qMakePair(major, minor) && !context.isOpenGLES();
}

} // namespace

QSurfaceFormat GraphicsCheck::format()
{
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setVersion(major, minor);
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setDepthBufferSize(24);
    return format;
}

const QString& GraphicsCheck::fault()
{
    static const QString fault = canDraw()
                                     ? QString()
                                     : tr("the building cannot be shown: there is no OpenGL 3.2 here; "
                                          "everything else works; to see it, use "
                                          "a desktop with a graphics driver or set LIBGL_ALWAYS_SOFTWARE=1");
    return fault;
}
