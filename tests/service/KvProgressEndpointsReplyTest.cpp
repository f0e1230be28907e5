// What the endpoint functions for responses, statistics, rights and metering states make of a reply, and what
// a failure leaves in the caller's records.

#include "EndpointFailuresFixture.h"

#include <service/KvProgressEndpoints.h>

#include <model/KvPlanRecordsDump.h>
#include <model/KvProgressRecordsDump.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullResponse;
using KvTest::fullState;
using KvTest::Reply;

using StateCall = std::function<bool(KvMeteringState&)>;
Q_DECLARE_METATYPE(StateCall)

namespace {

const QString n1 = QStringLiteral("n1");

KvPlanStatistics someStatistics()
{
    KvPlanStatistics statistics;
    statistics.total = 7;
    statistics.items = {{4, QStringLiteral("unstart"), {{1, QStringLiteral("delay")}}}};
    return statistics;
}

// The record that is left of a full one after an empty object: documents are only added to.
KvPlanNodeResponse emptiedResponse()
{
    KvPlanNodeResponse response;
    response.documentIds = fullResponse().documentIds;
    response.documents = fullResponse().documents;
    return response;
}

const StateCall createState = [](KvMeteringState& state) {
    return Kv::requestCreateMeteringState(state);
};
const StateCall updateState = [](KvMeteringState& state) {
    return Kv::requestUpdateMeteringState(state);
};

} // namespace

class KvProgressEndpointsReplyTest : public EndpointFailuresFixture
{
    Q_OBJECT

private Q_SLOTS:
    void responsesAreAppended();
    void createdResponseIsRead();
    void documentsOfTheReplyAreAdded();
    void statisticsAreReplaced();
    void quantitiesAreAppended();
    void rightValue_data();
    void rightValue();
    void statesAreReplaced();
    void stateIsRead_data();
    void stateIsRead();
    void listsTakeObjectsOnly();

private:
    QJsonObject toldObject() const override;
    void verifyFailures(const std::function<void()>& prepare) override;
};

void KvProgressEndpointsReplyTest::responsesAreAppended()
{
    const QJsonObject document{{QStringLiteral("_id"), QStringLiteral("d1")}};
    m_server->enqueue(Reply::json(QJsonArray{
        QJsonObject{{QStringLiteral("_id"), QStringLiteral("b")},
                    {QStringLiteral("documents"), QJsonArray{document}}},
        QJsonObject{{QStringLiteral("_id"), QStringLiteral("a")}, {QStringLiteral("percentage"), 5}}}));
    m_server->enqueue(Reply::json(QJsonArray()));
    QList<KvPlanNodeResponse> list{fullResponse()};
    QVERIFY(Kv::requestPlanNodeResponses(n1, list));
    QVERIFY(Kv::requestPlanNodeResponses(n1, list));
    QCOMPARE(list.size(), 3);
    QCOMPARE(difference(dump(list.at(0)), dump(fullResponse())), QString());
    KvPlanNodeResponse wanted; // fresh ones, in the reply's order
    wanted.id = QStringLiteral("b");
    wanted.documentIds = QStringList{QStringLiteral("d1")};
    wanted.documents.append(KvDocument());
    wanted.documents.first().id = QStringLiteral("d1");
    QCOMPARE(difference(dump(list.at(1)), dump(wanted)), QString());
    wanted = KvPlanNodeResponse();
    wanted.id = QStringLiteral("a");
    wanted.percentage = 5;
    QCOMPARE(difference(dump(list.at(2)), dump(wanted)), QString());
}

void KvProgressEndpointsReplyTest::createdResponseIsRead()
{
    m_server->enqueue(
        Reply::json(QJsonObject{{QStringLiteral("_id"), QStringLiteral("new")},
                                {QStringLiteral("percentage"), 50},
                                {QStringLiteral("createdAt"), QStringLiteral("2026-05-04T08:00:00")}}));
    KvPlanNodeResponse response = fullResponse();
    QVERIFY(Kv::requestCreatePlanNodeResponse(n1, response));
    KvPlanNodeResponse wanted = emptiedResponse();
    wanted.id = QStringLiteral("new");
    wanted.percentage = 50;
    wanted.createdAt = QDateTime(QDate(2026, 5, 4), QTime(8, 0));
    QCOMPARE(difference(dump(response), dump(wanted)), QString());
    // JSON of another shape is a success that tells nothing.
    m_server->enqueue(Reply::json(QJsonArray{toldObject()}));
    response = fullResponse();
    QVERIFY(Kv::requestCreatePlanNodeResponse(n1, response));
    QCOMPARE(difference(dump(response), dump(emptiedResponse())), QString());
}

