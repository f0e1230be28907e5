// Waiting for replies: nested, finished already, broken off, thousands in a row.

#include "Exchange.h"

#include <support/ScriptedServer.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtTest/QTest>

#include <functional>

using KvTest::Reply;

namespace {

Reply numbered(int number)
{
    return Reply::json(QJsonObject{{QStringLiteral("number"), number}});
}

int numberIn(const NetworkEventLoop& loop)
{
    return loop.object().value(QLatin1String("number")).toInt(-1);
}

int livingReplies()
{
    return NetworkManager::instance().findChildren<QNetworkReply*>().size();
}

// Nothing that a test before has left to be deleted later.
void settle()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// The memory that the process has in use; 0 where that cannot be asked.
qint64 residentBytes()
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).chopped(2).trimmed().toLongLong() * 1024; // "VmRSS:   1234 kB"
    }
    return 0;
}

} // namespace

class tst_KvWaiting : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void replyFinishedBeforeTheWait();
    void secondWaitReturnsAtOnce();
    void repliesInOtherOrderThanWaits();
    void nestedWaits_data();
    void nestedWaits();
    void nestedWaitInAReportSlot();
    void nestedWaitInTheReplysOwnSlot();
    void nullReply();
    void replyDeletedDuringTheWait();
    void replyDeletedBeforeTheWait();
    void replyDeletedInAReportSlot();
    void replyAbortedDuringTheWait();
    void loopLeftWithoutAWait();
    void replyNobodyWaitsFor();
    void replyOfAnotherManager_data();
    void replyOfAnotherManager();
    void manySequentialRequestsInOneSlot();
    void manySequentialRequestsNested();
    void manyRequestsAtOnce();
    void eventsGoOnDuringTheWait();
    void flagsReachTheLoop();
};

void tst_KvWaiting::init()
{
    resetNetworkManager();
    settle();
    QCOMPARE(livingReplies(), 0);
}

void tst_KvWaiting::replyFinishedBeforeTheWait()
{
    KvTest::ScriptedServer server;
    server.enqueue(numbered(1));
    QNetworkReply* const reply = NetworkManager::instance().get(server.baseUrl());
    QTRY_VERIFY(reply->isFinished());
    // From here on the service could not answer any more.
    server.close();

    bool isEventHandled = false;
    QObject receiver; // takes the event with it when the function ends
    QTimer::singleShot(0, &receiver, [&] { isEventHandled = true; });
    NetworkEventLoop loop(reply);
    QVERIFY(loop.isSuccessful());
    QCOMPARE(loop.exec(), 0);
    QVERIFY(!isEventHandled);
    QVERIFY(loop.isSuccessful());
    QCOMPARE(numberIn(loop), 1);
}

void tst_KvWaiting::secondWaitReturnsAtOnce()
{
    KvTest::ScriptedServer server;
    server.enqueue(numbered(1));
    NetworkEventLoop loop(NetworkManager::instance().get(server.baseUrl()));
    QVERIFY(!loop.isSuccessful());
    QCOMPARE(loop.exec(), 0);
    QCOMPARE(loop.exec(), 0);
    QCOMPARE(numberIn(loop), 1);
    QCOMPARE(server.requestCount(), 1);
}

void tst_KvWaiting::repliesInOtherOrderThanWaits()
{
    // The first is answered only when the second has arrived, and is waited for last.
    KvTest::ScriptedServer server;
    server.setHandler([](const KvTest::Request& request) {
        const bool isFirst = request.path() == "/1";
        return isFirst ? numbered(1).heldUntil(2) : numbered(2);
    });
    NetworkEventLoop first(NetworkManager::instance().get(server.baseUrl() + QLatin1Char('1')));
    {
        NetworkEventLoop second(NetworkManager::instance().get(server.baseUrl() + QLatin1Char('2')));
        second.exec();
        QCOMPARE(numberIn(second), 2);
    }
    first.exec();
    QCOMPARE(numberIn(first), 1);
}

void tst_KvWaiting::nestedWaits_data()
{
    QTest::addColumn<int>("depth");
    QTest::addColumn<bool>("areOuterAnsweredFirst");

    QTest::newRow("two deep, outer reply comes last") << 2 << false;
    QTest::newRow("two deep, outer reply comes first") << 2 << true;
    QTest::newRow("three deep, outer replies come last") << 3 << false;
    QTest::newRow("three deep, outer replies come first") << 3 << true;
    QTest::newRow("twenty deep, outer replies come first") << 20 << true;
}

