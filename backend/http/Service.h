#pragma once

#include "HttpServer.h"
#include "Router.h"
#include "WorkerPool.h"

namespace PlanService {

class AccessLog;

/// Between the HTTP threads and the workers: finds the endpoint, lets a worker run it, and turns whatever it
/// throws into a reply.
class Service
{
public:
    /// The references have to outlive the service.
    Service(const Router& router, WorkerPool& workers, AccessLog& log);

    /// Called on an HTTP thread. @p respond is called exactly once, at once or from a worker.
    void handle(Request&& request, Respond&& respond);

private:
    Reply answer(const Request& request, const RouteMatch& match, Store& store) const;

    const Router& m_router;
    WorkerPool& m_workers;
    AccessLog& m_log;
};

} // namespace PlanService
