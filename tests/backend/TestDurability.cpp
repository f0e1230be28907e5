// The service under mixed load while it is killed, its disk is full, its database is taken, the clock goes
// back: no acknowledged change is lost, none is half done, and it goes on by itself. KV_ROUNDS asks for more
// rounds, KV_SEED for those of an earlier run; KV_SMALL_DISK says that the temporary folder is a small disk
// of its own.

#include "DatabaseRows.h"
#include "DurabilityRounds.h"
#include "PlanNodeRequests.h"
#include "records/SiteClock.h"

#include <QDir>
#include <QtTest>

#include <sys/resource.h>

using namespace KvTest;
using PlanService::SqliteDatabase;

namespace {

/// A disk without room: the service's files may not grow beyond where they stand, or, on a disk of its own,
/// the room is taken up by another file.
class FullDisk
{
public:
    explicit FullDisk(const ServiceProcess& service)
        : m_process(static_cast<pid_t>(service.processId()))
        , m_folder(QFileInfo(service.databaseFile()).path())
    {
    }
    ~FullDisk() { makeRoom(); }

    /// @return false when the system does not allow it.
    bool fill(int roomLeft)
    {
        if (qEnvironmentVariableIsSet("KV_SMALL_DISK")) {
            QFile file(ballast());
            const QByteArray block(1 << 16, 'x');
            if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
                return false;
            }
            while (file.write(block) == block.size()) {
            }
            return file.resize(qMax<qint64>(0, file.size() - roomLeft)) && file.flush();
        }
        // No file grows beyond where the log of changes, which begins anew with the process, comes to soon;
        // the access log, which is one of the files, has that room for itself first.
        return QFile::resize(m_folder + "/service.log"_s, 0) &&
               limit(static_cast<rlim_t>((192 << 10) + roomLeft));
    }
    bool makeRoom() { return QFile::remove(ballast()) || limit(RLIM_INFINITY); }

private:
    QString ballast() const { return m_folder + "/ballast"_s; }
    bool limit(rlim_t bytes) const
    {
        rlimit limits{};
        if (::prlimit(m_process, RLIMIT_FSIZE, nullptr, &limits) != 0) {
            return false;
        }
        limits.rlim_cur = qMin(bytes, limits.rlim_max);
        return ::prlimit(m_process, RLIMIT_FSIZE, &limits, nullptr) == 0;
    }

    pid_t m_process;
    QString m_folder;
};

/// Runs the program with no file larger than so many bytes.
ServiceRun runLimited(int bytes, const QStringList& arguments)
{
    QProcess process;
    process.start("prlimit"_s, QStringList{"--fsize=%1"_s.arg(bytes), ServiceProcess::program()} + arguments);
    ServiceRun run;
    if (process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit) {
        run.exitCode = process.exitCode();
    }
    run.output = process.readAllStandardOutput();
    run.errors = process.readAllStandardError();
    return run;
}

} // namespace

class TestDurability : public QObject
{
    Q_OBJECT

private:
    quint32 m_seed = seedOfRun();

