#include "BuildingScene.h"

#include "GraphicsCheck.h"
#include "LooksTexture.h"
#include "SceneEnd.h"

#include <Qt3DCore/QAspectEngine>
#include <Qt3DCore/QEntity>
#include <Qt3DLogic/QFrameAction>
#include <Qt3DLogic/QLogicAspect>
#include <Qt3DRender/QAttribute>
#include <Qt3DRender/QBuffer>
#include <Qt3DRender/QCamera>
#include <Qt3DRender/QCameraLens>
#include <Qt3DRender/QCameraSelector>
#include <Qt3DRender/QClearBuffers>
#include <Qt3DRender/QEffect>
#include <Qt3DRender/QGeometry>
#include <Qt3DRender/QGeometryRenderer>
#include <Qt3DRender/QGraphicsApiFilter>
#include <Qt3DRender/QLayer>
#include <Qt3DRender/QLayerFilter>
#include <Qt3DRender/QMaterial>
#include <Qt3DRender/QNoDraw>
#include <Qt3DRender/QParameter>
#include <Qt3DRender/QRenderAspect>
#include <Qt3DRender/QRenderCapture>
#include <Qt3DRender/QRenderPass>
#include <Qt3DRender/QRenderSettings>
#include <Qt3DRender/QRenderSurfaceSelector>
#include <Qt3DRender/QRenderTarget>
#include <Qt3DRender/QRenderTargetOutput>
#include <Qt3DRender/QRenderTargetSelector>
#include <Qt3DRender/QShaderProgram>
#include <Qt3DRender/QTechnique>
#include <Qt3DRender/QViewport>

using namespace Qt3DRender;

namespace {

// An element that is not drawn lands outside of what is seen; points beyond the clip of a growing one at its
// end, which closes it without a gap.
constexpr char vertexShader[] = R"(#version 150
in vec3 vertexPosition;
in float vertexElement;
out vec3 place;
flat out vec4 look;
uniform mat4 modelMatrix;
uniform mat4 mvp;
uniform sampler2D colours;
uniform sampler2D shapes;

void main()
{
    int element = int(vertexElement + 0.5);
    ivec2 at = ivec2(element % 1024, element / 1024);
    look = texelFetch(colours, at, 0);
    vec4 shape = texelFetch(shapes, at, 0);
    vec3 p = vertexPosition;
    if (shape.z < 0.5)
        p.x = clamp(p.x, shape.x, shape.y);
    else if (shape.z < 1.5)
        p.y = clamp(p.y, shape.x, shape.y);
    else
        p.z = clamp(p.z, shape.x, shape.y);
    p.y += shape.w;
    place = p;
    gl_Position = look.a < 0.25 ? vec4(2.0, 2.0, 2.0, 1.0) : mvp * vec4(p, 1.0);
}
)";

// Faces are as bright as they lie flat, so that an upper side has the colour itself. Their direction comes
// from the picture, as the ends of growing elements have none in the model.
constexpr char fragmentShader[] = R"(#version 150
in vec3 place;
flat in vec4 look;
out vec4 fragColor;

void main()
{
    if (look.a < 0.75 && (int(gl_FragCoord.x) + 2 * int(gl_FragCoord.y)) % 4 != 0)
        discard;
    vec3 side = cross(dFdx(place), dFdy(place));
    vec3 normal = abs(side) / max(length(side), 1e-20);
    float light = min(1.0, 0.6 + 0.401 * normal.y + 0.16 * normal.x);
    fragColor = vec4(look.rgb * light, 1.0);
}
)";

QParameter* parameter(const char* name, QAbstractTexture* texture, Qt3DCore::QNode* parent)
{
    auto* const made = new QParameter(QLatin1String(name), texture);
    made->setParent(parent);
    return made;
}

QMaterial* newMaterial(QAbstractTexture* colours, QAbstractTexture* shapes, Qt3DCore::QNode* parent)
{
    auto* const program = new QShaderProgram;
    program->setVertexShaderCode(QByteArray(vertexShader));
    program->setFragmentShaderCode(QByteArray(fragmentShader));
    auto* const pass = new QRenderPass;
    pass->setShaderProgram(program);
    auto* const technique = new QTechnique;
    technique->graphicsApiFilter()->setApi(QGraphicsApiFilter::OpenGL);
    technique->graphicsApiFilter()->setProfile(QGraphicsApiFilter::CoreProfile);
    technique->graphicsApiFilter()->setMajorVersion(3);
    technique->graphicsApiFilter()->setMinorVersion(2);
    technique->addRenderPass(pass);
    auto* const effect = new QEffect;
    effect->addTechnique(technique);
    auto* const material = new QMaterial(parent);
    material->setEffect(effect);
    material->addParameter(parameter("colours", colours, material));
    material->addParameter(parameter("shapes", shapes, material));
    return material;
}

