#pragma once

#include <QByteArray>
#include <QString>

#include <cstdio>
#include <functional>
#include <mutex>

namespace PlanService {

/// One request, as the log tells it.
struct AccessEntry
{
    QByteArray request; ///< its id; empty when the request could not be read
    QByteArray remoteAddress;
    QByteArray method; ///< empty when the request could not be read
    QByteArray path;   ///< without the query; empty when the request could not be read
    QByteArray route;  ///< path template; empty when the request found none
    QString userId;    ///< empty: unknown, or the local user of a service without tokens
    int status = 0;
    qint64 receivedBytes = 0; ///< of the request's body
    qint64 bytes = 0;         ///< of the reply's body
    qint64 microseconds = 0;  ///< from the request's last byte to the reply's last byte handed to the network
    qint64 databaseMicroseconds = 0; ///< of them, in statements of the database
    bool delivered = true;           ///< false: the connection broke before the reply was out
};

/// One JSON object a line. Query strings, headers, tokens and bodies never get here.
class AccessLog
{
public:
    /// Appends to @p path, or writes to stderr when it is empty. Throws Failure when the file cannot be
    /// opened.
    explicit AccessLog(const QString& path);
    AccessLog(const AccessLog&) = delete;
    AccessLog& operator=(const AccessLog&) = delete;
    ~AccessLog();

    /// Has @p observer see every request that is logged, on the thread that logs it. To be called before the
    /// first one.
    void setObserver(std::function<void(const AccessEntry&)> observer) { m_observer = std::move(observer); }

    /// The following may be called from any thread.
    void request(const AccessEntry& entry);
    /// Trouble inside the service, for the operator. @param request id of the request that met it, if any.
    void error(const QString& message, const QByteArray& request = QByteArray());
    /// Goes on in a new file of the same path, for whoever has moved the old one away. Where that fails it
    /// goes on in the old one and says so there. Does nothing when the log goes to stderr.
    void reopen();

private:
    void write(const QByteArray& line);

    QString m_path;
    std::function<void(const AccessEntry&)> m_observer;
    std::mutex m_mutex;
    std::FILE* m_file = nullptr;
};

} // namespace PlanService
