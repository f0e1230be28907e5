#include "Caller.h"

#include "../http/Reply.h"
#include "../records/FieldReader.h"
#include "Tokens.h"

namespace PlanService {

namespace {

ApiError unauthorized(const char* code, const char* message)
{
    return ApiError(401, QLatin1String(code), QLatin1String(message))
        .withHeader("WWW-Authenticate", "Bearer realm=\"planservice\"");
}

} // namespace

Caller Caller::fromAuthorization(const QByteArray& authorization, Store& store, const QDateTime& now)
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
    const QByteArray text = authorization.mid(scheme.size()).trimmed();
    if (!looksLikeToken(text)) {
        throw unauthorized("tokenMalformed",
                           "this is not a whole token; it has 43 letters, digits, '-' and '_'");
    }
    const auto token = findToken(store, text);
    if (!token) {
        throw unauthorized("tokenUnknown", "this token is not known here; ask for a new one");
    }
    if (!token->revokedAt.isEmpty()) {
        throw unauthorized("tokenRevoked", "this token was revoked; ask for a new one");
    }
    if (!token->expiresAt.isEmpty() && token->expiresAt <= tokenTime(now)) {
        throw unauthorized("tokenExpired", "this token is good no more; ask for a new one");
    }
    caller.m_userId = token->userId;
    caller.m_rights = store.rights(token->id);
    return caller;
}

void Caller::requireRead(const Ownership& what) const
{
    const QString right = rightsIn(what.projectId, what.category).read;
    if (right == QLatin1String("all") || (right == QLatin1String("own") && what.users.contains(m_userId))) {
        return;
    }
    refuse("read", what.projectId, what.category);
}

void Caller::requireCreate(const QString& projectId, const QString& category) const
{
    if (!rightsIn(projectId, category).create) {
        refuse("create", projectId, category);
    }
}

void Caller::requireEdit(const QString& projectId, const QString& category) const
{
    if (!rightsIn(projectId, category).edit) {
        refuse("edit", projectId, category);
    }
}

void Caller::requireDelete(const QString& projectId, const QString& category) const
{
    if (!rightsIn(projectId, category).remove) {
        refuse("delete", projectId, category);
    }
}

Visibility Caller::visibilityIn(const QString& projectId) const
{
    const auto scope = [&](const QString& category) {
        const QString read = rightsIn(projectId, category).read;
        return read == QLatin1String("all")
                   ? ReadScope::All
                   : (read == QLatin1String("own") ? ReadScope::Own : ReadScope::None);
    };
    Visibility visible;
    visible.user = m_userId;
    visible.elsewhere = scope(QString());
    bool something = visible.elsewhere != ReadScope::None;
    for (const RightsRecord& rights : m_rights) {
        if (rights.projectId == projectId && !rights.category.isEmpty()) {
            const ReadScope ofCategory = scope(rights.category);
            visible.categories.insert(rights.category, ofCategory);
            something = something || ofCategory != ReadScope::None;
        }
    }
    if (!something) {
        refuse("read", projectId, QString());
    }
    return visible;
}

bool Caller::knows(const QString& projectId) const
{
    for (const RightsRecord& rights : m_rights) {
        if (rights.projectId == projectId) {
            return true;
        }
    }
    return false;
}

void Caller::refuse(const char* right, const QString& projectId, const QString& category) const
{
    // Whoever has no business in the project does not learn from an id which project that is.
    const QString where =
        knows(projectId)
            ? QStringLiteral(" in project '%1', category '%2'").arg(shortened(projectId), shortened(category))
            : QString();
    throw ApiError(
        403, QStringLiteral("rightMissing"),
        QStringLiteral("user '%1' has no right '%2' for this%3").arg(m_userId, QLatin1String(right), where),
        QLatin1String(right));
}

RightsRecord Caller::rightsIn(const QString& projectId, const QString& category) const
{
    if (m_mayEverything) {
        return {projectId, category, QStringLiteral("all"), true, true, true, true};
    }
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