void tst_KvWaiting::nestedWaits()
{
    QFETCH(int, depth);
    QFETCH(bool, areOuterAnsweredFirst);
    // A request is made from an event that is handled while the one before is waited for.
    KvTest::ScriptedServer server;
    server.setHandler([&](const KvTest::Request& request) {
        Reply reply = numbered(request.path().mid(1).toInt());
        return areOuterAnsweredFirst ? reply : reply.heldUntil(depth);
    });
    QList<int> ended;
    std::function<void(int)> call = [&](int level) {
        NetworkEventLoop loop(NetworkManager::instance().get(server.baseUrl() + QString::number(level)));
        bool isInnerDone = level == depth;
        if (!isInnerDone) {
            QTimer::singleShot(0, this, [&call, &isInnerDone, level] {
                call(level + 1);
                isInnerDone = true;
            });
        }
        QCOMPARE(loop.exec(), 0);
        QVERIFY(isInnerDone);
        QVERIFY(loop.isSuccessful());
        QCOMPARE(numberIn(loop), level);
        ended.append(level);
    };
    call(1);

    QList<int> innermostFirst;
    for (int level = depth; level >= 1; --level)
        innermostFirst.append(level);
    QCOMPARE(ended, innermostFirst);
    settle();
    QCOMPARE(livingReplies(), 0);
}

void tst_KvWaiting::nestedWaitInAReportSlot()
{
    KvTest::ScriptedServer server;
    for (int i = 1; i <= 3; ++i)
        server.enqueue(numbered(i));
    QList<int> inner;
    QObject receiver;
    connect(&NetworkManager::instance(), &NetworkManager::requestFinished, &receiver, [&] {
        if (server.requestCount() == 3)
            return;
        NetworkEventLoop loop(NetworkManager::instance().get(server.baseUrl()));
        loop.exec();
        inner.append(numberIn(loop));
    });
    NetworkEventLoop loop(NetworkManager::instance().get(server.baseUrl()));
    loop.exec();
    QCOMPARE(numberIn(loop), 1);
    QCOMPARE(inner, QList<int>({3, 2}));
}

void tst_KvWaiting::nestedWaitInTheReplysOwnSlot()
{
    // The loop is built, used and destroyed while the reply emits its finished(): it must not go there and
    // then.
    KvTest::ScriptedServer server;
    server.enqueue(numbered(1));
    QPointer<QNetworkReply> reply = NetworkManager::instance().get(server.baseUrl());
    int number = 0;
    bool isAliveAfterwards = false;
    connect(reply, &QNetworkReply::finished, this, [&] {
        {
            NetworkEventLoop loop(reply);
            loop.exec();
            number = numberIn(loop);
        }
        isAliveAfterwards = !reply.isNull();
    });
    QTRY_COMPARE(number, 1);
    QVERIFY(isAliveAfterwards);
    QTRY_VERIFY(reply.isNull());
}

void tst_KvWaiting::nullReply()
{
    NetworkEventLoop loop(nullptr);
    QCOMPARE(loop.exec(), -1);
    QVERIFY(!loop.isSuccessful());
    QCOMPARE(loop.object(), QJsonObject());
    QCOMPARE(loop.array(), QJsonArray());
    QCOMPARE(loop.objectList().size(), 0);
}

void tst_KvWaiting::replyDeletedDuringTheWait()
{
    KvTest::ScriptedServer server;
    server.enqueue(numbered(1).with(Reply::StallBeforeHeaders));
    ReportRecorder recorder;
    QNetworkReply* const reply = NetworkManager::instance().get(server.baseUrl() + QLatin1String("plans"));
    connect(
        &server, &KvTest::ScriptedServer::requestReceived, reply, [reply] { delete reply; },
        Qt::QueuedConnection);
    NetworkEventLoop loop(reply);
    QCOMPARE(loop.exec(), -1);
    QVERIFY(!loop.isSuccessful());
    QCOMPARE(loop.object(), QJsonObject());
    QCOMPARE(recorder.only().category, KvNetworkReport::Aborted);
    QCOMPARE(recorder.only().path, QStringLiteral("/plans"));
}

