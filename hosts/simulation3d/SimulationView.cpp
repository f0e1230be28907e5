#include "SimulationView.h"

#include "ElementPick.h"
#include "GraphicsCheck.h"

#include <QtGui/QMouseEvent>
#include <QtGui/QWheelEvent>
#include <QtGui/QWindow>
#include <QtWidgets/QApplication>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace {

constexpr double degreesAcross = 240.0; // of a turn over the widget's height
constexpr double keyTurn = 10.0;        // degrees
constexpr double keyMove = 0.05;        // of the height
constexpr double keyZoom = 1.15;

} // namespace

SimulationView::SimulationView(QWidget* parent)
    : QWidget(parent)
    , m_window(new QWindow)
{
    m_window->setSurfaceType(QSurface::OpenGLSurface);
    m_window->setFormat(GraphicsCheck::format());
    m_window->installEventFilter(this);
    m_container = QWidget::createWindowContainer(m_window, this);
    m_container->setFocusPolicy(Qt::StrongFocus);
    m_container->setMinimumSize(160, 120);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_container);
    setFocusProxy(m_container);
    m_scene = std::make_unique<BuildingScene>(m_window);
}

SimulationView::~SimulationView()
{
    // The window, which the scene draws on, goes with the container and after the scene.
    m_window->removeEventFilter(this);
    m_scene.reset();
}

void SimulationView::setModel(const std::shared_ptr<const BuildingModel>& model)
{
    m_model = model;
    for (auto& looks : m_looks)
        looks = model && !model->isEmpty() ? std::make_unique<ElementLooks>(*model) : nullptr;
    m_scene->setModel(model);
    update3d();
    if (model)
        m_camera.fit(model->box(), aspect());
    sendCamera();
}

void SimulationView::setViews(bool planned, bool actual)
{
    m_isShown[BuildingScene::Planned] = planned;
    m_isShown[BuildingScene::Actual] = actual;
    m_scene->setViews(planned, actual);
    update3d();
    sendCamera();
}

void SimulationView::update3d()
{
    for (int view = 0; view < BuildingScene::viewCount; ++view) {
        if (m_looks[view] && m_isShown[view])
            m_scene->setLooks(BuildingScene::View(view), *m_looks[view]);
    }
}

void SimulationView::setBackground(const QColor& colour)
{
    m_scene->setBackground(colour);
}

double SimulationView::aspect() const
{
    const double views = m_isShown[BuildingScene::Planned] && m_isShown[BuildingScene::Actual] ? 2.0 : 1.0;
    return std::max(1, m_container->width()) / views / std::max(1, m_container->height());
}

void SimulationView::setCamera(const SceneCamera& camera)
{
    m_camera = camera;
    sendCamera();
    Q_EMIT cameraChanged();
}

void SimulationView::sendCamera()
{
    m_scene->setCamera(m_camera, aspect());
}

void SimulationView::fit()
{
    if (!m_model)
        return;
    Box all = Box::nothing();
    const auto& looks = m_looks[BuildingScene::Planned];
    for (int i = 0; i < m_model->elements().size(); ++i) {
        Box box = m_model->elements().at(i).box;
        const QVector3D lift(0.0F, looks->lift(i), 0.0F);
        box.low += lift;
        box.high += lift;
        all.unite(box);
    }
    SceneCamera camera = m_camera;
    camera.fitFromHere(all, aspect());
    setCamera(camera);
}

void SimulationView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    sendCamera();
}

BuildingScene::View SimulationView::viewAt(double across, double& within) const
{
    within = across;
    if (!m_isShown[BuildingScene::Planned])
        return BuildingScene::Actual;
    if (!m_isShown[BuildingScene::Actual])
        return BuildingScene::Planned;
    within = across < 0.5 ? across * 2.0 : across * 2.0 - 1.0;
    return across < 0.5 ? BuildingScene::Planned : BuildingScene::Actual;
}

