// Plans through the real process: creating, changing, copying, deleting, listing, and what happens in
// between.

#include "PlanRequests.h"
#include "ServiceProcess.h"
#include "Text.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using namespace KvTest;

class TestPlans : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;

    RawReply send(const QByteArray& method, const QByteArray& path, const QJsonObject& body = QJsonObject(),
                  const QByteArray& headers = QByteArray())
    {
        return RawHttp(m_service.port()).request(method, "/task-service/" + path, jsonOf(body), headers);
    }
    QJsonObject get(const QByteArray& id)
    {
        return objectOf(RawHttp(m_service.port()).get("/task-service/plans/" + id));
    }
    QJsonObject create(QJsonObject plan)
    {
        plan.insert("projectId"_s, "p1"_s);
        const RawReply reply = send("POST", "plans", plan);
        return reply.status == 200 ? objectOf(reply) : QJsonObject();
    }
    QStringList names(const QByteArray& project, const QString& where, const QByteArray& rest = QByteArray())
    {
        const RawReply reply = RawHttp(m_service.port())
                                   .get("/task-service/projects/" + project +
                                        "/plans?where=" + QUrl::toPercentEncoding(where) + rest);
        QStringList list;
        const QJsonArray plans = QJsonDocument::fromJson(reply.body).array();
        for (const QJsonValue& plan : plans) {
            list.append(plan.toObject().value("name"_s).toString());
        }
        return list;
    }
    static QString byName(const QString& name) { return QString::fromUtf8(jsonOf({{"name"_s, name}})); }