// To those that the response passed in holds, as its reader does it, ids included: sent with an id and
// answered with its document, a response holds the id twice.
void KvProgressEndpointsReplyTest::documentsOfTheReplyAreAdded()
{
    const QJsonObject document{{QStringLiteral("_id"), QStringLiteral("d1")},
                               {QStringLiteral("name"), QStringLiteral("a.pdf")}};
    m_server->enqueue(Reply::json(QJsonObject{{QStringLiteral("documents"), QJsonArray{document}}}));
    KvPlanNodeResponse response;
    response.documentIds = QStringList{QStringLiteral("d1")};
    QVERIFY(Kv::requestCreatePlanNodeResponse(n1, response));
    QCOMPARE(response.documentIds, (QStringList{QStringLiteral("d1"), QStringLiteral("d1")}));
    QCOMPARE(response.documents.size(), 1);
    QCOMPARE(response.documents.first().name, QStringLiteral("a.pdf"));
}

void KvProgressEndpointsReplyTest::statisticsAreReplaced()
{
    m_server->enqueue(Reply::json(toldObject()));
    KvPlanStatistics statistics = someStatistics();
    QVERIFY(Kv::requestPlanNodeStatistics(QString(), statistics));
    QCOMPARE(statistics.total, 9);
    QCOMPARE(statistics.items.size(), 1);
    QCOMPARE(statistics.items.first().total, 3);
    QVERIFY(statistics.items.first().items.isEmpty());
    for (const Reply& reply : {Reply::json(QJsonObject()), Reply::json(QJsonArray{toldObject()})}) {
        m_server->enqueue(reply);
        statistics = someStatistics();
        QVERIFY(Kv::requestPlanNodeStatistics(QString(), statistics));
        QCOMPARE(dump(statistics), dump(KvPlanStatistics()));
    }
}

void KvProgressEndpointsReplyTest::quantitiesAreAppended()
{
    const QJsonObject may{{QStringLiteral("type"), QStringLiteral("month")},
                          {QStringLiteral("year"), 2026},
                          {QStringLiteral("month"), 5},
                          {QStringLiteral("total"), 4}};
    m_server->enqueue(Reply::json(QJsonArray{may, QJsonObject()}));
    m_server->enqueue(Reply::json(QJsonArray{may}));
    QList<KvStatisticsQuantity> list{{QStringLiteral("mine"), 1, 2, 3, 4, 5}};
    QVERIFY(Kv::requestPlanNodeQuantities(list, QString(), QStringLiteral("month")));
    QVERIFY(Kv::requestPlanNodeQuantities(list, QString(), QStringLiteral("month")));
    QCOMPARE(list.size(), 4);
    QCOMPARE(list.at(0).type, QStringLiteral("mine"));
    QCOMPARE(dump(list.at(1)), dump(KvStatisticsQuantity{QStringLiteral("month"), 2026, 5, 0, 0, 4}));
    QCOMPARE(dump(list.at(2)), dump(KvStatisticsQuantity()));
    QCOMPARE(list.at(3).month, 5);
}

void KvProgressEndpointsReplyTest::rightValue_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("expected");
    QTest::newRow("true") << QByteArray(R"({"value": "true"})") << "true";
    QTest::newRow("all") << QByteArray(R"({"value": "all"})") << "all";
    QTest::newRow("as it stands") << QByteArray(R"({"value": " True "})") << " True ";
    QTest::newRow("missing") << QByteArray(R"({"key": "true"})") << "";
    QTest::newRow("null") << QByteArray(R"({"value": null})") << "";
    QTest::newRow("flag, not text") << QByteArray(R"({"value": true})") << "";
    QTest::newRow("number") << QByteArray(R"({"value": 1})") << "";
    QTest::newRow("list") << QByteArray(R"([{"value": "true"}])") << "";
}

void KvProgressEndpointsReplyTest::rightValue()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, expected);
    m_server->enqueue(Reply::text(body, "application/json"));
    QString value = QStringLiteral("before");
    QVERIFY(Kv::requestAuthValue(QString(), QStringLiteral("create"), value));
    QCOMPARE(value, expected);
}

void KvProgressEndpointsReplyTest::statesAreReplaced()
{
    m_server->enqueue(
        Reply::json(QJsonArray{QJsonObject{{QStringLiteral("_id"), QStringLiteral("z")}}, toldObject()}));
    QList<KvMeteringState> list{fullState(), fullState(), fullState()};
    QVERIFY(Kv::requestMeteringStates({n1}, list));
    QCOMPARE(list.size(), 2);
    QCOMPARE(dump(list.at(0)), dump(KvMeteringState{QStringLiteral("z"), {}, {}, {}, 0}));
    QCOMPARE(list.at(1).taskId, QStringLiteral("told"));
    for (const Reply& reply : {Reply::json(QJsonArray()), Reply::json(toldObject()), Reply::empty()}) {
        m_server->enqueue(reply);
        list = {fullState()};
        QVERIFY(Kv::requestMeteringStates({n1}, list));
        QVERIFY(list.isEmpty());
    }
}

