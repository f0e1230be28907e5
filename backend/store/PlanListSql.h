#pragma once

#include "../filters/FilterSql.h"
#include "Store.h"

namespace PlanService {

/// A statement whose parameters are to be bound in their order.
struct SqlStatement
{
    QString text;
    QVariantList parameters;
};

/// Rows of one column, each a plan's document, in the order of PlanQuery.
SqlStatement planListSql(const PlanQuery& query);
/// One row with the number of plans.
SqlStatement planCountSql(const PlanQuery& query);

} // namespace PlanService
