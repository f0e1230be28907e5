#include "MixedLoad.h"

#include <chrono>

namespace KvTest {

MixedLoad::MixedLoad(int clients, quint32 seed)
{
    for (int i = 0; i < clients; ++i) {
        m_clients.push_back(std::make_unique<LoadClient>(i, seed));
    }
}

MixedLoad::~MixedLoad()
{
    stop();
}

void MixedLoad::start(quint16 port)
{
    m_stop = false;
    m_refusedBefore = refusals();
    for (const auto& client : m_clients) {
        client->forgetPast();
        ++m_running;
        m_threads.emplace_back([this, port, one = client.get()] {
            one->run(port, m_stop, [this] { tell(); });
            --m_running;
            tell();
        });
    }
}

int MixedLoad::refusals() const
{
    int sum = 0;
    for (const auto& client : m_clients) {
        sum += client->refusals();
    }
    return sum;
}

// Under the mutex, so that nobody misses it who has just looked and is about to wait.
void MixedLoad::tell()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_told.notify_all();
}

bool MixedLoad::waitFor(const std::function<bool()>& condition)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_told.wait_for(lock, std::chrono::minutes(2), [&] { return m_running == 0 || condition(); });
    return condition();
}

bool MixedLoad::waitForChanges(int changes)
{
    std::vector<int> goals;
    for (const auto& client : m_clients) {
        goals.push_back(client->states() + changes);
    }
    return waitFor([&] {
        for (std::size_t i = 0; i < goals.size(); ++i) {
            if (m_clients.at(i)->states() < goals.at(i)) {
                return false;
            }
        }
        return true;
    });
}

bool MixedLoad::waitForRefusals(int count)
{
    return waitFor([&] { return refusals() - m_refusedBefore >= count; });
}

void MixedLoad::stop()
{
    m_stop = true;
    for (std::thread& thread : m_threads) {
        thread.join();
    }
    m_threads.clear();
}

QString MixedLoad::settle(quint16 port)
{
    for (const auto& client : m_clients) {
        const QString wrong = client->complaint().isEmpty() ? client->settle(port) : client->complaint();
        if (!wrong.isEmpty()) {
            return wrong;
        }
    }
    return QString();
}

LoadCounts MixedLoad::counts() const
{
    LoadCounts sum;
    for (const auto& client : m_clients) {
        sum.acknowledged += client->counts().acknowledged;
        sum.refused += client->counts().refused;
        sum.refusedButDone += client->counts().refusedButDone;
        sum.unanswered += client->counts().unanswered;
        sum.unansweredButDone += client->counts().unansweredButDone;
    }
    return sum;
}

} // namespace KvTest
