#include "SqliteBackup.h"

#include "../store/Migrations.h"
#include "../store/SqliteDatabase.h"

#include <QDateTime>
#include <QFileInfo>

namespace PlanService {

namespace {

void requireDatabase(const QString& path)
{
    switch (inspectDatabaseFile(path)) {
    case DatabaseFile::Ours:
        return;
    case DatabaseFile::Missing:
        throw Failure(QStringLiteral("there is no file '%1'; check the path").arg(path));
    case DatabaseFile::Empty:
    case DatabaseFile::Foreign:
        throw Failure(QStringLiteral("'%1' is no planservice database; name another one").arg(path));
    }
}

/// A database file that takes the place of another must not meet that one's log.
void requireNoLeftovers(const QString& path)
{
    for (const char* rest : {"-wal", "-journal"}) {
        if (QFileInfo::exists(path + QLatin1String(rest))) {
            throw Failure(QStringLiteral("'%1' belongs to another database of that name; move it away first")
                              .arg(path + QLatin1String(rest)));
        }
    }
}

/// Reads the database from its first page to its last. Throws Failure when anything is wrong with it; the
/// message calls it @p name and ends in @p advice.
DatabaseContents checkedContents(SqliteDatabase& database, const QString& name, const char* advice)
{
    const auto refuse = [&](const QString& reason) {
        throw Failure(QStringLiteral("'%1' is damaged: %2; %3").arg(name, reason, sql(advice)));
    };
    DatabaseContents contents;
    try {
        const QString found = database.value(sql("PRAGMA integrity_check")).toString();
        if (found != QLatin1String("ok")) {
            refuse(found.simplified());
        }
        if (database.value(sql("PRAGMA foreign_key_check")).isValid()) {
            refuse(QStringLiteral("a record belongs to another one that is missing"));
        }
        contents.schemaVersion = database.value(sql("PRAGMA user_version")).toInt();
        contents.plans = database.value(sql("SELECT count(*) FROM plans")).toLongLong();
        contents.planNodes = database.value(sql("SELECT count(*) FROM planNodes")).toLongLong();
    } catch (const StoreError& error) {
        refuse(error.message());
    }
    return contents;
}

/// Copies what the database holds at this instant.
void copyInto(SqliteDatabase& database, const QString& name, const NewFile& file)
{
    try {
        database.run(sql("VACUUM INTO ?"), {file.writingPath()}).finish();
    } catch (const StoreError& error) {
        throw Failure(QStringLiteral("cannot copy '%1' into '%2': %3; is the disk full?")
                          .arg(name, file.path(), error.message()));
    }
}

/// The same, checked and published.
DatabaseContents publishCopy(const QString& database, NewFile& file, const char* advice)
{
    {
        SqliteDatabase source(database);
        copyInto(source, database, file);
    }
    DatabaseContents contents;
    {
        SqliteDatabase copy(file.writingPath());
        contents = checkedContents(copy, database, advice);
    }
    file.publish();
    return contents;
}

/// Makes @p staged a copy of the backup with today's schema.
DatabaseContents stage(const QString& backup, const NewFile& staged)
{
    SqliteDatabase source(backup);
    DatabaseContents contents = checkedContents(source, backup, "take another backup");
    const int newest = migrations().last().version;
    if (contents.schemaVersion > newest) {
        throw Failure(QStringLiteral("'%1' has schema version %2, this program knows up to %3; "
                                     "restore it with the planservice that wrote it, or a newer one")
                          .arg(backup)
                          .arg(contents.schemaVersion)
                          .arg(newest));
    }
    copyInto(source, backup, staged);
    SqliteDatabase copy(staged.writingPath());
    migrate(copy, migrations());
    contents.schemaVersion = newest;
    return contents;
}

bool hasRows(SqliteDatabase& database, const QString& table)
{
    return database.value(sql("SELECT EXISTS (SELECT 1 FROM %1)").arg(table)).toBool();
}

/// Names and definitions of the tables of "main" or "staged".
QList<QPair<QString, QString>> tablesOf(SqliteDatabase& database, const char* schema)
{
    QSqlQuery& rows = database.run(sql("SELECT name, sql FROM %1.sqlite_master WHERE type = 'table'"
                                       " AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY name")
                                       .arg(QLatin1String(schema)));
    QList<QPair<QString, QString>> tables;
    while (rows.next()) {
        tables.append({rows.value(0).toString(), rows.value(1).toString()});
    }
    rows.finish();
    return tables;
}

bool isAboutAccess(const QString& table)
{
    return table == QLatin1String("tokens") || table == QLatin1String("rights");
}

/// Makes the copy of the backup known to the database as "staged". Only rows are taken from it: whatever else
/// a file from elsewhere holds, such as triggers, stays there.
void attach(SqliteDatabase& database, const NewFile& staged, const QString& suspect, const char* advice)
{
    database.run(sql("ATTACH ? AS staged"), {staged.writingPath()}).finish();
    if (tablesOf(database, "main") != tablesOf(database, "staged")) {
        throw Failure(
            QStringLiteral("'%1' has other tables than this program makes; %2").arg(suspect, sql(advice)));
    }
}

/// Everything from the attached "staged", in the transaction that is open.
void replaceContents(SqliteDatabase& database, bool keepTokens)
{
    const auto tables = tablesOf(database, "main");
    for (const auto& table : tables) {
        if (!keepTokens || !isAboutAccess(table.first)) {
            database.execute(sql("DELETE FROM main.%1").arg(table.first));
            database.execute(sql("INSERT INTO main.%1 SELECT * FROM staged.%1").arg(table.first));
        }
    }
    // A backup may have been edited, so its versions say nothing of what services keep of the plans.
    database.execute(newVersionsOfPlans());
}

QString nameToKeep(const QString& database)
{
    return database + QStringLiteral(".before-restore-") +
           QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss-zzz"));
}

void requireEmpty(SqliteDatabase& database, const QString& name)
{
    const auto tables = tablesOf(database, "main");
    for (const auto& table : tables) {
        if (!isAboutAccess(table.first) && hasRows(database, table.first)) {
            throw Failure(
                QStringLiteral("database '%1' holds plans or settings; --force replaces them and keeps "
                               "a copy beside it")
                    .arg(name));
        }
    }
}

/// @return whether the database's tokens stay.
bool decideOnTokens(SqliteDatabase& database, TokensFrom tokensFrom)
{
    const bool has = hasRows(database, sql("main.tokens"));
    if (has && tokensFrom == TokensFrom::Backup && !hasRows(database, sql("staged.tokens"))) {
        throw Failure(QStringLiteral("the backup has no tokens, and without any everybody may do everything; "
                                     "leave out --with-tokens to keep those of the database"));
    }
    return has && tokensFrom == TokensFrom::Database;
}

/// Writers wait from the copy on, so that it lacks nothing that anybody was told is stored.
void replaceAtOnce(SqliteDatabase& database, const QString& name, TokensFrom tokensFrom,
                   RestoreReport& report)
{
    database.execute(sql("BEGIN IMMEDIATE"));
    try {
        report.tokensKept = decideOnTokens(database, tokensFrom);
        report.keptAs = nameToKeep(name);
        NewFile kept(report.keptAs, Existing::Keep);
        publishCopy(name, kept, "move it away while no service runs, and restore again");
        replaceContents(database, report.tokensKept);
        database.execute(sql("COMMIT"));
    } catch (...) {
        database.rollback();
        throw;
    }
}

} // namespace

DatabaseContents backUpSqlite(const QString& database, const QString& file, Existing existing)
{
    requireDatabase(database);
    if (isSameFile(database, file)) {
        throw Failure(QStringLiteral("'%1' is the database itself; name another file").arg(file));
    }
    requireNoLeftovers(file);
    NewFile copy(file, existing);
    return publishCopy(database, copy, "restore the newest backup that is whole");
}

RestoreReport restoreSqlite(const QString& file, const QString& database, Existing existing,
                            TokensFrom tokensFrom)
{
    requireDatabase(file);
    if (isSameFile(database, file)) {
        throw Failure(QStringLiteral("'%1' is the database itself; name another file").arg(file));
    }
    const bool missing = !QFileInfo::exists(database);
    if (missing) {
        requireNoLeftovers(database);
    } else {
        requireDatabase(database);
    }
    RestoreReport report;
    NewFile staged(database + QStringLiteral(".restore"), Existing::Keep);
    if (missing) {
        report.contents = stage(file, staged);
        NewFile made(database, Existing::Keep);
        {
            SqliteDatabase target(made.writingPath());
            migrate(target, migrations());
            attach(target, staged, file, "take another backup");
            target.execute(sql("BEGIN IMMEDIATE"));
            replaceContents(target, false);
            target.execute(sql("COMMIT"));
        }
        made.publish();
        return report;
    }
    SqliteDatabase target(database);
    migrate(target, migrations());
    if (existing == Existing::Keep) {
        requireEmpty(target, database);
    }
    report.contents = stage(file, staged);
    // Readers go on beside a log of changes; whole tables come and go, and the backup's references were
    // checked.
    target.execute(sql("PRAGMA journal_mode = WAL"));
    target.execute(sql("PRAGMA foreign_keys = OFF"));
    attach(target, staged, database, "move it away while no service runs, and restore again");
    replaceAtOnce(target, database, tokensFrom, report);
    return report;
}

} // namespace PlanService
