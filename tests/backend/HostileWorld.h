#pragma once

// A service that knows something, and people who may not.

#include "PlanRequests.h"
#include "RouteProbes.h"
#include "ServiceProcess.h"
#include "Text.h"

#include <QtTest>

namespace KvTest {

/// A service with one plan, whose texts all hold "Secret", and two tokens. For requests up to 100,000 bytes.
class HostileWorld
{
public:
    /// Starts the service. To be called once; a test has failed when it returns with less than ready().
    void start()
    {
        QVERIFY2(m_service.start({"--create"_s, "--max-body"_s, "100000"_s}),
                 qPrintable(m_service.failure()));
        const QJsonObject node{{"_id"_s, "victim"_s}, {"name"_s, "Secret dig"_s}};
        RawHttp http(port());
        const RawReply plan = http.request("POST", "/task-service/plans",
                                           jsonOf({{"projectId"_s, "p1"_s},
                                                   {"category"_s, "c1"_s},
                                                   {"name"_s, "Secret tower"_s},
                                                   {"projectData"_s, QJsonArray{node}}}));
        QCOMPARE(plan.status, 200);
        m_routes.plan = m_routes.victimPlan = idOf(objectOf(plan));
        QCOMPARE(http.request("PUT", "/ka-rond-service/tasks/victim/taskstates", "{\"state\":1}").status,
                 200);
        const QString rights = "read=all,create,edit,delete,export"_s;
        m_good = m_service.createToken("ann"_s, "p1"_s, rights);
        m_stranger = m_service.createToken("bo"_s, "p2"_s, rights);
        m_reader = m_service.createToken("cy"_s, "p1"_s, "read=all"_s);
        QVERIFY(!m_stranger.isEmpty() && !m_reader.isEmpty());
        QCOMPARE(
            http.request("PUT", "/user-service/settings/k", "{\"value\":\"Secret\"}", bearer(m_good)).status,
            200);
        m_before = state();
        QVERIFY(m_before.count("Secret") >= 5);
    }
    /// Whatever was sent, nothing has changed, the service still answers, and nobody's token stands in the
    /// log.
    void check()
    {
        QCOMPARE(state(), m_before);
        for (const QByteArray& token : {m_good, m_stranger, m_reader}) {
            QVERIFY(!m_service.log().contains(token));
        }
    }
    void stop() { QVERIFY2(m_service.stop(), qPrintable(m_service.failure())); }

    quint16 port() const { return m_service.port(); }
    /// Where the probes of routes lead.
    const RouteWorld& routes() const { return m_routes; }
    const QByteArray& good() const { return m_good; }         ///< may everything in the project
    const QByteArray& stranger() const { return m_stranger; } ///< may everything in another one
    const QByteArray& reader() const { return m_reader; }     ///< may read in the project

private:
    /// Plan, nodes and a setting as they are now.
    QByteArray state()
    {
        RawHttp http(port());
        QByteArray all;
        for (const QByteArray& target :
             {"/task-service/plans/" + m_routes.plan, QByteArray("/task-service/projects/p1/planNodes"),
              QByteArray("/ka-rond-service/projects/p1/taskstates"),
              QByteArray("/task-service/projects/p1/plans"), QByteArray("/user-service/settings/k")}) {
            const RawReply reply = http.get(target, bearer(m_good));
            all += QByteArray::number(reply.status) + reply.body + '\n';
        }
        return all;
    }

    ServiceProcess m_service;
    QByteArray m_good;
    QByteArray m_stranger;
    QByteArray m_reader;
    RouteWorld m_routes{"p1", "", "victim", "", "victim"};
    QByteArray m_before;
};

inline QString about(const QByteArray& what, const RawReply& reply)
{
    return QString::fromUtf8(what.left(300) + ": " + QByteArray::number(reply.status) + ' ' +
                             reply.body.left(300));
}

} // namespace KvTest
