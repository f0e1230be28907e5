#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

#include <memory>
#include <stdexcept>

namespace PlanService {

/// What the log tells of a request beside its reply.
struct ReplyNote
{
    QByteArray route; ///< path template; empty when the request found none
    QString userId;   ///< empty: unknown, or the local user of a service without tokens
    qint64 databaseMicroseconds = 0;
};

/// What goes back to a client: status, JSON text in pieces that follow each other, and headers beyond the
/// usual ones.
struct Reply
{
    int status = 200;
    QList<QByteArray> body;
    QList<QPair<QByteArray, QByteArray>> headers;
    std::shared_ptr<void> lease; ///< held until the reply is out; empty: nobody counts it
    const char* contentType = "application/json; charset=utf-8";
    ReplyNote note = {};
    bool closes = false; ///< whether the connection ends with it
    /// Set when other replies share the body: what they all hold together, while one of them holds it.
    std::shared_ptr<std::weak_ptr<void>> sharedLease = {};

    qint64 size() const
    {
        qint64 bytes = 0;
        for (const QByteArray& piece : body) {
            bytes += piece.size();
        }
        return bytes;
    }
};

/// A refusal that the client gets told: thrown wherever it is noticed, turned into a reply in one place.
class ApiError : public std::runtime_error
{
public:
    /// @param code stable word for programs; @param message one sentence for people, saying what failed, with
    /// which value; @param field the parameter or key that is at fault, empty when there is none.
    ApiError(int status, const QString& code, const QString& message, const QString& field = QString());

    int status() const { return m_status; }
    Reply reply() const;
    ApiError& withHeader(const QByteArray& name, const QByteArray& value);

private:
    int m_status;
    QString m_code;
    QString m_field;
    QList<QPair<QByteArray, QByteArray>> m_headers;
};

} // namespace PlanService
