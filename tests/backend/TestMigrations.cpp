// Databases of every version that was ever released, kept as SQL, come up to date with all that is in them.

#include "DatabaseRows.h"
#include "KeptReadings.h"
#include "ServiceProcess.h"
#include "store/Migrations.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QtTest>

using namespace KvTest;
using namespace PlanService;

namespace {

int newest()
{
    return migrations().last().version;
}

QString keptFile(int version)
{
    return QStringLiteral(SCHEMAS_DIR) + "/version-%1.sql"_s.arg(version);
}

} // namespace

class TestMigrations : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath("plans.db"_s);
    }

    void everyVersionIsKept()
    {
        QStringList files;
        for (int version = 1; version <= newest(); ++version) {
            files.append("version-%1.sql"_s.arg(version));
        }
        QStringList kept = QDir(QStringLiteral(SCHEMAS_DIR)).entryList({"version-*.sql"_s}, QDir::Files);
        std::sort(files.begin(), files.end());
        std::sort(kept.begin(), kept.end());
        QCOMPARE(kept, files);
    }

    void versionsReadTheSameAfterwards_data()
    {
        QTest::addColumn<int>("version");
        for (int version = 1; version <= newest(); ++version) {
            QTest::newRow(qPrintable("version %1"_s.arg(version))) << version;
        }
    }
    void versionsReadTheSameAfterwards()
    {
        QFETCH(int, version);
        QVERIFY(fillFromSql(m_path, keptFile(version)));
        QMap<QString, QString> columns;
        QMap<QString, QStringList> before;
        {
            SqliteDatabase old(m_path);
            // The steps make today what they made when they were released.
            const QString made = m_folder->filePath("made.db"_s);
            SqliteDatabase fresh(made);
            migrate(fresh, migrations().mid(0, version));
            QCOMPARE(schemaOf(old), schemaOf(fresh));
            const QStringList tables = tablesOf(old);
            for (const QString& table : tables) {
                columns[table] = firstColumn(old, "SELECT name FROM pragma_table_info('%1')"_s.arg(table))
                                     .join(QLatin1Char(','));
                before[table] = rowsOf(old, table, columns[table]);
                QVERIFY2(!before[table].isEmpty(), qPrintable(table));
            }
        }
        const ServiceRun run = ServiceProcess::run({"token"_s, "list"_s, "--database"_s, m_path});
        QVERIFY2(run.exitCode == 0, run.errors.constData());

        SqliteDatabase now(m_path);
        QCOMPARE(now.value("PRAGMA user_version"_s).toInt(), newest());
        QCOMPARE(now.value("PRAGMA integrity_check"_s).toString(), "ok"_s);
        QVERIFY(!now.value("PRAGMA foreign_key_check"_s).isValid());
        for (auto it = before.begin(); it != before.end(); ++it) {
            QCOMPARE(rowsOf(now, it.key(), columns[it.key()]), it.value());
        }
        // And through the store as records of today do, which hold the same.
        const QString today = m_folder->filePath("today.db"_s);
        QVERIFY(fillFromSql(today, keptFile(newest())));
        const QMap<QString, QString> expected = readingsOfFile(today);
        const QMap<QString, QString> found = readingsOfFile(m_path);
        QVERIFY(found.size() >= 3 + 2 * 4 + 4);
        for (auto it = found.begin(); it != found.end(); ++it) {
            QVERIFY2(
                expected.value(it.key()) == it.value(),
                qPrintable(it.key() + ": "_s + it.value() + " instead of "_s + expected.value(it.key())));
        }
        QVERIFY(found.value("work of line\nend"_s).contains("node-2"_s));
    }

    void killedInTheMiddleItIsOneWholeVersion()
    {
        constexpr int nodes = 20000;
        const QString old = m_folder->filePath("old.db"_s);
        QVERIFY(fillFromSql(old, keptFile(1)));
        {
            SqliteDatabase database(old);
            database.execute(
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                "INSERT INTO planNodes SELECT 'many-' || i, planId, projectId, category, name, i, i, "
                "parentTaskId, startDate, finishDate, actualStartDate, actualFinishDate, createdAt, "
                "updatedAt, createdBy, document FROM n, planNodes WHERE id = 'node-2'"_s.arg(nodes));
        }
        const QStringList command{"token"_s, "list"_s, "--database"_s, m_path};
        QVERIFY(QFile::copy(old, m_path));
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(ServiceProcess::run(command).exitCode, 0);
        const int usual = static_cast<int>(timer.elapsed());
        const quint32 seed = QRandomGenerator::system()->generate();
        QRandomGenerator random(seed);
        QSet<int> met;
        int killed = 0;
        for (int i = 0; i < 10; ++i) {
            for (const char* rest : {"", "-wal", "-shm", "-journal"}) {
                QFile::remove(m_path + QLatin1String(rest));
            }
            QVERIFY(QFile::copy(old, m_path));
            QProcess process;
            process.start(ServiceProcess::program(), command);
            process.waitForFinished(random.bounded(usual));
            process.kill();
            process.waitForFinished();
            killed += process.exitStatus() == QProcess::CrashExit ? 1 : 0;
            const QByteArray where = "seed " + QByteArray::number(seed) + ", round " + QByteArray::number(i);
            {
                SqliteDatabase database(m_path);
                const int version = database.value("PRAGMA user_version"_s).toInt();
                met.insert(version);
                QVERIFY2(version >= 1 && version <= newest(), where.constData());
                const QString path = m_folder->filePath("made-%1.db"_s.arg(i));
                SqliteDatabase made(path);
                migrate(made, migrations().mid(0, version));
                QVERIFY2(schemaOf(database) == schemaOf(made), where.constData());
                QVERIFY2(database.value("SELECT count(*) FROM planNodes"_s).toInt() == nodes + 4,
                         where.constData());
                QVERIFY2(database.value("PRAGMA integrity_check"_s).toString() == "ok"_s, where.constData());
            }
            // The next start goes on from there.
            QCOMPARE(ServiceProcess::run(command).exitCode, 0);
            SqliteDatabase database(m_path);
            QCOMPARE(database.value("PRAGMA user_version"_s).toInt(), newest());
            QCOMPARE(database.value("SELECT count(*) FROM planNodes WHERE people LIKE '%王芳%'"_s).toInt(),
                     nodes + 1);
        }
        QVERIFY(killed > 0);
        qInfo("seed %u, %d of 10 killed, %d versions met", seed, killed, met.size());
    }

    void aNewerOneIsRefusedInOneLine_data()
    {
        QTest::addColumn<QStringList>("command");
        QTest::newRow("serve") << QStringList{"serve"_s, "--port"_s, "0"_s};
        QTest::newRow("seed") << QStringList{"seed"_s};
        QTest::newRow("token") << QStringList{"token"_s, "list"_s};
    }
    void aNewerOneIsRefusedInOneLine()
    {
        QFETCH(QStringList, command);
        QVERIFY(fillFromSql(m_path, keptFile(newest())));
        {
            SqliteDatabase database(m_path);
            database.execute("PRAGMA user_version = %1"_s.arg(newest() + 1));
        }
        const QStringList before = rowsOf(m_path);
        const ServiceRun run = ServiceProcess::run(command + QStringList{"--database"_s, m_path});
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(run.errors.count('\n'), 1);
        QVERIFY2(run.errors.contains("has schema version " + QByteArray::number(newest() + 1)),
                 run.errors.constData());
        QCOMPARE(run.output, QByteArray());
        QCOMPARE(rowsOf(m_path), before);
    }

    void anOlderBackupComesUpToDate()
    {
        const QString old = m_folder->filePath("old.db"_s);
        const QString backup = m_folder->filePath("old.bak"_s);
        QVERIFY(fillFromSql(old, keptFile(3)));
        const ServiceRun made = ServiceProcess::run({"backup"_s, backup, "--database"_s, old});
        QVERIFY2(made.exitCode == 0, made.errors.constData());
        // As it is before the upgrade that it is made for.
        QCOMPARE(rowsOf(backup), rowsOf(old));
        SqliteDatabase copy(backup);
        QCOMPARE(copy.value("PRAGMA user_version"_s).toInt(), 3);
        const ServiceRun run = ServiceProcess::run({"restore"_s, backup, "--database"_s, m_path});
        QVERIFY2(run.exitCode == 0, run.errors.constData());
        SqliteDatabase restored(m_path);
        QCOMPARE(restored.value("PRAGMA user_version"_s).toInt(), newest());
        QCOMPARE(copy.value("PRAGMA user_version"_s).toInt(), 3);
        QCOMPARE(rowsOf(restored, "planNodes"_s, "id, document"_s),
                 rowsOf(copy, "planNodes"_s, "id, document"_s));
    }
};

QTEST_GUILESS_MAIN(TestMigrations)
#include "TestMigrations.moc"
