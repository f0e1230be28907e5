// kvplan against a service with a certificate of the site's own authority.

#include "KvplanProcess.h"

#include <ServiceProcess.h>

#include <support/TlsAuthority.h>

#include <QtTest/QtTest>

using KvTest::Kvplan;
using KvTest::KvplanRun;
using KvTest::ServiceProcess;
using KvTest::TlsAuthority;

class KvplanTlsTest : public QObject
{
    Q_OBJECT

private:
    TlsAuthority m_authority;
    TlsAuthority m_stranger;
    ServiceProcess m_service;
    QString m_planId;
    QString m_token;

    KvplanRun show(const QString& authorities, const QString& server) const
    {
        Kvplan kvplan(server);
        kvplan.setEnvironment(QStringLiteral("KV_CA_FILE"), authorities);
        kvplan.setEnvironment(QStringLiteral("KV_ACCESS_TOKEN"), m_token);
        return kvplan.run({QStringLiteral("show"), m_planId, QStringLiteral("--json")});
    }

private Q_SLOTS:
    void initTestCase()
    {
        const KvTest::TlsFilePair files = m_authority.issue(QStringLiteral("IP:127.0.0.1"));
        QVERIFY2(!files.key.isEmpty() && !m_stranger.file().isEmpty(), "the openssl command line is missing");
        m_planId = m_service.seed().value(QLatin1String("planId")).toString();
        m_token = QString::fromLatin1(m_service.createToken(
            QStringLiteral("ann"), QStringLiteral("sample-project"), QStringLiteral("read=all")));
        QVERIFY2(m_service.start({QStringLiteral("--tls-certificate"), files.certificate,
                                  QStringLiteral("--tls-key"), files.key}),
                 qPrintable(m_service.failure()));
    }
    void cleanupTestCase() { QVERIFY2(m_service.stop(), qPrintable(m_service.failure())); }

    void readsAPlanWithTheAuthority()
    {
        const KvplanRun run = show(m_authority.file(), m_service.baseUrl());
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.object().value(QLatin1String("id")).toString(), m_planId);
        QVERIFY(!run.object().value(QLatin1String("planNodes")).toArray().isEmpty());
    }

    void refusesItWithout_data()
    {
        QTest::addColumn<QString>("authorities");
        QTest::newRow("no file") << QString();
        QTest::newRow("a file that is not there") << QStringLiteral("/nowhere/authority.pem");
        QTest::newRow("another authority") << m_stranger.file();
    }
    void refusesItWithout()
    {
        QFETCH(QString, authorities);
        const KvplanRun run = show(authorities, m_service.baseUrl());
        QCOMPARE(run.faultOfFailure(1), QString());
        QVERIFY2(run.error().contains(QLatin1String("no secure connection")), run.errors.constData());
        // The token has not gone to somebody whom nobody vouches for.
        QVERIFY(!m_service.log().contains("\"status\":401") && !run.error().contains(m_token));
    }

    void refusesAnotherNameForTheService()
    {
        const QString another =
            m_service.baseUrl().replace(QLatin1String("127.0.0.1"), QLatin1String("localhost"));
        const KvplanRun run = show(m_authority.file(), another);
        QCOMPARE(run.faultOfFailure(1), QString());
        QVERIFY2(run.error().contains(QLatin1String("no secure connection")), run.errors.constData());
    }
};

QTEST_GUILESS_MAIN(KvplanTlsTest)
#include "KvplanTlsTest.moc"
