#pragma once

#include <KvNetwork/KvNetworkExport.h>

#include <QtCore/QJsonObject>
#include <QtCore/QString>

/// Small services of the back end that belong to no single library.
class KVNETWORK_EXPORT KvBaseProxy
{
public:
    static bool getQueryParam(const QString& text, QString& param);
    static bool getUserSetting(const QString& key, QJsonObject& value);
    static bool setUserSetting(const QString& key, const QJsonObject& value);
};
