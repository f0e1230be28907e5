// kvplan settings on the real service: what one run stores, the next one finds.

#include "KvplanProcess.h"

#include <ServiceProcess.h>

#include <QtTest/QtTest>

using KvTest::Kvplan;
using KvTest::KvplanRun;
using KvTest::words;

class KvplanSettingsServiceTest : public QObject
{
    Q_OBJECT

private:
    KvTest::ServiceProcess m_service;

    KvplanRun run(const char* line) const { return Kvplan(m_service.baseUrl()).run(words(line)); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(!m_service.seed().isEmpty(), qPrintable(m_service.failure()));
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
    }

    void hiddenColumns()
    {
        QCOMPARE(run("settings hidden --json").array(), QJsonArray());
        QCOMPARE(run("settings hidden --hide 工期 --hide Cost").error(), QString());
        const QJsonArray both{QStringLiteral("工期"), QStringLiteral("Cost")};
        QCOMPARE(run("settings hidden --json").array(), both);
        QCOMPARE(run("settings get plan_hideHeader").array(), both);
        QCOMPARE(run("settings hidden --show 工期 --json").array(), QJsonArray{QStringLiteral("Cost")});
        QCOMPARE(run("settings hidden --show-all").text(), QStringLiteral("no hidden columns\n"));
        QCOMPARE(run("settings hidden --json").array(), QJsonArray());
    }

    void anySetting()
    {
        QCOMPARE(run("settings get my.key").output, QByteArray("null\n"));
        QCOMPARE(run("settings set my.key {\"a\":[1,null]}").error(), QString());
        QCOMPARE(run("settings get my.key").object(),
                 (QJsonObject{{QStringLiteral("a"), QJsonArray{1, QJsonValue::Null}}}));
        QCOMPARE(run("settings set my.key null").output, QByteArray("null\n"));
        QCOMPARE(run("settings get my.key").output, QByteArray("null\n"));
    }
};

QTEST_GUILESS_MAIN(KvplanSettingsServiceTest)
#include "KvplanSettingsServiceTest.moc"
