#include "WorkerPool.h"

#include <algorithm>

namespace PlanService {

WorkerPool::WorkerPool(int count, std::size_t queueLimit, const StoreFactory& openStore)
    : m_mostBeyondSmall(static_cast<std::size_t>(std::max(1, count - 1)))
    , m_queueLimit(queueLimit)
{
    state(Lane::Small).most = static_cast<std::size_t>(count);
    state(Lane::Large).most = state(Lane::Write).most = static_cast<std::size_t>(std::max(1, count / 2));
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

bool WorkerPool::add(Job job, Lane lane)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_finishing || state(lane).waiting.size() >= m_queueLimit) {
            return false;
        }
        state(lane).waiting.push_back({std::move(job), m_added++});
    }
    m_wake.notify_one();
    return true;
}

bool WorkerPool::isIdle() const
{
    return std::all_of(m_lanes.begin(), m_lanes.end(),
                       [](const LaneState& lane) { return lane.waiting.empty(); });
}

WorkerPool::LaneState* WorkerPool::next()
{
    const bool oneIsLeft = state(Lane::Large).running + state(Lane::Write).running < m_mostBeyondSmall;
    LaneState* first = nullptr;
    for (LaneState& lane : m_lanes) {
        const bool may = lane.running < lane.most && (oneIsLeft || &lane == &state(Lane::Small));
        if (may && !lane.waiting.empty() &&
            (!first || lane.waiting.front().number < first->waiting.front().number)) {
            first = &lane;
        }
    }
    return first;
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
        LaneState* lane = nullptr;
        m_wake.wait(lock, [&] {
            lane = next();
            return lane || (m_finishing && isIdle());
        });
        if (!lane) {
            return;
        }
        Job job = std::move(lane->waiting.front().job);
        lane->waiting.pop_front();
        ++lane->running;
        lock.unlock();
        job(*store);
        // What the job holds goes before the lock is taken again.
        job = nullptr;
        lock.lock();
        --lane->running;
        if (!isIdle() || m_finishing) {
            // What had to wait for this lane may go to a worker that sleeps.
            m_wake.notify_all();
        }
    }
}

WorkerPool::Load WorkerPool::load()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    Load load;
    for (const LaneState& lane : m_lanes) {
        load.waiting += lane.waiting.size();
        load.running += lane.running;
    }
    return load;
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
