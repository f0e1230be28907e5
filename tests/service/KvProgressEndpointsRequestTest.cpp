// What the endpoint functions for responses, statistics, rights and metering states put on the wire.

#include "EndpointRequestsFixture.h"

#include <service/KvProgressEndpoints.h>

#include <model/KvProgressRecordsDump.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

using KvTest::fullResponse;
using KvTest::fullState;
using KvTest::Reply;

namespace {

const QString n1 = QStringLiteral("n1");

bool responses(const QString& nodeId)
{
    QList<KvPlanNodeResponse> list;
    return Kv::requestPlanNodeResponses(nodeId, list);
}

bool respond(KvPlanNodeResponse response)
{
    return Kv::requestCreatePlanNodeResponse(n1, response);
}

bool statistics(const QString& category)
{
    KvPlanStatistics result;
    return Kv::requestPlanNodeStatistics(category, result);
}

bool quantities(const QString& category, const QString& period)
{
    QList<KvStatisticsQuantity> list;
    return Kv::requestPlanNodeQuantities(list, category, period);
}

bool right(const QString& category, const QString& key)
{
    QString value;
    return Kv::requestAuthValue(category, key, value);
}

bool states(const QStringList& planIds)
{
    QList<KvMeteringState> list;
    return Kv::requestMeteringStates(planIds, list);
}

bool createState(KvMeteringState state)
{
    return Kv::requestCreateMeteringState(state);
}

bool updateState(KvMeteringState state)
{
    return Kv::requestUpdateMeteringState(state);
}

KvMeteringState stateOf(const QString& taskId, int state)
{
    KvMeteringState record = fullState();
    record.taskId = taskId;
    record.state = state;
    return record;
}

} // namespace

class KvProgressEndpointsRequestTest : public EndpointRequestsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void request_data();
    void projectIsReadAnew();
    void specialTextsArriveUnchanged_data();
    void specialTextsArriveUnchanged();
};

void KvProgressEndpointsRequestTest::request_data()
{
    requestColumns();
    const QByteArray task = "/task-service/";
    const QByteArray project = task + "projects/project-1/";
    row("responses", "GET", task + "planNodes/n1/responses?order=createdAt&expand=true",
        [] { return responses(n1); });
    row("responses of no node", "GET", task + "planNodes//responses?order=createdAt&expand=true",
        [] { return responses(QString()); });
    row(
        "respond", "POST", task + "planNodes/n1/responses", [] { return respond(fullResponse()); },
        R"({"actualFinishDate":"2026-03-02T17:30:15.250","actualStartDate":"2026-03-01T08:00:00.000",)"
        R"("documentIds":["d0"],"hostId":"n0","media":[{"fileId":"f0","thumbnail":"t0","time":7}],)"
        R"("percentage":77,"remark":"before"})");
    row(
        "respond with nothing", "POST", task + "planNodes/n1/responses",
        [] { return respond(KvPlanNodeResponse()); },
        R"({"actualFinishDate":"","actualStartDate":"","documentIds":[],"hostId":null,"media":[],)"
        R"("percentage":0,"remark":""})");

    const QByteArray personal =
        project + "planNodes_statistics?personal=true&dimensions=%5B%22status%22,%22situation%22%5D";
    row("statistics", "GET", personal, [] { return statistics(QString()); });
    row("statistics, empty category", "GET", personal, [] { return statistics(QStringLiteral("")); });
    row("statistics of a category", "GET", personal + "&category=a%20b",
        [] { return statistics(QStringLiteral("a b")); });

    const QByteArray perPeriod = project + "planNodes_quantities_statistics?category=";
    row("quantities", "GET", perPeriod + "c&personal=true&period=week",
        [] { return quantities(QStringLiteral("c"), QStringLiteral("week")); });
    row("quantities, any category", "GET", perPeriod + "&personal=true&period=day",
        [] { return quantities(QString(), QStringLiteral("day")); });
    row("quantities, a period of the caller's", "GET", perPeriod + "&personal=true&period=per%20moon",
        [] { return quantities(QString(), QStringLiteral("per moon")); });
    row("quantities, no period", "GET",
        perPeriod + "c&personal=true&period=", [] { return quantities(QStringLiteral("c"), QString()); });

    row("right", "GET", project + "auth?key=create&moduleKey=plan&category=c",
        [] { return right(QStringLiteral("c"), QStringLiteral("create")); });
    row("right, no category", "GET", project + "auth?key=read&moduleKey=plan&category=", [] {
        return right(QString(), QStringLiteral("read"));
    });

    const QByteArray state = "/ka-rond-service/";
    const QByteArray ofPlans = state + "projects/project-1/taskstates?where=%7B%22planId%22:%7B%22$in%22:%5B";
    row("states", "GET", ofPlans + "%22p2%22,null,%22p1%22%5D%7D%7D", [] {
        return states({QStringLiteral("p2"), QString(), QStringLiteral("p1")});
    });
    row("states of no plan", "GET", ofPlans + "%5D%7D%7D", [] { return states({}); });
    row(
        "create state", "POST", state + "taskstates", [] { return createState(fullState()); },
        R"({"planId":"p0","projectId":"project-1","responseId":"r0","taskId":"t0"})");
    row(
        "create state of nothing", "POST", state + "taskstates",
        [] { return createState(KvMeteringState()); },
        R"({"planId":null,"projectId":"project-1","responseId":null,"taskId":null})");
    row(
        "update state", "PUT", state + "tasks/t0/taskstates", [] { return updateState(fullState()); },
        R"({"state":7,"taskId":"t0"})");
    row(
        "update state to zero", "PUT", state + "tasks/t%201/taskstates",
        [] { return updateState(stateOf(QStringLiteral("t 1"), 0)); }, R"({"state":0,"taskId":"t 1"})");
    row(
        "update state of no task", "PUT", state + "tasks//taskstates",
        [] { return updateState(stateOf(QString(), -1)); }, R"({"state":-1,"taskId":null})");
}

