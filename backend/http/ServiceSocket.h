#pragma once

// A socket that answers a request which could not be read. Included by HttpServer.cpp alone.

#include "AccessLog.h"
#include "Reply.h"

#include <restinio/all.hpp>

#include <array>

#ifdef __linux__
#include <netinet/tcp.h>
#endif

namespace PlanService {

QByteArray reasonPhrase(int status);

/// What is still to be said on a connection that is about to be closed.
struct Rejection
{
    int status = 0;
    QByteArray text; ///< the whole reply
    AccessLog* log = nullptr;
};

/// Set by ParserLog and taken by ServiceSocket: the connection logs why it gives up and then closes its
/// socket in the same call, and there is no other road from the one to the other.
inline Rejection& pendingRejection()
{
    static thread_local Rejection rejection;
    return rejection;
}

/// Learns from the connection's log why a request was refused.
class ParserLog
{
public:
    explicit ParserLog(AccessLog& log)
        : m_log(&log)
    {
    }
    template<typename Builder>
    void trace(Builder&&) const noexcept
    {
    }
    template<typename Builder>
    void info(Builder&&) const noexcept
    {
    }
    template<typename Builder>
    void warn(Builder&&) const noexcept
    {
    }
    template<typename Builder>
    void error(Builder&& builder) const
    {
        note(builder());
    }

private:
    void note(const std::string& message) const;

    AccessLog* m_log;
};

/// Keeps a connection open after its last reply until the client has read it: closing with unread input would
/// reset the connection and take the reply with it.
class LingeringClose : public std::enable_shared_from_this<LingeringClose>
{
public:
    explicit LingeringClose(asio::ip::tcp::socket&& socket)
        : m_socket(std::move(socket))
        , m_strand(asio::make_strand(m_socket.get_executor()))
        , m_timer(m_socket.get_executor(), std::chrono::seconds(2))
    {
    }
    void start()
    {
        asio::dispatch(m_strand, [self = shared_from_this()] {
            self->m_timer.async_wait(
                asio::bind_executor(self->m_strand, [self](const asio::error_code& error) {
                    if (!error) {
                        asio::error_code ignored;
                        self->m_socket.close(ignored);
                    }
                }));
            self->drain();
        });
    }

private:
    void drain()
    {
        m_socket.async_read_some(
            asio::buffer(m_buffer),
            asio::bind_executor(m_strand,
                                [self = shared_from_this()](const asio::error_code& error, std::size_t) {
                                    if (error) {
                                        self->m_timer.cancel();
                                    } else {
                                        self->drain();
                                    }
                                }));
    }

    asio::ip::tcp::socket m_socket;
    asio::strand<asio::ip::tcp::socket::executor_type> m_strand;
    asio::steady_timer m_timer;
    std::array<char, 16384> m_buffer;
};

class ServiceSocket : public asio::ip::tcp::socket
{
public:
    using asio::ip::tcp::socket::socket;

    template<typename Buffers, typename Handler>
    auto async_read_some(const Buffers& buffers, Handler&& handler)
    {
        acknowledgeAtOnce();
        return asio::ip::tcp::socket::async_read_some(buffers, std::forward<Handler>(handler));
    }

    void shutdown(shutdown_type what, asio::error_code& error)
    {
        Rejection rejection;
        std::swap(rejection, pendingRejection());
        if (rejection.status == 0) {
            asio::ip::tcp::socket::shutdown(what, error);
            return;
        }
        reject(rejection, error);
    }

private:
    /// Many clients send the head of a request and then its body, and hold the body back until the head is
    /// acknowledged, which the system would do 40 ms later. It forgets the wish after some reads, so each one
    /// renews it; what stands out when it does is acknowledged now.
    void acknowledgeAtOnce()
    {
#ifdef TCP_QUICKACK
        const int on = 1;
        ::setsockopt(native_handle(), IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
#endif
    }

    void reject(const Rejection& rejection, asio::error_code& error)
    {
        AccessEntry entry;
        entry.status = rejection.status;
        const auto endpoint = remote_endpoint(error);
        entry.remoteAddress =
            error ? QByteArray() : QByteArray::fromStdString(endpoint.address().to_string());
        write_some(asio::buffer(rejection.text.constData(), static_cast<std::size_t>(rejection.text.size())),
                   error);
        entry.delivered = !error;
        entry.bytes = rejection.text.size() - rejection.text.indexOf("\r\n\r\n") - 4;
        rejection.log->request(entry);
        asio::ip::tcp::socket::shutdown(shutdown_send, error);
        std::make_shared<LingeringClose>(std::move(static_cast<asio::ip::tcp::socket&>(*this)))->start();
    }
};

} // namespace PlanService
