#pragma once

#include "../filters/FilterSql.h"
#include "Store.h"

namespace PlanService {

/// Appends what lets through the rows of a table with the column category that the user may read; those
/// with rights to their own only must meet @p own. Categories without rights of their own follow the rights
/// for the whole project.
void addVisibility(const Visibility& visible, const SqlCondition& own, SqlCondition& condition);

/// Of nodes: the user is responsible, executing or cooperating.
SqlCondition worksOn(const QString& user);

/// Of nodes: the user works on it or created it.
SqlCondition ownNode(const QString& user);

} // namespace PlanService
