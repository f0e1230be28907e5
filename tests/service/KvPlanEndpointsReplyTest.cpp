// What the endpoint functions for plans make of a reply, and what a failure leaves in the caller's records.

#include "EndpointFailuresFixture.h"

#include <service/KvPlanEndpoints.h>

#include <model/KvPlanRecordsDump.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlan;
using KvTest::Reply;

using PlanCall = std::function<bool(KvPlan&)>;
using ListCall = std::function<bool(QList<KvPlan>&)>;
Q_DECLARE_METATYPE(PlanCall)
Q_DECLARE_METATYPE(ListCall)

namespace {

const QString p1 = QStringLiteral("p1");
const QString told = QStringLiteral("told");

QJsonObject planObject(const QString& id, const QString& name)
{
    return {{QStringLiteral("_id"), id}, {QStringLiteral("name"), name}};
}

QStringList namesOf(const QList<KvPlan>& plans)
{
    QStringList names;
    for (const KvPlan& plan : plans)
        names.append(plan.name);
    return names;
}

// What the reader of a plan makes of an empty object.
KvPlan emptied(const KvPlan& before)
{
    KvPlan plan;
    plan.isPublic = 0;
    plan.mppFilePath = before.mppFilePath;
    return plan;
}

const PlanCall readOne = [](KvPlan& plan) {
    return Kv::requestPlanById(p1, plan);
};
const PlanCall create = [](KvPlan& plan) {
    return Kv::requestCreatePlan(plan);
};
const PlanCall copy = [](KvPlan& plan) {
    return Kv::requestCopyPlan(p1, plan);
};
const PlanCall update = [](KvPlan& plan) {
    KvPlan cached;
    cached.id = p1;
    return Kv::requestUpdatePlan(cached, plan);
};
const ListCall readAll = [](QList<KvPlan>& plans) {
    return Kv::requestAllPlans(plans);
};
const ListCall readPage = [](QList<KvPlan>& plans) {
    return Kv::requestPlanRangeData(KvPlanCondition(), 0, 20, plans);
};

} // namespace

class KvPlanEndpointsReplyTest : public EndpointFailuresFixture
{
    Q_OBJECT

private Q_SLOTS:
    void planIsRead_data() { planCalls(); }
    void planIsRead();
    void listIsAppended_data() { listCalls(); }
    void listIsAppended();
    void listTakesObjectsOnly_data() { listCalls(); }
    void listTakesObjectsOnly();
    void count_data();
    void count();
    void deletion_data();
    void deletion();

private:
    static void planCalls();
    static void listCalls();
    QJsonObject toldObject() const override;
    void verifyFailures(const std::function<void()>& prepare) override;
};

void KvPlanEndpointsReplyTest::planCalls()
{
    QTest::addColumn<PlanCall>("call");
    QTest::newRow("read") << readOne;
    QTest::newRow("create") << create;
    QTest::newRow("copy") << copy;
    QTest::newRow("update") << update;
}

void KvPlanEndpointsReplyTest::listCalls()
{
    QTest::addColumn<ListCall>("call");
    QTest::newRow("all") << readAll;
    QTest::newRow("page") << readPage;
}

void KvPlanEndpointsReplyTest::planIsRead()
{
    QFETCH(PlanCall, call);
    QJsonObject object = planObject(QStringLiteral("new"), QStringLiteral("主楼"));
    object.insert(QStringLiteral("projectId"), QStringLiteral("project-9"));
    object.insert(QStringLiteral("createdBy"), QStringLiteral("li"));
    object.insert(QStringLiteral("public"), 3);
    object.insert(QStringLiteral("tasks"), QJsonArray{planObject(QStringLiteral("n1"), told)});
    m_server->enqueue(Reply::json(object));
    KvPlan plan = fullPlan();
    KvPlan wanted = emptied(plan);
    QVERIFY(call(plan));
    wanted.id = QStringLiteral("new");
    wanted.name = QStringLiteral("主楼");
    wanted.projectId = QStringLiteral("project-9");
    wanted.createdBy = QStringLiteral("li");
    wanted.isPublic = 3;
    QCOMPARE(plan.planNodes.size(), 1); // those of the reply, and no longer those that were sent
    QCOMPARE(plan.planNodes.first().id, QStringLiteral("n1"));
    QCOMPARE(plan.planNodes.first().name, told);
    plan.planNodes.clear();
    QCOMPARE(difference(dump(plan), dump(wanted)), QString());
    QCOMPARE(m_server->requestCount(), 1);

    // JSON of another shape is a success that tells nothing.
    m_server->enqueue(Reply::json(QJsonArray{object}));
    plan = fullPlan();
    QVERIFY(call(plan));
    QCOMPARE(difference(dump(plan), dump(emptied(plan))), QString());
}