QGeometryRenderer* newMesh(const BuildingModel& model, Qt3DCore::QNode* parent)
{
    auto* const mesh = new QGeometryRenderer(parent);
    auto* const geometry = new QGeometry(mesh);
    auto* const vertices = new Qt3DRender::QBuffer(geometry);
    vertices->setData(model.vertices());
    auto* const indices = new Qt3DRender::QBuffer(geometry);
    const QByteArray order = model.indices();
    indices->setData(order);
    const uint count = model.data().vertexCount();
    constexpr uint stride = uint(BuildingModel::vertexSize);
    geometry->addAttribute(new QAttribute(vertices, QAttribute::defaultPositionAttributeName(),
                                          QAttribute::Float, 3, count, 0, stride, geometry));
    geometry->addAttribute(new QAttribute(vertices, QStringLiteral("vertexElement"), QAttribute::Float, 1,
                                          count, 3 * sizeof(float), stride, geometry));
    auto* const triangles = new QAttribute(indices, QAttribute::UnsignedInt, 1,
                                           uint(order.size()) / uint(sizeof(quint32)), 0, 0, geometry);
    triangles->setAttributeType(QAttribute::IndexAttribute);
    geometry->addAttribute(triangles);
    mesh->setGeometry(geometry);
    return mesh;
}

QAbstractTexture* newTarget(QRenderTarget* target, QRenderTargetOutput::AttachmentPoint point,
                            QAbstractTexture::TextureFormat format, const QSize& size)
{
    auto* const texture = new QTexture2D;
    texture->setGenerateMipMaps(false);
    texture->setFormat(format);
    texture->setSize(size.width(), size.height());
    auto* const output = new QRenderTargetOutput(target);
    output->setAttachmentPoint(point);
    output->setTexture(texture);
    target->addOutput(output);
    return texture;
}

} // namespace

struct BuildingScene::Parts
{
    struct Drawn
    {
        QLayer* layer = nullptr;
        QViewport* viewport = nullptr;
        QNoDraw* off = nullptr;
        Qt3DCore::QEntity* entity = nullptr;
        LooksTexture* colours = nullptr;
        LooksTexture* shapes = nullptr;
    };

    SceneEnd end; // before the engine
    Qt3DCore::QAspectEngine engine;
    Qt3DCore::QEntity* root = new Qt3DCore::QEntity;
    QRenderSettings* settings = new QRenderSettings(root);
    QCamera* camera = new QCamera(root);
    QClearBuffers* clear = nullptr;
    QFrameGraphNode* views = nullptr;
    QRenderCapture* capture = nullptr;
    Drawn drawn[viewCount];
    Qt3DCore::QEntity* building = nullptr;
    std::shared_ptr<const BuildingModel> model;
    QGeometryRenderer* mesh = nullptr;

    QViewport* addView(QLayer* layer)
    {
        auto* const viewport = new QViewport(views);
        auto* const selector = new QCameraSelector(viewport);
        selector->setCamera(camera);
        auto* const filter = new QLayerFilter(selector);
        filter->addLayer(layer);
        return viewport;
    }
};

BuildingScene::BuildingScene(QObject* surface, const QSize& pictureSize, QObject* parent)
    : QObject(parent)
    , m_parts(std::make_unique<Parts>())
{
    Parts& p = *m_parts;
    auto* const selector = new QRenderSurfaceSelector(p.settings);
    selector->setSurface(surface);
    p.views = selector;
    if (!pictureSize.isEmpty()) {
        selector->setExternalRenderTargetSize(pictureSize);
        auto* const targetSelector = new QRenderTargetSelector(selector);
        auto* const target = new QRenderTarget(targetSelector);
        newTarget(target, QRenderTargetOutput::Color0, QAbstractTexture::RGBA8_UNorm, pictureSize);
        newTarget(target, QRenderTargetOutput::Depth, QAbstractTexture::D24, pictureSize);
        targetSelector->setTarget(target);
        p.views = targetSelector;
    }
    p.clear = new QClearBuffers(p.views);
    p.clear->setBuffers(QClearBuffers::ColorDepthBuffer);
    p.clear->setClearColor(Qt::white);
    new QNoDraw(p.clear);
    for (Parts::Drawn& drawn : p.drawn) {
        drawn.layer = new QLayer(p.root);
        drawn.viewport = p.addView(drawn.layer);
        drawn.off = new QNoDraw(drawn.viewport->findChild<QLayerFilter*>());
    }
    // A branch of its own after the views, drawing nothing, so that a picture has them all.
    QViewport* const last = p.addView(new QLayer(p.root));
    p.capture = new QRenderCapture(last->findChild<QLayerFilter*>());
    p.settings->setActiveFrameGraph(selector);
    p.settings->setRenderPolicy(QRenderSettings::OnDemand);
    p.root->addComponent(p.settings);
    setViews(true, false);

    // Qt 3D makes its context in this format, whatever that of the surface is; without a depth buffer what
    // comes last in the file would stand in front.
    QSurfaceFormat::setDefaultFormat(GraphicsCheck::format());
    p.engine.registerAspect(new QRenderAspect);
    p.engine.registerAspect(new Qt3DLogic::QLogicAspect);
    p.engine.setRootEntity(Qt3DCore::QEntityPtr(p.root));
}

