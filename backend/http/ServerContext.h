#pragma once

// What all connections of a server share. Included by the files of the server alone.

#include <asio/io_context.hpp>
#include <asio/ssl/context.hpp>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

namespace PlanService {

class AccessLog;

/// Runs the connections and knows what they hold together. Each socket reaches it as what it runs on.
class ServerContext : public asio::io_context
{
public:
    /// Destroys everything that still waits, connections included, and nothing else.
    void abandon() { shutdown(); }

    /// What new connections are secured with; empty: they are not. Both may be called from any thread.
    void setTls(std::shared_ptr<asio::ssl::context> tls)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_tls = std::move(tls);
    }
    std::shared_ptr<asio::ssl::context> tls() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_tls;
    }

    std::atomic<std::int64_t> unansweredBytes{0}; ///< received and not yet answered, of all connections
    std::atomic<int> unfinished{0};               ///< connections with such bytes
    std::atomic<int> connected{0};                ///< connections that there are
    std::atomic<int> lingering{0}; ///< connections that were refused and are about to be closed

    /// Set before the first connection.
    std::int64_t mostUnansweredBytes = 0;
    std::chrono::milliseconds handshakeTimeout{0};
    AccessLog* log = nullptr;

private:
    mutable std::mutex m_mutex;
    std::shared_ptr<asio::ssl::context> m_tls;
};

/// Counts a connection as long as it lives.
class Connected
{
public:
    explicit Connected(ServerContext& context)
        : m_context(context)
    {
        ++m_context.connected;
    }
    Connected(const Connected&) = delete;
    Connected& operator=(const Connected&) = delete;
    ~Connected() { --m_context.connected; }

private:
    ServerContext& m_context;
};

/// A connection's part of what the context counts as unanswered. Moving leaves nothing behind.
class Unanswered
{
public:
    explicit Unanswered(ServerContext& context)
        : m_context(&context)
    {
    }
    Unanswered(Unanswered&& other) noexcept
        : m_context(other.m_context)
        , m_bytes(std::exchange(other.m_bytes, 0))
    {
    }
    Unanswered& operator=(Unanswered&& other) noexcept
    {
        clear();
        m_context = other.m_context;
        m_bytes = std::exchange(other.m_bytes, 0);
        return *this;
    }
    Unanswered(const Unanswered&) = delete;
    Unanswered& operator=(const Unanswered&) = delete;
    ~Unanswered() { clear(); }

    /// @return false when all connections together hold more than they may, and this one is one of those that
    /// hold much.
    bool add(std::size_t bytes)
    {
        constexpr std::int64_t little = 64 * 1024;
        if (m_bytes == 0 && bytes > 0) {
            ++m_context->unfinished;
        }
        m_bytes += static_cast<std::int64_t>(bytes);
        m_context->unansweredBytes += static_cast<std::int64_t>(bytes);
        return m_bytes <= little || m_context->unansweredBytes <= m_context->mostUnansweredBytes;
    }

    void clear()
    {
        if (m_bytes > 0) {
            --m_context->unfinished;
            m_context->unansweredBytes -= std::exchange(m_bytes, 0);
        }
    }

private:
    ServerContext* m_context;
    std::int64_t m_bytes = 0;
};

} // namespace PlanService
