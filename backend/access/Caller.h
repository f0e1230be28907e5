#pragma once

#include "../store/Store.h"

#include <QDateTime>

namespace PlanService {

/// Who asks, and what they may do.
class Caller
{
public:
    /// Reads the "Authorization" header against the tokens. While no token was ever created everybody is the
    /// local user with every right. Throws ApiError 401 for a missing, malformed, unknown, revoked or expired
    /// token. @param now decides what has expired.
    static Caller fromAuthorization(const QByteArray& authorization, Store& store,
                                    const QDateTime& now = QDateTime::currentDateTimeUtc());
    /// For endpoints that ask for nothing.
    static Caller anybody() { return Caller(); }

    /// Empty for the local user of a service without tokens.
    const QString& userId() const { return m_userId; }

    /// Throws ApiError 403 naming right and project unless the caller may read everything there, or reads
    /// only their own and is among the owners.
    void requireRead(const Ownership& what) const;
    /// Throw ApiError 403 naming right and project unless the caller may do this there.
    void requireCreate(const QString& projectId, const QString& category) const;
    void requireEdit(const QString& projectId, const QString& category) const;
    void requireDelete(const QString& projectId, const QString& category) const;

    /// What the caller may do with records of this category; the empty category is that of records without
    /// one. Every decision of this class follows from it.
    RightsRecord rightsIn(const QString& projectId, const QString& category) const;

    /// What the caller may see of a project's lists. Throws ApiError 403 when that is nothing at all.
    Visibility visibilityIn(const QString& projectId) const;

private:
    Caller() = default;
    [[noreturn]] void refuse(const char* right, const QString& projectId, const QString& category) const;
    bool knows(const QString& projectId) const;

    bool m_mayEverything = false;
    QString m_userId;
    QList<RightsRecord> m_rights;
};

} // namespace PlanService
