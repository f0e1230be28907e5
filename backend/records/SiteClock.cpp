#include "SiteClock.h"

#include "FieldReader.h"

#include <QDateTime>

namespace PlanService {

QString SiteClock::stamp(const QString& now, const QString& notBefore)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (now < m_last) {
        const QDateTime last = QDateTime::fromString(m_last, Qt::ISODateWithMs);
        const bool wasWrong = QDateTime::fromString(now, Qt::ISODateWithMs).secsTo(last) > 24 * 60 * 60;
        m_last = wasWrong ? now : m_last;
    } else {
        m_last = now;
    }
    return qMax(m_last, notBefore);
}

QString siteStamp(const QString& notBefore)
{
    static SiteClock clock;
    return clock.stamp(siteNow(), notBefore);
}

} // namespace PlanService
