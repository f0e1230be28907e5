#pragma once

#include "PlanListSql.h"

namespace PlanService {

/// Rows of one column, each a node's JSON, in the order of PlanNodeQuery.
SqlStatement planNodeListSql(const PlanNodeQuery& query);
/// The nodes' rows with these columns, in no order.
SqlStatement planNodeRowsSql(const QString& columns, const PlanNodeQuery& query);

} // namespace PlanService
