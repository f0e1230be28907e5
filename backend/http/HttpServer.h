#pragma once

#include "Router.h"
#include "TlsFiles.h"

#include <chrono>
#include <functional>
#include <memory>

namespace PlanService {

class AccessLog;

using Respond = std::function<void(Reply&&)>;
using RequestHandler = std::function<void(Request&&, Respond&&)>;

struct HttpSettings
{
    QString address = QStringLiteral("127.0.0.1");
    quint16 port = 0; ///< 0: a free one
    int threads = 2;
    TlsFiles tls;                                ///< empty: plain HTTP
    std::size_t mostConnections = 4000;          ///< further clients wait to be accepted
    std::size_t largestTarget = 1024 * 1024;     ///< bytes of path and query; more is a 414
    std::size_t largestHeaderField = 8 * 1024;   ///< bytes of one name or value; more is a 431
    std::size_t mostHeaderFields = 100;          ///< more is a 431
    std::size_t largestBody = 256 * 1024 * 1024; ///< bytes; more is a 413
    qint64 requestMemory =
        qint64{2} << 30; ///< bytes that have come in and wait for the rest of their requests, of
                         ///< all clients; further ones with more than a few get a 503
    std::chrono::seconds handshakeTimeout{10}; ///< for the beginning of a secured connection
    std::chrono::seconds readTimeout{30}; ///< for a whole request, and for the next one on a kept connection
    std::chrono::seconds replyTimeout{
        120};                             ///< for the endpoint, and again for each step of sending the reply
    std::chrono::seconds stopTimeout{30}; ///< how long requests at work may keep the server from stopping
    std::chrono::seconds arrivalTimeout{5}; ///< the same for requests that have come in part
};

/// The HTTP side: reads requests, hands them over, sends the replies. It knows no path and no database.
class HttpServer
{
public:
    /// Reads the certificate and binds the port. Throws Failure with one line when that fails.
    HttpServer(const HttpSettings& settings, RequestHandler handler, AccessLog& log);
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    ~HttpServer();

    /// The port it listens on.
    quint16 port() const;

    /// How many clients are connected. May be called from any thread.
    int connections() const;
    /// Bytes that clients have sent and that were not answered yet. May be called from any thread.
    qint64 unansweredBytes() const;

    /// Serves until SIGTERM or SIGINT; what is at work then is still answered. SIGHUP reopens the log and has
    /// new connections use the certificate that is in its files then.
    void run();

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace PlanService
