#pragma once

#include "../store/Store.h"

#include <array>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace PlanService {

/// What a job does to those that come after it.
enum class Lane
{
    Small, ///< reads what is found in a moment
    Large, ///< reads what grows with the data
    Write, ///< waits for other writers, as a database takes them one at a time
};

/// The only threads that touch the database: each has its own store. Large jobs and writes take no more than
/// half of them each, and never the last one together, so that small jobs find a worker whatever else is
/// asked for.
class WorkerPool
{
public:
    using Job = std::function<void(Store&)>;
    using StoreFactory = std::function<std::unique_ptr<Store>()>;

    /// Starts @p count workers; every store is open when this returns. Throws StoreError when one cannot be
    /// opened.
    /// @param queueLimit how many jobs of a lane may wait beyond those at work.
    WorkerPool(int count, std::size_t queueLimit, const StoreFactory& openStore);
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;
    ~WorkerPool();

    /// @return false when the lane's queue is full; the job is then not taken. A job must not throw. Whoever
    /// came first goes first, as far as the lanes let it.
    bool add(Job job, Lane lane = Lane::Small);

    /// Jobs that no worker has begun, and jobs that one is at.
    struct Load
    {
        std::size_t waiting = 0;
        std::size_t running = 0;
    };
    Load load();

    /// Finishes what is queued, then ends the workers. Calling it again does nothing.
    void finish();

private:
    struct Waiting
    {
        Job job;
        quint64 number = 0; ///< jobs that came before, of all lanes
    };
    struct LaneState
    {
        std::size_t most = 0; ///< jobs at work at a time
        std::size_t running = 0;
        std::deque<Waiting> waiting;
    };

    void work(const StoreFactory& openStore);
    LaneState& state(Lane lane) { return m_lanes[static_cast<std::size_t>(lane)]; }
    bool isIdle() const;
    /// The lane whose turn it is; nullptr when nothing may begin.
    LaneState* next();

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_started;
    std::array<LaneState, 3> m_lanes;
    std::size_t m_mostBeyondSmall;
    quint64 m_added = 0;
    std::size_t m_queueLimit;
    std::size_t m_ready = 0;
    bool m_finishing = false;
    std::exception_ptr m_failure;
    std::vector<std::thread> m_threads;
};

} // namespace PlanService
