#pragma once

// Tokens and rights put into the store of a service that runs.

#include "Text.h"
#include "access/Tokens.h"

namespace KvTest {

inline const QStringList allRights{"read"_s, "create"_s, "edit"_s, "delete"_s, "export"_s};

inline PlanService::RightsRecord rightsOf(const QString& project, const QString& category,
                                          const QStringList& words)
{
    PlanService::RightsRecord rights;
    rights.projectId = project;
    rights.category = category;
    PlanService::readRights(words.join(QLatin1Char(',')), rights);
    return rights;
}

/// @return the token's number; @p text is what its user sends.
inline qint64 addToken(PlanService::Store& store, const QString& user, QByteArray& text,
                       const QString& expiresAt = {})
{
    text = PlanService::newToken();
    PlanService::TokenRecord token;
    token.hash = PlanService::tokenHash(text);
    token.userId = user;
    token.createdAt = "2026-01-01T00:00:00Z"_s;
    token.expiresAt = expiresAt;
    return store.addToken(token);
}

inline QByteArray tokenWith(PlanService::Store& store, const QString& user,
                            const QList<PlanService::RightsRecord>& rights)
{
    QByteArray text;
    const qint64 id = addToken(store, user, text);
    for (const PlanService::RightsRecord& entry : rights) {
        store.setRights(id, entry);
    }
    return text;
}

} // namespace KvTest
