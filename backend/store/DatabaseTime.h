#pragma once

#include <QtGlobal>

#include <chrono>

namespace PlanService {

/// Adds the time of its life to what this thread has spent in the database. One inside another counts once.
class DatabaseTime
{
public:
    DatabaseTime()
        : m_started(depth()++ == 0 ? Clock::now() : Clock::time_point())
    {
    }
    DatabaseTime(const DatabaseTime&) = delete;
    DatabaseTime& operator=(const DatabaseTime&) = delete;
    ~DatabaseTime()
    {
        if (--depth() == 0) {
            spent() += Clock::now() - m_started;
        }
    }

    /// What this thread has spent since the last call, in microseconds.
    static qint64 take()
    {
        const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(spent()).count();
        spent() = {};
        return microseconds;
    }

private:
    using Clock = std::chrono::steady_clock;

    static Clock::duration& spent()
    {
        static thread_local Clock::duration time{};
        return time;
    }
    static int& depth()
    {
        static thread_local int count = 0;
        return count;
    }

    Clock::time_point m_started;
};

} // namespace PlanService
