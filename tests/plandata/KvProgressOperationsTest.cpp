// Responses, quantities, statistics and metering states through the exported interface: results and caches.

#include "FacadeCopies.h"
#include "KvPlanNodeOperationsFixture.h"

#include <model/KvPlanRecordsDump.h>
#include <model/KvProgressRecordsDump.h>

#include <type_traits>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullResponse;
using KvTest::fullState;
using KvTest::Reply;

template<class Signature>
using Operation = Signature KvPlanData::*;
using StateList = QList<KvMeteringState>;
static_assert(std::is_same_v<decltype(&KvPlanData::getPlanNodeResponses),
                             Operation<bool(const QString&, QList<KvPlanNodeResponse>&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::createPlanNodeResponse),
                             Operation<bool(const QString&, KvPlanNodeResponse&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::getPlanNodeQuantities),
                             Operation<bool(QList<KvStatisticsQuantity>&, const QString&, const QString&)>>);
static_assert(
    std::is_same_v<decltype(&KvPlanData::geStatistics), Operation<bool(const QString&, KvPlanStatistics&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::createMeteringState), Operation<bool(KvMeteringState&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::updateMeteringState), Operation<bool(KvMeteringState&)>>);
static_assert(
    std::is_same_v<decltype(&KvPlanData::getMeteringState), Operation<bool(const QStringList&, StateList&)>>);
static_assert(std::is_same_v<decltype(&KvPlanData::getPlanNodeMeteringState),
                             Operation<bool(const QString&, KvMeteringState&)>>);

using StateCall = bool (KvPlanData::*)(KvMeteringState&);
Q_DECLARE_METATYPE(StateCall)

class KvProgressOperationsTest : public KvPlanNodeOperationsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void responses();
    void createdResponse();
    void documentsAreAddedToTheResponse();
    void quantities();
    void statistics();
    void stateIsCachedByItsTask_data();
    void stateIsCachedByItsTask();
    void failedWriteChangesNoCache_data() { stateIsCachedByItsTask_data(); }
    void failedWriteChangesNoCache();
    void stateCodeOfANewState();
    void updateWithoutTask();
    void readStatesAreCached();
    void failedReadKeepsTheCachedStates();
    void statesOfNoPlan();
    void stateNeverRead();
    void cachedStateIsACopy();
    void emptyingTheStateCache_data();
    void emptyingTheStateCache();
    void copyOfTheFacade();
    void listChangedDuringTheRead();
    void stateUpdatedDuringTheRead();

private:
    static QJsonObject stateRecord(const QString& id, const QString& taskId, int state)
    {
        return {{QStringLiteral("_id"), id},
                {QStringLiteral("planId"), QStringLiteral("plan of ") + id},
                {QStringLiteral("taskId"), taskId},
                {QStringLiteral("responseId"), QStringLiteral("response of ") + id},
                {QStringLiteral("state"), state}};
    }
    /// The id of the state that is cached for a task; "-" when there is none.
    static QString cachedState(const QString& taskId, KvPlanData& facade = data())
    {
        KvMeteringState state;
        return facade.getPlanNodeMeteringState(taskId, state) ? state.id : QStringLiteral("-");
    }
    void readStates(const QJsonArray& states)
    {
        m_server.enqueue(Reply::json(states));
        StateList list;
        QVERIFY(data().getMeteringState({p1}, list));
        m_server.forgetRequests();
    }

    const QString s1 = QStringLiteral("s1");
    const QString s2 = QStringLiteral("s2");
};

void KvProgressOperationsTest::responses()
{
    m_server.enqueue(
        Reply::json(QJsonArray{record(QStringLiteral("r1"), one), record(QStringLiteral("r2"), two)}));
    m_server.enqueue(Reply::json(QJsonArray{record(QStringLiteral("r3"), one)}, 403));
    QList<KvPlanNodeResponse> list{fullResponse()};
    QVERIFY(data().getPlanNodeResponses(n1, list));
    QVERIFY(!data().getPlanNodeResponses(n1, list));
    const QByteArray target("GET /task-service/planNodes/n1/responses?order=createdAt&expand=true");
    QCOMPARE(targets(), (QByteArrayList{target, target})); // asks each time
    QCOMPARE(list.size(), 3);
    QCOMPARE(list.at(1).id, QStringLiteral("r1"));
    QCOMPARE(list.at(2).id, QStringLiteral("r2"));
}

