// What every endpoint function shares: how its URL comes about, the one wait, and the success flag.

#include <service/KvRequestFrame.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkEventLoop.h>
#include <KvNetwork/NetworkManager.h>

#include <support/ScriptedServer.h>

#include <QtCore/QJsonObject>
#include <QtCore/QLocale>
#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtNetwork/QNetworkReply>
#include <QtTest/QtTest>

using KvTest::Reply;

class KvRequestFrameTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void urlOfAPath_data();
    void urlOfAPath();
    void baseAddressIsReadAnew();
    void textsStandAsTheyAre_data();
    void textsStandAsTheyAre();
    void numbersArePlainDigits_data();
    void numbersArePlainDigits();
    void placeholdersAreFilledInAscendingOrder();
    void laterArgumentFillsAPlaceholderInAnEarlierOne();
    void readerSeesTheReplyOfASuccess();
    void readerIsCalledAfterAFailureToo_data();
    void readerIsCalledAfterAFailureToo();
    void missingReplyIsAFailure();
    void replyIsReleased_data();
    void replyIsReleased();
    void eventsAreHandledDuringTheWait();
    void everyVerbGoesThroughTheFrame_data();
    void everyVerbGoesThroughTheFrame();

private:
    KvTest::ScriptedServer m_server;
};

void KvRequestFrameTest::init()
{
    KvBaseApi::GetInstance().setBaseApi(m_server.baseUrl());
    NetworkManager::instance().setTimeout(0);
}

void KvRequestFrameTest::cleanup()
{
    QCOMPARE(m_server.complaint(), QString());
    m_server.reset();
    QLocale::setDefault(QLocale::c());
}

void KvRequestFrameTest::urlOfAPath_data()
{
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("expected");
    QTest::newRow("host alone") << "http://host/"
                                << "http://host/task-service/plans";
    QTest::newRow("port") << "http://host:8080/"
                          << "http://host:8080/task-service/plans";
    QTest::newRow("path before the services") << "https://host/api/v2/"
                                              << "https://host/api/v2/task-service/plans";
}

void KvRequestFrameTest::urlOfAPath()
{
    QFETCH(QString, base);
    QFETCH(QString, expected);
    KvBaseApi::GetInstance().setBaseApi(base);
    QCOMPARE(Kv::taskUrl("plans"), expected);
    QCOMPARE(Kv::serviceUrl(QLatin1String("task-service/"), "plans"), expected);
    // Still with its placeholders.
    QCOMPARE(Kv::serviceUrl(QLatin1String("ka-rond-service/"), "tasks/%1/taskstates"),
             base + QStringLiteral("ka-rond-service/tasks/%1/taskstates"));
}

void KvRequestFrameTest::baseAddressIsReadAnew()
{
    KvBaseApi::GetInstance().setBaseApi(QStringLiteral("http://one/"));
    QCOMPARE(Kv::taskUrl("planNodes"), QStringLiteral("http://one/task-service/planNodes"));
    KvBaseApi::GetInstance().setBaseApi(QStringLiteral("http://two/"));
    QCOMPARE(Kv::taskUrl("planNodes"), QStringLiteral("http://two/task-service/planNodes"));
}

void KvRequestFrameTest::textsStandAsTheyAre_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("plain") << "p1";
    QTest::newRow("empty") << "";
    QTest::newRow("space") << " a b ";
    QTest::newRow("percent") << "100%";
    QTest::newRow("percent-encoded") << "a%20b";
    QTest::newRow("hash and plus") << "a#b+c";
    QTest::newRow("JSON") << R"({"name":{"$regex":"a\\b"}})";
    QTest::newRow("Chinese") << QString::fromUtf8("三层");
    QTest::newRow("emoji") << QString::fromUtf8("🏗");
    QTest::newRow("placeholder of nobody") << "%2";
}

void KvRequestFrameTest::textsStandAsTheyAre()
{
    QFETCH(QString, text);
    KvBaseApi::GetInstance().setBaseApi(QStringLiteral("http://host/"));
    QCOMPARE(Kv::taskUrl("plans/%1/copy", text),
             QStringLiteral("http://host/task-service/plans/") + text + QStringLiteral("/copy"));
}

void KvRequestFrameTest::numbersArePlainDigits_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("digits");
    QTest::newRow("0 is sent") << 0 << "0";
    QTest::newRow("one digit") << 7 << "7";
    QTest::newRow("thousands") << 1234567 << "1234567";
    QTest::newRow("largest") << 2147483647 << "2147483647";
    QTest::newRow("negative") << -1 << "-1";
}

void KvRequestFrameTest::numbersArePlainDigits()
{
    QFETCH(int, number);
    QFETCH(QString, digits);
    KvBaseApi::GetInstance().setBaseApi(QStringLiteral("http://host/"));
    for (const QLocale::Language language : {QLocale::C, QLocale::German, QLocale::Arabic, QLocale::Hindi}) {
        QLocale::setDefault(QLocale(language));
        QCOMPARE(Kv::taskUrl("plans?skip=%1&limit=%2", number, number),
                 QStringLiteral("http://host/task-service/plans?skip=") + digits + QStringLiteral("&limit=") +
                     digits);
    }
}

void KvRequestFrameTest::placeholdersAreFilledInAscendingOrder()
{
    KvBaseApi::GetInstance().setBaseApi(QStringLiteral("http://host/"));
    QCOMPARE(
        Kv::taskUrl("projects/%1/planNodes?type=todo&category=%2&skip=%3&limit=%4&state=%5",
                    QStringLiteral("p"), QStringLiteral("c"), 0, 50, QStringLiteral("s")),
        QStringLiteral(
            "http://host/task-service/projects/p/planNodes?type=todo&category=c&skip=0&limit=50&state=s"));
    // By number, not by place.
    QCOMPARE(Kv::taskUrl("%2/%1", QStringLiteral("first"), QStringLiteral("second")),
             QStringLiteral("http://host/task-service/second/first"));
}

