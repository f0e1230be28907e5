#include "PlanFailure.h"

#include "Session.h"

#include <KvNetwork/KvBaseApi.h>

#include <QtCore/QCoreApplication>

namespace {

QString say(const char* text)
{
    return QCoreApplication::translate("PlanFailure", text);
}

QString refusal(int status)
{
    switch (status) {
    case 401:
        return say(
            QT_TRANSLATE_NOOP("PlanFailure", "The service asks for an access token (KV_ACCESS_TOKEN)."));
    case 403:
        return say(QT_TRANSLATE_NOOP("PlanFailure", "You do not have the right to do this."));
    case 404:
        return say(QT_TRANSLATE_NOOP("PlanFailure", "It is no longer there."));
    case 503:
        return say(QT_TRANSLATE_NOOP("PlanFailure", "The service is busy. Try again in a moment."));
    default:
        return status >= 500
                   ? say(QT_TRANSLATE_NOOP(
                             "PlanFailure",
                             "The service failed (%1). Whoever runs it finds the reason in its log."))
                         .arg(status)
                   : say(QT_TRANSLATE_NOOP("PlanFailure", "The service refused it (%1).")).arg(status);
    }
}

QString cause(const KvNetworkReport& report)
{
    switch (report.category) {
    case KvNetworkReport::Timeout:
        return say(QT_TRANSLATE_NOOP("PlanFailure", "The service did not answer in time."));
    case KvNetworkReport::Refused:
        return say(QT_TRANSLATE_NOOP("PlanFailure",
                                     "The service cannot be reached. Is its address (KV_BASE_API) right?"));
    case KvNetworkReport::Tls:
        return say(QT_TRANSLATE_NOOP("PlanFailure", "No secure connection could be made."));
    case KvNetworkReport::Http:
        return refusal(report.httpStatus);
    case KvNetworkReport::Parse:
        return say(QT_TRANSLATE_NOOP("PlanFailure", "The answer is not that of a schedule service."));
    default:
        return say(QT_TRANSLATE_NOOP("PlanFailure", "The connection was lost."));
    }
}

} // namespace

bool isOutcomeUnknown(const KvNetworkReport& report)
{
    return report.category == KvNetworkReport::Timeout || report.category == KvNetworkReport::Aborted ||
           report.category == KvNetworkReport::Parse;
}

PlanFailure planFailure(const QString& task, bool isWrite, const KvNetworkReport* report)
{
    PlanFailure failure;
    failure.text =
        say(QT_TRANSLATE_NOOP("PlanFailure", "Not done: %1")).arg(task) + QStringLiteral("\n\n") +
        (report ? cause(*report) : say(QT_TRANSLATE_NOOP("PlanFailure", "No request could be sent.")));
    if (!report)
        return failure;
    if (isWrite && isOutcomeUnknown(*report))
        failure.text +=
            QLatin1Char('\n') +
            say(QT_TRANSLATE_NOOP(
                "PlanFailure",
                "The service may have made the change all the same; read again before you repeat it."));
    failure.details =
        report->message + QLatin1Char('\n') + withoutSecrets(KvBaseApi::GetInstance().getBaseApi());
    return failure;
}
