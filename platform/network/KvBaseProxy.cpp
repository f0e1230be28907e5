#include <KvNetwork/KvBaseProxy.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkEventLoop.h>
#include <KvNetwork/NetworkManager.h>

#include <QtCore/QUrl>

namespace {

// Percent-encoding cannot make a segment of these: the service would see another address.
bool isUsableKey(const QString& key)
{
    return !key.isEmpty() && key != QLatin1String(".") && key != QLatin1String("..");
}

QString settingUrl(const QString& key)
{
    return KvBaseApi::GetInstance().getBaseApi() + QLatin1String("user-service/settings/") +
           QString::fromLatin1(QUrl::toPercentEncoding(key));
}

} // namespace

bool KvBaseProxy::getQueryParam(const QString& text, QString& param)
{
    param = QString::fromLatin1(QUrl::toPercentEncoding(text));
    return true;
}

bool KvBaseProxy::getUserSetting(const QString& key, QJsonObject& value)
{
    value = QJsonObject();
    if (!isUsableKey(key))
        return false;
    NetworkEventLoop loop(NetworkManager::instance().get(settingUrl(key)));
    loop.exec();
    const QJsonValue setting = loop.object().value(QLatin1String("value"));
    if (!setting.isUndefined() && !setting.isNull())
        value.insert(key, setting);
    return loop.isSuccessful();
}

bool KvBaseProxy::setUserSetting(const QString& key, const QJsonObject& value)
{
    if (!isUsableKey(key))
        return false;
    NetworkEventLoop loop(NetworkManager::instance().putJson(settingUrl(key), value));
    loop.exec();
    return loop.isSuccessful();
}
