// A host process that ends with a read or a write on its way: it ends at once, by its own exit code,
// silently.

#include "ShutdownHost.h"

#include <support/ScriptedServer.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>
#include <QtTest/QtTest>

using KvTest::Reply;

class ShutdownTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ends_data();
    void ends();
};

void ShutdownTest::ends_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<QString>("operation");
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("requests");
    for (const char* operation : {"read", "create", "update", "save", "rights", "setting"}) {
        const QString name = QString::fromLatin1(operation);
        const int before = name == QLatin1String("update") || name == QLatin1String("save") ? 1 : 0;
        const auto row = [&](const char* way, int requests) {
            QTest::addRow("%s, %s", way, operation)
                << QString::fromLatin1(way) << name << before << before + requests;
        };
        row("quit", 1);
        row("quit three deep", 3);
        row("exit", 1);
        row("exit, application first", 1);
        row("static object", 0);
        row("no application any more", 0);
    }
    QTest::newRow("conversions") << QStringLiteral("conversions") << QStringLiteral("none") << 0 << 0;
}

void ShutdownTest::ends()
{
    QFETCH(QString, way);
    QFETCH(QString, operation);
    QFETCH(int, before); // requests that are answered, or 0
    QFETCH(int, requests);
    KvTest::ScriptedServer server;
    server.setHandler([](const KvTest::Request& request) {
        if (request.method == "GET" && request.target.contains("/first"))
            return Reply::json(QJsonObject{{QStringLiteral("_id"), QStringLiteral("first")}});
        return Reply::json(QJsonObject()).with(Reply::StallBeforeHeaders);
    });
    QProcess host;
    host.setProcessChannelMode(QProcess::MergedChannels);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("MALLOC_PERTURB_"),
                       QStringLiteral("165")); // shows what is used when freed
    host.setProcessEnvironment(environment);
    connect(&server, &KvTest::ScriptedServer::requestReceived, &host, [&host, before](int count) {
        if (count > before)
            host.write("\n"); // another call waits
    });
    QElapsedTimer clock;
    clock.start();
    host.start(QCoreApplication::applicationFilePath(),
               {QStringLiteral("--host"), way, operation, server.baseUrl()});
    QTRY_COMPARE_WITH_TIMEOUT(host.state(), QProcess::NotRunning, 25 * 1000);
    QCOMPARE(host.readAll(), QByteArray());
    QCOMPARE(host.exitStatus(), QProcess::NormalExit);
    QCOMPARE(host.exitCode(), ShutdownHost::Ended);
    QVERIFY2(clock.elapsed() < 20 * 1000, "it waited for the time-out");
    // All five rights are asked for, also when one fails; those after the end may still get onto the wire or
    // not.
    const int most = operation == QLatin1String("rights") ? 5 * requests : requests;
    QVERIFY2(server.requestCount() >= requests && server.requestCount() <= most,
             qPrintable(QString::number(server.requestCount())));
}

int main(int argc, char* argv[])
{
    if (argc == 5 && qstrcmp(argv[1], "--host") == 0)
        return ShutdownHost::run(argc, argv);
    QCoreApplication application(argc, argv);
    ShutdownTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "ShutdownTest.moc"
