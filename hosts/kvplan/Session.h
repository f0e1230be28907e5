#pragma once

#include <KvNetwork/KvNetworkReport.h>
#include <model/KvPlan.h>

#include <QtCore/QObject>
#include <QtCore/QString>

/// The requests of one command. The library answers with a flag alone; the network library's reports, which
/// this object collects, tell the rest.
class Session : public QObject
{
    Q_OBJECT

public:
    Session();

    /// Whether a request failed since the object was made. Some operations of the library answer true all the
    /// same.
    bool hasFailed() const { return m_hasFailed; }

    /// Why the last request failed, in words for a person: what failed, with which value, and what to try.
    /// One line; @p task says what was tried, as in "read the plan \"65f0\"".
    QString failure(const QString& task) const;

    /// Reads a plan and its tasks. @return false when that failed; it has been complained about then.
    bool readPlan(const QString& id, KvPlan& plan) const;

private:
    KvNetworkReport m_lastFailure;
    bool m_hasFailed = false;
};

/// @p address as it may be shown: without user, password, query and fragment.
QString withoutSecrets(const QString& address);
