#pragma once

// What tests of plans over HTTP share.

#include "RawHttp.h"
#include "Text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace KvTest {

inline QByteArray bearer(const QByteArray& token)
{
    return "Authorization: Bearer " + token + "\r\n";
}

inline QByteArray jsonOf(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

inline QJsonObject objectOf(const RawReply& reply)
{
    return QJsonDocument::fromJson(reply.body).object();
}

inline QString errorOf(const RawReply& reply)
{
    const QJsonObject error = objectOf(reply).value("error"_s).toObject();
    return error.value("code"_s).toString() + QLatin1Char(' ') + error.value("field"_s).toString();
}

inline QJsonObject task(const QString& name, int uniqueId, int parent = -1)
{
    return {{"name"_s, name},
            {"uniqueId"_s, uniqueId},
            {"parentTaskID"_s, parent},
            {"displaySimulation"_s, false},
            {"startDate"_s, "2026-03-02T08:00:00.000"_s},
            {"finishDate"_s, "2026-03-04T17:00:00.000"_s},
            {"links"_s, QJsonArray{QJsonObject{{"modelId"_s, "m"_s}, {"entityIds"_s, QJsonArray{"e1"_s}}}}}};
}

inline QByteArray idOf(const QJsonObject& object)
{
    return object.value("_id"_s).toString().toLatin1();
}

} // namespace KvTest
