#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QPair>
#include <QtCore/QString>
#include <QtCore/QUrl>

namespace KvTest {

using HeaderList = QList<QPair<QByteArray, QByteArray>>;

/// A request as it came over the wire. Nothing in it is decoded unless the function says so.
struct Request
{
    QByteArray method;
    QByteArray target; ///< path and query exactly as sent, "/task-service/plans/a%20b?expand=true"
    HeaderList headers;
    QByteArray body;
    int connection = 0; ///< number of the connection it came on, from 1: equal numbers mean keep-alive

    QByteArray path() const;  ///< target up to the first '?'
    QByteArray query() const; ///< target after the first '?', empty without one

    /// The path percent-decoded once, as UTF-8.
    QString decodedPath() const;
    /// The value of @p key percent-decoded once; '+' stays a plus. Null when the query has no such key.
    QString queryValue(const QByteArray& key) const;
    /// The keys of the query in their order, percent-decoded.
    QStringList queryKeys() const;

    /// First header of that name, in any case of letters; null when there is none.
    QByteArray header(const QByteArray& name) const;

    /// The body as JSON; empty when it is none or of the other kind.
    QJsonObject object() const;
    QJsonArray array() const;
};

/// What the server does about one request.
struct Reply
{
    enum Fault
    {
        None,
        CloseUnanswered,    ///< closes the connection without a byte
        ResetUnanswered,    ///< resets the connection (RST) without a byte
        ResetInBody,        ///< resets the connection after half of the body
        Truncate,           ///< declares the whole body, sends half of it and closes
        StallBeforeHeaders, ///< never answers and keeps the connection open
        StallInBody,        ///< stops after half of the body and keeps the connection open
        SlowSlices,         ///< sends the body byte by byte, one each sliceInterval
        EndlessBody,        ///< repeats the body without a declared length until the client goes away
        Garbage             ///< sends the body alone, no status line and no headers
    };

    int status = 200;
    QByteArray reason; ///< empty: the usual one for the status
    HeaderList headers;
    QByteArray body;
    Fault fault = None;
    int sliceInterval = 10;     ///< milliseconds between two slices of SlowSlices
    int afterRequests = 0;      ///< held back until the server has received that many requests in all
    bool closeAfter = false;    ///< says "Connection: close" and closes
    bool noLength = false;      ///< no Content-Length: the body ends where the connection does
    qint64 declaredLength = -1; ///< Content-Length to claim; -1: the true one

    static Reply json(const QJsonObject& object, int status = 200);
    static Reply json(const QJsonArray& array, int status = 200);
    static Reply text(const QByteArray& body, const QByteArray& contentType, int status = 200);
    static Reply empty(int status = 204);
    static Reply redirect(const QByteArray& location, int status = 302);

    Reply& with(Fault newFault);
    Reply& withHeader(const QByteArray& name, const QByteArray& value);
    Reply& heldUntil(int requests);
};

} // namespace KvTest
