#include <KvNetwork/NetworkManager.h>

#include "KvFailureText.h"
#include "KvNetworkLimits.h"
#include "KvOneTimeBody.h"
#include "KvReplyOutcome.h"
#include "KvTrust.h"
#include "KvUrlText.h"

#include <KvNetwork/KvBaseApi.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonDocument>
#include <QtCore/QPointer>
#include <QtCore/QThread>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>

namespace {

constexpr int mostRedirects = 5;
constexpr qint64 largestReplySizeLimit = qint64(1024) * 1024 * 1024; // a QByteArray ends before 2 GiB

QString verbName(int verb)
{
    static const char* const names[] = {"GET", "POST", "PUT", "DELETE"};
    return QString::fromLatin1(names[verb]);
}

bool isUsable(const QUrl& url)
{
    return url.isValid() &&
           (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https")) &&
           !url.host().isEmpty();
}

// Qt would answer a refusal with the user once more, by a second request.
QUrl withoutUser(const QUrl& url)
{
    return url.userName().isEmpty() && url.password().isEmpty() ? url : url.adjusted(QUrl::RemoveUserInfo);
}

// A line break or the like would let the token's text end the header and begin another.
QByteArray usableToken(const QByteArray& text)
{
    const QByteArray token = text.trimmed();
    for (const char c : token) {
        if (c <= ' ' || c > '~')
            return {};
    }
    return token;
}

QNetworkRequest makeCommonRequest()
{
    QNetworkRequest request;
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("KvNetwork"));
    request.setRawHeader("Accept", "application/json");
    // A compressed reply unfolds to a thousand times its size in one step, before any limit could stop it.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    return request;
}

QNetworkRequest makeRequest(const QUrl& url)
{
    // Its copies share what they do not change. Never destroyed: static objects of hosts may still call.
    static const QNetworkRequest* const common = new QNetworkRequest(makeCommonRequest());
    QNetworkRequest request(*common);
    request.setUrl(url);
    KvTrust::apply(request);
    return request;
}

QString pathForReport(const QUrl& url, const QNetworkRequest& request)
{
    return KvFailureText::withoutSecrets(url.path(QUrl::FullyEncoded), request);
}

} // namespace

NetworkManager& NetworkManager::instance()
{
    static NetworkManager* const instance = new NetworkManager;
    return *instance;
}

NetworkManager::NetworkManager()
    : m_totalMs(KvNetworkLimits::defaultTotalMs)
    , m_replyBytes(KvNetworkLimits::defaultReplyBytes)
{
    qRegisterMetaType<KvNetworkReport>();
}

QNetworkReply* NetworkManager::get(const QString& url)
{
    return send(Get, url, QByteArray());
}

QNetworkReply* NetworkManager::postJson(const QString& url, const QJsonObject& body)
{
    return send(Post, url, QJsonDocument(body).toJson(QJsonDocument::Compact));
}

QNetworkReply* NetworkManager::postJson(const QString& url, const QJsonArray& body)
{
    return send(Post, url, QJsonDocument(body).toJson(QJsonDocument::Compact));
}

QNetworkReply* NetworkManager::putJson(const QString& url, const QJsonObject& body)
{
    return send(Put, url, QJsonDocument(body).toJson(QJsonDocument::Compact));
}

QNetworkReply* NetworkManager::putJson(const QString& url, const QJsonArray& body)
{
    return send(Put, url, QJsonDocument(body).toJson(QJsonDocument::Compact));
}

QNetworkReply* NetworkManager::deleteResource(const QString& url)
{
    return send(Delete, url, QByteArray());
}

void NetworkManager::setAccessToken(const QString& token)
{
    m_accessToken = usableToken(token.toUtf8());
}

void NetworkManager::setTimeout(int milliseconds)
{
    m_idleMs = milliseconds > 0 ? milliseconds : KvNetworkLimits::defaultIdleMs;
}

void NetworkManager::setTotalTimeout(int milliseconds)
{
    m_totalMs = milliseconds > 0 ? milliseconds : KvNetworkLimits::defaultTotalMs;
}

void NetworkManager::setReplySizeLimit(qint64 bytes)
{
    m_replyBytes = bytes > 0 ? qMin(bytes, largestReplySizeLimit) : KvNetworkLimits::defaultReplyBytes;
}

