// import and export: what is checked, what is sent, what is written, and what stays when it cannot be.

#include "KvplanProcess.h"
#include "PlanReplies.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using KvTest::Kvplan;
using KvTest::KvplanRun;
using KvTest::planReply;
using KvTest::Reply;
using KvTest::ScriptedServer;

namespace {

const char schedule[] = R"({
    "Name": "总进度",
    "MPPFilePath": "D:/tower.mpp",
    "AllTasks": [
        {"UniqueID": 1, "ID": 1, "Name": "主体", "ParentTask": 0,
         "Start": "2026-03-05T08:00:00", "Finish": "2026-03-09T17:00:00"},
        {"UniqueID": 2, "ID": 2, "Name": "钢筋", "ParentTask": 1,
         "Predecessors": [{"SourceTaskUniqueID": 1, "Type": 1}]}
    ]
})";

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class KvplanExchangeTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    QString path(const char* name) const { return m_folder.filePath(QString::fromUtf8(name)); }

    QString written(const char* name, const QByteArray& content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", name);
        return file.fileName();
    }

private Q_SLOTS:
    void importSendsThePlan_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("category");
        QTest::newRow("as the file says") << QStringList() << QStringLiteral("总进度") << QString();
        QTest::newRow("as the options say")
            << QStringList{QStringLiteral("--name"), QStringLiteral("第2期"), QStringLiteral("--category"),
                           QStringLiteral("施工")}
            << QStringLiteral("第2期") << QStringLiteral("施工");
    }

    void importSendsThePlan()
    {
        QFETCH(QStringList, options);
        QFETCH(QString, name);
        QFETCH(QString, category);
        ScriptedServer server;
        server.enqueue(Reply::json(planReply(QStringLiteral("p9"), name)));
        const KvplanRun run = kvplan(server).run(
            QStringList{QStringLiteral("import"), written("schedule.json", schedule)} + options);
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), QStringLiteral("p9  %1\n").arg(name));
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(server.complaint(), QString());
        QCOMPARE(server.lastRequest().method, QByteArray("POST"));
        QCOMPARE(server.lastRequest().target, QByteArray("/task-service/plans"));
        const QJsonObject sent = server.lastRequest().object();
        QCOMPARE(sent.value(QLatin1String("name")).toString(), name);
        QCOMPARE(sent.value(QLatin1String("category")).toString(), category);
        QCOMPARE(sent.value(QLatin1String("projectId")).toString(), QStringLiteral("tower"));
        const QJsonArray tasks = sent.value(QLatin1String("projectData")).toArray();
        QCOMPARE(tasks.size(), 2);
        const QJsonObject first = tasks.at(0).toObject();
        QCOMPARE(first.value(QLatin1String("name")).toString(), QStringLiteral("主体"));
        QCOMPARE(first.value(QLatin1String("category")).toString(), category);
        QCOMPARE(first.value(QLatin1String("startDate")).toString(),
                 QStringLiteral("2026-03-05T08:00:00.000"));
        const QJsonObject second = tasks.at(1).toObject();
        QCOMPARE(second.value(QLatin1String("parentTaskID")).toInt(), 1);
        QCOMPARE(second.value(QLatin1String("predecessors")).toArray().size(), 1);
    }

    void importNamesANamelessPlanAfterItsFile()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(planReply(QStringLiteral("p9"), QStringLiteral("x"))));
        kvplan(server).run({QStringLiteral("import"), written("第2期.v3.json", "{\"AllTasks\": []}")});
        QCOMPARE(server.lastRequest().object().value(QLatin1String("name")).toString(),
                 QStringLiteral("第2期.v3"));
    }

    void importAsJson()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(planReply(QStringLiteral("p9"), QStringLiteral("总进度"))));
        const KvplanRun run = kvplan(server).run(
            {QStringLiteral("import"), QStringLiteral("--json"), written("schedule.json", schedule)});
        QCOMPARE(run.object().value(QLatin1String("id")).toString(), QStringLiteral("p9"));
    }

    void importOfABadFileSendsNothing()
    {
        ScriptedServer server;
        const QString file =
            written("bad.json", R"({"AllTasks": [{"UniqueID": 1, "ParentTask": 7}, 5, {"UniqueID": 1}]})");
        const KvplanRun run = kvplan(server).run({QStringLiteral("import"), file});
        QCOMPARE(run.exitCode, 4);
        QCOMPARE(run.text(), QString());
        QCOMPARE(run.error(), QStringLiteral("kvplan: %1: entry 2 of \"AllTasks\" is no task object\n"
                                             "kvplan: %1: task 1 \"\" has the unique id of task 1 \"\"\n"
                                             "kvplan: %1: task 1 \"\" names parent 7, which does not exist\n")
                                  .arg(file));
        QCOMPARE(server.requestCount(), 0);
    }

    void importThatTheServiceRefuses()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(
            QJsonObject{
                {QStringLiteral("error"),
                 QJsonObject{{QStringLiteral("message"), QStringLiteral("the right 'create' is missing")}}}},
            403));
        const KvplanRun run =
            kvplan(server).run({QStringLiteral("import"), written("schedule.json", schedule)});
        QCOMPARE(run.faultOfFailure(1), QString());
        QVERIFY2(run.error().contains(QStringLiteral("cannot create the plan \"总进度\"")),
                 qPrintable(run.error()));
        QVERIFY2(run.error().contains(QStringLiteral("the right 'create' is missing")),
                 qPrintable(run.error()));
    }

    void dryRun()
    {
        const QString good = written("schedule.json", schedule);
        const KvplanRun text =
            Kvplan().run({QStringLiteral("import"), QStringLiteral("--dry-run"), good}); // without any server
        QCOMPARE(text.error(), QString());
        QCOMPARE(text.text(), good + QStringLiteral(": 2 tasks, nothing wrong\n"));
        QCOMPARE(text.exitCode, 0);
        const KvplanRun json = Kvplan().run(
            {QStringLiteral("import"), QStringLiteral("--dry-run"), QStringLiteral("--json"), good});
        QCOMPARE(json.exitCode, 0);
        QCOMPARE(json.object(), (QJsonObject{{QStringLiteral("file"), good},
                                             {QStringLiteral("tasks"), 2},
                                             {QStringLiteral("problems"), QJsonArray()}}));

        const QString bad = written("bad.json", "{\"AllTasks\": [\n{\"Name\" 1}]}");
        const QString problem = QStringLiteral("no valid JSON at line 2, column 9: missing name separator");
        const KvplanRun badText = Kvplan().run({QStringLiteral("import"), QStringLiteral("--dry-run"), bad});
        QCOMPARE(badText.faultOfFailure(4), QString());
        QCOMPARE(badText.error(), QStringLiteral("kvplan: %1: %2\n").arg(bad, problem));
        const KvplanRun badJson = Kvplan().run(
            {QStringLiteral("import"), QStringLiteral("--dry-run"), QStringLiteral("--json"), bad});
        QCOMPARE(badJson.exitCode, 4);
        QCOMPARE(badJson.object().value(QLatin1String("problems")).toArray(), QJsonArray{problem});
    }

    void importOfAPipe()
    {
        Kvplan program;
        program.setInput(schedule);
        const KvplanRun run = program.run(
            {QStringLiteral("import"), QStringLiteral("--dry-run"), QStringLiteral("/dev/stdin")});
        QCOMPARE(run.text(), QStringLiteral("/dev/stdin: 2 tasks, nothing wrong\n"));
    }

    void filesThatCannotBeRead()
    {
        for (const QString& file : {path("nowhere.json"), m_folder.path()}) {
            const KvplanRun run = Kvplan().run({QStringLiteral("import"), QStringLiteral("--dry-run"), file});
            QCOMPARE(run.faultOfFailure(4), QString());
            QVERIFY2(run.error().startsWith(QStringLiteral("kvplan: cannot read \"%1\": ").arg(file)),
                     qPrintable(run.error()));
        }
    }

    void exportWritesThePlan()
    {
        const QJsonObject plan = planReply(QStringLiteral("p1"), QStringLiteral("第2期"),
                                           {KvTest::taskReply(1, QStringLiteral("主体"), 0, 1, 21, 50),
                                            KvTest::taskReply(2, QStringLiteral("钢筋"), 1, 1, 11, 100)});
        ScriptedServer server;
        server.setHandler([&](const KvTest::Request&) { return Reply::json(plan); });
        const QString file = written("第2期.json", "old");
        const KvplanRun run = kvplan(server).run({QStringLiteral("export"), QStringLiteral("p1"), file});
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), QString());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(server.lastRequest().target, QByteArray("/task-service/plans/p1"));
        const QJsonObject exported = QJsonDocument::fromJson(contentOf(file)).object();
        QCOMPARE(exported.value(QLatin1String("Name")).toString(), QStringLiteral("第2期"));
        const QJsonArray tasks = exported.value(QLatin1String("AllPlanNodes")).toArray();
        QCOMPARE(tasks.size(), 2);
        QCOMPARE(tasks.at(1).toObject().value(QLatin1String("ParentTask")).toInt(), 1);
        QCOMPARE(tasks.at(1).toObject().value(QLatin1String("Name")).toString(), QStringLiteral("钢筋"));

        const KvplanRun printed =
            kvplan(server).run({QStringLiteral("export"), QStringLiteral("p1"), QStringLiteral("-")});
        QCOMPARE(printed.output, contentOf(file));
    }

    void anOldFileStaysWhenThePlanCannotBeRead()
    {
        ScriptedServer server;
        server.setHandler([](const KvTest::Request&) {
            return Reply::json(planReply(QStringLiteral("p1"), QStringLiteral("Tower")))
                .with(Reply::Truncate);
        });
        const QString file = written("kept.json", "old");
        const KvplanRun run = kvplan(server).run({QStringLiteral("export"), QStringLiteral("p1"), file});
        QCOMPARE(run.faultOfFailure(1), QString());
        QCOMPARE(contentOf(file), QByteArray("old"));
    }

    void anOldFileStaysWhenTheDiskIsFull()
    {
        QJsonArray tasks;
        for (int i = 1; i <= 3000; ++i)
            tasks.append(KvTest::taskReply(i, QStringLiteral("主体"), 0, 1, 21, 50));
        ScriptedServer server;
        server.setHandler([&](const KvTest::Request&) {
            return Reply::json(planReply(QStringLiteral("p1"), QStringLiteral("Tower"), tasks));
        });
        QVERIFY(QDir(m_folder.path()).mkdir(QStringLiteral("full")));
        const QString file = written("full/kept.json", "old");
        // A limit of half a megabyte a file does what a full disk does: the write fails half-way. What a
        // coverage build writes of itself at its end stays below.
        const KvplanRun run =
            kvplan(server).runInShell(QStringLiteral("trap '' XFSZ; ulimit -f 1024; exec \"$0\" \"$@\""),
                                      {QStringLiteral("export"), QStringLiteral("p1"), file});
        QCOMPARE(run.faultOfFailure(3), QString());
        QVERIFY2(run.error().startsWith(QStringLiteral("kvplan: cannot write \"%1\": ").arg(file)),
                 qPrintable(run.error()));
        QCOMPARE(contentOf(file), QByteArray("old"));
        QCOMPARE(QDir(path("full")).entryList(QDir::Files), QStringList(QStringLiteral("kept.json")));
    }

    void placesThatCannotBeWritten()
    {
        ScriptedServer server;
        server.setHandler([](const KvTest::Request&) {
            return Reply::json(planReply(QStringLiteral("p1"), QStringLiteral("Tower")));
        });
        for (const QString& file : {path("nowhere/plan.json"), m_folder.path(),
                                    written("file", "x") + QStringLiteral("/plan.json")}) {
            const KvplanRun run = kvplan(server).run({QStringLiteral("export"), QStringLiteral("p1"), file});
            QCOMPARE(run.faultOfFailure(3), QString());
            QVERIFY2(run.error().startsWith(QStringLiteral("kvplan: cannot write \"%1\": ").arg(file)),
                     qPrintable(run.error()));
        }
    }
};

QTEST_GUILESS_MAIN(KvplanExchangeTest)
#include "KvplanExchangeTest.moc"
