#pragma once

#include "SqlDatabase.h"

#include <QStringList>

namespace PlanService {

/// One step of the schema: from version - 1 to version.
struct Migration
{
    int version = 0;
    QStringList statements;
};

/// Every step of SQLite's schema, oldest first. A step that was released is never edited: a change to the
/// schema is a new step.
const QList<Migration>& migrations();
/// The same for PostgreSQL. Versions mean the same in both; PostgreSQL's begins with the seventh as a whole.
const QList<Migration>& postgresMigrations();

/// The statement, of the eighth step and of a restore, that gives every plan a version which no state of a
/// plan had before; see Store::planText().
QString newVersionsOfPlans();
QString newVersionsOfPostgresPlans();

/// Brings the database up to the last of @p steps. Each step and its version number are one transaction, so a
/// crash leaves a whole version behind and the next start goes on from there. Throws StoreError when the
/// database is newer than @p steps or a step fails; what was committed stays.
void migrate(SqlDatabase& database, const QList<Migration>& steps);

} // namespace PlanService
