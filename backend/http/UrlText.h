#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

namespace PlanService {

/// A request target taken apart: segments and query decoded exactly once.
struct UrlText
{
    QStringList segments;         ///< of the path, without the leading slash; an empty segment stays in
    QMap<QString, QString> query; ///< a parameter named twice keeps its last value
};

/// Decodes `%` and two hex digits to bytes and the bytes as UTF-8; `+` stays `+`.
/// Throws ApiError 400 for an incomplete escape, for bytes that are not UTF-8 and for a null character.
QString percentDecoded(const QByteArray& text);

/// Takes a request target ("/a/b?c=d") apart. A slash that came percent-encoded does not part segments.
/// Throws ApiError 400 as percentDecoded does, and for a target that does not begin with a slash.
UrlText parsedTarget(const QByteArray& target);

/// The target without its query, as it came: what a log may hold.
QByteArray pathOf(const QByteArray& target);

} // namespace PlanService
