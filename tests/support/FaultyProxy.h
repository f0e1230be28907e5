#pragma once

#include <QtNetwork/QTcpServer>

#include <random>

class QTcpSocket;

namespace KvTest {

class FaultyConnection;

/// A wire that goes wrong: what comes to its port goes to a service and back, and at random is late, in
/// slices, cut short, doubled or broken off. It lives on the thread that handles events, as a test's own
/// thread does while the library waits.
class FaultyProxy : public QTcpServer
{
    Q_OBJECT

public:
    enum Fault
    {
        None,
        Late,            ///< each part of the reply after some milliseconds
        Never,           ///< no byte of the reply
        Sliced,          ///< the reply in pieces of a few bytes
        RequestTwice,    ///< the service gets the whole request twice; its second reply is passed on
        RequestCut,      ///< only the first half of the request, then both sides are closed
        ResetUnanswered, ///< the request arrives; the connection is reset when the reply comes
        ResetInReply,    ///< reset after some bytes of the reply
        ReplyCut,        ///< ended, in good order, after some bytes of the reply
        SomeBytesTwice,  ///< a few bytes of the reply twice
        ReplyTwice,      ///< the reply, or its first part, twice
        FaultCount,
    };

    /// @param servicePort of 127.0.0.1; @param seed decides all that happens, as far as the parts in which
    /// bytes arrive allow.
    FaultyProxy(quint16 servicePort, quint32 seed, QObject* parent = nullptr);
    ~FaultyProxy() override;

    /// "http://127.0.0.1:PORT/".
    QString baseUrl() const;
    void setServicePort(quint16 port) { m_servicePort = port; }

    /// How many of a thousand exchanges go wrong; 0 to begin with.
    void setFaultsPerThousand(int faults) { m_faultsPerThousand = faults; }
    /// The same for replies that never come, of which each costs the client its whole time-out.
    void setSilencePerThousand(int silences) { m_silencePerThousand = silences; }

    int exchangeCount() const { return m_exchangeCount; }
    /// How often each fault has happened.
    int count(Fault fault) const { return m_counts[fault]; }

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    friend class FaultyConnection;
    Fault nextFault();
    int number(int from, int to); // both included

    std::mt19937 m_random;
    quint16 m_servicePort;
    int m_faultsPerThousand = 0;
    int m_silencePerThousand = 0;
    int m_exchangeCount = 0;
    int m_counts[FaultCount] = {};
};

} // namespace KvTest
