#include "../access/Caller.h"
#include "../json/JsonWriter.h"
#include "../store/Store.h"
#include "Endpoints.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace PlanService {

namespace {

constexpr int largestKey = 200;
constexpr int largestSetting = 256 * 1024;

QString settingKey(const Call& call)
{
    const QString key = call.parameter("key");
    if (key.size() > largestKey) {
        throw ApiError(400, QStringLiteral("badKey"),
                       QStringLiteral("a setting's key has at most %1 characters, this one has %2")
                           .arg(largestKey)
                           .arg(key.size()),
                       QStringLiteral("key"));
    }
    return key;
}

Reply settingReply(const QByteArray& value)
{
    JsonWriter json;
    json.beginObject();
    if (!value.isEmpty()) {
        json.key("value").raw(value);
    }
    json.endObject();
    return {200, {json.take()}, {}, {}};
}

/// Compact JSON text of any value; QJsonDocument itself writes objects and arrays only.
QByteArray jsonText(const QJsonValue& value)
{
    const QByteArray wrapped = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return wrapped.mid(1, wrapped.size() - 2);
}

} // namespace

Reply getUserSetting(const Call& call)
{
    return settingReply(call.store.userSetting(call.caller.userId(), settingKey(call)));
}

Reply putUserSetting(const Call& call)
{
    const QString key = settingKey(call);
    const QJsonObject body = call.bodyObject(largestSetting);
    if (!body.contains(QLatin1String("value"))) {
        throw ApiError(400, QStringLiteral("missingValue"), QStringLiteral("the body has no key 'value'"),
                       QStringLiteral("value"));
    }
    const QByteArray value = jsonText(body.value(QLatin1String("value")));
    Transaction transaction(call.store);
    call.store.setUserSetting(call.caller.userId(), key, value);
    transaction.commit();
    return settingReply(value);
}

} // namespace PlanService
