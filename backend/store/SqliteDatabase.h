#pragma once

#include "OpenStore.h"
#include "SqlDatabase.h"
#include "SqlitePatterns.h"

#include <mutex>

namespace PlanService {

/// "KVPS" in the header of every database of this service.
constexpr quint32 applicationId = 0x4B565053;

/// SQLite: write-ahead log, and every commit reaches the disk before it is answered.
class SqliteDatabase final : public SqlDatabase
{
public:
    /// Opens the file in SQLite's default mode; it is created when missing. Throws StoreError.
    explicit SqliteDatabase(const QString& path);
    ~SqliteDatabase() override;

    /// Goes over to the write-ahead log. For databases of ours only.
    void setUp();

    void beginReading() override;
    void beginWriting() override;
    void commit() override;
    void rollback() noexcept override;
    void tidyUp() noexcept override;
    int schemaVersion() override;
    void beginMigration() override { beginWriting(); }
    void setSchemaVersion(int version) override;
    QVariant text(const QByteArray& utf8) const override { return utf8; }
    bool knowsPatterns() const override { return true; }
    int rowsAtOnce() const override { return 1; } // a call within the process is no way to go

private:
    void prepareForStatement() override { m_patterns.restart(longestSearch()); }
    [[noreturn]] void fail(const QSqlError& error) override;

    void emptyLog() noexcept;

    SqlitePatterns m_patterns;
    sqlite3* m_handle = nullptr;               ///< the driver's
    int m_logPages = 0;                        ///< in the write-ahead log when this connection last wrote
    std::unique_lock<std::timed_mutex> m_turn; ///< held while this connection writes
};

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
