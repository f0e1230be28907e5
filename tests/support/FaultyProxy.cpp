#include "FaultyProxy.h"

#include "HardReset.h"

#include <QtCore/QTimer>
#include <QtNetwork/QTcpSocket>

#include <memory>
#include <utility>

namespace KvTest {

/// One client's connection and its own to the service. It goes when either side is gone.
class FaultyConnection : public QObject
{
public:
    FaultyConnection(qintptr descriptor, FaultyProxy& proxy)
        : QObject(&proxy)
        , m_proxy(proxy)
    {
        connect(&m_client, &QTcpSocket::readyRead, this, [this] { takeRequest(); });
        connect(&m_service, &QTcpSocket::readyRead, this, [this] { takeReply(); });
        connect(&m_client, &QTcpSocket::disconnected, this, [this] { end(); });
        connect(&m_service, &QTcpSocket::disconnected, this, [this] { end(); });
        connect(&m_service, &QTcpSocket::errorOccurred, this, [this] {
            if (m_service.state() == QAbstractSocket::UnconnectedState)
                end();
        });
        m_client.setSocketDescriptor(descriptor);
        m_client.setSocketOption(QAbstractSocket::LowDelayOption, 1);
        m_service.connectToHost(QStringLiteral("127.0.0.1"), proxy.m_servicePort);
        m_service.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    }

    ~FaultyConnection() override
    {
        m_client.disconnect(this);
        m_service.disconnect(this);
        if (m_twin)
            m_twin->disconnect(this);
    }

private:
    /// What was written already goes out on either side.
    void end()
    {
        m_client.disconnectFromHost();
        m_service.disconnectFromHost();
        if (m_client.state() == QAbstractSocket::UnconnectedState &&
            m_service.state() == QAbstractSocket::UnconnectedState)
            deleteLater();
    }

    void takeRequest()
    {
        const QByteArray bytes = m_client.readAll();
        if (m_isReplying) { // bytes behind a reply begin the next exchange
            m_isReplying = false;
            m_fault = m_proxy.nextFault();
            m_twin.reset();
            if (m_fault == FaultyProxy::RequestTwice)
                beginTwin();
        }
        if (m_twin) {
            m_twin->write(bytes);
            m_held += bytes;
            return;
        }
        if (m_fault == FaultyProxy::RequestCut) {
            m_service.write(bytes.left(bytes.size() / 2));
            resetHard(m_client);
            return;
        }
        m_service.write(bytes);
    }

    /// A second connection to the service, which has the request first: when it is answered, so that a late
    /// twin undoes nothing that comes after, the client's own follows.
    void beginTwin()
    {
        m_held.clear();
        m_twin = std::make_unique<QTcpSocket>();
        const auto goOn = [this] {
            if (QTcpSocket* const twin = m_twin.release()) {
                twin->disconnect(this);
                twin->deleteLater();
                m_service.write(std::exchange(m_held, {}));
            }
        };
        connect(m_twin.get(), &QTcpSocket::readyRead, this, goOn);
        connect(m_twin.get(), &QTcpSocket::errorOccurred, this, goOn);
        m_twin->connectToHost(QStringLiteral("127.0.0.1"), m_proxy.m_servicePort);
    }

    void takeReply()
    {
        QByteArray bytes = m_service.readAll();
        const bool isFirst = !m_isReplying;
        m_isReplying = true;
        const int part = m_proxy.number(0, bytes.size());
        switch (m_fault) {
        case FaultyProxy::Never:
            return;
        case FaultyProxy::ResetUnanswered:
            resetHard(m_client);
            return;
        case FaultyProxy::ResetInReply:
            m_client.write(bytes.left(part));
            m_client.flush();
            resetHard(m_client);
            return;
        case FaultyProxy::ReplyCut:
            m_client.write(bytes.left(part));
            m_client.disconnectFromHost();
            return;
        case FaultyProxy::SomeBytesTwice:
            if (isFirst)
                bytes.insert(part, bytes.mid(part, m_proxy.number(1, 40)));
            break;
        case FaultyProxy::ReplyTwice:
            if (isFirst)
                bytes += bytes;
            break;
        default:
            break;
        }
        m_waiting += bytes;
        sendOn();
    }

    void sendOn()
    {
        if (m_fault == FaultyProxy::Late)
            later(m_proxy.number(1, 20), m_waiting.size());
        else if (m_fault == FaultyProxy::Sliced)
            later(0, m_proxy.number(1, qMax(1, m_waiting.size() / 6)));
        else
            send(m_waiting.size());
    }

    void later(int milliseconds, int size)
    {
        if (m_isTimed)
            return;
        m_isTimed = true;
        QTimer::singleShot(milliseconds, this, [this, size] {
            m_isTimed = false;
            send(size);
            if (!m_waiting.isEmpty())
                sendOn();
        });
    }

    void send(int size)
    {
        if (m_client.state() == QAbstractSocket::ConnectedState) {
            m_client.write(m_waiting.left(size));
            m_client.flush();
        }
        m_waiting.remove(0, size);
    }

    FaultyProxy& m_proxy;
    QTcpSocket m_client;
    QTcpSocket m_service;
    QByteArray m_waiting;               // on its way to the client
    std::unique_ptr<QTcpSocket> m_twin; // while the request's first copy is unanswered
    QByteArray m_held;                  // the second copy meanwhile
    FaultyProxy::Fault m_fault = FaultyProxy::None;
    bool m_isReplying = true; // so that the first bytes begin an exchange
    bool m_isTimed = false;
};

FaultyProxy::FaultyProxy(quint16 servicePort, quint32 seed, QObject* parent)
    : QTcpServer(parent)
    , m_random(seed)
    , m_servicePort(servicePort)
{
    if (!listen(QHostAddress::LocalHost))
        qFatal("no free port: %s", qPrintable(errorString()));
}

FaultyProxy::~FaultyProxy() = default;

QString FaultyProxy::baseUrl() const
{
    return QStringLiteral("http://127.0.0.1:%1/").arg(serverPort());
}

void FaultyProxy::incomingConnection(qintptr descriptor)
{
    new FaultyConnection(descriptor, *this);
}

FaultyProxy::Fault FaultyProxy::nextFault()
{
    ++m_exchangeCount;
    const int draw = number(0, 999);
    Fault fault = None;
    if (draw < m_silencePerThousand) {
        fault = Never;
    } else if (draw < m_silencePerThousand + m_faultsPerThousand) {
        static const Fault others[] = {Late,         Sliced,   RequestTwice,   RequestCut, ResetUnanswered,
                                       ResetInReply, ReplyCut, SomeBytesTwice, ReplyTwice};
        fault = others[number(0, int(std::size(others)) - 1)];
    }
    ++m_counts[fault];
    return fault;
}

int FaultyProxy::number(int from, int to)
{
    return from + static_cast<int>(m_random() % static_cast<quint32>(to - from + 1));
}

} // namespace KvTest
