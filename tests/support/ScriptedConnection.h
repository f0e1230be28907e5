#pragma once

#include <support/ScriptedMessages.h>
#include <support/TlsIdentity.h>

#include <QtCore/QObject>
#include <QtCore/QTimer>

class QTcpSocket;

namespace KvTest {

class ScriptedServer;

/// One connection of a ScriptedServer: reads requests, carries out replies with their faults. Deletes itself
/// once the client has gone.
class ScriptedConnection : public QObject
{
    Q_OBJECT

public:
    ScriptedConnection(ScriptedServer& server, qintptr descriptor, const TlsIdentity& identity, int number);
    ~ScriptedConnection() override;

private:
    void readRequests();
    bool takeRequest(Request& request);
    void sendWhenDue();
    void send();
    void sendSlice();
    void sendEndlessly();
    QByteArray head() const;
    void closeGently();

    ScriptedServer& m_server;
    QTcpSocket* m_socket = nullptr;
    int m_number = 0;
    QByteArray m_buffer;
    Reply m_reply;
    bool m_busy = false; ///< a reply is on its way, or stalled for good: the next request waits
    int m_sliceAt = 0;
    QTimer m_sliceTimer;
};

} // namespace KvTest
