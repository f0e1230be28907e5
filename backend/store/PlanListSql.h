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

/// The parameter of LIMIT; a negative limit lets all rows through.
QVariant mostRows(int limit);

/// Rows of one column, each a plan's document, in the order of PlanQuery.
SqlStatement planListSql(const PlanQuery& query);
/// The plans' rows with these columns, in no order.
SqlStatement planRowsSql(const QString& columns, const PlanQuery& query);

} // namespace PlanService
