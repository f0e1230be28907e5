// Configuration by environment: read when first needed, then overruled by code.

#include "Exchange.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvNetworkLimits.h>

#include <support/ScriptedServer.h>

#include <QtTest/QTest>

using KvTest::Reply;

class tst_KvEnvironment : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // In this order: the first request reads the environment, and each variable is read but once.
    void timeoutText_data();
    void timeoutText();
    void firstRequestReadsTheEnvironment();
    void environmentIsReadOnce();
    void codeWins();
};

void tst_KvEnvironment::timeoutText_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("milliseconds");

    QTest::newRow("number") << QByteArray("1500") << 1500;
    QTest::newRow("space around") << QByteArray(" 1500 ") << 1500;
    QTest::newRow("smallest") << QByteArray("1") << 1;
    QTest::newRow("largest") << QByteArray("2147483647") << 2147483647;
    QTest::newRow("empty") << QByteArray() << 30000;
    QTest::newRow("no number") << QByteArray("soon") << 30000;
    QTest::newRow("with a unit") << QByteArray("5s") << 30000;
    QTest::newRow("fraction") << QByteArray("1.5") << 30000;
    QTest::newRow("negative") << QByteArray("-5") << 30000;
    QTest::newRow("zero") << QByteArray("0") << 30000;
    QTest::newRow("too large") << QByteArray("2147483648") << 30000;
}

void tst_KvEnvironment::timeoutText()
{
    QFETCH(QByteArray, text);
    QFETCH(int, milliseconds);
    qputenv("KV_NETWORK_TIMEOUT_MS", text);
    QCOMPARE(KvNetworkLimits::idleMsFromEnvironment(), milliseconds);
    qunsetenv("KV_NETWORK_TIMEOUT_MS");
    QCOMPARE(KvNetworkLimits::idleMsFromEnvironment(), 30000);
}

void tst_KvEnvironment::firstRequestReadsTheEnvironment()
{
    KvTest::ScriptedServer server;
    server.enqueue(Reply::json(QJsonObject()).with(Reply::StallBeforeHeaders));
    qputenv("KV_BASE_API", server.baseUrl().chopped(1).toUtf8());
    qputenv("KV_ACCESS_TOKEN", "from-the-environment");
    qputenv("KV_NETWORK_TIMEOUT_MS", "400");

    QCOMPARE(KvBaseApi::GetInstance().getBaseApi(), server.baseUrl());
    const Exchange exchange = Exchange::get(KvBaseApi::GetInstance().getBaseApi() + QLatin1String("x"));

    QCOMPARE(exchange.report.category, KvNetworkReport::Timeout);
    QVERIFY2(exchange.report.message.contains(QLatin1String("400 ms")), qPrintable(exchange.report.message));
    QCOMPARE(server.lastRequest().header("Authorization"), QByteArray("Bearer from-the-environment"));
}

void tst_KvEnvironment::environmentIsReadOnce()
{
    const QString before = KvBaseApi::GetInstance().getBaseApi();
    QVERIFY(!before.isEmpty());
    qputenv("KV_BASE_API", "http://elsewhere/");
    QCOMPARE(KvBaseApi::GetInstance().getBaseApi(), before);
}

void tst_KvEnvironment::codeWins()
{
    KvTest::ScriptedServer server;
    server.enqueue(Reply::json(QJsonObject()));
    Reply slow = Reply::text("{}", "application/json").with(Reply::SlowSlices);
    slow.sliceInterval = 600;
    server.enqueue(slow);
    KvBaseApi::GetInstance().setBaseApi(server.baseUrl());
    NetworkManager::instance().setAccessToken(QStringLiteral("from-code"));
    QVERIFY(Exchange::get(server.baseUrl()).isSuccessful);
    QCOMPARE(server.lastRequest().header("Authorization"), QByteArray("Bearer from-code"));

    // 0 means the default, not the environment's 400 ms; and an empty token means none.
    NetworkManager::instance().setTimeout(0);
    NetworkManager::instance().setAccessToken(QString());
    QVERIFY(Exchange::get(server.baseUrl()).isSuccessful);
    QVERIFY(server.lastRequest().header("Authorization").isNull());

    KvBaseApi::GetInstance().setBaseApi(QString());
    QCOMPARE(KvBaseApi::GetInstance().getBaseApi(), QString());
}

QTEST_GUILESS_MAIN(tst_KvEnvironment)
#include "tst_KvEnvironment.moc"