int SimulationView::elementAt(const QPoint& place, BuildingScene::View* view) const
{
    double within = 0.0;
    const BuildingScene::View found = viewAt((place.x() + 0.5) / std::max(1, m_container->width()), within);
    if (view)
        *view = found;
    if (!m_looks[found])
        return BuildingModel::none;
    const QPointF at(within, (place.y() + 0.5) / std::max(1, m_container->height()));
    return pickElement(*m_model, *m_looks[found], m_camera.ray(at, aspect()));
}

QPoint SimulationView::placeOf(int element, BuildingScene::View view) const
{
    if (!m_looks[view])
        return {};
    const Box box = m_looks[view]->drawnBox(element);
    if (box.isNothing())
        return {};
    const QPointF at = m_camera.seenAt(box.centre(), aspect());
    const bool isHalf = m_isShown[BuildingScene::Planned] && m_isShown[BuildingScene::Actual];
    const double across = isHalf ? (at.x() + (view == BuildingScene::Actual ? 1.0 : 0.0)) / 2.0 : at.x();
    return {int(std::floor(across * m_container->width())), int(std::floor(at.y() * m_container->height()))};
}

void SimulationView::press(const QPoint& place)
{
    m_pressedAt = place;
    m_draggedTo = place;
    m_isDragged = false;
}

bool SimulationView::drag(const QPoint& place, Qt::MouseButtons buttons, Qt::KeyboardModifiers keys)
{
    if (buttons == Qt::NoButton)
        return false;
    if (!m_isDragged && (place - m_pressedAt).manhattanLength() < QApplication::startDragDistance())
        return true;
    m_isDragged = true;
    const QPointF way = QPointF(place - m_draggedTo) / std::max(1, m_container->height());
    m_draggedTo = place;
    SceneCamera camera = m_camera;
    if (buttons.testFlag(Qt::LeftButton) && !keys.testFlag(Qt::ShiftModifier))
        camera.orbit(way.x() * degreesAcross, way.y() * degreesAcross);
    else
        camera.pan(way.x(), way.y());
    setCamera(camera);
    return true;
}

bool SimulationView::press(int key, Qt::KeyboardModifiers keys)
{
    SceneCamera camera = m_camera;
    const bool isMoving = keys.testFlag(Qt::ShiftModifier);
    const double right = key == Qt::Key_Right ? 1.0 : key == Qt::Key_Left ? -1.0 : 0.0;
    const double up = key == Qt::Key_Up ? 1.0 : key == Qt::Key_Down ? -1.0 : 0.0;
    switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (isMoving)
            camera.pan(right * keyMove, -up * keyMove);
        else
            camera.orbit(right * keyTurn, up * keyTurn);
        break;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        camera.zoom(keyZoom);
        break;
    case Qt::Key_Minus:
        camera.zoom(1.0 / keyZoom);
        break;
    case Qt::Key_Home:
    case Qt::Key_F:
        fit();
        return true;
    default:
        return false;
    }
    setCamera(camera);
    return true;
}

bool SimulationView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_window)
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        press(static_cast<QMouseEvent*>(event)->pos());
        m_container->setFocus(Qt::MouseFocusReason);
        return true;
    case QEvent::MouseMove: {
        const auto* const mouse = static_cast<QMouseEvent*>(event);
        return drag(mouse->pos(), mouse->buttons(), mouse->modifiers());
    }
    case QEvent::MouseButtonRelease: {
        const auto* const mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::LeftButton && !m_isDragged && mouse->buttons() == Qt::NoButton)
            Q_EMIT elementClicked(elementAt(mouse->pos()), mouse->modifiers().testFlag(Qt::ControlModifier));
        return true;
    }
    case QEvent::Wheel: {
        constexpr double notch = 120.0;
        SceneCamera camera = m_camera;
        camera.zoom(std::pow(keyZoom, static_cast<QWheelEvent*>(event)->angleDelta().y() / notch));
        setCamera(camera);
        return true;
    }
    case QEvent::KeyPress: {
        const auto* const key = static_cast<QKeyEvent*>(event);
        return press(key->key(), key->modifiers());
    }
    default:
        return false;
    }
}
