#pragma once

#include <QString>

#include <mutex>

namespace PlanService {

/// Gives records their times. They never go back, so that what came later is not stamped earlier when the
/// clock is set back or summer time ends: the last time is given again until the clock has caught up. A clock
/// that is set back by more than a day was wrong before, and is followed.
class SiteClock
{
public:
    /// May be called from any thread. @param now by the clock, as siteNow() gives it.
    /// @param notBefore the time of an earlier change of the same record; empty: there was none.
    QString stamp(const QString& now, const QString& notBefore = QString());

private:
    std::mutex m_mutex;
    QString m_last;
};

/// The present by the one clock of this process.
QString siteStamp(const QString& notBefore = QString());

} // namespace PlanService
