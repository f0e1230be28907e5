#include "SqlStore.h"

#include <QUuid>

#include <algorithm>

namespace PlanService {

namespace {

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

SqlStore::SqlStore(std::unique_ptr<SqlDatabase> database, std::shared_ptr<PlanCache> texts)
    : m_database(std::move(database))
    , m_texts(std::move(texts))
{
}

int SqlStore::schemaVersion()
{
    return m_database->schemaVersion();
}

bool SqlStore::hasTokens()
{
    return m_database->value(sql("SELECT EXISTS (SELECT 1 FROM tokens)")).toBool();
}

QList<TokenRecord> SqlStore::tokensByHashBeginning(const QByteArray& beginning)
{
    // Longer than any hash, so that it comes behind all that begin so.
    const QByteArray end = beginning + QByteArray(64, '\xff');
    return tokensFrom(
        m_database->run(sql("SELECT id, hash, userId, createdAt, revokedAt, expiresAt FROM tokens"
                            " WHERE hash >= ? AND hash < ?"),
                        {beginning, end}));
}

QList<TokenRecord> SqlStore::tokens()
{
    return tokensFrom(m_database->run(
        sql("SELECT id, hash, userId, createdAt, revokedAt, expiresAt FROM tokens ORDER BY id")));
}

qint64 SqlStore::addToken(const TokenRecord& token)
{
    return m_database
        ->value(
            sql("INSERT INTO tokens (hash, userId, createdAt, expiresAt) VALUES (?, ?, ?, ?) RETURNING id"),
            {token.hash, token.userId, token.createdAt,
             token.expiresAt.isEmpty() ? QVariant(QVariant::String) : QVariant(token.expiresAt)})
        .toLongLong();
}

bool SqlStore::revokeToken(qint64 tokenId, const QString& revokedAt)
{
    QSqlQuery& update = m_database->run(
        sql("UPDATE tokens SET revokedAt = coalesce(revokedAt, ?) WHERE id = ?"), {revokedAt, tokenId});
    const bool found = update.numRowsAffected() > 0;
    update.finish();
    return found;
}

QList<RightsRecord> SqlStore::rights(qint64 tokenId)
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

void SqlStore::setRights(qint64 tokenId, const RightsRecord& rights)
{
    m_database
        ->run(sql("INSERT INTO rights"
                  " (tokenId, projectId, category, mayRead, mayCreate, mayEdit, mayDelete, mayExport)"
                  " VALUES (?, ?, ?, ?, ?, ?, ?, ?) ON CONFLICT (tokenId, projectId, category) DO UPDATE"
                  " SET mayRead = excluded.mayRead, mayCreate = excluded.mayCreate,"
                  " mayEdit = excluded.mayEdit, mayDelete = excluded.mayDelete,"
                  " mayExport = excluded.mayExport"),
              {tokenId, orEmpty(rights.projectId), orEmpty(rights.category), orEmpty(rights.read),
               rights.create, rights.edit, rights.remove, rights.exportPlans})
        .finish();
}

QByteArray SqlStore::userSetting(const QString& userId, const QString& key)
{
    return m_database
        ->value(sql("SELECT value FROM userSettings WHERE userId = ? AND settingKey = ?"),
                {orEmpty(userId), key})
        .toString()
        .toUtf8();
}

void SqlStore::setUserSetting(const QString& userId, const QString& key, const QByteArray& value)
{
    m_database
        ->run(sql("INSERT INTO userSettings (userId, settingKey, value) VALUES (?, ?, CAST(? AS TEXT))"
                  " ON CONFLICT (userId, settingKey) DO UPDATE SET value = excluded.value"),
              {orEmpty(userId), key, m_database->text(value)})
        .finish();
}

void SqlStore::begin()
{
    forgetTouched();
    m_database->beginWriting();
    m_writing = true;
}

void SqlStore::commit()
{
    // Last of all, as others who change the same plan wait from here on; always in the same order, or two of
    // them might wait for each other.
    QStringList touched = m_touched.values();
    std::sort(touched.begin(), touched.end());
    for (const QString& planId : qAsConst(touched)) {
        renewVersion(planId);
    }
    m_database->commit();
    m_writing = false;
    forgetTouched();
}

void SqlStore::rollback() noexcept
{
    m_database->rollback();
    m_writing = false;
    forgetTouched();
}

void SqlStore::forgetTouched() noexcept
{
    m_touched.clear();
    m_lastTouched.clear();
}

void SqlStore::touch(const QString& planId)
{
    if (planId.isEmpty() || planId == m_lastTouched) {
        return;
    }
    if (!m_writing) {
        renewVersion(planId);
        return;
    }
    m_touched.insert(planId);
    m_lastTouched = planId;
}

void SqlStore::renewVersion(const QString& planId)
{
    // Drawn by lot, so that no other state of a plan ever has it: not one that is restored, nor that of a
    // plan which is made anew under the same id.
    m_database
        ->run(sql("UPDATE plans SET version = ? WHERE id = ?"),
              {QUuid::createUuid().toString(QUuid::Id128), planId})
        .finish();
}

QString SqlStore::changedByUs() const
{
    return m_writing ? QStringLiteral(" {changed}") : QString();
}

QString SqlStore::keptByUs() const
{
    return m_writing ? QStringLiteral(" {kept}") : QString();
}

} // namespace PlanService
