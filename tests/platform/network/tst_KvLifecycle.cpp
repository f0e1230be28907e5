// Before, at and after the end of the application: every wait ends at once, and nothing crashes or stalls.

#include "Exchange.h"

#include <KvNetwork/KvBaseProxy.h>

#include <support/ScriptedServer.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QPointer>
#include <QtCore/QProcess>
#include <QtCore/QTimer>
#include <QtNetwork/QNetworkReply>
#include <QtTest/QTest>

#include <cstdlib>
#include <functional>
#include <memory>

using KvTest::Reply;

namespace {

// The default timeout is 30 s: what ends before this was not ended by it.
const int atOnceMs = 5000;

Reply stalled()
{
    return Reply::json(QJsonObject()).with(Reply::StallBeforeHeaders);
}

/// A QCoreApplication for the length of a test function.
class Application
{
public:
    Application()
        : m_application(m_count, m_arguments)
    {
    }

private:
    int m_count = 1;
    char m_name[5] = "test";
    char* m_arguments[2] = {m_name, nullptr};
    QCoreApplication m_application;
};

Exchange getNowhere()
{
    return Exchange::get(QStringLiteral("http://127.0.0.1:1/plans/p1?where={}"));
}

void verifyNotSent(const Exchange& exchange)
{
    QVERIFY(!exchange.isSuccessful);
    QCOMPARE(exchange.execResult, -1);
    QCOMPARE(exchange.reportCount, 1);
    QCOMPARE(exchange.report.category, KvNetworkReport::Aborted);
    QCOMPARE(exchange.report.path, QStringLiteral("/plans/p1"));
    QCOMPARE(exchange.report.method, QStringLiteral("GET"));
    QVERIFY(exchange.elapsedMs < atOnceMs);
}

} // namespace

class tst_KvLifecycle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noApplicationYet();
    void quitDuringTheWait_data();
    void quitDuringTheWait();
    void waitAfterQuitInTheSameSlot();
    void callsAfterTheApplicationQuit();
    void unfinishedReplyEndsWhenTheApplicationQuits();
    void applicationRunsAgainAfterQuit();
    void applicationDestroyedWithARequestOnItsWay();
    void loopOutlivesTheApplication();
    void secondApplicationWorks();
    void noApplicationAnyMore();
    void processEndsWithARequestOnItsWay_data();
    void processEndsWithARequestOnItsWay();
};

void tst_KvLifecycle::noApplicationYet()
{
    QVERIFY(QCoreApplication::instance() == nullptr);
    QVERIFY(NetworkManager::instance().get(QStringLiteral("http://127.0.0.1:1/")) == nullptr);
    verifyNotSent(getNowhere());
    QJsonObject value{{QStringLiteral("old"), 1}};
    QVERIFY(!KvBaseProxy::getUserSetting(QStringLiteral("key"), value));
    QCOMPARE(value, QJsonObject());
}

void tst_KvLifecycle::quitDuringTheWait_data()
{
    QTest::addColumn<int>("depth");
    QTest::newRow("one wait") << 1;
    QTest::newRow("nested three deep") << 3;
}

void tst_KvLifecycle::quitDuringTheWait()
{
    QFETCH(int, depth);
    Application application;
    KvTest::ScriptedServer server;
    server.setHandler([](const KvTest::Request&) { return stalled(); });
    connect(
        &server, &KvTest::ScriptedServer::requestReceived, &server,
        [depth](int count) {
            if (count == depth)
                QCoreApplication::quit();
        },
        Qt::QueuedConnection);
    ReportRecorder recorder;
    QElapsedTimer clock;
    clock.start();
    int failed = 0;
    std::function<void(int)> call = [&](int level) {
        NetworkEventLoop loop(NetworkManager::instance().get(server.baseUrl() + QString::number(level)));
        if (level < depth)
            QTimer::singleShot(0, this, [&call, level] { call(level + 1); });
        failed += loop.exec() == -1 && !loop.isSuccessful() ? 1 : 0;
    };
    QTimer::singleShot(0, this, [&] { call(1); });
    QCoreApplication::exec();

    QCOMPARE(failed, depth);
    QCOMPARE(recorder.reports.size(), depth);
    for (const KvNetworkReport& report : qAsConst(recorder.reports))
        QCOMPARE(report.category, KvNetworkReport::Aborted);
    QVERIFY(clock.elapsed() < atOnceMs);
}

