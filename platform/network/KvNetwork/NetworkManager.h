#pragma once

#include <KvNetwork/KvNetworkReport.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QObject>

#include <optional>

class QNetworkAccessManager;
class QNetworkReply;
class QNetworkRequest;
class QUrl;

/// Sends requests to the back end. To be used on the thread of the QCoreApplication.
///
/// All verbs return at once, with a reply that is to be handed to a NetworkEventLoop, which waits for it,
/// reads it and deletes it. A caller that does not hand it on deletes it itself (deleteLater). The reply's
/// body is taken out of it as it comes: only NetworkEventLoop has it. They return null, which a
/// NetworkEventLoop takes for a failed request, when there is no QCoreApplication and once it has quit.
///
/// A URL is text as the caller composed it, not encoded: what stands in it reaches the service unchanged once
/// that decodes the percent-encoding. The address ends at the first '/' after "://", the path at the first
/// '?'. In the query '&' and the first '=' of a parameter are structure, except inside a string literal of a
/// JSON value (one that begins with '{' or '['). '%' and two hex digits are taken as encoded already, except
/// inside such a literal. An identifier that holds '/' or '?', or is "." or "..", cannot be protected that
/// way. URLs other than http and https fail.
///
/// Every request ends: after the time limits below at the latest, and when its reply exceeds the size limit.
/// TLS errors fail. A redirect is followed for GET within the same scheme, host and port, five times at most;
/// any other fails. POST and PUT are never sent twice: when the connection is lost before an answer the
/// request fails, and the service may or may not have made the change. GET and DELETE, which do no more when
/// they come twice, are sent once more over a new connection.
///
/// No cookies, no cached and no compressed replies are used, and nothing is kept on disk. The proxy is that
/// of the application (QNetworkProxy).
class KVNETWORK_EXPORT NetworkManager : public QObject
{
    Q_OBJECT

public:
    /// The one object of the process. Never destroyed; what it holds for the network goes with the
    /// QCoreApplication.
    static NetworkManager& instance();

    /// Sends a GET. Returns at once, as all verbs do.
    QNetworkReply* get(const QString& url);
    /// Sends a POST whose body is an object.
    QNetworkReply* postJson(const QString& url, const QJsonObject& body);
    /// Sends a POST whose body is an array.
    QNetworkReply* postJson(const QString& url, const QJsonArray& body);
    /// Sends a PUT whose body is an object.
    QNetworkReply* putJson(const QString& url, const QJsonObject& body);
    /// Sends a PUT whose body is an array.
    QNetworkReply* putJson(const QString& url, const QJsonArray& body);
    /// Sends a DELETE, without a body.
    QNetworkReply* deleteResource(const QString& url);

    /// The token that later requests carry as "Authorization: Bearer", to the scheme, host and port of the
    /// base address and nowhere else. Empty: none. Until it is set here it is that of the environment
    /// variable KV_ACCESS_TOKEN. A token with anything but visible ASCII characters is unusable and taken for
    /// none.
    void setAccessToken(const QString& token);

    /// How many milliseconds a later request waits while nothing is sent or received; 30,000 by default.
    /// Until it is set here it is that of the environment variable KV_NETWORK_TIMEOUT_MS. A value below 1
    /// means the default.
    void setTimeout(int milliseconds);

    /// How many milliseconds a later request may take as a whole; 600,000 by default. Below 1 means the
    /// default.
    void setTotalTimeout(int milliseconds);

    /// How many bytes the body of a later reply may have; 512 MiB by default, 1 GiB at most. Below 1 means
    /// the default.
    void setReplySizeLimit(qint64 bytes);

Q_SIGNALS:
    /// Emitted exactly once for each request, waited for or not, when its outcome is known and before the
    /// wait returns. A slot may send further requests and wait for them.
    void requestFinished(const KvNetworkReport& report);

private:
    enum Verb
    {
        Get,
        Post,
        Put,
        Delete
    };

    NetworkManager();
    QNetworkReply* send(Verb verb, const QString& urlText, const QByteArray& body);
    QNetworkReply* start(Verb verb, QNetworkRequest& request, const QByteArray& body);
    bool open();
    void quit();
    static void closeInstance();
    QByteArray authorizationFor(const QUrl& url);
    int idleMs();

    QNetworkAccessManager* m_access = nullptr;
    bool m_hasQuit = false;
    std::optional<QByteArray> m_accessToken;
    std::optional<int> m_idleMs;
    int m_totalMs = 0;
    qint64 m_replyBytes = 0;
};