void tst_KvWaiting::replyDeletedBeforeTheWait()
{
    KvTest::ScriptedServer server;
    QNetworkReply* const reply = NetworkManager::instance().get(server.baseUrl());
    NetworkEventLoop loop(reply);
    delete reply;
    QCOMPARE(loop.exec(), -1);
    QVERIFY(!loop.isSuccessful());
}

void tst_KvWaiting::replyDeletedInAReportSlot()
{
    KvTest::ScriptedServer server;
    server.enqueue(numbered(1));
    QNetworkReply* const reply = NetworkManager::instance().get(server.baseUrl());
    QObject receiver;
    connect(&NetworkManager::instance(), &NetworkManager::requestFinished, &receiver,
            [reply] { reply->deleteLater(); });
    NetworkEventLoop loop(reply);
    QCOMPARE(loop.exec(), 0);
    QCOMPARE(numberIn(loop), 1);
}

void tst_KvWaiting::replyAbortedDuringTheWait()
{
    KvTest::ScriptedServer server;
    server.enqueue(numbered(1).with(Reply::StallInBody));
    ReportRecorder recorder;
    QNetworkReply* const reply = NetworkManager::instance().get(server.baseUrl());
    connect(&server, &KvTest::ScriptedServer::requestReceived, reply, &QNetworkReply::abort,
            Qt::QueuedConnection);
    NetworkEventLoop loop(reply);
    loop.exec();
    QVERIFY(!loop.isSuccessful());
    QCOMPARE(recorder.only().category, KvNetworkReport::Aborted);
}

void tst_KvWaiting::loopLeftWithoutAWait()
{
    KvTest::ScriptedServer server;
    ReportRecorder recorder;
    QPointer<QNetworkReply> reply = NetworkManager::instance().get(server.baseUrl());
    {
        NetworkEventLoop loop(reply);
        QVERIFY(!loop.isSuccessful());
    }
    QCOMPARE(recorder.only().category, KvNetworkReport::Aborted);
    settle();
    QVERIFY(reply.isNull());
}

void tst_KvWaiting::replyNobodyWaitsFor()
{
    KvTest::ScriptedServer server;
    server.enqueue(Reply::text("{", "application/json"));
    ReportRecorder recorder;
    QNetworkReply* const reply =
        NetworkManager::instance().postJson(server.baseUrl() + QLatin1String("x?y"), QJsonObject());
    QTRY_COMPARE(recorder.reports.size(), 1);
    QCOMPARE(recorder.only().category, KvNetworkReport::Parse);
    QCOMPARE(recorder.only().method, QStringLiteral("POST"));
    QCOMPARE(recorder.only().path, QStringLiteral("/x"));
    delete reply;
    QCOMPARE(recorder.reports.size(), 1);
}

void tst_KvWaiting::replyOfAnotherManager_data()
{
    QTest::addColumn<bool>("isFinished");
    QTest::newRow("on its way") << false;
    QTest::newRow("finished") << true;
}

void tst_KvWaiting::replyOfAnotherManager()
{
    QFETCH(bool, isFinished);
    KvTest::ScriptedServer server;
    server.enqueue(numbered(1));
    QNetworkAccessManager manager;
    ReportRecorder recorder;
    QNetworkReply* const reply = manager.get(QNetworkRequest(QUrl(server.baseUrl())));
    if (isFinished)
        QTRY_VERIFY(reply->isFinished());
    NetworkEventLoop loop(reply);
    QCOMPARE(loop.exec(), 0);
    QVERIFY(loop.isSuccessful());
    QCOMPARE(numberIn(loop), 1);
    QCOMPARE(recorder.reports.size(), 0);
}

