// respond, responses, stats, quantities, rights and state on a scripted server.

#include "KvplanProcess.h"
#include "PlanReplies.h"

#include <QtTest/QtTest>

using KvTest::KvplanRun;
using KvTest::Reply;
using KvTest::ScriptedServer;
using KvTest::taskReply;
using KvTest::utf8;
using KvTest::words;

namespace {

QJsonObject response(const char* id, int percentage)
{
    return {
        {QStringLiteral("_id"), QLatin1String(id)},
        {QStringLiteral("hostId"), QStringLiteral("n4")},
        {QStringLiteral("percentage"), percentage},
        {QStringLiteral("remark"), utf8("混凝土\nlate")},
        {QStringLiteral("actualStartDate"), QStringLiteral("2026-03-05T08:00:00.000")},
        {QStringLiteral("actualFinishDate"), QString()},
        {QStringLiteral("createdAt"), QStringLiteral("2026-03-06T18:30:00.000")},
        {QStringLiteral("createdBy"), QStringLiteral("ann")},
        {QStringLiteral("documents"),
         QJsonArray{QJsonObject{{QStringLiteral("_id"), QStringLiteral("d1")},
                                {QStringLiteral("name"), QStringLiteral("plan.pdf")}}}},
        {QStringLiteral("media"), QJsonArray{QJsonObject{{QStringLiteral("fileId"), QStringLiteral("f1")},
                                                         {QStringLiteral("thumbnail"), QStringLiteral("t1")},
                                                         {QStringLiteral("time"), 7}}}}};
}

QJsonObject situation(const char* word, int total)
{
    return {{QStringLiteral("situation"), QLatin1String(word)}, {QStringLiteral("total"), total}};
}

QJsonObject status(const char* word, int total, const QJsonArray& situations)
{
    return {{QStringLiteral("status"), QLatin1String(word)},
            {QStringLiteral("total"), total},
            {QStringLiteral("items"), situations}};
}

QJsonObject quantity(const char* type, int year, int month, int week, int day, int total)
{
    return {{QStringLiteral("type"), QLatin1String(type)},
            {QStringLiteral("year"), year},
            {QStringLiteral("month"), month},
            {QStringLiteral("week"), week},
            {QStringLiteral("day"), day},
            {QStringLiteral("total"), total}};
}

QJsonObject state(const char* task, int code)
{
    return {{QStringLiteral("_id"), QStringLiteral("s1")},
            {QStringLiteral("planId"), QStringLiteral("p1")},
            {QStringLiteral("taskId"), QLatin1String(task)},
            {QStringLiteral("responseId"), QStringLiteral("r1")},
            {QStringLiteral("state"), code}};
}

} // namespace

class KvplanProgressTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void respond()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(taskReply(4, utf8("混凝土 Concrete"), 0, 1, 5, 30)));
        server.enqueue(Reply::json(response("r1", 60)));
        QJsonObject moved = taskReply(4, utf8("混凝土 Concrete"), 0, 1, 5, 60);
        moved.insert(QStringLiteral("actualStartDate"), QStringLiteral("2026-03-05T08:00:00.000"));
        server.enqueue(Reply::json(moved));
        const KvplanRun run = kvplan(server).run(words(
            "respond n4 --percent 60 --remark late --start 2026-03-05T08:00 --document d1 --document d2 "
            "--media f1,t1,7 --media f2"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), utf8("n4  混凝土 Concrete\n\n"
                                  "Field               Was  Is now\n"
                                  "──────────────────  ───  ────────────────\n"
                                  "finishedPercentage  30%  60%\n"
                                  "actualStartDate     –    2026-03-05 08:00\n"));
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(server.complaint(), QString());
        const KvTest::Request request = server.requests().at(1);
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.target, QByteArray("/task-service/planNodes/n4/responses"));
        QCOMPARE(
            request.body,
            QByteArray("{\"actualFinishDate\":\"\",\"actualStartDate\":\"2026-03-05T08:00:00.000\","
                       "\"documentIds\":[\"d1\",\"d2\"],\"hostId\":\"n4\",\"media\":[{\"fileId\":\"f1\","
                       "\"thumbnail\":\"t1\",\"time\":7},{\"fileId\":\"f2\",\"thumbnail\":null,\"time\":0}],"
                       "\"percentage\":60,\"remark\":\"late\"}"));
    }

    // 0 percent stands for no report of one: what others report meanwhile stays.
    void respondWithoutAPercentage()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(taskReply(4, QStringLiteral("A"), 0, 1, 5, 30)));
        server.enqueue(Reply::json(response("r1", 0)));
        server.enqueue(Reply::json(taskReply(4, QStringLiteral("A"), 0, 1, 5, 30)));
        const KvplanRun run = kvplan(server).run(words("respond n4 --remark rain"));
        QCOMPARE(run.text(), QStringLiteral("n4  A\nreported; the task stays as it is\n"));
        QCOMPARE(server.requests().at(1).object().value(QLatin1String("percentage")), QJsonValue(0));
    }

    // The documents of the reply stand behind those that were sent; programs get each once.
    void respondAsJson()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(taskReply(4, QStringLiteral("A"), 0, 1, 5, 30)));
        server.enqueue(Reply::json(response("r1", 60)));
        const QJsonObject told =
            kvplan(server).run(words("respond n4 --percent 60 --document d1 --json")).object();
        QCOMPARE(server.complaint(), QString());
        QCOMPARE(told.size(), 11);
        QCOMPARE(told.value(QLatin1String("id")).toString(), QStringLiteral("r1"));
        QCOMPARE(told.value(QLatin1String("documentIds")).toArray(), (QJsonArray{QStringLiteral("d1")}));
        QCOMPARE(told.value(QLatin1String("documents")).toArray().size(), 1);
        QCOMPARE(told.value(QLatin1String("media")).toArray().first().toObject().value(QLatin1String("time")),
                 7);
    }

    void respondRefused()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(taskReply(4, QStringLiteral("A"), 0, 1, 5, 30)));
        server.enqueue(Reply::json(
            QJsonObject{{QStringLiteral("error"),
                         QJsonObject{{QStringLiteral("code"), QStringLiteral("rightMissing")},
                                     {QStringLiteral("message"), QStringLiteral("no right 'edit'")}}}},
            403));
        const KvplanRun run = kvplan(server).run(words("respond n4 --percent 60"));
        QCOMPARE(run.faultOfFailure(1), QString());
        QVERIFY2(run.error().startsWith(QStringLiteral("kvplan: cannot report on the task \"n4\" at ")),
                 qPrintable(run.error()));
        QVERIFY2(run.error().contains(QStringLiteral("no right 'edit'")), qPrintable(run.error()));
    }

    void responses()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonArray{response("r1", 60), response("r2", 100)}));
        const KvplanRun run = kvplan(server).run(words("responses n4"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), utf8("Reported          By   Done  Started     Finished  Files  Remark\n"
                                  "────────────────  ───  ────  ──────────  ────────  ─────  ───────────\n"
                                  "2026-03-06 18:30  ann   60%  2026-03-05                2  混凝土 late\n"
                                  "2026-03-06 18:30  ann  100%  2026-03-05                2  混凝土 late\n"));
        QCOMPARE(server.lastRequest().target,
                 QByteArray("/task-service/planNodes/n4/responses?order=createdAt&expand=true"));
        server.enqueue(Reply::json(QJsonArray()));
        QCOMPARE(kvplan(server).run(words("responses n4")).text(), QStringLiteral("nothing reported\n"));
        server.enqueue(Reply::json(QJsonArray{response("r1", 60)}));
        const KvplanRun json = kvplan(server).run(words("responses n4 --json"));
        QCOMPARE(json.array().first().toObject().value(QLatin1String("remark")).toString(),
                 utf8("混凝土\nlate"));
    }

    void stats()
    {
        ScriptedServer server;
        const QJsonObject statistics{
            {QStringLiteral("total"), 60},
            {QStringLiteral("items"),
             QJsonArray{status("unstart", 40, {situation("normal", 30), situation("delay", 10)}),
                        status("finished", 20,
                               {situation("ahead", 5), situation("normal", 10), situation("lost\x1b", 5)})}}};
        server.enqueue(Reply::json(statistics));
        const KvplanRun run = kvplan(server).run(words("stats --category construction"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(
            run.text(),
            utf8("Tasks        All  ahead  normal  delay  lost   █ ahead  ▓ normal  ░ delay  ▒ lost\n"
                 "───────────  ───  ─────  ──────  ─────  ─────  ────────────────────────────────────────\n"
                 "not started   40      0      30     10      0  ▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓░░░░░░░░░░\n"
                 "finished      20      5      10      0      5  █████▓▓▓▓▓▓▓▓▓▓▒▒▒▒▒\n"
                 "all           60      5      40     10      5\n"));
        const KvTest::Request request = server.lastRequest();
        QCOMPARE(request.path(), QByteArray("/task-service/projects/tower/planNodes_statistics"));
        QCOMPARE(request.queryValue("category"), QStringLiteral("construction"));
        QCOMPARE(request.queryValue("dimensions"), QStringLiteral("[\"status\",\"situation\"]"));
        server.enqueue(Reply::json(statistics));
        const QJsonObject json = kvplan(server).run(words("stats --json")).object();
        QCOMPARE(json.value(QLatin1String("total")).toInt(), 60);
        QCOMPARE(json.value(QLatin1String("items")).toArray(),
                 statistics.value(QLatin1String("items")).toArray());
        server.enqueue(Reply::json(QJsonObject{{QStringLiteral("total"), 0}}));
        QCOMPARE(kvplan(server).run(words("stats")).text(), QStringLiteral("no tasks\n"));
        QCOMPARE(server.complaint(), QString());
    }

    void statsOnATerminal()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(
            QJsonObject{{QStringLiteral("total"), 1000000},
                        {QStringLiteral("items"),
                         QJsonArray{status("unstart", 1000000, {situation("normal", 1000000)})}}}));
        const KvplanRun run = kvplan(server).runOnTerminal(words("stats"), 80);
        QCOMPARE(run.exitCode, 0);
        for (const QString& line : run.text().split(QLatin1Char('\n')))
            QVERIFY2(line.size() <= 80, qPrintable(line));
    }

    void quantities_data()
    {
        QTest::addColumn<QString>("period");
        QTest::addColumn<QJsonObject>("entry");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("shown");
        QTest::newRow("day") << QStringLiteral("day") << quantity("day", 2026, 3, 0, 5, 4)
                             << QStringLiteral("Day ") << QStringLiteral("\n2026-03-05         4  █");
        QTest::newRow("week") << QStringLiteral("week") << quantity("week", 2026, 0, 9, 0, 4)
                              << QStringLiteral("Week ") << QStringLiteral("\n2026-W09         4  █");
        QTest::newRow("month") << QStringLiteral("month") << quantity("month", 2026, 3, 0, 0, 4)
                               << QStringLiteral("Month ") << QStringLiteral("\n2026-03         4  █");
        QTest::newRow("year") << QStringLiteral("year") << quantity("year", 2026, 0, 0, 0, 4)
                              << QStringLiteral("Year ") << QStringLiteral("\n2026         4  █");
    }

    void quantities()
    {
        QFETCH(QString, period);
        QFETCH(QJsonObject, entry);
        QFETCH(QString, title);
        QFETCH(QString, shown);
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonArray{entry}));
        const KvplanRun run =
            kvplan(server).run({QStringLiteral("quantities"), QStringLiteral("--period"), period});
        QCOMPARE(run.error(), QString());
        QVERIFY2(run.text().startsWith(title), qPrintable(run.text()));
        QVERIFY2(run.text().contains(shown), qPrintable(run.text()));
        QCOMPARE(server.lastRequest().target,
                 QByteArray("/task-service/projects/tower/planNodes_quantities_statistics?category="
                            "&personal=true&period=") +
                     period.toUtf8());
        server.enqueue(Reply::json(QJsonArray{entry}));
        const KvplanRun json = kvplan(server).run(
            {QStringLiteral("quantities"), QStringLiteral("--period"), period, QStringLiteral("--json")});
        QCOMPARE(json.array(), QJsonArray{entry});
    }

    void noQuantities()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonArray()));
        const KvplanRun run = kvplan(server).run(words("quantities --category c1"));
        QCOMPARE(run.text(), QStringLiteral("nothing finished\n"));
        QCOMPARE(server.lastRequest().queryValue("period"), QStringLiteral("month"));
        QCOMPARE(server.lastRequest().queryValue("category"), QStringLiteral("c1"));
    }

    void rights()
    {
        ScriptedServer server;
        server.setHandler([](const KvTest::Request& request) {
            const QString key = request.queryValue("key");
            const bool isGranted = key == QLatin1String("edit") || key == QLatin1String("read");
            return Reply::json(QJsonObject{{QStringLiteral("value"), !isGranted ? QStringLiteral("false")
                                                                     : key == QLatin1String("read")
                                                                         ? QStringLiteral("all")
                                                                         : QStringLiteral("true")}});
        });
        const KvplanRun run = kvplan(server).run(words("rights --category construction"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), QStringLiteral("project   tower\n"
                                            "category  construction\n"
                                            "create    no\n"
                                            "edit      yes\n"
                                            "delete    no\n"
                                            "read      all plans\n"
                                            "export    no\n"));
        QCOMPARE(server.requestCount(), 5);
        QCOMPARE(server.lastRequest().queryValue("category"), QStringLiteral("construction"));
        QCOMPARE(kvplan(server).run(words("rights --json")).object(),
                 (QJsonObject{{QStringLiteral("create"), false},
                              {QStringLiteral("edit"), true},
                              {QStringLiteral("delete"), false},
                              {QStringLiteral("read"), true},
                              {QStringLiteral("export"), false}}));
    }

    // One of the five fails: a right that is not known is not told as one that is missing.
    void rightsThatCannotAllBeRead()
    {
        ScriptedServer server;
        server.setHandler([](const KvTest::Request& request) {
            return request.queryValue("key") == QLatin1String("delete")
                       ? Reply::text("oops", "text/plain", 500)
                       : Reply::json(QJsonObject{{QStringLiteral("value"), QStringLiteral("true")}});
        });
        const KvplanRun run = kvplan(server).run(words("rights"));
        QCOMPARE(run.faultOfFailure(1), QString());
        QVERIFY2(run.error().startsWith(QStringLiteral("kvplan: cannot read your rights at ")),
                 qPrintable(run.error()));
    }

    void states()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonArray{state("n1", 2), state("n2", 10)}));
        const KvplanRun run = kvplan(server).run(words("state p1 p2"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), utf8("Task  State  Plan  Response\n"
                                  "────  ─────  ────  ────────\n"
                                  "n1        2  p1    r1\n"
                                  "n2       10  p1    r1\n"));
        const KvTest::Request request = server.lastRequest();
        QCOMPARE(request.path(), QByteArray("/ka-rond-service/projects/tower/taskstates"));
        QCOMPARE(request.queryValue("where"), QStringLiteral("{\"planId\":{\"$in\":[\"p1\",\"p2\"]}}"));
        server.enqueue(Reply::json(QJsonArray()));
        QCOMPARE(kvplan(server).run(words("state p1")).text(), QStringLiteral("no metering states\n"));
        server.enqueue(Reply::json(QJsonArray{state("n1", 2)}));
        QCOMPARE(kvplan(server).run(words("state p1 --json")).array().first().toObject().size(), 5);
    }

    void settingAState()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(state("n1", 3)));
        const KvplanRun run = kvplan(server).run(words("state --task n1 --set 3"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), QStringLiteral("n1  3\n"));
        QCOMPARE(server.lastRequest().method, QByteArray("PUT"));
        QCOMPARE(server.lastRequest().target, QByteArray("/ka-rond-service/tasks/n1/taskstates"));
        QCOMPARE(server.lastRequest().body, QByteArray("{\"state\":3,\"taskId\":\"n1\"}"));
    }

    void settingAStateThatRestsOnAResponse()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(state("n1", 0)));
        server.enqueue(Reply::json(state("n1", 3)));
        const KvplanRun run = kvplan(server).run(words("state --task n1 --set 3 --response r1 --json"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.object().value(QLatin1String("state")).toInt(), 3);
        QCOMPARE(server.complaint(), QString());
        QCOMPARE(server.requests().first().target, QByteArray("/ka-rond-service/taskstates"));
        QCOMPARE(
            server.requests().first().body,
            QByteArray("{\"planId\":null,\"projectId\":\"tower\",\"responseId\":\"r1\",\"taskId\":\"n1\"}"));
        QCOMPARE(server.lastRequest().body, QByteArray("{\"state\":3,\"taskId\":\"n1\"}"));
    }
};

QTEST_GUILESS_MAIN(KvplanProgressTest)
#include "KvplanProgressTest.moc"
