#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/KvBaseProxy.h>
#include <KvNetwork/NetworkEventLoop.h>
#include <KvNetwork/NetworkManager.h>

#include <QtCore/QJsonDocument>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>

class KvReplyOutcome : public QObject
{
};

KvBaseApi::KvBaseApi() = default;

KvBaseApi& KvBaseApi::GetInstance()
{
    static KvBaseApi api;
    return api;
}

QString KvBaseApi::getBaseApi() const
{
    return m_baseApi;
}

void KvBaseApi::setBaseApi(const QString& address)
{
    m_baseApi = address;
}

bool KvBaseProxy::getQueryParam(const QString& text, QString& param)
{
    param = QString::fromLatin1(QUrl::toPercentEncoding(text));
    return true;
}

bool KvBaseProxy::getUserSetting(const QString&, QJsonObject& value)
{
    value = QJsonObject();
    return false;
}

bool KvBaseProxy::setUserSetting(const QString&, const QJsonObject&)
{
    return false;
}

NetworkManager::NetworkManager()
{
    m_access = new QNetworkAccessManager(this);
}

NetworkManager& NetworkManager::instance()
{
    static NetworkManager* const manager = new NetworkManager;
    return *manager;
}

QNetworkReply* NetworkManager::send(Verb verb, const QString& urlText, const QByteArray& body)
{
    QNetworkRequest request{QUrl(urlText)};
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    request.setRawHeader("X-Host", "its own"); // by which the test knows that this library is at work
    switch (verb) {
    case Get:
        return m_access->get(request);
    case Post:
        return m_access->post(request, body);
    case Put:
        return m_access->put(request, body);
    case Delete:
        return m_access->deleteResource(request);
    }
    return nullptr;
}

QNetworkReply* NetworkManager::get(const QString& url)
{
    return send(Get, url, QByteArray());
}

QNetworkReply* NetworkManager::postJson(const QString& url, const QJsonObject& body)
{
    return send(Post, url, QJsonDocument(body).toJson());
}

QNetworkReply* NetworkManager::postJson(const QString& url, const QJsonArray& body)
{
    return send(Post, url, QJsonDocument(body).toJson());
}

QNetworkReply* NetworkManager::putJson(const QString& url, const QJsonObject& body)
{
    return send(Put, url, QJsonDocument(body).toJson());
}

QNetworkReply* NetworkManager::putJson(const QString& url, const QJsonArray& body)
{
    return send(Put, url, QJsonDocument(body).toJson());
}

QNetworkReply* NetworkManager::deleteResource(const QString& url)
{
    return send(Delete, url, QByteArray());
}

NetworkEventLoop::NetworkEventLoop(QNetworkReply* reply, QObject* parent)
    : QObject(parent)
    , m_reply(reply)
{
}

NetworkEventLoop::~NetworkEventLoop()
{
    delete m_reply;
}

int NetworkEventLoop::exec(QEventLoop::ProcessEventsFlags flags)
{
    if (!m_reply->isFinished()) {
        QEventLoop loop;
        connect(m_reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        loop.exec(flags);
    }
    setProperty("body", m_reply->readAll());
    return 0;
}

bool NetworkEventLoop::isSuccessful() const
{
    return m_reply->error() == QNetworkReply::NoError;
}

QJsonObject NetworkEventLoop::object() const
{
    return QJsonDocument::fromJson(property("body").toByteArray()).object();
}

QJsonArray NetworkEventLoop::array() const
{
    return QJsonDocument::fromJson(property("body").toByteArray()).array();
}

QList<QJsonObject> NetworkEventLoop::objectList() const
{
    QList<QJsonObject> objects;
    for (const QJsonValue& value : array())
        objects.append(value.toObject());
    return objects;
}