void tst_KvLifecycle::waitAfterQuitInTheSameSlot()
{
    Application application;
    KvTest::ScriptedServer server;
    server.setHandler([](const KvTest::Request&) { return stalled(); });
    QList<Exchange> exchanges;
    QTimer::singleShot(0, this, [&] {
        QCoreApplication::quit();
        for (int i = 0; i < 3; ++i)
            exchanges.append(Exchange::get(server.baseUrl()));
    });
    QCoreApplication::exec();
    QCOMPARE(exchanges.size(), 3);
    for (const Exchange& exchange : qAsConst(exchanges)) {
        QVERIFY(!exchange.isSuccessful);
        QCOMPARE(exchange.report.category, KvNetworkReport::Aborted);
        QVERIFY(exchange.elapsedMs < atOnceMs);
    }
}

void tst_KvLifecycle::callsAfterTheApplicationQuit()
{
    Application application;
    QTimer::singleShot(0, this, [] {
        getNowhere();
        QCoreApplication::quit();
    });
    QCoreApplication::exec();
    verifyNotSent(getNowhere());
    QVERIFY(!KvBaseProxy::setUserSetting(QStringLiteral("key"), QJsonObject()));
}

void tst_KvLifecycle::unfinishedReplyEndsWhenTheApplicationQuits()
{
    Application application;
    KvTest::ScriptedServer server;
    server.setHandler([](const KvTest::Request&) { return stalled(); });
    ReportRecorder recorder;
    QPointer<QNetworkReply> reply;
    QTimer::singleShot(0, this, [&] { reply = NetworkManager::instance().get(server.baseUrl()); });
    connect(&server, &KvTest::ScriptedServer::requestReceived, &server, &QCoreApplication::quit,
            Qt::QueuedConnection);
    QCoreApplication::exec();
    QCOMPARE(recorder.only().category, KvNetworkReport::Aborted);
    QVERIFY(!reply.isNull());
    NetworkEventLoop loop(reply);
    loop.exec();
    QVERIFY(!loop.isSuccessful());
}

void tst_KvLifecycle::applicationRunsAgainAfterQuit()
{
    Application application;
    KvTest::ScriptedServer server;
    server.setHandler([](const KvTest::Request&) { return Reply::json(QJsonObject()); });
    for (int i = 0; i < 2; ++i) {
        bool isSuccessful = false;
        QTimer::singleShot(0, this, [&] {
            isSuccessful = Exchange::get(server.baseUrl()).isSuccessful;
            QCoreApplication::quit();
        });
        QCoreApplication::exec();
        QVERIFY(isSuccessful);
    }
}

void tst_KvLifecycle::applicationDestroyedWithARequestOnItsWay()
{
    ReportRecorder recorder;
    QPointer<QNetworkReply> reply;
    QElapsedTimer clock;
    {
        Application application;
        KvTest::ScriptedServer server;
        server.setHandler([](const KvTest::Request&) { return stalled(); });
        reply = NetworkManager::instance().get(server.baseUrl());
        QTRY_COMPARE(server.requestCount(), 1);
        clock.start();
    }
    QVERIFY(reply.isNull());
    QCOMPARE(recorder.only().category, KvNetworkReport::Aborted);
    QVERIFY(clock.elapsed() < atOnceMs);
}

