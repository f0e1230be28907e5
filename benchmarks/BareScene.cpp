#include "BareScene.h"

#include <Qt3DCore/QAspectEngine>
#include <Qt3DCore/QEntity>
#include <Qt3DLogic/QFrameAction>
#include <Qt3DLogic/QLogicAspect>
#include <Qt3DRender/QAttribute>
#include <Qt3DRender/QBuffer>
#include <Qt3DRender/QCamera>
#include <Qt3DRender/QCameraSelector>
#include <Qt3DRender/QClearBuffers>
#include <Qt3DRender/QEffect>
#include <Qt3DRender/QGeometry>
#include <Qt3DRender/QGeometryRenderer>
#include <Qt3DRender/QGraphicsApiFilter>
#include <Qt3DRender/QMaterial>
#include <Qt3DRender/QNoDraw>
#include <Qt3DRender/QRenderAspect>
#include <Qt3DRender/QRenderCapture>
#include <Qt3DRender/QRenderSettings>
#include <Qt3DRender/QRenderSurfaceSelector>
#include <Qt3DRender/QShaderProgram>
#include <Qt3DRender/QTechnique>
#include <Qt3DRender/QViewport>

#include <SceneEnd.h>

using namespace Qt3DRender;

namespace {

constexpr char vertexShader[] = R"(#version 150
in vec3 vertexPosition;
in vec3 vertexNormal;
in vec3 instancePlace;
in vec3 instanceColour;
flat out vec3 colour;
uniform mat4 mvp;

void main()
{
    vec3 light = vec3(0.16, 0.4, 0.0);
    colour = instanceColour * (0.6 + dot(abs(vertexNormal), light));
    gl_Position = mvp * vec4(vertexPosition + instancePlace, 1.0);
}
)";

constexpr char fragmentShader[] = R"(#version 150
flat in vec3 colour;
out vec4 fragColor;

void main()
{
    fragColor = vec4(colour, 1.0);
}
)";

void append(QByteArray& bytes, const QVector3D& v)
{
    const float values[] = {v.x(), v.y(), v.z()};
    bytes.append(reinterpret_cast<const char*>(values), sizeof values);
}

// Corners and directions of the faces of a box.
QByteArray box(const QVector3D& size)
{
    QByteArray bytes;
    for (int axis = 0; axis < 3; ++axis) {
        for (int high = 0; high < 2; ++high) {
            const int u = (axis + (high ? 1 : 2)) % 3;
            const int v = 3 - axis - u;
            QVector3D normal;
            normal[axis] = high ? 1.0F : -1.0F;
            constexpr int order[] = {0, 1, 2, 0, 2, 3};
            for (const int corner : order) {
                QVector3D point;
                point[axis] = high ? size[axis] : 0.0F;
                point[u] = corner == 1 || corner == 2 ? size[u] : 0.0F;
                point[v] = corner >= 2 ? size[v] : 0.0F;
                append(bytes, point);
                append(bytes, normal);
            }
        }
    }
    return bytes;
}

QMaterial* newMaterial(Qt3DCore::QNode* parent)
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
    return material;
}

QGeometryRenderer* newBoxes(const QVector3D& size, const QVector<QVector3D>& places, Qt3DCore::QNode* parent)
{
    auto* const mesh = new QGeometryRenderer(parent);
    auto* const geometry = new QGeometry(mesh);
    auto* const corners = new Qt3DRender::QBuffer(geometry);
    corners->setData(box(size));
    QByteArray each;
    for (int i = 0; i < places.size(); ++i) {
        append(each, places.at(i));
        append(each, QVector3D(0.3F, 0.5F, float(i % 7) / 7.0F));
    }
    auto* const instances = new Qt3DRender::QBuffer(geometry);
    instances->setData(each);
    constexpr uint cornerCount = 36;
    constexpr uint stride = 6 * sizeof(float);
    const auto add = [&](Qt3DRender::QBuffer* buffer, const QString& name, uint count, uint offset,
                         uint divisor) {
        auto* const attribute =
            new QAttribute(buffer, name, QAttribute::Float, 3, count, offset, stride, geometry);
        attribute->setDivisor(divisor);
        geometry->addAttribute(attribute);
    };
    const uint count = uint(places.size());
    add(corners, QAttribute::defaultPositionAttributeName(), cornerCount, 0, 0);
    add(corners, QAttribute::defaultNormalAttributeName(), cornerCount, 3 * sizeof(float), 0);
    add(instances, QStringLiteral("instancePlace"), count, 0, 1);
    add(instances, QStringLiteral("instanceColour"), count, 3 * sizeof(float), 1);
    mesh->setGeometry(geometry);
    mesh->setVertexCount(int(cornerCount));
    mesh->setInstanceCount(places.size());
    return mesh;
}

} // namespace

