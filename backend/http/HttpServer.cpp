// The only file that sees the HTTP library; its headers take long to compile.

#include "HttpServer.h"

#include "../Failure.h"
#include "AccessLog.h"
#include "RequestId.h"
#include "ServiceSocket.h"

#include <http_parser.h>

#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <thread>

namespace PlanService {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int longestLoggedPath = 2048;

struct ServerTraits
    : restinio::traits_t<restinio::asio_timer_manager_t, ParserLog, restinio::default_request_handler_t,
                         restinio::default_strand_t, ServiceSocket>
{
    static constexpr bool use_connection_count_limiter = true;
};

/// One piece of a reply's body, shared with whoever else holds it.
struct BodyPiece
{
    QByteArray bytes;
    const char* data() const noexcept { return bytes.constData(); }
    std::size_t size() const noexcept { return static_cast<std::size_t>(bytes.size()); }
};

asio::ip::address addressFrom(const QString& text)
{
    asio::error_code error;
    const auto address =
        asio::ip::make_address(text == QLatin1String("localhost") ? "127.0.0.1" : text.toStdString(), error);
    if (error) {
        throw Failure(QStringLiteral("'%1' is not an IP address; try 127.0.0.1").arg(text));
    }
    return address;
}

/// Whether somebody between client and service may read the request in another way than the parser here did,
/// which lets more pass than it should. What lies between two such readings is how requests are smuggled.
bool isAmbiguous(const restinio::http_request_header_t& header)
{
    int hosts = 0;
    bool ambiguous = false;
    header.for_each_field([&](const restinio::http_header_field_t& field) {
        hosts += field.field_id() == restinio::http_field::host ? 1 : 0;
        const bool isCoding = field.field_id() == restinio::http_field::transfer_encoding;
        ambiguous = ambiguous || field.name().find_first_of(" \t") != std::string::npos ||
                    (isCoding && !restinio::impl::is_equal_caseless(field.value(), "chunked"));
    });
    return ambiguous || hosts > 1;
}

} // namespace

void ParserLog::note(const std::string& message) const
{
    if (message.find("parser error") != std::string::npos) {
        pendingRejection() = rejectionOf(refusalOf(message));
    }
}

class HttpServer::Private
{
public:
    Private(const HttpSettings& settings, RequestHandler handler, AccessLog& log)
        : m_settings(settings)
        , m_handler(std::move(handler))
        , m_log(log)
        , m_server(restinio::external_io_context(m_context), serverSettings())
        , m_signals(m_context)
        , m_hangup(m_context, SIGHUP)
        , m_stopTimer(m_context)
    {
        m_context.mostUnansweredBytes = settings.requestMemory;
        m_context.handshakeTimeout = settings.handshakeTimeout;
        m_context.log = &log;
        if (!settings.tls.certificate.isEmpty()) {
            takeCertificate();
        }
        // The parser's own limit is on URL and headers together; those of ours are to be met first.
        http_parser_set_max_header_size(static_cast<std::uint32_t>(
            settings.largestTarget + settings.mostHeaderFields * settings.largestHeaderField));
        try {
            m_server.open_sync();
        } catch (const std::exception& error) {
            throw Failure(
                QStringLiteral(
                    "cannot listen on %1, port %2: %3; is another program using it? try another --port")
                    .arg(settings.address)
                    .arg(settings.port)
                    .arg(QString::fromLocal8Bit(error.what())));
        }
        m_signals.add(SIGTERM);
        m_signals.add(SIGINT);
        m_signals.async_wait([this](const asio::error_code& error, int) {
            if (!error) {
                stop();
            }
        });
        awaitHangup();
    }

    // The connections of clients that are still there go first: they tell the server, which must be there to
    // hear.
    ~Private() { m_context.abandon(); }
    Private(const Private&) = delete;
    Private& operator=(const Private&) = delete;

    quint16 port() const { return m_port; }
    int connections() const { return m_context.connected; }
    qint64 unansweredBytes() const { return m_context.unansweredBytes; }

