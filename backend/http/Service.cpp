#include "Service.h"

#include "../access/Caller.h"
#include "../store/DatabaseTime.h"
#include "AccessLog.h"

namespace PlanService {

namespace {

// Of a request that others got in the way of, or whose connection to the database had gone meanwhile.
constexpr int mostAttempts = 5;
constexpr int mostConnections = 2;

constexpr int longestPage = 1000;

Lane laneOf(const Request& request, const RouteMatch& match)
{
    if (request.method != "GET") {
        return Lane::Write;
    }
    bool isNumber = false;
    const int limit = match.query.value(QStringLiteral("limit")).toInt(&isNumber);
    const bool isPage = isNumber && limit >= 0 && limit <= longestPage;
    const bool isCount = match.query.value(QStringLiteral("only_count")) == QLatin1String("true");
    return match.route->size == ReplySize::Large && !isPage && !isCount ? Lane::Large : Lane::Small;
}

ApiError busy(const QString& message)
{
    return ApiError(503, QStringLiteral("busy"), message).withHeader("Retry-After", "1");
}

} // namespace

Service::Service(const Router& router, WorkerPool& workers, AccessLog& log, const Metrics& metrics,
                 qint64 replyMemory)
    : m_router(router)
    , m_workers(workers)
    , m_log(log)
    , m_metrics(metrics)
    , m_replyMemory(replyMemory)
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
    enqueue(std::make_shared<Pending>(Pending{std::move(request), std::move(match), std::move(respond)}));
}

void Service::enqueue(const std::shared_ptr<Pending>& pending)
{
    if (!m_workers.add([this, pending](Store& store) { run(pending, store); },
                       laneOf(pending->request, pending->match))) {
        Reply reply = busy(QStringLiteral("too many requests are waiting; try again in a moment")).reply();
        reply.note.route = pending->match.route->pathTemplate;
        pending->respond(std::move(reply));
    }
}

void Service::run(const std::shared_ptr<Pending>& pending, Store& store)
{
    const bool large = pending->match.route->size == ReplySize::Large;
    if (large && m_replyMemory.standAside([this, pending] { enqueue(pending); })) {
        return;
    }
    DatabaseTime::take();
    QString userId;
    Reply reply = answer(pending->request, pending->match, store, userId);
    reply.note = {pending->match.route->pathTemplate, userId, DatabaseTime::take()};
    if (large) {
        reply.lease = m_replyMemory.lease(reply.size(), reply.sharedLease.get());
    }
    pending->respond(std::move(reply));
    store.tidyUp();
}

namespace {

/// Does the request once more when nothing of it was kept and the next time is likely to be better.
template<typename Answer>
Reply whole(const Answer& answer)
{
    for (int attempt = 1, connections = 1;; ++attempt) {
        try {
            return answer();
        } catch (const StoreConflict&) {
            if (attempt >= mostAttempts) {
                throw;
            }
        } catch (const StoreLost&) {
            if (++connections > mostConnections) {
                throw;
            }
        }
    }
}

} // namespace

Reply Service::answer(const Request& request, const RouteMatch& match, Store& store, QString& userId) const
{
    try {
        return whole([&] {
            const Caller caller = match.route->needsToken == NeedsToken::Yes
                                      ? Caller::fromAuthorization(request.authorization, store)
                                      : Caller::anybody();
            userId = caller.userId();
            return match.route->endpoint({request, match.parameters, match.query, store, caller, m_metrics});
        });
    } catch (const ApiError& error) {
        return error.reply();
    } catch (const StoreConflict& error) {
        m_log.error(error.message(), request.id);
        return busy(QStringLiteral("others change the same all the time; try again in a moment")).reply();
    } catch (const StoreLost& error) {
        m_log.error(error.message(), request.id);
        return busy(QStringLiteral("the database does not answer; try again in a moment")).reply();
    } catch (const StoreUnsure& error) {
        m_log.error(error.message(), request.id);
        return ApiError(503, QStringLiteral("unsure"),
                        QStringLiteral("the database went while it kept the change; read whether it is there "
                                       "before sending it again"))
            .reply();
    } catch (const StoreReadOnly& error) {
        m_log.error(error.message(), request.id);
        return ApiError(503, QStringLiteral("readOnly"),
                        QStringLiteral("this service reads a copy of the database; changes go to the one "
                                       "that writes it"))
            .reply();
    } catch (const StoreBusy& error) {
        m_log.error(error.message(), request.id);
        return busy(QStringLiteral("the database is taken up by another program; try again in a moment"))
            .reply();
    } catch (const std::exception& error) {
        // The cause may hold paths and SQL: it is for the operator, not for the client.
        m_log.error(QString::fromUtf8(error.what()), request.id);
        return ApiError(500, QStringLiteral("internal"),
                        QStringLiteral("the service failed to answer; its log says why"))
            .reply();
    }
}

} // namespace PlanService
