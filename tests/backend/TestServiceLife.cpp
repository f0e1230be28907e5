// The real process from its start to its end: rights on the wire, bad input, crashes, memory.

#include "RawHttp.h"
#include "ServiceProcess.h"
#include "Text.h"
#include "store/SqliteDatabase.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QtTest>

#include <algorithm>
#include <memory>
#include <vector>

using namespace KvTest;

namespace {

QByteArray bearer(const QByteArray& token)
{
    return "Authorization: Bearer " + token + "\r\n";
}

void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

} // namespace

class TestServiceLife : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_seeded; ///< never started

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(!m_seeded.seed({"--floors"_s, "1"_s}).isEmpty(), qPrintable(m_seeded.failure()));
    }

    void asksForTokensAndRights()
    {
        ServiceProcess service;
        const QByteArray plan = service.seed().value("planId"_s).toString().toLatin1();
        const QByteArray node = plan.left(16) + "00000004"; // given to wang.fang and anna.berger
        QVERIFY2(service.start(), qPrintable(service.failure()));
        RawHttp http(service.port());
        const QByteArray planPath = "/task-service/plans/" + plan;
        const QByteArray nodePath = "/task-service/planNodes/" + node;
        QCOMPARE(http.get(planPath).status, 200); // no token exists yet

        const QByteArray all = service.createToken("ann"_s, "sample-project"_s, "read=all"_s);
        const QByteArray creator = service.createToken("chen.jie"_s, "sample-project"_s, "read=own"_s);
        const QByteArray worker = service.createToken("anna.berger"_s, "sample-project"_s, "read=own"_s);
        const QByteArray elsewhere = service.createToken("bo"_s, "other-project"_s, "read=all,edit"_s);
        const QByteArray category = service.createToken("cy"_s, "sample-project"_s, "read=all"_s, "other"_s);
        QVERIFY2(!all.isEmpty() && !category.isEmpty(), qPrintable(service.failure()));

        // From the first token on, without a restart.
        QCOMPARE(http.get(planPath).status, 401);
        QCOMPARE(http.get(planPath).headers.value("www-authenticate"),
                 QByteArray("Bearer realm=\"planservice\""));
        QCOMPARE(http.get(planPath, bearer("wrong")).status, 401);
        QCOMPARE(http.get("/health").status, 200);
        QCOMPARE(http.get(planPath, bearer(all)).status, 200);
        QCOMPARE(http.get(nodePath, bearer(all)).status, 200);
        QCOMPARE(http.get(planPath, bearer(creator)).status, 200);
        QCOMPARE(http.get(planPath, bearer(worker)).status, 403);
        QCOMPARE(http.get(nodePath, bearer(worker)).status, 200);
        QCOMPARE(http.get(planPath, bearer(category)).status, 403);
        const RawReply refused = http.get(planPath, bearer(elsewhere));
        QCOMPARE(refused.status, 403);
        // It names the right, and the project to those alone who have any in it.
        QVERIFY(refused.body.contains("'read'") && !refused.body.contains("sample-project"));
        QVERIFY(http.get(planPath, bearer(category)).body.contains("project 'sample-project'"));
        QCOMPARE(http.get("/task-service/plans/x", bearer(elsewhere)).status, 404);

        // Settings belong to the token's user.
        const QByteArray setting = "/user-service/settings/k";
        QCOMPARE(http.request("PUT", setting, "{\"value\":1}").status, 401);
        QCOMPARE(http.request("PUT", setting, "{\"value\":1}", bearer(all)).status, 200);
        QCOMPARE(http.get(setting, bearer(all)).body, QByteArray("{\"value\":1}"));
        QCOMPARE(http.get(setting, bearer(worker)).body, QByteArray("{}"));

        const QStringList onDatabase{"--database"_s, service.databaseFile()};
        const QStringList grant{"token"_s,          "grant"_s,    "4"_s,   "--project"_s,
                                "sample-project"_s, "--rights"_s, "read"_s};
        QCOMPARE(ServiceProcess::run(grant + onDatabase).exitCode, 0);
        QCOMPARE(http.get(planPath, bearer(elsewhere)).status, 200);
        QCOMPARE(ServiceProcess::run(QStringList{"token"_s, "revoke"_s, "4"_s} + onDatabase).exitCode, 0);
        QCOMPARE(http.get(planPath, bearer(elsewhere)).status, 401);

        const QStringList create{"token"_s,          "create"_s,   "--user"_s, "di"_s,        "--project"_s,
                                 "sample-project"_s, "--rights"_s, "read"_s,   "--expires"_s, "2999-12-31"_s};
        const QByteArray limited =
            ServiceProcess::run(create + onDatabase).output.trimmed().split('\n').last();
        QCOMPARE(http.get(planPath, bearer(limited)).status, 200);

        const ServiceRun list = ServiceProcess::run(QStringList{"token"_s, "list"_s} + onDatabase);
        QVERIFY2(list.output.contains("good until 3000-01-01T00:00:00Z"), list.output.constData());
        QVERIFY(list.output.contains("chen.jie") && list.output.contains("read=own") &&
                list.output.contains("revoked 2"));
        QFile database(service.databaseFile());
        QVERIFY(database.open(QIODevice::ReadOnly));
        QFile writeAhead(service.databaseFile() + "-wal"_s);
        QVERIFY(writeAhead.open(QIODevice::ReadOnly));
        const QByteArray stored = database.readAll() + writeAhead.readAll();
        for (const QByteArray& token : {all, creator, worker, elsewhere, category, limited}) {
            QVERIFY(!list.output.contains(token));
            QVERIFY(!service.log().contains(token));
            QVERIFY(!stored.contains(token));
        }
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void finishesWhatItStartedWhenStopped()
    {
        ServiceProcess service;
        const QByteArray plan =
            service.seed({"--nodes"_s, "20000"_s}).value("planId"_s).toString().toLatin1();
        QVERIFY2(service.start(), qPrintable(service.failure()));
        RawHttp idle(service.port());
        QCOMPARE(idle.get("/health").status, 200);
        RawHttp busy(service.port());
        busy.send(RawHttp::getText("/task-service/plans/" + plan));
        // The reply is larger than what fits into the sockets, so from here on it is under way.
        QVERIFY(busy.readHead());
        service.terminate();
        QTRY_VERIFY(QTcpServer().listen(QHostAddress::LocalHost, service.port())); // takes no new clients
        const RawReply reply = busy.read();
        QCOMPARE(reply.status, 200);
        QCOMPARE(QJsonDocument::fromJson(reply.body).object().value("tasks"_s).toArray().size(), 20000);
        QVERIFY2(service.waitForEnd(), qPrintable(service.failure()));
        QVERIFY(idle.waitForClose());
    }

    void startsAgainAfterACrash()
    {
        ServiceProcess service;
        QVERIFY(!service.seed().isEmpty());
        QVERIFY2(service.start(), qPrintable(service.failure()));
        QCOMPARE(RawHttp(service.port()).request("PUT", "/user-service/settings/k", "{\"value\":1}").status,
                 200);
        service.kill();
        QVERIFY2(service.start(), qPrintable(service.failure()));
        QCOMPARE(RawHttp(service.port()).get("/user-service/settings/k").body, QByteArray("{\"value\":1}"));
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void aKilledSeedLeavesNothingHalf()
    {
        ServiceProcess service;
        const QStringList sample{"--nodes"_s, "60000"_s};
        {
            QProcess seeding;
            seeding.start(ServiceProcess::program(),
                          QStringList{"seed"_s, "--database"_s, service.databaseFile()} + sample);
            // Until a good part of the plan stands in the write-ahead log.
            const QFileInfo writeAhead(service.databaseFile() + "-wal"_s);
            QTRY_VERIFY_WITH_TIMEOUT((QFileInfo(writeAhead.filePath()).size() > (10 << 20)), 30000);
            seeding.kill();
            QVERIFY(seeding.waitForFinished());
            QCOMPARE(seeding.exitStatus(), QProcess::CrashExit);
        }
        QVERIFY2(service.start(), qPrintable(service.failure()));
        const QByteArray plan = ServiceProcess::run(QStringList{"sample"_s} + sample).output.mid(8, 24);
        QCOMPARE(RawHttp(service.port()).get("/task-service/plans/" + plan).status, 404);
        QCOMPARE(RawHttp(service.port()).get("/task-service/planNodes/" + plan.left(16) + "00000001").status,
                 404);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
        QVERIFY(service.seed().value("added"_s).toBool());
    }

    void seedingTwiceChangesNothing()
    {
        ServiceProcess service;
        const QJsonObject first = service.seed({"--floors"_s, "2"_s});
        QVERIFY(first.value("added"_s).toBool());
        QVERIFY(service.seed({"--floors"_s, "2"_s}).isEmpty());
        QVERIFY(service.failure().contains(first.value("planId"_s).toString()));
        const QJsonObject again = service.seed({"--floors"_s, "2"_s, "--if-missing"_s});
        QCOMPARE(again.value("planId"_s), first.value("planId"_s));
        QCOMPARE(again.value("nodes"_s), first.value("nodes"_s));
        QVERIFY(!again.value("added"_s).toBool());
    }

    void seedingWritesTheModelToo()
    {
        ServiceProcess service;
        const QTemporaryDir folder;
        const QString path = folder.filePath("tower.OBJ"_s);
        QVERIFY2(!service.seed({"--floors"_s, "2"_s, "--model"_s, path}).isEmpty(),
                 qPrintable(service.failure()));
        QFile model(path);
        QVERIFY(model.open(QIODevice::ReadOnly));
        const QByteArray written = model.readAll();
        QVERIFY(written.contains("\no F02-CON-"));
        model.close();
        QVERIFY(model.remove());
        // Also beside a plan that is there already, and the same again.
        QVERIFY(!service.seed({"--floors"_s, "2"_s, "--if-missing"_s, "--model"_s, path}).isEmpty());
        QVERIFY(model.open(QIODevice::ReadOnly));
        QCOMPARE(model.readAll(), written);
    }

    void aModelThatCannotBeWrittenSeedsNothing_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("message");
        QTest::newRow("other format") << "tower.fbx"_s
                                      << "has to end in .gltf or .obj"_s;
        QTest::newRow("no such folder") << "none/tower.obj"_s
                                        << "name a file in a folder you may write to"_s;
    }
    void aModelThatCannotBeWrittenSeedsNothing()
    {
        QFETCH(QString, file);
        QFETCH(QString, message);
        ServiceProcess service;
        const QTemporaryDir folder;
        QVERIFY(service.seed({"--model"_s, folder.filePath(file)}).isEmpty());
        QVERIFY2(service.failure().contains(message), qPrintable(service.failure()));
        QVERIFY2(service.failure().contains(file), qPrintable(service.failure()));
        QVERIFY(!QFileInfo::exists(service.databaseFile()));
        QVERIFY(!QFileInfo::exists(folder.filePath(file)));
    }

    void largeRepliesWaitForRoomAndSmallOnesDoNot()
    {
        ServiceProcess service;
        const QByteArray plan = service.seed({"--nodes"_s, "8000"_s}).value("planId"_s).toString().toLatin1();
        QVERIFY2(service.start({"--reply-memory"_s, "1"_s, "--workers"_s, "2"_s}),
                 qPrintable(service.failure()));
        std::vector<std::unique_ptr<RawHttp>> clients;
        for (int i = 0; i < 8; ++i) {
            clients.push_back(std::make_unique<RawHttp>(service.port()));
            clients.back()->send(RawHttp::getText("/task-service/plans/" + plan));
        }
        // Nobody reads, so the first replies fill the memory and the rest wait; more than there are workers.
        QCOMPARE(RawHttp(service.port()).get("/health").status, 200);
        // Who got room first is not told, so all of them are read side by side.
        QTRY_VERIFY_WITH_TIMEOUT(
            std::all_of(clients.begin(), clients.end(),
                        [](const std::unique_ptr<RawHttp>& client) { return client->hasReply(); }),
            60000);
        for (const auto& client : clients) {
            const RawReply reply = client->read();
            QCOMPARE(reply.status, 200);
            QVERIFY(reply.body.endsWith("}]}"));
        }
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void furtherClientsWaitForAConnection()
    {
        ServiceProcess service;
        QVERIFY(!service.seed({"--floors"_s, "1"_s}).isEmpty());
        QVERIFY2(service.start({"--connections"_s, "2"_s}), qPrintable(service.failure()));
        RawHttp first(service.port());
        auto second = std::make_unique<RawHttp>(service.port());
        QCOMPARE(first.get("/health").status, 200);
        QCOMPARE(second->get("/health").status, 200);
        RawHttp third(service.port());
        third.send(RawHttp::getText("/health"));
        QCOMPARE(first.get("/health").status, 200);
        QVERIFY(!third.hasReply());
        second.reset();
        QCOMPARE(third.read().status, 200);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void saysWhenTheDatabaseIsTaken()
    {
        ServiceProcess service;
        const QByteArray plan = service.seed({"--floors"_s, "1"_s}).value("planId"_s).toString().toLatin1();
        QVERIFY2(service.start(), qPrintable(service.failure()));
        PlanService::SqliteDatabase other(service.databaseFile());
        other.beginWriting();
        RawHttp http(service.port());
        const RawReply reply = http.request("PUT", "/user-service/settings/k", "{\"value\":1}");
        QCOMPARE(reply.status, 503);
        QVERIFY(reply.headers.contains("retry-after"));
        QCOMPARE(http.get("/task-service/plans/" + plan).status, 200); // readers need no lock
        other.rollback();
        QCOMPARE(http.request("PUT", "/user-service/settings/k", "{\"value\":1}").status, 200);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
    }

    void complainsInOneLine_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("named");
        QTest::newRow("no command") << QStringList() << "command is needed"_s;
        QTest::newRow("unknown command") << QStringList{"frob"_s} << "'frob'"_s;
        QTest::newRow("unknown option") << QStringList{"serve"_s, "--frob"_s} << "frob"_s;
        QTest::newRow("option without its value") << QStringList{"serve"_s, "--database"_s} << "database"_s;
        QTest::newRow("one argument too many")
            << QStringList{"serve"_s, "--database"_s, "DB"_s, "extra"_s} << "'extra'"_s;
        QTest::newRow("no database given") << QStringList{"serve"_s} << "--database"_s;
        QTest::newRow("missing database")
            << QStringList{"serve"_s, "--database"_s, "MISSING"_s} << "MISSING"_s;
        QTest::newRow("foreign file") << QStringList{"serve"_s, "--database"_s, "FOREIGN"_s} << "FOREIGN"_s;
        QTest::newRow("seed into a foreign file")
            << QStringList{"seed"_s, "--database"_s, "FOREIGN"_s} << "FOREIGN"_s;
        QTest::newRow("seed into a folder that is not there")
            << QStringList{"seed"_s, "--database"_s, "NOWHERE/a.db"_s} << "NOWHERE/a.db"_s;
        QTest::newRow("seed below a file")
            << QStringList{"seed"_s, "--database"_s, "FOREIGN/a.db"_s} << "FOREIGN/a.db"_s;
        QTest::newRow("folder for a database")
            << QStringList{"serve"_s, "--database"_s, "FOLDER"_s} << "FOLDER"_s;
        QTest::newRow("port in use") << QStringList{"serve"_s, "--database"_s, "DB"_s, "--port"_s, "USED"_s}
                                     << "USED"_s;
        QTest::newRow("port too large")
            << QStringList{"serve"_s, "--database"_s, "DB"_s, "--port"_s, "70000"_s} << "70000"_s;
        QTest::newRow("port is no number")
            << QStringList{"serve"_s, "--database"_s, "DB"_s, "--port"_s, "http"_s} << "http"_s;
        QTest::newRow("address is none")
            << QStringList{"serve"_s, "--database"_s, "DB"_s, "--listen"_s, "nowhere"_s} << "nowhere"_s;
        QTest::newRow("everybody may come in, without tokens")
            << QStringList{"serve"_s, "--database"_s, "DB"_s, "--listen"_s, "0.0.0.0"_s} << "0.0.0.0"_s;
        QTest::newRow("everybody may come in, with words that do not say so")
            << QStringList{"serve"_s,   "--database"_s,       "DB"_s, "--listen"_s,
                           "0.0.0.0"_s, "--without-tokens"_s, "yes"_s}
            << "'yes'"_s;
        QTest::newRow("everybody may listen in, without TLS")
            << QStringList{"serve"_s,
                           "--database"_s,
                           "DB"_s,
                           "--listen"_s,
                           "0.0.0.0"_s,
                           "--without-tokens"_s,
                           "everybody-may-read-and-change-everything"_s}
            << "without TLS"_s;
        QTest::newRow("log in a folder that is not there")
            << QStringList{"serve"_s, "--database"_s, "DB"_s, "--log"_s, "NOWHERE/log"_s} << "NOWHERE/log"_s;
        QTest::newRow("no workers") << QStringList{"serve"_s, "--database"_s, "DB"_s, "--workers"_s, "0"_s}
                                    << "--workers"_s;
        QTest::newRow("language unknown")
            << QStringList{"seed"_s, "--database"_s, "DB"_s, "--language"_s, "xx"_s} << "'xx'"_s;
        QTest::newRow("no such day") << QStringList{"seed"_s, "--database"_s, "DB"_s, "--start-date"_s,
                                                    "2026-02-30"_s}
                                     << "2026-02-30"_s;
        QTest::newRow("too many nodes") << QStringList{"sample"_s, "--nodes"_s, "1000001"_s} << "1000001"_s;
        QTest::newRow("sample below a file")
            << QStringList{"sample"_s, "--output"_s, "FOREIGN/a.json"_s} << "FOREIGN/a.json"_s;
        QTest::newRow("unknown token action")
            << QStringList{"token"_s, "frob"_s, "--database"_s, "DB"_s} << "'frob'"_s;
        QTest::newRow("token without user")
            << QStringList{"token"_s, "create"_s, "--database"_s, "DB"_s} << "--user"_s;
        QTest::newRow("unknown right")
            << QStringList{"token"_s, "create"_s,    "--database"_s, "DB"_s,       "--user"_s,
                           "u"_s,     "--project"_s, "p"_s,          "--rights"_s, "fly"_s}
            << "'fly'"_s;
        QTest::newRow("token for days gone by")
            << QStringList{"token"_s,     "create"_s, "--database"_s, "DB"_s,   "--user"_s,    "u"_s,
                           "--project"_s, "p"_s,      "--rights"_s,   "read"_s, "--expires"_s, "2026-01-31"_s}
            << "2026-01-31"_s;
        QTest::newRow("no such last day")
            << QStringList{"token"_s,     "create"_s, "--database"_s, "DB"_s,   "--user"_s,    "u"_s,
                           "--project"_s, "p"_s,      "--rights"_s,   "read"_s, "--expires"_s, "tomorrow"_s}
            << "tomorrow"_s;
        QTest::newRow("no such token")
            << QStringList{"token"_s, "revoke"_s, "7"_s, "--database"_s, "DB"_s} << "7"_s;
        QTest::newRow("token is no number")
            << QStringList{"token"_s, "revoke"_s, "x"_s, "--database"_s, "DB"_s} << "'x'"_s;
    }
    void complainsInOneLine()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, named);
        const QDir folder = QFileInfo(m_seeded.databaseFile()).dir();
        writeFile(folder.filePath("FOREIGN"_s), "notes\n");
        QTcpServer used;
        QVERIFY(used.listen(QHostAddress::LocalHost));
        const auto fill = [&](QString text) {
            for (const char* name : {"FOREIGN", "MISSING", "NOWHERE"}) {
                text.replace(QLatin1String(name), folder.filePath(QLatin1String(name)));
            }
            text.replace("FOLDER"_s, folder.path());
            text.replace("USED"_s, QString::number(used.serverPort()));
            return text == "DB"_s ? m_seeded.databaseFile() : text;
        };
        for (QString& argument : arguments) {
            argument = fill(argument);
        }
        const ServiceRun run = ServiceProcess::run(arguments);
        QVERIFY2(run.exitCode == 1 || run.exitCode == 2, run.errors.constData());
        QCOMPARE(run.output, QByteArray());
        QVERIFY(run.errors.startsWith("planservice"));
        QCOMPARE(run.errors.count('\n'), 1);
        QVERIFY2(run.errors.contains(fill(named).toUtf8()), run.errors.constData());
        QFile foreign(folder.filePath("FOREIGN"_s));
        QVERIFY(foreign.open(QIODevice::ReadOnly));
        QCOMPARE(foreign.readAll(), QByteArray("notes\n"));
        QVERIFY(!QFile::exists(folder.filePath("MISSING"_s)));
    }

    void explainsItself_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("said");
        QTest::newRow("overview") << QStringList{"--help"_s} << QByteArray("serve");
        QTest::newRow("version") << QStringList{"--version"_s} << QByteArray("planservice ");
        QTest::newRow("serve") << QStringList{"serve"_s, "--help"_s} << QByteArray("--listen");
        QTest::newRow("seed") << QStringList{"seed"_s, "--help"_s} << QByteArray("--status-date");
        QTest::newRow("sample") << QStringList{"sample"_s, "--help"_s} << QByteArray("--output");
        QTest::newRow("token") << QStringList{"token"_s, "--help"_s} << QByteArray("--rights");
    }
    void explainsItself()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, said);
        const ServiceRun run = ServiceProcess::run(arguments);
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.errors, QByteArray());
        QVERIFY2(run.output.contains(said), run.output.constData());
    }

    void writesTheLogToAFile()
    {
        ServiceProcess service;
        QVERIFY(!service.seed({"--floors"_s, "1"_s}).isEmpty());
        const QString path = QFileInfo(service.databaseFile()).dir().filePath("access.log"_s);
        QVERIFY2(service.start({"--log"_s, path}), qPrintable(service.failure()));
        QCOMPARE(RawHttp(service.port()).get("/health").status, 200);
        QVERIFY2(service.stop(), qPrintable(service.failure()));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().contains("\"path\":\"/health\",\"status\":200"));
        QCOMPARE(service.log(), QByteArray());
    }
};

QTEST_GUILESS_MAIN(TestServiceLife)
#include "TestServiceLife.moc"
