#pragma once

#include "Reply.h"
#include "UrlText.h"

#include <QJsonObject>

#include <vector>

namespace PlanService {

class Caller;
class Metrics;
class Store;

/// A request as the HTTP side hands it over.
struct Request
{
    QByteArray method;        ///< upper case
    QByteArray target;        ///< path and query as they came
    QByteArray authorization; ///< the header's value, empty when there is none
    QByteArray body;          ///< good until the request was responded to
    QByteArray remoteAddress;
    QByteArray id; ///< see nextRequestId()
};

/// A request on its way through an endpoint: everything that one needs to answer.
struct Call
{
    const Request& request;
    const QMap<QString, QString>& parameters; ///< values of the path template's placeholders, decoded
    const QMap<QString, QString>& query;      ///< decoded
    Store& store;
    const Caller& caller;
    const Metrics& metrics;

    QString parameter(const char* name) const { return parameters.value(QLatin1String(name)); }
    /// "true" or "false"; false when the parameter is missing. Throws ApiError 400 for anything else.
    bool queryFlag(const char* name) const;
    /// A whole number from 0 to 2147483647. Throws ApiError 400 for anything else.
    int queryNumber(const char* name, int missing) const;
    /// One of @p known; @p missing when there is no such parameter. Throws ApiError 400 that lists them for
    /// anything else, so also where @p missing is none of them.
    QString queryWord(const char* name, const QStringList& known, const QString& missing = QString()) const;
    /// The body as a JSON object. Throws ApiError 400 when it is something else, 413 when it is larger than
    /// @p limit.
    QJsonObject bodyObject(int limit) const;
};

/// Answers a call with a reply, or throws ApiError or StoreError. Runs on a worker, never on an HTTP thread.
using Endpoint = Reply (*)(const Call& call);

enum class NeedsToken
{
    Yes,
    No,
};

/// Whether a route's replies grow with the data.
enum class ReplySize
{
    Small,
    Large, ///< counts against the memory that replies may take together
};

struct Route
{
    QByteArray method;
    QByteArray
        pathTemplate; ///< as "/task-service/plans/{planId}"; a placeholder fills one whole, non-empty segment
    Endpoint endpoint = nullptr;
    NeedsToken needsToken = NeedsToken::Yes;
    ReplySize size = ReplySize::Small;
};

struct RouteMatch
{
    const Route* route = nullptr;
    QMap<QString, QString> parameters;
    QMap<QString, QString> query;
};

/// Finds the endpoint of a request.
class Router
{
public:
    explicit Router(const std::vector<Route>& routes);

    /// Throws ApiError: 400 malformed target or an empty placeholder in the middle of a path, 404 no such
    /// path, 405 (with "Allow") another method of this path.
    RouteMatch match(const QByteArray& method, const QByteArray& target) const;

    const std::vector<Route>& routes() const { return m_routes; }

private:
    std::vector<Route> m_routes;
    std::vector<QStringList> m_templates;
};

} // namespace PlanService
