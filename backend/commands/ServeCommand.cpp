#include "../access/Exposure.h"
#include "../endpoints/Endpoints.h"
#include "../http/AccessLog.h"
#include "../http/OpenFiles.h"
#include "../http/Service.h"
#include "../operation/Metrics.h"
#include "../store/OpenStore.h"
#include "../store/PlanCache.h"
#include "Commands.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace PlanService {

namespace {

constexpr std::size_t longestQueue = 4096;

void addServeOptions(Options& options)
{
    options.add(QStringLiteral("database"),
                QStringLiteral("SQLite file, or postgresql://user@host:5432/database."),
                QStringLiteral("DATABASE"));
    options.add(QStringLiteral("create"), QStringLiteral("Create the database when the file is missing."));
    options.add(QStringLiteral("listen"),
                QStringLiteral("Address to listen on. Any but a loopback address takes tokens and TLS."),
                QStringLiteral("ADDRESS"), QStringLiteral("127.0.0.1"));
    options.add(
        QStringLiteral("tls-certificate"),
        QStringLiteral("Speak HTTPS with the certificate, and those of its issuers, in this PEM file."),
        QStringLiteral("FILE"));
    options.add(QStringLiteral("tls-key"),
                QStringLiteral("The certificate's private key, PEM without password."),
                QStringLiteral("FILE"));
    options.add(QStringLiteral("without-tokens"),
                QStringLiteral("Listen on any address without tokens, which is said with the words ") +
                    withoutTokensPhrase() + QLatin1Char('.'),
                QStringLiteral("WORDS"));
    options.add(QStringLiteral("without-tls"),
                QStringLiteral("Listen on any address without TLS, which is said with the words ") +
                    withoutTlsPhrase() + QLatin1Char('.'),
                QStringLiteral("WORDS"));
    options.add(QStringLiteral("port"), QStringLiteral("Port; 0 takes a free one."), QStringLiteral("N"),
                QStringLiteral("8700"));
    options.add(QStringLiteral("workers"), QStringLiteral("Threads that use the database."),
                QStringLiteral("N"), QStringLiteral("4"));
    options.add(QStringLiteral("threads"), QStringLiteral("Threads that do HTTP."), QStringLiteral("N"),
                QStringLiteral("2"));
    options.add(QStringLiteral("connections"),
                QStringLiteral("Clients connected at a time; further ones wait until one leaves. 4000 unless "
                               "given, or fewer where the system allows less open files."),
                QStringLiteral("N"));
    options.add(QStringLiteral("log"),
                QStringLiteral("Append the access log to this file instead of stderr."),
                QStringLiteral("FILE"));
    options.add(QStringLiteral("max-body"), QStringLiteral("Largest request body in bytes."),
                QStringLiteral("N"), QStringLiteral("268435456"));
    options.add(QStringLiteral("reply-memory"),
                QStringLiteral("MiB that replies with whole plans may take together; further ones wait."),
                QStringLiteral("N"), QStringLiteral("2048"));
    options.add(QStringLiteral("plan-cache"),
                QStringLiteral("MiB for the text of plans that were read, which is sent again while the plan "
                               "stays as it is; 0 keeps none."),
                QStringLiteral("N"), QStringLiteral("256"));
    options.add(
        QStringLiteral("request-memory"),
        QStringLiteral("MiB that requests may take together while they come in; further large ones are "
                       "refused."),
        QStringLiteral("N"), QStringLiteral("2048"));
    options.add(QStringLiteral("reply-timeout"),
                QStringLiteral("Seconds for the answer, and for a client to take each part of a large one."),
                QStringLiteral("N"), QStringLiteral("120"));
    options.add(QStringLiteral("read-timeout"),
                QStringLiteral("Seconds a client has for a whole request, and may stay silent between two."),
                QStringLiteral("N"), QStringLiteral("30"));
}

/// The pieces of large replies go back to the system when they are freed. Left alone, the C library keeps a
/// gigabyte for each worker that ever answered for a plan of a million nodes. Of what is made of small blocks
/// each thread keeps some, or it would be asked for again, page by page, with every batch of nodes.
void returnLargeBlocks()
{
#ifdef __GLIBC__
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    mallopt(M_TRIM_THRESHOLD, 32 * 1024 * 1024);
#endif
}

TlsFiles tlsFilesFrom(const Options& options)
{
    const TlsFiles files{options.text(QStringLiteral("tls-certificate")),
                         options.text(QStringLiteral("tls-key"))};
    if (files.certificate.isEmpty() != files.key.isEmpty()) {
        throw UsageError(QStringLiteral("--tls-certificate and --tls-key go together; give both or none"));
    }
    return files;
}

/// As many as are wanted and fit into the files that the process may have open, once that is as many as it
/// can be.
std::size_t connectionsFrom(const Options& options)
{
    constexpr int usual = 4000;
    const bool isGiven = options.has(QStringLiteral("connections"));
    const int wanted = isGiven ? options.number(QStringLiteral("connections"), 1, 60000) : usual;
    const int possible = connectionsPossible();
    if (isGiven && wanted > possible) {
        throw Failure(
            QStringLiteral("--connections '%1' is more than the %2 that the system's limit of open files "
                           "allows; raise that (ulimit -n), or give less")
                .arg(wanted)
                .arg(possible));
    }
    return static_cast<std::size_t>(std::min(wanted, possible));
}

void watchLoad(Metrics& metrics, WorkerPool& workers, int workerCount, const HttpServer& server)
{
    metrics.watch("planservice_connections", "Clients connected.",
                  [&server] { return server.connections(); });
    metrics.watch("planservice_unanswered_bytes", "What clients have sent and was not answered yet.",
                  [&server] { return static_cast<double>(server.unansweredBytes()); });
    metrics.watch("planservice_workers", "Threads that use the database.",
                  [workerCount] { return workerCount; });
    metrics.watch("planservice_busy_workers", "Workers at a request.",
                  [&workers] { return static_cast<double>(workers.load().running); });
    metrics.watch("planservice_queue_length", "Requests that wait for a worker.",
                  [&workers] { return static_cast<double>(workers.load().waiting); });
}

void watchPlanCache(Metrics& metrics, const PlanCache& texts)
{
    metrics.watchTotal("planservice_plan_cache_hits_total", "Plans sent as they were kept.",
                       [&texts] { return static_cast<double>(texts.numbers().hits); });
    metrics.watchTotal("planservice_plan_cache_misses_total",
                       "Plans asked for that were not kept, or not in the version that they have now.",
                       [&texts] { return static_cast<double>(texts.numbers().misses); });
    metrics.watch("planservice_plan_cache_bytes", "Text of plans that is kept.",
                  [&texts] { return static_cast<double>(texts.numbers().bytes); });
}

} // namespace

