// What those who run the service see of it: numbers and log.

#include "PlanRequests.h"
#include "ServiceProcess.h"
#include "http/WorkerPool.h"
#include "store/OpenStore.h"
#include "store/SqliteDatabase.h"

#include <QRegularExpression>
#include <QSemaphore>
#include <QSet>
#include <QtTest>

#include <csignal>
#include <memory>

using namespace KvTest;

namespace {

/// Every series of the numbers, as `name{labels}`, with its value.
QMap<QByteArray, double> seriesOf(const QByteArray& text)
{
    QMap<QByteArray, double> series;
    const QList<QByteArray> lines = text.split('\n');
    for (const QByteArray& line : lines) {
        if (!line.isEmpty() && !line.startsWith('#')) {
            const int blank = line.lastIndexOf(' ');
            series.insert(line.left(blank), line.mid(blank + 1).toDouble());
        }
    }
    return series;
}

QByteArray requestsSeries(const QByteArray& method, const QByteArray& route, int status)
{
    return "planservice_requests_total{method=\"" + method + "\",route=\"" + route + "\",status=\"" +
           QByteArray::number(status) + "\"}";
}

const QByteArray settingRoute = "/user-service/settings/{key}";

} // namespace

class TestWatching : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;

    QMap<QByteArray, double> numbers() { return seriesOf(RawHttp(m_service.port()).get("/metrics").body); }

    QList<QJsonObject> logLines() const
    {
        QList<QJsonObject> entries;
        const QList<QByteArray> lines = m_service.log().split('\n');
        for (const QByteArray& line : lines) {
            if (!line.isEmpty()) {
                entries.append(QJsonDocument::fromJson(line).object());
            }
        }
        return entries;
    }

    /// The line on the request with this id; a line comes when its reply is out, so a little later than that.
    QJsonObject lineOf(const QByteArray& id)
    {
        QJsonObject found;
        const auto look = [&] {
            const QList<QJsonObject> lines = logLines();
            for (const QJsonObject& line : lines) {
                if (line.value("request"_s).toString().toLatin1() == id && line.contains("status"_s)) {
                    found = line;
                }
            }
            return !found.isEmpty();
        };
        return QTest::qWaitFor(look) ? found : QJsonObject();
    }

