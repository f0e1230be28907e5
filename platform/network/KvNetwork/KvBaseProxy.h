#pragma once

#include <KvNetwork/KvNetworkExport.h>

#include <QtCore/QJsonObject>
#include <QtCore/QString>

/// Small services of the back end that belong to no single library.
class KVNETWORK_EXPORT KvBaseProxy
{
public:
    /// Makes @p param the form of @p text that can stand as a value in a URL's query: everything but letters,
    /// digits,
    /// '-', '.', '_' and '~' percent-encoded as UTF-8. NetworkManager sends it as it is. Sends nothing.
    /// @return always true.
    static bool getQueryParam(const QString& text, QString& param);

    /// Reads the current user's setting @p key from the service: GET "user-service/settings/<key>".
    /// Blocks until the reply has come; events of this thread are processed meanwhile.
    /// @param value becomes {key: setting}; empty when nothing is stored under the key, and on failure.
    /// @return false when the request failed, or without a request when the key is empty, "." or "..".
    static bool getUserSetting(const QString& key, QJsonObject& value);

    /// Stores the current user's setting @p key: PUT "user-service/settings/<key>" with @p value, as a rule
    /// {"value": setting}, as its body. Blocks as getUserSetting() does.
    /// @return false when the request failed, or without a request when the key is empty, "." or "..".
    static bool setUserSetting(const QString& key, const QJsonObject& value);
};
