#include "BareRequest.h"

#include <KvNetwork/KvBaseApi.h>

#include <QtCore/QEventLoop>
#include <QtCore/QScopedPointer>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>

QByteArray bareGet(QNetworkAccessManager& manager, const QString& path)
{
    const QUrl url(KvBaseApi::GetInstance().getBaseApi() + path);
    const QScopedPointer<QNetworkReply> reply(manager.get(QNetworkRequest(url)));
    QEventLoop loop;
    QObject::connect(reply.data(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    return reply->error() == QNetworkReply::NoError ? reply->readAll() : QByteArray();
}
