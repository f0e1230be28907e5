#pragma once

#include "LoadClient.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace KvTest {

/// Several of them at once, each in a thread.
class MixedLoad
{
public:
    MixedLoad(int clients, quint32 seed);
    ~MixedLoad();

    /// Each client begins where it stands, as state 0.
    void start(quint16 port);
    /// Waits until each client has done so many further changes, or given up.
    bool waitForChanges(int changes);
    /// Waits until changes were refused, so many in all since start().
    bool waitForRefusals(int count);
    /// Ends the clients; they finish what they are at.
    void stop();
    /// For when they are stopped: see LoadClient.
    QString settle(quint16 port);
    LoadCounts counts() const;
    std::vector<std::unique_ptr<LoadClient>>& clients() { return m_clients; }

private:
    void tell();
    bool waitFor(const std::function<bool()>& condition);
    int refusals() const;

    std::vector<std::unique_ptr<LoadClient>> m_clients;
    std::vector<std::thread> m_threads;
    std::atomic<bool> m_stop{false};
    std::atomic<int> m_running{0};
    std::mutex m_mutex;
    std::condition_variable m_told; ///< a client had an answer, or has ended
    int m_refusedBefore = 0;
};

} // namespace KvTest
