// What PostgreSQL's own programs are trusted with, and what not: secrets, and files that come from anywhere.
// Runs with KV_TEST_DATABASE only, as a user who may do everything on the server.

#include "BackupRuns.h"
#include "FreshDatabase.h"
#include "store/PostgresAddress.h"
#include "store/PostgresDatabase.h"

#include <QUrlQuery>
#include <QtEndian>
#include <QtTest>

using namespace KvTest;
using PlanService::PostgresDatabase;

namespace {

std::unique_ptr<PostgresDatabase> connected(ServiceProcess& service)
{
    return std::make_unique<PostgresDatabase>(PlanService::readPostgresAddress(service.database()));
}

QString schemaOf(ServiceProcess& service)
{
    return connected(service)->value("SELECT CAST(current_schema() AS TEXT)"_s).toString();
}

/// Runs a program with a shell's pipes and quotes. @return its output; empty when it failed.
QByteArray shell(const QString& command, const QStringList& arguments)
{
    QProcess process;
    process.start("sh"_s, QStringList{"-c"_s, command, "sh"_s} + arguments);
    process.waitForFinished();
    return process.exitCode() == 0 ? process.readAllStandardOutput() : QByteArray();
}

} // namespace

class TestPostgresTools : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    ServiceProcess m_seeded;
    ServiceProcess m_filled;
    QByteArray m_genuine; ///< a backup of m_seeded, whose bytes stand in it as they are

    QString path(const QString& name) const { return m_folder.filePath(name); }
    /// The file that a forgery makes when it comes to run.
    QString trace() const { return path("ran"_s); }

    QString write(const QByteArray& content) const
    {
        QFile file(path("forged.dump"_s));
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() ? file.fileName()
                                                                                        : QString();
    }
    /// Restores it where there is nothing, and over what is there. @return a complaint; empty: nothing of it
    /// ran.
    QString restoreBothWays(const QString& file, bool shouldSucceed)
    {
        QFile::remove(trace());
        ServiceProcess fresh;
        const QVector<ServiceRun> runs{restore(file, fresh.database()),
                                       restore(file, m_filled.database(), {"--force"_s})};
        for (const ServiceRun& run : runs) {
            if ((run.exitCode == 0) != shouldSucceed || (!shouldSucceed && run.errors.count('\n') != 1)) {
                return "exit code %1: %2"_s.arg(run.exitCode).arg(QString::fromUtf8(run.errors));
            }
        }
        for (ServiceProcess* service : {&fresh, &m_filled}) {
            const QString more =
                connected(*service)
                    ->value(
                        "SELECT string_agg(proname, ' ') FROM pg_proc WHERE proname <> 'json_patch'"
                        " AND pronamespace = (SELECT oid FROM pg_namespace WHERE nspname = current_schema())"_s)
                    .toString();
            if (!more.isEmpty()) {
                return "the database has the function %1"_s.arg(more);
            }
        }
        return QFile::exists(trace()) ? "the forgery ran"_s : QString();
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(FreshDatabase::isPostgres(), "run me as ctest does");
        // The server may be another user.
        QVERIFY(QFile::setPermissions(m_folder.path(), QFile::Permissions(0x7777)));
        QVERIFY(!m_filled.seed({"--floors"_s, "1"_s}).isEmpty());
        QVERIFY(!m_seeded.seed({"--floors"_s, "1"_s}).isEmpty());
        connected(m_seeded)->execute("UPDATE plans SET name = '%1'"_s.arg(QString(100, QLatin1Char('X'))));
        // Written to a pipe it does not tell where its parts begin, so that they may be longer or shorter.
        m_genuine = shell("pg_dump --format=custom --compress=0 --schema=\"$1\" \"$2\" | cat"_s,
                          {schemaOf(m_seeded), QUrl(m_seeded.database()).toString(QUrl::RemoveQuery)});
        QCOMPARE(restoreBothWays(write(m_genuine), true), QString());
    }

    void aBackupsFunctionsAndConditionsNeverRun()
    {
        ServiceProcess service;
        QVERIFY(!service.seed({"--floors"_s, "1"_s}).isEmpty());
        const auto database = connected(service);
        database->execute(
            "CREATE FUNCTION surprise() RETURNS boolean LANGUAGE plpgsql AS"
            " $$ BEGIN COPY (SELECT 1) TO PROGRAM 'cat >%1'; RETURN true; END $$"_s.arg(trace()));
        database->execute(
            "CREATE FUNCTION surprised() RETURNS trigger LANGUAGE plpgsql AS"
            " $$ BEGIN COPY (SELECT 1) TO PROGRAM 'cat >%1'; RETURN NEW; END $$"_s.arg(trace()));
        database->execute("ALTER TABLE plans ADD CHECK (surprise())"_s);
        database->execute("CREATE TRIGGER later BEFORE INSERT ON documents FOR EACH ROW"
                          " EXECUTE FUNCTION surprised()"_s);
        const QString file = path("conditions.dump"_s);
        QCOMPARE(backUp(service.database(), file).exitCode, 0);
        // They do run where the file is believed.
        QFile::remove(trace());
        connected(service)->execute("DROP SCHEMA %1 CASCADE"_s.arg(schemaOf(service)));
        shell("exec pg_restore --dbname=\"$2\" \"$1\""_s,
              {file, QUrl(service.database()).toString(QUrl::RemoveQuery)});
        QVERIFY(QFile::exists(trace()));

        QCOMPARE(restoreBothWays(file, true), QString());
    }

    void aBackupsStatementsNeverRun_data()
    {
        QTest::addColumn<QByteArray>("genuine");
        QTest::addColumn<QByteArray>("forged");
        QTest::addColumn<bool>("restored");
        // What begins like this, with whichever columns there are.
        const QByteArray rows = "COPY SCHEMA.plans (";
        QTest::newRow("another statement in the place of COPY")
            << rows << QByteArray("COPY (SELECT 1) TO PROGRAM 'cat >TRACE';--") << false;
        QTest::newRow("a program as the source of rows")
            << rows << QByteArray("COPY SCHEMA.plans FROM PROGRAM 'touch TRACE';\n--") << false;
        QTest::newRow("a command of psql before the rows")
            << rows << QByteArray("\\! touch TRACE\nCOPY SCHEMA.plans (id) FROM stdin;\n--") << false;
        QTest::newRow("a statement among the columns")
            << rows << QByteArray("COPY SCHEMA.plans (id) FROM PROGRAM 'touch TRACE' --) FROM stdin;\n")
            << false;
        QTest::newRow("a command of psql among the columns")
            << rows << QByteArray("COPY SCHEMA.plans (id\\! touch TRACE) FROM stdin;\n") << false;
        const QByteArray number = "SELECT pg_catalog.setval('SCHEMA.tokens_id_seq', 1, false);\n";
        QTest::newRow("a statement in the place of a number")
            << number << QByteArray("COPY (SELECT 1) TO PROGRAM 'cat >TRACE';\n") << true;
        QTest::newRow("a statement behind a number")
            << number
            << QByteArray("SELECT pg_catalog.setval('SCHEMA.tokens_id_seq', 1, false);"
                          "COPY (SELECT 1) TO PROGRAM 'cat >TRACE';\n")
            << true;
        QTest::newRow("a statement as a number")
            << number
            << QByteArray(
                   "SELECT pg_catalog.setval('SCHEMA.tokens_id_seq', 1, false);\\! touch TRACE\n, true);\n")
            << true;
        QTest::newRow("a statement as a name")
            << number
            << QByteArray(
                   "SELECT pg_catalog.setval('x'); COPY (SELECT 1) TO PROGRAM 'cat >TRACE'; --tokens_id_seq',"
                   " 1, false);\n")
            << true;
        QTest::newRow("an end of the rows, and a command of psql behind it")
            << QByteArray(100, 'X') << QByteArray("\n\\.\n\\! touch TRACE\n--") << false;
        QTest::newRow("an end of the rows, and a statement behind it")
            << QByteArray(100, 'X') << QByteArray("\n\\.\nCOPY (SELECT 1) TO PROGRAM 'cat >TRACE';--")
            << false;
        QTest::newRow("a definition of a table")
            << QByteArray("CREATE TABLE SCHEMA.documents (\n    id text NOT NULL COLLATE pg_catalog.\"C\",\n")
            << QByteArray("COPY (SELECT 1) TO PROGRAM 'cat >TRACE';--") << true;
    }
    void aBackupsStatementsNeverRun()
    {
        QFETCH(QByteArray, genuine);
        QFETCH(QByteArray, forged);
        QFETCH(bool, restored);
        const auto fill = [&](QByteArray text) {
            return text.replace("SCHEMA", schemaOf(m_seeded).toUtf8()).replace("TRACE", trace().toUtf8());
        };
        QByteArray content = m_genuine;
        genuine = fill(genuine);
        forged = fill(forged);
        const int at = content.indexOf(genuine);
        QVERIFY(at > 0);
        if (genuine.startsWith('X')) {
            QVERIFY(forged.size() <= genuine.size());
            content.replace(at, genuine.size(), forged.leftJustified(genuine.size(), ' '));
        } else {
            // Before each text of the list stand a sign and four bytes of its length.
            const int length = qFromLittleEndian<qint32>(content.constData() + at - 4);
            QVERIFY(length >= genuine.size() && length < 5000);
            QByteArray prefix(4, 0);
            qToLittleEndian(qint32(forged.size()), prefix.data());
            content.replace(at - 4, length + 4, prefix + forged);
        }
        const QString file = write(content);
        // pg_restore takes it as it takes any other, and hands on what was forged.
        QVERIFY(shell("exec pg_restore --file=- \"$1\""_s, {file}).contains(forged.trimmed()));
        QCOMPARE(restoreBothWays(file, restored), QString());
    }

    void otherTablesOfABackupArePassedOver()
    {
        ServiceProcess service;
        QVERIFY(!service.seed({"--floors"_s, "1"_s}).isEmpty());
        connected(service)->execute("CREATE TABLE notes AS SELECT 'one' AS note"_s);
        const QString file = path("more.dump"_s);
        QCOMPARE(backUp(service.database(), file).exitCode, 0);
        ServiceProcess fresh;
        const ServiceRun run = restore(file, fresh.database());
        QVERIFY2(run.exitCode == 0, run.errors.constData());
        QCOMPARE(connected(fresh)
                     ->value("SELECT count(*) FROM pg_tables WHERE tablename = 'notes'"
                             " AND schemaname = current_schema()"_s)
                     .toInt(),
                 0);
        QVERIFY2(fresh.start(), qPrintable(fresh.failure()));
        QVERIFY(fresh.stop());
    }

    void aPathIsNoCommand_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("quotes") << "it's a 'backup'"_s;
        QTest::newRow("two quotes") << "''"_s;
        QTest::newRow("backslashes") << "\\! touch ran\\"_s;
        QTest::newRow("a backslash and a quote") << "\\' WITH x\\"_s;
        QTest::newRow("a command in quotes") << "' PROGRAM 'touch ran"_s;
        QTest::newRow("a variable") << "x :name :'name' `touch ran` $HOME"_s;
        QTest::newRow("another alphabet") << "备份"_s;
        QTest::newRow("an option") << "--help"_s;
    }
    void aPathIsNoCommand()
    {
        QFETCH(QString, name);
        const QString folder = path(name);
        QVERIFY(QDir().mkpath(folder));
        const QString file = folder + QLatin1Char('/') + name;
        QCOMPARE(backUp(m_seeded.database(), file).exitCode, 0);
        QCOMPARE(restoreBothWays(file, true), QString());
        QCOMPARE(QDir(folder).entryList({"ran*"_s, "*.part"_s}), QStringList());
        QVERIFY(!QFile::exists("ran"_s));
    }

    void noProcessShowsASecret_data()
    {
        QTest::addColumn<QString>("place");
        QTest::newRow("password of the user") << "userinfo"_s;
        QTest::newRow("password among the options") << "password"_s;
        QTest::newRow("password of the client's key") << "sslpassword"_s;
    }
    void noProcessShowsASecret()
    {
        QFETCH(QString, place);
        ServiceProcess service;
        QVERIFY(!service.seed({"--floors"_s, "1"_s}).isEmpty());
        QUrl url(service.database());
        QByteArray secret = url.password().toUtf8();
        QUrlQuery query(url);
        if (place == "password"_s) {
            query.addQueryItem(place, url.password());
            url.setPassword("another"_s);
        } else if (place == "sslpassword"_s) {
            secret = "hush = it's # a; secret\\";
            secret.replace(';', ','); // which Qt Sql could not tell from its own
            query.addQueryItem(place,
                               QString::fromLatin1(QUrl::toPercentEncoding(QString::fromUtf8(secret))));
        }
        url.setQuery(query);
        QTemporaryDir folder;
        for (const char* program : {"pg_dump", "pg_restore", "psql"}) {
            QFile file(folder.filePath(QLatin1String(program)));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("#!/bin/sh\n"
                       "cat /proc/$$/cmdline /proc/$PPID/cmdline >>'" +
                       folder.path().toUtf8() +
                       "/shown'\n"
                       "if [ -n \"${PGSERVICEFILE:-}\" ]; then stat -c %a \"$PGSERVICEFILE\"; cat "
                       "\"$PGSERVICEFILE\"; fi"
                       " >>'" +
                       folder.path().toUtf8() + "/" + program +
                       ".secrets'\n"
                       "PATH=${PATH#*:} exec " +
                       program + " \"$@\"\n");
            QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        }
        const QByteArray old = qgetenv("PATH");
        qputenv("PATH", folder.path().toUtf8() + ':' + old);
        const QString address = url.toString(QUrl::FullyEncoded);
        const QString file = folder.filePath("backup"_s);
        const ServiceRun saved = backUp(address, file);
        const ServiceRun restored = restore(file, address, {"--force"_s});
        qputenv("PATH", old);
        QVERIFY2(saved.exitCode == 0, saved.errors.constData());
        QVERIFY2(restored.exitCode == 0, restored.errors.constData());
        QFile shown(folder.filePath("shown"_s));
        QVERIFY(shown.open(QIODevice::ReadOnly));
        const QByteArray lines = shown.readAll();
        QVERIFY(lines.contains("pg_dump") && lines.contains("psql") && lines.contains("postgresql://"));
        QVERIFY2(!lines.contains(secret), lines.constData());
        QVERIFY2(!lines.contains(url.query(QUrl::FullyEncoded).toUtf8()), lines.constData());
        for (const char* program : {"pg_dump", "pg_restore", "psql"}) {
            QFile secrets(folder.filePath(QLatin1String(program) + ".secrets"_s));
            QVERIFY(secrets.open(QIODevice::ReadOnly));
            if (place == "sslpassword"_s) {
                QVERIFY(secrets.readAll().startsWith("600\n[planservice]\nsslpassword=" + secret + '\n'));
            } else {
                QCOMPARE(secrets.size(), qint64(0));
            }
        }
    }

    void refusesSecretsThatItCannotHandOn_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("said");
        QTest::newRow("beside a service") << "sslpassword=hush&service=plans"_s
                                          << "beside a service"_s;
        QTest::newRow("a line break") << "sslpassword=hush%0Ahost=elsewhere"_s
                                      << "line break"_s;
        QTest::newRow("a blank at the end") << "sslpassword=hush%20"_s
                                            << "blank at its end"_s;
    }
    void refusesSecretsThatItCannotHandOn()
    {
        QFETCH(QString, option);
        QFETCH(QString, said);
        ServiceProcess service;
        const ServiceRun run = restore(path("missing"_s), service.database() + "&"_s + option);
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(run.errors.count('\n'), 1);
        QVERIFY2(run.errors.contains(said.toUtf8()) && run.errors.contains("'sslpassword'"),
                 run.errors.constData());
        QVERIFY2(!run.errors.contains("hush"), run.errors.constData());
    }
};

QTEST_GUILESS_MAIN(TestPostgresTools)
#include "TestPostgresTools.moc"
