#include "Session.h"

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
                if (report.category != KvNetworkReport::Ok)
                    m_failures.append(report);
            });
}

KvNetworkReport Session::lastFailure(const char* method) const
{
    for (int i = m_failures.size() - 1; i >= 0; --i) {
        if (!method || m_failures.at(i).method == QLatin1String(method))
            return m_failures.at(i);
    }
    return {};
}

QString Session::failure(const QString& task, const char* method) const
{
    QString text = QStringLiteral("cannot ") + task;
    const KvNetworkReport report = lastFailure(method);
    if (report.method.isNull())
        return text + QStringLiteral(": no request could be sent");
    const QString address = withoutSecrets(KvBaseApi::GetInstance().getBaseApi());
    if (!report.message.contains(address.chopped(1)))
        text += QStringLiteral(" at ") + address;
    return text + QStringLiteral(": ") + report.message + advice(report);
}

ExitCode Session::complainOfFailure(const QString& task) const
{
    complain(failure(task));
    return RequestFailed;
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

bool Session::readNode(const QString& id, KvPlanNode& node) const
{
    bool isRead = false;
    {
        const Progress progress(QStringLiteral("reading the task"));
        isRead = KvPlanData::instance()->getPlanNodeById(id, node);
    }
    if (!isRead)
        complain(failure(QStringLiteral("read the task \"%1\"").arg(id)));
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
