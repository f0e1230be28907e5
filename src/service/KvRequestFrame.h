#pragma once

#include <QtCore/QLatin1String>
#include <QtCore/QString>

#include <functional>

class NetworkEventLoop;
class QNetworkReply;

/// What every endpoint function shares: where its URL comes from, the one wait, and the success flag.
///
/// An endpoint function says verb, template, body and result:
///
///     return exchange(NetworkManager::instance().putJson(taskUrl("plans/%1/copy", planId), QJsonObject()),
///                     [&](const NetworkEventLoop& reply) { jsonObjectToPlan(reply.object(), plan); });
///
/// None of them keeps anything between calls, retries, or tells why it failed.
namespace Kv {

/// Base address, service prefix and path template, still with its placeholders.
QString serviceUrl(QLatin1String service, const char* pathTemplate);

/// The current project, read anew from the application's soft cache at each call.
QString currentProject();

template<class... Arguments>
QString filledUrl(QString url, const Arguments&... arguments)
{
    ((url = url.arg(arguments)), ...);
    return url;
}

/// The URL of a path of the task service. Placeholders are filled in ascending order, one at a time, with
/// texts and decimal numbers as they stand: nothing is percent-encoded here, the network library sees to
/// that. A text that itself holds a placeholder would be filled by a later argument; identifiers hold none.
template<class... Arguments>
QString taskUrl(const char* pathTemplate, const Arguments&... arguments)
{
    return filledUrl(serviceUrl(QLatin1String("task-service/"), pathTemplate), arguments...);
}

/// The same for a path of the state service, which keeps the metering states.
template<class... Arguments>
QString stateUrl(const char* pathTemplate, const Arguments&... arguments)
{
    return filledUrl(serviceUrl(QLatin1String("ka-rond-service/"), pathTemplate), arguments...);
}

/// Waits until @p reply is complete, hands it to @p read, and tells whether the request succeeded.
///
/// @p read is called after a failure too; the reply's body is then empty, so that what it fills ends up empty
/// as well. The only place of the library that waits: events of this thread are handled meanwhile, so the
/// host may call the library again before this returns. The reply is released before the return.
bool exchange(QNetworkReply* reply, const std::function<void(const NetworkEventLoop&)>& read);

} // namespace Kv
