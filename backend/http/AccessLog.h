#pragma once

#include <QByteArray>
#include <QString>

#include <cstdio>
#include <mutex>

namespace PlanService {

/// One request, as the log tells it.
struct AccessEntry
{
    QByteArray remoteAddress;
    QByteArray method; ///< empty when the request could not be read
    QByteArray path;   ///< without the query; empty when the request could not be read
    int status = 0;
    qint64 bytes = 0;        ///< of the reply's body
    qint64 microseconds = 0; ///< from the request's last byte to the reply's last byte handed to the network
    bool delivered = true;   ///< false: the connection broke before the reply was out
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

    /// Both may be called from any thread.
    void request(const AccessEntry& entry);
    /// Trouble inside the service, for the operator.
    void error(const QString& message);

private:
    void write(const QByteArray& line);

    std::mutex m_mutex;
    std::FILE* m_file = nullptr;
};

} // namespace PlanService
