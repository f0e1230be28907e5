#pragma once

// The socket of a connection. Included by HttpServer.cpp alone.

#include "AccessLog.h"
#include "LingeringClose.h"
#include "Rejection.h"

#include <asio/ssl.hpp>
#include <restinio/all.hpp>

#ifdef __linux__
#include <netinet/tcp.h>
#endif

namespace PlanService {

/// Set by ParserLog or the socket and taken by the socket: the connection logs why it gives up and then
/// closes its socket in the same call, and there is no other road from the one to the other.
inline Rejection& pendingRejection()
{
    static thread_local Rejection rejection;
    return rejection;
}

/// Learns from the connection's log why a request was refused.
class ParserLog
{
public:
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
};

/// Plain or secured, as the context says when the connection begins. It answers requests that could not be
/// read, and counts what has come in and was not answered yet.
class ServiceSocket : public asio::ip::tcp::socket
{
    using Plain = asio::ip::tcp::socket;

public:
    explicit ServiceSocket(asio::io_context& context)
        : Plain(context)
        , m_context(&static_cast<ServerContext&>(context))
        , m_unanswered(*m_context)
    {
    }

    ServiceSocket& lowest_layer() { return *this; }
    const ServiceSocket& lowest_layer() const { return *this; }

    using Plain::remote_endpoint;
    /// A client may be gone before it is asked for. The acceptor would lose one of its places each time that
    /// this threw, and in the end take nobody any more.
    endpoint_type remote_endpoint() const
    {
        asio::error_code gone;
        return Plain::remote_endpoint(gone);
    }

    /// Calls @p start once requests may be read, or @p fail.
    template<typename Start, typename Fail>
    void prepare(Start start, Fail fail)
    {
        m_connected = std::make_unique<Connected>(*m_context);
        m_tls = m_context->tls();
        if (!m_tls) {
            start();
            return;
        }
        m_secure = std::make_unique<Secure>(*this, *m_tls);
        const auto strand = asio::make_strand(get_executor());
        const auto deadline =
            std::make_shared<asio::steady_timer>(get_executor(), m_context->handshakeTimeout);
        const auto isOver = std::make_shared<bool>(false);
        m_secure->async_handshake(
            asio::ssl::stream_base::server,
            asio::bind_executor(strand, [start = std::move(start), fail = std::move(fail), deadline,
                                         isOver](const asio::error_code& error) {
                *isOver = true;
                deadline->cancel();
                if (error) {
                    fail(error);
                } else {
                    start();
                }
            }));
        // The handshake ends when its socket is closed, and keeps the connection until then.
        deadline->async_wait(asio::bind_executor(strand, [this, isOver](const asio::error_code& error) {
            if (!error && !*isOver) {
                asio::error_code ignored;
                Plain::close(ignored);
            }
        }));
    }

    template<typename Buffers, typename Handler>
    void async_read_some(const Buffers& buffers, Handler&& handler)
    {
        acknowledgeAtOnce();
        auto counting = asio::bind_executor(asio::get_associated_executor(handler, get_executor()),
                                            [this, handler = std::forward<Handler>(handler)](
                                                asio::error_code error, std::size_t bytes) mutable {
                                                if (!error && !m_unanswered.add(bytes)) {
                                                    pendingRejection() = crowdedOut();
                                                    error = asio::error::no_buffer_space;
                                                }
                                                handler(error, bytes);
                                            });
        if (m_secure) {
            m_secure->async_read_some(buffers, std::move(counting));
        } else {
            Plain::async_read_some(buffers, std::move(counting));
        }
    }

    template<typename Buffers, typename Handler>
    void async_write_some(const Buffers& buffers, Handler&& handler)
    {
        m_unanswered.clear();
        if (!m_secure) {
            Plain::async_write_some(buffers, std::forward<Handler>(handler));
            return;
        }
        m_isWriting = true;
        m_secure->async_write_some(
            buffers, asio::bind_executor(asio::get_associated_executor(handler, get_executor()),
                                         [this, handler = std::forward<Handler>(handler)](
                                             const asio::error_code& error, std::size_t bytes) mutable {
                                             m_isWriting = false;
                                             handler(error, bytes);
                                         }));
    }

    void shutdown(shutdown_type what, asio::error_code& error)
    {
        Rejection rejection;
        std::swap(rejection, pendingRejection());
        m_unanswered.clear();
        // What is said now is said at once or not at all: nobody waits for a client that does not read.
        asio::error_code ignored;
        non_blocking(true, ignored);
        if (rejection.status != 0) {
            reject(rejection, error);
            return;
        }
        sayGoodbye();
        Plain::shutdown(what, error);
    }

private:
    using Secure = asio::ssl::stream<Plain&>;

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

    /// So that a client can tell the end from a cut line. Not into the middle of something that is being
    /// written.
    void sayGoodbye()
    {
        if (m_secure && !m_isWriting) {
            asio::error_code ignored; // the client's own goodbye is not waited for
            m_secure->shutdown(ignored);
        }
    }

    void reject(const Rejection& rejection, asio::error_code& error)
    {
        AccessEntry entry;
        entry.status = rejection.status;
        const auto endpoint = Plain::remote_endpoint(error);
        entry.remoteAddress =
            error ? QByteArray() : QByteArray::fromStdString(endpoint.address().to_string());
        const auto text =
            asio::buffer(rejection.text.constData(), static_cast<std::size_t>(rejection.text.size()));
        if (m_secure) {
            m_secure->write_some(text, error);
        } else {
            Plain::write_some(text, error);
        }
        entry.delivered = !error;
        entry.bytes = rejection.text.size() - rejection.text.indexOf("\r\n\r\n") - 4;
        m_context->log->request(entry);
        sayGoodbye();
        Plain::shutdown(shutdown_send, error);
        LingeringClose::start(*m_context, std::move(static_cast<Plain&>(*this)));
    }

    ServerContext* m_context;
    Unanswered m_unanswered;
    std::unique_ptr<Connected> m_connected;
    std::shared_ptr<asio::ssl::context> m_tls; ///< lives as long as what is secured with it
    std::unique_ptr<Secure> m_secure; ///< stands on this socket, so it begins when that stays where it is
    bool m_isWriting = false;
};

/// What the HTTP library calls before it reads from a new connection.
template<typename Connection, typename Start, typename Fail>
void prepare_connection_and_start_read(ServiceSocket& socket, Connection& connection, Start start, Fail fail)
{
    // Both belong to the connection, which must not end before one of them was called.
    const auto kept = connection.shared_from_this();
    socket.prepare([start = std::move(start), kept] { start(); },
                   [fail = std::move(fail), kept](const asio::error_code& error) { fail(error); });
}

} // namespace PlanService
