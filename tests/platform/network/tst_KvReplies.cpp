// What counts as success, and what a reply yields.

#include "Exchange.h"

#include <KvNetwork/KvBaseApi.h>

#include <support/ScriptedServer.h>

#include <QtCore/QJsonDocument>
#include <QtTest/QTest>

using KvTest::Reply;

class tst_KvReplies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void verbs_data();
    void verbs();
    void success_data();
    void success();
    void emptyBody_data();
    void emptyBody();
    void accessorsByShape_data();
    void accessorsByShape();
    void failedReplyYieldsNothing();
    void deepNestingFailsCleanly();
    void invalidUtf8Fails();
    void largeReplyIsRead();
    void requestHeaders();
    void noCookiesAreKept();
    void compressedReplyIsNotInflated();
    void connectionIsReused();
};

void tst_KvReplies::init()
{
    resetNetworkManager();
}

void tst_KvReplies::verbs_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("body");

    QTest::newRow("get") << QByteArray("GET") << QByteArray();
    QTest::newRow("post object") << QByteArray("POST") << QByteArray("{\"name\":\"\xE5\xA1\x94\"}");
    QTest::newRow("post array") << QByteArray("POST") << QByteArray("[{\"a\":1}]");
    QTest::newRow("put empty object") << QByteArray("PUT") << QByteArray("{}");
    QTest::newRow("put empty array") << QByteArray("PUT") << QByteArray("[]");
    QTest::newRow("delete") << QByteArray("DELETE") << QByteArray();
}

void tst_KvReplies::verbs()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, body);
    KvTest::ScriptedServer server;
    server.enqueue(Reply::json(QJsonObject{{QStringLiteral("_id"), QStringLiteral("p1")}}));

    const QString url = server.baseUrl() + QLatin1String("task-service/plans?expand=true");
    const QJsonDocument document = QJsonDocument::fromJson(body);
    const Exchange exchange = Exchange::of([&](NetworkManager& manager) {
        if (method == "POST")
            return document.isArray() ? manager.postJson(url, document.array())
                                      : manager.postJson(url, document.object());
        if (method == "PUT")
            return document.isArray() ? manager.putJson(url, document.array())
                                      : manager.putJson(url, document.object());
        return method == "DELETE" ? manager.deleteResource(url) : manager.get(url);
    });

    QVERIFY(exchange.isSuccessful);
    QCOMPARE(exchange.execResult, 0);
    QCOMPARE(exchange.object.value(QLatin1String("_id")).toString(), QStringLiteral("p1"));
    QCOMPARE(server.requestCount(), 1);
    const KvTest::Request request = server.lastRequest();
    QCOMPARE(request.method, method);
    QCOMPARE(request.target, QByteArray("/task-service/plans?expand=true"));
    QCOMPARE(request.body, body);
    QCOMPARE(request.header("Content-Type"), body.isEmpty() ? QByteArray() : QByteArray("application/json"));
    QCOMPARE(exchange.reportCount, 1);
    QCOMPARE(exchange.report.method, QString::fromLatin1(method));
    QCOMPARE(exchange.report.path, QStringLiteral("/task-service/plans"));
    QCOMPARE(exchange.report.httpStatus, 200);
    QCOMPARE(exchange.report.category, KvNetworkReport::Ok);
    QCOMPARE(exchange.report.message, QString());
    QVERIFY(exchange.report.durationMs >= 0 && exchange.report.durationMs <= exchange.elapsedMs);
}

void tst_KvReplies::success_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("category");

    const int ok = KvNetworkReport::Ok;
    const int parse = KvNetworkReport::Parse;
    const int http = KvNetworkReport::Http;
    QTest::newRow("object") << 200 << QByteArray("{\"a\":1}") << ok;
    QTest::newRow("array") << 200 << QByteArray("[1]") << ok;
    QTest::newRow("created") << 201 << QByteArray("{}") << ok;
    QTest::newRow("accepted") << 202 << QByteArray("{}") << ok;
    QTest::newRow("space around") << 200 << QByteArray(" \r\n\t{ } \n") << ok;
    QTest::newRow("byte order mark") << 200 << QByteArray("\xEF\xBB\xBF{}") << ok;
    QTest::newRow("lone true") << 200 << QByteArray("true") << ok;
    QTest::newRow("lone null") << 200 << QByteArray("null") << ok;
    QTest::newRow("lone number") << 200 << QByteArray("-12.5") << ok;
    QTest::newRow("lone text") << 200 << QByteArray("\"done, [all]\"") << ok;
    QTest::newRow("two lone values") << 200 << QByteArray("1,2") << parse;
    QTest::newRow("lone text that closes the bracket") << 200 << QByteArray("1]") << parse;
    QTest::newRow("lone word") << 200 << QByteArray("nothing") << parse;
    QTest::newRow("html") << 200 << QByteArray("<html>sign in</html>") << parse;
    QTest::newRow("plain text") << 200 << QByteArray("OK") << parse;
    QTest::newRow("unclosed object") << 200 << QByteArray("{\"a\":1") << parse;
    QTest::newRow("two objects") << 200 << QByteArray("{}{}") << parse;
    QTest::newRow("trailing comma") << 200 << QByteArray("[1,]") << parse;
    QTest::newRow("empty") << 200 << QByteArray() << parse;
    QTest::newRow("blank") << 200 << QByteArray(" \n") << parse;
    QTest::newRow("moved") << 301 << QByteArray("{}") << http;
    QTest::newRow("not modified") << 304 << QByteArray() << http;
    QTest::newRow("bad request") << 400 << QByteArray("{}") << http;
    QTest::newRow("unauthorised") << 401 << QByteArray("{}") << http;
    QTest::newRow("forbidden") << 403 << QByteArray("{}") << http;
    QTest::newRow("not found") << 404 << QByteArray("{}") << http;
    QTest::newRow("conflict") << 409 << QByteArray("{}") << http;
    QTest::newRow("teapot with html") << 418 << QByteArray("<html></html>") << http;
    QTest::newRow("server error with html") << 500 << QByteArray("<html></html>") << http;
    QTest::newRow("unavailable") << 503 << QByteArray() << http;
}

