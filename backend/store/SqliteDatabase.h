#pragma once

#include "OpenStore.h"
#include "SqlitePatterns.h"

#include <QHash>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace PlanService {

/// "KVPS" in the header of every database of this service.
constexpr quint32 applicationId = 0x4B565053;

/// One SQLite connection of one thread, with its prepared statements.
class SqliteDatabase
{
public:
    /// Opens the file in SQLite's default mode; it is created when missing. Throws StoreError.
    explicit SqliteDatabase(const QString& path);
    SqliteDatabase(const SqliteDatabase&) = delete;
    SqliteDatabase& operator=(const SqliteDatabase&) = delete;
    ~SqliteDatabase();

    /// Runs a statement that returns nothing, unprepared.
    void execute(const QString& sql);
    /// A prepared statement with its parameters bound and run; the same text is prepared once a connection.
    /// The reference stays good until the same text is run again; finish() it once it has been read.
    QSqlQuery& run(const QString& sql, const QVariantList& parameters = {});
    /// The same for text that is unlikely to come again, which would fill the memory with statements. Read
    /// the rows with next().
    QSqlQuery runOnce(const QString& sql, const QVariantList& parameters);
    /// Steps to the next row; false after the last. Throws StoreError, StoreTooSlow.
    bool next(QSqlQuery& rows) const;
    /// First column of the first row; invalid when there is no row.
    QVariant value(const QString& sql, const QVariantList& parameters = {});

    void begin();
    void beginImmediate();
    void commit();
    void rollback() noexcept;

    /// How long a statement may look for patterns; 5 seconds unless told otherwise.
    void setLongestSearch(int milliseconds) { m_patterns.setLongestSearch(milliseconds); }

    const QString& path() const { return m_path; }

private:
    [[noreturn]] void fail(const QSqlError& error) const;

    QString m_path;
    SqlitePatterns m_patterns;
    QString m_connectionName;
    QSqlDatabase m_database;
    QHash<QString, std::shared_ptr<QSqlQuery>> m_statements;
};

/// The text itself, never null: a null text would be bound as NULL.
inline QString orEmpty(const QString& text)
{
    return text.isNull() ? QStringLiteral("") : text;
}

/// What the first bytes of a file say about it.
enum class DatabaseFile
{
    Missing,
    Empty,
    Ours,
    Foreign,
};

/// Looks at the file's header only; the file is opened for reading and nothing is written beside it.
/// Closing the file gives up every lock that this process has on it, so no connection to it may be open yet.
/// Throws StoreError when the file cannot be read.
DatabaseFile inspectDatabaseFile(const QString& path);

} // namespace PlanService
