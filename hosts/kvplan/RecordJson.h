#pragma once

#include <model/KvPlanRecords.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

/// A record as JSON for programs: every field under its own name, dates in ISO 8601, null where not set. Left
/// out are the reserved fields, and the children of a node.
QJsonObject planToJson(const KvPlan& plan);
QJsonObject nodeToJson(const KvPlanNode& node);
QJsonArray nodesToJson(const QList<KvPlanNode>& nodes);
QJsonObject responseToJson(const KvPlanNodeResponse& response);
QJsonObject statisticsToJson(const KvPlanStatistics& statistics);
QJsonObject quantityToJson(const KvStatisticsQuantity& quantity);
QJsonObject stateToJson(const KvMeteringState& state);
