#pragma once

#include <QByteArray>
#include <QJsonDocument>
#include <QString>

namespace PlanService {

/// The first key that stands again in the same object although its earlier value is a list or an object; null
/// when there is none. One walk over the text, which need not be JSON.
QString repeatedKey(const QByteArray& json);

/// The document that a client sent, null with @p error told when it is none. Throws ApiError 400 for a
/// repeated key as above: Qt's parser would never free the earlier value, so that such requests would eat up
/// the memory.
QJsonDocument clientDocument(const QByteArray& json, QJsonParseError* error = nullptr);

} // namespace PlanService