void KvProgressOperationsTest::createdResponse()
{
    const KvPlanNode node = readNodeAs(n1, one);
    m_server.enqueue(Reply::json(
        QJsonObject{{QStringLiteral("_id"), QStringLiteral("new")}, {QStringLiteral("percentage"), 100}}));
    m_server.enqueue(Reply::json(record(QStringLiteral("new"), one), 400));
    KvPlanNodeResponse response;
    response.percentage = 100;
    QVERIFY(data().createPlanNodeResponse(n1, response));
    QCOMPARE(targets(), QByteArrayList{"POST /task-service/planNodes/n1/responses"});
    QCOMPARE(
        m_server.lastRequest().body,
        QByteArray(R"({"actualFinishDate":"","actualStartDate":"","documentIds":[],"hostId":null,"media":[],)"
                   R"("percentage":100,"remark":""})"));
    QCOMPARE(response.id, QStringLiteral("new"));
    // The cached node is not moved along.
    QVERIFY(!data().hasChanged({node}));
    QVERIFY(!data().createPlanNodeResponse(n1, response));
    QCOMPARE(difference(dump(response), dump(KvPlanNodeResponse())), QString());
}

// As the reader does it for every response passed in: the id that was sent stands there twice.
void KvProgressOperationsTest::documentsAreAddedToTheResponse()
{
    const QString d1 = QStringLiteral("d1");
    m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("documents"), QJsonArray{record(d1, one)}}}));
    KvPlanNodeResponse response;
    response.documentIds = QStringList{d1};
    QVERIFY(data().createPlanNodeResponse(n1, response));
    QCOMPARE(response.documentIds, (QStringList{d1, d1}));
    QCOMPARE(response.documents.size(), 1);
}

void KvProgressOperationsTest::quantities()
{
    m_server.enqueue(Reply::json(QJsonArray{QJsonObject{{QStringLiteral("total"), 4}}}));
    m_server.enqueue(Reply::json(QJsonArray{QJsonObject{{QStringLiteral("total"), 5}}}, 400));
    QList<KvStatisticsQuantity> list{KvStatisticsQuantity()};
    QVERIFY(data().getPlanNodeQuantities(list, QStringLiteral("a b"), QStringLiteral("week")));
    QVERIFY(!data().getPlanNodeQuantities(list, QString(), QString()));
    const QByteArray path("GET /task-service/projects/project-1/planNodes_quantities_statistics?category=");
    QCOMPARE(targets(),
             (QByteArrayList{path + "a%20b&personal=true&period=week", path + "&personal=true&period="}));
    QCOMPARE(list.size(), 2);
    QCOMPARE(list.last().total, 4);
}

void KvProgressOperationsTest::statistics()
{
    m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("total"), 4}}));
    m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("total"), 5}}, 500));
    KvPlanStatistics result;
    result.items = {{1, one, {}}};
    QVERIFY(data().geStatistics(QString(), result));
    QCOMPARE(result.total, 4);
    QVERIFY(result.items.isEmpty());
    QVERIFY(!data().geStatistics(QStringLiteral("c"), result));
    QCOMPARE(result.total, 0);
    const QByteArray path("GET /task-service/projects/project-1/planNodes_statistics?personal=true"
                          "&dimensions=%5B%22status%22,%22situation%22%5D");
    QCOMPARE(targets(), (QByteArrayList{path, path + "&category=c"}));
}

void KvProgressOperationsTest::stateIsCachedByItsTask_data()
{
    QTest::addColumn<StateCall>("call");
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("create")
        << &KvPlanData::createMeteringState << QByteArray("POST /ka-rond-service/taskstates")
        << QByteArray(R"({"planId":"p0","projectId":"project-1","responseId":"r0","taskId":"t0"})");
    QTest::newRow("update") << &KvPlanData::updateMeteringState
                            << QByteArray("PUT /ka-rond-service/tasks/t0/taskstates")
                            << QByteArray(R"({"state":7,"taskId":"t0"})");
}

