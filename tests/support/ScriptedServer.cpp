#include <support/ScriptedServer.h>

#include <support/ScriptedConnection.h>

#include <QtCore/QStringList>
#include <QtNetwork/QHostAddress>

namespace KvTest {

ScriptedServer::ScriptedServer(const TlsIdentity& identity, QObject* parent)
    : QTcpServer(parent)
    , m_identity(identity)
{
    if (!listen(QHostAddress::LocalHost))
        qFatal("the scripted server cannot listen: %s", qPrintable(errorString()));
}

ScriptedServer::~ScriptedServer()
{
    reset();
}

QString ScriptedServer::baseUrl() const
{
    const QLatin1String scheme(m_identity.isNull() ? "http" : "https");
    return QStringLiteral("%1://127.0.0.1:%2/").arg(scheme).arg(serverPort());
}

void ScriptedServer::enqueue(const Reply& reply)
{
    m_replies.enqueue(reply);
}

void ScriptedServer::setHandler(const Handler& handler)
{
    m_handler = handler;
}

void ScriptedServer::reset()
{
    const QList<ScriptedConnection*> connections = m_connections;
    m_connections.clear();
    qDeleteAll(connections);
    m_replies.clear();
    m_handler = nullptr;
    m_requests.clear();
    m_unexpected.clear();
    m_connectionCount = 0;
}

void ScriptedServer::forgetRequests()
{
    m_requests.clear();
}

QList<Request> ScriptedServer::requests() const
{
    return m_requests;
}

Request ScriptedServer::lastRequest() const
{
    return m_requests.isEmpty() ? Request() : m_requests.last();
}

int ScriptedServer::requestCount() const
{
    return m_requests.size();
}

int ScriptedServer::connectionCount() const
{
    return m_connectionCount;
}

int ScriptedServer::openConnectionCount() const
{
    return m_connections.size();
}

QList<Request> ScriptedServer::unexpectedRequests() const
{
    return m_unexpected;
}

bool ScriptedServer::allRepliesConsumed() const
{
    return m_replies.isEmpty();
}

QString ScriptedServer::complaint() const
{
    QStringList complaints;
    for (const Request& request : m_unexpected)
        complaints.append(QStringLiteral("unexpected request: ") + QString::fromLatin1(request.method) +
                          QLatin1Char(' ') + QString::fromLatin1(request.target));
    if (!m_replies.isEmpty())
        complaints.append(
            QStringLiteral("%1 scripted replies that no request asked for").arg(m_replies.size()));
    return complaints.join(QLatin1String("; "));
}

QString ScriptedServer::refusingUrl()
{
    // A port that was free a moment ago: taken by listening, and given back.
    QTcpServer taker;
    if (!taker.listen(QHostAddress::LocalHost))
        qFatal("no free port: %s", qPrintable(taker.errorString()));
    return QStringLiteral("http://127.0.0.1:%1/").arg(taker.serverPort());
}

void ScriptedServer::incomingConnection(qintptr descriptor)
{
    ++m_connectionCount;
    auto* connection = new ScriptedConnection(*this, descriptor, m_identity, m_connectionCount);
    m_connections.append(connection);
    connect(connection, &QObject::destroyed, this,
            [this, connection] { m_connections.removeOne(connection); });
}

Reply ScriptedServer::replyTo(const Request& request)
{
    m_requests.append(request);
    Reply reply;
    if (!m_replies.isEmpty()) {
        reply = m_replies.dequeue();
    } else if (m_handler) {
        reply = m_handler(request);
    } else {
        m_unexpected.append(request);
        reply = Reply::text("no reply was scripted for this request", "text/plain", 500);
    }
    return reply;
}

} // namespace KvTest
