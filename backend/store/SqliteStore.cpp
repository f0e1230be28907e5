#include "SqliteStore.h"

#include "Migrations.h"

namespace PlanService {

namespace {

QString sql(const char* text)
{
    return QString::fromLatin1(text);
}

// Writers of this process take turns, as a plan of 100,000 nodes takes longer to write than one waits for
// another program that holds the database.
std::timed_mutex writers;
constexpr std::chrono::seconds longestTurn{60};

TokenRecord tokenFrom(const QSqlQuery& row)
{
    TokenRecord token;
    token.id = row.value(0).toLongLong();
    token.hash = row.value(1).toByteArray();
    token.userId = row.value(2).toString();
    token.createdAt = row.value(3).toString();
    token.revokedAt = row.value(4).toString();
    token.expiresAt = row.value(5).toString();
    return token;
}

QList<TokenRecord> tokensFrom(QSqlQuery& rows)
{
    QList<TokenRecord> tokens;
    while (rows.next()) {
        tokens.append(tokenFrom(rows));
    }
    rows.finish();
    return tokens;
}

} // namespace

SqliteStore::SqliteStore(std::unique_ptr<SqliteDatabase> database)
    : m_database(std::move(database))
{
    m_database->execute(sql("PRAGMA journal_mode = WAL"));
    m_database->execute(sql("PRAGMA synchronous = FULL"));
    m_database->execute(sql("PRAGMA foreign_keys = ON"));
    m_database->execute(sql("PRAGMA mmap_size = 268435456"));
    // A transaction that outgrows its cache writes its pages more than once.
    m_database->execute(sql("PRAGMA cache_size = -65536"));
}

int SqliteStore::schemaVersion()
{
    return m_database->value(sql("PRAGMA user_version")).toInt();
}

bool SqliteStore::hasTokens()
{
    return m_database->value(sql("SELECT EXISTS (SELECT 1 FROM tokens)")).toBool();
}

QList<TokenRecord> SqliteStore::tokensByHashBeginning(const QByteArray& beginning)
{
    // Longer than any hash, so that it comes behind all that begin so.
    const QByteArray end = beginning + QByteArray(64, '\xff');
    return tokensFrom(
        m_database->run(sql("SELECT id, hash, userId, createdAt, revokedAt, expiresAt FROM tokens"
                            " WHERE hash >= ? AND hash < ?"),
                        {beginning, end}));
}

QList<TokenRecord> SqliteStore::tokens()
{
    return tokensFrom(m_database->run(
        sql("SELECT id, hash, userId, createdAt, revokedAt, expiresAt FROM tokens ORDER BY id")));
}

qint64 SqliteStore::addToken(const TokenRecord& token)
{
    m_database
        ->run(sql("INSERT INTO tokens (hash, userId, createdAt, expiresAt) VALUES (?, ?, ?, ?)"),
              {token.hash, token.userId, token.createdAt,
               token.expiresAt.isEmpty() ? QVariant(QVariant::String) : QVariant(token.expiresAt)})
        .finish();
    return m_database->value(sql("SELECT last_insert_rowid()")).toLongLong();
}

bool SqliteStore::revokeToken(qint64 tokenId, const QString& revokedAt)
{
    QSqlQuery& update = m_database->run(
        sql("UPDATE tokens SET revokedAt = coalesce(revokedAt, ?) WHERE id = ?"), {revokedAt, tokenId});
    const bool found = update.numRowsAffected() > 0;
    update.finish();
    return found;
}

QList<RightsRecord> SqliteStore::rights(qint64 tokenId)
{
    QSqlQuery& row =
        m_database->run(sql("SELECT projectId, category, mayRead, mayCreate, mayEdit, mayDelete, mayExport "
                            "FROM rights WHERE tokenId = ? ORDER BY projectId, category"),
                        {tokenId});
    QList<RightsRecord> all;
    while (row.next()) {
        RightsRecord rights;
        rights.projectId = row.value(0).toString();
        rights.category = row.value(1).toString();
        rights.read = row.value(2).toString();
        rights.create = row.value(3).toBool();
        rights.edit = row.value(4).toBool();
        rights.remove = row.value(5).toBool();
        rights.exportPlans = row.value(6).toBool();
        all.append(rights);
    }
    row.finish();
    return all;
}

void SqliteStore::setRights(qint64 tokenId, const RightsRecord& rights)
{
    m_database
        ->run(sql("INSERT OR REPLACE INTO rights"
                  " (tokenId, projectId, category, mayRead, mayCreate, mayEdit, mayDelete, mayExport)"
                  " VALUES (?, ?, ?, ?, ?, ?, ?, ?)"),
              {tokenId, orEmpty(rights.projectId), orEmpty(rights.category), orEmpty(rights.read),
               rights.create, rights.edit, rights.remove, rights.exportPlans})
        .finish();
}

QByteArray SqliteStore::userSetting(const QString& userId, const QString& key)
{
    return m_database
        ->value(sql("SELECT value FROM userSettings WHERE userId = ? AND settingKey = ?"),
                {orEmpty(userId), key})
        .toString()
        .toUtf8();
}

void SqliteStore::setUserSetting(const QString& userId, const QString& key, const QByteArray& value)
{
    m_database
        ->run(sql("INSERT OR REPLACE INTO userSettings (userId, settingKey, value) VALUES (?, ?, ?)"),
              {orEmpty(userId), key, QString::fromUtf8(value)})
        .finish();
}

void SqliteStore::begin()
{
    std::unique_lock<std::timed_mutex> turn(writers, std::defer_lock);
    if (!turn.try_lock_for(longestTurn)) {
        throw StoreBusy(QStringLiteral("database '%1': other requests were writing for too long")
                            .arg(m_database->path()));
    }
    m_database->beginImmediate();
    m_turn = std::move(turn);
}

void SqliteStore::commit()
{
    m_database->commit();
    m_turn = {};
}

void SqliteStore::rollback() noexcept
{
    m_database->rollback();
    m_turn = {};
}

std::unique_ptr<Store> openStore(const QString& path, MissingDatabase missing)
{
    const DatabaseFile file = inspectDatabaseFile(path);
    if (file == DatabaseFile::Foreign) {
        throw StoreError(QStringLiteral("'%1' is not a planservice database; it was left as it is, "
                                        "name another file")
                             .arg(path));
    }
    if (file != DatabaseFile::Ours && missing == MissingDatabase::Refuse) {
        const QString what = file == DatabaseFile::Missing ? QStringLiteral("database '%1' does not exist")
                                                           : QStringLiteral("database '%1' is empty");
        throw StoreError(
            (what + QStringLiteral("; create one with: planservice seed --database '%1'")).arg(path));
    }
    auto database = std::make_unique<SqliteDatabase>(path);
    // A new file gets its schema before it changes to the write-ahead log, so that the main file's header
    // tells whose it is from the first commit on.
    migrate(*database, migrations());
    return std::make_unique<SqliteStore>(std::move(database));
}

std::unique_ptr<Store> connectStore(const QString& path)
{
    return std::make_unique<SqliteStore>(std::make_unique<SqliteDatabase>(path));
}

} // namespace PlanService
