#pragma once

#include <QByteArray>

#include <functional>
#include <memory>

namespace PlanService {

struct AccessEntry;

/// Numbers about the running service for those who watch it, in Prometheus' text form. Labels hold routes and
/// status codes and nothing that a client chose, so there is a bounded number of them.
class Metrics
{
public:
    using Gauge = std::function<double()>;

    Metrics();
    Metrics(const Metrics&) = delete;
    Metrics& operator=(const Metrics&) = delete;
    ~Metrics();

    /// Counts a request that has ended. May be called from any thread.
    void count(const AccessEntry& entry);

    /// Adds a number that is read whenever somebody asks, from any thread. To be called before the first
    /// text().
    void watch(const char* name, const char* help, Gauge gauge);

    /// The same for a number that only grows.
    void watchTotal(const char* name, const char* help, Gauge total);

    /// What stands now. May be called from any thread.
    QByteArray text() const;

    /// The content type of text().
    static const char* contentType() { return "text/plain; version=0.0.4; charset=utf-8"; }

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace PlanService
