#include "AccessLog.h"

#include "../Failure.h"
#include "../json/JsonWriter.h"

#include <QDateTime>
#include <QFile>

#include <cerrno>
#include <cstring>
#include <utility>

namespace PlanService {

namespace {

QString nowUtc()
{
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
}

std::FILE* append(const QString& path)
{
    return std::fopen(QFile::encodeName(path).constData(), "ab");
}

QString lastReason()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

} // namespace

AccessLog::AccessLog(const QString& path)
    : m_path(path)
    , m_file(stderr)
{
    if (!path.isEmpty()) {
        m_file = append(path);
        if (!m_file) {
            throw Failure(
                QStringLiteral("cannot write the log '%1': %2; name a file in a folder you may write to")
                    .arg(path, lastReason()));
        }
    }
}

AccessLog::~AccessLog()
{
    if (m_file != stderr) {
        std::fclose(m_file);
    }
}

void AccessLog::request(const AccessEntry& entry)
{
    JsonWriter json;
    json.beginObject();
    json.key("time").text(nowUtc());
    json.key("request").utf8(entry.request);
    json.key("remote").utf8(entry.remoteAddress);
    json.key("user").text(entry.userId);
    json.key("route").utf8(entry.route);
    // A path is bytes from outside and may be no UTF-8; the log line stays JSON all the same.
    json.key("method").text(QString::fromUtf8(entry.method));
    json.key("path").text(QString::fromUtf8(entry.path));
    json.key("status").number(entry.status);
    json.key("received").number(entry.receivedBytes);
    json.key("bytes").number(entry.bytes);
    json.key("microseconds").number(entry.microseconds);
    json.key("databaseMicroseconds").number(entry.databaseMicroseconds);
    json.key("delivered").flag(entry.delivered);
    json.endObject();
    write(json.take());
    if (m_observer) {
        m_observer(entry);
    }
}

void AccessLog::error(const QString& message, const QByteArray& request)
{
    JsonWriter json;
    json.beginObject();
    json.key("time").text(nowUtc());
    if (!request.isEmpty()) {
        json.key("request").utf8(request);
    }
    json.key("error").text(message);
    json.endObject();
    write(json.take());
}

void AccessLog::reopen()
{
    if (m_path.isEmpty()) {
        return;
    }
    std::FILE* fresh = append(m_path);
    if (!fresh) {
        error(QStringLiteral("cannot go on in a new log '%1': %2; the log goes on in the old file")
                  .arg(m_path, lastReason()));
        return;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::fclose(std::exchange(m_file, fresh));
}

void AccessLog::write(const QByteArray& line)
{
    const QByteArray whole = line + '\n';
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::fwrite(whole.constData(), 1, static_cast<std::size_t>(whole.size()), m_file);
    std::fflush(m_file);
}

} // namespace PlanService
