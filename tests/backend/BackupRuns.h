#pragma once

// What the tests of backups share on either database.

#include "RawHttp.h"
#include "ServiceProcess.h"
#include "Text.h"

#include <atomic>
#include <thread>

namespace KvTest {

inline ServiceRun backUp(const QString& database, const QString& file, const QStringList& more = {})
{
    return ServiceProcess::run(QStringList{"backup"_s, file, "--database"_s, database} + more);
}

inline ServiceRun restore(const QString& file, const QString& database, const QStringList& more = {})
{
    return ServiceProcess::run(QStringList{"restore"_s, file, "--database"_s, database} + more);
}

/// A client that stores one setting after the other, k0, k1 and so on, until it goes.
class SettingWriter
{
public:
    explicit SettingWriter(quint16 port)
        : m_thread([this, port] { write(port); })
    {
    }
    ~SettingWriter() { stop(); }

    void stop()
    {
        m_stop = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }
    int acknowledged() const { return m_acknowledged; }
    /// A status other than 200 and 503; 0: there was none. For when it is stopped.
    int wrongStatus() const { return m_wrongStatus; }

private:
    void write(quint16 port)
    {
        RawHttp http(port);
        for (int i = 0; !m_stop && m_wrongStatus == 0; ++i) {
            const RawReply reply =
                http.request("PUT", "/user-service/settings/k" + QByteArray::number(i), "{\"value\":1}");
            m_acknowledged += reply.status == 200 ? 1 : 0;
            m_wrongStatus = reply.status == 200 || reply.status == 503 ? 0 : qMax(1, reply.status);
        }
    }

    std::atomic<bool> m_stop{false};
    std::atomic<int> m_acknowledged{0};
    std::atomic<int> m_wrongStatus{0};
    std::thread m_thread;
};

} // namespace KvTest