private Q_SLOTS:
    void initTestCase() { QVERIFY2(m_service.start({"--create"_s}), qPrintable(m_service.failure())); }
    void cleanupTestCase() { QVERIFY2(m_service.stop(), qPrintable(m_service.failure())); }

    void createsWhatIsSent()
    {
        QJsonObject child = task("Dig"_s, 12, 11);
        child.insert("_id"_s, "my node"_s);
        child.insert("planName"_s, "read-only"_s);
        const QJsonObject plan = create({{"name"_s, "Tower"_s},
                                         {"ranges"_s, QJsonArray{"r"_s}},
                                         {"projectData"_s, QJsonArray{task("Ground"_s, 11), child}}});
        QCOMPARE(plan.value("name"_s).toString(), "Tower"_s);
        QCOMPARE(plan.value("public"_s).toInt(), 100);
        QVERIFY(!plan.value("createdAt"_s).toString().isEmpty());
        QCOMPARE(plan.value("createdAt"_s), plan.value("updatedAt"_s));
        const QJsonArray tasks = plan.value("tasks"_s).toArray();
        QCOMPARE(tasks.size(), 2);
        const QJsonObject ground = tasks.at(0).toObject();
        QCOMPARE(ground.value("summary"_s), QJsonValue(true));
        QCOMPARE(ground.value("planName"_s).toString(), "Tower"_s);
        QCOMPARE(ground.value("planId"_s), plan.value("_id"_s));
        QCOMPARE(ground.value("id"_s).toInt(), 1);
        QCOMPARE(ground.value("displaySimulation"_s), QJsonValue(0));
        QCOMPARE(ground.value("entity"_s).toArray().size(), 1);
        QCOMPARE(ground.value("planWorkload"_s).toInt(), -1);
        QCOMPARE(idOf(ground).size(), 24);
        QCOMPARE(tasks.at(1).toObject().value("_id"_s).toString(), "my node"_s);
        QCOMPARE(get(idOf(plan)), plan);
        // The id is taken now: the next plan that brings it gets a new one.
        const QJsonObject second = create({{"projectData"_s, QJsonArray{child}}});
        const QJsonObject node = second.value("tasks"_s).toArray().first().toObject();
        QVERIFY(!idOf(node).isEmpty() && idOf(node) != "my node");
        QCOMPARE(get(idOf(plan)), plan);
    }

    void refuses_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("error");
        const auto row = [](const char* name, const QByteArray& members, const char* error,
                            int status = 400) {
            QTest::newRow(name) << QByteArray("{\"projectId\":\"p1\"," + members + "}") << status
                                << QString::fromLatin1(error);
        };
        QTest::newRow("no project") << QByteArray("{}") << 400 << "missingValue projectId"_s;
        QTest::newRow("no object") << QByteArray("[]") << 400 << "badJson "_s;
        QTest::newRow("cut off") << QByteArray("{\"projectId\":\"p1\",\"projectData\":[{\"name\":\"a\"}")
                                 << 400 << "badJson "_s;
        QTest::newRow("something behind") << QByteArray("{\"projectId\":\"p1\"} x") << 400 << "badJson "_s;
        row("name is a number", "\"name\":1", "wrongType name");
        row("name is null", "\"name\":null", "wrongType name");
        row("public is a fraction", "\"public\":1.5", "wrongType public");
        row("ranges hold a number", "\"ranges\":[1]", "wrongType ranges");
        row("nodes are no list", "\"projectData\":{}", "wrongType projectData");
        row("node is a number", "\"projectData\":[1]", "badJson projectData[0]");
        row("node is no JSON", "\"projectData\":[{},{\"a\"}]", "badJson projectData[1]");
        row("node nested too deep",
            "\"projectData\":[{\"x\":" + QByteArray(5000, '[') + QByteArray(5000, ']') + "}]",
            "badJson projectData[0]");
        row("start is no date", "\"projectData\":[{},{\"startDate\":\"2026-02-30\"}]",
            "badDate projectData[1].startDate");
        row("date with a zone", "\"projectData\":[{\"startDate\":\"2026-02-03T08:00:00Z\"}]",
            "badDate projectData[0].startDate");
        row("row is text", "\"projectData\":[{\"id\":\"1\"}]", "wrongType projectData[0].id");
        row("number too large", "\"projectData\":[{\"uniqueId\":3000000000}]",
            "wrongType projectData[0].uniqueId");
        row("lag is a number", "\"projectData\":[{\"predecessors\":[{},{\"Lag\":1}]}]",
            "wrongType projectData[0].predecessors[1].Lag");
        row("entities hold a number", "\"projectData\":[{\"links\":[{\"entityIds\":[1]}]}]",
            "wrongType projectData[0].links[0].entityIds");
        row("id twice", "\"projectData\":[{\"_id\":\"a\"},{\"_id\":\"a\"}]",
            "duplicateId projectData[1]._id");
        row("id too long", "\"projectData\":[{\"_id\":\"" + QByteArray(101, 'a') + "\"}]",
            "badId projectData[0]._id");
        row("null character", "\"name\":\"a\\u0000b\"", "badText name");
        row("half a surrogate pair", "\"name\":\"a\\ud800\"", "badText name");
        row("name too long", "\"name\":\"" + QByteArray(131073, 'a') + "\"", "textTooLong name");
        row("too many nodes", "\"projectData\":[" + QByteArray("{},").repeated(100000) + "{}]",
            "tooManyNodes projectData", 413);
    }
    // Names by which records are found have one limit on every database, and up to it they all fit.
    void namesThatIndexesKeep_data()
    {
        QTest::addColumn<int>("bytes");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("as long as may be") << 1000 << true;
        QTest::newRow("a byte longer") << 1001 << false;
        QTest::newRow("longer than an entry of any index") << 20000 << false;
    }
    void namesThatIndexesKeep()
    {
        QFETCH(int, bytes);
        QFETCH(bool, accepted);
        // Letters by lot, which no database can make shorter.
        QRandomGenerator random(static_cast<quint32>(bytes));
        const auto longName = [&] {
            QString name(bytes % 3, QLatin1Char('a'));
            while (name.toUtf8().size() < bytes) {
                name += QChar(static_cast<ushort>(random.bounded(0x4E00, 0x9FA5)));
            }
            return name;
        };
        const QString project = longName();
        const QString category = longName();
        RawHttp http(m_service.port());
        const auto answers = [&](const QByteArray& method, const QByteArray& target, const QByteArray& body,
                                 const QString& field) {
            const RawReply reply = http.request(method, target, body);
            return reply.status == (accepted ? 200 : 400) &&
                   errorOf(reply) == (accepted ? " "_s : "textTooLong "_s + field);
        };
        const QString here = accepted ? project : "here"_s;
        const QJsonObject plan = objectOf(http.request(
            "POST", "/task-service/plans",
            jsonOf({{"projectId"_s, here}, {"projectData"_s, QJsonArray{QJsonObject{{"name"_s, "n"_s}}}}})));
        const QByteArray node = idOf(plan.value("tasks"_s).toArray().first().toObject());
        const QByteArray inCategory = jsonOf({{"category"_s, category}});
        QVERIFY(answers("POST", "/task-service/plans", jsonOf({{"projectId"_s, project}}), "projectId"_s));
        QVERIFY(answers("POST", "/task-service/plans",
                        jsonOf({{"projectId"_s, here}, {"category"_s, category}}), "category"_s));
        QVERIFY(answers("POST", "/task-service/plans",
                        jsonOf({{"projectId"_s, here},
                                {"projectData"_s, QJsonArray{QJsonObject{{"category"_s, category}}}}}),
                        "projectData[0].category"_s));
        QVERIFY(
            answers("POST", "/task-service/planNodes", jsonOf({{"projectId"_s, project}}), "projectId"_s));
        QVERIFY(answers("POST", "/task-service/plans/" + idOf(plan) + "/planNodes", '[' + inCategory + ']',
                        "[0].category"_s));
        QVERIFY(answers("PUT", "/task-service/planNodes/" + node, inCategory, "category"_s));
        QVERIFY(answers("PUT", "/task-service/planNodes",
                        '[' + jsonOf({{"_id"_s, QString::fromLatin1(node)}, {"category"_s, category}}) + ']',
                        "[0].category"_s));
        QVERIFY(answers("PUT", "/task-service/plans/" + idOf(plan), inCategory, "category"_s));
        const ServiceRun token =
            ServiceProcess::run({"token"_s, "create"_s, "--database"_s, m_service.database(), "--user"_s,
                                 project, "--project"_s, "p"_s, "--rights"_s, "nonsense"_s});
        QCOMPARE(token.exitCode, accepted ? 1 : 2); // the rights are nonsense anyway
        QCOMPARE(token.errors.contains("--user has"), !accepted);
    }

    void refuses()
    {
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        QFETCH(QString, error);
        const int before = names("p1", "{}"_s).size();
        const RawReply reply = RawHttp(m_service.port()).request("POST", "/task-service/plans", body);
        QCOMPARE(errorOf(reply), error);
        QCOMPARE(reply.status, status);
        QCOMPARE(names("p1", "{}"_s).size(), before);
    }

    void keepsNames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("quotes") << "Tower \"A\" 'b' \\ `c`"_s;
        QTest::newRow("what URLs cut at") << "a&b=c%20#d?e+f/g"_s;
        QTest::newRow("lines") << "first\nsecond\tthird\r\n"_s;
        QTest::newRow("emoji") << "🏗️ 第2层 👩‍🔧"_s;
        QTest::newRow("SQL") << "'); DELETE FROM plans; --"_s;
        QTest::newRow("pattern") << "a.*(b[c]{2}$"_s;
        QTest::newRow("10,000 characters") << "十a"_s.repeated(5000);
    }
    void keepsNames()
    {
        QFETCH(QString, name);
        const QJsonObject plan = create({{"name"_s, name}, {"projectData"_s, QJsonArray{task(name, 1)}}});
        QCOMPARE(plan.value("name"_s).toString(), name);
        const QJsonObject node = plan.value("tasks"_s).toArray().first().toObject();
        QCOMPARE(node.value("name"_s).toString(), name);
        QCOMPARE(node.value("planName"_s).toString(), name);
        QCOMPARE(names("p1", byName(name)), QStringList{name});
        const QString quoted = QString::fromUtf8(jsonOf(
            {{"name"_s, QJsonObject{{"$regex"_s, "^\\Q"_s + name + "\\E$"_s}, {"$options"_s, "i"_s}}}}));
        QCOMPARE(names("p1", quoted), QStringList{name});
        const QJsonObject copy = objectOf(send("PUT", "plans/" + idOf(plan) + "/copy"));
        QCOMPARE(copy.value("name"_s).toString(), name + " (2)"_s);
    }

    void changesOnlyWhatIsSent()
    {
        const QJsonObject plan = create(
            {{"name"_s, "n"_s}, {"projectFileId"_s, "f"_s}, {"projectData"_s, QJsonArray{task("a"_s, 1)}}});
        const QByteArray path = "plans/" + idOf(plan);
        // Nothing differs: nothing changes.
        QCOMPARE(objectOf(send("PUT", path, {{"name"_s, "n"_s}})), plan);
        // Two hosts, two fields.
        QCOMPARE(send("PUT", path, {{"name"_s, "by one"_s}}).status, 200);
        QCOMPARE(send("PUT", path, {{"projectFileId"_s, "by two"_s}}).status, 200);
        const QJsonObject both = get(idOf(plan));
        QCOMPARE(both.value("name"_s).toString(), "by one"_s);
        QCOMPARE(both.value("projectFileId"_s).toString(), "by two"_s);
        QCOMPARE(both.value("createdAt"_s), plan.value("createdAt"_s));
        QCOMPARE(names("p1", byName("by one"_s)).size(), 1);
        QCOMPARE(both.value("tasks"_s).toArray().first().toObject().value("planName"_s).toString(),
                 "by one"_s);
        // One of two keys is wrong: neither is written.
        QCOMPARE(errorOf(send("PUT", path, {{"name"_s, "half"_s}, {"public"_s, "x"_s}})),
                 "wrongType public"_s);
        QCOMPARE(get(idOf(plan)), both);
        QCOMPARE(errorOf(send("PUT", path, {{"projectId"_s, "p2"_s}})), "projectFixed projectId"_s);
        QCOMPARE(errorOf(send("PUT", "plans/none", {{"name"_s, "x"_s}})), "planNotFound planId"_s);
    }

    void replacesTheNodes()
    {
        const QJsonObject plan =
            create({{"projectData"_s, QJsonArray{task("a"_s, 1), task("b"_s, 2), task("c"_s, 3)}}});
        const QJsonArray before = plan.value("tasks"_s).toArray();
        QJsonArray sent;
        for (int i : {2, 0}) {
            QJsonObject node = before.at(i).toObject();
            node.insert("links"_s, node.take("entity"_s));
            node.insert("id"_s, sent.size() + 1);
            node.insert("displaySimulation"_s, false);
            sent.append(node);
        }
        QJsonObject first = sent.at(1).toObject();
        first.insert("id"_s, 1); // as it was
        sent.replace(1, first);
        sent.append(task("new"_s, 4));
        const QJsonObject changed = objectOf(send("PUT", "plans/" + idOf(plan), {{"projectData"_s, sent}}));
        const QJsonArray after = changed.value("tasks"_s).toArray();
        QCOMPARE(after.size(), 3);
        QVERIFY(after.contains(before.at(0))); // untouched, its dates included
        QStringList left;
        for (const QJsonValue& node : after) {
            left.append(node.toObject().value("name"_s).toString());
        }
        left.sort();
        QCOMPARE(left, QStringList({"a"_s, "c"_s, "new"_s}));
        QCOMPARE(
            RawHttp(m_service.port()).get("/task-service/planNodes/" + idOf(before.at(1).toObject())).status,
            404);
        // A node that is wrong leaves everything as it was.
        sent.append(QJsonObject{{"name"_s, 7}});
        QCOMPARE(errorOf(send("PUT", "plans/" + idOf(plan), {{"name"_s, "x"_s}, {"projectData"_s, sent}})),
                 "wrongType projectData[3].name"_s);
        QCOMPARE(get(idOf(plan)), changed);
    }

    void copiesWithNewIds()
    {
        QJsonObject withGuid = task("a"_s, 11);
        withGuid.insert("GUID"_s, "5a3f7c10"_s);
        QJsonObject child = task("b"_s, 12, 11);
        child.insert("predecessors"_s, QJsonArray{QJsonObject{{"SourcePlanNodeUniqueID"_s, 11}}});
        child.insert("documentIds"_s, QJsonArray{"d1"_s});
        const QJsonObject plan =
            create({{"name"_s, "Copied"_s}, {"projectData"_s, QJsonArray{withGuid, child}}});
        const QJsonObject copy = objectOf(send("PUT", "plans/" + idOf(plan) + "/copy"));
        QCOMPARE(copy.value("name"_s).toString(), "Copied (2)"_s);
        QVERIFY(idOf(copy).size() == 24 && idOf(copy) != idOf(plan));
        const QJsonArray nodes = plan.value("tasks"_s).toArray();
        const QJsonArray copies = copy.value("tasks"_s).toArray();
        QCOMPARE(copies.size(), 2);
        for (int i = 0; i < 2; ++i) {
            QJsonObject node = nodes.at(i).toObject();
            QJsonObject other = copies.at(i).toObject();
            QCOMPARE(other.value("planId"_s), copy.value("_id"_s));
            QCOMPARE(other.value("planName"_s), copy.value("name"_s));
            QVERIFY(idOf(other).size() == 24 && idOf(other) != idOf(node));
            QVERIFY(!other.contains("GUID"_s));
            for (const char* key : {"_id", "planId", "planName", "GUID", "createdAt", "updatedAt"}) {
                node.remove(QLatin1String(key));
                other.remove(QLatin1String(key));
            }
            QCOMPARE(other, node);
        }
        QCOMPARE(get(idOf(plan)), plan);
        QCOMPARE(objectOf(send("PUT", "plans/" + idOf(copy) + "/copy")).value("name"_s).toString(),
                 "Copied (3)"_s);
        QCOMPARE(send("PUT", "plans/none/copy").status, 404);
    }

    void deletesWithTheNodes()
    {
        const QJsonObject plan = create({{"projectData"_s, QJsonArray{task("a"_s, 1)}}});
        const QByteArray node = idOf(plan.value("tasks"_s).toArray().first().toObject());
        const RawReply reply = send("DELETE", "plans/" + idOf(plan));
        QCOMPARE(reply.status, 204);
        QCOMPARE(reply.body, QByteArray());
        QCOMPARE(send("DELETE", "plans/" + idOf(plan)).status, 404);
        QCOMPARE(RawHttp(m_service.port()).get("/task-service/planNodes/" + node).status, 404);
    }

    void pages()
    {
        for (int i = 0; i < 7; ++i) {
            QVERIFY(!objectOf(send("POST", "plans",
                                   {{"projectId"_s, "pages"_s},
                                    {"name"_s, "n%1"_s.arg(i)},
                                    {"category"_s, i % 2 == 0 ? "even"_s : "odd"_s}}))
                         .isEmpty());
        }
        const QStringList all = names("pages", "{}"_s);
        QCOMPARE(all.size(), 7);
        QCOMPARE(names("pages", "{}"_s, "&skip=2&limit=3"), all.mid(2, 3));
        QCOMPARE(names("pages", "{}"_s, "&skip=9&limit=3"), QStringList());
        QCOMPARE(names("pages", "{}"_s, "&skip=0&limit=0"), QStringList());
        QCOMPARE(names("pages", "{}"_s, "&category=odd").size(), 3);
        const auto status = [&](const QByteArray& rest) {
            return RawHttp(m_service.port()).get("/task-service/projects/pages/plans?" + rest);
        };
        QCOMPARE(status("only_count=true").body, QByteArray("{\"count\":7}"));
        QCOMPARE(status("only_count=true&where=%7B%7D&category=even&limit=1").body,
                 QByteArray("{\"count\":4}"));
        QCOMPARE(errorOf(status("skip=-1")), "badParameter skip"_s);
        QCOMPARE(errorOf(status("limit=x")), "badParameter limit"_s);
        QCOMPARE(errorOf(status("where=%7B%22$near%22:1%7D")), "unknownOperator $near"_s);
        QString many = "{\"_id\":{\"$in\":[\"x\""_s;
        for (int i = 0; i < 10000; ++i) {
            many += ",\"%1\""_s.arg(i, 24, 16, QLatin1Char('0'));
        }
        QCOMPARE(status("only_count=true&where=" + QUrl::toPercentEncoding(many + "]}}"_s)).body,
                 QByteArray("{\"count\":0}"));
    }

    void answersHostileFiltersInTime_data()
    {
        QTest::addColumn<QString>("where");
        QTest::addColumn<QString>("answer");
        const QString found = "{\"count\":1}"_s;
        const QString none = "{\"count\":0}"_s;
        QTest::newRow("nested repetition") << "{\"name\":{\"$regex\":\"^(a+)+$\"}}"_s << none;
        QTest::newRow("nested repetition that fits") << "{\"name\":{\"$regex\":\"^(a+)+b$\"}}"_s << found;
        QTest::newRow("overlapping choices") << "{\"name\":{\"$regex\":\"^(a|aa|a*)*c$\"}}"_s << none;
        QTest::newRow("many optional letters")
            << "{\"name\":{\"$regex\":\"%1%2c\"}}"_s.arg("a?"_s.repeated(200), "a"_s.repeated(200)) << none;
        QTest::newRow("SQL everywhere")
            << "{\"name\":{\"$regex\":\"' OR 1=1 --\"},\"category\":\"' OR '1'='1\",\"createdBy\":{\"$in\":[\"x') OR 1=1 --\"]}}"_s
            << none;
    }
    void answersHostileFiltersInTime()
    {
        QFETCH(QString, where);
        QFETCH(QString, answer);
        if (names("hostile", "{}"_s).isEmpty()) {
            const QString name = "a"_s.repeated(100000) + "b"_s;
            QCOMPARE(send("POST", "plans", {{"projectId"_s, "hostile"_s}, {"name"_s, name}}).status, 200);
        }
        QElapsedTimer timer;
        timer.start();
        const RawReply reply = RawHttp(m_service.port())
                                   .get("/task-service/projects/hostile/plans?only_count=true&where=" +
                                        QUrl::toPercentEncoding(where));
        QCOMPARE(QString::fromUtf8(reply.body), answer);
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    }
};

QTEST_GUILESS_MAIN(TestPlans)
#include "TestPlans.moc"
