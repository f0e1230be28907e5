#pragma once

#include "RawHttp.h"

#include <QJsonArray>
#include <QMap>
#include <QRandomGenerator>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <vector>

namespace KvTest {

/// What a client can read of its own, each thing as a text under a name.
using Facts = QMap<QString, QString>;

/// How the changes that a client sent came out.
struct LoadCounts
{
    int acknowledged = 0;
    int refused = 0;        ///< answered with 500 or 503
    int refusedButDone = 0; ///< of them, those that were done all the same
    int unanswered = 0;
    int unansweredButDone = 0;
};

/// A client that creates, copies, changes and deletes plans, nodes, responses, metering states and settings
/// of its own, one change after the other, and knows after each what it may expect to read. Nobody else
/// touches its project. Everything it does follows from number and seed.
class LoadClient
{
public:
    LoadClient(int number, quint32 seed);

    /// Sends changes until @p stop is set or the connection breaks, and calls @p told after each answer, in
    /// the calling thread. To be called after settle().
    void run(quint16 port, const std::atomic<bool>& stop, const std::function<void()>& told);

    /// Reads everything and compares it with what was acknowledged; a change that no answer came for may be
    /// there whole or not at all. @return what is wrong, empty: nothing.
    QString settle(quint16 port);

    /// Whether what can be read at @p port is what the client had after one of its changes from @p first to
    /// @p last, counted as states() counts. @return what is wrong, empty: nothing.
    QString findState(quint16 port, int first, int last) const;

    /// The number of the last state that is certain; a change under way leads to the next one. From any
    /// thread.
    int states() const { return m_certain; }
    /// How many changes were answered with 500 or 503 so far. From any thread.
    int refusals() const { return m_refusals; }

    const LoadCounts& counts() const { return m_counts; }
    /// Keeps the last state alone, as number 0.
    void forgetPast();
    /// A reply that no change may get; empty: there was none. For when run() has ended.
    QString complaint() const { return m_complaint; }

private:
    struct Plan
    {
        QByteArray id;
        QString name;
        QStringList nodes; ///< their unique ids; empty for a copy, whose nodes are left alone
        bool isCopy = false;
    };
    struct Change
    {
        QByteArray method;
        QByteArray target;
        QByteArray body;
        Facts after;
    };
    struct Seen
    {
        Facts facts;
        QMap<QString, Plan> plans;
        QString failure;
    };

    Change next();
    Change newPlan();
    Change addNodes(const Plan& plan);
    Change renameNodes(const Plan& plan);
    Change removeNodes(const Plan& plan);
    Change report(const Plan& plan);
    Change meter(const Plan& plan);
    Change setSetting();
    Change copyPlan(const Plan& plan);
    Change removePlan(const Plan& plan);
    QString pick(const QStringList& from);
    QJsonArray nodesFor(const QString& plan, int count, Facts& facts);
    QByteArray nodeId(const QString& plan, const QString& uniqueId) const;
    void take(const Change& change, const RawReply& reply);
    Seen look(quint16 port) const;
    /// Reads one of the plans, as a whole, in which nothing may be missing of what was acknowledged. Empty:
    /// so it is.
    QString staleRead(RawHttp& http);

    QString m_name;
    QRandomGenerator m_random;
    int m_count = 0; ///< makes every name a new one
    QMap<QString, Plan> m_plans;
    std::vector<Facts> m_states;
    std::atomic<int> m_certain{0};
    std::atomic<int> m_refusals{0};
    bool m_pending = false; ///< the change that leads to m_after was sent, and how it came out is not known
    bool m_refused = false; ///< it was answered with 500 or 503
    Facts m_after;
    LoadCounts m_counts;
    QString m_complaint;
};

} // namespace KvTest
