// Changing and deleting plan nodes over HTTP, and who may.

#include "PlanNodeRequests.h"

#include <QElapsedTimer>
#include <QtTest>

using namespace KvTest;

class TestPlanNodeChanges : public QObject
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

    void changesKeyByKey_data()
    {
        QTest::addColumn<QJsonObject>("sent");
        QTest::addColumn<QJsonObject>("changed"); // what differs afterwards, stamps aside
        using O = QJsonObject;
        const QJsonArray links{O{{"modelId"_s, "k"_s}, {"entityIds"_s, QJsonArray{"e"_s}}}};
        QTest::newRow("name") << O{{"name"_s, "层"_s}} << O{{"name"_s, "层"_s}};
        QTest::newRow("empty name") << O{{"name"_s, ""_s}} << O{{"name"_s, ""_s}};
        QTest::newRow("dates") << O{{"startDate"_s, ""_s}, {"actualStartDate"_s, "2026-03-05 07:30"_s}}
                               << O{{"startDate"_s, ""_s},
                                    {"actualStartDate"_s, "2026-03-05T07:30:00.000"_s}};
        QTest::newRow("links become entity") << O{{"links"_s, links}} << O{{"entity"_s, links}};
        QTest::newRow("no links") << O{{"links"_s, QJsonArray()}} << O{{"entity"_s, QJsonArray()}};
        QTest::newRow("users") << O{{"userIds"_s, QJsonArray{"ann"_s}}, {"executeIds"_s, QJsonArray()}}
                               << O{{"userIds"_s, QJsonArray{"ann"_s}}};
        QTest::newRow("flag becomes a number")
            << O{{"displaySimulation"_s, true}} << O{{"displaySimulation"_s, 1}};
        QTest::newRow("numbers") << O{{"finishedPercentage"_s, 12.5}, {"planWorkload"_s, 0}}
                                 << O{{"finishedPercentage"_s, 12.5}, {"planWorkload"_s, 0}};
        QTest::newRow("start meets finish")
            << O{{"finishDate"_s, "2026-03-02T08:00:00.000"_s}}
            << O{{"finishDate"_s, "2026-03-02T08:00:00.000"_s}, {"milestone"_s, true}};
        QTest::newRow("row and parent") << O{{"id"_s, -1}, {"parentTaskID"_s, 5}, {"uniqueId"_s, 6}}
                                        << O{{"id"_s, -1}, {"parentTaskID"_s, 5}, {"uniqueId"_s, 6}};
        QTest::newRow("category") << O{{"category"_s, "c9"_s}} << O{{"category"_s, "c9"_s}};
        QTest::newRow("empty category") << O{{"category"_s, ""_s}} << O{};
        QTest::newRow("nothing") << O{} << O{};
        QTest::newRow("what it has already")
            << O{{"name"_s, "dig"_s}, {"startDate"_s, "2026-03-02 08:00"_s}} << O{};
        QTest::newRow("what clients cannot set")
            << O{{"_id"_s, "x"_s},     {"createdBy"_s, "x"_s}, {"updatedAt"_s, "2020-01-01"_s},
                 {"summary"_s, true},  {"planName"_s, "x"_s},  {"entity"_s, QJsonArray{1}},
                 {"documents"_s, true}}
            << O{};
        QTest::newRow("keys that nobody knows") << O{{"colour"_s, O{{"a"_s, 1}}}} << O{};
    }
    void changesKeyByKey()
    {
        QFETCH(QJsonObject, sent);
        QFETCH(QJsonObject, changed);
        const QByteArray plan = m_service.newPlan("keys"_s);
        for (const bool inList : {false, true}) {
            const QByteArray id = m_service.addNodes(plan, {"dig"_s}).first().toLatin1();
            QJsonObject expected = m_service.node(id);
            if (inList) {
                sent.insert("_id"_s, QString::fromLatin1(id));
            }
            const RawReply reply = inList ? m_service.send("PUT", "planNodes", listJson(QJsonArray{sent}))
                                          : m_service.send("PUT", "planNodes/" + id, jsonOf(sent));
            QCOMPARE(reply.status, 200);
            QJsonObject now = m_service.node(id);
            QCOMPARE(inList ? QJsonValue(objectOf(reply)) : QJsonValue(now),
                     inList ? QJsonValue(QJsonObject{{"count"_s, 1}}) : QJsonValue(objectOf(reply)));
            for (auto it = changed.begin(); it != changed.end(); ++it) {
                expected.insert(it.key(), it.value());
            }
            if (!changed.isEmpty()) {
                QVERIFY(now.value("updatedAt"_s).toString() >= expected.value("updatedAt"_s).toString());
                expected.insert("updatedAt"_s, now.value("updatedAt"_s));
            }
            QCOMPARE(now, expected);
        }
    }

    void refusesToChange_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("error");
        const auto row = [](const char* name, const QByteArray& path, const QByteArray& body, int status,
                            const char* error) {
            QTest::newRow(name) << path << body << status << QString::fromLatin1(error);
        };
        row("unknown node", "planNodes/gone", "{}", 404, "planNodeNotFound planNodeId");
        row("no JSON", "planNodes/ID", "x", 400, "badJson ");
        row("wrong type", "planNodes/ID", "{\"name\":1}", 400, "wrongType name");
        row("null", "planNodes/ID", "{\"name\":null}", 400, "wrongType name");
        row("bad date", "planNodes/ID", "{\"startDate\":\"x\"}", 400, "badDate startDate");
        row("another plan", "planNodes/ID", "{\"planId\":\"x\"}", 400, "planFixed planId");
        row("no plan", "planNodes/ID", "{\"planId\":\"\"}", 400, "planFixed planId");
        row("another project", "planNodes/ID", "{\"projectId\":\"x\"}", 400, "projectFixed projectId");
        row("unknown node in a list", "planNodes", "[{\"_id\":\"ID\",\"name\":\"n\"},{\"_id\":\"gone\"}]",
            404, "planNodeNotFound [1]._id");
        row("no id in a list", "planNodes", "[{\"_id\":\"ID\",\"name\":\"n\"},{\"name\":\"m\"}]", 400,
            "missingValue [1]._id");
        row("id is no text", "planNodes", "[{\"_id\":1}]", 400, "wrongType [0]._id");
        row("wrong type in a list", "planNodes",
            "[{\"_id\":\"ID\",\"name\":\"n\"},{\"_id\":\"ID\",\"predecessors\":[{\"Type\":\"a\"}]}]", 400,
            "wrongType [1].predecessors[0].Type");
        row("another plan in a list", "planNodes", "[{\"_id\":\"ID\",\"planId\":\"x\"}]", 400,
            "planFixed [0].planId");
        row("no list", "planNodes", "{}", 400, "badJson ");
        row("no objects", "planNodes", "[{\"_id\":\"ID\",\"name\":\"n\"},[]]", 400, "badJson [1]");
    }
    void refusesToChange()
    {
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        QFETCH(QString, error);
        const QByteArray id =
            m_service.addNodes(m_service.newPlan("refused changes"_s), {"dig"_s}).first().toLatin1();
        const QJsonObject before = m_service.node(id);
        const RawReply reply = m_service.send("PUT", path.replace("ID", id), body.replace("ID", id));
        QCOMPARE(reply.status, status);
        QCOMPARE(errorOf(reply), error);
        QCOMPARE(m_service.node(id), before);
    }

    void changesManyAtOnce()
    {
        const QByteArray plan = m_service.newPlan("batch"_s);
        const QStringList ids = m_service.addNodes(plan, {"a"_s, "b"_s, "c"_s});
        const QJsonArray changes{QJsonObject{{"_id"_s, ids.at(2)}, {"name"_s, "c2"_s}},
                                 QJsonObject{{"_id"_s, ids.at(0)}, {"name"_s, "a2"_s}},
                                 QJsonObject{{"_id"_s, ids.at(0)}, {"remark"_s, "r"_s}, {"name"_s, "a3"_s}}};
        const RawReply reply = m_service.send("PUT", "planNodes", listJson(changes));
        QCOMPARE(reply.body, QByteArray("{\"count\":3}"));
        QCOMPARE(namesOf(arrayOf(m_service.get("plans/" + plan + "/planNodes"))),
                 QStringList({"a3"_s, "b"_s, "c2"_s}));
        QCOMPARE(m_service.send("PUT", "planNodes", "[]").body, QByteArray("{\"count\":0}"));
    }

    void deletesOneAndMany()
    {
        const QByteArray plan = m_service.newPlan("delete"_s);
        QJsonObject successor = task("b"_s, 2, 1);
        successor.insert("predecessors"_s, QJsonArray{QJsonObject{{"SourcePlanNodeUniqueID"_s, 1}}});
        const QByteArray path = "plans/" + plan + "/planNodes";
        const QJsonArray created = arrayOf(
            m_service.send("POST", path, listJson(QJsonArray{task("a"_s, 1), successor, task("c"_s, 3)})));
        const QByteArray first = idOf(created.at(0).toObject());
        QCOMPARE(m_service.node(first).value("summary"_s), QJsonValue(true));
        QCOMPARE(m_service.send("DELETE", "planNodes/" + first).status, 204);
        QCOMPARE(errorOf(m_service.send("DELETE", "planNodes/" + first)), "planNodeNotFound planNodeId"_s);
        QCOMPARE(m_service.get("planNodes/" + first).status, 404);
        // What named it goes on naming it: it stands at the top now, and nobody changed it.
        QCOMPARE(m_service.node(idOf(created.at(1).toObject())), created.at(1).toObject());

        const QStringList ids = m_service.addNodes(plan, {"d"_s, "e"_s, "f"_s});
        const auto deleted = [&](const QByteArray& target) {
            return RawHttp(m_service.process.port()).request("DELETE", target);
        };
        QCOMPARE(deleted(idsParameter({ids.at(0), "gone"_s, QString(), ids.at(2), ids.at(2)})).status, 204);
        QCOMPARE(namesOf(arrayOf(m_service.get(path))), QStringList({"b"_s, "c"_s, "e"_s}));
        QCOMPARE(deleted(idsParameter({})).status, 204);
        for (const char* bad : {"", "?queryParam=", "?queryParam=x", "?queryParam=[]", "?queryParam={}",
                                "?queryParam={%22ids%22:1}", "?queryParam={%22ids%22:[1]}"}) {
            const RawReply reply = deleted(QByteArray("/task-service/planNodes") + bad);
            QCOMPARE(reply.status, 400);
            QCOMPARE(errorOf(reply), "badParameter queryParam"_s);
        }
        QCOMPARE(namesOf(arrayOf(m_service.get(path))), QStringList({"b"_s, "c"_s, "e"_s}));
    }

    void deletesTenThousandAtOnce()
    {
        const QByteArray plan = m_service.newPlan("delete many"_s);
        QStringList names;
        for (int i = 0; i < 10000; ++i) {
            names.append(QString::number(i));
        }
        const QStringList ids = m_service.addNodes(plan, names);
        QCOMPARE(RawHttp(m_service.process.port()).request("DELETE", idsParameter(ids.mid(1))).status, 204);
        QCOMPARE(namesOf(arrayOf(m_service.get("plans/" + plan + "/planNodes"))), QStringList{"0"_s});
    }

    void leavesThePlansStampAlone()
    {
        const QByteArray plan = m_service.newPlan("stamp"_s);
        const QByteArray list = "projects/stamp/plans";
        const QByteArray before = m_service.get(list).body;
        const QStringList ids = m_service.addNodes(plan, {"a"_s, "b"_s});
        QCOMPARE(m_service.send("PUT", "planNodes/" + ids.first().toLatin1(), "{\"name\":\"c\"}").status,
                 200);
        QCOMPARE(m_service.send("DELETE", "planNodes/" + ids.last().toLatin1()).status, 204);
        QCOMPARE(m_service.get(list).body, before);
    }

    void goesAlongWithThePlansCategory()
    {
        const QByteArray plan = m_service.newPlan("p1"_s, "c1"_s);
        const QByteArray list = "plans/" + plan + "/planNodes";
        QJsonObject apart = task("apart"_s, 2);
        apart.insert("category"_s, "c9"_s);
        QCOMPARE(m_service.send("POST", list, listJson(QJsonArray{task("along"_s, 1), apart})).status, 200);
        const QByteArray other = m_service.newPlan("p1"_s, "c1"_s);
        QCOMPARE(
            m_service
                .send("POST", "plans/" + other + "/planNodes", listJson(QJsonArray{task("of another"_s, 1)}))
                .status,
            200);

        for (const QString& category : {"c2"_s, QString(), "c3"_s}) {
            const QJsonArray before = arrayOf(m_service.get(list));
            QCOMPARE(m_service.send("PUT", "plans/" + plan, jsonOf({{"category"_s, category}})).status, 200);
            QJsonObject along = before.at(0).toObject();
            along.insert("category"_s, category);
            QCOMPARE(arrayOf(m_service.get(list)), (QJsonArray{along, before.at(1)}));
            const QByteArray inCategory = list + "?category=" + category.toUtf8();
            if (!category.isEmpty()) {
                QCOMPARE(namesOf(arrayOf(m_service.get(inCategory))), QStringList{"along"_s});
            }
        }
        QCOMPARE(namesOf(arrayOf(m_service.get("plans/" + other + "/planNodes?category=c1"))),
                 QStringList{"of another"_s});
    }

    void needsRights()
    {
        ServiceProcess service;
        QVERIFY2(service.start({"--create"_s}), qPrintable(service.failure()));
        const auto ask = [&](const QByteArray& token, const QByteArray& method, const QByteArray& path,
                             const QByteArray& body = QByteArray()) {
            return RawHttp(service.port()).request(method, "/task-service/" + path, body, token);
        };
        const auto tokenFor = [&](const QString& user, const QString& project, const QString& rights,
                                  const QString& category = QString()) {
            return bearer(service.createToken(user, project, rights, category));
        };
        const QByteArray maker = tokenFor("ann"_s, "p1"_s, "read=all,create,edit,delete"_s);
        const QByteArray own = tokenFor("bo"_s, "p1"_s, "read=own"_s);
        const QByteArray reader = tokenFor("cy"_s, "p1"_s, "read=all"_s);
        const QByteArray narrow = tokenFor("di"_s, "p1"_s, "read=all,create,edit,delete"_s, "c2"_s);
        const QByteArray other = tokenFor("ed"_s, "p2"_s, "read=all,create,edit,delete"_s);
        const QByteArray blind = tokenFor("fay"_s, "p1"_s, "create,edit,delete"_s);

        const QByteArray plan =
            idOf(objectOf(ask(maker, "POST", "plans", "{\"projectId\":\"p1\",\"category\":\"c1\"}")));
        const QByteArray path = "plans/" + plan + "/planNodes";
        QJsonObject mine = task("of bo"_s, 1);
        mine.insert("executeIds"_s, QJsonArray{"bo"_s});
        QJsonObject narrowed = task("in c2"_s, 2);
        narrowed.insert("category"_s, "c2"_s);
        const QByteArray batch = listJson(QJsonArray{mine, narrowed});
        const QJsonArray created = arrayOf(ask(maker, "POST", path, batch));
        QCOMPARE(created.first().toObject().value("createdBy"_s).toString(), "ann"_s);
        const QByteArray first = "planNodes/" + idOf(created.at(0).toObject());
        const QByteArray second = "planNodes/" + idOf(created.at(1).toObject());

        // Lists show what one may read.
        for (const QByteArray& list : {path, QByteArray("projects/p1/planNodes")}) {
            QCOMPARE(ask("", "GET", list).status, 401);
            QCOMPARE(errorOf(ask(other, "GET", list)), "rightMissing read"_s);
            QCOMPARE(errorOf(ask(blind, "GET", list)), "rightMissing read"_s);
            QCOMPARE(namesOf(arrayOf(ask(reader, "GET", list))), QStringList({"of bo"_s, "in c2"_s}));
            QCOMPARE(namesOf(arrayOf(ask(own, "GET", list))), QStringList{"of bo"_s});
            QCOMPARE(namesOf(arrayOf(ask(narrow, "GET", list))), QStringList{"in c2"_s});
            QCOMPARE(ask(own, "GET", list + "?only_count=true").body, QByteArray("{\"count\":1}"));
            QCOMPARE(namesOf(arrayOf(ask(own, "GET", list + "?list=received"))), QStringList{"of bo"_s});
            QCOMPARE(namesOf(arrayOf(ask(own, "GET", list + "?type=todo&state=unstart"))),
                     QStringList{"of bo"_s});
            QCOMPARE(namesOf(arrayOf(ask(reader, "GET", list + "?type=todo"))), QStringList());
            QCOMPARE(namesOf(arrayOf(ask(reader, "GET", list + "?list=post"))), QStringList());
            QCOMPARE(arrayOf(ask(maker, "GET", list + "?list=post")).size(), 2);
            QCOMPARE(arrayOf(ask(maker, "GET", list + "?list=received")).size(), 0);
        }
        // Another project's plan by its id, and this project's nodes under another project.
        QCOMPARE(
            arrayOf(ask(other, "GET", "projects/p2/planNodes?where={\"planId\":\"" + plan + "\"}")).size(),
            0);

        // Writing.
        const QByteArray one = "{\"planId\":\"" + plan + "\"}";
        for (const QByteArray& stranger : {own, reader, other}) {
            QCOMPARE(errorOf(ask(stranger, "POST", "planNodes", one)), "rightMissing create"_s);
            QCOMPARE(errorOf(ask(stranger, "POST", path, "[]")), "rightMissing create"_s);
            QCOMPARE(errorOf(ask(stranger, "POST", path, batch)), "rightMissing create"_s);
            QCOMPARE(errorOf(ask(stranger, "PUT", first, "{}")), "rightMissing edit"_s);
            QCOMPARE(errorOf(ask(stranger, "PUT", "planNodes", listJson(created))), "rightMissing edit"_s);
            QCOMPARE(errorOf(ask(stranger, "DELETE", first)), "rightMissing delete"_s);
            QCOMPARE(errorOf(RawHttp(service.port())
                                 .request("DELETE", idsParameter({QString::fromLatin1(first.mid(10))}), "",
                                          stranger)),
                     "rightMissing delete"_s);
        }
        QCOMPARE(ask("", "POST", path, batch).status, 401);
        QCOMPARE(ask("", "PUT", "planNodes", "[]").status, 401);
        // Rights in one category reach no further, not for one node of many and not by moving one.
        QCOMPARE(errorOf(ask(narrow, "POST", path, batch)), "rightMissing create"_s);
        QCOMPARE(ask(narrow, "POST", path, "[{\"category\":\"c2\"}]").status, 200);
        QCOMPARE(errorOf(ask(narrow, "PUT", second, "{\"category\":\"c1\"}")), "rightMissing edit"_s);
        QCOMPARE(errorOf(ask(narrow, "PUT", first, "{\"category\":\"c2\"}")), "rightMissing edit"_s);
        QCOMPARE(errorOf(ask(narrow, "PUT", "planNodes", listJson(created))), "rightMissing edit"_s);
        QCOMPARE(ask(narrow, "PUT", second, "{\"name\":\"x\"}").status, 200);
        QCOMPARE(RawHttp(service.port())
                     .request("DELETE",
                              idsParameter(
                                  {QString::fromLatin1(second.mid(10)), QString::fromLatin1(first.mid(10))}),
                              "", narrow)
                     .status,
                 403);
        QCOMPARE(ask(reader, "GET", second).status, 200); // all or nothing
        // One that may not read gets no reply that shows the node.
        QCOMPARE(errorOf(ask(blind, "PUT", second, "{\"name\":\"y\"}")), "rightMissing read"_s);
        QCOMPARE(objectOf(ask(reader, "GET", second)).value("name"_s).toString(), "x"_s);
        QCOMPARE(objectOf(ask(reader, "GET", second)).value("updatedBy"_s).toString(), "di"_s);
        QCOMPARE(ask(blind, "DELETE", second).status, 204);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }
};

QTEST_GUILESS_MAIN(TestPlanNodeChanges)
#include "TestPlanNodeChanges.moc"
