#include <support/ScriptedMessages.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QStringList>

namespace KvTest {

QByteArray Request::path() const
{
    const int mark = target.indexOf('?');
    return mark < 0 ? target : target.left(mark);
}

QByteArray Request::query() const
{
    const int mark = target.indexOf('?');
    return mark < 0 ? QByteArray() : target.mid(mark + 1);
}

QString Request::decodedPath() const
{
    return QString::fromUtf8(QByteArray::fromPercentEncoding(path()));
}

QString Request::queryValue(const QByteArray& key) const
{
    const QList<QByteArray> pairs = query().split('&');
    for (const QByteArray& pair : pairs) {
        const int equals = pair.indexOf('=');
        if (QByteArray::fromPercentEncoding(equals < 0 ? pair : pair.left(equals)) == key) {
            const QByteArray value = equals < 0 ? QByteArray() : pair.mid(equals + 1);
            // Not null even when empty: the key is there.
            return QString::fromUtf8(QByteArray::fromPercentEncoding(value)) + QLatin1String("");
        }
    }
    return {};
}

QStringList Request::queryKeys() const
{
    QStringList keys;
    const QList<QByteArray> pairs = query().split('&');
    for (const QByteArray& pair : pairs) {
        const int equals = pair.indexOf('=');
        if (!pair.isEmpty())
            keys.append(
                QString::fromUtf8(QByteArray::fromPercentEncoding(equals < 0 ? pair : pair.left(equals))));
    }
    return keys;
}

QByteArray Request::header(const QByteArray& name) const
{
    for (const auto& header : headers) {
        if (header.first.compare(name, Qt::CaseInsensitive) == 0)
            return header.second;
    }
    return {};
}

QJsonObject Request::object() const
{
    return QJsonDocument::fromJson(body).object();
}

QJsonArray Request::array() const
{
    return QJsonDocument::fromJson(body).array();
}

Reply Reply::json(const QJsonObject& object, int status)
{
    return text(QJsonDocument(object).toJson(QJsonDocument::Compact), "application/json", status);
}

Reply Reply::json(const QJsonArray& array, int status)
{
    return text(QJsonDocument(array).toJson(QJsonDocument::Compact), "application/json", status);
}

Reply Reply::text(const QByteArray& body, const QByteArray& contentType, int status)
{
    Reply reply;
    reply.status = status;
    reply.body = body;
    reply.withHeader("Content-Type", contentType);
    return reply;
}

Reply Reply::empty(int status)
{
    Reply reply;
    reply.status = status;
    return reply;
}

Reply Reply::redirect(const QByteArray& location, int status)
{
    Reply reply;
    reply.status = status;
    reply.withHeader("Location", location);
    return reply;
}

Reply& Reply::with(Fault newFault)
{
    fault = newFault;
    return *this;
}

Reply& Reply::withHeader(const QByteArray& name, const QByteArray& value)
{
    headers.append({name, value});
    return *this;
}

Reply& Reply::heldUntil(int requests)
{
    afterRequests = requests;
    return *this;
}

} // namespace KvTest
