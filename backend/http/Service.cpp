#include "Service.h"

#include "../access/Caller.h"
#include "AccessLog.h"

namespace PlanService {

Service::Service(const Router& router, WorkerPool& workers, AccessLog& log)
    : m_router(router)
    , m_workers(workers)
    , m_log(log)
{
}

void Service::handle(Request&& request, Respond&& respond)
{
    RouteMatch match;
    try {
        match = m_router.match(request.method, request.target);
    } catch (const ApiError& error) {
        respond(error.reply());
        return;
    }
    // Shared, because the queue may refuse the job and the reply is then still to be given.
    const auto shared = std::make_shared<Respond>(std::move(respond));
    const bool taken = m_workers.add([this, request = std::move(request), match = std::move(match),
                                      shared](Store& store) { (*shared)(answer(request, match, store)); });
    if (!taken) {
        ApiError busy(503, QStringLiteral("busy"),
                      QStringLiteral("too many requests are waiting; try again in a moment"));
        (*shared)(busy.withHeader("Retry-After", "1").reply());
    }
}

Reply Service::answer(const Request& request, const RouteMatch& match, Store& store) const
{
    try {
        const Caller caller = match.route->needsToken == NeedsToken::Yes
                                  ? Caller::fromAuthorization(request.authorization, store)
                                  : Caller::anybody();
        return match.route->endpoint({request, match.parameters, match.query, store, caller});
    } catch (const ApiError& error) {
        return error.reply();
    } catch (const std::exception& error) {
        // The cause may hold paths and SQL: it is for the operator, not for the client.
        m_log.error(QString::fromUtf8(error.what()));
        return ApiError(500, QStringLiteral("internal"),
                        QStringLiteral("the service failed to answer; its log says why"))
            .reply();
    }
}

} // namespace PlanService
