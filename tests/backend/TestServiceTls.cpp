// The service over TLS, and the library against it.

#include "ServiceProcess.h"
#include "Text.h"

#include <KvNetwork/KvNetworkReport.h>
#include <KvNetwork/NetworkEventLoop.h>
#include <KvNetwork/NetworkManager.h>

#include <support/TlsAuthority.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QtTest>

#include <csignal>
#include <memory>
#include <vector>

using namespace KvTest;

namespace {

constexpr int waitMs = 30000;

QStringList with(const TlsFilePair& files)
{
    return {"--tls-certificate"_s, files.certificate, "--tls-key"_s, files.key};
}

void copyOver(const QString& from, const QString& to)
{
    QFile::remove(to);
    QVERIFY(QFile::copy(from, to));
}

} // namespace

class TestServiceTls : public QObject
{
    Q_OBJECT

private:
    TlsAuthority m_authority;
    TlsFilePair m_good;
    TlsFilePair m_another;
    QSslConfiguration m_usual = QSslConfiguration::defaultConfiguration();
    QByteArray m_plan;

    QSslConfiguration trusting() const
    {
        QSslConfiguration configuration = m_usual;
        configuration.setCaCertificates(QSslCertificate::fromPath(m_authority.file()));
        return configuration;
    }

    std::unique_ptr<QSslSocket> connected(const ServiceProcess& service,
                                          QSsl::SslProtocol protocol = QSsl::SecureProtocols)
    {
        auto socket = std::make_unique<QSslSocket>();
        QSslConfiguration configuration = trusting();
        configuration.setProtocol(protocol);
        socket->setSslConfiguration(configuration);
        socket->connectToHostEncrypted("127.0.0.1"_s, service.port());
        socket->waitForEncrypted(waitMs);
        return socket;
    }

    /// Everything that comes up to the end of the connection.
    static QByteArray restOf(QSslSocket& socket)
    {
        QByteArray all;
        while (socket.bytesAvailable() > 0 || socket.waitForReadyRead(waitMs)) {
            all += socket.readAll();
        }
        return all;
    }

    /// What the library says of a request for the service's health.
    static KvNetworkReport report(const QString& baseUrl)
    {
        QList<KvNetworkReport> reports;
        QObject context;
        QObject::connect(&NetworkManager::instance(), &NetworkManager::requestFinished, &context,
                         [&](const KvNetworkReport& one) { reports.append(one); });
        NetworkEventLoop loop(NetworkManager::instance().get(baseUrl + "health"_s));
        loop.exec();
        return reports.size() == 1 ? reports.first() : KvNetworkReport();
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(!m_authority.file().isEmpty(), "the openssl command line is missing");
        m_good = m_authority.issue("IP:127.0.0.1"_s);
        m_another = m_authority.issue("IP:127.0.0.1"_s);
        QVERIFY(!m_good.key.isEmpty() && !m_another.key.isEmpty());
    }
    void cleanup() { QSslConfiguration::setDefaultConfiguration(m_usual); }

