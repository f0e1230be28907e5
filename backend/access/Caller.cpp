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
    throw ApiError(403, QStringLiteral("rightMissing"),
                   QStringLiteral("user '%1' has no right 'read' for this in project '%2', category '%3'")
                       .arg(m_userId, what.projectId, what.category),
                   QStringLiteral("read"));
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
