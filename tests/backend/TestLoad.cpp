// Many clients at a time, clients that are slow or say nothing, and a stop in the middle of all that.

#include "PlanRequests.h"
#include "ServiceProcess.h"
#include "Text.h"
#include "store/OpenStore.h"

#include <support/HardReset.h>

#include <QSet>
#include <QtTest>

#include <sys/resource.h>

#include <atomic>
#include <csignal>
#include <memory>
#include <thread>
#include <vector>

using namespace KvTest;

namespace {

using Clients = std::vector<std::unique_ptr<RawHttp>>;

Clients connected(const ServiceProcess& service, int count)
{
    Clients clients;
    for (int i = 0; i < count; ++i) {
        clients.push_back(std::make_unique<RawHttp>(service.port()));
    }
    return clients;
}

double numberOf(const ServiceProcess& service, const QByteArray& name)
{
    const QList<QByteArray> lines = RawHttp(service.port()).get("/metrics").body.split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith(name + ' ')) {
            return line.mid(name.size() + 1).toDouble();
        }
    }
    return -1;
}

QByteArray planOf(ServiceProcess& service, const QStringList& sample)
{
    return service.seed(sample).value("planId"_s).toString().toLatin1();
}

/// The log's lines on requests for this path or those below it.
QList<QJsonObject> logged(const ServiceProcess& service, const QString& path)
{
    QList<QJsonObject> found;
    const QList<QByteArray> lines = service.log().split('\n');
    for (const QByteArray& line : lines) {
        const QJsonObject entry = QJsonDocument::fromJson(line).object();
        if (entry.value("path"_s).toString().startsWith(path)) {
            found.append(entry);
        }
    }
    return found;
}

} // namespace

