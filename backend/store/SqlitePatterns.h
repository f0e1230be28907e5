#pragma once

#include <QElapsedTimer>

struct sqlite3;

namespace PlanService {

constexpr int longestSearchMs = 5000; ///< of one statement that looks for patterns

/// Gives a connection the function matches(pattern, text). A statement that uses it longer than
/// longestSearchMs fails with the message tooSlowMessage.
class SqlitePatterns
{
public:
    static constexpr const char* tooSlowMessage = "the search takes too long";

    /// The object has to outlive the connection's statements.
    void addTo(sqlite3* connection);
    /// To be called when a statement begins.
    void restart() { m_timer.start(); }
    bool isTooSlow() const { return m_timer.hasExpired(longestSearchMs); }

private:
    QElapsedTimer m_timer;
};

} // namespace PlanService
