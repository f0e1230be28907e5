#include "SceneRenderer.h"

#include "GraphicsCheck.h"

#include <QtGui/QOffscreenSurface>

namespace {

// Drawn larger and made smaller, which smooths the edges.
constexpr int oversize = 2;

bool hasReddish(const QImage& image, int from, int to)
{
    for (int y = 0; y < image.height(); y += oversize) {
        for (int x = from; x < to; x += oversize) {
            const QRgb pixel = image.pixel(x, y);
            if (qRed(pixel) > 100 && qGreen(pixel) == 0 && qBlue(pixel) == 0)
                return true;
        }
    }
    return false;
}

// In both halves, where there are two views.
bool hasBuilding(const QImage& image, bool inBothHalves)
{
    const int middle = inBothHalves ? image.width() / 2 : image.width();
    return hasReddish(image, 0, middle) && (!inBothHalves || hasReddish(image, middle, image.width()));
}

} // namespace

SceneRenderer::SceneRenderer(const std::shared_ptr<const BuildingModel>& model, const QSize& size,
                             bool planned, bool actual, QObject* parent)
    : QObject(parent)
    , m_model(model)
    , m_size(size)
    , m_isDrawn{planned, actual}
    , m_surface(std::make_unique<QOffscreenSurface>())
{
    m_surface->setFormat(GraphicsCheck::format());
    m_surface->create();
    m_scene = std::make_unique<BuildingScene>(m_surface.get(), size * oversize);
    m_scene->setModel(model);
    m_scene->setViews(planned, actual);
    for (auto& looks : m_looks)
        looks = std::make_unique<ElementLooks>(*model);
    m_camera.fit(model->box(), aspect());
}

SceneRenderer::~SceneRenderer()
{
    m_scene.reset();
}

double SceneRenderer::aspect() const
{
    const double views = m_isDrawn[BuildingScene::Planned] && m_isDrawn[BuildingScene::Actual] ? 2.0 : 1.0;
    return double(m_size.width()) / m_size.height() / views;
}

void SceneRenderer::setBackground(const QColor& colour)
{
    m_scene->setBackground(colour);
}

void SceneRenderer::draw(std::function<void(const QImage&)> take)
{
    m_take = std::move(take);
    if (m_isWarm)
        drawNow();
    else
        warmUp();
}

// Triangles and shaders reach the graphics card some frames after they were given to Qt 3D, which tells
// nobody when. All elements at once, seen whole, are looked for until something of them is in the picture.
void SceneRenderer::warmUp()
{
    if (m_tries == 0) {
        SceneCamera camera;
        camera.fit(m_model->box(), aspect());
        m_scene->setCamera(camera, aspect());
        ElementLooks all(*m_model);
        for (int i = 0; i < m_model->elements().size(); ++i)
            all.set(i, {ElementLooks::Solidity::Solid, Qt::red, 1.0, Kv::GrowBottomToTop});
        for (int view = 0; view < BuildingScene::viewCount; ++view) {
            ElementLooks looks = all;
            if (m_isDrawn[view])
                m_scene->setLooks(BuildingScene::View(view), looks);
        }
    }
    m_scene->takePicture([this](const QImage& image) {
        constexpr int mostTries = 300;
        m_isWarm = hasBuilding(image, m_isDrawn[BuildingScene::Planned] && m_isDrawn[BuildingScene::Actual]);
        if (m_isWarm) {
            drawNow();
        } else if (++m_tries < mostTries) {
            warmUp();
        } else {
            const auto take = std::move(m_take);
            take({});
        }
    });
}

void SceneRenderer::drawNow()
{
    m_scene->setCamera(m_camera, aspect());
    for (int view = 0; view < BuildingScene::viewCount; ++view) {
        if (m_isDrawn[view])
            m_scene->setLooks(BuildingScene::View(view), *m_looks[view]);
    }
    m_scene->takePicture([this](const QImage& image) {
        const auto take = std::move(m_take);
        take(image.scaled(m_size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                 .convertToFormat(QImage::Format_RGB32));
    });
}
