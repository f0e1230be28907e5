#pragma once

#include <QtGlobal>

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace PlanService {

/// Bounds the memory of replies that wait for their clients: many clients that read a large plan at once, or
/// one that reads it slowly, must not exhaust the machine. Further large requests stand aside until there is
/// room.
class ReplyMemory
{
public:
    using Resume = std::function<void()>;

    /// @param limit bytes; a single reply may be larger, then it goes alone.
    explicit ReplyMemory(qint64 limit)
        : m_limit(limit)
    {
    }

    /// Keeps @p resume for later when the limit is reached. @return false when there is room, @p resume is
    /// then dropped.
    bool standAside(Resume resume)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        // While the limit is reached there is a lease, and its end takes the waiting ones up again.
        if (m_stopped || m_held < m_limit) {
            return false;
        }
        m_waiting.push_back(std::move(resume));
        return true;
    }

    /// Counts @p bytes until the last copy of the lease is gone. @param shared where the lease stands of
    /// others who hold the same bytes, which count once; may be nullptr.
    std::shared_ptr<void> lease(qint64 bytes, std::weak_ptr<void>* shared = nullptr)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::shared_ptr<void> lease = shared ? shared->lock() : nullptr;
        if (!lease) {
            m_held += bytes;
            lease = std::shared_ptr<void>(this, [this, bytes](void*) { release(bytes); });
        }
        if (shared) {
            *shared = lease;
        }
        return lease;
    }

    /// Forgets those who wait; nobody has to wait from now on.
    void stop()
    {
        std::deque<Resume> forgotten;
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopped = true;
        forgotten.swap(m_waiting);
    }

private:
    void release(qint64 bytes)
    {
        std::deque<Resume> resumed;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_held -= bytes;
            if (m_held < m_limit) {
                resumed.swap(m_waiting);
            }
        }
        for (const Resume& resume : resumed) {
            resume();
        }
    }

    std::mutex m_mutex;
    std::deque<Resume> m_waiting;
    qint64 m_limit;
    qint64 m_held = 0;
    bool m_stopped = false;
};

} // namespace PlanService
