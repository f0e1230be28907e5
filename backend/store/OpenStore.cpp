#include "OpenStore.h"

#include "Migrations.h"
#include "PostgresAddress.h"
#include "PostgresDatabase.h"
#include "SqlStore.h"
#include "SqliteDatabase.h"

namespace PlanService {

namespace {

[[noreturn]] void refuseMissing(const QString& what, const QString& name)
{
    throw StoreError(
        (what + QStringLiteral("; create one with: planservice seed --database '%1'")).arg(name));
}

[[noreturn]] void refuseForeign(const QString& name, const QString& advice)
{
    throw StoreError(
        QStringLiteral("'%1' is not a planservice database; it was left as it is, %2").arg(name, advice));
}

std::unique_ptr<SqlDatabase> openPostgres(const QString& address, MissingDatabase missing)
{
    auto database = std::make_unique<PostgresDatabase>(readPostgresAddress(address));
    // Asked in this order: another process may make the tables at this moment, all of them at once.
    if (database->isEmpty()) {
        if (missing == MissingDatabase::Refuse) {
            refuseMissing(QStringLiteral("database '%1' is empty"), database->name());
        }
    } else if (database->schemaVersion() == 0) {
        refuseForeign(database->name(), QStringLiteral("name another database"));
    }
    migrate(*database, postgresMigrations());
    return database;
}

std::unique_ptr<SqlDatabase> openSqlite(const QString& path, MissingDatabase missing)
{
    const DatabaseFile file = inspectDatabaseFile(path);
    if (file == DatabaseFile::Foreign) {
        refuseForeign(path, QStringLiteral("name another file"));
    }
    if (file != DatabaseFile::Ours && missing == MissingDatabase::Refuse) {
        refuseMissing(file == DatabaseFile::Missing ? QStringLiteral("database '%1' does not exist")
                                                    : QStringLiteral("database '%1' is empty"),
                      path);
    }
    auto database = std::make_unique<SqliteDatabase>(path);
    // A new file gets its schema before it changes to the write-ahead log, so that the main file's header
    // tells whose it is from the first commit on.
    migrate(*database, migrations());
    database->setUp();
    return database;
}

} // namespace

std::unique_ptr<Store> openStore(const QString& database, MissingDatabase missing)
{
    return std::make_unique<SqlStore>(isPostgresAddress(database) ? openPostgres(database, missing)
                                                                  : openSqlite(database, missing));
}

std::unique_ptr<Store> connectStore(const QString& database, std::shared_ptr<PlanCache> texts)
{
    if (isPostgresAddress(database)) {
        return std::make_unique<SqlStore>(std::make_unique<PostgresDatabase>(readPostgresAddress(database)),
                                          std::move(texts));
    }
    auto file = std::make_unique<SqliteDatabase>(database);
    file->setUp();
    return std::make_unique<SqlStore>(std::move(file), std::move(texts));
}

} // namespace PlanService
