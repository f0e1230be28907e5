#pragma once

#include <KvNetwork/KvNetworkExport.h>

#include <QtCore/QMetaType>
#include <QtCore/QString>

/// What became of one request. It never holds the query, the access token or a body.
struct KvNetworkReport
{
    enum Category { Ok, Timeout, Refused, Tls, Http, Parse, Aborted };

    QString method;
    QString path;
    int httpStatus = 0;
    Category category = Ok;
    QString message;
    qint64 durationMs = 0;
};
Q_DECLARE_METATYPE(KvNetworkReport)
