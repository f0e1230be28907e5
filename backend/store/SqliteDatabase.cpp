#include "SqliteDatabase.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlDriver>
#include <QtEndian>

#include <sqlite3.h>

namespace PlanService {

namespace {

// Writers of this process take turns, as a plan of 100,000 nodes takes longer to write than one waits for
// another program that holds the database.
std::timed_mutex writers;
constexpr std::chrono::seconds longestTurn{60};

// From so many on the pages of the write-ahead log are moved to the file once the client has its answer;
// where that does not come to pass, at the latest from so many on before it has.
constexpr int manyLogPages = 1000;
constexpr int mostLogPages = 16 * manyLogPages;

const SqlWords& words()
{
    const auto word = [](const char* sql) {
        return QString::fromLatin1(sql);
    };
    static const SqlWords all{
        {word("bytes"), word("BLOB")},
        {word("json"), word("TEXT")},
        {word("quote"), word("json_quote")},
        {word("position"), word("instr")},
        {word("elements"), word("json_each")},
        {word("numbered"), word("%1")},
        {word("array"), word("json_group_array")},
        {word("join"), word("group_concat")},
        {word("object"), word("json_object")},
        {word("text"), word("json_extract(%1document, '$.%2')")},
        {word("number"), word("json_extract(%1document, '$.%2')")},
        {word("real"), word("json_extract(%1document, '$.%2')")},
        {word("flag"), word("json_extract(%1document, '$.%2')")},
        {word("list"), word("json_extract(%1document, '$.%2')")},
        {word("hex"), word("printf('%08x', %1)")},
        {word("loose"), word("+%1")},
        {word("by"), word("INDEXED BY %1")},
        {word("then"), word("CROSS JOIN")},
        {word("again"), QString()},
        {word("changed"), QString()},
        {word("kept"), QString()},
    };
    return all;
}

} // namespace

SqliteDatabase::SqliteDatabase(const QString& path)
    : SqlDatabase(QStringLiteral("QSQLITE"), path, words())
{
    connection().setDatabaseName(path);
    connection().setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
    if (!connection().open()) {
        throw StoreError(QStringLiteral("cannot open database '%1': %2; check the path and its permissions")
                             .arg(path, connection().lastError().text().simplified()));
    }
    // The driver and this program use the one SQLite library of the system.
    const QVariant handle = connection().driver()->handle();
    m_handle = *static_cast<sqlite3* const*>(handle.constData());
    m_patterns.addTo(m_handle);
}

SqliteDatabase::~SqliteDatabase()
{
    // The patterns go before the connection that asks for them.
    dropStatements();
}

void SqliteDatabase::setUp()
{
    execute(QStringLiteral("PRAGMA journal_mode = WAL"));
    execute(QStringLiteral("PRAGMA synchronous = FULL"));
    execute(QStringLiteral("PRAGMA foreign_keys = ON"));
    execute(QStringLiteral("PRAGMA mmap_size = 268435456"));
    // A transaction that outgrows its cache writes its pages more than once.
    execute(QStringLiteral("PRAGMA cache_size = -65536"));
    // In the place of SQLite's own, which moves the pages within the commit.
    sqlite3_wal_hook(
        m_handle,
        [](void* database, sqlite3*, const char*, int pages) {
            static_cast<SqliteDatabase*>(database)->m_logPages = pages;
            return SQLITE_OK;
        },
        this);
}

void SqliteDatabase::beginReading()
{
    run(QStringLiteral("BEGIN")).finish();
}

void SqliteDatabase::beginWriting()
{
    std::unique_lock<std::timed_mutex> turn(writers, std::defer_lock);
    if (!turn.try_lock_for(longestTurn)) {
        throw StoreBusy(
            QStringLiteral("database '%1': other requests were writing for too long").arg(name()));
    }
    run(QStringLiteral("BEGIN IMMEDIATE")).finish();
    m_turn = std::move(turn);
}

void SqliteDatabase::commit()
{
    SqlDatabase::commit();
    if (m_logPages >= mostLogPages) {
        emptyLog();
    }
    m_turn = {};
}

void SqliteDatabase::tidyUp() noexcept
{
    if (m_logPages < manyLogPages) {
        return;
    }
    // Not while others write, or the log would never come to an end. They see themselves how long it is.
    const std::unique_lock<std::timed_mutex> turn(writers, std::try_to_lock);
    if (turn.owns_lock()) {
        emptyLog();
    }
}

void SqliteDatabase::emptyLog() noexcept
{
    // What cannot be moved now, for want of room or because of readers, stays where it is, as safe as there.
    sqlite3_wal_checkpoint_v2(m_handle, nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
    m_logPages = 0;
}

void SqliteDatabase::rollback() noexcept
{
    SqlDatabase::rollback();
    m_turn = {};
}

int SqliteDatabase::schemaVersion()
{
    return value(QStringLiteral("PRAGMA user_version")).toInt();
}

void SqliteDatabase::setSchemaVersion(int version)
{
    execute(QStringLiteral("PRAGMA application_id = %1").arg(applicationId));
    execute(QStringLiteral("PRAGMA user_version = %1").arg(version));
}

void SqliteDatabase::fail(const QSqlError& error)
{
    const QString message = QStringLiteral("database '%1': %2").arg(name(), error.text().simplified());
    // The low byte is SQLite's primary code, 5 is SQLITE_BUSY.
    if ((error.nativeErrorCode().toInt() & 0xFF) == 5) {
        throw StoreBusy(message);
    }
    if (message.contains(QLatin1String(SqlitePatterns::tooSlowMessage))) {
        throw StoreTooSlow(message);
    }
    throw StoreError(message);
}

DatabaseFile inspectDatabaseFile(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists()) {
        return DatabaseFile::Missing;
    }
    if (info.isDir()) {
        throw StoreError(QStringLiteral("'%1' is a folder; name a database file in it").arg(path));
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw StoreError(QStringLiteral("cannot read database '%1': %2; check its permissions")
                             .arg(path, file.errorString()));
    }
    const QByteArray header = file.read(100);
    if (header.isEmpty()) {
        return DatabaseFile::Empty;
    }
    constexpr int applicationIdAt = 68;
    const bool ours = header.size() == 100 && header.startsWith(QByteArray("SQLite format 3\0", 16)) &&
                      qFromBigEndian<quint32>(header.constData() + applicationIdAt) == applicationId;
    return ours ? DatabaseFile::Ours : DatabaseFile::Foreign;
}

} // namespace PlanService
