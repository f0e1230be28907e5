#pragma once

#include "SqlDatabase.h"

namespace PlanService {

struct PostgresAddress;

/// A connection to PostgreSQL. It comes back by itself: when the server has gone, what runs at that moment
/// throws StoreLost, and the next statement connects anew.
class PostgresDatabase final : public SqlDatabase
{
public:
    /// Throws StoreError when the address is wrong or the server does not answer.
    explicit PostgresDatabase(const PostgresAddress& address);
    ~PostgresDatabase() override;

    void beginReading() override;
    void beginWriting() override;
    void limitSearch() override;
    void commit() override;
    void rollback() noexcept override;
    int schemaVersion() override;
    void beginMigration() override;
    void setSchemaVersion(int version) override;
    QVariant text(const QByteArray& utf8) const override { return QString::fromUtf8(utf8); }
    bool knowsPatterns() const override { return false; }
    int rowsAtOnce() const override { return 100; }

    /// True when there is no table yet in the place that new ones go to.
    bool isEmpty();

private:
    void connect();
    void prepareForStatement() override;
    [[noreturn]] void fail(const QSqlError& error) override;
    bool answers();

    bool m_lost = false;
    bool m_inTransaction = false;
    bool m_committing = false;
    bool m_isSearching = false;
};

} // namespace PlanService