QNetworkReply* NetworkManager::send(Verb verb, const QString& urlText, const QByteArray& body)
{
    const QUrl url = KvUrlText::finished(urlText);
    // An address that is none is given to Qt as one that it knows nothing of, so that there is a reply all
    // the same.
    QNetworkRequest request =
        makeRequest(isUsable(url) ? withoutUser(url) : QUrl(QStringLiteral("unusable:")));
    const QByteArray authorization = authorizationFor(url);
    if (!authorization.isEmpty())
        request.setRawHeader("Authorization", authorization);

    if (!open()) {
        KvNetworkReport report;
        report.method = verbName(verb);
        report.path = pathForReport(url, request);
        report.category = KvNetworkReport::Aborted;
        report.message = QStringLiteral("not sent: the application is not running");
        Q_EMIT requestFinished(report);
        return nullptr;
    }

    KvNetworkLimits limits;
    limits.idleMs = idleMs();
    limits.totalMs = m_totalMs;
    limits.replyBytes = m_replyBytes;
    auto* outcome = new KvReplyOutcome(start(verb, request, body), limits);
    if (!isUsable(url))
        outcome->setUnsent(verbName(verb), pathForReport(url, request), KvFailureText::unusableAddress(url));
    if (outcome->isConcluded())
        Q_EMIT requestFinished(outcome->report());
    else
        connect(outcome, &KvReplyOutcome::concluded, this, &NetworkManager::requestFinished);
    return outcome->reply();
}

QNetworkReply* NetworkManager::start(Verb verb, QNetworkRequest& request, const QByteArray& body)
{
    if (verb == Post || verb == Put) {
        request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
        auto* device = new KvOneTimeBody(body);
        QNetworkReply* const reply =
            verb == Post ? m_access->post(request, device) : m_access->put(request, device);
        device->setParent(reply);
        return reply;
    }
    if (verb == Delete)
        return m_access->deleteResource(request);
    // Only a read may be asked for again elsewhere without a change being made twice, or where it was not
    // meant.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::SameOriginRedirectPolicy);
    request.setMaximumRedirectsAllowed(mostRedirects);
    return m_access->get(request);
}

bool NetworkManager::open()
{
    QCoreApplication* const application = QCoreApplication::instance();
    if (application == nullptr || QCoreApplication::closingDown())
        return false;
    // A shutdown must not stall; only an application that runs its events again after quitting is back in
    // business.
    if (m_hasQuit && QThread::currentThread()->loopLevel() == 0)
        return false;
    m_hasQuit = false;
    if (m_access == nullptr) {
        m_access = new QNetworkAccessManager(this);
        connect(application, &QCoreApplication::aboutToQuit, this, &NetworkManager::quit);
        qAddPostRoutine(&NetworkManager::closeInstance);
    }
    return true;
}

void NetworkManager::quit()
{
    m_hasQuit = true;
    // A slot that hears of one reply's end may delete others.
    QList<QPointer<QNetworkReply>> replies;
    const QList<QNetworkReply*> children = m_access->findChildren<QNetworkReply*>();
    for (QNetworkReply* reply : children)
        replies.append(reply);
    for (const QPointer<QNetworkReply>& reply : qAsConst(replies)) {
        if (KvReplyOutcome* const outcome = KvReplyOutcome::of(reply))
            outcome->end(KvNetworkReport::Aborted, QStringLiteral("the application quits"));
    }
}

// Runs while the QCoreApplication is being destroyed: later there is no event dispatcher for the network's
// thread to end by.
void NetworkManager::closeInstance()
{
    NetworkManager& manager = instance();
    manager.quit();
    delete manager.m_access;
    manager.m_access = nullptr;
    manager.m_hasQuit = false; // a QCoreApplication that is built afterwards begins anew
}

QByteArray NetworkManager::authorizationFor(const QUrl& url)
{
    if (!m_accessToken)
        m_accessToken = usableToken(qgetenv("KV_ACCESS_TOKEN"));
    if (!m_accessToken->isEmpty() &&
        KvUrlText::isSameOrigin(url, QUrl(KvBaseApi::GetInstance().getBaseApi())))
        return "Bearer " + *m_accessToken;
    // Sent unasked: a body cannot be sent again once the service has asked.
    const QString user = url.userName(QUrl::FullyDecoded);
    if (!user.isEmpty())
        return "Basic " + (user + QLatin1Char(':') + url.password(QUrl::FullyDecoded)).toUtf8().toBase64();
    return {};
}

int NetworkManager::idleMs()
{
    if (!m_idleMs)
        m_idleMs = KvNetworkLimits::idleMsFromEnvironment();
    return *m_idleMs;
}
