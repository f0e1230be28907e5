#include "RawHttp.h"

#include <QHostAddress>

namespace KvTest {

namespace {

constexpr int waitMs = 30000;

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

RawReply RawHttp::read(bool withBody)
{
    RawReply reply;
    if (!readHead()) {
        return reply;
    }
    const int headEnd = m_buffer.indexOf("\r\n\r\n");
    const QList<QByteArray> lines = m_buffer.left(headEnd).split('\n');
    for (int i = 1; i < lines.size(); ++i) {
        const int colon = lines.at(i).indexOf(':');
        reply.headers.insert(lines.at(i).left(colon).trimmed().toLower(),
                             lines.at(i).mid(colon + 1).trimmed());
    }
    const int length = withBody ? reply.headers.value("content-length").toInt() : 0;
    while (m_buffer.size() < headEnd + 4 + length) {
        if (!fill()) {
            return RawReply();
        }
    }
    reply.body = m_buffer.mid(headEnd + 4, length);
    reply.status = lines.first().split(' ').value(1).toInt();
    m_buffer.remove(0, headEnd + 4 + length);
    return reply;
}

bool RawHttp::waitForClose(int timeoutMs)
{
    return m_socket.state() == QAbstractSocket::UnconnectedState || m_socket.waitForDisconnected(timeoutMs);
}

} // namespace KvTest
