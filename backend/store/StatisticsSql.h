#pragma once

#include "PlanListSql.h"

namespace PlanService {

/// Rows of status, situation and number of nodes; see Store::nodeCounts().
SqlStatement nodeCountSql(const NodeScope& scope, const QString& today);
/// Rows of day and number of nodes; see Store::finishedPerDay().
SqlStatement finishedPerDaySql(const NodeScope& scope);

} // namespace PlanService
