#pragma once

#include <QByteArray>
#include <QMap>
#include <QTcpSocket>

namespace KvTest {

struct RawReply
{
    int status = 0;                       ///< 0: no whole reply came
    QMap<QByteArray, QByteArray> headers; ///< names in lower case
    QByteArray body;
};

/// One connection that says exactly what it is told. Waits are bounded; a wait that ends without its
/// condition gives an empty reply or false.
class RawHttp
{
public:
    explicit RawHttp(quint16 port);

    void send(const QByteArray& bytes);
    /// Sends a GET for @p target and reads the reply.
    RawReply get(const QByteArray& target, const QByteArray& extraHeaders = QByteArray());
    RawReply request(const QByteArray& method, const QByteArray& target,
                     const QByteArray& body = QByteArray(), const QByteArray& extraHeaders = QByteArray());
    /// Reads the next reply; one that answers a HEAD has no body.
    RawReply read(bool withBody = true);
    /// Takes what has come without waiting. @return true once the next reply is here whole.
    bool hasReply();
    /// Reads up to the end of the next reply's headers and leaves the body in the connection.
    bool readHead();
    /// True once the other side has closed the connection.
    bool waitForClose(int timeoutMs = 20000);

    static QByteArray getText(const QByteArray& target, const QByteArray& extraHeaders = QByteArray());

private:
    bool fill();
    int lengthOfHead() const;
    int lengthOfBody() const;

    QTcpSocket m_socket;
    QByteArray m_buffer;
};

} // namespace KvTest
