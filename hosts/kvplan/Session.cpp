#include "Session.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>

#include <cstdio>

#ifdef Q_OS_UNIX
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace {

QString advice(const KvNetworkReport& report)
{
    switch (report.category) {
    case KvNetworkReport::Refused:
        return QStringLiteral("Is the service running at that address (--server, KV_BASE_API)?");
    case KvNetworkReport::Timeout:
        return QStringLiteral("Try again, or allow more time (--timeout, KV_NETWORK_TIMEOUT_MS).");
    case KvNetworkReport::Tls:
        return QStringLiteral(
            "The server's certificate was not accepted; check the address or install its authority.");
    case KvNetworkReport::Parse:
        return QStringLiteral(
            "What answered is perhaps not the schedule service; check the address (--server).");
    case KvNetworkReport::Aborted:
        return QStringLiteral("The request was ended before its reply was complete.");
    case KvNetworkReport::Http:
        if (report.httpStatus == 401)
            return QStringLiteral("Give a valid access token (KV_ACCESS_TOKEN or --token-file).");
        if (report.httpStatus == 403)
            return QStringLiteral("Ask whoever administers the service for that right.");
        if (report.httpStatus == 404)
            return QStringLiteral("Check the identifier and the address.");
        if (report.httpStatus >= 500)
            return QStringLiteral("The service failed; its log tells more.");
        return QString();
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
    QString text = QStringLiteral("cannot %1 from %2: ").arg(task, KvBaseApi::GetInstance().getBaseApi());
    if (m_lastFailure.httpStatus >= 400)
        text += QStringLiteral("%1 ").arg(m_lastFailure.httpStatus);
    text += m_lastFailure.message;
    if (!text.endsWith(QLatin1Char('.')))
        text += QLatin1Char('.');
    const QString next = advice(m_lastFailure);
    return next.isEmpty() ? text : text + QLatin1Char(' ') + next;
}

void complain(const QString& message)
{
    const QByteArray line = "kvplan: " + message.toUtf8() + '\n';
    std::fwrite(line.constData(), 1, size_t(line.size()), stderr);
}

bool say(const QByteArray& text)
{
    return std::fwrite(text.constData(), 1, size_t(text.size()), stdout) == size_t(text.size()) &&
           std::fflush(stdout) == 0;
}

bool say(const QString& text)
{
    return say(text.toUtf8());
}

int terminalWidth()
{
#ifdef Q_OS_UNIX
    winsize size = {};
    if (isatty(STDOUT_FILENO) && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0)
        return size.ws_col > 0 ? size.ws_col : 80;
#endif
    return 0;
}
