#include "../operation/PostgresBackup.h"
#include "../store/PostgresAddress.h"
#include "Commands.h"

namespace PlanService {

namespace {

QString contentsText(const DatabaseContents& contents)
{
    return QStringLiteral("%1 plans, %2 nodes, schema version %3")
        .arg(contents.plans)
        .arg(contents.planNodes)
        .arg(contents.schemaVersion);
}

QString fileFrom(const Options& options, const QString& command)
{
    const QString file = options.arguments().value(0);
    if (file.isEmpty()) {
        throw UsageError(QStringLiteral("a FILE is needed; see planservice %1 --help").arg(command));
    }
    return file;
}

Existing existingFrom(const Options& options)
{
    return options.has(QStringLiteral("force")) ? Existing::Replace : Existing::Keep;
}

} // namespace

int runBackup(const QStringList& arguments)
{
    const QString command = QStringLiteral("backup");
    Options options(
        command,
        QStringLiteral("Copies a database into FILE, as it stands at one instant, also while a service\n"
                       "runs on it. FILE is whole and checked, or is not there; its owner alone may\n"
                       "read it."),
        {QStringLiteral("FILE")});
    options.add(QStringLiteral("database"), QStringLiteral("The database: a file, or postgresql://..."),
                QStringLiteral("DATABASE"));
    options.add(QStringLiteral("force"), QStringLiteral("Replace FILE when it is there already."));
    if (!options.parse(arguments)) {
        return 0;
    }
    const QString file = fileFrom(options, command);
    const QString database = options.required(QStringLiteral("database"));
    const auto backUp = isPostgresAddress(database) ? backUpPostgres : backUpSqlite;
    const DatabaseContents contents = backUp(database, file, existingFrom(options));
    print(QStringLiteral("%1: %2\n").arg(file, contentsText(contents)));
    return 0;
}

int runRestore(const QStringList& arguments)
{
    const QString command = QStringLiteral("restore");
    Options options(
        command,
        QStringLiteral("Gives a database the contents of a backup FILE, all or nothing, also while a\n"
                       "service runs on it. What it held is kept in a file beside it."),
        {QStringLiteral("FILE")});
    options.add(QStringLiteral("database"),
                QStringLiteral("The database: a file, which is created when missing, or postgresql://..."),
                QStringLiteral("DATABASE"));
    options.add(QStringLiteral("force"), QStringLiteral("Replace what the database holds."));
    options.add(QStringLiteral("with-tokens"),
                QStringLiteral("Take tokens and rights from the backup as well. Otherwise those of the "
                               "database stay, if it has any."));
    if (!options.parse(arguments)) {
        return 0;
    }
    const QString file = fileFrom(options, command);
    const QString database = options.required(QStringLiteral("database"));
    const RestoreReport restore = (isPostgresAddress(database) ? restorePostgres : restoreSqlite)(
        file, database, existingFrom(options),
        options.has(QStringLiteral("with-tokens")) ? TokensFrom::Backup : TokensFrom::Database);
    print(QStringLiteral("%1: %2%3\n")
              .arg(isPostgresAddress(database) ? readPostgresAddress(database).name : database,
                   contentsText(restore.contents),
                   restore.tokensKept ? QStringLiteral(", its own tokens") : QString()));
    if (!restore.keptAs.isEmpty()) {
        print(QStringLiteral("%1: what it held before\n").arg(restore.keptAs));
    }
    return 0;
}

} // namespace PlanService
