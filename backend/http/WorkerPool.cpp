#include "WorkerPool.h"

namespace PlanService {

WorkerPool::WorkerPool(int count, std::size_t queueLimit, const StoreFactory& openStore)
    : m_queueLimit(queueLimit)
{
    for (int i = 0; i < count; ++i) {
        m_threads.emplace_back([this, openStore] { work(openStore); });
    }
    std::unique_lock<std::mutex> lock(m_mutex);
    m_started.wait(lock, [this] { return m_failure || m_ready == m_threads.size(); });
    if (m_failure) {
        lock.unlock();
        finish();
        std::rethrow_exception(m_failure);
    }
}

WorkerPool::~WorkerPool()
{
    finish();
}

bool WorkerPool::add(Job job)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_finishing || m_jobs.size() >= m_queueLimit) {
            return false;
        }
        m_jobs.push_back(std::move(job));
    }
    m_wake.notify_one();
    return true;
}

void WorkerPool::work(const StoreFactory& openStore)
{
    std::unique_ptr<Store> store;
    try {
        store = openStore();
    } catch (...) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_failure = std::current_exception();
        m_started.notify_one();
        return;
    }
    std::unique_lock<std::mutex> lock(m_mutex);
    ++m_ready;
    m_started.notify_one();
    for (;;) {
        m_wake.wait(lock, [this] { return m_finishing || !m_jobs.empty(); });
        if (m_jobs.empty()) {
            return;
        }
        Job job = std::move(m_jobs.front());
        m_jobs.pop_front();
        ++m_running;
        lock.unlock();
        job(*store);
        // What the job holds goes before the lock is taken again.
        job = nullptr;
        lock.lock();
        --m_running;
    }
}

WorkerPool::Load WorkerPool::load()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return {m_jobs.size(), m_running};
}

void WorkerPool::finish()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_finishing = true;
    }
    m_wake.notify_all();
    for (std::thread& thread : m_threads) {
        if (thread.joinable()) {
            thread.join();
        }
    }
    m_threads.clear();
}

} // namespace PlanService