// One at a time: why identifiers must hold no placeholders.
void KvRequestFrameTest::laterArgumentFillsAPlaceholderInAnEarlierOne()
{
    KvBaseApi::GetInstance().setBaseApi(QStringLiteral("http://host/"));
    QCOMPARE(Kv::taskUrl("projects/%1/plans?where=%2", QStringLiteral("a%2b"), QStringLiteral("w")),
             QStringLiteral("http://host/task-service/projects/awb/plans?where=w"));
}

void KvRequestFrameTest::readerSeesTheReplyOfASuccess()
{
    m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("count"), 3}}));
    int calls = 0;
    int count = 0;
    const bool succeeded = Kv::exchange(NetworkManager::instance().get(Kv::taskUrl("plans")),
                                        [&](const NetworkEventLoop& reply) {
                                            ++calls;
                                            count = reply.object().value(QStringLiteral("count")).toInt(0);
                                        });
    QVERIFY(succeeded);
    QCOMPARE(calls, 1);
    QCOMPARE(count, 3);
}

void KvRequestFrameTest::readerIsCalledAfterAFailureToo_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("400") << 400;
    QTest::newRow("404") << 404;
    QTest::newRow("500") << 500;
}

void KvRequestFrameTest::readerIsCalledAfterAFailureToo()
{
    QFETCH(int, status);
    m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("count"), 3}}, status));
    int calls = 0;
    QJsonObject body{{QStringLiteral("old"), 1}};
    const bool succeeded = Kv::exchange(NetworkManager::instance().get(Kv::taskUrl("plans")),
                                        [&](const NetworkEventLoop& reply) {
                                            ++calls;
                                            body = reply.object();
                                        });
    QVERIFY(!succeeded);
    QCOMPARE(calls, 1);
    QCOMPARE(body, QJsonObject());
}

void KvRequestFrameTest::missingReplyIsAFailure()
{
    int calls = 0;
    QVERIFY(!Kv::exchange(nullptr, [&](const NetworkEventLoop& reply) {
        ++calls;
        QCOMPARE(reply.object(), QJsonObject());
    }));
    QCOMPARE(calls, 1);
}

void KvRequestFrameTest::replyIsReleased_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("success") << 200;
    QTest::newRow("failure") << 500;
}

void KvRequestFrameTest::replyIsReleased()
{
    QFETCH(int, status);
    m_server.enqueue(Reply::json(QJsonObject(), status));
    const QPointer<QNetworkReply> reply(NetworkManager::instance().get(Kv::taskUrl("plans")));
    QVERIFY(reply);
    QCOMPARE(Kv::exchange(reply, [](const NetworkEventLoop&) {}), status == 200);
    // At the latest with the deletions that wait for the event loop.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(reply.isNull());
}

void KvRequestFrameTest::eventsAreHandledDuringTheWait()
{
    // The reply is held back until a second request has come, and that one is sent by a timer.
    m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("turn"), 1}}).heldUntil(2));
    m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("turn"), 2}}));
    QList<int> turns;
    const auto note = [&](const NetworkEventLoop& reply) {
        turns.append(reply.object().value(QStringLiteral("turn")).toInt());
    };
    bool inner = false;
    connect(&m_server, &KvTest::ScriptedServer::requestReceived, this, [&](int count) {
        if (count != 1)
            return;
        QTimer::singleShot(0, this, [&] {
            inner = Kv::exchange(NetworkManager::instance().get(Kv::taskUrl("plans/2")), note);
        });
    });
    const bool outer = Kv::exchange(NetworkManager::instance().get(Kv::taskUrl("plans/1")), note);
    disconnect(&m_server, &KvTest::ScriptedServer::requestReceived, this, nullptr);
    QVERIFY(inner);
    QVERIFY(outer);
    QCOMPARE(turns, (QList<int>{2, 1}));
}

void KvRequestFrameTest::everyVerbGoesThroughTheFrame_data()
{
    QTest::addColumn<QByteArray>("method");
    for (const char* method : {"GET", "POST", "PUT", "DELETE"})
        QTest::newRow(method) << QByteArray(method);
}

void KvRequestFrameTest::everyVerbGoesThroughTheFrame()
{
    QFETCH(QByteArray, method);
    // A server of its own: on a connection that the other one has just closed a change fails, for it is never
    // sent twice.
    KvTest::ScriptedServer server;
    KvBaseApi::GetInstance().setBaseApi(server.baseUrl());
    server.enqueue(Reply::json(QJsonObject()));
    NetworkManager& network = NetworkManager::instance();
    const QString url = Kv::taskUrl("plans/%1", QStringLiteral("p1"));
    const QJsonObject body{{QStringLiteral("name"), QStringLiteral("三层")}};
    QVERIFY(Kv::exchange(method == "GET"    ? network.get(url)
                         : method == "POST" ? network.postJson(url, body)
                         : method == "PUT"  ? network.putJson(url, body)
                                            : network.deleteResource(url),
                         [](const NetworkEventLoop&) {}));
    QCOMPARE(server.lastRequest().method, method);
    QCOMPARE(server.lastRequest().target, QByteArray("/task-service/plans/p1"));
    QCOMPARE(server.lastRequest().object(), method.startsWith('P') ? body : QJsonObject());
}

QTEST_GUILESS_MAIN(KvRequestFrameTest)
#include "KvRequestFrameTest.moc"
