#pragma once

#include <model/KvIdValue.h>
#include <model/KvPlanCondition.h>

#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QStringList>

/// The filters that the service's list and count endpoints take in their URL: a compact JSON object of the
/// service's query language, and plain parameters behind it. Pure functions; nothing is percent-encoded here.
namespace Kv {

/// What stands at `where=` of the plan list and plan count endpoints; "{}" for an empty condition.
QString buildPlanQuery(const KvPlanCondition& condition);

/// What stands at `where=` of the plan-node list and count endpoints: the filter ("{}" for none), then
/// "&category=", "&list=" and "&finish=" as far as the condition asks for them, in this order.
QString buildPlanNodeQuery(const KvPlanNodeCondition& condition);

/// From the start of the first day to the end of the last, whose day is taken whole: {"$gte": …, "$lt": …}.
/// A date that is not set or not valid stands there as "".
QJsonObject makeDateRangeFilter(const KvPlanCondition& condition);
QJsonObject makeDateRangeFilter(const KvPlanNodeCondition& condition);

/// A case-insensitive pattern, used as it stands: {"$regex": name, "$options": "i"}.
QJsonObject makeNameRegexFilter(const KvPlanCondition& condition);

/// Any of @p values, in their order, an empty one as null: {"$in": […]}.
QJsonObject makeInFilter(const QStringList& values);

/// A filter as it stands in a URL: compact JSON, keys in ascending order.
QString filterText(const QJsonObject& filter);

} // namespace Kv
