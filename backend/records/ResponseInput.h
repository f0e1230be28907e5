#pragma once

#include "../store/Store.h"

#include <QJsonObject>

namespace PlanService {

constexpr int mostAttachments = 1000; ///< documents, and as many media, of one response

/// A response as a client sends it.
struct ResponseInput
{
    QString hostId; ///< empty: not sent
    QString remark;
    int percentage = 0; ///< 0 to 100; 0: none was reported, as clients have no other way to say so
    QString actualStartDate;
    QString actualFinishDate;
    QStringList documentIds;
    QByteArray media; ///< JSON array; those without a file are left away
};

/// Throws ApiError 400 that names the key: for a value of the wrong type or outside its range, for a finish
/// before the start, and for too many attachments.
ResponseInput readResponse(const QJsonObject& input);

/// The response as it is stored, with an id of its own.
ResponseRecord newResponse(const ResponseInput& input, const QString& planNodeId, const QString& now,
                           const QString& user);

/// What the response changes about its node, under the keys of a node that a client sends; see
/// docs/planservice.md. Afterwards the node is finished exactly when it stands at 100 percent, unless the
/// response reports neither a percentage nor a finish. Throws ApiError 400 when the node would finish before
/// it started.
/// @param node document of the node as it is stored.
QJsonObject progressOf(const ResponseInput& input, const QJsonObject& node, const QString& now);

} // namespace PlanService