void tst_KvWaiting::manySequentialRequestsInOneSlot()
{
    KvTest::ScriptedServer server;
    int mostReplies = 0;
    int failures = 0;
    qint64 bytesAfterWarmUp = 0;
    bool isDone = false;
    const auto request = [&](int i) {
        server.enqueue(numbered(i));
        {
            NetworkEventLoop loop(
                NetworkManager::instance().get(server.baseUrl() + QLatin1String("plans?where={}")));
            loop.exec();
            failures += numberIn(loop) == i ? 0 : 1;
        }
        mostReplies = qMax(mostReplies, livingReplies());
    };
    // In one slot of the application's own loop, which comes round to nothing meanwhile.
    QTimer::singleShot(0, this, [&] {
        for (int i = 0; i < 10 * 1000; ++i) {
            request(i);
            if (i % 1000 == 999) {
                server.forgetRequests(); // the test's own memory is not what is measured
                if (bytesAfterWarmUp == 0)
                    bytesAfterWarmUp = residentBytes();
            }
        }
        isDone = true;
    });
    QTRY_VERIFY_WITH_TIMEOUT(isDone, 60 * 1000);

    QCOMPARE(failures, 0);
    QCOMPARE(mostReplies, 0);
    QCOMPARE(server.connectionCount(), 1);
#if defined(Q_OS_LINUX) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    // A reply that stayed would cost some 5 kB, 9,000 of them 45 MB. (Sanitizers keep freed memory on
    // purpose.)
    QVERIFY(bytesAfterWarmUp > 0);
    const qint64 growth = residentBytes() - bytesAfterWarmUp;
    QVERIFY2(growth < 4 * 1024 * 1024, qPrintable(QStringLiteral("%1 bytes more").arg(growth)));
#endif
}

void tst_KvWaiting::manySequentialRequestsNested()
{
    // While an outer reply is waited for, an event makes many requests; the outer one must survive them.
    KvTest::ScriptedServer server;
    const int count = 200;
    server.setHandler([&](const KvTest::Request& request) {
        return request.path() == "/outer" ? numbered(-7).heldUntil(count + 1)
                                          : numbered(server.requestCount());
    });
    NetworkEventLoop outer(NetworkManager::instance().get(server.baseUrl() + QLatin1String("outer")));
    int mostReplies = 0;
    int successes = 0;
    const auto makeRequests = [&] {
        for (int i = 0; i < count; ++i) {
            {
                NetworkEventLoop loop(
                    NetworkManager::instance().get(server.baseUrl() + QLatin1String("inner")));
                loop.exec();
                successes += loop.isSuccessful() ? 1 : 0;
            }
            mostReplies = qMax(mostReplies, livingReplies());
        }
    };
    QTimer::singleShot(0, this, makeRequests);
    outer.exec();
    QCOMPARE(successes, count);
    QCOMPARE(mostReplies, 1);
    QCOMPARE(numberIn(outer), -7);
}

void tst_KvWaiting::manyRequestsAtOnce()
{
    // More than the connections that are opened to one host: the rest waits its turn.
    KvTest::ScriptedServer server;
    server.setHandler([](const KvTest::Request& request) { return numbered(request.path().mid(1).toInt()); });
    QList<QNetworkReply*> replies;
    for (int i = 0; i < 50; ++i)
        replies.append(NetworkManager::instance().get(server.baseUrl() + QString::number(i)));
    for (int i = 0; i < 50; ++i) {
        NetworkEventLoop loop(replies.at(i));
        loop.exec();
        QCOMPARE(numberIn(loop), i);
    }
    settle();
    QCOMPARE(livingReplies(), 0);
}

void tst_KvWaiting::eventsGoOnDuringTheWait()
{
    // The reply is let go by a timer's event, so the wait ends only when events are handled.
    KvTest::ScriptedServer server;
    server.enqueue(numbered(1).heldUntil(2));
    server.enqueue(numbered(2));
    QNetworkReply* other = nullptr;
    QTimer timer;
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this,
            [&] { other = NetworkManager::instance().get(server.baseUrl()); });
    connect(&server, &KvTest::ScriptedServer::requestReceived, &timer, [&](int count) {
        if (count == 1)
            timer.start(0);
    });
    NetworkEventLoop loop(NetworkManager::instance().get(server.baseUrl()));
    loop.exec();
    QCOMPARE(numberIn(loop), 1);
    NetworkEventLoop otherLoop(other);
    otherLoop.exec();
    QCOMPARE(numberIn(otherLoop), 2);
}

void tst_KvWaiting::flagsReachTheLoop()
{
    KvTest::ScriptedServer server;
    server.enqueue(numbered(1));
    NetworkEventLoop loop(NetworkManager::instance().get(server.baseUrl()));
    QCOMPARE(loop.exec(QEventLoop::ExcludeUserInputEvents), 0);
    QCOMPARE(numberIn(loop), 1);
}

QTEST_GUILESS_MAIN(tst_KvWaiting)
#include "tst_KvWaiting.moc"
