// The only file that sees the metrics library.

#include "Metrics.h"

#include "../http/AccessLog.h"

#include <prometheus/counter.h>
#include <prometheus/gauge.h>
#include <prometheus/histogram.h>
#include <prometheus/registry.h>
#include <prometheus/text_serializer.h>

#include <QDateTime>
#include <QFile>

#include <mutex>
#include <utility>
#include <vector>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace PlanService {

namespace {

using Labels = std::map<std::string, std::string>;

/// From a read of one record to a write of 100,000.
const prometheus::Histogram::BucketBoundaries& secondsBuckets()
{
    static const prometheus::Histogram::BucketBoundaries buckets{
        0.0005, 0.001, 0.0025, 0.005, 0.01, 0.025, 0.05, 0.1, 0.25, 0.5, 1, 2.5, 5, 10, 30, 60};
    return buckets;
}

/// Paths that lead nowhere and requests that could not be read share one label, whatever they said.
Labels routeLabels(const AccessEntry& entry)
{
    if (entry.route.isEmpty()) {
        return {{"method", "other"}, {"route", "other"}};
    }
    return {{"method", entry.method.toStdString()}, {"route", entry.route.toStdString()}};
}

#ifdef Q_OS_LINUX
double residentBytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    return file.open(QIODevice::ReadOnly)
               ? file.readAll().split(' ').value(1).toDouble() * static_cast<double>(sysconf(_SC_PAGESIZE))
               : 0;
}
#endif

} // namespace

class Metrics::Private
{
public:
    prometheus::Registry registry;
    prometheus::Family<prometheus::Counter>& requests = prometheus::BuildCounter()
                                                            .Name("planservice_requests_total")
                                                            .Help("Requests answered, by route and status.")
                                                            .Register(registry);
    prometheus::Family<prometheus::Histogram>& seconds =
        prometheus::BuildHistogram()
            .Name("planservice_request_seconds")
            .Help("From a request's last byte to its reply's last byte handed to the network.")
            .Register(registry);
    prometheus::Histogram& databaseSeconds = prometheus::BuildHistogram()
                                                 .Name("planservice_database_seconds")
                                                 .Help("What a request spent in statements of the database.")
                                                 .Register(registry)
                                                 .Add({}, secondsBuckets());
    prometheus::Counter& received = prometheus::BuildCounter()
                                        .Name("planservice_received_bytes_total")
                                        .Help("Bytes of requests' bodies.")
                                        .Register(registry)
                                        .Add({});
    prometheus::Counter& sent = prometheus::BuildCounter()
                                    .Name("planservice_sent_bytes_total")
                                    .Help("Bytes of replies' bodies.")
                                    .Register(registry)
                                    .Add({});
    prometheus::Counter& undelivered = prometheus::BuildCounter()
                                           .Name("planservice_undelivered_replies_total")
                                           .Help("Replies whose client was gone before they were out.")
                                           .Register(registry)
                                           .Add({});
    std::vector<std::pair<prometheus::Gauge*, Gauge>> gauges;
    std::vector<std::pair<prometheus::Counter*, Gauge>> totals;
    std::mutex reading; ///< held while the numbers above are looked up
};

Metrics::Metrics()
    : d(std::make_unique<Private>())
{
    prometheus::BuildGauge()
        .Name("planservice_build_info")
        .Help("Always 1; the label tells the version.")
        .Register(d->registry)
        .Add({{"version", PLANSERVICE_VERSION}})
        .Set(1);
    const double started = static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000;
    watch("process_start_time_seconds", "When the process began, in seconds since 1970.",
          [started] { return started; });
#ifdef Q_OS_LINUX
    watch("process_resident_memory_bytes", "Memory that the process occupies.", residentBytes);
#endif
}

Metrics::~Metrics() = default;

void Metrics::count(const AccessEntry& entry)
{
    const Labels route = routeLabels(entry);
    Labels withStatus = route;
    withStatus.insert({"status", std::to_string(entry.status)});
    d->requests.Add(withStatus).Increment();
    // What could not be read has no last byte from which its time would count.
    if (!entry.method.isEmpty()) {
        d->seconds.Add(route, secondsBuckets()).Observe(static_cast<double>(entry.microseconds) / 1e6);
    }
    if (entry.databaseMicroseconds > 0) {
        d->databaseSeconds.Observe(static_cast<double>(entry.databaseMicroseconds) / 1e6);
    }
    d->received.Increment(static_cast<double>(entry.receivedBytes));
    d->sent.Increment(static_cast<double>(entry.bytes));
    if (!entry.delivered) {
        d->undelivered.Increment();
    }
}

void Metrics::watch(const char* name, const char* help, Gauge gauge)
{
    prometheus::Gauge& kept = prometheus::BuildGauge().Name(name).Help(help).Register(d->registry).Add({});
    d->gauges.emplace_back(&kept, std::move(gauge));
}

void Metrics::watchTotal(const char* name, const char* help, Gauge total)
{
    prometheus::Counter& kept =
        prometheus::BuildCounter().Name(name).Help(help).Register(d->registry).Add({});
    d->totals.emplace_back(&kept, std::move(total));
}

QByteArray Metrics::text() const
{
    const std::lock_guard<std::mutex> lock(d->reading);
    for (const auto& total : d->totals) {
        total.first->Increment(total.second() - total.first->Value());
    }
    for (const auto& gauge : d->gauges) {
        gauge.first->Set(gauge.second());
    }
    return QByteArray::fromStdString(prometheus::TextSerializer().Serialize(d->registry.Collect()));
}

} // namespace PlanService
