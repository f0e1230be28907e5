// Where rights end: at a category, at a project, and with the token.

#include "PlanRequests.h"
#include "ServiceProcess.h"
#include "Text.h"
#include "TokenMaking.h"
#include "store/OpenStore.h"

#include <QtTest>

using namespace KvTest;

class TestRightsEnd : public QObject
{
    Q_OBJECT

private:
    struct Place
    {
        QByteArray project;
        QByteArray plan;
        QByteArray node; ///< its only one
    };
    ServiceProcess m_service;
    std::unique_ptr<RawHttp> m_http;
    std::unique_ptr<PlanService::Store> m_store;
    QByteArray m_owner; ///< may everything in both projects

    Place made(const QByteArray& project)
    {
        const QJsonObject node{{"name"_s, "dig in "_s + QString::fromLatin1(project)}};
        const QJsonObject plan =
            objectOf(m_http->request("POST", "/task-service/plans",
                                     jsonOf({{"projectId"_s, QString::fromLatin1(project)},
                                             {"category"_s, "c1"_s},
                                             {"projectData"_s, QJsonArray{node}}}),
                                     bearer(m_owner)));
        const Place place{project, idOf(plan), idOf(plan.value("tasks"_s).toArray().first().toObject())};
        m_http->request("PUT", "/ka-rond-service/tasks/" + place.node + "/taskstates", "{\"state\":1}",
                        bearer(m_owner));
        return place;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_service.start({"--create"_s}), qPrintable(m_service.failure()));
        m_http = std::make_unique<RawHttp>(m_service.port());
        m_store = PlanService::connectStore(m_service.database());
        m_owner = tokenWith(*m_store, "owner"_s,
                            {rightsOf("p1"_s, ""_s, allRights), rightsOf("p2"_s, ""_s, allRights)});
    }
    void cleanupTestCase() { QVERIFY2(m_service.stop(), qPrintable(m_service.failure())); }

    void aPlanIsNoWayAroundItsNodesCategories_data()
    {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("rest");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("right");
        const QByteArray none;
        QTest::newRow("removing a plan") << QByteArray("DELETE") << none << none << "delete"_s;
        QTest::newRow("copying it") << QByteArray("PUT") << QByteArray("/copy") << QByteArray("{}")
                                    << "create"_s;
        QTest::newRow("another list of nodes without the one")
            << QByteArray("PUT") << none << QByteArray(R"({"projectData":[]})") << "edit"_s;
        QTest::newRow("the one changed, in the plan's category")
            << QByteArray("PUT") << none
            << QByteArray(R"({"projectData":[{"_id":"NODE","category":"c1","name":"x"}]})") << "edit"_s;
        QTest::newRow("the one changed where it is")
            << QByteArray("PUT") << none
            << QByteArray(R"({"projectData":[{"_id":"NODE","category":"c2","name":"x"}]})") << "edit"_s;
        QTest::newRow("a new one there")
            << QByteArray("PUT") << none << QByteArray(R"({"projectData":[{"category":"c3"}]})") << "edit"_s;
    }
    void aPlanIsNoWayAroundItsNodesCategories()
    {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, rest);
        QFETCH(QByteArray, body);
        QFETCH(QString, right);
        const QByteArray owner = bearer(tokenWith(*m_store, "ann"_s, {rightsOf("p4"_s, ""_s, allRights)}));
        const QJsonArray nodes{QJsonObject{{"name"_s, "in the plan's"_s}},
                               QJsonObject{{"name"_s, "elsewhere"_s}, {"category"_s, "c2"_s}}};
        const QJsonObject plan = objectOf(m_http->request(
            "POST", "/task-service/plans",
            jsonOf({{"projectId"_s, "p4"_s}, {"category"_s, "c1"_s}, {"projectData"_s, nodes}}), owner));
        const QByteArray path = "/task-service/plans/" + idOf(plan);
        body.replace("NODE", idOf(plan.value("tasks"_s).toArray().at(1).toObject()));
        const QByteArray before = m_http->get(path, owner).body;
        QVERIFY(before.contains("elsewhere"));
        // Everything in the plan's category, and everything but this right in the other one.
        QStringList others = allRights;
        others.removeAll(right);
        for (const QStringList& elsewhere : {QStringList(), others}) {
            const RawReply refused =
                m_http->request(method, path + rest, body,
                                bearer(tokenWith(*m_store, "bo"_s,
                                                 {rightsOf("p4"_s, "c1"_s, allRights),
                                                  rightsOf("p4"_s, "c2"_s, elsewhere)})));
            QVERIFY2(errorOf(refused) == "rightMissing "_s + right, refused.body.constData());
            QCOMPARE(m_http->get(path, owner).body, before);
        }
        const RawReply allowed =
            m_http->request(method, path + rest, body,
                            bearer(tokenWith(*m_store, "bo"_s, {rightsOf("p4"_s, ""_s, allRights)})));
        QVERIFY2(allowed.status / 100 == 2, allowed.body.constData());
    }

    void reachesIntoNoOtherProject_data()
    {
        QTest::addColumn<QByteArray>("request"); // method and target
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("error");
        const QByteArray none;
        const auto row = [](const char* name, const char* request, const QByteArray& body, int status,
                            const char* error) {
            QTest::newRow(name) << QByteArray(request) << body << status << QString::fromLatin1(error);
        };
        row("changes, the last one foreign", "PUT /task-service/planNodes",
            R"([{"_id":"OWN-NODE","name":"x"},{"_id":"FOREIGN-NODE","name":"x"}])", 403, "rightMissing edit");
        row("changes, the first one foreign", "PUT /task-service/planNodes",
            R"([{"_id":"FOREIGN-NODE","name":"x"},{"_id":"OWN-NODE","name":"x"}])", 403, "rightMissing edit");
        row("changes of nothing", "PUT /task-service/planNodes", R"([{"_id":"FOREIGN-NODE"}])", 403,
            "rightMissing edit");
        row("removals, the last one foreign",
            "DELETE /task-service/planNodes?queryParam=%7B%22ids%22:[%22OWN-NODE%22,%22FOREIGN-NODE%22]%7D",
            none, 403, "rightMissing delete");
        row("a node for a foreign plan", "POST /task-service/planNodes",
            R"({"planId":"FOREIGN-PLAN","projectId":"p1","name":"x"})", 403, "rightMissing create");
        row("a node without a plan", "POST /task-service/planNodes", R"({"projectId":"p2","name":"x"})", 403,
            "rightMissing create");
        row("nodes that name the own project, for a foreign plan",
            "POST /task-service/plans/FOREIGN-PLAN/planNodes", R"([{"planId":"OWN-PLAN","projectId":"p1"}])",
            403, "rightMissing create");
        row("a node moved into a foreign plan", "PUT /task-service/planNodes/OWN-NODE",
            R"({"planId":"FOREIGN-PLAN"})", 400, "planFixed planId");
        row("a node moved into a foreign project", "PUT /task-service/planNodes/OWN-NODE",
            R"({"projectId":"p2"})", 400, "projectFixed projectId");
        row("a foreign node that says it is at home", "PUT /task-service/planNodes/FOREIGN-NODE",
            R"({"_id":"OWN-NODE","planId":"OWN-PLAN","projectId":"p1"})", 403, "rightMissing edit");
        row("a foreign node taken into a plan", "PUT /task-service/plans/OWN-PLAN",
            R"({"projectData":[{"_id":"OWN-NODE"},{"_id":"FOREIGN-NODE","name":"x"}]})", 200, "");
        row("a foreign node taken into a new plan", "POST /task-service/plans",
            R"({"projectId":"p1","projectData":[{"_id":"FOREIGN-NODE","name":"x"}]})", 200, "");
        row("a foreign node taken into a plan's list", "POST /task-service/plans/OWN-PLAN/planNodes",
            R"([{"_id":"FOREIGN-NODE","name":"x"}])", 200, "");
        row("a foreign plan's number for a new plan", "POST /task-service/plans",
            R"({"_id":"FOREIGN-PLAN","projectId":"p1","name":"x"})", 200, "");
        row("a plan moved into a foreign project", "PUT /task-service/plans/OWN-PLAN",
            R"({"projectId":"p2"})", 400, "projectFixed projectId");
        row("state of a foreign task in the own project", "POST /ka-rond-service/taskstates",
            R"({"projectId":"p1","planId":"OWN-PLAN","taskId":"FOREIGN-NODE","responseId":null})", 403,
            "rightMissing read");
        row("state of a foreign task under an own one's path",
            "PUT /ka-rond-service/tasks/OWN-NODE/taskstates", R"({"taskId":"FOREIGN-NODE","state":9})", 400,
            "otherTask taskId");
        row("state of an own task in a foreign plan", "POST /ka-rond-service/taskstates",
            R"({"projectId":"p1","planId":"FOREIGN-PLAN","taskId":"OWN-NODE","responseId":null})", 400,
            "otherPlace planId");
        row("foreign nodes by their plan",
            "GET /task-service/projects/p1/planNodes?where={\"planId\":\"FOREIGN-PLAN\"}", none, 200, "");
        row("foreign nodes by their project",
            "GET /task-service/plans/OWN-PLAN/planNodes?where={\"projectId\":\"p2\"}", none, 200, "");
        row("foreign nodes by either",
            "GET /task-service/projects/p1/planNodes?where="
            "{\"$or\":[{\"projectId\":\"p2\"},{\"_id\":\"FOREIGN-NODE\"}]}&expand=true",
            none, 200, "");
        row("foreign plans by their project",
            "GET /task-service/projects/p1/plans?where={\"projectId\":\"p2\"}", none, 200, "");
        row("foreign states by their task",
            "GET /ka-rond-service/projects/p1/taskstates?where={\"taskId\":\"FOREIGN-NODE\"}", none, 200, "");
        row("numbers of a foreign project", "GET /task-service/projects/p2/planNodes_statistics?projectId=p1",
            none, 403, "rightMissing read");
        row("a project's name in other letters", "GET /task-service/projects/P2/plans", none, 403,
            "rightMissing read");
    }
    void reachesIntoNoOtherProject()
    {
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        QFETCH(QString, error);
        const Place here = made("p1");
        const Place there = made("p2");
        const QByteArray owner = bearer(m_owner);
        const auto fill = [&](QByteArray text) {
            return text.replace("OWN-PLAN", here.plan)
                .replace("FOREIGN-PLAN", there.plan)
                .replace("OWN-NODE", here.node)
                .replace("FOREIGN-NODE", there.node);
        };
        const auto state = [&](const Place& world) {
            return m_http->get("/task-service/plans/" + world.plan, owner).body +
                   m_http->get("/task-service/projects/" + world.project + "/plans?only_count=true", owner)
                       .body +
                   m_http
                       ->get("/task-service/projects/" + world.project + "/planNodes?only_count=true", owner)
                       .body +
                   m_http->get("/ka-rond-service/projects/" + world.project + "/taskstates", owner).body;
        };
        const QByteArray before = state(there);
        const QByteArray ownBefore = state(here);
        const QList<QByteArray> parts = fill(request).split(' ');
        const RawReply reply = m_http->request(
            parts.at(0),
            QByteArray(parts.at(1))
                .replace('"', "%22")
                .replace('{', "%7B")
                .replace('}', "%7D")
                .replace('$', "%24"),
            fill(body), bearer(tokenWith(*m_store, "ann"_s, {rightsOf("p1"_s, ""_s, allRights)})));
        QVERIFY2(reply.status == status, reply.body.constData());
        if (status == 200) {
            QVERIFY2(!reply.body.contains("dig in p2") && !reply.body.contains(there.node),
                     reply.body.constData());
            QVERIFY2(!reply.body.contains("\"_id\":\"" + there.plan), reply.body.constData());
        } else {
            QCOMPARE(errorOf(reply), error);
            QCOMPARE(state(here), ownBefore);
        }
        QCOMPARE(state(there), before);
    }

    void aTokenThatEndsDoesSoAtOnce_data()
    {
        QTest::addColumn<QString>("end");
        QTest::addColumn<QString>("error");
        QTest::newRow("revoked") << "revoked"_s
                                 << "tokenRevoked "_s;
        QTest::newRow("expired") << "expired"_s
                                 << "tokenExpired "_s;
        QTest::newRow("fewer rights") << "fewer rights"_s
                                      << "rightMissing edit"_s;
    }
    // On a connection that is open, and for a request that is on its way.
    void aTokenThatEndsDoesSoAtOnce()
    {
        QFETCH(QString, end);
        QFETCH(QString, error);
        QByteArray token;
        const QDateTime soon = QDateTime::currentDateTimeUtc().addSecs(2);
        const qint64 id =
            addToken(*m_store, "ann"_s, token, end == "expired"_s ? PlanService::tokenTime(soon) : QString());
        m_store->setRights(id, rightsOf("p1"_s, ""_s, allRights));
        const QByteArray target = "/task-service/planNodes/" + made("p1").node;
        RawHttp open(m_service.port());
        QCOMPARE(open.request("PUT", target, "{}", bearer(token)).status, 200);
        RawHttp sending(m_service.port());
        sending.send("PUT " + target + " HTTP/1.1\r\nHost: x\r\n" + bearer(token) +
                     "Content-Length: 15\r\n\r\n{\"name\":");
        if (end == "revoked"_s) {
            QVERIFY(m_store->revokeToken(id, "2026-01-02T00:00:00Z"_s));
        } else if (end == "expired"_s) {
            QTRY_VERIFY(QDateTime::currentDateTimeUtc() >= soon);
        } else {
            m_store->setRights(id, rightsOf("p1"_s, ""_s, {"read"_s}));
        }
        sending.send("\"gone\"}");
        QCOMPARE(errorOf(sending.read()), error);
        QCOMPARE(errorOf(open.request("PUT", target, "{}", bearer(token))), error);
        QVERIFY(!m_http->get(target, bearer(tokenWith(*m_store, "bo"_s, {rightsOf("p1"_s, ""_s, allRights)})))
                     .body.contains("gone"));
    }
};

QTEST_GUILESS_MAIN(TestRightsEnd)
#include "TestRightsEnd.moc"