private Q_SLOTS:
    void init()
    {
        QVERIFY(!m_service.seed({"--floors"_s, "1"_s, "--if-missing"_s}).isEmpty());
        QVERIFY2(m_service.start({"--workers"_s, "2"_s}), qPrintable(m_service.failure()));
    }

    void countsByRouteAndStatus()
    {
        RawHttp http(m_service.port());
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(http.request("PUT", "/user-service/settings/k" + QByteArray::number(i), "{\"value\":1}")
                         .status,
                     200);
        }
        QCOMPARE(http.request("PUT", "/user-service/settings/k", "{\"value\":").status, 400);
        QCOMPARE(http.get("/user-service/settings/k0").status, 200);
        RawHttp unreadable(m_service.port());
        unreadable.send("NONSENSE\r\n\r\n");
        QCOMPARE(unreadable.read().status, 400);

        QMap<QByteArray, double> now;
        const QByteArray seconds = "planservice_request_seconds_count{method=\"PUT\",route=\"" + settingRoute;
        QTRY_VERIFY((now = numbers()).value(seconds + "\"}") == 4);
        QCOMPARE(now.value(requestsSeries("PUT", settingRoute, 200)), 3.0);
        QCOMPARE(now.value(requestsSeries("PUT", settingRoute, 400)), 1.0);
        QTRY_COMPARE((now = numbers()).value(requestsSeries("GET", settingRoute, 200)), 1.0);
        QTRY_COMPARE((now = numbers()).value(requestsSeries("other", "other", 400)), 1.0);
        // One that was not read has no time; one that led nowhere has.
        const QByteArray elsewhere = "planservice_request_seconds_count{method=\"other\",route=\"other\"}";
        QVERIFY(!now.contains(elsewhere));
        QCOMPARE(http.get("/nowhere").status, 404);
        QTRY_COMPARE((now = numbers()).value(elsewhere), 1.0);
        QCOMPARE(now.value(requestsSeries("other", "other", 400)), 1.0);
        QVERIFY(now.value("planservice_received_bytes_total") >= 3 * 11 + 9);
        QVERIFY(now.value("planservice_sent_bytes_total") > 3 * 11);
        QVERIFY(now.value("planservice_database_seconds_count") >= 4);
        QVERIFY(now.value("planservice_database_seconds_sum") > 0);
        QVERIFY(now.value("process_resident_memory_bytes") > 1 << 20);
        QCOMPARE(now.value("planservice_workers"), 2.0);
        QCOMPARE(now.value("planservice_queue_length"), 0.0);
        QVERIFY(now.contains("planservice_build_info{version=\"" PLANSERVICE_VERSION "\"}"));
        // The last bucket holds them all.
        QCOMPARE(now.value("planservice_request_seconds_bucket{method=\"PUT\",route=\"" + settingRoute +
                           "\",le=\"+Inf\"}"),
                 4.0);
    }

    void countsThoseWhoAreConnected()
    {
        std::vector<std::unique_ptr<RawHttp>> clients;
        for (int i = 0; i < 5; ++i) {
            clients.push_back(std::make_unique<RawHttp>(m_service.port()));
            QCOMPARE(clients.back()->get("/health").status, 200);
        }
        QCOMPARE(seriesOf(clients.front()->get("/metrics").body).value("planservice_connections"), 5.0);
        clients.resize(2);
        QTRY_COMPARE(seriesOf(clients.front()->get("/metrics").body).value("planservice_connections"), 2.0);
        // One that is sent away because of what it said is gone, too.
        clients.back()->send("NONSENSE\r\n\r\n");
        QCOMPARE(clients.back()->read().status, 400);
        QTRY_COMPARE(seriesOf(clients.front()->get("/metrics").body).value("planservice_connections"), 1.0);
    }

    void isPrometheusText()
    {
        RawHttp http(m_service.port());
        QCOMPARE(http.get("/health").status, 200);
        const RawReply reply = http.get("/metrics");
        QCOMPARE(reply.headers.value("content-type"), QByteArray("text/plain; version=0.0.4; charset=utf-8"));
        QVERIFY(reply.body.endsWith('\n'));
        static const QRegularExpression line(
            "^(# HELP [a-z_]+ .+|# TYPE [a-z_]+ (counter|gauge|histogram)|"
            "[a-z_]+(\\{[a-z]+=\"[^\"\\\\]*\"(,[a-z]+=\"[^\"\\\\]*\")*\\})? [-+0-9.e]+)$"_s);
        const QStringList lines = QString::fromUtf8(reply.body).chopped(1).split(QLatin1Char('\n'));
        for (const QString& text : lines) {
            QVERIFY2(line.match(text).hasMatch(), qPrintable(text));
        }
    }

    void clientsAddNoSeries()
    {
        RawHttp http(m_service.port());
        const auto ask = [&](int i) {
            const QByteArray text = QByteArray::number(i);
            http.get("/task-service/plans/made-up-" + text);
            http.get("/made-up/" + text + "%22%7D%201%0Aforged%201");
            http.request("MKCOL", "/task-service/plans/" + text);
            http.get("/user-service/settings/made-up-" + text,
                     "X-Request-Id: made-up-" + text + "\r\nUser-Agent: made-up\r\n");
        };
        ask(0);
        const QByteArray found = requestsSeries("GET", settingRoute, 200);
        QTRY_COMPARE(numbers().value(found), 1.0);
        QTRY_COMPARE(numbers().value(requestsSeries("GET", "/metrics", 200)) > 1, true);
        const QList<QByteArray> before = numbers().keys();
        for (int i = 1; i < 40; ++i) {
            ask(i);
        }
        QTRY_COMPARE(numbers().value(found), 40.0);
        const RawReply after = http.get("/metrics");
        QCOMPARE(seriesOf(after.body).keys(), before);
        QVERIFY(!after.body.contains("made-up") && !after.body.contains("forged") &&
                !after.body.contains("MKCOL"));
        QCOMPARE(seriesOf(after.body).value(requestsSeries("GET", "/task-service/plans/{planId}", 404)),
                 40.0);
    }

    void theQueueIsSeen()
    {
        const QString file = m_service.databaseFile();
        QSemaphore begun;
        QSemaphore goOn;
        PlanService::WorkerPool pool(1, 10, [file] { return PlanService::connectStore(file); });
        QCOMPARE(pool.load().running, std::size_t(0));
        for (int i = 0; i < 4; ++i) {
            QVERIFY(pool.add([&](PlanService::Store&) {
                begun.release();
                goOn.acquire();
            }));
        }
        begun.acquire();
        QCOMPARE(pool.load().running, std::size_t(1));
        QCOMPARE(pool.load().waiting, std::size_t(3));
        goOn.release(4);
        pool.finish();
        QCOMPARE(pool.load().running, std::size_t(0));
        QCOMPARE(pool.load().waiting, std::size_t(0));
    }

    void aWorkerThatWaitsIsSeen()
    {
        PlanService::SqliteDatabase other(m_service.databaseFile());
        other.beginWriting();
        RawHttp waiting(m_service.port());
        waiting.send("PUT /user-service/settings/k HTTP/1.1\r\nContent-Length: 11\r\n\r\n{\"value\":1}");
        // The one that waits for the database, and the one that answers this.
        QTRY_COMPARE(numbers().value("planservice_busy_workers"), 2.0);
        other.rollback();
        QCOMPARE(waiting.read().status, 200);
    }

    void requestsHaveNames()
    {
        RawHttp http(m_service.port());
        QSet<QByteArray> ids;
        for (int i = 0; i < 20; ++i) {
            const RawReply reply = http.get(i % 2 == 0 ? "/health" : "/elsewhere", "X-Request-Id: mine\r\n");
            const QByteArray id = reply.headers.value("x-request-id");
            QVERIFY2(QRegularExpression("^[0-9a-f]{8}-[0-9]+$"_s).match(QString::fromLatin1(id)).hasMatch(),
                     id.constData());
            ids.insert(id);
        }
        QCOMPARE(ids.size(), 20);
        const QJsonObject line = lineOf(*ids.begin());
        QVERIFY(line.value("path"_s) == QJsonValue("/health"_s) ||
                line.value("path"_s) == QJsonValue("/elsewhere"_s));
        const QByteArray before = *ids.begin();
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
        const QByteArray after = RawHttp(m_service.port()).get("/health").headers.value("x-request-id");
        QVERIFY(after.left(8) != before.left(8));
    }

    void linesTellWhoDidWhat()
    {
        RawHttp http(m_service.port());
        const QByteArray sent = "{\"value\":\"first\"}";
        const RawReply stored = http.request("PUT", "/user-service/settings/my%20key", sent);
        QJsonObject line = lineOf(stored.headers.value("x-request-id"));
        QCOMPARE(line.value("route"_s).toString(), QString::fromLatin1(settingRoute));
        QCOMPARE(line.value("path"_s).toString(), "/user-service/settings/my%20key"_s);
        QCOMPARE(line.value("user"_s).toString(), QString());
        QCOMPARE(line.value("received"_s).toInt(), sent.size());
        QCOMPARE(line.value("bytes"_s).toInt(), stored.body.size());
        QVERIFY(line.value("databaseMicroseconds"_s).toInt() > 0);
        QVERIFY(line.value("microseconds"_s).toInt() >= line.value("databaseMicroseconds"_s).toInt());

        line = lineOf(http.get("/elsewhere").headers.value("x-request-id"));
        QCOMPARE(line.value("status"_s).toInt(), 404);
        QCOMPARE(line.value("route"_s).toString(), QString());
    }

    void troubleNamesItsRequest()
    {
        PlanService::SqliteDatabase other(m_service.databaseFile());
        other.beginWriting();
        const RawReply reply =
            RawHttp(m_service.port()).request("PUT", "/user-service/settings/k", "{\"value\":\"topSecret\"}");
        QCOMPARE(reply.status, 503);
        const QByteArray id = reply.headers.value("x-request-id");
        QCOMPARE(lineOf(id).value("status"_s).toInt(), 503);
        bool told = false;
        const QList<QJsonObject> lines = logLines();
        for (const QJsonObject& line : lines) {
            told = told || (line.contains("error"_s) && line.value("request"_s).toString().toLatin1() == id);
        }
        QVERIFY(told);
        QVERIFY(!m_service.log().contains("topSecret"));
    }

    void hostileTextForgesNoLine()
    {
        ServiceProcess service;
        QVERIFY(!service.seed({"--floors"_s, "1"_s}).isEmpty());
        const QString user = "ann\"}\n{\"forged\":true,\"user\":\"root\u2028\u001b[2J"_s;
        const QByteArray token = service.createToken(user, "p\n{\"forged\":true}"_s, "read=all"_s);
        QVERIFY2(!token.isEmpty(), qPrintable(service.failure()));
        QVERIFY2(service.start(), qPrintable(service.failure()));
        const int before = service.log().count('\n');
        RawHttp http(service.port());
        const QByteArray path = "/task-service/plans/%0A%7B%22forged%22:true%7D\xff\xfe\"}";
        QList<RawReply> replies;
        replies << http.get("/user-service/settings/k", bearer(token))
                << http.get("/user-service/settings/k", bearer(token + "wrong"))
                << http.get("/task-service/plans/x?where=whereSecret%0A", bearer(token))
                << http.get(path, "Cookie: cookieSecret\r\nAuthorization: Basic basicSecret\r\n");
        QTRY_COMPARE(service.log().count('\n') - before, replies.size());
        const QList<QByteArray> lines = service.log().split('\n');
        int users = 0;
        for (const QByteArray& line : lines) {
            if (!line.isEmpty()) {
                const QJsonDocument entry = QJsonDocument::fromJson(line);
                QVERIFY2(entry.isObject() && !entry.object().contains("forged"_s), line.constData());
                users += entry.object().value("user"_s).toString() == user ? 1 : 0;
                for (const char byte : line) {
                    QVERIFY2(static_cast<unsigned char>(byte) >= 0x20, line.constData());
                }
            }
        }
        QCOMPARE(users, 2);
        QVERIFY(!service.log().contains(token) && !service.log().contains("Secret"));
    }

    void theLogGoesOnInANewFile()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath("access.log"_s);
        const QString old = folder.filePath("access.log.1"_s);
        QVERIFY2(m_service.start({"--log"_s, path}), qPrintable(m_service.failure()));
        const auto contains = [](const QString& name, const QByteArray& text) {
            QFile file(name);
            return file.open(QIODevice::ReadOnly) && file.readAll().contains(text);
        };
        RawHttp http(m_service.port());
        http.get("/first");
        QTRY_VERIFY(contains(path, "/first"));
        QVERIFY(QFile::rename(path, old));
        ::kill(static_cast<pid_t>(m_service.processId()), SIGHUP);
        QTRY_VERIFY(QFile::exists(path));
        http.get("/second");
        QTRY_VERIFY(contains(path, "/second"));
        QVERIFY(!contains(old, "/second"));

        // Where there can be no new file the old one goes on, and says so.
        const QString moved = folder.path() + "-moved"_s;
        QVERIFY(QDir().rename(folder.path(), moved));
        ::kill(static_cast<pid_t>(m_service.processId()), SIGHUP);
        QTRY_VERIFY(contains(moved + "/access.log"_s, "cannot go on in a new log"));
        http.get("/third");
        QTRY_VERIFY(contains(moved + "/access.log"_s, "/third"));
        QVERIFY(QDir().rename(moved, folder.path()));
        QVERIFY2(m_service.stop(), qPrintable(m_service.failure()));
    }
};

QTEST_GUILESS_MAIN(TestWatching)
#include "TestWatching.moc"
