#include "AccessLog.h"

#include "../Failure.h"
#include "../json/JsonWriter.h"

#include <QDateTime>
#include <QFile>

#include <cerrno>
#include <cstring>

namespace PlanService {

namespace {

QString nowUtc()
{
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
}

} // namespace

AccessLog::AccessLog(const QString& path)
    : m_file(stderr)
{
    if (!path.isEmpty()) {
        m_file = std::fopen(QFile::encodeName(path).constData(), "ab");
        if (!m_file) {
            throw Failure(
                QStringLiteral("cannot write the log '%1': %2; name a file in a folder you may write to")
                    .arg(path, QString::fromLocal8Bit(std::strerror(errno))));
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
    json.key("remote").utf8(entry.remoteAddress);
    // A path is bytes from outside and may be no UTF-8; the log line stays JSON all the same.
    json.key("method").text(QString::fromUtf8(entry.method));
    json.key("path").text(QString::fromUtf8(entry.path));
    json.key("status").number(entry.status);
    json.key("bytes").number(entry.bytes);
    json.key("microseconds").number(entry.microseconds);
    json.key("delivered").flag(entry.delivered);
    json.endObject();
    write(json.take());
}

void AccessLog::error(const QString& message)
{
    JsonWriter json;
    json.beginObject();
    json.key("time").text(nowUtc());
    json.key("error").text(message);
    json.endObject();
    write(json.take());
}

void AccessLog::write(const QByteArray& line)
{
    const QByteArray whole = line + '\n';
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::fwrite(whole.constData(), 1, static_cast<std::size_t>(whole.size()), m_file);
    std::fflush(m_file);
}

} // namespace PlanService
