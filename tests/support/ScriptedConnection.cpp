#include <support/ScriptedConnection.h>

#include <support/HardReset.h>
#include <support/ScriptedServer.h>

#include <QtNetwork/QSslSocket>

namespace KvTest {

namespace {

QByteArray usualReason(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 201:
        return "Created";
    case 204:
        return "No Content";
    case 205:
        return "Reset Content";
    case 302:
        return "Found";
    case 307:
        return "Temporary Redirect";
    case 400:
        return "Bad Request";
    case 401:
        return "Unauthorized";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 409:
        return "Conflict";
    case 500:
        return "Internal Server Error";
    case 503:
        return "Service Unavailable";
    default:
        return "Status";
    }
}

} // namespace

ScriptedConnection::ScriptedConnection(ScriptedServer& server, qintptr descriptor,
                                       const TlsIdentity& identity, int number)
    : m_server(server)
    , m_number(number)
{
    if (identity.isNull()) {
        m_socket = new QTcpSocket(this);
        m_socket->setSocketDescriptor(descriptor);
    } else {
        auto* socket = new QSslSocket(this);
        m_socket = socket;
        socket->setSocketDescriptor(descriptor);
        socket->setLocalCertificate(identity.certificate);
        socket->setPrivateKey(identity.key);
        socket->startServerEncryption();
    }
    // Small replies leave at once, so that timings measure the client.
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(m_socket, &QTcpSocket::readyRead, this, &ScriptedConnection::readRequests);
    connect(m_socket, &QTcpSocket::disconnected, this, &QObject::deleteLater);
    connect(&m_server, &ScriptedServer::requestReceived, this, &ScriptedConnection::sendWhenDue);
    connect(&m_sliceTimer, &QTimer::timeout, this, &ScriptedConnection::sendSlice);
}

ScriptedConnection::~ScriptedConnection()
{
    m_socket->disconnect(this);
}

void ScriptedConnection::readRequests()
{
    m_buffer += m_socket->readAll();
    Request request;
    while (!m_busy && takeRequest(request)) {
        m_busy = true;
        m_reply = m_server.replyTo(request);
        Q_EMIT m_server.requestReceived(m_server.requestCount()); // sends this reply too, when it is due
    }
}

bool ScriptedConnection::takeRequest(Request& request)
{
    const int headEnd = m_buffer.indexOf("\r\n\r\n");
    if (headEnd < 0)
        return false;
    request = Request();
    request.connection = m_number;
    const QList<QByteArray> lines = m_buffer.left(headEnd).split('\n');
    const QList<QByteArray> words = lines.first().trimmed().split(' ');
    request.method = words.value(0);
    request.target = words.value(1);
    for (int i = 1; i < lines.size(); ++i) {
        const int colon = lines[i].indexOf(':');
        request.headers.append({lines[i].left(colon).trimmed(), lines[i].mid(colon + 1).trimmed()});
    }
    const int bodyLength = request.header("Content-Length").toInt();
    if (m_buffer.size() < headEnd + 4 + bodyLength)
        return false;
    request.body = m_buffer.mid(headEnd + 4, bodyLength);
    m_buffer.remove(0, headEnd + 4 + bodyLength);
    return true;
}

void ScriptedConnection::sendWhenDue()
{
    // A stalled or slow reply has begun already; only one that is held back begins here.
    if (m_busy && m_reply.afterRequests >= 0 && m_server.requestCount() >= m_reply.afterRequests) {
        m_reply.afterRequests = -1;
        send();
    }
}

void ScriptedConnection::send()
{
    const QByteArray firstHalf = m_reply.body.left(m_reply.body.size() / 2);
    switch (m_reply.fault) {
    case Reply::None:
        m_socket->write(head() + m_reply.body);
        m_busy = false;
        if (m_reply.closeAfter || m_reply.noLength)
            closeGently();
        break;
    case Reply::CloseUnanswered:
        closeGently();
        break;
    case Reply::ResetUnanswered:
        resetHard(*m_socket);
        break;
    case Reply::ResetInBody:
        // The reset throws away what still waits to be sent, so it comes only once the client's side has it.
        connect(
            m_socket, &QTcpSocket::bytesWritten, this,
            [this] {
                if (m_socket->bytesToWrite() == 0)
                    resetHard(*m_socket);
            },
            Qt::QueuedConnection);
        m_socket->write(head() + firstHalf);
        break;
    case Reply::Truncate:
        m_socket->write(head() + firstHalf);
        closeGently();
        break;
    case Reply::StallBeforeHeaders:
        break;
    case Reply::StallInBody:
        m_socket->write(head() + firstHalf);
        break;
    case Reply::SlowSlices:
        m_socket->write(head());
        m_sliceAt = 0;
        m_sliceTimer.start(m_reply.sliceInterval);
        break;
    case Reply::EndlessBody:
        m_reply.noLength = true;
        connect(m_socket, &QTcpSocket::bytesWritten, this, &ScriptedConnection::sendEndlessly);
        m_socket->write(head());
        break;
    case Reply::Garbage:
        m_socket->write(m_reply.body);
        closeGently();
        break;
    }
}

void ScriptedConnection::sendSlice()
{
    if (m_sliceAt == m_reply.body.size()) {
        m_sliceTimer.stop();
        m_busy = false;
        readRequests();
        return;
    }
    m_socket->write(m_reply.body.mid(m_sliceAt, 1));
    ++m_sliceAt;
}

void ScriptedConnection::sendEndlessly()
{
    // Bounded by what the client takes, so that the server's own memory stays small.
    if (m_socket->bytesToWrite() < 64 * 1024)
        m_socket->write(m_reply.body);
}

QByteArray ScriptedConnection::head() const
{
    QByteArray text = "HTTP/1.1 " + QByteArray::number(m_reply.status) + ' ' +
                      (m_reply.reason.isEmpty() ? usualReason(m_reply.status) : m_reply.reason) + "\r\n";
    for (const auto& header : m_reply.headers)
        text += header.first + ": " + header.second + "\r\n";
    if (!m_reply.noLength) {
        const qint64 length = m_reply.declaredLength >= 0 ? m_reply.declaredLength : m_reply.body.size();
        text += "Content-Length: " + QByteArray::number(length) + "\r\n";
    }
    if (m_reply.closeAfter || m_reply.noLength)
        text += "Connection: close\r\n";
    return text + "\r\n";
}

void ScriptedConnection::closeGently()
{
    m_socket->disconnectFromHost(); // after what is written has gone out
}

} // namespace KvTest
