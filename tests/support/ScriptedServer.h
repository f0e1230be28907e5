#pragma once

#include <support/ScriptedMessages.h>
#include <support/TlsIdentity.h>

#include <QtCore/QQueue>
#include <QtNetwork/QTcpServer>

#include <functional>

namespace KvTest {

class ScriptedConnection;

/// An HTTP/1.1 server on the loopback that answers as the test says and remembers what it was asked.
///
/// It lives on the test's own thread, so it works whenever that thread handles events, as it does while the
/// library waits for a reply. Each request is answered by the next queued reply; when the queue is empty, by
/// the handler; without a handler the request counts as unexpected and gets a 500. Connections are kept
/// alive.
///
///     KvTest::ScriptedServer server;
///     server.enqueue(KvTest::Reply::json(QJsonObject{{QStringLiteral("_id"), QStringLiteral("p1")}}));
///     ...                                                  // the call under test
///     QCOMPARE(server.requests().last().target, QByteArray("/task-service/plans/p1"));
///     QCOMPARE(server.complaint(), QString());
class ScriptedServer : public QTcpServer
{
    Q_OBJECT

public:
    using Handler = std::function<Reply(const Request&)>;

    /// Listens on a free port of 127.0.0.1 at once; over TLS when @p identity is not null.
    explicit ScriptedServer(const TlsIdentity& identity = TlsIdentity(), QObject* parent = nullptr);
    ~ScriptedServer() override;

    /// "http://127.0.0.1:PORT/", https with TLS.
    QString baseUrl() const;

    void enqueue(const Reply& reply);
    void setHandler(const Handler& handler);
    /// Forgets requests, queued replies, handler and complaints, and closes the open connections.
    void reset();

    /// Forgets the requests so far, and nothing else; requestCount() begins at 0 again.
    void forgetRequests();

    QList<Request> requests() const;
    Request lastRequest() const; ///< an empty one when there was none
    int requestCount() const;
    int connectionCount() const;     ///< connections accepted so far
    int openConnectionCount() const; ///< of these, still open

    QList<Request> unexpectedRequests() const;
    bool allRepliesConsumed() const;
    /// What did not go as scripted, for people: unexpected requests and replies nobody asked for. Empty when
    /// all did.
    QString complaint() const;

    /// A base address at which nobody listens.
    static QString refusingUrl();

Q_SIGNALS:
    /// Emitted before the reply is sent; @p count is the number of requests so far. A slot that waits for
    /// another request must be connected queued: the server is in the middle of its work.
    void requestReceived(int count);

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    friend class ScriptedConnection;
    Reply replyTo(const Request& request);

    TlsIdentity m_identity;
    QQueue<Reply> m_replies;
    Handler m_handler;
    QList<Request> m_requests;
    QList<Request> m_unexpected;
    QList<ScriptedConnection*> m_connections;
    int m_connectionCount = 0;
};

} // namespace KvTest
