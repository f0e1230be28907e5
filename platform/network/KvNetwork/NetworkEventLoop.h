#pragma once

#include <KvNetwork/KvNetworkExport.h>

#include <QtCore/QEventLoop>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QPointer>

class KvReplyOutcome;
class QNetworkReply;

/// Waits for one reply and reads it. To be used on the thread that sent the request.
///
///     NetworkEventLoop loop(NetworkManager::instance().get(url));
///     loop.exec();
///     if (loop.isSuccessful())
///         use(loop.object());
class KVNETWORK_EXPORT NetworkEventLoop : public QObject
{
    Q_OBJECT

public:
    /// Takes ownership of @p reply. A null one is a request that failed.
    explicit NetworkEventLoop(QNetworkReply* reply, QObject* parent = nullptr);

    /// Deletes the reply; one that has not finished yet is aborted. Whatever number of requests one slot
    /// sends and waits for, their replies do not pile up.
    ~NetworkEventLoop() override;

    /// Blocks until the outcome of the request is known; events of this thread are processed meanwhile as @p
    /// flags say, so that the caller may be entered again. A request waited for inside ends first. Returns at
    /// once when the outcome is known already. Ends within the limits of NetworkManager, and at once when the
    /// application quits or somebody deletes the reply: the request is then aborted and failed.
    /// @return 0 when the outcome is that of the service, -1 when the wait was broken off. Not a success
    /// flag.
    int exec(QEventLoop::ProcessEventsFlags flags = QEventLoop::AllEvents);

    /// Whether the request succeeded: no network error, a 2xx status, and a body that parses as JSON; an
    /// empty body passes with the statuses 204 and 205 and for DELETE. False before the outcome is known.
    bool isSuccessful() const;

    /// The body when it is an object; empty when it is anything else and when the request failed.
    QJsonObject object() const;
    /// The objects of a body that is an array, in order, its other elements left out; empty as above.
    QList<QJsonObject> objectList() const;
    /// The body when it is an array; empty as above.
    QJsonArray array() const;

private:
    QPointer<QNetworkReply> m_reply;
    QPointer<KvReplyOutcome> m_outcome;
};