void tst_KvLifecycle::loopOutlivesTheApplication()
{
    std::unique_ptr<NetworkEventLoop> loop;
    {
        Application application;
        KvTest::ScriptedServer server;
        server.setHandler([](const KvTest::Request&) { return stalled(); });
        loop = std::make_unique<NetworkEventLoop>(NetworkManager::instance().get(server.baseUrl()));
        QTRY_COMPARE(server.requestCount(), 1);
    }
    QCOMPARE(loop->exec(), -1);
    QVERIFY(!loop->isSuccessful());
    QCOMPARE(loop->object(), QJsonObject());
}

void tst_KvLifecycle::secondApplicationWorks()
{
    Application application;
    KvTest::ScriptedServer server;
    server.enqueue(Reply::json(QJsonObject{{QStringLiteral("a"), 1}}));
    const Exchange exchange = Exchange::get(server.baseUrl());
    QVERIFY2(exchange.isSuccessful, qPrintable(exchange.report.message));
    QCOMPARE(exchange.object.value(QLatin1String("a")).toInt(), 1);
}

void tst_KvLifecycle::noApplicationAnyMore()
{
    QVERIFY(QCoreApplication::instance() == nullptr);
    verifyNotSent(getNowhere());
}

void tst_KvLifecycle::processEndsWithARequestOnItsWay_data()
{
    QTest::addColumn<QString>("way");
    QTest::newRow("application destroyed") << QStringLiteral("destroy");
    QTest::newRow("application never destroyed") << QStringLiteral("leak");
    QTest::newRow("exit() in a slot during a wait") << QStringLiteral("exit");
    QTest::newRow("static object calls while the process exits") << QStringLiteral("static");
}

void tst_KvLifecycle::processEndsWithARequestOnItsWay()
{
    QFETCH(QString, way);
    Application application;
    KvTest::ScriptedServer server;
    server.setHandler([](const KvTest::Request& request) {
        return request.path() == "/go" ? Reply::json(QJsonObject()).heldUntil(2) : stalled();
    });
    QProcess host;
    QElapsedTimer clock;
    clock.start();
    host.setProcessChannelMode(QProcess::MergedChannels);
    host.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--host"), way, server.baseUrl()});
    QTRY_COMPARE_WITH_TIMEOUT(host.state(), QProcess::NotRunning, 20 * 1000);
    QCOMPARE(host.exitStatus(), QProcess::NormalExit);
    QCOMPARE(host.exitCode(), 7);
    QCOMPARE(host.readAll(), QByteArray());
    QCOMPARE(server.requestCount(), 2);
    QVERIFY(clock.elapsed() < 2 * atOnceMs);
}

namespace {

// What a process does when it is started as a host: it sends a request that is never answered, and ends.
struct CallsWhenDestroyed
{
    ~CallsWhenDestroyed()
    {
        NetworkEventLoop loop(NetworkManager::instance().get(QStringLiteral("http://127.0.0.1:1/late")));
        loop.exec();
        if (loop.isSuccessful())
            std::abort();
    }
};

int runHost(int& argc, char** argv)
{
    const QByteArray way = argv[2];
    const QString url = QString::fromLatin1(argv[3]);
    if (way == "static")
        static CallsWhenDestroyed lateCaller;
    auto application = std::make_unique<QCoreApplication>(argc, argv);
    NetworkEventLoop loop(NetworkManager::instance().get(url + QLatin1String("stalled")));
    // Answered once the other request has arrived as well.
    QNetworkReply* const go = NetworkManager::instance().get(url + QLatin1String("go"));
    QObject::connect(go, &QNetworkReply::finished, application.get(), [&way] {
        if (way == "exit")
            std::exit(7);
        QCoreApplication::quit();
    });
    if (way == "exit")
        loop.exec();
    else
        QCoreApplication::exec();
    if (way == "leak")
        static_cast<void>(application.release());
    return 7;
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc == 4 && qstrcmp(argv[1], "--host") == 0)
        return runHost(argc, argv);
    tst_KvLifecycle test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_KvLifecycle.moc"
