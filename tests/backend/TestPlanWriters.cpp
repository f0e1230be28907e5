// Who may write plans on the real process, several at a time, and what is left when it is killed.

#include "PlanRequests.h"
#include "ServiceProcess.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QtTest>

#include <memory>
#include <vector>

using namespace KvTest;

class TestPlanWriters : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;

    QJsonObject get(const QByteArray& path)
    {
        return objectOf(RawHttp(m_service.port()).get("/task-service/" + path));
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY2(m_service.start({"--create"_s}), qPrintable(m_service.failure())); }
    void cleanupTestCase() { QVERIFY2(m_service.stop(), qPrintable(m_service.failure())); }

    void largePlansTakeTurns()
    {
        QJsonArray nodes;
        for (int i = 0; i < 3000; ++i) {
            nodes.append(task("node %1"_s.arg(i), i + 1));
        }
        const QByteArray body = jsonOf({{"projectId"_s, "turns"_s}, {"projectData"_s, nodes}});
        std::vector<std::unique_ptr<RawHttp>> writers;
        for (int i = 0; i < 6; ++i) {
            writers.push_back(std::make_unique<RawHttp>(m_service.port()));
            writers.back()->send("POST /task-service/plans HTTP/1.1\r\nHost: x\r\nContent-Length: " +
                                 QByteArray::number(body.size()) + "\r\n\r\n" + body);
        }
        for (const auto& writer : writers) {
            const RawReply reply = writer->read();
            QCOMPARE(reply.status, 200);
            QCOMPARE(objectOf(reply).value("tasks"_s).toArray().size(), nodes.size());
        }
        QCOMPARE(get("projects/turns/plans?only_count=true").value("count"_s).toInt(), 6);
    }

    void twoWritersAreNeverHalfDone()
    {
        const QByteArray start =
            jsonOf({{"projectId"_s, "writers"_s}, {"name"_s, "start"_s}, {"projectFileId"_s, "start"_s}});
        const QJsonObject plan =
            objectOf(RawHttp(m_service.port()).request("POST", "/task-service/plans", start));
        const QByteArray path = "/task-service/plans/" + idOf(plan);
        RawHttp one(m_service.port());
        RawHttp two(m_service.port());
        const auto write = [&](RawHttp& http, const QString& text, bool both) {
            QJsonObject body{{"name"_s, text}};
            if (both) {
                body.insert("projectFileId"_s, text);
            }
            const QByteArray json = jsonOf(body);
            http.send("PUT " + path + " HTTP/1.1\r\nHost: x\r\nContent-Length: " +
                      QByteArray::number(json.size()) + "\r\n\r\n" + json);
        };
        for (int i = 0; i < 50; ++i) {
            write(one, "one %1"_s.arg(i), true);
            write(two, "two %1"_s.arg(i), true);
            QCOMPARE(one.read().status, 200);
            QCOMPARE(two.read().status, 200);
            const QJsonObject now = get("plans/" + idOf(plan));
            QCOMPARE(now.value("name"_s), now.value("projectFileId"_s));
        }
    }

    void survivesBeingKilledInTheMiddle()
    {
        ServiceProcess service;
        QVERIFY2(service.start({"--create"_s}), qPrintable(service.failure()));
        QJsonArray nodes;
        for (int i = 0; i < 4000; ++i) {
            nodes.append(task("node %1"_s.arg(i), i + 1));
        }
        const auto post = [&](const QString& name) {
            const QByteArray body =
                jsonOf({{"projectId"_s, "k"_s}, {"name"_s, name}, {"projectData"_s, nodes}});
            return "POST /task-service/plans HTTP/1.1\r\nHost: x\r\nContent-Length: " +
                   QByteArray::number(body.size()) + "\r\n\r\n" + body;
        };
        QElapsedTimer whole;
        whole.start();
        {
            RawHttp http(service.port());
            http.send(post("measured"_s));
            QCOMPARE(http.read().status, 200);
        }
        const qint64 usual = whole.elapsed();
        const quint32 seed = QRandomGenerator::system()->generate();
        QRandomGenerator random(seed);
        qInfo("seed %u, a plan takes %lld ms", seed, usual);
        QStringList acknowledged{"measured"_s};
        for (int round = 0; round < 5; ++round) {
            RawHttp http(service.port());
            http.send(post("round %1"_s.arg(round)));
            QElapsedTimer timer;
            timer.start();
            const qint64 moment = random.bounded(static_cast<int>(usual) + 20);
            while (timer.elapsed() < moment && !http.hasReply()) {
            }
            if (http.hasReply() && http.read().status == 200) {
                acknowledged.append("round %1"_s.arg(round));
            }
            service.kill();
            QVERIFY2(service.start(), qPrintable(service.failure()));
            const RawReply list = RawHttp(service.port()).get("/task-service/projects/k/plans");
            QStringList found;
            const QJsonArray plans = QJsonDocument::fromJson(list.body).array();
            for (const QJsonValue& plan : plans) {
                found.append(plan.toObject().value("name"_s).toString());
                const RawReply one =
                    RawHttp(service.port()).get("/task-service/plans/" + idOf(plan.toObject()));
                QCOMPARE(objectOf(one).value("tasks"_s).toArray().size(), nodes.size());
            }
            for (const QString& name : qAsConst(acknowledged)) {
                QVERIFY2(found.contains(name), qPrintable(name));
            }
        }
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void asksForRights()
    {
        ServiceProcess service;
        QVERIFY2(service.start({"--create"_s}), qPrintable(service.failure()));
        const QByteArray maker =
            bearer(service.createToken("ann"_s, "p1"_s, "read=own,create,edit,delete"_s));
        const QByteArray reader = bearer(service.createToken("bo"_s, "p1"_s, "read=all"_s));
        const QByteArray other = bearer(service.createToken("cy"_s, "p2"_s, "read=all,create,edit,delete"_s));
        const QByteArray narrow = bearer(service.createToken("di"_s, "p1"_s, "read=all,create"_s, "c1"_s));
        RawHttp http(service.port());
        const QByteArray body = "{\"projectId\":\"p1\",\"name\":\"x\",\"projectData\":[{}]}";
        QCOMPARE(http.request("POST", "/task-service/plans", body).status, 401);
        QCOMPARE(http.request("POST", "/task-service/plans", body, reader).status, 403);
        QCOMPARE(http.request("POST", "/task-service/plans", body, other).status, 403);
        QCOMPARE(http.request("POST", "/task-service/plans", body, narrow).status, 403);
        const RawReply made = http.request("POST", "/task-service/plans", body, maker);
        QCOMPARE(made.status, 200);
        QCOMPARE(objectOf(made).value("createdBy"_s).toString(), "ann"_s);
        const QByteArray path = "/task-service/plans/" + idOf(objectOf(made));
        const QByteArray foreign =
            "{\"projectId\":\"p1\",\"category\":\"c1\",\"projectData\":[{\"category\":\"c2\"}]}";
        QCOMPARE(errorOf(http.request("POST", "/task-service/plans", foreign, narrow)),
                 "rightMissing create"_s);

        const QByteArray list = "/task-service/projects/p1/plans";
        QCOMPARE(http.get(list).status, 401);
        QCOMPARE(http.get(list, other).status, 403);
        QCOMPARE(http.get(list + "?only_count=true", reader).body, QByteArray("{\"count\":1}"));
        QCOMPARE(http.get(list + "?only_count=true", maker).body, QByteArray("{\"count\":1}"));
        QCOMPARE(http.get(list + "?only_count=true", narrow).body, QByteArray("{\"count\":0}"));

        for (const QByteArray& stranger : {reader, other, narrow}) {
            QCOMPARE(http.request("PUT", path, "{\"name\":\"y\"}", stranger).status, 403);
            QCOMPARE(http.request("PUT", path + "/copy", "{}", stranger).status, 403);
            QCOMPARE(http.request("DELETE", path, QByteArray(), stranger).status, 403);
        }
        QCOMPARE(http.request("PUT", path, "{\"name\":\"y\"}").status, 401);
        const QByteArray blind = bearer(service.createToken("ed"_s, "p1"_s, "edit,create"_s));
        QCOMPARE(errorOf(http.request("PUT", path, "{\"name\":\"y\"}", blind)), "rightMissing read"_s);
        QCOMPARE(errorOf(http.get(list, blind)), "rightMissing read"_s);
        QCOMPARE(http.request("PUT", path + "/copy", "{}", maker).status, 200);
        const RawReply changed = http.request("PUT", path, "{\"name\":\"y\"}", maker);
        QCOMPARE(objectOf(changed).value("updatedBy"_s).toString(), "ann"_s);
        QCOMPARE(http.request("DELETE", path, QByteArray(), maker).status, 204);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }
};

QTEST_GUILESS_MAIN(TestPlanWriters)
#include "TestPlanWriters.moc"
