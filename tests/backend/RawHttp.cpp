#include "RawHttp.h"

#include <QHostAddress>

namespace KvTest {

namespace {

constexpr int waitMs = 100000 * KV_PATIENCE;

}

RawHttp::RawHttp(quint16 port)
{
    m_socket.connectToHost(QHostAddress(QHostAddress::LocalHost), port);
    m_socket.waitForConnected(waitMs);
}

void RawHttp::send(const QByteArray& bytes)
{
    m_socket.write(bytes);
    while (m_socket.bytesToWrite() > 0 && m_socket.waitForBytesWritten(waitMs)) {
    }
}

QByteArray RawHttp::getText(const QByteArray& target, const QByteArray& extraHeaders)
{
    return "GET " + target + " HTTP/1.1\r\nHost: localhost\r\n" + extraHeaders + "\r\n";
}

RawReply RawHttp::get(const QByteArray& target, const QByteArray& extraHeaders)
{
    send(getText(target, extraHeaders));
    return read();
}

RawReply RawHttp::request(const QByteArray& method, const QByteArray& target, const QByteArray& body,
                          const QByteArray& extraHeaders)
{
    send(method + ' ' + target + " HTTP/1.1\r\nHost: localhost\r\nContent-Length: " +
         QByteArray::number(body.size()) + "\r\n" + extraHeaders + "\r\n" + body);
    return read(method != "HEAD");
}

bool RawHttp::fill()
{
    if (m_socket.bytesAvailable() == 0 && !m_socket.waitForReadyRead(waitMs)) {
        return false;
    }
    m_buffer += m_socket.readAll();
    return true;
}

bool RawHttp::readHead()
{
    while (!m_buffer.contains("\r\n\r\n")) {
        if (!fill()) {
            return false;
        }
    }
    return true;
}

int RawHttp::lengthOfHead() const
{
    const int end = m_buffer.indexOf("\r\n\r\n");
    return end < 0 ? 0 : end + 4;
}

int RawHttp::lengthOfBody() const
{
    static const QByteArray name = QByteArrayLiteral("\r\ncontent-length:");
    const QByteArray head = m_buffer.left(lengthOfHead()).toLower();
    const int at = head.indexOf(name);
    return at < 0
               ? 0
               : head.mid(at + name.size(), head.indexOf('\r', at + 2) - at - name.size()).trimmed().toInt();
}

bool RawHttp::hasReply()
{
    m_socket.waitForReadyRead(0);
    m_buffer += m_socket.readAll();
    return lengthOfHead() > 0 && m_buffer.size() >= lengthOfHead() + lengthOfBody();
}

RawReply RawHttp::read(bool withBody)
{
    RawReply reply;
    if (!readHead()) {
        return reply;
    }
    const int head = lengthOfHead();
    const int body = withBody ? lengthOfBody() : 0;
    while (m_buffer.size() < head + body) {
        if (!fill()) {
            return reply;
        }
    }
    const QList<QByteArray> lines = m_buffer.left(head - 4).split('\n');
    for (int i = 1; i < lines.size(); ++i) {
        const int colon = lines.at(i).indexOf(':');
        reply.headers.insert(lines.at(i).left(colon).trimmed().toLower(),
                             lines.at(i).mid(colon + 1).trimmed());
    }
    reply.status = lines.first().split(' ').value(1).toInt();
    reply.body = m_buffer.mid(head, body);
    m_buffer.remove(0, head + body);
    return reply;
}

bool RawHttp::waitForClose(int timeoutMs)
{
    return m_socket.state() == QAbstractSocket::UnconnectedState || m_socket.waitForDisconnected(timeoutMs);
}

} // namespace KvTest
