// Secure connections: they fail with their cause, and pass when the certificate is trusted and that of the
// host.

#include "Exchange.h"

#include <support/ScriptedServer.h>

#include <QtNetwork/QSslConfiguration>
#include <QtTest/QTest>

using KvTest::Reply;
using KvTest::TlsIdentity;

class tst_KvTls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void certificate_data();
    void certificate();
    void serviceWithoutTls();
    void plainRequestToASecureService();

private:
    TlsIdentity m_forThisHost;
    TlsIdentity m_forAnotherHost;
    QSslConfiguration m_usual;
};

void tst_KvTls::initTestCase()
{
    QVERIFY(QSslSocket::supportsSsl());
    m_forThisHost = TlsIdentity::selfSigned(QStringLiteral("127.0.0.1"));
    m_forAnotherHost = TlsIdentity::selfSigned(QStringLiteral("schedule.example"));
    QVERIFY2(!m_forThisHost.isNull() && !m_forAnotherHost.isNull(), "the openssl command line is missing");
    m_usual = QSslConfiguration::defaultConfiguration();
}

void tst_KvTls::init()
{
    resetNetworkManager();
}

void tst_KvTls::cleanup()
{
    QSslConfiguration::setDefaultConfiguration(m_usual);
}

void tst_KvTls::certificate_data()
{
    QTest::addColumn<bool>("isTrusted");
    QTest::addColumn<bool>("isOfThisHost");
    QTest::addColumn<QString>("cause");

    QTest::newRow("trusted, of this host") << true << true << QString();
    QTest::newRow("self-signed") << false << true << QStringLiteral("self-signed");
    QTest::newRow("trusted, of another host") << true << false << QStringLiteral("host name");
    QTest::newRow("self-signed, of another host") << false << false << QStringLiteral("\"schedule.example\"");
}

void tst_KvTls::certificate()
{
    QFETCH(bool, isTrusted);
    QFETCH(bool, isOfThisHost);
    QFETCH(QString, cause);
    const TlsIdentity& identity = isOfThisHost ? m_forThisHost : m_forAnotherHost;
    if (isTrusted) {
        QSslConfiguration configuration = m_usual;
        configuration.setCaCertificates({identity.certificate});
        QSslConfiguration::setDefaultConfiguration(configuration);
    }
    KvTest::ScriptedServer server(identity);
    server.setHandler([](const KvTest::Request&) {
        return Reply::json(QJsonObject{{QStringLiteral("_id"), QStringLiteral("p1")}});
    });

    const Exchange exchange = Exchange::get(server.baseUrl() + QLatin1String("plans/p1"));

    const bool passes = cause.isEmpty();
    QVERIFY2(exchange.isSuccessful == passes, qPrintable(exchange.report.message));
    QCOMPARE(exchange.reportCount, 1);
    QCOMPARE(exchange.report.category, passes ? KvNetworkReport::Ok : KvNetworkReport::Tls);
    QCOMPARE(exchange.report.httpStatus, passes ? 200 : 0);
    QCOMPARE(server.requestCount(), passes ? 1 : 0);
    // "self-signed" is spelled with and without its dash by different versions.
    const QString message =
        QString(exchange.report.message).replace(QLatin1String("self signed"), QLatin1String("self-signed"));
    QVERIFY2(message.contains(cause), qPrintable(message));
}

void tst_KvTls::serviceWithoutTls()
{
    // A service that takes the greeting for the beginning of something it does not understand, and waits.
    KvTest::ScriptedServer server;
    NetworkManager::instance().setTimeout(150);
    const Exchange exchange =
        Exchange::get(server.baseUrl().replace(QLatin1String("http:"), QLatin1String("https:")));
    QVERIFY(!exchange.isSuccessful);
    QCOMPARE(exchange.report.category, KvNetworkReport::Timeout);
}

void tst_KvTls::plainRequestToASecureService()
{
    KvTest::ScriptedServer server(m_forThisHost);
    NetworkManager::instance().setTimeout(2000);
    const Exchange exchange =
        Exchange::get(server.baseUrl().replace(QLatin1String("https:"), QLatin1String("http:")));
    QVERIFY(!exchange.isSuccessful);
    QCOMPARE(exchange.report.category, KvNetworkReport::Aborted);
}

QTEST_GUILESS_MAIN(tst_KvTls)
#include "tst_KvTls.moc"
