#include "PostgresBackup.h"

#include "../store/Migrations.h"
#include "../store/OpenStore.h"
#include "../store/PostgresDatabase.h"
#include "PostgresArchive.h"
#include "PostgresTools.h"

#include <QDateTime>

namespace PlanService {

namespace {

/// As the server writes their names; those that others refer to come first.
const QStringList& tables()
{
    static const QStringList all{sql("documents"),    sql("plans"),      sql("plannodes"), sql("responses"),
                                 sql("usersettings"), sql("taskstates"), sql("tokens"),    sql("rights")};
    return all;
}

bool isAboutAccess(const QString& table)
{
    return table == QLatin1String("tokens") || table == QLatin1String("rights");
}

void dump(const PostgresTools& tools, const QString& schema, NewFile& file, const QString& snapshot)
{
    QStringList arguments{sql("--format=custom"),
                          sql("--no-owner"),
                          sql("--no-privileges"),
                          sql("--no-password"),
                          sql("--lock-wait-timeout=60s"),
                          sql("--schema=\"%1\"").arg(schema),
                          sql("--file=") + file.writingPath(),
                          tools.databaseOption()};
    if (!snapshot.isEmpty()) {
        arguments.append(sql("--snapshot=") + snapshot);
    }
    tools.run(sql("pg_dump"), arguments);
    // Reads it from the first byte to the last.
    tools.run(sql("pg_restore"), {sql("--file=/dev/null"), file.writingPath()});
    file.publish();
}

void requireKnown(const PostgresArchive& archive, const QString& file)
{
    const int newest = postgresMigrations().last().version;
    if (archive.schemaVersion() > newest) {
        throw Failure(QStringLiteral("'%1' has schema version %2, this program knows up to %3; "
                                     "restore it with the planservice that wrote it, or a newer one")
                          .arg(file)
                          .arg(archive.schemaVersion())
                          .arg(newest));
    }
}

QString schemaOf(PostgresDatabase& database)
{
    return database.value(sql("SELECT CAST(current_schema() AS TEXT)")).toString();
}

DatabaseContents contentsOf(PostgresDatabase& database)
{
    DatabaseContents contents;
    contents.schemaVersion = database.schemaVersion();
    contents.plans = database.value(sql("SELECT count(*) FROM plans")).toLongLong();
    contents.planNodes = database.value(sql("SELECT count(*) FROM planNodes")).toLongLong();
    return contents;
}

bool hasRows(PostgresDatabase& database, const QString& table)
{
    return database.value(sql("SELECT EXISTS (SELECT 1 FROM %1)").arg(table)).toBool();
}

void requireEmpty(PostgresDatabase& database)
{
    for (const QString& table : tables()) {
        if (!isAboutAccess(table) && hasRows(database, table)) {
            throw Failure(
                QStringLiteral("database '%1' holds plans or settings; --force replaces them and keeps "
                               "a copy beside it")
                    .arg(database.name()));
        }
    }
}

/// The tables are those that this program made when it was at the backup's version.
void fillEmpty(const PostgresTools& tools, const PostgresArchive& archive)
{
    QByteArray script = "BEGIN;\n";
    for (const Migration& step : postgresMigrations()) {
        if (step.version <= archive.schemaVersion()) {
            for (const QString& statement : step.statements) {
                script += statement.toUtf8() + ";\n";
            }
            script += "INSERT INTO planserviceSchema (version) VALUES (" + QByteArray::number(step.version) +
                      ");\n";
        }
    }
    for (const QString& table : tables()) {
        script += archive.fillingScript(table);
    }
    RunningProgram psql;
    tools.startPsql(psql);
    psql.write(script + "COMMIT;\n");
    PostgresTools::finish(psql);
}

/// Writers wait from the lock on, readers read what was there until the end.
void replaceAtOnce(const PostgresTools& tools, PostgresDatabase& database, const QString& file,
                   const PostgresArchive& archive, TokensFrom tokensFrom, RestoreReport& report)
{
    RunningProgram psql;
    tools.startPsql(psql);
    psql.write("SET lock_timeout = '60s';\nBEGIN;\nLOCK TABLE " +
               tables().join(QLatin1String(", ")).toUtf8() + " IN EXCLUSIVE MODE;\n\\echo locked\n");
    PostgresTools::awaitEcho(psql, "locked");
    const bool has = hasRows(database, sql("tokens"));
    if (has && tokensFrom == TokensFrom::Backup && archive.count(sql("tokens")) == 0) {
        throw Failure(QStringLiteral("the backup has no tokens, and without any everybody may do everything; "
                                     "leave out --with-tokens to keep those of the database"));
    }
    report.tokensKept = has && tokensFrom == TokensFrom::Database;
    report.keptAs = file + QStringLiteral(".before-restore-") +
                    QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss-zzz"));
    NewFile kept(report.keptAs, Existing::Keep);
    dump(tools, schemaOf(database), kept, QString());
    QByteArray emptying;
    QByteArray filling;
    for (const QString& table : tables()) {
        if (!report.tokensKept || !isAboutAccess(table)) {
            emptying.prepend("DELETE FROM " + table.toUtf8() + ";\n");
            filling += archive.fillingScript(table);
        }
    }
    // A backup may have been edited, so its versions say nothing of what services keep of the plans.
    psql.write(emptying + filling + newVersionsOfPostgresPlans().toUtf8() + ";\nCOMMIT;\n");
    PostgresTools::finish(psql);
}

} // namespace

DatabaseContents backUpPostgres(const QString& database, const QString& file, Existing existing)
{
    const PostgresAddress address = readPostgresAddress(database);
    PostgresDatabase source(address);
    if (source.schemaVersion() == 0) {
        throw Failure(QStringLiteral("'%1' is no planservice database; name another one").arg(source.name()));
    }
    NewFile copy(file, existing);
    // What is counted and what is copied are of one moment.
    source.beginReading();
    const QString snapshot = source.value(sql("SELECT pg_export_snapshot()")).toString();
    dump(PostgresTools(address), schemaOf(source), copy, snapshot);
    const DatabaseContents contents = contentsOf(source);
    source.rollback();
    return contents;
}

RestoreReport restorePostgres(const QString& file, const QString& database, Existing existing,
                              TokensFrom tokensFrom)
{
    const PostgresAddress address = readPostgresAddress(database);
    const PostgresTools tools(address);
    const PostgresArchive archive(tools, file, tables());
    requireKnown(archive, file);
    PostgresDatabase target(address);
    RestoreReport report;
    if (target.isEmpty()) {
        fillEmpty(tools, archive);
        openStore(database, MissingDatabase::Refuse);
        report.contents = contentsOf(target);
        return report;
    }
    openStore(database, MissingDatabase::Refuse);
    if (archive.schemaVersion() != target.schemaVersion()) {
        throw Failure(QStringLiteral("'%1' has schema version %2, the database %3; restore it into an empty "
                                     "database, where it is brought up to date")
                          .arg(file)
                          .arg(archive.schemaVersion())
                          .arg(target.schemaVersion()));
    }
    if (existing == Existing::Keep) {
        requireEmpty(target);
    }
    replaceAtOnce(tools, target, file, archive, tokensFrom, report);
    report.contents = contentsOf(target);
    return report;
}

} // namespace PlanService