class TestLoad : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // The clients of a test are all in this process.
        rlimit files = {};
        QCOMPARE(::getrlimit(RLIMIT_NOFILE, &files), 0);
        files.rlim_cur = std::min<rlim_t>(files.rlim_max, 4096);
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &files), 0);
        QVERIFY2(files.rlim_cur >= 2000, "the system allows too few open files");
    }

    void aThousandIdleClientsAnd64AtWork()
    {
        ServiceProcess service;
        const QByteArray plan = planOf(service, {"--floors"_s, "1"_s});
        QVERIFY2(service.start({"--read-timeout"_s, "300"_s}), qPrintable(service.failure()));
        const Clients idle = connected(service, 1000);
        for (const auto& client : idle) {
            QCOMPARE(client->get("/health").status, 200);
        }
        const Clients active = connected(service, 64);
        const RawReply expected = RawHttp(service.port()).get("/task-service/plans/" + plan);
        QCOMPARE(expected.status, 200);
        for (int round = 0; round < 10; ++round) {
            for (const auto& client : active) {
                client->send(RawHttp::getText("/task-service/plans/" + plan));
            }
            for (const auto& client : active) {
                const RawReply reply = client->read();
                QCOMPARE(reply.status, 200);
                QVERIFY(reply.body == expected.body);
            }
        }
        QVERIFY(numberOf(service, "planservice_connections") >= 1064);
        // Those who were idle meanwhile are still there.
        for (const auto& client : idle) {
            QCOMPARE(client->get("/health").status, 200);
        }
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void slowSenders_data()
    {
        QTest::addColumn<QByteArray>("beginning");
        QTest::addColumn<QByteArray>("more");
        QTest::newRow("of a head") << QByteArray("GET /health HTTP/1.1\r\nX: ") << QByteArray("a");
        QTest::newRow("of headers") << QByteArray("GET /health HTTP/1.1\r\n") << QByteArray("X");
        QTest::newRow("of a body")
            << QByteArray("PUT /user-service/settings/k HTTP/1.1\r\nContent-Length: 100000\r\n\r\n")
            << QByteArray("1");
        QTest::newRow("of chunks") << QByteArray("PUT /user-service/settings/k HTTP/1.1\r\n"
                                                 "Transfer-Encoding: chunked\r\n\r\n")
                                   << QByteArray("1\r\n1\r\n");
        QTest::newRow("of nothing") << QByteArray() << QByteArray();
    }
    // They are closed although they never stop sending, and keep nobody waiting until then.
    void slowSenders()
    {
        QFETCH(QByteArray, beginning);
        QFETCH(QByteArray, more);
        ServiceProcess service;
        QVERIFY2(service.start({"--create"_s, "--read-timeout"_s, "1"_s}), qPrintable(service.failure()));
        const Clients slow = connected(service, 100);
        for (const auto& client : slow) {
            client->send(beginning);
        }
        int answered = 0;
        const auto allAreClosed = [&] {
            answered += RawHttp(service.port()).get("/health").status == 200 ? 1 : 0;
            bool all = true;
            for (const auto& client : slow) {
                if (!client->waitForClose(0)) {
                    client->send(more);
                    all = false;
                }
            }
            return all;
        };
        QTRY_VERIFY_WITH_TIMEOUT(allAreClosed(), 60000);
        QVERIFY(answered > 1);
        // Asked once each time: the connection that asks is one, and the one before takes a moment to go.
        QVERIFY(QTest::qWaitFor([&] { return numberOf(service, "planservice_connections") == 1; }));
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void halfRequestsAreBounded()
    {
        ServiceProcess service;
        QVERIFY2(service.start({"--create"_s, "--request-memory"_s, "1"_s}), qPrintable(service.failure()));
        const QByteArray head =
            "PUT /user-service/settings/k HTTP/1.1\r\nHost: x\r\nContent-Length: 2000000\r\n\r\n";
        auto first = std::make_unique<RawHttp>(service.port());
        first->send(head + QByteArray(900000, ' '));
        QTRY_VERIFY(numberOf(service, "planservice_unanswered_bytes") > 900000);
        RawHttp second(service.port());
        second.send(head + QByteArray(400000, ' '));
        const RawReply refused = second.read();
        QCOMPARE(refused.status, 503);
        QCOMPARE(errorOf(refused), "busy "_s);
        QVERIFY(refused.headers.contains("retry-after"));
        QVERIFY(second.waitForClose());
        // What is small finds room all the same.
        const QByteArray little = "{\"value\":\"" + QByteArray(50000, 'a') + "\"}";
        QCOMPARE(RawHttp(service.port()).request("PUT", "/user-service/settings/little", little).status, 200);
        // And the next large one when the first is gone.
        QTRY_VERIFY(numberOf(service, "planservice_unanswered_bytes") < 1000000);
        first->send(QByteArray(100000, ' '));
        QTRY_VERIFY(numberOf(service, "planservice_unanswered_bytes") > 1000000);
        first.reset();
        QTRY_VERIFY(numberOf(service, "planservice_unanswered_bytes") < 1000);
        QCOMPARE(RawHttp(service.port())
                     .request("PUT", "/user-service/settings/large",
                              "{\"value\":1" + QByteArray(200000, ' ') + "}")
                     .status,
                 200);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void readersThatNeverRead()
    {
        ServiceProcess service;
        const QByteArray plan = planOf(service, {"--nodes"_s, "20000"_s});
        QVERIFY2(service.start({"--reply-memory"_s, "1"_s, "--reply-timeout"_s, "1"_s, "--workers"_s, "2"_s}),
                 qPrintable(service.failure()));
        const QByteArray path = "/task-service/plans/" + plan;
        std::vector<std::unique_ptr<QTcpSocket>> deaf;
        for (int i = 0; i < 4; ++i) {
            deaf.push_back(std::make_unique<QTcpSocket>());
            deaf.back()->setReadBufferSize(1);
            deaf.back()->connectToHost(QHostAddress(QHostAddress::LocalHost), service.port());
            QVERIFY(deaf.back()->waitForConnected());
            deaf.back()->write(RawHttp::getText(path));
            QVERIFY(deaf.back()->waitForBytesWritten());
        }
        // One after the other fills the memory, is given up, and makes room for the next; small ones go on.
        int answered = 0;
        QTRY_VERIFY_WITH_TIMEOUT((answered += RawHttp(service.port()).get("/health").status == 200 ? 1 : 0,
                                  logged(service, QString::fromLatin1(path)).size() == 4),
                                 60000);
        QVERIFY(answered > 1);
        const QList<QJsonObject> lines = logged(service, QString::fromLatin1(path));
        for (const QJsonObject& line : lines) {
            QCOMPARE(line.value("delivered"_s), QJsonValue(false));
        }
        const RawReply reply = RawHttp(service.port()).get(path);
        QCOMPARE(reply.status, 200);
        QVERIFY(reply.body.endsWith("}]}"));
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void clientsThatAreGoneBeforeTheyAreAccepted()
    {
        ServiceProcess service;
        QVERIFY2(service.start({"--create"_s, "--connections"_s, "2"_s}), qPrintable(service.failure()));
        QCOMPARE(RawHttp(service.port()).get("/health").status, 200);
        const auto process = static_cast<pid_t>(service.processId());
        QCOMPARE(::kill(process, SIGSTOP), 0);
        for (int i = 0; i < 10; ++i) {
            QTcpSocket gone;
            gone.connectToHost(QHostAddress(QHostAddress::LocalHost), service.port());
            QVERIFY(gone.waitForConnected());
            resetHard(gone);
        }
        QCOMPARE(::kill(process, SIGCONT), 0);
        for (int i = 0; i < 5; ++i) {
            QCOMPARE(RawHttp(service.port()).get("/health").status, 200);
        }
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void crowdsThatAreRefusedLeaveRoomForOthers()
    {
        ServiceProcess service;
        QVERIFY2(service.start({"--create"_s, "--connections"_s, "8"_s}), qPrintable(service.failure()));
        // More than may linger at a time: each is told, closed, and never keeps a place.
        for (int i = 0; i < 400; ++i) {
            RawHttp http(service.port());
            http.send("NONSENSE\r\n\r\n");
            QVERIFY(http.hasReply() || http.read().status == 400 || http.waitForClose(0));
        }
        QCOMPARE(RawHttp(service.port()).get("/health").status, 200);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void aStopLosesNothingThatWasAccepted()
    {
        ServiceProcess service;
        QVERIFY2(service.start({"--create"_s}), qPrintable(service.failure()));
        // This one sends the second half of its request after the stop has begun.
        RawHttp late(service.port());
        const QByteArray body = "{\"value\":\"" + QByteArray(100000, 'a') + "\"}";
        late.send("PUT /user-service/settings/late HTTP/1.1\r\nHost: x\r\nContent-Length: " +
                  QByteArray::number(body.size()) + "\r\n\r\n" + body.left(50000));
        QTRY_VERIFY(numberOf(service, "planservice_unanswered_bytes") > 50000);

        constexpr int writers = 16;
        std::atomic<int> written{0};
        std::vector<QStringList> acknowledged(writers);
        std::vector<std::thread> threads;
        for (int writer = 0; writer < writers; ++writer) {
            threads.emplace_back([&, writer] {
                RawHttp http(service.port());
                for (int i = 0;; ++i) {
                    const QByteArray key = QByteArray::number(writer) + '-' + QByteArray::number(i);
                    const RawReply reply = http.request("PUT", "/user-service/settings/" + key,
                                                        "{\"value\":" + QByteArray::number(i) + "}");
                    if (reply.status != 200) {
                        return;
                    }
                    acknowledged[static_cast<std::size_t>(writer)].append(QString::fromLatin1(key));
                    ++written;
                }
            });
        }
        while (written < 300) {
            std::this_thread::yield();
        }
        service.terminate();
        const auto nobodyIsTaken = [&] {
            QTcpSocket socket;
            socket.connectToHost(QHostAddress(QHostAddress::LocalHost), service.port());
            return !socket.waitForConnected();
        };
        QTRY_VERIFY(nobodyIsTaken());
        late.send(body.mid(50000));
        QCOMPARE(late.read().status, 200);
        for (std::thread& thread : threads) {
            thread.join();
        }
        QVERIFY2(service.waitForEnd(), qPrintable(service.failure()));

        const auto store = PlanService::connectStore(service.databaseFile());
        int all = 1; // the late one
        QVERIFY(store->userSetting(QString(), "late"_s).size() > 100000);
        for (const QStringList& keys : acknowledged) {
            all += keys.size();
            for (const QString& key : keys) {
                QCOMPARE(store->userSetting(QString(), key), key.section(QLatin1Char('-'), 1).toUtf8());
            }
        }
        // Each request that the service took on was answered, and the answer is one that its client has.
        const QList<QJsonObject> lines = logged(service, "/user-service/settings/"_s);
        QCOMPARE(lines.size(), all);
        for (const QJsonObject& line : lines) {
            QCOMPARE(line.value("status"_s), QJsonValue(200));
            QCOMPARE(line.value("delivered"_s), QJsonValue(true));
        }
    }

    // While the service stops, one of its threads may be about to take a connection.
    void aStopIsNotDisturbedByNewcomers()
    {
        for (int round = 0; round < 5; ++round) {
            ServiceProcess service;
            QVERIFY2(service.start({"--create"_s}), qPrintable(service.failure()));
            const quint16 port = service.port();
            std::atomic<int> taken{0};
            std::vector<std::thread> newcomers;
            for (int i = 0; i < 4; ++i) {
                newcomers.emplace_back([&taken, port] {
                    for (;;) {
                        QTcpSocket socket;
                        socket.connectToHost(QHostAddress(QHostAddress::LocalHost), port);
                        if (!socket.waitForConnected()) {
                            return;
                        }
                        resetHard(socket);
                        ++taken;
                    }
                });
            }
            // Whatever comes of it, the service ends, and with it the threads.
            const bool crowded = QTest::qWaitFor([&] { return taken > 100; }, 20000);
            const bool stopped = service.stop();
            service.kill();
            for (std::thread& newcomer : newcomers) {
                newcomer.join();
            }
            QVERIFY(crowded);
            QVERIFY2(stopped, qPrintable(service.failure()));
        }
    }

    void aStopDoesNotWaitForWhoSaysNoMore()
    {
        ServiceProcess service;
        QVERIFY2(service.start({"--create"_s, "--read-timeout"_s, "300"_s}), qPrintable(service.failure()));
        RawHttp half(service.port());
        half.send("PUT /user-service/settings/k HTTP/1.1\r\nContent-Length: 1000\r\n\r\n");
        QTRY_VERIFY(numberOf(service, "planservice_unanswered_bytes") > 60);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
        QVERIFY(half.waitForClose());
    }
};

QTEST_GUILESS_MAIN(TestLoad)
#include "TestLoad.moc"
