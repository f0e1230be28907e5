#pragma once

#include <KvNetwork/KvNetworkExport.h>

#include <QtCore/QMetaType>
#include <QtCore/QString>

/// What became of one request. It never holds the query, the access token, the user of the base address or a
/// body.
struct KvNetworkReport
{
    /// How a request ended.
    enum Category
    {
        Ok,      ///< a 2xx status and a body that is JSON, or empty where that is allowed
        Timeout, ///< nothing came for the idle time, or the whole took longer than the total time
        Refused, ///< the service cannot be reached: refused, unknown host, no usable base address
        Tls,     ///< the secure connection was not established; the message names the certificate's fault
        Http,    ///< a status other than 2xx, or a redirect that is not followed
        Parse,   ///< the body is no JSON
        Aborted  ///< broken off: connection lost, reply too large, reply deleted, application quits
    };

    QString method;         ///< "GET", "POST", "PUT" or "DELETE"
    QString path;           ///< percent-encoded, from the host's name to the '?'
    int httpStatus = 0;     ///< 0: no status came
    Category category = Ok; ///< how it ended
    QString message;        ///< for people, one line in English of some 400 characters at most; empty when Ok
    qint64 durationMs = 0;  ///< from sending to the outcome
};
Q_DECLARE_METATYPE(KvNetworkReport)