void KvProgressEndpointsReplyTest::stateIsRead_data()
{
    QTest::addColumn<StateCall>("call");
    QTest::newRow("create") << createState;
    QTest::newRow("update") << updateState;
}

void KvProgressEndpointsReplyTest::stateIsRead()
{
    QFETCH(StateCall, call);
    KvMeteringState state = fullState();
    m_server->enqueue(Reply::json(QJsonObject{{QStringLiteral("_id"), QStringLiteral("new")},
                                              {QStringLiteral("taskId"), QStringLiteral("t9")},
                                              {QStringLiteral("state"), 3}}));
    QVERIFY(call(state));
    QCOMPARE(dump(state), dump(KvMeteringState{QStringLiteral("new"), {}, QStringLiteral("t9"), {}, 3}));
    m_server->enqueue(Reply::json(QJsonArray{toldObject()}));
    state = fullState();
    QVERIFY(call(state));
    QCOMPARE(dump(state), dump(KvMeteringState()));
}

void KvProgressEndpointsReplyTest::listsTakeObjectsOnly()
{
    const QJsonArray mixed{QJsonValue(), 1, QStringLiteral("text"), QJsonArray{toldObject()}, toldObject()};
    for (int i = 0; i < 3; ++i)
        m_server->enqueue(Reply::json(mixed));
    QList<KvPlanNodeResponse> responses;
    QVERIFY(Kv::requestPlanNodeResponses(n1, responses));
    QCOMPARE(responses.size(), 1);
    QList<KvStatisticsQuantity> quantities;
    QVERIFY(Kv::requestPlanNodeQuantities(quantities, QString(), QString()));
    QCOMPARE(quantities.size(), 1);
    QList<KvMeteringState> states;
    QVERIFY(Kv::requestMeteringStates({}, states));
    QCOMPARE(states.size(), 1);
}

QJsonObject KvProgressEndpointsReplyTest::toldObject() const
{
    const QJsonObject item{{QStringLiteral("_id"), n1}, {QStringLiteral("total"), 3}};
    return {{QStringLiteral("_id"), QStringLiteral("told")},
            {QStringLiteral("taskId"), QStringLiteral("told")},
            {QStringLiteral("value"), QStringLiteral("true")},
            {QStringLiteral("total"), 9},
            {QStringLiteral("items"), QJsonArray{item}}};
}

// Every endpoint, each after `prepare` has made the next request fail.
void KvProgressEndpointsReplyTest::verifyFailures(const std::function<void()>& prepare)
{
    prepare();
    QList<KvPlanNodeResponse> responses{fullResponse()};
    QVERIFY(!Kv::requestPlanNodeResponses(n1, responses));
    QCOMPARE(responses.size(), 1);
    QCOMPARE(difference(dump(responses.first()), dump(fullResponse())), QString());
    prepare();
    KvPlanNodeResponse response = fullResponse();
    QVERIFY(!Kv::requestCreatePlanNodeResponse(n1, response));
    QCOMPARE(difference(dump(response), dump(emptiedResponse())), QString());
    prepare();
    KvPlanStatistics statistics = someStatistics();
    QVERIFY(!Kv::requestPlanNodeStatistics(QString(), statistics));
    QCOMPARE(dump(statistics), dump(KvPlanStatistics()));
    prepare();
    QList<KvStatisticsQuantity> quantities{KvStatisticsQuantity()};
    QVERIFY(!Kv::requestPlanNodeQuantities(quantities, QString(), QString()));
    QCOMPARE(quantities.size(), 1);
    prepare();
    QString value = QStringLiteral("before");
    QVERIFY(!Kv::requestAuthValue(QString(), QString(), value));
    QCOMPARE(value, QString());
    prepare();
    QList<KvMeteringState> states{fullState()};
    QVERIFY(!Kv::requestMeteringStates({}, states));
    QVERIFY(states.isEmpty());
    for (const StateCall& call : {createState, updateState}) {
        prepare();
        KvMeteringState state = fullState();
        QVERIFY(!call(state));
        QCOMPARE(dump(state), dump(KvMeteringState()));
    }
}

QTEST_GUILESS_MAIN(KvProgressEndpointsReplyTest)
#include "KvProgressEndpointsReplyTest.moc"
