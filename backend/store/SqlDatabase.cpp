#include "SqlDatabase.h"

#include "DatabaseTime.h"

#include <atomic>

namespace PlanService {

namespace {

QString nextConnectionName()
{
    static std::atomic<int> number{0};
    return QStringLiteral("planservice-%1").arg(number.fetch_add(1));
}

} // namespace

SqlDatabase::SqlDatabase(const QString& driver, const QString& name, const SqlWords& words)
    : m_name(name)
    , m_words(words)
    , m_connectionName(nextConnectionName())
    , m_database(QSqlDatabase::addDatabase(driver, m_connectionName))
{
}

SqlDatabase::~SqlDatabase()
{
    dropStatements();
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connectionName);
}

void SqlDatabase::execute(const QString& sql)
{
    const DatabaseTime time;
    prepareForStatement();
    QSqlQuery query(m_database);
    if (!query.exec(inWords(sql, m_words))) {
        fail(query.lastError());
    }
}

QSqlQuery SqlDatabase::prepared(const QString& sql)
{
    QSqlQuery query(m_database);
    query.setForwardOnly(true);
    if (!query.prepare(inWords(sql, m_words))) {
        fail(query.lastError());
    }
    return query;
}

void SqlDatabase::bindAndExecute(QSqlQuery& query, const QVariantList& parameters)
{
    for (int i = 0; i < parameters.size(); ++i) {
        query.bindValue(i, parameters.at(i));
    }
    if (!query.exec()) {
        const QSqlError error = query.lastError();
        query.finish();
        fail(error);
    }
}

QSqlQuery& SqlDatabase::run(const QString& sql, const QVariantList& parameters)
{
    const DatabaseTime time;
    prepareForStatement();
    std::shared_ptr<QSqlQuery>& kept = m_statements[sql];
    if (!kept) {
        kept = std::make_shared<QSqlQuery>(prepared(sql));
    }
    // An error may end the connection and with it the statements that are kept.
    const std::shared_ptr<QSqlQuery> statement = kept;
    bindAndExecute(*statement, parameters);
    return *statement;
}

QSqlQuery SqlDatabase::runOnce(const QString& sql, const QVariantList& parameters)
{
    const DatabaseTime time;
    prepareForStatement();
    QSqlQuery query = prepared(sql);
    bindAndExecute(query, parameters);
    return query;
}

bool SqlDatabase::next(QSqlQuery& rows)
{
    const DatabaseTime time;
    if (rows.next()) {
        return true;
    }
    if (rows.lastError().isValid()) {
        fail(rows.lastError());
    }
    return false;
}

QVariant SqlDatabase::value(const QString& sql, const QVariantList& parameters)
{
    QSqlQuery& query = run(sql, parameters);
    const QVariant result = query.next() ? query.value(0) : QVariant();
    query.finish();
    return result;
}

void SqlDatabase::commit()
{
    execute(QStringLiteral("COMMIT"));
}

void SqlDatabase::rollback() noexcept
{
    finishStatements();
    QSqlQuery(m_database).exec(QStringLiteral("ROLLBACK"));
}

void SqlDatabase::finishStatements() noexcept
{
    // A statement that is still being read would keep the transaction open.
    for (const std::shared_ptr<QSqlQuery>& statement : qAsConst(m_statements)) {
        if (statement) {
            statement->finish();
        }
    }
}

} // namespace PlanService
