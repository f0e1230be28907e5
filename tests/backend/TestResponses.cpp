// Responses on plan nodes through the real process: what is kept, what is refused, and how a node moves
// along.

#include "PlanRequests.h"
#include "ServiceProcess.h"
#include "Text.h"

#include <QtTest>

#include <thread>

using namespace KvTest;

namespace {

QString text(const QJsonObject& object, const char* key)
{
    return object.value(QLatin1String(key)).toString();
}

/// "percentage|start|finish" of a node or a response; "-" is not set.
QStringList progressOf(const QJsonObject& object, const char* percentage)
{
    const double percent = object.value(QLatin1String(percentage)).toDouble(-1);
    QStringList parts{percent < 0 ? "-"_s : QString::number(percent)};
    for (const char* key : {"actualStartDate", "actualFinishDate"}) {
        parts += text(object, key).isEmpty() ? "-"_s : text(object, key);
    }
    return parts;
}

/// The members that such a text stands for; "-" leaves a member away.
QJsonObject withProgress(const QString& progress, const QString& percentage)
{
    const QStringList parts = progress.split(QLatin1Char('|'));
    QJsonObject object;
    if (parts.at(0) != "-"_s) {
        object.insert(percentage, parts.at(0).toDouble());
    }
    if (parts.at(1) != "-"_s) {
        object.insert("actualStartDate"_s, parts.at(1));
    }
    if (parts.at(2) != "-"_s) {
        object.insert("actualFinishDate"_s, parts.at(2));
    }
    return object;
}

} // namespace

