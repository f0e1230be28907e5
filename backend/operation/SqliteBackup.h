#pragma once

#include "NewFile.h"

namespace PlanService {

/// What is in a database, as far as a person wants to see it confirmed.
struct DatabaseContents
{
    int schemaVersion = 0;
    qint64 plans = 0;
    qint64 planNodes = 0;
};

/// Copies an SQLite database into one file as it stands at one instant, while others read and write it; they
/// are not held up. The copy holds what is stored and nothing that was deleted, is checked from its first
/// page to its last, and has the schema version of the original, which is not brought up to date. Throws
/// Failure; then there is no new file.
DatabaseContents backUpSqlite(const QString& database, const QString& file, Existing existing);

enum class TokensFrom
{
    Database, ///< who may come in stays as it is, unless the database has no tokens
    Backup,
};

struct RestoreReport
{
    DatabaseContents contents;
    QString keptAs;          ///< file with what the database held before; empty when there was no database
    bool tokensKept = false; ///< the tokens and rights are those that the database had before
};

/// Gives an SQLite database the contents of a backup, brought up to date. What the database holds is first
/// copied into a file beside it. Then everything changes in one transaction: who reads meanwhile reads the
/// old or the new, who wants to write waits or is told that the database is taken up, and after a crash all
/// of the old is there. Services that run on the database go on running.
/// @param existing Keep refuses a database that holds anything.
/// Throws Failure; the database is then as it was.
RestoreReport restoreSqlite(const QString& file, const QString& database, Existing existing,
                            TokensFrom tokensFrom);

} // namespace PlanService
