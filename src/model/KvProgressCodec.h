#pragma once

#include <model/KvPlanNodeResponse.h>
#include <model/KvPlanStatistics.h>

#include <QtCore/QJsonObject>

/// Conversion between the records of progress and the JSON of the task and state services.
///
/// Readers never fail; missing and mistyped keys read as for plans. Writers write every key, those of
/// identifiers as null when the text is empty.
namespace Kv {

/// `documentIds` are those of the expanded documents; both are added to what @p out holds, while `media` is
/// replaced. Media without a file are left out.
void jsonObjectToPlanNodeResponse(const QJsonObject& in, KvPlanNodeResponse& out);
void planNodeResponseToJsonObject(const KvPlanNodeResponse& in, QJsonObject& out);

KvMedia jsonObjectToMedia(const QJsonObject& in);
QJsonObject mediaToJsonObject(const KvMedia& in);

void jsonObjectToMeteringState(const QJsonObject& in, KvMeteringState& out);
/// Writes the current project besides the record's identifiers, and no state code: an endpoint that sends one
/// adds it.
void meteringStateToJsonObject(const KvMeteringState& in, QJsonObject& out);

KvPlanStatistics jsonObjectToPlanStatistics(const QJsonObject& in);
KvStatusStatistics jsonObjectToStatusStatistics(const QJsonObject& in);
KvSituationCount jsonObjectToSituationCount(const QJsonObject& in);
KvStatisticsQuantity jsonObjectToStatisticsQuantity(const QJsonObject& in);

} // namespace Kv
