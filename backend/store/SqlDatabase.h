#pragma once

#include "SqlWords.h"
#include "Store.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace PlanService {

/// One connection of one thread, with its prepared statements. All SQL may hold words that stand for what the
/// databases call differently, see SqlWords. What the database refuses is thrown as StoreError or one of its
/// kinds.
class SqlDatabase
{
public:
    SqlDatabase(const SqlDatabase&) = delete;
    SqlDatabase& operator=(const SqlDatabase&) = delete;
    virtual ~SqlDatabase();

    /// Runs a statement that returns nothing, unprepared.
    void execute(const QString& sql);
    /// A prepared statement with its parameters bound and run; the same text is prepared once a connection.
    /// The reference stays good until the same text is run again; finish() it once it has been read.
    QSqlQuery& run(const QString& sql, const QVariantList& parameters = {});
    /// The same for text that is unlikely to come again, which would fill the memory with statements. Read
    /// the rows with next().
    QSqlQuery runOnce(const QString& sql, const QVariantList& parameters);
    /// Steps to the next row; false after the last. Throws StoreError, StoreTooSlow.
    bool next(QSqlQuery& rows);
    /// First column of the first row; invalid when there is no row.
    QVariant value(const QString& sql, const QVariantList& parameters = {});

    /// Until commit() or rollback() all that is read is of one moment.
    virtual void beginReading() = 0;
    /// What is written until commit() becomes visible at once; see Store::begin().
    virtual void beginWriting() = 0;
    virtual void commit();
    virtual void rollback() noexcept;
    /// See Store::tidyUp().
    virtual void tidyUp() noexcept {}

    /// 0: there is no schema yet.
    virtual int schemaVersion() = 0;
    /// Begins a transaction that no other process migrates meanwhile; setSchemaVersion() belongs into it.
    virtual void beginMigration() = 0;
    virtual void setSchemaVersion(int version) = 0;
    /// UTF-8 text to be bound where a text is wanted.
    virtual QVariant text(const QByteArray& utf8) const = 0;
    /// True when SQL has the function matches(pattern, text); otherwise patterns are looked for here.
    virtual bool knowsPatterns() const = 0;

    /// Ends each statement of the transaction that was begun after longestSearch(), with StoreTooSlow, where
    /// the database looks for rows in which patterns are looked for here.
    virtual void limitSearch() {}

    /// How many rows one statement should insert where there are many.
    virtual int rowsAtOnce() const = 0;

    /// How long a statement may look for patterns; 5 seconds unless told otherwise.
    int longestSearch() const { return m_longestSearch; }
    void setLongestSearch(int milliseconds) { m_longestSearch = milliseconds; }

    /// The file, or the address without a password.
    const QString& name() const { return m_name; }

protected:
    /// @param driver of Qt Sql.
    SqlDatabase(const QString& driver, const QString& name, const SqlWords& words);

    /// Called before each statement.
    virtual void prepareForStatement() {}
    [[noreturn]] virtual void fail(const QSqlError& error) = 0;

    QSqlDatabase& connection() { return m_database; }
    /// What the driver keeps for statements keeps the connection open.
    void dropStatements() { m_statements.clear(); }
    void finishStatements() noexcept;

private:
    QSqlQuery prepared(const QString& sql);
    void bindAndExecute(QSqlQuery& query, const QVariantList& parameters);

    QString m_name;
    const SqlWords& m_words;
    int m_longestSearch = 5000;
    QString m_connectionName;
    QSqlDatabase m_database;
    QHash<QString, std::shared_ptr<QSqlQuery>> m_statements;
};

/// SQL as it stands in the sources.
inline QString sql(const char* text)
{
    return QString::fromLatin1(text);
}

/// A text that is not set is NULL in the database.
inline QVariant textOrNull(const QString& text)
{
    return text.isEmpty() ? QVariant(QVariant::String) : QVariant(text);
}

/// The text itself, never null: a null text would be bound as NULL.
inline QString orEmpty(const QString& text)
{
    return text.isNull() ? QStringLiteral("") : text;
}

} // namespace PlanService