void KvProgressEndpointsRequestTest::projectIsReadAnew()
{
    for (const auto& project : projects()) {
        GetSoftCache()->setCurrentProjectId(project.first);
        for (int i = 0; i < 5; ++i)
            m_server.enqueue(Reply::json(QJsonObject()));
        QVERIFY(statistics(QString()));
        QCOMPARE(m_server.lastRequest().path(),
                 "/task-service/projects/" + project.second + "/planNodes_statistics");
        QVERIFY(quantities(QString(), QString()));
        QCOMPARE(m_server.lastRequest().path(),
                 "/task-service/projects/" + project.second + "/planNodes_quantities_statistics");
        QVERIFY(right(QString(), QString()));
        QCOMPARE(m_server.lastRequest().path(), "/task-service/projects/" + project.second + "/auth");
        QVERIFY(states({}));
        QCOMPARE(m_server.lastRequest().path(),
                 "/ka-rond-service/projects/" + project.second + "/taskstates");
        QVERIFY(createState(KvMeteringState()));
        const QJsonValue sent = m_server.lastRequest().object().value(QLatin1String("projectId"));
        QCOMPARE(sent, project.first.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(project.first));
    }
}

void KvProgressEndpointsRequestTest::specialTextsArriveUnchanged_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("blanks") << " a  b ";
    QTest::newRow("quotes") << R"("a" 'b')";
    QTest::newRow("hash, plus") << "#1+2";
    QTest::newRow("percent") << "100%";
    QTest::newRow("half of three") << "50%3";
    QTest::newRow("Chinese and emoji") << QStringLiteral("第2层🏗");
}

void KvProgressEndpointsRequestTest::specialTextsArriveUnchanged()
{
    QFETCH(QString, text);
    for (int i = 0; i < 7; ++i)
        m_server.enqueue(Reply::json(QJsonObject()));
    QVERIFY(statistics(text));
    QCOMPARE(m_server.lastRequest().queryValue("category"), text);
    QCOMPARE(m_server.lastRequest().queryValue("dimensions"), QStringLiteral(R"(["status","situation"])"));
    QVERIFY(quantities(text, QStringLiteral("week")));
    QCOMPARE(m_server.lastRequest().queryValue("category"), text);
    QCOMPARE(m_server.lastRequest().queryValue("period"), QStringLiteral("week"));
    QVERIFY(right(text, QStringLiteral("create")));
    QCOMPARE(m_server.lastRequest().queryValue("category"), text);
    QCOMPARE(m_server.lastRequest().queryValue("key"), QStringLiteral("create"));
    QCOMPARE(m_server.lastRequest().queryValue("moduleKey"), QStringLiteral("plan"));
    QVERIFY(responses(text));
    QCOMPARE(m_server.lastRequest().decodedPath(),
             QStringLiteral("/task-service/planNodes/%1/responses").arg(text));
    QVERIFY(states({text}));
    const QJsonObject where =
        QJsonDocument::fromJson(m_server.lastRequest().queryValue("where").toUtf8()).object();
    QCOMPARE(where.value(QLatin1String("planId")).toObject().value(QLatin1String("$in")).toArray(),
             QJsonArray{text});
    QVERIFY(createState(stateOf(text, 1)));
    QCOMPARE(m_server.lastRequest().object().value(QLatin1String("taskId")), QJsonValue(text));
    QVERIFY(updateState(stateOf(text, 1)));
    QCOMPARE(m_server.lastRequest().decodedPath(),
             QStringLiteral("/ka-rond-service/tasks/%1/taskstates").arg(text));
    QCOMPARE(m_server.lastRequest().object().value(QLatin1String("taskId")), QJsonValue(text));
}

QTEST_GUILESS_MAIN(KvProgressEndpointsRequestTest)
#include "KvProgressEndpointsRequestTest.moc"
