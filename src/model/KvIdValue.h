#pragma once

#include <QtCore/QJsonValue>
#include <QtCore/QString>

namespace Kv {

/// An identifier as the services take it: a JSON string; null when @p text is empty.
inline QJsonValue toIdValue(const QString& text)
{
    return text.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
}

} // namespace Kv
