#include "SceneEnd.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QPointer>

#include <cstring>

SceneEnd::SceneEnd()
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool SceneEnd::isPossible()
{
    if (!m_isAsked)
        QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
    return m_isAsked;
}

bool SceneEnd::eventFilter(QObject* watched, QEvent* event)
{
    static QPointer<QObject> last;
    if (event->type() != QEvent::MetaCall || watched == last ||
        std::strcmp(watched->metaObject()->className(), "Qt3DRender::Render::OffscreenSurfaceHelper") != 0)
        return false;
    last = watched;
    m_isAsked = true;
    QCoreApplication::instance()->removeEventFilter(this);
    return false;
}