struct BareScene::Parts
{
    SceneEnd end; // before the engine
    Qt3DCore::QAspectEngine engine;
    Qt3DCore::QEntity* root = new Qt3DCore::QEntity;
    QRenderSettings* settings = new QRenderSettings(root);
    QRenderCapture* capture = nullptr;
    QObject scope;
};

BareScene::BareScene(QWindow& window, const QVector3D& size, const QVector<QVector3D>& places,
                     const QMatrix4x4& view, const QMatrix4x4& projection, int views,
                     std::function<void()> frameDrawn)
    : m_parts(std::make_unique<Parts>())
{
    Parts& p = *m_parts;
    auto* const camera = new QCamera(p.root);
    camera->setProjectionMatrix(projection);
    const QMatrix4x4 back = view.inverted();
    camera->setPosition(back.column(3).toVector3D());
    camera->setUpVector(back.column(1).toVector3D());
    camera->setViewCenter(camera->position() - back.column(2).toVector3D());

    auto* const selector = new QRenderSurfaceSelector(p.settings);
    selector->setSurface(&window);
    auto* const clear = new QClearBuffers(selector);
    clear->setBuffers(QClearBuffers::ColorDepthBuffer);
    clear->setClearColor(Qt::white);
    new QNoDraw(clear);
    for (int i = 0; i < views; ++i) {
        auto* const viewport = new QViewport(selector);
        viewport->setNormalizedRect(QRectF(double(i) / views, 0.0, 1.0 / views, 1.0));
        auto* const selected = new QCameraSelector(viewport);
        selected->setCamera(camera);
        if (i == views - 1)
            p.capture = new QRenderCapture(selected);
    }
    p.settings->setActiveFrameGraph(selector);
    p.settings->setRenderPolicy(QRenderSettings::Always);
    p.root->addComponent(p.settings);

    auto* const boxes = new Qt3DCore::QEntity(p.root);
    boxes->addComponent(newBoxes(size, places, boxes));
    boxes->addComponent(newMaterial(boxes));
    auto* const action = new Qt3DLogic::QFrameAction;
    QObject::connect(action, &Qt3DLogic::QFrameAction::triggered, &p.scope,
                     [frameDrawn = std::move(frameDrawn)] { frameDrawn(); });
    p.root->addComponent(action);
    p.engine.registerAspect(new QRenderAspect);
    p.engine.registerAspect(new Qt3DLogic::QLogicAspect);
    p.engine.setRootEntity(Qt3DCore::QEntityPtr(p.root));
}

BareScene::~BareScene()
{
    if (m_parts->end.isPossible()) {
        m_parts->engine.setRootEntity({});
    } else {
        m_parts->settings->setRenderPolicy(QRenderSettings::OnDemand);
        m_parts.release();
    }
}

void BareScene::takePicture(std::function<void(const QImage&)> take)
{
    QRenderCaptureReply* const reply = m_parts->capture->requestCapture();
    QObject::connect(reply, &QRenderCaptureReply::completed, &m_parts->scope,
                     [reply, take = std::move(take)] {
                         const QImage image = reply->image();
                         reply->deleteLater();
                         take(image);
                     });
}
