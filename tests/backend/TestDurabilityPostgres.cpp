// The service on PostgreSQL under mixed load while it is killed or the server goes down: no acknowledged
// change is lost, none is half done, and it goes on by itself. Runs with a server of its own, see
// own-postgres.sh.

#include "DurabilityRounds.h"
#include "PlanNodeRequests.h"

#include <QtTest>

using namespace KvTest;

class TestDurabilityPostgres : public QObject
{
    Q_OBJECT

private:
    quint32 m_seed = seedOfRun();

    QString told(const QString& wrong) const { return "KV_SEED=%1: %2"_s.arg(m_seed).arg(wrong); }
    void report(const char* what, int round, const MixedLoad& load) const
    {
        qInfo("%s, KV_SEED=%u, %d rounds: %s", what, m_seed, round, qPrintable(textOf(load.counts())));
    }

    static bool serverDoes(const QStringList& action)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start("pg_ctlcluster"_s,
                      QStringList{qEnvironmentVariable("PGVERSION"), "regress"_s} + action);
        const bool done = process.waitForFinished(60000) && process.exitCode() == 0;
        if (!done) {
            qWarning("pg_ctlcluster %s ended with %d: %s", qPrintable(action.join(QLatin1Char(' '))),
                     process.exitCode(), process.readAll().constData());
        }
        return done;
    }

    /// Every worker has found the server again.
    static bool answersSteadily(quint16 port)
    {
        int good = 0;
        return QTest::qWaitFor(
            [&] {
                const int status = RawHttp(port).get("/task-service/projects/load0/plans").status;
                good = status == 200 ? good + 1 : 0;
                return good == 20;
            },
            30000);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(!qEnvironmentVariableIsEmpty("KV_TEST_DATABASE") && qEnvironmentVariableIsSet("PGVERSION"),
                 "run me as ctest does, by own-postgres.sh");
    }

    void killedUnderLoad()
    {
        QRandomGenerator random(m_seed);
        ServiceProcess service;
        MixedLoad load(6, m_seed);
        const int all = rounds(6);
        const QString wrong = killRounds(service, load, random, all);
        QVERIFY2(wrong.isEmpty(), qPrintable(told(wrong)));
        QVERIFY2(service.stop(), qPrintable(service.failure()));
        report("killed", all, load);
        QVERIFY(load.counts().unanswered >= all);
        QCOMPARE(load.counts().refused, 0);
    }

    void theServerIsRestarted_data()
    {
        QTest::addColumn<QString>("way");
        QTest::newRow("as by a crash") << "immediate"_s;
        QTest::newRow("in order") << "fast"_s;
    }
    void theServerIsRestarted()
    {
        QFETCH(QString, way);
        QRandomGenerator random(m_seed + 1);
        ServiceProcess service;
        QVERIFY2(service.start({"--create"_s}), qPrintable(service.failure()));
        const qint64 process = service.processId();
        MixedLoad load(6, m_seed + 1);
        const int all = rounds(2);
        for (int round = 0; round < all; ++round) {
            load.start(service.port());
            QVERIFY(load.waitForChanges(random.bounded(3, 20)));
            // Not by "restart", which on a busy machine may take the server for stopped and leave it as it
            // is.
            QVERIFY(serverDoes({"stop"_s, "-m"_s, way}));
            // Back at once, or away until that was noticed.
            QVERIFY(round % 2 == 0 || load.waitForRefusals(1));
            QVERIFY(serverDoes({"start"_s}));
            load.stop();
            QVERIFY2(answersSteadily(service.port()), qPrintable(told("it does not come back"_s)));
            const QString wrong = load.settle(service.port());
            QVERIFY2(wrong.isEmpty(), qPrintable(told(wrong)));
        }
        load.start(service.port());
        QVERIFY(load.waitForChanges(5));
        load.stop();
        const QString wrong = load.settle(service.port());
        QVERIFY2(wrong.isEmpty(), qPrintable(told(wrong)));
        report(QTest::currentDataTag(), all, load);
        QCOMPARE(service.processId(), process);
        QCOMPARE(load.counts().unanswered, 0); // the service itself answers all the time
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void startsInOneLineWithoutTheServer()
    {
        ServiceProcess service;
        QVERIFY2(service.start({"--create"_s}), qPrintable(service.failure()));
        QVERIFY(serverDoes({"stop"_s, "-m"_s, "fast"_s}));
        const RawReply reply = RawHttp(service.port()).get("/task-service/projects/p/plans");
        QCOMPARE(reply.status, 503);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
        const QByteArray before = service.log();
        QVERIFY(!service.start());
        const QByteArray said = service.log().mid(before.size());
        QCOMPARE(said.count('\n'), 1);
        QVERIFY2(said.contains("cannot connect to database"), said.constData());
        QVERIFY(serverDoes({"start"_s}));
        QVERIFY2(service.start(), qPrintable(service.failure()));
        QCOMPARE(RawHttp(service.port()).get("/task-service/projects/p/plans").status, 200);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }
};

QTEST_GUILESS_MAIN(TestDurabilityPostgres)
#include "TestDurabilityPostgres.moc"