void tst_KvReplies::success()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(int, category);
    KvTest::ScriptedServer server;
    server.enqueue(Reply::text(body, "application/json", status));

    const Exchange exchange = Exchange::get(server.baseUrl() + QLatin1String("x"));

    QCOMPARE(int(exchange.report.category), category);
    QCOMPARE(exchange.isSuccessful, category == KvNetworkReport::Ok);
    QCOMPARE(exchange.report.httpStatus, status);
    QCOMPARE(exchange.report.message.isEmpty(), category == KvNetworkReport::Ok);
    QCOMPARE(exchange.reportCount, 1);
    QCOMPARE(server.requestCount(), 1);
}

void tst_KvReplies::emptyBody_data()
{
    QTest::addColumn<bool>("isDelete");
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("passes");

    QTest::newRow("get, no content") << false << 204 << true;
    QTest::newRow("get, reset content") << false << 205 << true;
    QTest::newRow("get, ok") << false << 200 << false;
    QTest::newRow("get, created") << false << 201 << false;
    QTest::newRow("delete, ok") << true << 200 << true;
    QTest::newRow("delete, no content") << true << 204 << true;
    QTest::newRow("delete, not found") << true << 404 << false;
}

void tst_KvReplies::emptyBody()
{
    QFETCH(bool, isDelete);
    QFETCH(int, status);
    QFETCH(bool, passes);
    KvTest::ScriptedServer server;
    server.enqueue(Reply::empty(status));

    const QString url = server.baseUrl() + QLatin1String("x");
    const Exchange exchange = Exchange::of(
        [&](NetworkManager& manager) { return isDelete ? manager.deleteResource(url) : manager.get(url); });

    QCOMPARE(exchange.isSuccessful, passes);
    QCOMPARE(exchange.object, QJsonObject());
}

void tst_KvReplies::accessorsByShape_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("object");
    QTest::addColumn<QByteArray>("objectList");
    QTest::addColumn<QByteArray>("array");

    QTest::newRow("object") << QByteArray("{\"a\":[{}]}") << QByteArray("{\"a\":[{}]}") << QByteArray("[]")
                            << QByteArray("[]");
    QTest::newRow("objects") << QByteArray("[{\"a\":1},{\"b\":2}]") << QByteArray("{}")
                             << QByteArray("[{\"a\":1},{\"b\":2}]") << QByteArray("[{\"a\":1},{\"b\":2}]");
    QTest::newRow("other elements are left out of the list")
        << QByteArray("[1,{\"a\":1},null,[{\"c\":3}],\"x\",{}]") << QByteArray("{}")
        << QByteArray("[{\"a\":1},{}]") << QByteArray("[1,{\"a\":1},null,[{\"c\":3}],\"x\",{}]");
    QTest::newRow("empty array") << QByteArray("[]") << QByteArray("{}") << QByteArray("[]")
                                 << QByteArray("[]");
    QTest::newRow("lone text") << QByteArray("\"a\"") << QByteArray("{}") << QByteArray("[]")
                               << QByteArray("[]");
}

void tst_KvReplies::accessorsByShape()
{
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, object);
    QFETCH(QByteArray, objectList);
    QFETCH(QByteArray, array);
    KvTest::ScriptedServer server;
    server.enqueue(Reply::text(body, "application/json"));

    const Exchange exchange = Exchange::get(server.baseUrl());

    QVERIFY(exchange.isSuccessful);
    QJsonArray list;
    for (const QJsonObject& element : exchange.objectList)
        list.append(element);
    QCOMPARE(QJsonDocument(exchange.object).toJson(QJsonDocument::Compact), object);
    QCOMPARE(QJsonDocument(list).toJson(QJsonDocument::Compact), objectList);
    QCOMPARE(QJsonDocument(exchange.array).toJson(QJsonDocument::Compact), array);
}

