#include <KvNetwork/NetworkEventLoop.h>

#include "KvReplyOutcome.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonDocument>
#include <QtCore/QThread>
#include <QtNetwork/QNetworkReply>

NetworkEventLoop::NetworkEventLoop(QNetworkReply* reply, QObject* parent)
    : QObject(parent)
    , m_reply(reply)
    , m_outcome(KvReplyOutcome::of(reply))
{
    // A reply that did not come from NetworkManager gets the same care.
    if (reply != nullptr && m_outcome.isNull())
        m_outcome = new KvReplyOutcome(reply, KvNetworkLimits());
}

NetworkEventLoop::~NetworkEventLoop()
{
    if (!m_outcome.isNull() && !m_outcome->isConcluded())
        m_outcome->end(KvNetworkReport::Aborted, QStringLiteral("nobody waits for the reply any more"));
    if (m_reply.isNull())
        return;
    // A reply must not be deleted while it emits its finished(). It did so inside an event loop that has
    // returned since when fewer are running now; then it can go at once. Otherwise it goes when control is
    // back in the loop that runs now, which a slot that sends thousands of requests would reach too late for
    // all of them.
    if (!m_outcome.isNull() && m_outcome->concludedAtLoopLevel() > QThread::currentThread()->loopLevel())
        delete m_reply.data();
    else
        m_reply->deleteLater();
}

int NetworkEventLoop::exec(QEventLoop::ProcessEventsFlags flags)
{
    if (!m_outcome.isNull() && !m_outcome->isConcluded()) {
        QEventLoop loop;
        connect(m_outcome, &KvReplyOutcome::concluded, &loop, &QEventLoop::quit);
        if (QCoreApplication::instance() != nullptr)
            connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &loop, &QEventLoop::quit);
        loop.exec(flags);
        if (!m_outcome.isNull() && !m_outcome->isConcluded()) {
            m_outcome->end(KvNetworkReport::Aborted, QStringLiteral("the application quits"));
            return -1;
        }
    }
    return m_outcome.isNull() ? -1 : 0;
}

bool NetworkEventLoop::isSuccessful() const
{
    return !m_outcome.isNull() && m_outcome->isSuccessful();
}

QJsonObject NetworkEventLoop::object() const
{
    return m_outcome.isNull() ? QJsonObject() : m_outcome->document().object();
}

QList<QJsonObject> NetworkEventLoop::objectList() const
{
    const QJsonArray elements = array();
    QList<QJsonObject> objects;
    objects.reserve(elements.size());
    for (const QJsonValue& element : elements) {
        if (element.isObject())
            objects.append(element.toObject());
    }
    return objects;
}

QJsonArray NetworkEventLoop::array() const
{
    return m_outcome.isNull() ? QJsonArray() : m_outcome->document().array();
}
