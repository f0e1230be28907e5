#pragma once

#include "Output.h"

#include <KvNetwork/KvNetworkReport.h>
#include <model/KvPlan.h>

#include <QtCore/QList>
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
    /// @param method asks for requests of this one only, as in "PUT"; null: of any.
    bool hasFailed(const char* method = nullptr) const { return !lastFailure(method).method.isNull(); }

    /// Why the last request failed, in words for a person: what failed, with which value, and what to try.
    /// One line; @p task says what was tried, as in "read the plan \"65f0\"".
    QString failure(const QString& task, const char* method = nullptr) const;

    /// Complains why the last request failed. @return the exit code for that.
    ExitCode complainOfFailure(const QString& task) const;

    /// Reads a plan and its tasks. @return false when that failed; it has been complained about then.
    bool readPlan(const QString& id, KvPlan& plan) const;

    /// Reads one task. @return false when that failed; it has been complained about then.
    bool readNode(const QString& id, KvPlanNode& node) const;

private:
    KvNetworkReport lastFailure(const char* method) const;

    QList<KvNetworkReport> m_failures;
};

/// @p address as it may be shown: without user, password, query and fragment.
QString withoutSecrets(const QString& address);
