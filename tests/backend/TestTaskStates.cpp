// Metering states of tasks through the real process.

#include "PlanRequests.h"
#include "ServiceProcess.h"
#include "Text.h"

#include <QtTest>

using namespace KvTest;

class TestTaskStates : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    std::unique_ptr<RawHttp> m_http;
    QByteArray m_plan;
    QByteArray m_otherPlan;

    QByteArray createPlan(const QStringList& nodeIds)
    {
        QJsonArray nodes;
        for (const QString& id : nodeIds) {
            nodes.append(QJsonObject{{"_id"_s, id}});
        }
        return idOf(objectOf(m_http->request("POST", "/task-service/plans",
                                             jsonOf({{"projectId"_s, "p1"_s}, {"projectData"_s, nodes}}))));
    }
    RawReply post(const QByteArray& body)
    {
        return m_http->request("POST", "/ka-rond-service/taskstates", body);
    }
    RawReply put(const QByteArray& task, const QByteArray& body)
    {
        return m_http->request("PUT", "/ka-rond-service/tasks/" + task + "/taskstates", body);
    }
    QJsonArray list(const QByteArray& where, const QByteArray& project = "p1")
    {
        return QJsonDocument::fromJson(m_http
                                           ->get("/ka-rond-service/projects/" + project +
                                                 "/taskstates?where=" + where.toPercentEncoding())
                                           .body)
            .array();
    }
    QByteArray respond(const QByteArray& node)
    {
        return idOf(
            objectOf(m_http->request("POST", "/task-service/planNodes/" + node + "/responses", "{}")));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_service.start({"--create"_s}), qPrintable(m_service.failure()));
        m_http = std::make_unique<RawHttp>(m_service.port());
        m_plan = createPlan({"a"_s, "b"_s, "c"_s, "d"_s, "e"_s});
        m_otherPlan = createPlan({"x"_s, "y"_s});
    }
    void cleanupTestCase() { QVERIFY2(m_service.stop(), qPrintable(m_service.failure())); }

    void createsAndChanges()
    {
        const QByteArray response = respond("a");
        const QJsonObject sent{{"projectId"_s, "p1"_s},
                               {"planId"_s, QString::fromLatin1(m_plan)},
                               {"taskId"_s, "a"_s},
                               {"responseId"_s, QString::fromLatin1(response)}};
        const QJsonObject created = objectOf(post(jsonOf(sent)));
        const QByteArray id = idOf(created);
        QCOMPARE(id.size(), 24);
        QCOMPARE(created, (QJsonObject{{"_id"_s, QString::fromLatin1(id)},
                                       {"planId"_s, QString::fromLatin1(m_plan)},
                                       {"taskId"_s, "a"_s},
                                       {"responseId"_s, QString::fromLatin1(response)},
                                       {"state"_s, 0}}));
        QJsonObject changed = created;
        changed.insert("state"_s, 7);
        QCOMPARE(objectOf(put("a", R"({"taskId":"a","state":7})")), changed);
        QCOMPARE(list("{\"taskId\":\"a\"}"), QJsonArray{changed});
        // The same again, as after a reply that was lost, takes nothing back.
        QCOMPARE(objectOf(post(jsonOf(sent))), changed);
        // Another response begins anew, in the same place.
        const QByteArray next = respond("a");
        QJsonObject again = sent;
        again.insert("responseId"_s, QString::fromLatin1(next));
        QJsonObject anew = created;
        anew.insert("responseId"_s, QString::fromLatin1(next));
        QCOMPARE(objectOf(post(jsonOf(again))), anew);
        QCOMPARE(list("{\"taskId\":\"a\"}"), QJsonArray{anew});
    }

    void takesNullForWhatIsNotKnown()
    {
        const QJsonObject state =
            objectOf(post(R"({"projectId":null,"planId":null,"taskId":"b","responseId":null})"));
        QCOMPARE(state.value("planId"_s).toString(), QString::fromLatin1(m_plan));
        QCOMPARE(state.value("responseId"_s), QJsonValue(""_s));
        QCOMPARE(objectOf(post(R"({"taskId":"b"})")), state);
        QCOMPARE(objectOf(put("b", R"({"taskId":null,"state":-2})")).value("state"_s), QJsonValue(-2));
    }

    void settingTheCodeCreatesTheState()
    {
        const QJsonObject state = objectOf(put("c", R"({"taskId":"c","state":4})"));
        QCOMPARE(state.value("taskId"_s).toString(), "c"_s);
        QCOMPARE(state.value("state"_s), QJsonValue(4));
        QCOMPARE(state.value("responseId"_s), QJsonValue(""_s));
        QCOMPARE(list("{\"taskId\":\"c\"}"), QJsonArray{state});
        QCOMPARE(idOf(objectOf(put("c", R"({"state":5})"))), idOf(state));
    }

    void tasksWithoutAPlanHaveOneToo()
    {
        const RawReply node =
            m_http->request("POST", "/task-service/planNodes", R"({"projectId":"p1","name":"alone"})");
        const QByteArray task = idOf(objectOf(node));
        const QJsonObject state = objectOf(post("{\"planId\":null,\"taskId\":\"" + task + "\"}"));
        QCOMPARE(state.value("planId"_s), QJsonValue(""_s));
        QCOMPARE(list(R"({"planId":null})"), QJsonArray{state});
    }

    void refuses_data()
    {
        QTest::addColumn<QByteArray>("path"); // of a PUT; empty: a POST
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("error");
        const auto row = [](const char* name, const QByteArray& path, const QByteArray& body,
                            const char* error, int status = 400) {
            QTest::newRow(name) << path << body << status << QString::fromLatin1(error);
        };
        row("task is null", "", R"({"projectId":"p1","planId":null,"taskId":null,"responseId":null})",
            "missingValue taskId");
        row("no task", "", "{}", "missingValue taskId");
        row("task is empty", "", R"({"taskId":""})", "missingValue taskId");
        row("task is a number", "", R"({"taskId":1})", "wrongType taskId");
        row("plan is a list", "", R"({"taskId":"a","planId":[]})", "wrongType planId");
        row("unknown task", "", R"({"taskId":"nowhere"})", "taskNotFound taskId", 404);
        row("another plan", "", R"({"taskId":"a","planId":"elsewhere"})", "otherPlace planId");
        row("another project", "", R"({"taskId":"a","projectId":"p2"})", "otherPlace projectId");
        row("unknown response", "", R"({"taskId":"a","responseId":"r"})", "responseNotFound responseId");
        row("no object", "", "[]", "badJson ");
        row("no JSON", "", "{", "badJson ");
        row("nested too deep", "", "{\"taskId\":" + QByteArray(5000, '[') + QByteArray(5000, ']') + "}",
            "badJson ");
        row("too large", "", "{\"taskId\":\"" + QByteArray(70000, 'a') + "\"}", "bodyTooLarge ", 413);
        row("empty task in the path", "/", R"({"taskId":null,"state":1})", "emptyParameter taskId");
        row("code missing", "d", R"({"taskId":"d"})", "missingValue state");
        row("code is null", "d", R"({"taskId":"d","state":null})", "wrongType state");
        row("code is text", "d", R"({"state":"1"})", "wrongType state");
        row("code is a fraction", "d", R"({"state":1.5})", "wrongType state");
        row("code too large", "d", R"({"state":3000000000})", "wrongType state");
        row("task of the body is another", "d", R"({"taskId":"a","state":1})", "otherTask taskId");
        row("code of an unknown task", "nowhere", R"({"state":1})", "taskNotFound taskId", 404);
    }
    void refuses()
    {
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        QFETCH(QString, error);
        const RawReply reply = path.isEmpty() ? post(body) : put(path == "/" ? "" : path, body);
        QCOMPARE(errorOf(reply), error);
        QCOMPARE(reply.status, status);
        QCOMPARE(list("{\"taskId\":\"d\"}").size(), 0);
    }

    void passesOverOtherKeys()
    {
        const QJsonObject state = objectOf(post(R"({"taskId":"e","state":9,"_id":"mine","later":{}})"));
        QCOMPARE(state.value("state"_s), QJsonValue(0));
        QVERIFY(idOf(state) != "mine");
    }

    void findsByPlan()
    {
        for (const QByteArray task : {"x", "y"}) {
            QCOMPARE(put(task, "{\"state\":1}").status, 200);
        }
        const auto tasks = [&](const QByteArray& where, const QByteArray& project = "p1") {
            QStringList ids;
            const QJsonArray states = list(where, project);
            for (const QJsonValue& state : states) {
                ids.append(state.toObject().value("taskId"_s).toString());
            }
            return ids.join(QLatin1Char(' '));
        };
        const QByteArray here = "\"" + m_plan + "\"";
        const QByteArray there = "\"" + m_otherPlan + "\"";
        QCOMPARE(tasks("{\"planId\":{\"$in\":[" + there + "]}}"), "x y"_s);
        QCOMPARE(
            tasks("{\"planId\":{\"$in\":[" + there + ',' + here + ",\"none\"]}}").count(QLatin1Char('x')), 1);
        QCOMPARE(tasks("{\"planId\":{\"$in\":[]}}"), ""_s);
        QCOMPARE(tasks("{\"planId\":{\"$in\":[" + there + "]}}", "p2"), ""_s);
        QCOMPARE(tasks("{\"planId\":" + there + ",\"taskId\":\"y\"}"), "y"_s);
        QCOMPARE(tasks("{\"planId\":" + there + ",\"state\":{\"$gte\":2}}"), ""_s);
        QVERIFY(tasks("").split(QLatin1Char(' ')).size() >= 2);
        const RawReply count = m_http->get("/ka-rond-service/projects/p1/taskstates?only_count=true&where=" +
                                           ("{\"planId\":" + there + "}").toPercentEncoding());
        QCOMPARE(objectOf(count).value("count"_s), QJsonValue(2));
        const RawReply unknown =
            m_http->get("/ka-rond-service/projects/p1/taskstates?where=%7B%22name%22:1%7D");
        QCOMPARE(errorOf(unknown), "unknownField name"_s);
        const RawReply empty = m_http->get("/ka-rond-service/projects//taskstates");
        QCOMPARE(errorOf(empty), "emptyParameter projectId"_s);
    }

    void goesWithItsTaskAndNothingElse()
    {
        const QByteArray plan = createPlan({"gone"_s, "left"_s});
        for (const QByteArray task : {"gone", "left"}) {
            QCOMPARE(put(task, "{\"state\":1}").status, 200);
        }
        const QByteArray where = "{\"planId\":\"" + plan + "\"}";
        QCOMPARE(list(where).size(), 2);
        QCOMPARE(m_http->request("DELETE", "/task-service/planNodes/gone").status, 204);
        QCOMPARE(list(where).size(), 1);
        const int all = list("").size();
        // A copy begins without.
        QCOMPARE(m_http->request("PUT", "/task-service/plans/" + plan + "/copy", "{}").status, 200);
        QCOMPARE(list("").size(), all);
        QCOMPARE(m_http->request("DELETE", "/task-service/plans/" + plan).status, 204);
        QCOMPARE(list(where).size(), 0);
    }

    void isThereAfterACrash()
    {
        QCOMPARE(put("a", "{\"state\":11}").status, 200);
        const QJsonArray before = list("");
        QVERIFY(before.size() > 0);
        m_service.kill();
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
        m_http = std::make_unique<RawHttp>(m_service.port());
        QCOMPARE(list(""), before);
    }
};

QTEST_GUILESS_MAIN(TestTaskStates)
#include "TestTaskStates.moc"
