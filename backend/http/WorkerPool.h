#pragma once

#include "../store/Store.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace PlanService {

/// The only threads that touch the database: each has its own store.
class WorkerPool
{
public:
    using Job = std::function<void(Store&)>;
    using StoreFactory = std::function<std::unique_ptr<Store>()>;

    /// Starts @p count workers; every store is open when this returns. Throws StoreError when one cannot be
    /// opened.
    /// @param queueLimit how many jobs may wait beyond those at work.
    WorkerPool(int count, std::size_t queueLimit, const StoreFactory& openStore);
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;
    ~WorkerPool();

    /// @return false when the queue is full; the job is then not taken. A job must not throw.
    bool add(Job job);

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
    void work(const StoreFactory& openStore);

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_started;
    std::deque<Job> m_jobs;
    std::size_t m_queueLimit;
    std::size_t m_ready = 0;
    std::size_t m_running = 0;
    bool m_finishing = false;
    std::exception_ptr m_failure;
    std::vector<std::thread> m_threads;
};

} // namespace PlanService
