#pragma once

// How a refused connection ends. Included by the files of the server alone.

#include "OpenFiles.h"
#include "ServerContext.h"

#include <asio/bind_executor.hpp>
#include <asio/dispatch.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>
#include <asio/strand.hpp>

#include <array>

namespace PlanService {

/// Keeps a connection open after its last reply until the client has read it: closing with unread input would
/// reset the connection and take the reply with it.
class LingeringClose : public std::enable_shared_from_this<LingeringClose>
{
public:
    /// Takes @p socket over. When there are too many of them already it is closed at once instead: each takes
    /// one of the files that the process may have open.
    static void start(ServerContext& context, asio::ip::tcp::socket&& socket)
    {
        if (context.lingering >= mostLingering) {
            asio::error_code ignored;
            socket.close(ignored);
            return;
        }
        const auto lingering = std::make_shared<LingeringClose>(context, std::move(socket));
        asio::dispatch(lingering->m_strand, [lingering] { lingering->run(); });
    }

    LingeringClose(ServerContext& context, asio::ip::tcp::socket&& socket)
        : m_context(context)
        , m_socket(std::move(socket))
        , m_strand(asio::make_strand(m_socket.get_executor()))
        , m_timer(m_socket.get_executor(), std::chrono::seconds(2))
    {
        ++m_context.lingering;
    }
    LingeringClose(const LingeringClose&) = delete;
    LingeringClose& operator=(const LingeringClose&) = delete;
    ~LingeringClose() { --m_context.lingering; }

private:
    void run()
    {
        m_timer.async_wait(
            asio::bind_executor(m_strand, [self = shared_from_this()](const asio::error_code& error) {
                if (!error) {
                    asio::error_code ignored;
                    self->m_socket.close(ignored);
                }
            }));
        drain();
    }

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

    ServerContext& m_context;
    asio::ip::tcp::socket m_socket;
    asio::strand<asio::ip::tcp::socket::executor_type> m_strand;
    asio::steady_timer m_timer;
    std::array<char, 16384> m_buffer;
};

} // namespace PlanService