void KvProgressOperationsTest::stateIsCachedByItsTask()
{
    QFETCH(StateCall, call);
    QFETCH(QByteArray, target);
    QFETCH(QByteArray, body);
    m_server.enqueue(Reply::json(stateRecord(s1, n1, 3)));
    KvMeteringState state = fullState();
    QVERIFY((data().*call)(state));
    QCOMPARE(targets(), QByteArrayList{target});
    QCOMPARE(m_server.lastRequest().body, body);
    QCOMPARE(state.id, s1);
    // By the task of the answer: neither by the one that was sent, nor by the state's own id.
    KvMeteringState cached;
    QVERIFY(data().getPlanNodeMeteringState(n1, cached));
    QCOMPARE(dump(cached), dump(state)); // all five fields
    for (const QString& key : {s1, fullState().taskId, fullState().id, QString()})
        QCOMPARE(cachedState(key), QStringLiteral("-"));
    // A later one takes its place.
    m_server.enqueue(Reply::json(stateRecord(s2, n1, 4)));
    QVERIFY((data().*call)(state));
    QCOMPARE(cachedState(n1), s2);
}

void KvProgressOperationsTest::failedWriteChangesNoCache()
{
    QFETCH(StateCall, call);
    readStates({stateRecord(s1, n1, 3)});
    m_server.enqueue(Reply::json(stateRecord(s2, n1, 4), 409));
    KvMeteringState state = fullState();
    QVERIFY(!(data().*call)(state));
    QCOMPARE(dump(state), dump(KvMeteringState()));
    QCOMPARE(cachedState(n1), s1);
    QCOMPARE(cachedState(QString()), QStringLiteral("-"));
}

// A state is created without its code; only an update sends one.
void KvProgressOperationsTest::stateCodeOfANewState()
{
    m_server.enqueue(Reply::json(stateRecord(s1, n1, 0)));
    KvMeteringState state;
    state.taskId = n1;
    state.state = 5;
    QVERIFY(data().createMeteringState(state));
    QCOMPARE(m_server.lastRequest().body,
             QByteArray(R"({"planId":null,"projectId":"project-1","responseId":null,"taskId":"n1"})"));
    QCOMPARE(state.state, 0);
}

void KvProgressOperationsTest::updateWithoutTask()
{
    m_server.enqueue(Reply::json(stateRecord(s1, QString(), 5)));
    KvMeteringState state;
    state.state = 5;
    QVERIFY(data().updateMeteringState(state));
    QCOMPARE(targets(), QByteArrayList{"PUT /ka-rond-service/tasks//taskstates"});
    QCOMPARE(m_server.lastRequest().body, QByteArray(R"({"state":5,"taskId":null})"));
    QCOMPARE(cachedState(QString()), s1); // an empty task is a key like any other
}

void KvProgressOperationsTest::readStatesAreCached()
{
    readStates({stateRecord(QStringLiteral("kept"), n3, 1), stateRecord(QStringLiteral("old"), n1, 1)});
    m_server.enqueue(Reply::json(QJsonArray{stateRecord(QStringLiteral("first"), n1, 1),
                                            stateRecord(s2, n2, 2), stateRecord(s1, n1, 3)}));
    StateList states{fullState()};
    QVERIFY(data().getMeteringState({p2, QString(), p1}, states));
    QCOMPARE(targets(), QByteArrayList{"GET /ka-rond-service/projects/project-1/taskstates?where="
                                       "%7B%22planId%22:%7B%22$in%22:%5B%22p2%22,null,%22p1%22%5D%7D%7D"});
    QCOMPARE(states.size(), 3);
    QCOMPARE(cachedState(n1), s1); // the later of two
    QCOMPARE(cachedState(n2), s2);
    QCOMPARE(cachedState(n3), QStringLiteral("kept"));
    QCOMPARE(cachedState(fullState().taskId), QStringLiteral("-"));
    KvMeteringState state;
    QVERIFY(data().getPlanNodeMeteringState(n1, state));
    QCOMPARE(dump(state), dump(states.at(2)));
    QCOMPARE(m_server.requestCount(), 1); // none for a state of the cache
}

void KvProgressOperationsTest::failedReadKeepsTheCachedStates()
{
    readStates({stateRecord(s1, n1, 3)});
    m_server.enqueue(Reply::json(QJsonArray{stateRecord(s2, n1, 4)}, 500));
    StateList states{fullState(), fullState()};
    QVERIFY(!data().getMeteringState({p1}, states));
    QVERIFY(states.isEmpty());
    QCOMPARE(cachedState(n1), s1);
}

