// save on a scripted server: what it would do, what it sends, and what it tells of the outcome.

#include "KvplanProcess.h"
#include "PlanReplies.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using KvTest::Kvplan;
using KvTest::KvplanRun;
using KvTest::planReply;
using KvTest::Reply;
using KvTest::ScriptedServer;
using KvTest::utf8;
using KvTest::words;

namespace {

Reply refusal()
{
    return Reply::json(QJsonObject{{QStringLiteral("error"),
                                    QJsonObject{{QStringLiteral("code"), QStringLiteral("rightMissing")},
                                                {QStringLiteral("message"), QStringLiteral("no right")}}}},
                       403);
}

// A service with one plan of two tasks, which keeps what it is sent as the real one does.
class PlanServer : public ScriptedServer
{
public:
    PlanServer()
    {
        for (int row = 1; row <= 2; ++row) {
            QJsonObject task = KvTest::taskReply(row, QStringLiteral("Task %1").arg(row), 0, 1, 5, 0);
            task.insert(QStringLiteral("planId"), QStringLiteral("p1"));
            task.insert(QStringLiteral("displaySimulation"), 1);
            task.insert(QStringLiteral("updatedAt"), QStringLiteral("2026-03-05T08:30:00.000"));
            m_tasks.append(task);
        }
        setHandler([this](const KvTest::Request& request) { return answer(request); });
    }

    QJsonArray tasks() const { return m_tasks; }
    bool refusesCreation = false;
    bool refusesChanges = false;
    bool keepsNames = false;      ///< whatever is sent
    bool goesAfterSaving = false; ///< nothing can be read afterwards

    /// The bodies of the requests that write, as "POST /path body".
    QStringList writes() const
    {
        QStringList writes;
        const QList<KvTest::Request> all = requests();
        for (const KvTest::Request& request : all) {
            if (request.method != "GET")
                writes.append(QString::fromUtf8(request.method + ' ' + request.target + ' ' + request.body));
        }
        return writes;
    }

private:
    Reply answer(const KvTest::Request& request)
    {
        if (request.method == "POST")
            return refusesCreation ? refusal() : create(request.array());
        if (request.method == "PUT")
            return refusesChanges ? refusal() : change(request.array());
        if (m_isSaved && goesAfterSaving)
            return Reply::text("oops", "text/plain", 500);
        if (request.path() == "/task-service/plans/p1")
            return Reply::json(planReply(QStringLiteral("p1"), QStringLiteral("Tower"), m_tasks));
        return Reply::json(m_tasks);
    }

    Reply create(const QJsonArray& tasks)
    {
        m_isSaved = true;
        QJsonArray created;
        for (const QJsonValue& sent : tasks) {
            QJsonObject task = sent.toObject();
            task.insert(QStringLiteral("_id"), QStringLiteral("new%1").arg(m_tasks.size()));
            task.insert(QStringLiteral("displaySimulation"), 1);
            task.insert(QStringLiteral("entity"), task.take(QStringLiteral("links")));
            m_tasks.append(task);
            created.append(task);
        }
        return Reply::json(created, 201);
    }

    Reply change(const QJsonArray& changes)
    {
        m_isSaved = true;
        for (const QJsonValue& sent : changes) {
            for (int i = 0; i < m_tasks.size(); ++i) {
                QJsonObject task = m_tasks.at(i).toObject();
                const QJsonObject change = sent.toObject();
                if (task.value(QLatin1String("_id")) != change.value(QLatin1String("_id")))
                    continue;
                for (auto member = change.begin(); member != change.end(); ++member) {
                    if (!keepsNames || member.key() != QLatin1String("name"))
                        task.insert(member.key(), member.value());
                }
                m_tasks[i] = task;
            }
        }
        return Reply::json(QJsonArray());
    }

    QJsonArray m_tasks;
    bool m_isSaved = false;
};

} // namespace

class KvplanSaveTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    // Its project is known from the plan alone.
    KvplanRun save(const ScriptedServer& server, const QByteArray& json, const char* options,
                   const QByteArray& input = {}) const
    {
        Kvplan program(server.baseUrl());
        program.setInput(input);
        return program.run(QStringList{QStringLiteral("save"), QStringLiteral("p1"), write(json)} +
                           (*options ? words(options) : QStringList()));
    }

    QString write(const QByteArray& content) const
    {
        QFile file(m_folder.filePath(QStringLiteral("edits.json")));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

private Q_SLOTS:
    void dryRunShowsAndSendsNothing()
    {
        PlanServer server;
        const QByteArray json =
            "[{\"id\":\"n2\",\"name\":\"第2层\",\"finishedPercentage\":50},{\"name\":\"New\"}]";
        const KvplanRun run = save(server, json, "--dry-run");
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.text(), utf8("Row  Task   Field               Is      Becomes\n"
                                  "───  ─────  ──────────────────  ──────  ───────\n"
                                  "  2  第2层  name                Task 2  第2层\n"
                                  "            finishedPercentage  0%      50%\n"
                                  "  3  New    name                new     New\n"
                                  "            planNodeId          new     3\n"
                                  "            uniqueId            new     3\n"
                                  "this would create 1 task and change 1\n"));
        QCOMPARE(server.writes(), QStringList());
        const KvplanRun few = save(server, json, "--dry-run --rows 1");
        QVERIFY2(few.text().contains(utf8("\n… and 4 more changes\nthis would")), qPrintable(few.text()));
        const QJsonObject change = save(server, json, "--dry-run --json")
                                       .object()
                                       .value(QLatin1String("toUpdate"))
                                       .toArray()
                                       .first()
                                       .toObject();
        QCOMPARE(change.value(QLatin1String("id")).toString(), QStringLiteral("n2"));
        QCOMPARE(change.value(QLatin1String("changes")).toObject().value(QLatin1String("finishedPercentage")),
                 QJsonValue(QJsonObject{{QStringLiteral("was"), 0}, {QStringLiteral("becomes"), 50}}));
        QCOMPARE(server.writes(), QStringList());
    }

    void savesAfterAYes()
    {
        PlanServer server;
        const KvplanRun run =
            save(server, "[{\"id\":\"n2\",\"finishedPercentage\":50},{\"name\":\"New\"},{\"id\":\"n1\"}]", "",
                 "y\n");
        QCOMPARE(run.error(), QStringLiteral("Create 1 task and change 1? [y/N] \n"));
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.text().endsWith(QStringLiteral("\ncreated  new2  New\nchanged  n2  Task 2\n")),
                 qPrintable(run.text()));
        const QStringList writes = server.writes();
        QCOMPARE(writes.size(), 2);
        QVERIFY2(writes.at(0).startsWith(QStringLiteral("POST /task-service/plans/p1/planNodes [{")),
                 qPrintable(writes.at(0)));
        QCOMPARE(writes.at(1),
                 QStringLiteral("PUT /task-service/planNodes [{\"_id\":\"n2\",\"finishedPercentage\":50}]"));
        QCOMPARE(server.tasks().size(), 3);
        // The plan's project, though nobody named one.
        QCOMPARE(server.tasks().last().toObject().value(QLatin1String("projectId")).toString(),
                 QStringLiteral("tower"));
    }

    void manyAreNotAllNamed()
    {
        PlanServer server;
        const KvplanRun run =
            save(server, '[' + QByteArray("{\"name\":\"New\"},").repeated(7) + "{}]", "--yes --rows 3");
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text().count(QStringLiteral("\ncreated  ")), 3);
        QVERIFY2(run.text().endsWith(utf8("\n… and 5 more\n")), qPrintable(run.text()));
    }

    void savesNothingAfterANo()
    {
        PlanServer server;
        for (const char* answer : {"n\n", "", "yes please\n"}) {
            const KvplanRun run = save(server, "[{\"id\":\"n2\",\"name\":\"A\"}]", "", answer);
            QCOMPARE(run.exitCode, 5);
            QVERIFY2(run.error().endsWith(QStringLiteral("kvplan: nothing was saved\n")),
                     qPrintable(run.error()));
        }
        QCOMPARE(server.writes(), QStringList());
    }

    // The library's own save leaves these out.
    void savesRemarksToo()
    {
        PlanServer server;
        const KvplanRun run = save(
            server, "[{\"id\":\"n1\",\"remark\":\"look\"},{\"id\":\"n2\",\"remark\":\"up\",\"name\":\"A\"}]",
            "--yes");
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(server.writes(),
                 (QStringList{
                     QStringLiteral("PUT /task-service/planNodes "
                                    "[{\"_id\":\"n2\",\"name\":\"A\",\"remark\":\"up\"}]"),
                     QStringLiteral("PUT /task-service/planNodes [{\"_id\":\"n1\",\"remark\":\"look\"}]")}));
    }

    void whatWasPrintedIsNothingToSave()
    {
        PlanServer server;
        for (const char* line : {"show p1 --json", "nodes p1 --json"}) {
            const KvplanRun printed = Kvplan(server.baseUrl()).run(words(line));
            QCOMPARE(printed.exitCode, 0);
            const KvplanRun run = save(server, printed.output, "--yes");
            QCOMPARE(run.error(), QString());
            QCOMPARE(run.text(), QStringLiteral("nothing to save: the plan is as the file has it\n"));
            QCOMPARE(run.exitCode, 0);
        }
        QCOMPARE(save(server, "[]", "--yes --json").object().size(), 3);
        QCOMPARE(server.writes(), QStringList());
    }

    void fromTheStandardInput()
    {
        PlanServer server;
        Kvplan program(server.baseUrl());
        program.setInput("[{\"id\":\"n2\",\"name\":\"A\"}]");
        const KvplanRun run = program.run(words("save p1 - --yes --json"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.object().value(QLatin1String("updated")).toArray().size(), 1);
        QCOMPARE(server.writes().size(), 1);
    }

    void refusals_data()
    {
        QTest::addColumn<bool>("creation");
        QTest::addColumn<bool>("changes");
        QTest::addColumn<QString>("says");
        QTest::addColumn<QString>("saved");
        QTest::newRow("creation") << true << false << QStringLiteral("cannot create tasks at ")
                                  << QStringLiteral("changed  n1  A\n");
        QTest::newRow("changes") << false << true << QStringLiteral("cannot change tasks at ")
                                 << QStringLiteral("created  new2  New\n");
    }

    // One request refused, the other carried out: both are told.
    void refusals()
    {
        QFETCH(bool, creation);
        QFETCH(bool, changes);
        QFETCH(QString, says);
        QFETCH(QString, saved);
        PlanServer server;
        server.refusesCreation = creation;
        server.refusesChanges = changes;
        const KvplanRun run = save(server, "[{\"name\":\"New\"},{\"id\":\"n1\",\"name\":\"A\"}]", "--yes");
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.error().contains(says), qPrintable(run.error()));
        QVERIFY2(run.error().contains(QStringLiteral("403: no right (rightMissing)")),
                 qPrintable(run.error()));
        QVERIFY2(run.text().endsWith(saved), qPrintable(run.text()));
        QCOMPARE(
            run.text().count(QStringLiteral("created  ")) + run.text().count(QStringLiteral("changed  ")), 1);
    }

    void whatTheServiceDidNotKeep()
    {
        PlanServer server;
        server.keepsNames = true;
        const KvplanRun run = save(server, "[{\"id\":\"n1\",\"name\":\"A\"}]", "--yes");
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(run.error(),
                 QStringLiteral("kvplan: task 1 \"A\": \"name\" was to become A and is Task 1\n"));
    }

    void anUnknownOutcome()
    {
        PlanServer server;
        server.goesAfterSaving = true;
        const KvplanRun run = save(server, "[{\"id\":\"n1\",\"name\":\"A\"}]", "--yes");
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.error().startsWith(QStringLiteral("kvplan: cannot read the plan \"p1\" at ")),
                 qPrintable(run.error()));
        QVERIFY2(run.error().contains(QStringLiteral("\nkvplan: so it is not known what was saved")),
                 qPrintable(run.error()));
    }

    void problemsSendNothing()
    {
        PlanServer server;
        const KvplanRun run =
            save(server, "[{\"id\":\"n1\",\"nane\":1},{\"id\":\"n2\",\"name\":\"A\"}]", "--yes");
        QCOMPARE(run.faultOfFailure(4), QString());
        QVERIFY2(run.error().contains(QStringLiteral("edits.json: task 1 of the file (n1) has \"nane\"")),
                 qPrintable(run.error()));
        QCOMPARE(server.writes(), QStringList());
    }

    void overtaken()
    {
        PlanServer server;
        const QByteArray old = "[{\"id\":\"n1\",\"name\":\"A\",\"updatedAt\":\"2026-03-05T08:00:00.000\"}]";
        QCOMPARE(save(server, old, "--yes").faultOfFailure(4), QString());
        QCOMPARE(server.writes(), QStringList());
        QCOMPARE(save(server, old, "--yes --overwrite").exitCode, 0);
        QCOMPARE(server.writes().size(), 1);
    }

    void badFiles_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("says");
        QTest::newRow("empty") << QByteArray() << QStringLiteral("the file is empty");
        QTest::newRow("blank") << QByteArray(" \n\t") << QStringLiteral("the file is empty");
        QTest::newRow("binary") << QByteArray("\x7f"
                                              "ELF\0\1\2\3\xff\xfe",
                                              10)
                                << QStringLiteral("no valid JSON at line 1, column 1");
        QTest::newRow("cut off") << QByteArray("[\n{\"id\": \"n1\", ")
                                 << QStringLiteral("no valid JSON at line 2, column ");
        QTest::newRow("deep") << QByteArray(100000, '[')
                              << QStringLiteral("no valid JSON at line 1, column ");
        QTest::newRow("deep and whole") << QByteArray(5000, '[') + QByteArray(5000, ']')
                                        << QStringLiteral("no valid JSON at line 1, column ");
        QTest::newRow("a number") << QByteArray("5") << QStringLiteral("no valid JSON at line 1");
        QTest::newRow("a schedule") << QByteArray("{\"AllTasks\":[]}") << QStringLiteral("it holds no tasks");
    }

    void badFiles()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, says);
        PlanServer server;
        const KvplanRun run = save(server, content, "--yes");
        QCOMPARE(run.faultOfFailure(4), QString());
        QVERIFY2(run.error().contains(says), qPrintable(run.error()));
        QCOMPARE(server.writes(), QStringList());
    }

    void noFile()
    {
        PlanServer server;
        for (const QString& path : {QStringLiteral("/nowhere/edits.json"), QStringLiteral("/")}) {
            const KvplanRun run =
                Kvplan(server.baseUrl()).run({QStringLiteral("save"), QStringLiteral("p1"), path});
            QCOMPARE(run.faultOfFailure(4), QString());
            QVERIFY2(run.error().startsWith(QStringLiteral("kvplan: cannot read \"%1\": ").arg(path)),
                     qPrintable(run.error()));
        }
        QCOMPARE(server.requestCount(), 0);
    }

    // A million entries that are nothing are told as a few lines.
    void aHugeFile()
    {
        PlanServer server;
        const QByteArray content = '[' + QByteArray("0,").repeated(1000000) + "0]";
        const KvplanRun run = save(server, content, "--yes");
        QCOMPARE(run.exitCode, 4);
        QCOMPARE(run.errors.count('\n'), 6);
    }

    void anUnreachableService()
    {
        const QString path = write("[]");
        const KvplanRun run =
            Kvplan(ScriptedServer::refusingUrl()).run({QStringLiteral("save"), QStringLiteral("p1"), path});
        QCOMPARE(run.faultOfFailure(1), QString());
        QVERIFY2(run.error().startsWith(QStringLiteral("kvplan: cannot read the plan \"p1\": cannot reach ")),
                 qPrintable(run.error()));
    }

    void onATerminal()
    {
        PlanServer server;
        Kvplan program(server.baseUrl());
        program.setInput("y\n");
        const QString path =
            write("[{\"id\":\"n1\",\"name\":\"" + QByteArray("很长的名字").repeated(30) + "\"}]");
        const KvplanRun run = program.runOnTerminal({QStringLiteral("save"), QStringLiteral("p1"), path}, 80);
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.text().contains(utf8("\nChange 1 task? [y/N] changed  n1  很长")),
                 qPrintable(run.text()));
    }
};

QTEST_GUILESS_MAIN(KvplanSaveTest)
#include "KvplanSaveTest.moc"
