#pragma once

#include "PlanListSql.h"

namespace PlanService {

/// Rows of one column, each a node's JSON, in the order of PlanNodeQuery.
SqlStatement planNodeListSql(const PlanNodeQuery& query);
/// One row with the number of nodes.
SqlStatement planNodeCountSql(const PlanNodeQuery& query);

} // namespace PlanService
