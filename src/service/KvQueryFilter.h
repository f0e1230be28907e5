#pragma once

#include <model/KvPlanCondition.h>

#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QString>
#include <QtCore/QStringList>

/// The filters that the service's list and count endpoints take in their URL: a compact JSON object of the
/// service's query language, and plain parameters behind it. Pure functions; nothing is percent-encoded here.
namespace Kv {

/// What stands at `where=` of the plan list and plan count endpoints; "{}" for an empty condition.
QString buildPlanQuery(const KvPlanCondition& condition);

/// From the start of the first day to the end of the last, whose day is taken whole: {"$gte": …, "$lt": …}.
/// A date that is not set or not valid stands there as "".
QJsonObject makeDateRangeFilter(const KvPlanCondition& condition);

/// A case-insensitive pattern, used as it stands: {"$regex": name, "$options": "i"}.
QJsonObject makeNameRegexFilter(const KvPlanCondition& condition);

} // namespace Kv
