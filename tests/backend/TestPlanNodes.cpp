// Reading and creating plan nodes over HTTP, on the built program.

#include "PlanNodeRequests.h"

#include <QElapsedTimer>
#include <QtTest>

#include <algorithm>
#include <limits>
#include <vector>

using namespace KvTest;

class TestPlanNodes : public QObject
{
    Q_OBJECT

private:
    NodeService m_service;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_service.process.start({"--create"_s}), qPrintable(m_service.process.failure()));
    }
    void cleanupTestCase() { QVERIFY2(m_service.process.stop(), qPrintable(m_service.process.failure())); }

    void createsManyInOrder()
    {
        const QByteArray plan = m_service.newPlan("many"_s, "main"_s);
        QJsonObject parent = task("shell"_s, 1);
        parent.insert("projectId"_s, "elsewhere"_s);
        parent.insert("planId"_s, "elsewhere"_s);
        QJsonObject child = task("wall"_s, 2, 1);
        child.insert("finishDate"_s, child.value("startDate"_s));
        child.insert("category"_s, "other"_s);
        child.insert("id"_s, 7);
        const RawReply reply =
            m_service.send("POST", "plans/" + plan + "/planNodes", listJson(QJsonArray{parent, child}));
        QCOMPARE(reply.status, 200);
        const QJsonArray created = arrayOf(reply);
        QCOMPARE(namesOf(created), QStringList({"shell"_s, "wall"_s}));
        const QJsonObject shell = created.at(0).toObject();
        const QJsonObject wall = created.at(1).toObject();
        QCOMPARE(shell.value("planId"_s).toString().toLatin1(), plan);
        QCOMPARE(shell.value("projectId"_s).toString(), "many"_s);
        QCOMPARE(shell.value("category"_s).toString(), "main"_s);
        QCOMPARE(shell.value("planName"_s).toString(), "Tower"_s);
        QCOMPARE(shell.value("summary"_s), QJsonValue(true));
        QCOMPARE(shell.value("milestone"_s), QJsonValue(false));
        QCOMPARE(shell.value("id"_s), QJsonValue(1));
        QCOMPARE(shell.value("displaySimulation"_s), QJsonValue(0));
        QVERIFY(shell.value("entity"_s).isArray() && !shell.contains("links"_s));
        QCOMPARE(wall.value("summary"_s), QJsonValue(false));
        QCOMPARE(wall.value("milestone"_s), QJsonValue(true));
        QCOMPARE(wall.value("category"_s).toString(), "other"_s);
        QVERIFY(idOf(shell) != idOf(wall) && idOf(shell).size() == 24);
        // What was answered is what is stored, and rows go on behind the last one.
        QCOMPARE(m_service.node(idOf(wall)), wall);
        QCOMPARE(m_service.node(m_service.addNodes(plan, {"roof"_s}).first().toLatin1()).value("id"_s),
                 QJsonValue(8));
        QCOMPARE(arrayOf(m_service.send("POST", "plans/" + plan + "/planNodes", "[]")), QJsonArray());
    }

    void createsOneInItsPlanOrInNone()
    {
        const QByteArray plan = m_service.newPlan("one"_s, "main"_s);
        QJsonObject body = task("dig"_s, 1);
        body.insert("planId"_s, QString::fromLatin1(plan));
        const RawReply reply = m_service.send("POST", "planNodes", jsonOf(body));
        QCOMPARE(reply.status, 200);
        QCOMPARE(objectOf(reply).value("projectId"_s).toString(), "one"_s);
        QCOMPARE(objectOf(reply).value("category"_s).toString(), "main"_s);
        QCOMPARE(m_service.node(idOf(objectOf(reply))), objectOf(reply));

        const RawReply loose =
            m_service.send("POST", "planNodes", "{\"projectId\":\"one\",\"name\":\"call\"}");
        QCOMPARE(loose.status, 200);
        QCOMPARE(objectOf(loose).value("planId"_s), QJsonValue(QString()));
        QCOMPARE(objectOf(loose).value("planName"_s), QJsonValue(QString()));
        QCOMPARE(objectOf(loose).value("id"_s), QJsonValue(1));
        const QByteArray inPlan = "plans/" + plan + "/planNodes?where=";
        QCOMPARE(namesOf(arrayOf(m_service.get(inPlan + encoded("{}"_s)))), QStringList{"dig"_s});
        // A plan in the path and none in the filter: the nodes of its project that have none.
        QCOMPARE(namesOf(arrayOf(m_service.get(inPlan + encoded("{\"planId\":null}"_s)))),
                 QStringList{"call"_s});
        QCOMPARE(objectOf(m_service.get(inPlan + encoded("{\"planId\":null}"_s) + "&only_count=true"))
                     .value("count"_s),
                 QJsonValue(1));
        QCOMPARE(namesOf(arrayOf(m_service.get("projects/one/planNodes"))), QStringList({"call"_s, "dig"_s}));
        QCOMPARE(
            m_service.send("PUT", "planNodes/" + idOf(objectOf(loose)), "{\"name\":\"call again\"}").status,
            200);
        QCOMPARE(m_service.send("DELETE", "planNodes/" + idOf(objectOf(loose))).status, 204);
    }

    void keepsAnIdUnlessAnotherNodeHasIt()
    {
        const QByteArray plan = m_service.newPlan("ids"_s);
        QJsonObject body = task("mine"_s, 1);
        body.insert("_id"_s, "mine 1"_s);
        const QByteArray path = "plans/" + plan + "/planNodes";
        const QJsonArray first =
            arrayOf(m_service.send("POST", path, listJson(QJsonArray{body, task("new"_s, 2)})));
        QCOMPARE(idOf(first.at(0).toObject()), QByteArray("mine 1"));
        const QJsonArray second = arrayOf(m_service.send("POST", path, listJson(QJsonArray{body})));
        QCOMPARE(second.size(), 1);
        QVERIFY(idOf(second.at(0).toObject()) != "mine 1");
        QCOMPARE(objectOf(m_service.get(path + "?only_count=true")).value("count"_s), QJsonValue(3));
    }

    void refusesToCreate_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("error");
        const QByteArray one = "planNodes";
        const QByteArray many = "plans/PLAN/planNodes";
        const auto row = [](const char* name, const QByteArray& path, const QByteArray& body, int status,
                            const char* error) {
            QTest::newRow(name) << path << body << status << QString::fromLatin1(error);
        };
        row("no JSON", one, "x", 400, "badJson ");
        row("a list", one, "[]", 400, "badJson ");
        row("nothing", one, "", 400, "badJson ");
        row("no place", one, "{\"name\":\"a\"}", 400, "missingValue projectId");
        row("unknown plan", one, "{\"planId\":\"gone\"}", 404, "planNotFound planId");
        row("plan is no text", one, "{\"planId\":null}", 400, "wrongType planId");
        row("wrong type", one, "{\"projectId\":\"p\",\"name\":1}", 400, "wrongType name");
        row("wrong type inside", one, "{\"projectId\":\"p\",\"predecessors\":[{\"Lag\":1}]}", 400,
            "wrongType predecessors[0].Lag");
        row("bad date", one, "{\"projectId\":\"p\",\"startDate\":\"2026-02-30\"}", 400, "badDate startDate");
        row("an object", many, "{}", 400, "badJson ");
        row("half a list", many, "[{},", 400, "badJson ");
        row("list of no objects", many, "[{},1]", 400, "badJson [1]");
        row("element that is no JSON", many, "[{},{\"a\"}]", 400, "badJson [1]");
        row("wrong type of an element", many, "[{},{},{\"userIds\":[1]}]", 400, "wrongType [2].userIds");
        row("wrong type inside an element", many, "[{},{\"materialBills\":[{},{\"rId\":1}]}]", 400,
            "wrongType [1].materialBills[1].rId");
        row("bad date of an element", many, "[{\"finishDate\":\"soon\"}]", 400, "badDate [0].finishDate");
        row("an id twice", many, "[{\"_id\":\"t\"},{\"_id\":\"t\"}]", 400, "duplicateId [1]._id");
        row("a long id", many, "[{\"_id\":\"" + QByteArray(101, 'i') + "\"}]", 400, "badId [0]._id");
        row("a plan that is not there", "plans/gone/planNodes", "[{}]", 404, "planNotFound planId");
    }
    void refusesToCreate()
    {
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        QFETCH(QString, error);
        const QByteArray plan = m_service.newPlan("refused"_s);
        const RawReply reply = m_service.send("POST", path.replace("PLAN", plan), body);
        QCOMPARE(reply.status, status);
        QCOMPARE(errorOf(reply), error);
        QCOMPARE(objectOf(m_service.get("projects/refused/planNodes?only_count=true")).value("count"_s),
                 QJsonValue(0));
    }

    void takesAHundredThousandAndNoMore()
    {
        const QByteArray plan = m_service.newPlan("limit"_s);
        const QByteArray path = "plans/" + plan + "/planNodes";
        const QByteArray most = '[' + QByteArray("{\"userIds\":[\"u\"]},").repeated(99999) + "{}]";
        const RawReply tooMany = m_service.send("POST", path, "[{}," + most.mid(1));
        QCOMPARE(tooMany.status, 413);
        QCOMPARE(errorOf(tooMany), "tooManyNodes "_s);
        QCOMPARE(m_service.send("PUT", "planNodes", "[{}," + most.mid(1)).status, 413);
        QElapsedTimer timer;
        timer.start();
        const RawReply reply = m_service.send("POST", path, most);
        QCOMPARE(reply.status, 200);
        qInfo("100,000 small nodes created in %lld ms", timer.restart());
        const QJsonArray created = arrayOf(reply);
        QCOMPARE(created.size(), 100000);
        QCOMPARE(created.last().toObject().value("id"_s), QJsonValue(100000));
        QJsonArray changes;
        for (const QJsonValue& node : created) {
            changes.append(QJsonObject{{"_id"_s, node.toObject().value("_id"_s)}, {"remark"_s, "r"_s}});
        }
        timer.restart();
        const RawReply changed = m_service.send("PUT", "planNodes", listJson(changes));
        QCOMPARE(changed.status, 200);
        qInfo("100,000 nodes changed in %lld ms", timer.elapsed());
        QCOMPARE(changed.body, QByteArray("{\"count\":100000}"));
        const QByteArray remarked = path + "?where=" + encoded("{\"remark\":\"r\"}"_s) + "&only_count=true";
        QCOMPARE(m_service.get(remarked).body, QByteArray("{\"count\":100000}"));
    }

    void listsTakeTheirParameters_data()
    {
        QTest::addColumn<QByteArray>("query");
        QTest::addColumn<QString>("names");
        const auto row = [](const QByteArray& query, const char* names) {
            QTest::newRow(query.isEmpty() ? "nothing" : query.constData())
                << query << QString::fromLatin1(names);
        };
        row("", "a b c d");
        row("where=", "a b c d");
        row("where={}&category=", "a b c d");
        row("where={}&category=c2&list=all&finish=true&skip=0&limit=20", "c");
        row("category=c2", "c d");
        row("finish=true", "a c");
        row("finish=false", "b d");
        row("finish=false&state=processing", "b");
        row("finish=true&state=processing", "");
        row("state=unstart", "d");
        row("state={\"$in\":[\"unstart\",\"finished\"]}", "a c d");
        row("state={\"$in\":[]}", "");
        row("type=todo", "b d");
        row("type=todo&state=finished", "a c");
        row("type=todo&category=&expand=true&order=finishDate&skip=0&limit=20&state={\"$in\":[\"unstart\","
            "\"processing\"]}",
            "d b");
        row("order=finishDate", "d c a b");
        row("order=finishDate&skip=1&limit=2", "c a");
        row("order=id&limit=0", "");
        row("skip=9", "");
        row("list=received&list=all", "a b c d");
    }
    void listsTakeTheirParameters()
    {
        QFETCH(QByteArray, query);
        QFETCH(QString, names);
        static QByteArray plan;
        if (plan.isEmpty()) {
            plan = m_service.newPlan("lists"_s, "c1"_s);
            const auto make = [](const QString& name, const char* finish, const char* start, const char* end,
                                 const QString& category) {
                return QJsonObject{{"name"_s, name},
                                   {"finishDate"_s, QString::fromLatin1(finish)},
                                   {"actualStartDate"_s, QString::fromLatin1(start)},
                                   {"actualFinishDate"_s, QString::fromLatin1(end)},
                                   {"category"_s, category}};
            };
            const QJsonArray nodes{make("a"_s, "2026-05-03", "2026-05-01", "2026-05-02", ""_s),
                                   make("b"_s, "", "2026-05-01", "", ""_s),
                                   make("c"_s, "2026-05-02", "", "2026-05-02", "c2"_s),
                                   make("d"_s, "2026-05-01", "", "", "c2"_s)};
            QCOMPARE(m_service.send("POST", "plans/" + plan + "/planNodes", listJson(nodes)).status, 200);
        }
        const QStringList expected = names.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        for (const QByteArray& path :
             {QByteArray("projects/lists/planNodes?"), "plans/" + plan + "/planNodes?"}) {
            const RawReply reply = m_service.get(path + query);
            QCOMPARE(reply.status, 200);
            QCOMPARE(namesOf(arrayOf(reply)), expected);
            if (!query.contains("skip") && !query.contains("limit")) {
                QCOMPARE(objectOf(m_service.get(path + query + "&only_count=true")).value("count"_s),
                         QJsonValue(expected.size()));
            }
        }
    }

    void refusesToList_data()
    {
        QTest::addColumn<QByteArray>("query");
        QTest::addColumn<QString>("error");
        const auto row = [](const QByteArray& query, const char* error) {
            QTest::newRow(query.constData()) << query << QString::fromLatin1(error);
        };
        row("where={", "badFilter where");
        row("where={\"colour\":1}", "unknownField colour");
        row("where={\"name\":{\"$ne\":1}}", "unknownOperator $ne");
        row("list=mine", "badParameter list");
        row("list=", "badParameter list");
        row("type=done", "badParameter type");
        row("order=name", "badParameter order");
        row("finish=1", "badParameter finish");
        row("expand=yes", "badParameter expand");
        row("only_count=yes", "badParameter only_count");
        row("skip=-1", "badParameter skip");
        row("limit=many", "badParameter limit");
        row("state=late", "badParameter state");
        row("state=", "badParameter state");
        row("state={\"$in\":[\"late\"]}", "badParameter state");
        row("state={\"$in\":[1]}", "badParameter state");
        row("state={\"$in\":\"unstart\"}", "badParameter state");
        row("state={\"$gte\":[]}", "badParameter state");
        row("state={", "badParameter state");
    }
    void refusesToList()
    {
        QFETCH(QByteArray, query);
        QFETCH(QString, error);
        static const QByteArray plan = m_service.newPlan("refused lists"_s);
        for (const QByteArray& path :
             {QByteArray("projects/refused%20lists/planNodes?"), "plans/" + plan + "/planNodes?"}) {
            const RawReply reply = m_service.get(path + query);
            QCOMPARE(reply.status, 400);
            QCOMPARE(errorOf(reply), error);
        }
        QCOMPARE(errorOf(m_service.get("plans/gone/planNodes")), "planNotFound planId"_s);
    }

    void headAndBodyMayComeApart()
    {
        // The client's system holds the second part back until the first is acknowledged, 40 ms when nobody
        // hurries. Whole requests in between tell what the machine is busy with otherwise.
        RawHttp http(m_service.process.port());
        const QByteArray head = "PUT /nowhere HTTP/1.1\r\nHost: localhost\r\nContent-Length: 2\r\n\r\n";
        std::vector<qint64> apart;
        std::vector<qint64> together;
        const auto timed = [&](const QList<QByteArray>& parts) {
            QElapsedTimer timer;
            timer.start();
            for (const QByteArray& part : parts) {
                http.send(part);
            }
            return http.read().status == 404 ? timer.nsecsElapsed() : std::numeric_limits<qint64>::max();
        };
        for (int i = 0; i < 61; ++i) {
            apart.push_back(timed({head, "{}"}));
            together.push_back(timed({head + "{}"}));
        }
        std::sort(apart.begin(), apart.end());
        std::sort(together.begin(), together.end());
        QVERIFY2(apart[30] - together[30] < 20000000,
                 qPrintable("%1 ns apart, %2 ns together"_s.arg(apart[30]).arg(together[30])));
    }
};

QTEST_GUILESS_MAIN(TestPlanNodes)
#include "TestPlanNodes.moc"
