#pragma once

#include <KvNetwork/KvNetworkExport.h>

#include <QtCore/QString>

/// Where the back end lives.
class KVNETWORK_EXPORT KvBaseApi
{
public:
    static KvBaseApi& GetInstance();

    QString getBaseApi() const;
    void setBaseApi(const QString& address);

private:
    KvBaseApi();
    QString m_baseApi;
};