    QString inRound(int round, const QString& wrong) const
    {
        return "KV_SEED=%1, round %2: %3"_s.arg(m_seed).arg(round).arg(wrong);
    }
    void report(int round, const MixedLoad& load) const
    {
        qInfo("KV_SEED=%u, %d rounds: %s", m_seed, round, qPrintable(textOf(load.counts())));
    }

private Q_SLOTS:
    void theCheckNoticesWhatIsLost_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::newRow("a node") << "DELETE FROM planNodes WHERE id = (SELECT max(id) FROM planNodes)"_s;
        QTest::newRow("a response")
            << "DELETE FROM responses WHERE id = (SELECT max(r.id) FROM responses r)"_s;
        QTest::newRow("a setting") << "DELETE FROM userSettings"_s;
        QTest::newRow("a metering state") << "DELETE FROM taskStates"_s;
        QTest::newRow("a plan") << "DELETE FROM plans WHERE id = (SELECT max(id) FROM plans)"_s;
        QTest::newRow("half a change of names")
            << "UPDATE planNodes SET document = json_set(document, '$.name', 'old') "
               "WHERE id = (SELECT max(id) FROM planNodes)"_s;
    }
    void theCheckNoticesWhatIsLost()
    {
        QFETCH(QString, damage);
        ServiceProcess service;
        QVERIFY2(service.start({"--create"_s}), qPrintable(service.failure()));
        MixedLoad load(1, 4); // whose changes make all of these
        load.start(service.port());
        QVERIFY(load.waitForChanges(60));
        load.stop();
        QCOMPARE(load.settle(service.port()), QString());
        SqliteDatabase database(service.databaseFile());
        const QStringList before = rowsOf(service.databaseFile());
        database.execute("PRAGMA foreign_keys = ON"_s);
        database.execute(damage);
        QVERIFY(rowsOf(service.databaseFile()) != before);
        QVERIFY(!load.settle(service.port()).isEmpty());
    }

    void killedUnderLoad()
    {
        QRandomGenerator random(m_seed);
        ServiceProcess service;
        MixedLoad load(6, m_seed);
        const int all = rounds(8);
        const QString wrong = killRounds(service, load, random, all);
        QVERIFY2(wrong.isEmpty(), qPrintable(inRound(all, wrong)));
        QVERIFY2(service.stop(), qPrintable(service.failure()));
        report(all, load);
        // The kills did meet changes under way.
        QVERIFY(load.counts().unanswered >= all);
        QCOMPARE(load.counts().refused, 0);
        SqliteDatabase database(service.databaseFile());
        QCOMPARE(database.value("PRAGMA integrity_check"_s).toString(), "ok"_s);
        QVERIFY(!database.value("PRAGMA foreign_key_check"_s).isValid());
    }

    void noRoomOnTheDisk()
    {
        QRandomGenerator random(m_seed + 1);
        ServiceProcess service;
        MixedLoad load(4, m_seed + 1);
        const int all = rounds(4);
        for (int round = 0; round < all; ++round) {
            // A log of changes that has reached its size once needs no more room.
            QVERIFY2(service.start({"--create"_s}), qPrintable(service.failure()));
            load.start(service.port());
            QVERIFY(load.waitForChanges(3));
            FullDisk disk(service);
            QVERIFY(disk.fill(random.bounded(1 << 17)));
            QVERIFY2(load.waitForRefusals(4), qPrintable(inRound(round, "nothing was refused"_s)));
            QTRY_VERIFY(service.log().contains("\"error\":\"database '"));
            // Reading goes on all the time, and with room writing does, by itself.
            QCOMPARE(RawHttp(service.port()).get("/task-service/projects/load0/plans").status, 200);
            QVERIFY(disk.makeRoom());
            QVERIFY2(load.waitForChanges(3), qPrintable(inRound(round, "it does not go on"_s)));
            load.stop();
            const QString wrong = load.settle(service.port());
            QVERIFY2(wrong.isEmpty(), qPrintable(inRound(round, wrong)));
            QVERIFY2(service.stop(), qPrintable(service.failure()));
        }
        report(all, load);
        QCOMPARE(load.counts().unanswered, 0);
        QCOMPARE(load.counts().refusedButDone, 0);
        // Nor does what stands in files.
        QVERIFY2(service.start(), qPrintable(service.failure()));
        QCOMPARE(load.settle(service.port()), QString());
        SqliteDatabase database(service.databaseFile());
        QCOMPARE(database.value("PRAGMA integrity_check"_s).toString(), "ok"_s);
    }

    void killedWhileTheDiskIsFull()
    {
        QRandomGenerator random(m_seed + 2);
        ServiceProcess service;
        MixedLoad load(4, m_seed + 2);
        const int all = rounds(3);
        for (int round = 0; round < all; ++round) {
            QVERIFY2(service.start({"--create"_s}), qPrintable(service.failure()));
            const QString wrong = load.settle(service.port());
            QVERIFY2(wrong.isEmpty(), qPrintable(inRound(round, wrong)));
            load.start(service.port());
            QVERIFY(load.waitForChanges(3));
            FullDisk disk(service);
            QVERIFY(disk.fill(random.bounded(1 << 16)));
            QVERIFY(load.waitForRefusals(2));
            service.kill();
            load.stop();
        }
        QVERIFY2(service.start(), qPrintable(service.failure()));
        const QString wrong = load.settle(service.port());
        QVERIFY2(wrong.isEmpty(), qPrintable(inRound(all, wrong)));
        QCOMPARE(load.counts().refusedButDone, 0);
        report(all, load);
    }

    void takenByAnotherProgram()
    {
        ServiceProcess service;
        QVERIFY2(service.start({"--create"_s}), qPrintable(service.failure()));
        MixedLoad load(3, m_seed + 3);
        load.start(service.port());
        QVERIFY(load.waitForChanges(5));
        SqliteDatabase other(service.databaseFile());
        other.execute("BEGIN IMMEDIATE"_s);
        QVERIFY(load.waitForRefusals(1));
        QCOMPARE(RawHttp(service.port()).get("/task-service/projects/load0/plans").status, 200);
        other.execute("COMMIT"_s);
        QVERIFY(load.waitForChanges(5));
        load.stop();
        const QString wrong = load.settle(service.port());
        QVERIFY2(wrong.isEmpty(), qPrintable(inRound(0, wrong)));
        QCOMPARE(load.counts().refusedButDone, 0);
        QVERIFY(service.log().contains("database is locked"));
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void commandsSayInOneLineThatThereIsNoRoom()
    {
        ServiceProcess service;
        const QString database = service.databaseFile();
        const ServiceRun seeding = runLimited(300000, {"seed"_s, "--database"_s, database});
        QCOMPARE(seeding.exitCode, 1);
        QCOMPARE(seeding.errors.count('\n'), 1);
        QVERIFY2(seeding.errors.contains(database.toUtf8()), seeding.errors.constData());
        // Nothing is left half done that would be in the way.
        QVERIFY2(service.seed().value("added"_s).toBool(), qPrintable(service.failure()));

        const QDir folder = QFileInfo(database).dir();
        const QString file = folder.filePath("plans.bak"_s);
        const ServiceRun backup = runLimited(300000, {"backup"_s, file, "--database"_s, database});
        QCOMPARE(backup.exitCode, 1);
        QCOMPARE(backup.errors.count('\n'), 1);
        QVERIFY2(backup.errors.contains(file.toUtf8()), backup.errors.constData());
        QCOMPARE(folder.entryList({"plans.bak*"_s}), QStringList());

        QCOMPARE(ServiceProcess::run({"backup"_s, file, "--database"_s, database}).exitCode, 0);
        const QStringList before = rowsOf(database);
        const ServiceRun restore =
            runLimited(300000, {"restore"_s, file, "--force"_s, "--database"_s, database});
        QCOMPARE(restore.exitCode, 1);
        QCOMPARE(restore.errors.count('\n'), 1);
        QCOMPARE(rowsOf(database), before);
        QCOMPARE(folder.entryList({"*.part"_s}), QStringList());
    }

    void timesDoNotGoBackWithTheClock()
    {
        PlanService::SiteClock clock;
        QCOMPARE(clock.stamp("2026-10-25T02:59:59.000"_s), "2026-10-25T02:59:59.000"_s);
        QCOMPARE(clock.stamp("2026-10-25T02:00:00.000"_s), "2026-10-25T02:59:59.000"_s);
        QCOMPARE(clock.stamp("2026-10-25T02:59:59.001"_s), "2026-10-25T02:59:59.001"_s);
        // After a restart the record itself tells.
        PlanService::SiteClock restarted;
        QCOMPARE(restarted.stamp("2026-10-25T02:00:00.000"_s, "2026-10-25T02:59:59.001"_s),
                 "2026-10-25T02:59:59.001"_s);
        QCOMPARE(restarted.stamp("2026-10-25T02:00:01.000"_s), "2026-10-25T02:00:01.000"_s);
        // A clock that was years ahead is put right, and followed.
        QCOMPARE(clock.stamp("2036-01-01T00:00:00.000"_s), "2036-01-01T00:00:00.000"_s);
        QCOMPARE(clock.stamp("2026-10-25T03:00:00.000"_s), "2026-10-25T03:00:00.000"_s);
    }

    void changesOfRecordsFromTheFutureComeAfterThem()
    {
        // As a clock that is set back leaves them to a service that starts afterwards.
        ServiceProcess service;
        QVERIFY2(service.start({"--create"_s}), qPrintable(service.failure()));
        RawHttp http(service.port());
        const QJsonObject node{{"_id"_s, "n"_s}, {"name"_s, "dig"_s}};
        const QJsonObject plan = objectOf(http.request(
            "POST", "/task-service/plans",
            jsonOf({{"projectId"_s, "p"_s}, {"name"_s, "Tower"_s}, {"projectData"_s, QJsonArray{node}}})));
        const QString future = "2999-01-01T00:00:00.000"_s;
        {
            SqliteDatabase database(service.databaseFile());
            for (const char* table : {"plans", "planNodes"}) {
                database.execute(
                    "UPDATE %1 SET createdAt = '%2', updatedAt = '%2', document = json_set(document, "
                    "'$.createdAt', '%2', '$.updatedAt', '%2')"_s.arg(QLatin1String(table), future));
            }
        }
        const QByteArray id = idOf(plan);
        QCOMPARE(http.request("PUT", "/task-service/planNodes/n", "{\"name\":\"new\"}").status, 200);
        QCOMPARE(http.request("PUT", "/task-service/plans/" + id, "{\"name\":\"new\"}").status, 200);
        QCOMPARE(http.request("PUT", "/task-service/plans/" + id,
                              "{\"projectData\":[{\"_id\":\"n\",\"name\":\"newest\"}]}")
                     .status,
                 200);
        const QJsonObject now = objectOf(http.get("/task-service/plans/" + id));
        QCOMPARE(now.value("updatedAt"_s).toString(), future);
        const QJsonObject changed = now.value("tasks"_s).toArray().first().toObject();
        QCOMPARE(changed.value("name"_s).toString(), "newest"_s);
        QCOMPARE(changed.value("createdAt"_s).toString(), future);
        QCOMPARE(changed.value("updatedAt"_s).toString(), future);
        // New records have the present.
        QCOMPARE(http.request("POST", "/task-service/planNodes/n/responses", "{\"percentage\":5}").status,
                 200);
        const QJsonObject response =
            arrayOf(http.get("/task-service/planNodes/n/responses")).first().toObject();
        QVERIFY(response.value("createdAt"_s).toString() < future);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }
};

QTEST_GUILESS_MAIN(TestDurability)
#include "TestDurability.moc"
