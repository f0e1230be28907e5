#include "PostgresDatabase.h"

#include "PostgresAddress.h"

#include <QSqlDriver>

namespace PlanService {

namespace {

// Any number that no other program on the same database uses: "KVPS".
constexpr qint64 migrationLock = 0x4B565053;

const SqlWords& words()
{
    const auto word = [](const char* sql) {
        return QString::fromLatin1(sql);
    };
    static const SqlWords all{
        {word("bytes"), word("TEXT")},
        {word("json"), word("JSON")},
        {word("quote"), word("to_json")},
        {word("position"), word("strpos")},
        {word("elements"), word("json_array_elements_text")},
        {word("numbered"), word("WITH ORDINALITY AS %1(value, key)")},
        {word("array"), word("json_agg")},
        {word("join"), word("string_agg")},
        {word("object"), word("json_build_object")},
        // In the order of bytes, as all text columns are.
        {word("text"), word("((CAST(%1document AS JSON) ->> '%2') COLLATE \"C\")")},
        {word("number"), word("CAST(CAST(%1document AS JSON) ->> '%2' AS NUMERIC)")},
        {word("real"), word("CAST(CAST(%1document AS JSON) ->> '%2' AS DOUBLE PRECISION)")},
        {word("flag"), word("CAST(CAST(CAST(%1document AS JSON) ->> '%2' AS BOOLEAN) AS INTEGER)")},
        {word("list"), word("(CAST(%1document AS JSON) -> '%2')")},
        {word("hex"), word("lpad(to_hex(%1), 8, '0')")},
        {word("loose"), word("%1")},
        {word("by"), QString()},
        {word("then"), word("JOIN")},
        {word("again"), word("%1")},
        {word("changed"), word("FOR NO KEY UPDATE")},
        {word("kept"), word("FOR KEY SHARE")},
    };
    return all;
}

} // namespace

PostgresDatabase::PostgresDatabase(const PostgresAddress& address)
    : SqlDatabase(QStringLiteral("QPSQL"), address.name, words())
{
    if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QPSQL"))) {
        throw StoreError(QStringLiteral("the driver of Qt for PostgreSQL is missing; "
                                        "install the package libqt5sql5-psql"));
    }
    connection().setHostName(address.host);
    if (address.port > 0) {
        connection().setPort(address.port);
    }
    connection().setDatabaseName(address.database);
    connection().setUserName(address.user);
    connection().setPassword(address.password);
    connection().setConnectOptions(allOptions(address));
    connect();
}

PostgresDatabase::~PostgresDatabase()
{
    dropStatements();
}

void PostgresDatabase::connect()
{
    if (!connection().open()) {
        m_lost = true;
        throw StoreLost(
            QStringLiteral("cannot connect to database '%1': %2; check that the server runs, the address "
                           "and the password (PGPASSWORD or a file named by PGPASSFILE)")
                .arg(name(), connection().lastError().databaseText().simplified()));
    }
    m_lost = false;
    // What the parts of an answer are put together from is worth no compiler. A commit that was answered has
    // reached the disk, whatever the server's settings say.
    execute(QStringLiteral("SET jit = off; SET client_min_messages = warning; SET lock_timeout = '60s';"
                           " SELECT set_config('synchronous_commit', 'on', false)"
                           " WHERE current_setting('synchronous_commit') = 'off'"));
    if (value(QStringLiteral("SELECT current_setting('server_encoding')")).toString() !=
        QLatin1String("UTF8")) {
        throw StoreError(QStringLiteral("database '%1' does not keep text as UTF-8; create it with: "
                                        "createdb --encoding UTF8 --template template0")
                             .arg(name()));
    }
}

void PostgresDatabase::prepareForStatement()
{
    if (m_lost) {
        if (m_inTransaction) {
            throw StoreLost(QStringLiteral("database '%1': the connection was lost").arg(name()));
        }
        dropStatements();
        connection().close();
        connect();
    }
}

void PostgresDatabase::beginReading()
{
    execute(QStringLiteral("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY"));
    m_inTransaction = true;
}

void PostgresDatabase::beginWriting()
{
    execute(QStringLiteral("BEGIN ISOLATION LEVEL READ COMMITTED"));
    m_inTransaction = true;
}

void PostgresDatabase::limitSearch()
{
    // 0 would be no limit.
    execute(QStringLiteral("SET LOCAL statement_timeout = %1").arg(qMax(1, longestSearch())));
    m_isSearching = true;
}

void PostgresDatabase::commit()
{
    m_committing = true;
    SqlDatabase::commit();
    m_committing = false;
    m_inTransaction = false;
    m_isSearching = false;
}

void PostgresDatabase::rollback() noexcept
{
    m_committing = false;
    m_inTransaction = false;
    m_isSearching = false;
    if (!m_lost) {
        SqlDatabase::rollback();
    }
}

bool PostgresDatabase::isEmpty()
{
    return value(
               QStringLiteral("SELECT count(*) FROM pg_catalog.pg_class WHERE relnamespace ="
                              " (SELECT oid FROM pg_catalog.pg_namespace WHERE nspname = current_schema())"))
               .toInt() == 0;
}

int PostgresDatabase::schemaVersion()
{
    // Looked up in the catalogue: a name that was not there once is remembered as missing for a while.
    const bool there =
        value(QStringLiteral("SELECT EXISTS (SELECT 1 FROM pg_catalog.pg_tables"
                             " WHERE schemaname = current_schema() AND tablename = 'planserviceschema')"))
            .toBool();
    return there ? value(QStringLiteral("SELECT max(version) FROM planserviceSchema")).toInt() : 0;
}

void PostgresDatabase::beginMigration()
{
    beginWriting();
    value(QStringLiteral("SELECT CAST(pg_advisory_xact_lock(?) AS TEXT)"), {migrationLock});
}

void PostgresDatabase::setSchemaVersion(int version)
{
    run(QStringLiteral("INSERT INTO planserviceSchema (version) VALUES (?)"), {version}).finish();
}

bool PostgresDatabase::answers()
{
    // A transaction that failed answers too: by refusing.
    QSqlQuery question(connection());
    return question.exec(QStringLiteral("SELECT 1")) || !question.lastError().nativeErrorCode().isEmpty();
}

void PostgresDatabase::fail(const QSqlError& error)
{
    const QString message = QStringLiteral("database '%1': %2").arg(name(), error.text().simplified());
    const QString code = error.nativeErrorCode();
    const auto is = [&code](const char* state) {
        return code == QLatin1String(state);
    };
    if (is("40001") || is("40P01")) {
        throw StoreConflict(message);
    }
    if (is("55P03") || is("53300")) {
        throw StoreBusy(message);
    }
    if (is("57014") && m_isSearching) {
        throw StoreTooSlow(message);
    }
    if (is("25006")) {
        throw StoreReadOnly(message);
    }
    const bool ending = is("57P01") || is("57P02") || is("57P03") || code.startsWith(QLatin1String("08"));
    if (ending || (code.isEmpty() && !answers())) {
        m_lost = true;
        if (m_committing) {
            throw StoreUnsure(message);
        }
        throw StoreLost(message);
    }
    throw StoreError(message);
}

} // namespace PlanService
