#pragma once

#include "HttpServer.h"
#include "ReplyMemory.h"
#include "Router.h"
#include "WorkerPool.h"

namespace PlanService {

class AccessLog;
class Metrics;

/// Between the HTTP threads and the workers: finds the endpoint, lets a worker run it, and turns whatever it
/// throws into a reply.
class Service
{
public:
    /// The references have to outlive the service. @param replyMemory bytes that replies of large routes may
    /// take together while they are sent.
    Service(const Router& router, WorkerPool& workers, AccessLog& log, const Metrics& metrics,
            qint64 replyMemory);

    /// Called on an HTTP thread. @p respond is called exactly once, at once or from a worker.
    void handle(Request&& request, Respond&& respond);

    /// Drops the requests that still wait for memory; called when the server has ended.
    void stop() { m_replyMemory.stop(); }

private:
    struct Pending
    {
        Request request;
        RouteMatch match;
        Respond respond;
    };

    void enqueue(const std::shared_ptr<Pending>& pending);
    void run(const std::shared_ptr<Pending>& pending, Store& store);
    /// @param userId gets the user as soon as it is known, also when the endpoint refuses.
    Reply answer(const Request& request, const RouteMatch& match, Store& store, QString& userId) const;

    const Router& m_router;
    WorkerPool& m_workers;
    AccessLog& m_log;
    const Metrics& m_metrics;
    ReplyMemory m_replyMemory;
};

} // namespace PlanService
