// Backup and restore of a PostgreSQL database while a service runs on it. Runs with a server of its own, see
// own-postgres.sh.

#include "BackupRuns.h"
#include "FreshDatabase.h"
#include "KeptReadings.h"
#include "MixedLoad.h"
#include "PlanNodeRequests.h"
#include "store/Migrations.h"
#include "store/PostgresAddress.h"
#include "store/PostgresDatabase.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QtTest>

using namespace KvTest;
using PlanService::PostgresDatabase;

class TestBackupPostgres : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    QString path(const QString& name) const { return m_folder.filePath(name); }
    static qint64 count(ServiceProcess& service, const QString& table)
    {
        PostgresDatabase database(PlanService::readPostgresAddress(service.database()));
        return database.value("SELECT count(*) FROM %1"_s.arg(table)).toLongLong();
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY2(FreshDatabase::isPostgres(), "run me as ctest does, by own-postgres.sh"); }

    void keptDatabasesReadLikeThoseInFiles()
    {
        const QString file = path("kept.db"_s);
        QVERIFY(fillFromSql(file, QStringLiteral(SCHEMAS_DIR) +
                                      "/version-%1.sql"_s.arg(PlanService::migrations().last().version)));
        const QMap<QString, QString> expected = readingsOfFile(file);
        const QString server = qEnvironmentVariable("KV_TEST_DATABASE");
        for (const PlanService::Migration& step : PlanService::postgresMigrations()) {
            const QString name = "kept%1"_s.arg(step.version);
            PostgresDatabase(PlanService::readPostgresAddress(server + "postgres"_s))
                .execute("CREATE DATABASE %1"_s.arg(name));
            QProcess psql;
            psql.start(
                "psql"_s,
                {"--quiet"_s, "--set=ON_ERROR_STOP=1"_s, "--dbname="_s + name, "--output=/dev/null"_s,
                 "--file="_s + QStringLiteral(SCHEMAS_DIR) + "/postgres-version-%1.sql"_s.arg(step.version)});
            QVERIFY(psql.waitForFinished());
            QVERIFY2(psql.exitCode() == 0, psql.readAllStandardError().constData());
            const auto store = PlanService::openStore(server + name, PlanService::MissingDatabase::Refuse);
            PostgresDatabase raw(PlanService::readPostgresAddress(server + name));
            QCOMPARE(raw.schemaVersion(), PlanService::postgresMigrations().last().version);
            QCOMPARE(readings(raw, *store), expected);
            // One that a newer program wrote is refused in one line.
            raw.setSchemaVersion(999);
            const ServiceRun run = ServiceProcess::run({"token"_s, "list"_s, "--database"_s, server + name});
            QCOMPARE(run.exitCode, 1);
            QCOMPARE(run.errors.count('\n'), 1);
            QVERIFY2(run.errors.contains("has schema version 999"), run.errors.constData());
        }
    }

    void isOneInstantOfEachClient()
    {
        const quint32 seed = QRandomGenerator::system()->generate();
        ServiceProcess service;
        QVERIFY2(service.start({"--create"_s}), qPrintable(service.failure()));
        MixedLoad load(4, seed);
        load.start(service.port());
        QVERIFY(load.waitForChanges(20));
        std::vector<int> first;
        for (const auto& client : load.clients()) {
            first.push_back(client->states());
        }
        const QString file = path("load.dump"_s);
        const ServiceRun run = backUp(service.database(), file);
        QVERIFY2(run.exitCode == 0, run.errors.constData());
        std::vector<int> last;
        for (const auto& client : load.clients()) {
            last.push_back(client->states() + 1);
        }
        QVERIFY(load.waitForChanges(10));
        load.stop();
        QCOMPARE(load.counts().refused, 0);
        QCOMPARE(load.settle(service.port()), QString());
        QCOMPARE(QFileInfo(file).permissions() & (QFile::ReadOther | QFile::ReadGroup), QFile::Permissions());
        QCOMPARE(backUp(service.database(), file).exitCode, 1); // nothing is replaced unless told

        const ServiceRun restored = restore(file, service.database(), {"--force"_s});
        QVERIFY2(restored.exitCode == 0, restored.errors.constData());
        for (std::size_t i = 0; i < first.size(); ++i) {
            const QString wrong = load.clients().at(i)->findState(service.port(), first.at(i), last.at(i));
            QVERIFY2(wrong.isEmpty(), qPrintable("seed %1: %2"_s.arg(seed).arg(wrong)));
        }
        // And what was kept is where the clients had come to.
        QCOMPARE(keptBeside(file).size(), 1);
        QCOMPARE(restore(keptBeside(file).first(), service.database(), {"--force"_s}).exitCode, 0);
        QCOMPARE(load.settle(service.port()), QString());
        // New numbers do not meet those of the backup.
        load.start(service.port());
        QVERIFY(load.waitForChanges(10));
        load.stop();
        QCOMPARE(load.settle(service.port()), QString());
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void losesNothingThatWasAcknowledgedMeanwhile()
    {
        ServiceProcess service;
        QVERIFY(!service.seed({"--floors"_s, "2"_s}).isEmpty());
        const QString file = path("seeded.dump"_s);
        QCOMPARE(backUp(service.database(), file).exitCode, 0);
        QVERIFY2(service.start(), qPrintable(service.failure()));
        SettingWriter writer(service.port());
        QTRY_VERIFY(writer.acknowledged() > 50);
        const ServiceRun run = restore(file, service.database(), {"--force"_s});
        const int then = writer.acknowledged();
        QTRY_VERIFY(writer.acknowledged() > then + 50);
        writer.stop();
        QVERIFY2(run.exitCode == 0, run.errors.constData());
        QCOMPARE(writer.wrongStatus(), 0);
        const qint64 after = count(service, "userSettings"_s);
        QVERIFY(after > 50);
        QCOMPARE(restore(keptBeside(file).first(), service.database(), {"--force"_s}).exitCode, 0);
        QCOMPARE(count(service, "userSettings"_s) + after, qint64(writer.acknowledged()));
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void aKilledRestoreLeavesTheOldOrTheNew()
    {
        ServiceProcess service;
        QVERIFY(!service.seed({"--floors"_s, "2"_s}).isEmpty());
        const QString small = path("small.dump"_s);
        QCOMPARE(backUp(service.database(), small).exitCode, 0);
        const qint64 few = count(service, "planNodes"_s);
        QVERIFY(!service.seed({"--nodes"_s, "5000"_s}).isEmpty());
        const QString large = path("large.dump"_s);
        QCOMPARE(backUp(service.database(), large).exitCode, 0);
        const qint64 many = count(service, "planNodes"_s);
        QVERIFY2(service.start(), qPrintable(service.failure()));
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(restore(small, service.database(), {"--force"_s}).exitCode, 0);
        const int usual = static_cast<int>(timer.elapsed());
        QRandomGenerator random(QRandomGenerator::system()->generate());
        int killed = 0;
        for (int i = 0; i < 5; ++i) {
            const qint64 before = count(service, "planNodes"_s);
            QProcess process;
            process.start(ServiceProcess::program(), {"restore"_s, before == few ? large : small,
                                                      "--database"_s, service.database(), "--force"_s});
            process.waitForFinished(random.bounded(usual / 3, usual));
            process.kill();
            process.waitForFinished();
            killed += process.exitStatus() == QProcess::CrashExit ? 1 : 0;
            // A change waits until what is left of the restore has ended.
            QCOMPARE(
                RawHttp(service.port()).request("PUT", "/user-service/settings/k", "{\"value\":1}").status,
                200);
            const qint64 now = count(service, "planNodes"_s);
            QVERIFY2(now == few || now == many, qPrintable(QString::number(now)));
            QCOMPARE(count(service, "plans"_s), now == few ? qint64(1) : qint64(2));
        }
        QVERIFY(killed > 0);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void keepsWhoMayComeIn()
    {
        ServiceProcess service;
        tryTokensOfBackups(service, path("tokens.dump"_s));
    }

    void refusesInOneLine()
    {
        QTemporaryDir folder;
        ServiceProcess service;
        QVERIFY(!service.seed({"--floors"_s, "1"_s}).isEmpty());
        const QString file = folder.filePath("whole.dump"_s);
        QCOMPARE(backUp(service.database(), file).exitCode, 0);
        QFile whole(file);
        QVERIFY(whole.open(QIODevice::ReadOnly));
        QFile half(folder.filePath("half.dump"_s));
        QVERIFY(half.open(QIODevice::WriteOnly) && half.write(whole.read(whole.size() / 2)) > 0 &&
                half.flush());
        const QString password = QUrl(qEnvironmentVariable("KV_TEST_DATABASE")).password();
        QVERIFY(!password.isEmpty());
        QString elsewhere = service.database();
        elsewhere.replace("localhost"_s, "127.0.0.1"_s).replace(QRegularExpression(":[0-9]+/"_s), ":1/"_s);
        const QVector<ServiceRun> runs{
            restore(file, service.database()),
            restore(half.fileName(), service.database(), {"--force"_s}),
            restore(folder.filePath("missing"_s), service.database(), {"--force"_s}),
            restore(QCoreApplication::applicationFilePath(), service.database(), {"--force"_s}),
            backUp(service.database(), folder.filePath("missing/a.dump"_s)),
            backUp(elsewhere, folder.filePath("new.dump"_s)),
            restore(file, elsewhere, {"--force"_s}),
        };
        for (const ServiceRun& run : runs) {
            QCOMPARE(run.exitCode, 1);
            QCOMPARE(run.output, QByteArray());
            QCOMPARE(run.errors.count('\n'), 1);
            QVERIFY2(!run.errors.contains(password.toUtf8()), run.errors.constData());
        }
        QVERIFY(count(service, "planNodes"_s) > 0);
        QCOMPARE(QDir(folder.path()).entryList({"*.part"_s, "new.dump"_s}), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestBackupPostgres)
#include "TestBackupPostgres.moc"
