#pragma once

#include <QElapsedTimer>

struct sqlite3;

namespace PlanService {

/// Gives a connection the function matches(pattern, text). A statement that uses it longer than
/// restart() allows fails with the message tooSlowMessage.
class SqlitePatterns
{
public:
    static constexpr const char* tooSlowMessage = "the search takes too long";

    /// The object has to outlive the connection's statements.
    void addTo(sqlite3* connection);
    /// To be called when a statement begins.
    void restart(int longestMs)
    {
        m_timer.start();
        m_longestMs = longestMs;
    }
    bool isTooSlow() const { return m_timer.hasExpired(m_longestMs); }

private:
    QElapsedTimer m_timer;
    int m_longestMs = 0;
};

} // namespace PlanService
