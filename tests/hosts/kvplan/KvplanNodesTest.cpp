// nodes, todo, update and delete-nodes on a scripted server: exact requests, and what a person gets.

#include "KvplanProcess.h"
#include "PlanReplies.h"

#include <QtTest/QtTest>

using KvTest::Kvplan;
using KvTest::KvplanRun;
using KvTest::Reply;
using KvTest::ScriptedServer;
using KvTest::taskReply;
using KvTest::utf8;
using KvTest::words;

namespace {

QJsonObject task(int row, const QString& name, double done = 0)
{
    QJsonObject json = taskReply(row, name, 0, 1, 5, done);
    json.insert(QStringLiteral("planId"), QStringLiteral("p1"));
    json.insert(QStringLiteral("planName"), QStringLiteral("Tower"));
    json.insert(QStringLiteral("userIds"), QJsonArray{QStringLiteral("ann")});
    json.insert(QStringLiteral("predecessors"),
                QJsonArray{QJsonObject{{QStringLiteral("SourcePlanNodeID"), 7}}});
    return json;
}

QJsonObject counted(int count)
{
    return {{QStringLiteral("count"), count}};
}

} // namespace

class KvplanNodesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nodes()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(counted(5)));
        server.enqueue(
            Reply::json(QJsonArray{task(3, utf8("混凝土 Concrete"), 50), task(4, utf8("验收"), -1)}));
        const KvplanRun run = kvplan(server).run(words("nodes p1 --skip 2 --limit 2"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), utf8("Node  Row  Task             Start       Finish      Done\n"
                                  "────  ───  ───────────────  ──────────  ──────────  ────\n"
                                  "n3      3  混凝土 Concrete  2026-03-01  2026-03-05   50%\n"
                                  "n4      4  验收             2026-03-01  2026-03-05\n"
                                  "tasks 3 to 4 of 5; --skip 4 shows the next\n"));
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(server.complaint(), QString());
        QCOMPARE(server.requests().first().queryValue("only_count"), QStringLiteral("true"));
        QCOMPARE(server.lastRequest().path(), QByteArray("/task-service/plans/p1/planNodes"));
        QCOMPARE(server.lastRequest().queryValue("skip"), QStringLiteral("2"));
        QCOMPARE(server.lastRequest().queryValue("limit"), QStringLiteral("2"));
    }

    void footers_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("shown");
        QTest::addColumn<QString>("footer");
        QTest::newRow("none") << QStringLiteral("nodes p1") << 0 << 0 << QStringLiteral("no tasks\n");
        QTest::newRow("all") << QStringLiteral("nodes p1") << 2 << 2 << QStringLiteral("tasks 1 to 2 of 2\n");
        QTest::newRow("beyond") << QStringLiteral("nodes p1 --skip 9") << 2 << 0
                                << QStringLiteral("no tasks from 10 on; there are 2\n");
    }

    void footers()
    {
        QFETCH(QString, line);
        QFETCH(int, count);
        QFETCH(int, shown);
        QFETCH(QString, footer);
        ScriptedServer server;
        server.enqueue(Reply::json(counted(count)));
        QJsonArray page;
        for (int i = 0; i < shown; ++i)
            page.append(task(i, QStringLiteral("A")));
        server.enqueue(Reply::json(page));
        const KvplanRun run = kvplan(server).run(line.split(QLatin1Char(' ')));
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.text().endsWith(footer), qPrintable(run.text()));
        QVERIFY(shown > 0 || run.text() == footer);
    }

    void filters_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("where");
        QTest::addColumn<QString>("list");
        QTest::addColumn<QString>("finish"); // null: not in the query
        const QString any = QStringLiteral("{\"planId\":\"p1\"}");
        const QString all = QStringLiteral("all");
        QTest::newRow("none") << QStringList() << any << all << QString();
        QTest::newRow("name") << QStringList{QStringLiteral("--name"), utf8("^第.*\"50%3\" & b$")}
                              << utf8("{\"displayName\":{\"$options\":\"i\",\"$regex\":\"^第.*\\\"50%3\\\" & "
                                      "b$\"},\"planId\":\"p1\"}")
                              << all << QString();
        QTest::newRow("days") << words("--from 2026-03-05 --to 2026-03-08")
                              << QStringLiteral(
                                     "{\"createdAt\":{\"$gte\":\"2026-03-05T00:00:00.000\",\"$lt\":"
                                     "\"2026-03-09T00:00:00.000\"},\"planId\":\"p1\"}")
                              << all << QString();
        QTest::newRow("people") << words("--user ann --related-user ben")
                                << QStringLiteral(
                                       "{\"planId\":\"p1\",\"relativeUserIds\":\"ben\",\"userIds\":"
                                       "\"ann\"}")
                                << all << QString();
        QTest::newRow("received, finished") << words("--list received --finished") << any
                                            << QStringLiteral("received") << QStringLiteral("true");
        QTest::newRow("posted, unfinished")
            << words("--list post --unfinished") << any << QStringLiteral("post") << QStringLiteral("false");
        QTest::newRow("without plan")
            << words("--without-plan") << QStringLiteral("{\"planId\":null}") << all << QString();
    }

    void filters()
    {
        QFETCH(QStringList, options);
        QFETCH(QString, where);
        QFETCH(QString, finish);
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonArray()));
        const KvplanRun run = kvplan(server).run(words("nodes p1 --json --category construction") + options);
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(server.complaint(), QString()); // programs get the page alone: nothing is counted
        const KvTest::Request request = server.lastRequest();
        QCOMPARE(request.queryValue("where"), where);
        QCOMPARE(request.queryValue("category"), QStringLiteral("construction"));
        QTEST(request.queryValue("list"), "list");
        QCOMPARE(request.queryValue("finish"), finish);
        QCOMPARE(request.queryValue("skip"), QStringLiteral("0"));
        QCOMPARE(request.queryValue("limit"), QStringLiteral("50"));
    }

    void count()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(counted(395)));
        server.enqueue(Reply::json(counted(7)));
        QCOMPARE(kvplan(server).run(words("nodes p1 --count")).text(), QStringLiteral("395\n"));
        const KvplanRun json = kvplan(server).run(words("nodes p1 --count --json --finished"));
        QCOMPARE(json.object(), counted(7));
        QCOMPARE(server.complaint(), QString());
        QCOMPARE(server.lastRequest().queryValue("finish"), QStringLiteral("true"));
    }

    void todo()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonArray{task(3, utf8("混凝土"), 50)}));
        const KvplanRun run = kvplan(server).run(words("todo --skip 4 --limit 1 --category construction"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), utf8("Node  Task    Plan   Finish      Done\n"
                                  "────  ──────  ─────  ──────────  ────\n"
                                  "n3    混凝土  Tower  2026-03-05   50%\n"
                                  "--skip 5 shows the next, if there are more\n"));
        const KvTest::Request request = server.lastRequest();
        QCOMPARE(request.path(), QByteArray("/task-service/projects/tower/planNodes"));
        QCOMPARE(request.queryValue("type"), QStringLiteral("todo"));
        QCOMPARE(request.queryValue("category"), QStringLiteral("construction"));
        QCOMPARE(request.queryValue("skip"), QStringLiteral("4"));
        QCOMPARE(request.queryValue("limit"), QStringLiteral("1"));
        server.enqueue(Reply::json(QJsonArray()));
        server.enqueue(Reply::json(QJsonArray()));
        QCOMPARE(kvplan(server).run(words("todo")).text(), QStringLiteral("nothing to do\n"));
        QCOMPARE(kvplan(server).run(words("todo --skip 50")).text(), QStringLiteral("no more tasks\n"));
        QCOMPARE(server.complaint(), QString());
    }

    void updateSendsWhatDiffers()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(task(4, utf8("围挡 Hoarding"), 40)));
        QJsonObject reply = task(4, QStringLiteral("Fence"), 60);
        reply.insert(QStringLiteral("actualStartDate"), QStringLiteral("2026-03-05T08:00:00.000"));
        server.enqueue(Reply::json(reply));
        const KvplanRun run = kvplan(server).run(words(
            "update n4 name=Fence finishedPercentage=60% actualStartDate=2026-03-05T08:00 userIds=ann"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), utf8("n4  Fence\n\n"
                                  "Field               Was            Is now\n"
                                  "──────────────────  ─────────────  ────────────────\n"
                                  "name                围挡 Hoarding  Fence\n"
                                  "finishedPercentage  40%            60%\n"
                                  "actualStartDate     –              2026-03-05 08:00\n\n"
                                  "not sent, as it is so already: userIds\n"));
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(server.complaint(), QString());
        QCOMPARE(server.requests().first().target, QByteArray("/task-service/planNodes/n4?expand=true"));
        QCOMPARE(server.lastRequest().method, QByteArray("PUT"));
        QCOMPARE(server.lastRequest().target, QByteArray("/task-service/planNodes/n4"));
        QCOMPARE(server.lastRequest().body,
                 QByteArray("{\"actualStartDate\":\"2026-03-05T08:00:00.000\",\"finishedPercentage\":60,"
                            "\"name\":\"Fence\"}"));
    }

    void updateOfNothingSendsNothing()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(task(4, QStringLiteral("Fence"), 40)));
        const KvplanRun run = kvplan(server).run(words("update n4 name=Fence finishedPercentage=40"));
        QCOMPARE(run.text(),
                 QStringLiteral("n4  Fence\n\nnot sent, as it is so already: name, finishedPercentage\n"));
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(server.requestCount(), 1);
    }

    // The links of the reply stand behind those that were sent; programs get each once.
    void updateAsJson()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(task(4, QStringLiteral("Hoarding"))));
        server.enqueue(Reply::json(task(4, QStringLiteral("Fence"))));
        const KvplanRun run = kvplan(server).run(words("update n4 name=Fence --json"));
        QCOMPARE(run.object().value(QLatin1String("name")).toString(), QStringLiteral("Fence"));
        QCOMPARE(run.object().value(QLatin1String("predecessors")).toArray().size(), 1);
    }

    void updateThatTheServiceDidNotKeep()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(task(4, QStringLiteral("Hoarding"))));
        server.enqueue(Reply::json(task(4, QStringLiteral("Hoarding"))));
        const KvplanRun run = kvplan(server).run(words("update n4 name=Fence"));
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(run.error(),
                 QStringLiteral("kvplan: the service took Fence for \"name\" and kept Hoarding\n"));
    }

    void updateRefused()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(task(4, QStringLiteral("Hoarding"))));
        server.enqueue(Reply::json(
            QJsonObject{{QStringLiteral("error"),
                         QJsonObject{{QStringLiteral("code"), QStringLiteral("rightMissing")},
                                     {QStringLiteral("message"), QStringLiteral("no right 'edit'")}}}},
            403));
        const KvplanRun run = kvplan(server).run(words("update n4 name=Fence"));
        QCOMPARE(run.faultOfFailure(1), QString());
        QVERIFY2(run.error().startsWith(QStringLiteral("kvplan: cannot change the task \"n4\"")),
                 qPrintable(run.error()));
        QVERIFY2(run.error().contains(QStringLiteral("403: no right 'edit' (rightMissing)")),
                 qPrintable(run.error()));
        QVERIFY2(run.error().endsWith(QStringLiteral("ask whoever administers the service for it\n")),
                 qPrintable(run.error()));
    }

    void deleteAsks_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QString>("question");
        QTest::addColumn<QByteArray>("target"); // of the deletion; null: none
        QTest::newRow("one, no") << QStringLiteral("delete-nodes n1") << QByteArray("n\n")
                                 << QStringLiteral("Delete the task \"Task 1\"? [y/N] \n") << QByteArray();
        QTest::newRow("one, yes") << QStringLiteral("delete-nodes n1 n1") << QByteArray("y\n")
                                  << QStringLiteral("Delete the task \"Task 1\"? [y/N] \n")
                                  << QByteArray("/task-service/planNodes/n1");
        QTest::newRow("two, nobody there")
            << QStringLiteral("delete-nodes n1 n2") << QByteArray()
            << QStringLiteral("  n1  Task 1\n  n2  Task 2\nDelete these 2 tasks? [y/N] \n") << QByteArray();
        QTest::newRow("two, yes") << QStringLiteral("delete-nodes n1 n2") << QByteArray("yes\n")
                                  << QStringLiteral(
                                         "  n1  Task 1\n  n2  Task 2\nDelete these 2 tasks? [y/N] \n")
                                  << QByteArray("/task-service/planNodes");
    }

    void deleteAsks()
    {
        QFETCH(QString, line);
        QFETCH(QByteArray, answer);
        QFETCH(QString, question);
        QFETCH(QByteArray, target);
        ScriptedServer server;
        server.setHandler([](const KvTest::Request& request) {
            if (request.method == "DELETE")
                return Reply::empty();
            const int row = request.path().right(1).toInt();
            return Reply::json(task(row, QStringLiteral("Task %1").arg(row)));
        });
        Kvplan program = kvplan(server);
        program.setInput(answer);
        const KvplanRun run = program.run(line.split(QLatin1Char(' ')));
        QCOMPARE(run.text(), QString());
        QCOMPARE(run.error(),
                 question + (target.isNull() ? QStringLiteral("kvplan: nothing was deleted\n") : QString()));
        QCOMPARE(run.exitCode, target.isNull() ? 5 : 0);
        QCOMPARE(server.lastRequest().method, QByteArray(target.isNull() ? "GET" : "DELETE"));
        if (!target.isNull())
            QCOMPARE(server.lastRequest().path(), target);
    }

    void deleteOfSummaries()
    {
        ScriptedServer server;
        QJsonObject summary = task(1, QStringLiteral("Floor"));
        summary.insert(QStringLiteral("summary"), true);
        server.enqueue(Reply::json(summary));
        const KvplanRun run = kvplan(server).run(words("delete-nodes n1"));
        QVERIFY2(
            run.error().startsWith(QStringLiteral("Delete the task \"Floor\"? The tasks below stay, at the "
                                                  "top level. [y/N] ")),
            qPrintable(run.error()));
        QCOMPARE(run.exitCode, 5);
    }

    void deleteUnasked()
    {
        ScriptedServer server;
        server.enqueue(Reply::empty());
        const KvplanRun run = kvplan(server).run(words("delete-nodes --yes n1 n2 n1"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(server.complaint(), QString());
        QCOMPARE(server.lastRequest().queryValue("queryParam"), QStringLiteral("{\"ids\":[\"n1\",\"n2\"]}"));
    }

    void manyAreNotAllNamed()
    {
        ScriptedServer server;
        server.setHandler([](const KvTest::Request&) { return Reply::json(task(1, QStringLiteral("A"))); });
        QStringList arguments{QStringLiteral("delete-nodes")};
        for (int i = 0; i < 15; ++i)
            arguments.append(QStringLiteral("n%1").arg(i));
        const KvplanRun run = kvplan(server).run(arguments);
        QCOMPARE(run.exitCode, 5);
        QCOMPARE(run.errors.count("\n  "), 10);
        QVERIFY2(run.error().contains(utf8("  … and 5 more\nDelete these 15 tasks?")),
                 qPrintable(run.error()));
    }

    void onATerminal()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(counted(1)));
        server.enqueue(
            Reply::json(QJsonArray{task(1, utf8("混凝土浇筑 ").repeated(20) + QStringLiteral("\x1b[2J"))}));
        const KvplanRun run = kvplan(server).runOnTerminal(words("nodes p1"), 80);
        QCOMPARE(run.exitCode, 0);
        QVERIFY(!run.output.contains('\x1b'));
        QVERIFY2(run.text().contains(utf8("混凝土浇筑 混凝土")), qPrintable(run.text()));
        QVERIFY2(run.text().contains(utf8("…   2026-03-01  2026-03-05    0%\n")), qPrintable(run.text()));
    }
};

QTEST_GUILESS_MAIN(KvplanNodesTest)
#include "KvplanNodesTest.moc"
