#include "PostgresBackup.h"

#include "../store/Migrations.h"
#include "../store/OpenStore.h"
#include "../store/PostgresDatabase.h"
#include "PostgresTools.h"

#include <QDateTime>
#include <QFileInfo>

namespace PlanService {

namespace {

QString sql(const char* text)
{
    return QString::fromLatin1(text);
}

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

QStringList pgRestore(const QStringList& more, const QString& file)
{
    return more + QStringList{file};
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
    tools.run(sql("pg_restore"), pgRestore({sql("--file=/dev/null")}, file.writingPath()));
    file.publish();
}

/// What a backup says of itself.
struct Archive
{
    QStringList entries; ///< lines of its list
    QString schema;
    int version = 0;
};

/// How many rows the backup has of a table, and the largest number that one consists of.
QPair<int, int> rowsOf(const PostgresTools& tools, const QString& file, const QString& table)
{
    const QByteArray text = tools.run(
        sql("pg_restore"), pgRestore({sql("--data-only"), sql("--table=") + table, sql("--file=-")}, file));
    const int begin = text.indexOf("FROM stdin;\n");
    QPair<int, int> found{0, 0};
    if (begin >= 0) {
        const QList<QByteArray> rows =
            text.mid(begin, text.indexOf("\n\\.", begin) - begin).split('\n').mid(1);
        for (const QByteArray& row : rows) {
            found = {found.first + 1, qMax(found.second, row.toInt())};
        }
    }
    return found;
}

Archive readArchive(const PostgresTools& tools, const QString& file)
{
    if (!QFileInfo(file).isFile()) {
        throw Failure(QStringLiteral("there is no file '%1'; check the path").arg(file));
    }
    Archive archive;
    archive.entries = QString::fromUtf8(tools.run(sql("pg_restore"), pgRestore({sql("--list")}, file)))
                          .split(QLatin1Char('\n'));
    for (const QString& entry : qAsConst(archive.entries)) {
        // "216; 1259 16390 TABLE public plans owner"
        const QStringList words = entry.split(QLatin1Char(' '));
        if (words.value(3) == QLatin1String("TABLE") && words.value(5) == QLatin1String("plannodes")) {
            archive.schema = words.value(4);
        }
    }
    archive.version = rowsOf(tools, file, sql("planserviceschema")).second;
    if (archive.version == 0 || archive.schema.isEmpty()) {
        throw Failure(QStringLiteral("'%1' is no backup of a planservice database").arg(file));
    }
    const int newest = postgresMigrations().last().version;
    if (archive.version > newest) {
        throw Failure(QStringLiteral("'%1' has schema version %2, this program knows up to %3; "
                                     "restore it with the planservice that wrote it, or a newer one")
                          .arg(file)
                          .arg(archive.version)
                          .arg(newest));
    }
    tools.run(sql("pg_restore"), pgRestore({sql("--file=/dev/null")}, file));
    return archive;
}

/// The backup as SQL, in a file that goes with the object.
void writeScript(const PostgresTools& tools, const QString& file, const QStringList& entries,
                 const QStringList& options, QTemporaryFile& script)
{
    QTemporaryFile list(file + sql(".XXXXXX.part"));
    if (!list.open() || !script.open() || list.write(entries.join(QLatin1Char('\n')).toUtf8()) < 0 ||
        !list.flush()) {
        throw Failure(QStringLiteral("cannot write '%1': %2; name a file in a folder you may write to")
                          .arg(list.fileName(), list.errorString()));
    }
    tools.run(sql("pg_restore"), pgRestore(options + QStringList{sql("--no-owner"), sql("--no-privileges"),
                                                                 sql("--use-list=") + list.fileName(),
                                                                 sql("--file=") + script.fileName()},
                                           file));
}

QByteArray include(const QTemporaryFile& script)
{
    return "\\i '" + script.fileName().replace(QLatin1Char('\''), QLatin1String("''")).toUtf8() + "'\n";
}

/// Lines of the list that fill these tables, in the tables' order.
QStringList dataEntries(const Archive& archive, const QStringList& wanted)
{
    QStringList entries;
    for (const char* kind : {"TABLE DATA", "SEQUENCE SET"}) {
        for (const QString& table : wanted) {
            const QString data = sql(" TABLE DATA %1 %2 ").arg(archive.schema, table);
            const QString sequence = sql(" SEQUENCE SET %1 %2_").arg(archive.schema, table);
            for (const QString& entry : archive.entries) {
                if (entry.contains(QLatin1String(kind)) &&
                    (entry.contains(data) || entry.contains(sequence))) {
                    entries.append(entry);
                }
            }
        }
    }
    return entries;
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

void fillEmpty(const PostgresTools& tools, const QString& file, const Archive& archive)
{
    QStringList entries;
    for (const QString& entry : archive.entries) {
        // The schema itself is there.
        if (!entry.contains(QLatin1String(" SCHEMA - "))) {
            entries.append(entry);
        }
    }
    QTemporaryFile script(file + sql(".XXXXXX.part"));
    writeScript(tools, file, entries, {}, script);
    QProcess psql;
    tools.startPsql(psql);
    psql.write("BEGIN;\n" + include(script) + "COMMIT;\n");
    PostgresTools::finish(psql);
}

/// Writers wait from the lock on, readers read what was there until the end.
void replaceAtOnce(const PostgresTools& tools, PostgresDatabase& database, const QString& file,
                   const Archive& archive, TokensFrom tokensFrom, RestoreReport& report)
{
    QProcess psql;
    tools.startPsql(psql);
    psql.write("SET lock_timeout = '60s';\nBEGIN;\nLOCK TABLE " +
               tables().join(QLatin1String(", ")).toUtf8() + " IN EXCLUSIVE MODE;\n\\echo locked\n");
    PostgresTools::awaitEcho(psql, "locked");
    const bool has = hasRows(database, sql("tokens"));
    if (has && tokensFrom == TokensFrom::Backup && rowsOf(tools, file, sql("tokens")).first == 0) {
        throw Failure(QStringLiteral("the backup has no tokens, and without any everybody may do everything; "
                                     "leave out --with-tokens to keep those of the database"));
    }
    report.tokensKept = has && tokensFrom == TokensFrom::Database;
    report.keptAs = file + QStringLiteral(".before-restore-") +
                    QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss-zzz"));
    NewFile kept(report.keptAs, Existing::Keep);
    dump(tools, archive.schema, kept, QString());
    QStringList wanted;
    QByteArray emptying;
    for (const QString& table : tables()) {
        if (!report.tokensKept || !isAboutAccess(table)) {
            wanted.append(table);
            emptying.prepend("DELETE FROM " + table.toUtf8() + ";\n");
        }
    }
    QTemporaryFile script(file + sql(".XXXXXX.part"));
    writeScript(tools, file, dataEntries(archive, wanted), {sql("--data-only")}, script);
    psql.write(emptying + include(script) + "COMMIT;\n");
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
    dump(PostgresTools(address), source.value(sql("SELECT CAST(current_schema() AS TEXT)")).toString(), copy,
         snapshot);
    const DatabaseContents contents = contentsOf(source);
    source.rollback();
    return contents;
}

RestoreReport restorePostgres(const QString& file, const QString& database, Existing existing,
                              TokensFrom tokensFrom)
{
    const PostgresAddress address = readPostgresAddress(database);
    const PostgresTools tools(address);
    const Archive archive = readArchive(tools, file);
    RestoreReport report;
    PostgresDatabase target(address);
    const QString schema = target.value(sql("SELECT CAST(current_schema() AS TEXT)")).toString();
    if (schema != archive.schema) {
        throw Failure(
            QStringLiteral("the backup is of the schema '%1', the database's is '%2'; name a database "
                           "with the same, or choose it in the address: ?options=-csearch_path=%1")
                .arg(archive.schema, schema));
    }
    if (target.isEmpty()) {
        fillEmpty(tools, file, archive);
        openStore(database, MissingDatabase::Refuse);
        report.contents = contentsOf(target);
        return report;
    }
    openStore(database, MissingDatabase::Refuse);
    if (archive.version != target.schemaVersion()) {
        throw Failure(QStringLiteral("'%1' has schema version %2, the database %3; restore it into an empty "
                                     "database, where it is brought up to date")
                          .arg(file)
                          .arg(archive.version)
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