void KvProgressOperationsTest::statesOfNoPlan()
{
    m_server.enqueue(Reply::json(QJsonArray()));
    StateList states{fullState()};
    QVERIFY(data().getMeteringState({}, states));
    QCOMPARE(m_server.lastRequest().queryValue("where"), QStringLiteral(R"({"planId":{"$in":[]}})"));
    QVERIFY(states.isEmpty());
}

void KvProgressOperationsTest::stateNeverRead()
{
    readStates({stateRecord(s1, n1, 3)});
    KvMeteringState state = fullState();
    for (const QString& task : {n2, s1, n1.toUpper(), QString()}) {
        QVERIFY(!data().getPlanNodeMeteringState(task, state));
        QCOMPARE(dump(state), dump(fullState())); // untouched
    }
    QCOMPARE(m_server.requestCount(), 0);
}

void KvProgressOperationsTest::cachedStateIsACopy()
{
    readStates({stateRecord(s1, n1, 3)});
    KvMeteringState state;
    QVERIFY(data().getPlanNodeMeteringState(n1, state));
    state.id = s2;
    QCOMPARE(cachedState(n1), s1);
}

void KvProgressOperationsTest::emptyingTheStateCache_data()
{
    QTest::addColumn<bool>("byTheList");
    QTest::newRow("clear") << false;
    QTest::newRow("the list of all plans") << true;
}

void KvProgressOperationsTest::emptyingTheStateCache()
{
    QFETCH(bool, byTheList);
    readStates({stateRecord(s1, n1, 3)});
    // A page of plans or nodes leaves it alone.
    m_server.enqueue(Reply::json(QJsonArray()));
    m_server.enqueue(Reply::json(QJsonArray()));
    QList<KvPlan> plans;
    QList<KvPlanNode> nodes;
    QVERIFY(data().getPlanRangeData(anyPlan(), 0, 1, plans));
    QVERIFY(data().getPlanNodeRangeData(nodesOf(p1), 0, 1, nodes));
    QCOMPARE(cachedState(n1), s1);
    if (byTheList) {
        m_server.enqueue(Reply::json(QJsonArray()));
        QVERIFY(data().getAllPlan(plans, false));
    } else {
        data().clear();
    }
    QCOMPARE(cachedState(n1), QStringLiteral("-"));
}

void KvProgressOperationsTest::copyOfTheFacade()
{
    readStates({stateRecord(s1, n1, 3)});
    KvPlanData& second = *copyOf(data());
    readStates({stateRecord(s2, n1, 4)});
    QCOMPARE(cachedState(n1, second), s1);
    second.clear();
    QCOMPARE(cachedState(n1, second), QStringLiteral("-"));
    QCOMPARE(cachedState(n1), s2);
}

void KvProgressOperationsTest::listChangedDuringTheRead()
{
    QStringList planIds{p1};
    StateList states{fullState()};
    m_server.enqueue(held(Reply::json(QJsonArray{stateRecord(s1, n1, 3)})));
    m_server.enqueue(Reply::empty());
    duringTheWait([&] {
        planIds.clear();
        states = {fullState(), fullState()};
        QVERIFY(data().deletePlanNodeById(n3));
    });
    QVERIFY(data().getMeteringState(planIds, states));
    QCOMPARE(states.size(), 1);
    QCOMPARE(cachedState(n1), s1);
    QCOMPARE(cachedState(fullState().taskId), QStringLiteral("-"));
}

void KvProgressOperationsTest::stateUpdatedDuringTheRead()
{
    m_server.enqueue(held(Reply::json(QJsonArray{stateRecord(s1, n1, 3)})));
    m_server.enqueue(Reply::json(stateRecord(s2, n2, 4)));
    KvMeteringState inner = fullState();
    duringTheWait([&] { QVERIFY(data().updateMeteringState(inner)); });
    StateList states;
    QVERIFY(data().getMeteringState({p1}, states));
    QCOMPARE(cachedState(n1), s1);
    QCOMPARE(cachedState(n2), s2);
}

QTEST_GUILESS_MAIN(KvProgressOperationsTest)
#include "KvProgressOperationsTest.moc"