    void whatTheLibraryTrusts_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("days");
        QTest::addColumn<bool>("isTrusted");
        QTest::addColumn<bool>("passes");
        QTest::newRow("good") << "IP:127.0.0.1"_s << 2 << true << true;
        QTest::newRow("of an authority that nobody knows") << "IP:127.0.0.1"_s << 2 << false << false;
        QTest::newRow("expired") << "IP:127.0.0.1"_s << -1 << true << false;
        QTest::newRow("of another host") << "DNS:schedule.example"_s << 2 << true << false;
        QTest::newRow("of another address") << "IP:127.0.0.2"_s << 2 << true << false;
    }
    void whatTheLibraryTrusts()
    {
        QFETCH(QString, name);
        QFETCH(int, days);
        QFETCH(bool, isTrusted);
        QFETCH(bool, passes);
        const TlsFilePair files = m_authority.issue(name, days);
        QVERIFY(!files.key.isEmpty());
        ServiceProcess service;
        QVERIFY2(service.start(QStringList{"--create"_s} + with(files)), qPrintable(service.failure()));
        QVERIFY(service.baseUrl().startsWith("https://127.0.0.1:"_s));
        QSslConfiguration::setDefaultConfiguration(isTrusted ? trusting() : m_usual);
        const KvNetworkReport said = report(service.baseUrl());
        QCOMPARE(said.category, passes ? KvNetworkReport::Ok : KvNetworkReport::Tls);
        QCOMPARE(said.httpStatus, passes ? 200 : 0);
        // The service tells its operator when it is its certificate that is at fault.
        QCOMPARE(service.log().contains("has expired"), days < 0);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void aPlainRequestToASecuredService()
    {
        ServiceProcess service;
        QVERIFY2(service.start(QStringList{"--create"_s} + with(m_good)), qPrintable(service.failure()));
        const KvNetworkReport said = report(service.baseUrl().replace("https:"_s, "http:"_s));
        QVERIFY(said.category != KvNetworkReport::Ok);
        QSslConfiguration::setDefaultConfiguration(trusting());
        QCOMPARE(report(service.baseUrl()).category, KvNetworkReport::Ok);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void versions_data()
    {
        QTest::addColumn<int>("protocol");
        QTest::newRow("1.2") << int(QSsl::TlsV1_2);
        QTest::newRow("1.3") << int(QSsl::TlsV1_3);
    }
    void versions()
    {
        QFETCH(int, protocol);
        ServiceProcess service;
        QVERIFY2(service.start(QStringList{"--create"_s} + with(m_good)), qPrintable(service.failure()));
        const auto socket = connected(service, static_cast<QSsl::SslProtocol>(protocol));
        QVERIFY2(socket->isEncrypted(), qPrintable(socket->errorString()));
        QCOMPARE(int(socket->sessionProtocol()), protocol);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void versionsOfThePast_data()
    {
        QTest::addColumn<QByteArray>("version");
        QTest::newRow("TLS 1.0") << QByteArray::fromHex("0301");
        QTest::newRow("TLS 1.1") << QByteArray::fromHex("0302");
    }
    // Written by hand, as no client here would still ask for them.
    void versionsOfThePast()
    {
        QFETCH(QByteArray, version);
        ServiceProcess service;
        QVERIFY2(service.start(QStringList{"--create"_s} + with(m_good)), qPrintable(service.failure()));
        const QByteArray hello = version + QByteArray(32, 'r') + '\0' +
                                 QByteArray::fromHex("0006c00ac0090035") + QByteArray::fromHex("0100");
        const QByteArray handshake = QByteArray::fromHex("010000") + static_cast<char>(hello.size()) + hello;
        QTcpSocket socket;
        socket.connectToHost("127.0.0.1"_s, service.port());
        QVERIFY(socket.waitForConnected(waitMs));
        socket.write(QByteArray::fromHex("16030100") + static_cast<char>(handshake.size()) + handshake);
        QByteArray said;
        while (said.size() < 7 && socket.waitForReadyRead(waitMs)) {
            said += socket.readAll();
        }
        // A fatal alert: protocol version.
        QCOMPARE(said.left(1).toHex() + said.mid(5, 2).toHex(), QByteArray("150246"));
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void answersAsItDoesInTheOpen()
    {
        ServiceProcess service;
        m_plan = service.seed({"--nodes"_s, "5000"_s}).value("planId"_s).toString().toLatin1();
        QVERIFY2(service.start(with(m_good) + QStringList{"--max-body"_s, "1000"_s}),
                 qPrintable(service.failure()));
        const auto socket = connected(service);
        // Two requests on one connection, the second of which ends it.
        socket->write("GET /elsewhere HTTP/1.1\r\nHost: x\r\n\r\n");
        socket->write("GET /task-service/plans/" + m_plan +
                      " HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
        const QByteArray said = restOf(*socket);
        QVERIFY(said.startsWith("HTTP/1.1 404 "));
        const QJsonObject plan = QJsonDocument::fromJson(said.mid(said.lastIndexOf("\r\n\r\n") + 4)).object();
        QCOMPARE(plan.value("tasks"_s).toArray().size(), 5000);
        // What cannot be read is refused in words.
        const auto large = connected(service);
        large->write("PUT /user-service/settings/k HTTP/1.1\r\nContent-Length: 1001\r\n\r\n");
        QVERIFY(restOf(*large).startsWith("HTTP/1.1 413 "));
        const auto malformed = connected(service);
        malformed->write("NONSENSE\r\n\r\n");
        QVERIFY(restOf(*malformed).startsWith("HTTP/1.1 400 "));
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void slowHandshakesKeepNobodyWaiting_data()
    {
        QTest::addColumn<QByteArray>("beginning");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("half a greeting") << QByteArray::fromHex("160301020001000");
    }
    void slowHandshakesKeepNobodyWaiting()
    {
        QFETCH(QByteArray, beginning);
        ServiceProcess service;
        QVERIFY2(service.start(QStringList{"--create"_s, "--read-timeout"_s, "1"_s, "--threads"_s, "1"_s} +
                               with(m_good)),
                 qPrintable(service.failure()));
        std::vector<std::unique_ptr<QTcpSocket>> slow;
        for (int i = 0; i < 50; ++i) {
            slow.push_back(std::make_unique<QTcpSocket>());
            slow.back()->connectToHost("127.0.0.1"_s, service.port());
            QVERIFY(slow.back()->waitForConnected(waitMs));
            slow.back()->write(beginning);
            slow.back()->flush();
        }
        QSslConfiguration::setDefaultConfiguration(trusting());
        QCOMPARE(report(service.baseUrl()).category, KvNetworkReport::Ok);
        // In the end they are closed.
        for (const auto& socket : slow) {
            QVERIFY(socket->state() == QAbstractSocket::UnconnectedState ||
                    socket->waitForDisconnected(waitMs));
        }
        QCOMPARE(report(service.baseUrl()).category, KvNetworkReport::Ok);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void takesUpANewCertificate()
    {
        const TlsFilePair files{m_authority.filePath("used.pem"_s), m_authority.filePath("used.key"_s)};
        copyOver(m_good.certificate, files.certificate);
        copyOver(m_good.key, files.key);
        ServiceProcess service;
        QVERIFY2(service.start(QStringList{"--create"_s} + with(files)), qPrintable(service.failure()));
        const auto old = connected(service);
        const QSslCertificate first = old->peerCertificate();
        QCOMPARE(first, QSslCertificate::fromPath(m_good.certificate).value(0));

        copyOver(m_another.certificate, files.certificate);
        copyOver(m_another.key, files.key);
        const QSslCertificate second = QSslCertificate::fromPath(m_another.certificate).value(0);
        QVERIFY(first != second);
        QCOMPARE(connected(service)->peerCertificate(), first);
        QCOMPARE(::kill(static_cast<pid_t>(service.processId()), SIGHUP), 0);
        QTRY_COMPARE(connected(service)->peerCertificate(), second);

        // One that cannot be used changes nothing but the log.
        copyOver(m_good.key, files.key);
        QCOMPARE(::kill(static_cast<pid_t>(service.processId()), SIGHUP), 0);
        QTRY_VERIFY(service.log().contains("goes on with the old certificate"));
        QCOMPARE(connected(service)->peerCertificate(), second);
        // And who was there stayed.
        old->write("GET /health HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
        QVERIFY(restOf(*old).startsWith("HTTP/1.1 200 "));
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void refusesFilesThatDoNotFit_data()
    {
        QTest::addColumn<QString>("certificate");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("named");
        QTest::newRow("no certificate") << "/nowhere/c.pem"_s << m_good.key << "'/nowhere/c.pem'"_s;
        QTest::newRow("no key") << m_good.certificate << "/nowhere/k.pem"_s
                                << "'/nowhere/k.pem'"_s;
        QTest::newRow("key for certificate") << m_good.key << m_good.key << "cannot use the certificate"_s;
        QTest::newRow("certificate for key")
            << m_good.certificate << m_good.certificate << "cannot use the key"_s;
        QTest::newRow("key of another") << m_good.certificate << m_another.key << "is not that of"_s;
        QTest::newRow("folder") << m_authority.filePath(QString()) << m_good.key
                                << "cannot use the certificate"_s;
        QTest::newRow("key with a password") << m_good.certificate << "LOCKED"_s
                                             << "cannot use the key"_s;
        QTest::newRow("certificate alone") << m_good.certificate << QString() << "go together"_s;
        QTest::newRow("key alone") << QString() << m_good.key << "go together"_s;
    }
    void refusesFilesThatDoNotFit()
    {
        QFETCH(QString, certificate);
        QFETCH(QString, key);
        QFETCH(QString, named);
        if (key == "LOCKED"_s) {
            key = m_authority.filePath("locked.key"_s);
            QCOMPARE(QProcess::execute("openssl"_s, {"pkey"_s, "-in"_s, m_good.key, "-aes256"_s, "-passout"_s,
                                                     "pass:secret"_s, "-out"_s, key}),
                     0);
        }
        ServiceProcess service;
        const ServiceRun run = ServiceProcess::run(
            QStringList{"serve"_s, "--create"_s, "--database"_s, service.databaseFile(), "--port"_s, "0"_s} +
            with({certificate, key}));
        QVERIFY2(run.exitCode == 1 || run.exitCode == 2, run.errors.constData());
        QCOMPARE(run.output, QByteArray());
        QCOMPARE(run.errors.count('\n'), 1);
        QVERIFY2(run.errors.contains(named.toUtf8()), run.errors.constData());
    }
};

QTEST_GUILESS_MAIN(TestServiceTls)
#include "TestServiceTls.moc"