int runServe(const QStringList& arguments)
{
    Options options(QStringLiteral("serve"), QStringLiteral("Answers requests until SIGTERM or Ctrl+C."));
    addServeOptions(options);
    if (!options.parse(arguments)) {
        return 0;
    }
    const QString database = options.required(QStringLiteral("database"));
    HttpSettings settings;
    settings.address = options.text(QStringLiteral("listen"));
    settings.port = static_cast<quint16>(options.number(QStringLiteral("port"), 0, 65535));
    settings.threads = options.number(QStringLiteral("threads"), 1, 64);
    settings.tls = tlsFilesFrom(options);
    settings.mostConnections = connectionsFrom(options);
    settings.requestMemory = qint64{options.number(QStringLiteral("request-memory"), 1, 1 << 20)} << 20;
    settings.replyTimeout = std::chrono::seconds(options.number(QStringLiteral("reply-timeout"), 1, 3600));
    settings.largestBody = static_cast<std::size_t>(options.number(QStringLiteral("max-body"), 1, 1 << 30));
    settings.readTimeout = std::chrono::seconds(options.number(QStringLiteral("read-timeout"), 1, 3600));
    settings.handshakeTimeout = std::min(settings.handshakeTimeout, settings.readTimeout);
    const int workerCount = options.number(QStringLiteral("workers"), 1, 64);

    returnLargeBlocks();
#ifdef SIGPIPE
    // Whoever reads the log may go away; that is no reason to end.
    std::signal(SIGPIPE, SIG_IGN);
#endif
    Metrics metrics;
    AccessLog log(options.text(QStringLiteral("log")));
    log.setObserver([&metrics](const AccessEntry& entry) { metrics.count(entry); });
    {
        const auto store =
            openStore(database, options.has(QStringLiteral("create")) ? MissingDatabase::Create
                                                                      : MissingDatabase::Refuse);
        refuseUnsafe({settings.address, store->hasTokens(), !settings.tls.certificate.isEmpty(),
                      options.text(QStringLiteral("without-tokens")),
                      options.text(QStringLiteral("without-tls"))});
    }
    const Router router(serviceRoutes());
    const auto texts =
        std::make_shared<PlanCache>(qint64{options.number(QStringLiteral("plan-cache"), 0, 1 << 20)} << 20);
    watchPlanCache(metrics, *texts);
    WorkerPool workers(workerCount, longestQueue,
                       [database, texts] { return connectStore(database, texts); });
    Service service(router, workers, log, metrics,
                    qint64{options.number(QStringLiteral("reply-memory"), 1, 1 << 20)} << 20);
    HttpServer server(
        settings,
        [&service](Request&& request, Respond&& respond) {
            service.handle(std::move(request), std::move(respond));
        },
        log);
    watchLoad(metrics, workers, workerCount, server);
    const bool ipv6 = settings.address.contains(QLatin1Char(':'));
    print(QStringLiteral("planservice listening on %1://%2:%3/\n")
              .arg(settings.tls.certificate.isEmpty() ? QStringLiteral("http") : QStringLiteral("https"),
                   ipv6 ? QLatin1Char('[') + settings.address + QLatin1Char(']') : settings.address)
              .arg(server.port()));
    server.run();
    service.stop();
    // Jobs that outlived the stop's patience still hold on to the server.
    workers.finish();
    return 0;
}

} // namespace PlanService
