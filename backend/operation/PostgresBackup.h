#pragma once

#include "SqliteBackup.h"

namespace PlanService {

/// The same as backUpSqlite for postgresql://..., by pg_dump in its own format.
DatabaseContents backUpPostgres(const QString& database, const QString& file, Existing existing);

/// The same as restoreSqlite for postgresql://... and a file of backUpPostgres, by pg_restore and psql. The
/// database has to be there, with or without tables, which are those of this program and never the file's;
/// what it holds is kept in a file beside the backup.
RestoreReport restorePostgres(const QString& file, const QString& database, Existing existing,
                              TokensFrom tokensFrom);

} // namespace PlanService