BuildingScene::~BuildingScene()
{
    if (m_parts->end.isPossible()) {
        m_parts->engine.setRootEntity({});
    } else {
        m_parts->settings->setRenderPolicy(QRenderSettings::OnDemand);
        m_parts.release(); // stays, without anything that it could draw on
    }
}

void BuildingScene::setModel(const std::shared_ptr<const BuildingModel>& model)
{
    Parts& p = *m_parts;
    delete p.building;
    p.building = nullptr;
    for (Parts::Drawn& drawn : p.drawn) {
        drawn.entity = nullptr;
        drawn.colours = nullptr;
        drawn.shapes = nullptr;
    }
    p.model = model;
    if (!model || model->isEmpty())
        return;
    p.building = new Qt3DCore::QEntity(p.root);
    p.mesh = newMesh(*model, p.building);
}

void BuildingScene::setLooks(View view, ElementLooks& looks)
{
    Parts& p = *m_parts;
    if (!p.building)
        return;
    Parts::Drawn& drawn = p.drawn[view];
    const ElementLooks::Rows colours = looks.takeChangedColours();
    const ElementLooks::Rows shapes = looks.takeChangedShapes();
    if (drawn.entity) {
        drawn.colours->sendRows(colours.first, colours.count, looks.colours());
        drawn.shapes->sendRows(shapes.first, shapes.count, looks.shapes());
        return;
    }
    drawn.entity = new Qt3DCore::QEntity(p.building);
    drawn.colours = new LooksTexture(LooksTexture::Values::Bytes, ElementLooks::width, looks.rows(),
                                     looks.colours(), drawn.entity);
    drawn.shapes = new LooksTexture(LooksTexture::Values::Floats, ElementLooks::width, looks.rows(),
                                    looks.shapes(), drawn.entity);
    drawn.entity->addComponent(newMaterial(drawn.colours, drawn.shapes, drawn.entity));
    drawn.entity->addComponent(p.mesh);
    drawn.entity->addComponent(drawn.layer);
}

void BuildingScene::setViews(bool planned, bool actual)
{
    const bool isDrawn[viewCount] = {planned, actual};
    const double width = planned && actual ? 0.5 : 1.0;
    double left = 0.0;
    for (int i = 0; i < viewCount; ++i) {
        // To disable a branch leaves out what its nodes ask for, and draws it all the same.
        m_parts->drawn[i].off->setEnabled(!isDrawn[i]);
        if (!isDrawn[i])
            continue;
        m_parts->drawn[i].viewport->setNormalizedRect(QRectF(left, 0.0, width, 1.0));
        left += width;
    }
}

void BuildingScene::setCamera(const SceneCamera& camera, double aspect)
{
    QCamera& out = *m_parts->camera;
    out.lens()->setPerspectiveProjection(float(SceneCamera::fieldOfView()), float(aspect),
                                         float(camera.nearPlane()), float(camera.farPlane()));
    out.setPosition(camera.position());
    out.setViewCenter(camera.centre());
    out.setUpVector(camera.up());
}

void BuildingScene::setBackground(const QColor& colour)
{
    m_parts->clear->setClearColor(colour);
}

void BuildingScene::takePicture(std::function<void(const QImage&)> take)
{
    QRenderCaptureReply* const reply = m_parts->capture->requestCapture();
    connect(reply, &QRenderCaptureReply::completed, this, [reply, take = std::move(take)] {
        const QImage image = reply->image();
        reply->deleteLater();
        take(image);
    });
}

void BuildingScene::drawAlways(std::function<void()> frameDrawn)
{
    m_parts->settings->setRenderPolicy(QRenderSettings::Always);
    auto* const action = new Qt3DLogic::QFrameAction;
    connect(action, &Qt3DLogic::QFrameAction::triggered, this,
            [frameDrawn = std::move(frameDrawn)] { frameDrawn(); });
    m_parts->root->addComponent(action);
}
