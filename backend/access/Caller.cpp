#include "Caller.h"

#include "../http/Reply.h"
#include "Tokens.h"

namespace PlanService {

namespace {

ApiError unauthorized(const char* code, const char* message)
{
    return ApiError(401, QLatin1String(code), QLatin1String(message))
        .withHeader("WWW-Authenticate", "Bearer realm=\"planservice\"");
}

} // namespace

Caller Caller::fromAuthorization(const QByteArray& authorization, Store& store)
{
    Caller caller;
    if (!store.hasTokens()) {
        caller.m_mayEverything = true;
        return caller;
    }
    if (authorization.isEmpty()) {
        throw unauthorized("tokenMissing",
                           "this service needs a token; send it as 'Authorization: Bearer <token>'");
    }
    static const QByteArray scheme = QByteArrayLiteral("bearer ");
    if (authorization.left(scheme.size()).toLower() != scheme) {
        throw unauthorized("tokenMalformed", "the Authorization header has to read 'Bearer <token>'");
    }
    const auto token = store.tokenByHash(tokenHash(authorization.mid(scheme.size()).trimmed()));
    if (!token) {
        throw unauthorized("tokenUnknown", "this token is not known here; ask for a new one");
    }
    if (!token->revokedAt.isEmpty()) {
        throw unauthorized("tokenRevoked", "this token was revoked; ask for a new one");
    }
    caller.m_userId = token->userId;
    caller.m_rights = store.rights(token->id);
    return caller;
}

void Caller::requireRead(const Ownership& what) const
{
    if (m_mayEverything) {
        return;
    }
    const QString right = rightsIn(what.projectId, what.category).read;
    if (right == QLatin1String("all") || (right == QLatin1String("own") && what.users.contains(m_userId))) {
        return;
    }
    refuse("read", what.projectId, what.category);
}

void Caller::requireCreate(const QString& projectId, const QString& category) const
{
    if (!m_mayEverything && !rightsIn(projectId, category).create) {
        refuse("create", projectId, category);
    }
}

void Caller::requireEdit(const QString& projectId, const QString& category) const
{
    if (!m_mayEverything && !rightsIn(projectId, category).edit) {
        refuse("edit", projectId, category);
    }
}

void Caller::requireDelete(const QString& projectId, const QString& category) const
{
    if (!m_mayEverything && !rightsIn(projectId, category).remove) {
        refuse("delete", projectId, category);
    }
}

Visibility Caller::visibilityIn(const QString& projectId) const
{
    Visibility visible;
    visible.user = m_userId;
    if (m_mayEverything) {
        visible.elsewhere = ReadScope::All;
        return visible;
    }
    bool something = false;
    for (const RightsRecord& rights : m_rights) {
        if (rights.projectId != projectId) {
            continue;
        }
        const ReadScope scope =
            rights.read == QLatin1String("all")
                ? ReadScope::All
                : (rights.read == QLatin1String("own") ? ReadScope::Own : ReadScope::None);
        something = something || scope != ReadScope::None;
        if (rights.category.isEmpty()) {
            visible.elsewhere = scope;
        } else {
            visible.categories.insert(rights.category, scope);
        }
    }
    if (!something) {
        refuse("read", projectId, QString());
    }
    return visible;
}

void Caller::refuse(const char* right, const QString& projectId, const QString& category) const
{
    throw ApiError(403, QStringLiteral("rightMissing"),
                   QStringLiteral("user '%1' has no right '%2' for this in project '%3', category '%4'")
                       .arg(m_userId, QLatin1String(right), projectId, category),
                   QLatin1String(right));
}

RightsRecord Caller::rightsIn(const QString& projectId, const QString& category) const
{
    RightsRecord found;
    for (const RightsRecord& rights : m_rights) {
        if (rights.projectId == projectId && rights.category == category) {
            return rights;
        }
        if (rights.projectId == projectId && rights.category.isEmpty()) {
            found = rights;
        }
    }
    return found;
}

} // namespace PlanService
