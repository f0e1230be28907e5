// The server that other tests rely on: what it notices and complains about.

#include <support/ScriptedServer.h>

#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtTest/QTest>

#include <memory>

using KvTest::Reply;
using KvTest::Request;
using KvTest::ScriptedServer;

class tst_ScriptedServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void queueThenHandler();
    void unexpectedRequestIsComplainedOf();
    void replyLeftOverIsComplainedOf();
    void requestIsTakenApart();
    void resetBeginsAnew();

private:
    QByteArray get(const QString& url);

    QNetworkAccessManager m_access;
};

QByteArray tst_ScriptedServer::get(const QString& url)
{
    const std::unique_ptr<QNetworkReply> reply(m_access.get(QNetworkRequest(QUrl(url))));
    if (!QTest::qWaitFor([&reply] { return reply->isFinished(); }))
        return "no answer";
    return reply->readAll();
}

void tst_ScriptedServer::queueThenHandler()
{
    ScriptedServer server;
    server.setHandler([](const Request& request) { return Reply::text(request.path(), "text/plain"); });
    server.enqueue(Reply::text("first", "text/plain"));
    server.enqueue(Reply::text("second", "text/plain"));
    QCOMPARE(get(server.baseUrl()), QByteArray("first"));
    QCOMPARE(get(server.baseUrl()), QByteArray("second"));
    QCOMPARE(get(server.baseUrl() + QLatin1Char('x')), QByteArray("/x"));
    QCOMPARE(server.requestCount(), 3);
    QCOMPARE(server.connectionCount(), 1);
    QCOMPARE(server.complaint(), QString());
}

void tst_ScriptedServer::unexpectedRequestIsComplainedOf()
{
    ScriptedServer server;
    get(server.baseUrl() + QLatin1String("plans/p1?a=b"));
    QCOMPARE(server.unexpectedRequests().size(), 1);
    QVERIFY2(server.complaint().contains(QLatin1String("GET /plans/p1?a=b")), qPrintable(server.complaint()));
}

void tst_ScriptedServer::replyLeftOverIsComplainedOf()
{
    ScriptedServer server;
    server.enqueue(Reply::empty());
    QVERIFY(!server.allRepliesConsumed());
    QVERIFY(!server.complaint().isEmpty());
    get(server.baseUrl());
    QVERIFY(server.allRepliesConsumed());
    QCOMPARE(server.complaint(), QString());
}

void tst_ScriptedServer::requestIsTakenApart()
{
    ScriptedServer server;
    server.enqueue(Reply::empty());
    QNetworkRequest request(QUrl(server.baseUrl() + QLatin1String("a%20b/c?x=1%262&y=&z")));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    request.setRawHeader("X-Kind", "plan");
    const std::unique_ptr<QNetworkReply> reply(m_access.put(request, "{\"a\":[1]}"));
    QTRY_VERIFY(reply->isFinished());

    const Request taken = server.lastRequest();
    QCOMPARE(taken.method, QByteArray("PUT"));
    QCOMPARE(taken.target, QByteArray("/a%20b/c?x=1%262&y=&z"));
    QCOMPARE(taken.path(), QByteArray("/a%20b/c"));
    QCOMPARE(taken.decodedPath(), QStringLiteral("/a b/c"));
    QCOMPARE(taken.query(), QByteArray("x=1%262&y=&z"));
    QCOMPARE(taken.queryKeys(), QStringList({QStringLiteral("x"), QStringLiteral("y"), QStringLiteral("z")}));
    QCOMPARE(taken.queryValue("x"), QStringLiteral("1&2"));
    QVERIFY(taken.queryValue("y").isEmpty() && !taken.queryValue("y").isNull());
    QVERIFY(taken.queryValue("none").isNull());
    QCOMPARE(taken.header("x-kind"), QByteArray("plan"));
    QVERIFY(taken.header("X-None").isNull());
    QCOMPARE(taken.body, QByteArray("{\"a\":[1]}"));
    QCOMPARE(taken.object().value(QLatin1String("a")).toArray(), QJsonArray{1});
}

void tst_ScriptedServer::resetBeginsAnew()
{
    ScriptedServer server;
    server.enqueue(Reply::empty());
    get(server.baseUrl());
    get(server.baseUrl());
    server.enqueue(Reply::empty());
    server.reset();
    QCOMPARE(server.requestCount(), 0);
    QCOMPARE(server.openConnectionCount(), 0);
    QCOMPARE(server.complaint(), QString());
}

QTEST_GUILESS_MAIN(tst_ScriptedServer)
#include "tst_ScriptedServer.moc"
