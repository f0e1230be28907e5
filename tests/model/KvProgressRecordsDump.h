#pragma once

#include <model/KvPlanNodeResponse.h>
#include <model/KvPlanStatistics.h>

#include <QtCore/QJsonObject>

/// The records of progress as JSON under their own field names; see KvPlanRecordsDump.h.
namespace KvTest {

QJsonObject dump(const KvMedia& media);
QJsonObject dump(const KvPlanNodeResponse& response);
QJsonObject dump(const KvMeteringState& state);
QJsonObject dump(const KvSituationCount& count);
QJsonObject dump(const KvStatusStatistics& statistics);
QJsonObject dump(const KvPlanStatistics& statistics);
QJsonObject dump(const KvStatisticsQuantity& quantity);

/// A response, or state, in which every field holds something else than its default.
KvPlanNodeResponse fullResponse();
KvMeteringState fullState();

} // namespace KvTest