void KvPlanEndpointsReplyTest::listIsAppended()
{
    QFETCH(ListCall, call);
    const QStringList order{QStringLiteral("b 10"), QStringLiteral("a"), QString(), QStringLiteral("b 2"),
                            QStringLiteral("a")}; // the service's
    QJsonArray array;
    for (const QString& name : order)
        array.append(planObject(QStringLiteral("id of ") + name, name));
    m_server->enqueue(Reply::json(array));
    m_server->enqueue(Reply::json(array));
    m_server->enqueue(Reply::json(QJsonArray()));
    QList<KvPlan> plans{fullPlan()};
    QVERIFY(call(plans));
    QVERIFY(call(plans));
    QVERIFY(call(plans));
    QCOMPARE(namesOf(plans), QStringList{fullPlan().name} + order + order);
    QCOMPARE(difference(dump(plans.first()), dump(fullPlan())), QString());
    KvPlan wanted = emptied(KvPlan()); // made of a fresh record
    wanted.id = QStringLiteral("id of b 10");
    wanted.name = QStringLiteral("b 10");
    QCOMPARE(difference(dump(plans.at(1)), dump(wanted)), QString());
}

void KvPlanEndpointsReplyTest::listTakesObjectsOnly()
{
    QFETCH(ListCall, call);
    m_server->enqueue(Reply::json(QJsonArray{QJsonValue(), 1, QStringLiteral("text"), QJsonArray{1},
                                             planObject(p1, told), QJsonObject()}));
    QList<KvPlan> plans;
    QVERIFY(call(plans));
    QCOMPARE(namesOf(plans), (QStringList{told, QString()}));
    // One object is no list.
    m_server->enqueue(Reply::json(planObject(p1, told)));
    QVERIFY(call(plans));
    QCOMPARE(plans.size(), 2);
}

void KvPlanEndpointsReplyTest::count_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("expected");
    QTest::newRow("some") << QByteArray(R"({"count": 1234})") << 1234;
    QTest::newRow("none") << QByteArray(R"({"count": 0})") << 0;
    QTest::newRow("as a double") << QByteArray(R"({"count": 5.0})") << 5;
    QTest::newRow("largest") << QByteArray(R"({"count": 2147483647})") << 2147483647;
    QTest::newRow("negative") << QByteArray(R"({"count": -1})") << -1;
    QTest::newRow("missing") << QByteArray(R"({"total": 5})") << 0;
    QTest::newRow("empty object") << QByteArray("{}") << 0;
    QTest::newRow("null") << QByteArray(R"({"count": null})") << 0;
    QTest::newRow("text") << QByteArray(R"({"count": "5"})") << 0;
    QTest::newRow("flag") << QByteArray(R"({"count": true})") << 0;
    QTest::newRow("no whole number") << QByteArray(R"({"count": 5.5})") << 0;
    QTest::newRow("too large") << QByteArray(R"({"count": 1e12})") << 0;
    QTest::newRow("array") << QByteArray(R"([{"count": 5}])") << 0;
}

void KvPlanEndpointsReplyTest::count()
{
    QFETCH(QByteArray, body);
    QFETCH(int, expected);
    m_server->enqueue(Reply::text(body, "application/json"));
    int result = 77;
    QVERIFY(Kv::requestPlanRangeCount(KvPlanCondition(), result));
    QCOMPARE(result, expected);
}

void KvPlanEndpointsReplyTest::deletion_data()
{
    QTest::addColumn<Reply>("reply");
    QTest::addColumn<bool>("expected");
    QTest::newRow("no content") << Reply::empty(204) << true;
    QTest::newRow("empty body") << Reply::empty(200) << true;
    QTest::newRow("some object") << Reply::json(planObject(p1, told)) << true;
    QTest::newRow("not there") << Reply::json(QJsonObject(), 404) << false;
    QTest::newRow("not allowed") << Reply::json(QJsonObject(), 403) << false;
    QTest::newRow("refused without a word") << Reply::empty(500) << false;
    QTest::newRow("no JSON") << Reply::text("done", "text/plain") << false;
}

void KvPlanEndpointsReplyTest::deletion()
{
    QFETCH(Reply, reply);
    QFETCH(bool, expected);
    m_server->enqueue(reply);
    QCOMPARE(Kv::requestDeletePlan(p1), expected);
    QCOMPARE(m_server->requestCount(), 1);
}

QJsonObject KvPlanEndpointsReplyTest::toldObject() const
{
    QJsonObject object = planObject(told, told);
    object.insert(QStringLiteral("count"), 5);
    return object;
}

void KvPlanEndpointsReplyTest::verifyFailures(const std::function<void()>& prepare)
{
    for (const PlanCall& call : {readOne, create, copy, update}) {
        prepare();
        KvPlan plan = fullPlan();
        QVERIFY(!call(plan));
        QCOMPARE(difference(dump(plan), dump(emptied(fullPlan()))), QString());
    }
    for (const ListCall& call : {readAll, readPage}) {
        prepare();
        QList<KvPlan> plans{fullPlan(1), fullPlan(2)};
        QVERIFY(!call(plans));
        QCOMPARE(plans.size(), 2);
        QCOMPARE(difference(dump(plans.at(0)), dump(fullPlan(1))), QString());
        QCOMPARE(difference(dump(plans.at(1)), dump(fullPlan(2))), QString());
    }
    prepare();
    int result = 77;
    QVERIFY(!Kv::requestPlanRangeCount(KvPlanCondition(), result));
    QCOMPARE(result, 0);
    prepare();
    QVERIFY(!Kv::requestDeletePlan(p1));
}

QTEST_GUILESS_MAIN(KvPlanEndpointsReplyTest)
#include "KvPlanEndpointsReplyTest.moc"
