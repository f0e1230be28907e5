#include "Session.h"

#include "Output.h"
#include "Progress.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QUrl>

namespace {

// What the network library cannot know: where this program takes its settings from.
QString advice(const KvNetworkReport& report)
{
    switch (report.category) {
    case KvNetworkReport::Refused:
    case KvNetworkReport::Parse:
        return QStringLiteral(" (--server or KV_BASE_API)");
    case KvNetworkReport::Timeout:
        return QStringLiteral(" or --timeout");
    case KvNetworkReport::Tls:
        return QStringLiteral("; check the address or install the certificate's authority");
    case KvNetworkReport::Http:
        if (report.httpStatus == 401)
            return QStringLiteral(" (--token-file or KV_ACCESS_TOKEN)");
        if (report.httpStatus == 403)
            return QStringLiteral("; ask whoever administers the service for it");
        if (report.httpStatus == 404)
            return QStringLiteral("; check the identifier and the address (--server or KV_BASE_API)");
        return QString();
    case KvNetworkReport::Aborted:
    case KvNetworkReport::Ok:
        break;
    }
    return QString();
}

} // namespace

Session::Session()
{
    connect(&NetworkManager::instance(), &NetworkManager::requestFinished, this,
            [this](const KvNetworkReport& report) {
                if (report.category == KvNetworkReport::Ok)
                    return;
                m_lastFailure = report;
                m_hasFailed = true;
            });
}

QString Session::failure(const QString& task) const
{
    QString text = QStringLiteral("cannot ") + task;
    if (!m_hasFailed)
        return text + QStringLiteral(": no request could be sent");
    const QString address = withoutSecrets(KvBaseApi::GetInstance().getBaseApi());
    if (!m_lastFailure.message.contains(address.chopped(1)))
        text += QStringLiteral(" at ") + address;
    return text + QStringLiteral(": ") + m_lastFailure.message + advice(m_lastFailure);
}

bool Session::readPlan(const QString& id, KvPlan& plan) const
{
    bool isRead = false;
    {
        const Progress progress(QStringLiteral("reading the plan"));
        isRead = KvPlanData::instance()->getPlanById(id, plan);
    }
    if (!isRead)
        complain(failure(QStringLiteral("read the plan \"%1\"").arg(id)));
    return isRead;
}

QString withoutSecrets(const QString& address)
{
    const QUrl url(address);
    if (url.isValid())
        return url.adjusted(QUrl::RemoveUserInfo | QUrl::RemoveQuery | QUrl::RemoveFragment).toString();
    // What is no URL may hold a password all the same. It ends at the last "@" at most.
    QString shown = address.section(QLatin1Char('?'), 0, 0).section(QLatin1Char('#'), 0, 0);
    const int begin = shown.indexOf(QLatin1String("//")) + 2;
    const int end = shown.lastIndexOf(QLatin1Char('@')) + 1;
    return begin < end ? shown.remove(begin, end - begin) : shown;
}