    void run()
    {
        std::vector<std::thread> threads;
        for (int i = 1; i < m_settings.threads; ++i) {
            threads.emplace_back([this] { m_context.run(); });
        }
        m_context.run();
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

private:
    restinio::server_settings_t<ServerTraits> serverSettings()
    {
        restinio::server_settings_t<ServerTraits> settings;
        const asio::ip::address address = addressFrom(m_settings.address);
        settings.address(address)
            .protocol(address.is_v6() ? asio::ip::tcp::v6() : asio::ip::tcp::v4())
            .port(m_settings.port)
            .max_parallel_connections(m_settings.mostConnections)
            .read_next_http_message_timelimit(m_settings.readTimeout)
            .handle_request_timeout(m_settings.replyTimeout)
            .write_http_response_timelimit(m_settings.replyTimeout)
            // Further requests of a connection wait in its socket: replies go out in order, a client that
            // sends without reading is slowed down, and a malformed request never overtakes a good one.
            .max_pipelined_requests(1)
            .buffer_size(16 * 1024)
            .incoming_http_msg_limits(restinio::incoming_http_msg_limits_t{}
                                          .max_url_size(m_settings.largestTarget)
                                          .max_field_name_size(m_settings.largestHeaderField)
                                          .max_field_value_size(m_settings.largestHeaderField)
                                          .max_field_count(m_settings.mostHeaderFields)
                                          .max_body_size(m_settings.largestBody))
            .acceptor_options_setter([](restinio::acceptor_options_t& options) {
                options.set_option(asio::ip::tcp::acceptor::reuse_address(true));
            })
            .socket_options_setter([](restinio::socket_options_t& options) {
                options.set_option(asio::ip::tcp::no_delay(true));
            })
            .acceptor_post_bind_hook([this](asio::ip::tcp::acceptor& acceptor) {
                m_port = acceptor.local_endpoint().port();
                m_listener = acceptor.native_handle();
            })
            .request_handler([this](const restinio::request_handle_t& request) { return accept(request); });
        return settings;
    }

    restinio::request_handling_status_t accept(const restinio::request_handle_t& handle)
    {
        const Clock::time_point started = Clock::now();
        const auto& header = handle->header();
        Request request;
        request.id = nextRequestId();
        request.method = header.method().c_str();
        request.target = QByteArray::fromStdString(header.request_target());
        // More than one read as one list, which is no token: nobody is to choose between them.
        header.for_each_value_of(restinio::http_field::authorization, [&](restinio::string_view_t value) {
            request.authorization += request.authorization.isEmpty() ? "" : ", ";
            request.authorization.append(value.data(), static_cast<int>(value.size()));
            return restinio::http_header_fields_t::continue_enumeration();
        });
        request.authorization = request.authorization.trimmed();
        // Not copied: it stays with the handle, which whoever has to respond holds.
        request.body =
            QByteArray::fromRawData(handle->body().data(), static_cast<int>(handle->body().size()));
        request.remoteAddress = QByteArray::fromStdString(handle->remote_endpoint().address().to_string());

        AccessEntry entry;
        entry.request = request.id;
        entry.receivedBytes = request.body.size();
        entry.remoteAddress = request.remoteAddress;
        entry.method = request.method;
        entry.path = pathOf(request.target).left(longestLoggedPath);
        ++m_atWork;
        const Respond respond = [this, handle, entry, started](Reply&& reply) {
            // Never from within this call: a reply that is out before the connection has taken note of its
            // request makes it read the next one twice.
            asio::post(m_context, [this, handle, entry, started, reply = std::move(reply)]() mutable {
                send(*handle, std::move(reply), std::move(entry), started);
            });
        };
        if (isAmbiguous(header)) {
            Reply reply = malformedRequest().reply();
            reply.closes = true;
            respond(std::move(reply));
        } else {
            m_handler(std::move(request), Respond(respond));
        }
        return restinio::request_accepted();
    }

    void send(restinio::request_t& request, Reply&& reply, AccessEntry&& entry, Clock::time_point started)
    {
        auto response = request.create_response(restinio::http_status_line_t{
            restinio::http_status_code_t{static_cast<std::uint16_t>(reply.status)},
            reasonPhrase(reply.status).toStdString()});
        if (reply.status != 204) {
            response.append_header(restinio::http_field::content_type, reply.contentType);
        }
        response.append_header_date_field();
        response.append_header("X-Request-Id", entry.request.toStdString());
        for (const auto& extra : qAsConst(reply.headers)) {
            response.append_header(extra.first.toStdString(), extra.second.toStdString());
        }
        // A request to change the protocol is answered as any other, but its connection cannot go on.
        if (m_stopping || reply.closes ||
            request.header().connection() == restinio::http_connection_header_t::upgrade) {
            response.connection_close();
        }
        if (entry.method != "HEAD") {
            entry.bytes = reply.size();
            for (QByteArray& piece : reply.body) {
                response.append_body(BodyPiece{std::move(piece)});
            }
        }
        entry.status = reply.status;
        entry.route = reply.note.route;
        entry.userId = reply.note.userId;
        entry.databaseMicroseconds = reply.note.databaseMicroseconds;
        response.done(
            [this, entry, started, lease = std::move(reply.lease)](const asio::error_code& error) mutable {
                entry.delivered = !error;
                entry.microseconds =
                    std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - started).count();
                m_log.request(entry);
                --m_atWork;
            });
    }

