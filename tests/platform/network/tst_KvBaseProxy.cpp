// The base address, and the user settings that the service keeps.

#include "Exchange.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/KvBaseProxy.h>

#include <support/ScriptedServer.h>

#include <QtCore/QJsonDocument>
#include <QtTest/QTest>

using KvTest::Reply;

class tst_KvBaseProxy : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void baseAddress_data();
    void baseAddress();
    void getUserSetting_data();
    void getUserSetting();
    void setUserSetting();
    void setUserSettingFails();
    void keyIsOneSegment_data();
    void keyIsOneSegment();
    void unusableKeySendsNothing_data();
    void unusableKeySendsNothing();
};

void tst_KvBaseProxy::init()
{
    resetNetworkManager();
}

void tst_KvBaseProxy::baseAddress_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("base");

    QTest::newRow("ends in a slash") << QStringLiteral("http://h/api/") << QStringLiteral("http://h/api/");
    QTest::newRow("slash is added") << QStringLiteral("http://h/api") << QStringLiteral("http://h/api/");
    QTest::newRow("host alone") << QStringLiteral("http://h") << QStringLiteral("http://h/");
    QTest::newRow("space around") << QStringLiteral(" http://h/ \n") << QStringLiteral("http://h/");
    QTest::newRow("empty stays empty") << QString() << QString();
    QTest::newRow("blank is empty") << QStringLiteral("  ") << QString();
}

void tst_KvBaseProxy::baseAddress()
{
    QFETCH(QString, address);
    QFETCH(QString, base);
    KvBaseApi::GetInstance().setBaseApi(address);
    QCOMPARE(KvBaseApi::GetInstance().getBaseApi(), base);
}

void tst_KvBaseProxy::getUserSetting_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("isSuccessful");
    QTest::addColumn<QByteArray>("value");

    QTest::newRow("text") << 200 << QByteArray("{\"value\":\"a\"}") << true
                          << QByteArray("{\"plan_hideHeader\":\"a\"}");
    QTest::newRow("array") << 200 << QByteArray("{\"value\":[1,{}]}") << true
                           << QByteArray("{\"plan_hideHeader\":[1,{}]}");
    QTest::newRow("false is a value")
        << 200 << QByteArray("{\"value\":false}") << true << QByteArray("{\"plan_hideHeader\":false}");
    QTest::newRow("null: nothing stored")
        << 200 << QByteArray("{\"value\":null}") << true << QByteArray("{}");
    QTest::newRow("empty object: nothing stored") << 200 << QByteArray("{}") << true << QByteArray("{}");
    QTest::newRow("no content: nothing stored") << 204 << QByteArray() << true << QByteArray("{}");
    QTest::newRow("of another shape") << 200 << QByteArray("[1]") << true << QByteArray("{}");
    QTest::newRow("server error") << 500 << QByteArray("{\"value\":\"a\"}") << false << QByteArray("{}");
    QTest::newRow("broken JSON") << 200 << QByteArray("{\"value\":") << false << QByteArray("{}");
}

void tst_KvBaseProxy::getUserSetting()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(bool, isSuccessful);
    QFETCH(QByteArray, value);
    KvTest::ScriptedServer server;
    server.enqueue(Reply::text(body, "application/json", status));
    KvBaseApi::GetInstance().setBaseApi(server.baseUrl() + QLatin1String("api"));

    QJsonObject read{{QStringLiteral("old"), 1}};
    QCOMPARE(KvBaseProxy::getUserSetting(QStringLiteral("plan_hideHeader"), read), isSuccessful);

    QCOMPARE(QJsonDocument(read).toJson(QJsonDocument::Compact), value);
    QCOMPARE(server.requestCount(), 1);
    QCOMPARE(server.lastRequest().method, QByteArray("GET"));
    QCOMPARE(server.lastRequest().target, QByteArray("/api/user-service/settings/plan_hideHeader"));
}

void tst_KvBaseProxy::setUserSetting()
{
    KvTest::ScriptedServer server;
    const QJsonObject value{
        {QStringLiteral("value"), QJsonArray{QStringLiteral("name"), QStringLiteral("start")}}};
    server.enqueue(Reply::json(value));
    KvBaseApi::GetInstance().setBaseApi(server.baseUrl());

    QVERIFY(KvBaseProxy::setUserSetting(QStringLiteral("plan_hideHeader"), value));

    QCOMPARE(server.lastRequest().method, QByteArray("PUT"));
    QCOMPARE(server.lastRequest().target, QByteArray("/user-service/settings/plan_hideHeader"));
    QCOMPARE(server.lastRequest().object(), value);
    QCOMPARE(server.complaint(), QString());
}

void tst_KvBaseProxy::setUserSettingFails()
{
    KvTest::ScriptedServer server;
    server.enqueue(Reply::json(QJsonObject(), 403));
    KvBaseApi::GetInstance().setBaseApi(server.baseUrl());
    QVERIFY(!KvBaseProxy::setUserSetting(QStringLiteral("key"), QJsonObject()));
}

void tst_KvBaseProxy::keyIsOneSegment_data()
{
    QTest::addColumn<QString>("key");

    QTest::newRow("slash") << QStringLiteral("a/b");
    QTest::newRow("slashes and dots") << QStringLiteral("../../plans");
    QTest::newRow("question mark and ampersand") << QStringLiteral("a?b&c=d");
    QTest::newRow("percent sign and hex digits") << QStringLiteral("%41");
    QTest::newRow("number sign, space, plus") << QStringLiteral("a# +");
    QTest::newRow("Chinese") << QString(QChar(0x8BBE)) + QChar(0x7F6E);
}

void tst_KvBaseProxy::keyIsOneSegment()
{
    QFETCH(QString, key);
    KvTest::ScriptedServer server;
    server.setHandler([](const KvTest::Request&) {
        return Reply::json(QJsonObject{{QStringLiteral("value"), 1}});
    });
    KvBaseApi::GetInstance().setBaseApi(server.baseUrl());

    QJsonObject value;
    QVERIFY(KvBaseProxy::getUserSetting(key, value));
    QVERIFY(KvBaseProxy::setUserSetting(key, value));

    QCOMPARE(value, QJsonObject({{key, 1}}));
    QCOMPARE(server.requestCount(), 2);
    for (const KvTest::Request& request : server.requests()) {
        QCOMPARE(request.path().count('/'), 3);
        QCOMPARE(request.decodedPath(), QLatin1String("/user-service/settings/") + key);
        QVERIFY(!request.target.contains('?'));
    }
}

void tst_KvBaseProxy::unusableKeySendsNothing_data()
{
    QTest::addColumn<QString>("key");

    QTest::newRow("empty") << QString();
    QTest::newRow("dot") << QStringLiteral(".");
    QTest::newRow("two dots") << QStringLiteral("..");
}

void tst_KvBaseProxy::unusableKeySendsNothing()
{
    QFETCH(QString, key);
    KvTest::ScriptedServer server;
    KvBaseApi::GetInstance().setBaseApi(server.baseUrl());
    QJsonObject value{{QStringLiteral("old"), 1}};
    QVERIFY(!KvBaseProxy::getUserSetting(key, value));
    QCOMPARE(value, QJsonObject());
    QVERIFY(!KvBaseProxy::setUserSetting(key, value));
    QCOMPARE(server.requestCount(), 0);
}

QTEST_GUILESS_MAIN(tst_KvBaseProxy)
#include "tst_KvBaseProxy.moc"
