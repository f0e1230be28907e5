#include "SqliteDatabase.h"

#include "DatabaseTime.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSqlDriver>
#include <QtEndian>

#include <atomic>

namespace PlanService {

namespace {

QString nextConnectionName()
{
    static std::atomic<int> number{0};
    return QStringLiteral("planservice-%1").arg(number.fetch_add(1));
}

} // namespace

SqliteDatabase::SqliteDatabase(const QString& path)
    : m_path(path)
    , m_connectionName(nextConnectionName())
    , m_database(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName))
{
    m_database.setDatabaseName(path);
    m_database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
    if (!m_database.open()) {
        const QString reason = m_database.lastError().text();
        m_database = QSqlDatabase();
        QSqlDatabase::removeDatabase(m_connectionName);
        throw StoreError(QStringLiteral("cannot open database '%1': %2; check the path and its permissions")
                             .arg(path, reason.simplified()));
    }
    // The driver and this program use the one SQLite library of the system.
    const QVariant handle = m_database.driver()->handle();
    m_patterns.addTo(*static_cast<sqlite3* const*>(handle.constData()));
}

SqliteDatabase::~SqliteDatabase()
{
    // The driver keeps the file open as long as one statement lives.
    m_statements.clear();
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connectionName);
}

void SqliteDatabase::execute(const QString& sql)
{
    const DatabaseTime time;
    QSqlQuery query(m_database);
    if (!query.exec(sql)) {
        fail(query.lastError());
    }
}

QSqlQuery& SqliteDatabase::run(const QString& sql, const QVariantList& parameters)
{
    const DatabaseTime time;
    std::shared_ptr<QSqlQuery>& statement = m_statements[sql];
    if (!statement) {
        auto fresh = std::make_shared<QSqlQuery>(m_database);
        fresh->setForwardOnly(true);
        if (!fresh->prepare(sql)) {
            fail(fresh->lastError());
        }
        statement = std::move(fresh);
    }
    for (int i = 0; i < parameters.size(); ++i) {
        statement->bindValue(i, parameters.at(i));
    }
    if (!statement->exec()) {
        const QSqlError error = statement->lastError();
        statement->finish();
        fail(error);
    }
    return *statement;
}

QSqlQuery SqliteDatabase::runOnce(const QString& sql, const QVariantList& parameters)
{
    const DatabaseTime time;
    QSqlQuery query(m_database);
    query.setForwardOnly(true);
    if (!query.prepare(sql)) {
        fail(query.lastError());
    }
    for (int i = 0; i < parameters.size(); ++i) {
        query.bindValue(i, parameters.at(i));
    }
    m_patterns.restart();
    if (!query.exec()) {
        fail(query.lastError());
    }
    return query;
}

bool SqliteDatabase::next(QSqlQuery& rows) const
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

QVariant SqliteDatabase::value(const QString& sql, const QVariantList& parameters)
{
    QSqlQuery& query = run(sql, parameters);
    const QVariant result = query.next() ? query.value(0) : QVariant();
    query.finish();
    return result;
}

void SqliteDatabase::begin()
{
    run(QStringLiteral("BEGIN")).finish();
}

void SqliteDatabase::beginImmediate()
{
    run(QStringLiteral("BEGIN IMMEDIATE")).finish();
}

void SqliteDatabase::commit()
{
    run(QStringLiteral("COMMIT")).finish();
}

void SqliteDatabase::rollback() noexcept
{
    // A statement that is still being read would keep the transaction open.
    for (const std::shared_ptr<QSqlQuery>& statement : qAsConst(m_statements)) {
        if (statement) {
            statement->finish();
        }
    }
    QSqlQuery(m_database).exec(QStringLiteral("ROLLBACK"));
}

void SqliteDatabase::fail(const QSqlError& error) const
{
    const QString message = QStringLiteral("database '%1': %2").arg(m_path, error.text().simplified());
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