class TestResponses : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    std::unique_ptr<RawHttp> m_http;
    QString m_document; ///< of the sample project

    QByteArray createNode(QJsonObject node = QJsonObject(), const QString& project = "p1"_s)
    {
        node.insert("projectId"_s, project);
        const RawReply reply =
            m_http->request("POST", "/task-service/plans",
                            jsonOf({{"projectId"_s, project}, {"projectData"_s, QJsonArray{node}}}));
        return idOf(objectOf(reply).value("tasks"_s).toArray().first().toObject());
    }
    QJsonObject node(const QByteArray& id) { return objectOf(m_http->get("/task-service/planNodes/" + id)); }
    RawReply respond(const QByteArray& id, const QByteArray& body)
    {
        return m_http->request("POST", "/task-service/planNodes/" + id + "/responses", body);
    }
    QJsonArray responses(const QByteArray& id, const QByteArray& query = "?order=createdAt&expand=true")
    {
        return QJsonDocument::fromJson(
                   m_http->get("/task-service/planNodes/" + id + "/responses" + query).body)
            .array();
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QJsonObject seeded = m_service.seed();
        QVERIFY2(!seeded.isEmpty(), qPrintable(m_service.failure()));
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
        m_http = std::make_unique<RawHttp>(m_service.port());
        const QByteArray fourth = seeded.value("planId"_s).toString().left(16).toLatin1() + "00000004";
        m_document = node(fourth).value("documentIds"_s).toArray().first().toString();
        QVERIFY(!m_document.isEmpty());
    }
    void cleanupTestCase() { QVERIFY2(m_service.stop(), qPrintable(m_service.failure())); }

    void keepsWhatIsSent()
    {
        const QByteArray id = createNode({}, "sample-project"_s);
        const QJsonArray media{
            QJsonObject{{"fileId"_s, "f1"_s}, {"thumbnail"_s, "t1"_s}, {"time"_s, 12}},
            QJsonObject{{"fileId"_s, QJsonValue()}, {"thumbnail"_s, "lost"_s}, {"time"_s, 0}},
            QJsonObject{{"fileId"_s, "f2"_s}, {"thumbnail"_s, QJsonValue()}},
        };
        const QJsonObject sent{{"hostId"_s, QString::fromLatin1(id)},
                               {"remark"_s, "钢筋 \"bound\"\n第2层"_s},
                               {"percentage"_s, 40},
                               {"documentIds"_s, QJsonArray{m_document}},
                               {"actualStartDate"_s, "2026-03-02"_s},
                               {"actualFinishDate"_s, ""_s},
                               {"media"_s, media},
                               {"_id"_s, "mine"_s},
                               {"createdBy"_s, "somebody"_s}};
        const RawReply reply = respond(id, jsonOf(sent));
        QCOMPARE(reply.status, 200);
        const QJsonObject kept = objectOf(reply);
        QCOMPARE(idOf(kept).size(), 24);
        QCOMPARE(text(kept, "hostId"), QString::fromLatin1(id));
        QCOMPARE(text(kept, "remark"), text(sent, "remark"));
        QCOMPARE(kept.value("percentage"_s), QJsonValue(40));
        QCOMPARE(text(kept, "actualStartDate"), "2026-03-02T00:00:00.000"_s);
        QCOMPARE(text(kept, "actualFinishDate"), ""_s);
        QCOMPARE(text(kept, "createdBy"), ""_s); // nobody's name without tokens
        QCOMPARE(text(kept, "createdAt").size(), 23);
        QCOMPARE(kept.value("documentIds"_s).toArray(), QJsonArray{m_document});
        const QJsonArray documents = kept.value("documents"_s).toArray();
        QCOMPARE(documents.size(), 1);
        QCOMPARE(text(documents.first().toObject(), "_id"), m_document);
        QCOMPARE(text(documents.first().toObject(), "suffix"), "pdf"_s);
        const QJsonArray withFiles{media.first(),
                                   QJsonObject{{"fileId"_s, "f2"_s}, {"thumbnail"_s, ""_s}, {"time"_s, 0}}};
        QCOMPARE(kept.value("media"_s).toArray(), withFiles);
        QCOMPARE(responses(id), QJsonArray{kept});
        QJsonObject unexpanded = kept;
        unexpanded.remove("documents"_s);
        QCOMPARE(responses(id, ""), QJsonArray{unexpanded});
        QCOMPARE(responses(id, "?expand=false"), QJsonArray{unexpanded});
    }

    void readsNullAsNotSet()
    {
        const QByteArray id = createNode();
        const QJsonObject kept = objectOf(respond(id, R"({"hostId":null,"remark":"","percentage":0,)"
                                                      R"("documentIds":[],"actualStartDate":"",)"
                                                      R"("actualFinishDate":"","media":[]})"));
        QCOMPARE(text(kept, "hostId"), QString::fromLatin1(id));
        QCOMPARE(progressOf(node(id), "finishedPercentage"), QStringList({"-"_s, "-"_s, "-"_s}));
    }

    void movesTheNodeAlong_data()
    {
        QTest::addColumn<QString>("before"); // percentage|start|finish of the node
        QTest::addColumn<QString>("sent");
        QTest::addColumn<QString>("after"); // NOW: when the response was made
        const QString a = "2026-03-02T08:00:00.000"_s;
        const QString b = "2026-03-09T17:00:00.000"_s;
        const QString c = "2026-03-20T17:00:00.000"_s;
        const QString future = "9000-01-01T08:00:00.000"_s;
        const auto row = [&](const char* name, const char* before, const char* sent, const char* after) {
            const auto filled = [&](const char* progress) {
                return QString::fromLatin1(progress)
                    .replace("A"_s, a)
                    .replace("B"_s, b)
                    .replace("C"_s, c)
                    .replace("F"_s, future);
            };
            QTest::newRow(name) << filled(before) << filled(sent) << filled(after);
        };
        row("a word only", "30|A|-", "-|-|-", "30|A|-");
        row("a word on what is finished", "100|A|B", "-|-|-", "100|A|B");
        row("first percent start it", "-|-|-", "5|-|-", "5|NOW|-");
        row("start as reported", "-|-|-", "5|A|-", "5|A|-");
        row("start alone", "-|-|-", "-|A|-", "-|A|-");
        row("start corrected", "30|B|-", "40|A|-", "40|A|-");
        row("further", "30|A|-", "60|-|-", "60|A|-");
        row("a correction downwards", "60|A|-", "20|-|-", "20|A|-");
        // A client has no other way to report no percentage than 0.
        row("0 percent report none", "60|A|-", "0|-|-", "60|A|-");
        row("0 percent on what is finished", "100|A|B", "0|-|-", "100|A|B");
        row("0 percent on what nobody began", "-|-|-", "0|-|-", "-|-|-");
        row("0 percent and a start", "60|B|-", "0|A|-", "60|A|-");
        row("0 percent and a finish", "60|A|-", "0|-|B", "100|A|B");
        row("100 percent finish it now", "60|A|-", "100|-|-", "100|A|NOW");
        row("100 percent of what had not begun", "-|-|-", "100|-|-", "100|NOW|NOW");
        row("100 percent with a finish", "60|A|-", "100|-|B", "100|A|B");
        row("100 percent keep the finish there is", "100|A|B", "100|-|-", "100|A|B");
        row("100 percent and a later finish", "100|A|B", "100|-|C", "100|A|C");
        row("100 percent of what begins later", "0|F|-", "100|-|-", "100|F|F");
        row("a finish makes 100 percent", "60|A|-", "80|-|B", "100|A|B");
        row("a finish alone", "60|A|-", "-|-|B", "100|A|B");
        row("a finish without any start", "-|-|-", "-|-|B", "100|B|B");
        row("a finish ahead of the clock", "-|-|-", "-|-|F", "100|NOW|F");
        row("both dates", "-|-|-", "100|A|B", "100|A|B");
        row("both dates, moved to before the old ones", "100|C|C", "100|A|B", "100|A|B");
        row("less than 100 percent opens it again", "100|A|B", "90|-|-", "90|A|-");
    }
    void movesTheNodeAlong()
    {
        QFETCH(QString, before);
        QFETCH(QString, sent);
        QFETCH(QString, after);
        QJsonObject planned = withProgress(before, "finishedPercentage"_s);
        planned.insert("name"_s, "Dig"_s);
        planned.insert("userIds"_s, QJsonArray{"ann"_s});
        const QByteArray id = createNode(planned);
        const QJsonObject was = node(id);
        const RawReply reply = respond(id, jsonOf(withProgress(sent, "percentage"_s)));
        QCOMPARE(reply.status, 200);
        const QString now = text(objectOf(reply), "createdAt");
        const QJsonObject is = node(id);
        QCOMPARE(progressOf(is, "finishedPercentage").join(QLatin1Char('|')), after.replace("NOW"_s, now));
        // What the response says stays as it was said, and nothing else of the node changes.
        QCOMPARE(progressOf(responses(id).first().toObject(), "percentage").mid(1),
                 sent.split(QLatin1Char('|')).mid(1));
        QJsonObject rest = is;
        for (const char* key : {"finishedPercentage", "actualStartDate", "actualFinishDate", "updatedAt"}) {
            rest.insert(QLatin1String(key), was.value(QLatin1String(key)));
        }
        QCOMPARE(rest, was);
        QVERIFY(before == after ? text(is, "updatedAt") == text(was, "updatedAt")
                                : text(is, "updatedAt") >= now);
    }

    void refuses_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("error");
        const auto row = [](const char* name, const QByteArray& body, const char* error, int status = 400) {
            QTest::newRow(name) << body << status << QString::fromLatin1(error);
        };
        row("no JSON", "{\"remark\"", "badJson ");
        row("no object", "[]", "badJson ");
        row("nested too deep", "{\"media\":" + QByteArray(5000, '[') + QByteArray(5000, ']') + "}",
            "badJson ");
        row("too large", "{\"remark\":\"" + QByteArray(1024 * 1024, 'a') + "\"}", "bodyTooLarge ", 413);
        row("remark too long", "{\"remark\":\"" + QByteArray(131073, 'a') + "\"}", "textTooLong remark");
        row("remark is null", "{\"remark\":null}", "wrongType remark");
        row("null character", "{\"remark\":\"a\\u0000\"}", "badText remark");
        row("percentage over 100", "{\"percentage\":101}", "outOfRange percentage");
        row("percentage below 0", "{\"percentage\":-1}", "outOfRange percentage");
        row("percentage is a fraction", "{\"percentage\":99.5}", "wrongType percentage");
        row("percentage is text", "{\"percentage\":\"50\"}", "wrongType percentage");
        row("percentage is null", "{\"percentage\":null}", "wrongType percentage");
        row("percentage is huge", "{\"percentage\":1e300}", "wrongType percentage");
        row("start is no date", "{\"actualStartDate\":\"2026-02-30\"}", "badDate actualStartDate");
        row("finish with a zone", "{\"actualFinishDate\":\"2026-02-03T08:00:00Z\"}",
            "badDate actualFinishDate");
        row("finish is a number", "{\"actualFinishDate\":20260203}", "wrongType actualFinishDate");
        row("finish before start", R"({"actualStartDate":"2026-03-05","actualFinishDate":"2026-03-04"})",
            "badDate actualFinishDate");
        row("finish before the node's start", R"({"actualFinishDate":"2026-02-01"})",
            "badDate actualFinishDate");
        row("another node", R"({"hostId":"elsewhere"})", "otherNode hostId");
        row("host is a number", R"({"hostId":1})", "wrongType hostId");
        row("unknown document", R"({"documentIds":["none"]})", "documentNotFound documentIds[0]");
        row("document of another project", R"({"documentIds":["DOCUMENT"]})",
            "documentNotFound documentIds[0]");
        row("documents hold a number", R"({"documentIds":[1]})", "wrongType documentIds");
        row("documents are text", R"({"documentIds":"d"})", "wrongType documentIds");
        row("too many documents", "{\"documentIds\":[" + QByteArray("\"d\",").repeated(1000) + "\"d\"]}",
            "tooMany documentIds");
        row("media are an object", R"({"media":{}})", "wrongType media");
        row("medium is text", R"({"media":[{},"f"]})", "wrongType media[1]");
        row("file is a number", R"({"media":[{"fileId":7}]})", "wrongType media[0].fileId");
        row("time is text", R"({"media":[{"fileId":"f"},{"fileId":"g","time":"1"}]})",
            "wrongType media[1].time");
        row("too many media", "{\"media\":[" + QByteArray("{},").repeated(1000) + "{}]}", "tooMany media");
    }
    void refuses()
    {
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        QFETCH(QString, error);
        const QByteArray id = createNode(withProgress("30|2026-03-02|-"_s, "finishedPercentage"_s));
        const QJsonObject before = node(id);
        const RawReply reply = respond(id, body.replace("DOCUMENT", m_document.toLatin1()));
        QCOMPARE(errorOf(reply), error);
        QCOMPARE(reply.status, status);
        QCOMPARE(responses(id), QJsonArray());
        QCOMPARE(node(id), before);
    }

    void movesANodeWithoutAPlan()
    {
        const RawReply alone =
            m_http->request("POST", "/task-service/planNodes", R"({"projectId":"p1","name":"alone"})");
        const QByteArray id = idOf(objectOf(alone));
        QCOMPARE(respond(id, R"({"percentage":70})").status, 200);
        QCOMPARE(node(id).value("finishedPercentage"_s), QJsonValue(70));
        QCOMPARE(node(id).value("planId"_s), objectOf(alone).value("planId"_s));
    }

    void refusesAStartAfterTheFinish()
    {
        const QByteArray id = createNode(withProgress("100|2026-03-02|2026-03-04"_s, "finishedPercentage"_s));
        QCOMPARE(errorOf(respond(id, R"({"percentage":100,"actualStartDate":"2026-03-05"})")),
                 "badDate actualStartDate"_s);
        QCOMPARE(responses(id), QJsonArray());
    }

    void knowsNoOtherOrderAndNoOtherNode()
    {
        const QByteArray id = createNode();
        QCOMPARE(errorOf(m_http->get("/task-service/planNodes/" + id + "/responses?order=percentage")),
                 "badParameter order"_s);
        QCOMPARE(errorOf(m_http->get("/task-service/planNodes/none/responses")),
                 "planNodeNotFound planNodeId"_s);
        QCOMPARE(errorOf(respond("none", "{}")), "planNodeNotFound planNodeId"_s);
        QCOMPARE(errorOf(m_http->get("/task-service/planNodes//responses")), "emptyParameter planNodeId"_s);
        QCOMPARE(responses(id), QJsonArray());
    }

    void manyAtOnceComeInOneOrder()
    {
        const QByteArray id = createNode();
        constexpr int clients = 4;
        constexpr int each = 25;
        std::vector<std::thread> threads;
        for (int client = 0; client < clients; ++client) {
            threads.emplace_back([&, client] {
                RawHttp http(m_service.port());
                for (int i = 0; i < each; ++i) {
                    http.request("POST", "/task-service/planNodes/" + id + "/responses",
                                 "{\"percentage\":" + QByteArray::number(1 + client * each + i % 99) +
                                     ",\"remark\":\"" + QByteArray::number(client) + ' ' +
                                     QByteArray::number(i) + "\"}");
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        const QJsonArray all = responses(id);
        QCOMPARE(all.size(), clients * each);
        QString before;
        QVector<int> next(clients, 0);
        for (const QJsonValue& value : all) {
            const QJsonObject response = value.toObject();
            QVERIFY(before <= text(response, "createdAt"));
            before = text(response, "createdAt");
            // Each client's come in the order in which they were sent.
            const QStringList remark = text(response, "remark").split(QLatin1Char(' '));
            QCOMPARE(remark.at(1).toInt(), next[remark.at(0).toInt()]++);
        }
        // The node stands where the last response left it: what was written went with what moved it.
        const QJsonObject last = all.last().toObject();
        QCOMPARE(node(id).value("finishedPercentage"_s).toInt(), last.value("percentage"_s).toInt());
        QCOMPARE(text(node(id), "actualFinishDate"),
                 last.value("percentage"_s).toInt() == 100 ? text(last, "createdAt") : ""_s);
        QCOMPARE(text(node(id), "actualStartDate"), text(all.first().toObject(), "createdAt"));
    }

    void goWithTheirNodeAndStayThroughACrash()
    {
        const QByteArray gone = createNode();
        const QByteArray kept = createNode();
        for (const QByteArray& id : {gone, kept}) {
            QCOMPARE(respond(id, R"({"percentage":100})").status, 200);
        }
        const QJsonArray before = responses(kept);
        const QJsonObject moved = node(kept);
        QCOMPARE(m_http->request("DELETE", "/task-service/planNodes/" + gone).status, 204);
        m_service.kill();
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
        m_http = std::make_unique<RawHttp>(m_service.port());
        QCOMPARE(responses(kept), before);
        QCOMPARE(node(kept), moved);
        QCOMPARE(m_http->get("/task-service/planNodes/" + gone + "/responses").status, 404);
        // A copy of the plan takes the progress along, and not what was said about it.
        const QByteArray plan = text(moved, "planId").toLatin1();
        const QJsonObject copy =
            objectOf(m_http->request("PUT", "/task-service/plans/" + plan + "/copy", "{}"))
                .value("tasks"_s)
                .toArray()
                .first()
                .toObject();
        QCOMPARE(copy.value("finishedPercentage"_s), QJsonValue(100));
        QCOMPARE(responses(idOf(copy)), QJsonArray());
    }

    // The last one: from the first token on the requests above need one.
    void isSignedByTheTokensUser()
    {
        const QByteArray id = createNode();
        const QByteArray token = m_service.createToken("ann"_s, "p1"_s, "read=all,edit"_s);
        const RawReply reply = m_http->request("POST", "/task-service/planNodes/" + id + "/responses",
                                               R"({"percentage":50,"createdBy":"bo"})", bearer(token));
        QCOMPARE(text(objectOf(reply), "createdBy"), "ann"_s);
        const QJsonObject moved = objectOf(m_http->get("/task-service/planNodes/" + id, bearer(token)));
        QCOMPARE(text(moved, "updatedBy"), "ann"_s);
        QCOMPARE(text(moved, "createdBy"), ""_s);
    }
};

QTEST_GUILESS_MAIN(TestResponses)
#include "TestResponses.moc"