void tst_KvReplies::failedReplyYieldsNothing()
{
    KvTest::ScriptedServer server;
    server.enqueue(Reply::text("{\"a\":1}", "application/json", 500));
    server.enqueue(Reply::text("[{\"a\":1}]", "application/json", 404));
    for (int i = 0; i < 2; ++i) {
        const Exchange exchange = Exchange::get(server.baseUrl());
        QVERIFY(!exchange.isSuccessful);
        QCOMPARE(exchange.object, QJsonObject());
        QCOMPARE(exchange.array, QJsonArray());
        QCOMPARE(exchange.objectList.size(), 0);
    }
}

void tst_KvReplies::deepNestingFailsCleanly()
{
    KvTest::ScriptedServer server;
    const int depth = 100 * 1000;
    server.enqueue(Reply::text(QByteArray(depth, '[') + QByteArray(depth, ']'), "application/json"));
    server.enqueue(Reply::text(QByteArray("{\"a\":").repeated(depth), "application/json"));
    for (int i = 0; i < 2; ++i) {
        const Exchange exchange = Exchange::get(server.baseUrl());
        QVERIFY(!exchange.isSuccessful);
        QCOMPARE(exchange.report.category, KvNetworkReport::Parse);
        QVERIFY2(exchange.report.message.size() < 200, qPrintable(exchange.report.message));
    }
}

void tst_KvReplies::invalidUtf8Fails()
{
    KvTest::ScriptedServer server;
    server.enqueue(Reply::text("{\"name\":\"\xC3\x28\"}", "application/json"));
    server.enqueue(Reply::text("{\"name\":\"\xED\xA0\x80\"}", "application/json"));
    server.enqueue(Reply::text("\"\xFF\"", "application/json"));
    for (int i = 0; i < 3; ++i) {
        const Exchange exchange = Exchange::get(server.baseUrl());
        QVERIFY(!exchange.isSuccessful);
        QCOMPARE(exchange.report.category, KvNetworkReport::Parse);
    }
}

void tst_KvReplies::largeReplyIsRead()
{
    KvTest::ScriptedServer server;
    const int count = 200 * 1000;
    server.enqueue(
        Reply::text('[' + QByteArray("{\"_id\":\"0123456789abcdef01234567\"},").repeated(count) + "{}]",
                    "application/json"));
    Reply withoutLength = Reply::text('[' + QByteArray("{},").repeated(count) + "{}]", "application/json");
    withoutLength.noLength = true;
    server.enqueue(withoutLength);

    for (int i = 0; i < 2; ++i) {
        const Exchange exchange = Exchange::get(server.baseUrl());
        QVERIFY(exchange.isSuccessful);
        QCOMPARE(exchange.objectList.size(), count + 1);
    }
}

void tst_KvReplies::requestHeaders()
{
    KvTest::ScriptedServer server;
    server.enqueue(Reply::json(QJsonObject()));
    QVERIFY(Exchange::get(server.baseUrl()).isSuccessful);

    const KvTest::Request request = server.lastRequest();
    QCOMPARE(request.header("Accept"), QByteArray("application/json"));
    QCOMPARE(request.header("Accept-Encoding"), QByteArray("identity"));
    QVERIFY(request.header("Authorization").isNull());
}

void tst_KvReplies::noCookiesAreKept()
{
    KvTest::ScriptedServer server;
    server.enqueue(Reply::json(QJsonObject()).withHeader("Set-Cookie", "session=1; Path=/"));
    server.enqueue(Reply::json(QJsonObject()));
    QVERIFY(Exchange::get(server.baseUrl()).isSuccessful);
    QVERIFY(Exchange::get(server.baseUrl()).isSuccessful);
    QVERIFY(server.lastRequest().header("Cookie").isNull());
}

void tst_KvReplies::compressedReplyIsNotInflated()
{
    // qCompress writes its own length before a zlib stream, which is what "deflate" means.
    const QByteArray deflated = qCompress(QByteArray(64 * 1024 * 1024, ' '), 9).mid(4);
    QVERIFY(deflated.size() < 100 * 1024);
    KvTest::ScriptedServer server;
    server.enqueue(Reply::text(deflated, "application/json").withHeader("Content-Encoding", "deflate"));
    NetworkManager::instance().setReplySizeLimit(1024 * 1024);

    const Exchange exchange = Exchange::get(server.baseUrl());

    QVERIFY(!exchange.isSuccessful);
    QCOMPARE(exchange.report.category, KvNetworkReport::Parse);
    QVERIFY2(exchange.report.message.contains(QLatin1String("compressed")),
             qPrintable(exchange.report.message));
}

void tst_KvReplies::connectionIsReused()
{
    KvTest::ScriptedServer server;
    server.setHandler([](const KvTest::Request&) { return Reply::json(QJsonObject()); });
    for (int i = 0; i < 5; ++i)
        QVERIFY(Exchange::get(server.baseUrl()).isSuccessful);
    QCOMPARE(server.connectionCount(), 1);
    QCOMPARE(server.lastRequest().connection, 1);
}

QTEST_GUILESS_MAIN(tst_KvReplies)
#include "tst_KvReplies.moc"
