#pragma once

#include <KvNetwork/KvNetworkReport.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QObject>

class QNetworkReply;

class KVNETWORK_EXPORT NetworkManager : public QObject
{
    Q_OBJECT

public:
    static NetworkManager& instance();

    QNetworkReply* get(const QString& url);
    QNetworkReply* postJson(const QString& url, const QJsonObject& body);
    QNetworkReply* postJson(const QString& url, const QJsonArray& body);
    QNetworkReply* putJson(const QString& url, const QJsonObject& body);
    QNetworkReply* putJson(const QString& url, const QJsonArray& body);
    QNetworkReply* deleteResource(const QString& url);

    void setAccessToken(const QString& token);
    void setTimeout(int milliseconds);
    void setTotalTimeout(int milliseconds);
    void setReplySizeLimit(qint64 bytes);

Q_SIGNALS:
    void requestFinished(const KvNetworkReport& report);
};