    void awaitHangup()
    {
        m_hangup.async_wait([this](const asio::error_code& error, int) {
            if (!error) {
                m_log.reopen();
                renewCertificate();
                awaitHangup();
            }
        });
    }

    void takeCertificate()
    {
        const auto tls = tlsFrom(m_settings.tls);
        const QString complaint = complaintAbout(*tls, m_settings.tls);
        if (!complaint.isEmpty()) {
            m_log.error(complaint);
        }
        m_context.setTls(tls);
    }

    void renewCertificate()
    {
        if (m_settings.tls.certificate.isEmpty()) {
            return;
        }
        try {
            takeCertificate();
        } catch (const Failure& failure) {
            m_log.error(
                QStringLiteral("the service goes on with the old certificate: %1").arg(failure.message()));
        }
    }

    void stop()
    {
        m_stopping = true;
        m_stopBy = Clock::now() + m_settings.stopTimeout;
        m_arriveBy = Clock::now() + m_settings.arrivalTimeout;
        // The kernel refuses newcomers from here on. The acceptor itself is closed when all threads have
        // ended: one of them may be about to take a connection from it, and an acceptor is not made for both
        // at a time.
        ::shutdown(m_listener, SHUT_RDWR);
        stopWhenIdle();
    }

    void stopWhenIdle()
    {
        m_stopTimer.expires_after(std::chrono::milliseconds(50));
        m_stopTimer.async_wait([this](const asio::error_code&) {
            const Clock::time_point now = Clock::now();
            const bool arrives = m_context.unfinished > 0 && now < m_arriveBy;
            m_idleLooks = m_atWork == 0 && !arrives ? m_idleLooks + 1 : 0;
            // Twice in a row, as a request that has just come may be on its way from the one count to the
            // other.
            if (m_idleLooks == 2 || now > m_stopBy) {
                m_context.stop();
            } else {
                stopWhenIdle();
            }
        });
    }

    HttpSettings m_settings;
    RequestHandler m_handler;
    AccessLog& m_log;
    quint16 m_port = 0;
    asio::ip::tcp::acceptor::native_handle_type m_listener = -1;
    std::atomic<int> m_atWork{0};
    std::atomic<bool> m_stopping{false};
    Clock::time_point m_stopBy;
    Clock::time_point m_arriveBy;
    int m_idleLooks = 0;
    ServerContext m_context;
    restinio::http_server_t<ServerTraits> m_server;
    asio::signal_set m_signals;
    asio::signal_set m_hangup;
    asio::steady_timer m_stopTimer;
};

HttpServer::HttpServer(const HttpSettings& settings, RequestHandler handler, AccessLog& log)
    : d(std::make_unique<Private>(settings, std::move(handler), log))
{
}

HttpServer::~HttpServer() = default;

quint16 HttpServer::port() const
{
    return d->port();
}

int HttpServer::connections() const
{
    return d->connections();
}

qint64 HttpServer::unansweredBytes() const
{
    return d->unansweredBytes();
}

void HttpServer::run()
{
    d->run();
}

} // namespace PlanService
