// plans, show and tree on a scripted server: what is asked for, and what a person or a program gets.

#include "KvplanProcess.h"
#include "PlanReplies.h"

#include <QtTest/QtTest>

using KvTest::KvplanRun;
using KvTest::planReply;
using KvTest::Reply;
using KvTest::ScriptedServer;
using KvTest::taskReply;
using KvTest::words;

namespace {

QJsonObject smallPlan()
{
    QJsonObject third = taskReply(3, QStringLiteral("混凝土 Concrete"), 1, 11, 21, 0);
    third.insert(QStringLiteral("predecessors"),
                 QJsonArray{QJsonObject{{QStringLiteral("SourcePlanNodeID"), 2}},
                            QJsonObject{{QStringLiteral("SourcePlanNodeID"), 4}}});
    QJsonObject milestone = taskReply(4, QStringLiteral("验收"), 0, 21, 21, 0);
    milestone.insert(QStringLiteral("milestone"), true);
    milestone.insert(QStringLiteral("startDate"), milestone.value(QStringLiteral("finishDate")));
    QJsonObject undated = taskReply(5, QStringLiteral("Later"), 0, 1, 1, -1);
    undated.remove(QStringLiteral("startDate"));
    undated.remove(QStringLiteral("finishDate"));
    return planReply(QStringLiteral("p1"), QStringLiteral("第2期"),
                     {taskReply(1, QStringLiteral("主体 Structure"), 0, 1, 21, 50),
                      taskReply(2, QStringLiteral("钢筋"), 1, 1, 11, 100), third, milestone, undated});
}

} // namespace

class KvplanReadingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void allPlansInNaturalOrder()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonArray{planReply(QStringLiteral("a"), QStringLiteral("plan 10")),
                                              planReply(QStringLiteral("b"), QStringLiteral("第10层")),
                                              planReply(QStringLiteral("c"), QStringLiteral("Plan 2")),
                                              planReply(QStringLiteral("d"), QStringLiteral("第2层"))}));
        const KvplanRun run = kvplan(server).run(words("plans"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), QStringLiteral("Plan  Name     Category      Changed           By\n"
                                            "────  ───────  ────────────  ────────────────  ───\n"
                                            "c     Plan 2   construction  2026-03-05 18:30  ben\n"
                                            "a     plan 10  construction  2026-03-05 18:30  ben\n"
                                            "d     第2层    construction  2026-03-05 18:30  ben\n"
                                            "b     第10层   construction  2026-03-05 18:30  ben\n"));
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(server.complaint(), QString());
        QCOMPARE(server.lastRequest().method, QByteArray("GET"));
        QCOMPARE(server.lastRequest().target, QByteArray("/task-service/projects/tower/plans"));
    }

    void plansAsJson()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonArray{planReply(QStringLiteral("a"), QStringLiteral("第\"2\"\n层")),
                                              planReply(QStringLiteral("b"), QStringLiteral("Plan 1"))}));
        const KvplanRun run = kvplan(server).run(words("plans --json"));
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.array().size(), 2);
        QCOMPARE(run.array().at(1).toObject().value(QLatin1String("name")).toString(),
                 QStringLiteral("第\"2\"\n层"));
        QCOMPARE(run.array().at(0).toObject().value(QLatin1String("updatedBy")).toString(),
                 QStringLiteral("ben"));
    }

    void noPlans()
    {
        ScriptedServer server;
        server.setHandler([](const KvTest::Request&) { return Reply::json(QJsonArray()); });
        QCOMPARE(kvplan(server).run(words("plans")).text(), QStringLiteral("no plans\n"));
        const KvplanRun json = kvplan(server).run(words("plans --json"));
        QCOMPARE(json.exitCode, 0);
        QCOMPARE(QJsonDocument::fromJson(json.output), QJsonDocument(QJsonArray()));
    }

    void filters_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("where");
        QTest::addColumn<QString>("category"); // null: not in the query
        QTest::addColumn<QString>("skip");
        QTest::addColumn<QString>("limit");
        const auto range = [](const char* from, const char* to) {
            return QStringLiteral("{\"$or\":[{\"createdAt\":{\"$gte\":\"%1\",\"$lt\":\"%2\"}},"
                                  "{\"updatedAt\":{\"$gte\":\"%1\",\"$lt\":\"%2\"}}]}")
                .arg(QLatin1String(from), QLatin1String(to));
        };
        QTest::newRow("name") << QStringList{QStringLiteral("--name"), QStringLiteral("^第.*层 & \"%41\"$")}
                              << QStringLiteral("{\"name\":{\"$options\":\"i\",\"$regex\":\"^第.*层 & "
                                                "\\\"%41\\\"$\"}}")
                              << QString() << QStringLiteral("0") << QStringLiteral("50");
        QTest::newRow("category") << words("--category construction") << QStringLiteral("{}")
                                  << QStringLiteral("construction") << QStringLiteral("0")
                                  << QStringLiteral("50");
        QTest::newRow("days") << words("--from 2026-03-05 --to 2026-03-08")
                              << range("2026-03-05T00:00:00.000", "2026-03-09T00:00:00.000") << QString()
                              << QStringLiteral("0") << QStringLiteral("50");
        QTest::newRow("since") << words("--from 2026-03-05")
                               << range("2026-03-05T00:00:00.000", "9999-12-31T00:00:00.000") << QString()
                               << QStringLiteral("0") << QStringLiteral("50");
        QTest::newRow("until") << words("--to 2026-03-05")
                               << range("1970-01-01T00:00:00.000", "2026-03-06T00:00:00.000") << QString()
                               << QStringLiteral("0") << QStringLiteral("50");
        QTest::newRow("page") << words("--page 3 --page-size 7") << QStringLiteral("{}") << QString()
                              << QStringLiteral("14") << QStringLiteral("7");
        QTest::newRow("last page of all")
            << words("--page 1000000 --page-size 1000") << QStringLiteral("{}") << QString()
            << QStringLiteral("999999000") << QStringLiteral("1000");
    }

    void filters()
    {
        QFETCH(QStringList, options);
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonObject{{QStringLiteral("count"), 15}}));
        server.enqueue(Reply::json(QJsonArray{planReply(QStringLiteral("a"), QStringLiteral("Tower"))}));
        const KvplanRun run = kvplan(server).run(words("plans") + options);
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(server.complaint(), QString());
        const KvTest::Request count = server.requests().first();
        const KvTest::Request page = server.requests().last();
        QTEST(count.queryValue("where"), "where");
        QTEST(page.queryValue("where"), "where");
        QTEST(count.queryValue("category"), "category");
        QTEST(page.queryValue("category"), "category");
        QCOMPARE(count.queryValue("only_count"), QStringLiteral("true"));
        QTEST(page.queryValue("skip"), "skip");
        QTEST(page.queryValue("limit"), "limit");
        QCOMPARE(page.path(), QByteArray("/task-service/projects/tower/plans"));
    }

    void aPageAsText()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonObject{{QStringLiteral("count"), 5}}));
        server.enqueue(Reply::json(QJsonArray{planReply(QStringLiteral("z"), QStringLiteral("Z")),
                                              planReply(QStringLiteral("a"), QStringLiteral("A"))}));
        const KvplanRun run = kvplan(server).run(words("plans --page 2 --page-size 2"));
        QCOMPARE(run.text(), QStringLiteral("Plan  Name  Category      Changed           By\n"
                                            "────  ────  ────────────  ────────────────  ───\n"
                                            "z     Z     construction  2026-03-05 18:30  ben\n"
                                            "a     A     construction  2026-03-05 18:30  ben\n"
                                            "2 of 5 plans, page 2 of 3\n"));
    }

    void aPageBehindTheLast()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonObject{{QStringLiteral("count"), 2147483647}}));
        server.enqueue(Reply::json(QJsonArray()));
        QCOMPARE(kvplan(server).run(words("plans --page 9")).text(),
                 QStringLiteral("0 of 2147483647 plans, page 9 of 42949673\n"));
    }

    void nothingMeetsTheFilter()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonObject{{QStringLiteral("count"), 0}}));
        server.enqueue(Reply::json(QJsonArray()));
        QCOMPARE(kvplan(server).run(words("plans --name x")).text(), QStringLiteral("no plans\n"));
    }

    void showAsText()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(smallPlan()));
        const KvplanRun run = kvplan(server).run(words("show p1"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(server.lastRequest().target, QByteArray("/task-service/plans/p1"));
        QCOMPARE(run.text(),
                 QStringLiteral("第2期\n"
                                "  plan      p1\n"
                                "  project   tower\n"
                                "  category  construction\n"
                                "  created   2026-01-31 09:00 ann\n"
                                "  changed   2026-03-05 18:30 ben\n"
                                "  tasks     5\n"
                                "\n"
                                "Row  Task             Start             Finish            Done  After row\n"
                                "───  ───────────────  ────────────────  ────────────────  ────  ─────────\n"
                                "  1  主体 Structure   2026-03-01 08:00  2026-03-21 17:00   50%\n"
                                "  2  钢筋             2026-03-01 08:00  2026-03-11 17:00  100%\n"
                                "  3  混凝土 Concrete  2026-03-11 08:00  2026-03-21 17:00    0%  2,4\n"
                                "  4  验收             2026-03-21 17:00  2026-03-21 17:00    0%\n"
                                "  5  Later\n"));
    }

    void showAFewRows()
    {
        ScriptedServer server;
        server.setHandler([](const KvTest::Request&) { return Reply::json(smallPlan()); });
        const QString two = kvplan(server).run(words("show p1 --rows 2")).text();
        QVERIFY2(two.endsWith(QStringLiteral("100%\n… and 3 more\n")), qPrintable(two));
        QVERIFY(!two.contains(QStringLiteral("混凝土")));
        QVERIFY(
            kvplan(server).run(words("show p1 --rows 0")).text().endsWith(QStringLiteral("tasks     5\n")));
        QVERIFY(!kvplan(server).run(words("show p1 --rows 5")).text().contains(QStringLiteral("more")));
        const QJsonObject json = kvplan(server).run(words("show p1 --rows 2 --json")).object();
        QCOMPARE(json.value(QLatin1String("planNodes")).toArray().size(), 5);
    }

    void showAsJson()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(smallPlan()));
        const QJsonObject plan = kvplan(server).run(words("show p1 --json")).object();
        QCOMPARE(plan.value(QLatin1String("id")).toString(), QStringLiteral("p1"));
        QCOMPARE(plan.value(QLatin1String("isPublic")).toInt(), 1);
        const QJsonObject third = plan.value(QLatin1String("planNodes")).toArray().at(2).toObject();
        QCOMPARE(third.value(QLatin1String("name")).toString(), QStringLiteral("混凝土 Concrete"));
        QCOMPARE(third.value(QLatin1String("startDate")).toString(),
                 QStringLiteral("2026-03-11T08:00:00.000"));
        QCOMPARE(third.value(QLatin1String("actualStartDate")), QJsonValue(QJsonValue::Null));
        QCOMPARE(third.value(QLatin1String("predecessors")).toArray().size(), 2);
    }

    void identifiersTravelUnchanged()
    {
        for (const char* id : {"a b#c", "100%", "a+b", "{\"x\"}", "a\\b", "第2期", "🏗", "%4", "%zz"}) {
            ScriptedServer server;
            server.enqueue(Reply::json(planReply(QString::fromUtf8(id), QStringLiteral("Tower"))));
            const KvplanRun run = kvplan(server).run({QStringLiteral("show"), QString::fromUtf8(id)});
            QCOMPARE(run.error(), QString());
            QCOMPARE(server.lastRequest().decodedPath(),
                     QStringLiteral("/task-service/plans/") + QString::fromUtf8(id));
        }
    }

    void treeAsText()
    {
        ScriptedServer server;
        server.setHandler([](const KvTest::Request&) { return Reply::json(smallPlan()); });
        const KvplanRun run = kvplan(server).run(words("tree p1"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.text(),
                 QStringLiteral(
                     "第2期\n"
                     "\n"
                     "Task               Start       Finish      Done  2026-03-01            2026-03-21\n"
                     "─────────────────  ──────────  ──────────  ────  ────────────────────────────────\n"
                     "主体 Structure     2026-03-01  2026-03-21   50%  ████████████████░░░░░░░░░░░░░░░░\n"
                     "  钢筋             2026-03-01  2026-03-11  100%  █████████████████\n"
                     "  混凝土 Concrete  2026-03-11  2026-03-21    0%                 ░░░░░░░░░░░░░░░░░\n"
                     "验收               2026-03-21  2026-03-21    0%                                 ◆\n"
                     "Later\n"));
        QVERIFY(kvplan(server)
                    .run(words("tree p1 --depth 1"))
                    .text()
                    .endsWith(QStringLiteral("Later\n… and 2 below these\n")));
        QCOMPARE(kvplan(server).run(words("tree p1 --depth 2")).text(), run.text());
    }

    void treeAsJson()
    {
        ScriptedServer server;
        server.setHandler([](const KvTest::Request&) { return Reply::json(smallPlan()); });
        const QJsonArray roots = kvplan(server).run(words("tree p1 --json")).array();
        QCOMPARE(roots.size(), 3);
        const QJsonArray children = roots.first().toObject().value(QLatin1String("children")).toArray();
        QCOMPARE(children.size(), 2);
        QCOMPARE(children.at(1).toObject().value(QLatin1String("planNodeId")).toInt(), 3);
        QCOMPARE(children.at(1).toObject().value(QLatin1String("children")), QJsonValue(QJsonArray()));
        const QJsonArray cut = kvplan(server).run(words("tree p1 --json --depth 1")).array();
        QCOMPARE(cut.size(), 3);
        QCOMPARE(cut.first().toObject().value(QLatin1String("children")), QJsonValue(QJsonArray()));
    }

    void treeOfAnEmptyPlan()
    {
        ScriptedServer server;
        server.setHandler([](const KvTest::Request&) {
            return Reply::json(planReply(QStringLiteral("p1"), QStringLiteral("Tower")));
        });
        QCOMPARE(kvplan(server).run(words("tree p1")).text(), QStringLiteral("Tower\nno tasks\n"));
        QCOMPARE(QJsonDocument::fromJson(kvplan(server).run(words("tree p1 --json")).output),
                 QJsonDocument(QJsonArray()));
    }

    void aCircleIsNoTree()
    {
        ScriptedServer server;
        server.setHandler([](const KvTest::Request&) {
            return Reply::json(planReply(QStringLiteral("p1"), QStringLiteral("Tower"),
                                         {taskReply(1, QStringLiteral("A\n\x1b[2J"), 2, 1, 2, 0),
                                          taskReply(2, QStringLiteral("B"), 1, 1, 2, 0)}));
        });
        for (const char* line : {"tree p1", "tree p1 --json"}) {
            const KvplanRun run = kvplan(server).run(words(line));
            QCOMPARE(run.faultOfFailure(4), QString());
            QCOMPARE(run.error(),
                     QStringLiteral("kvplan: the plan \"p1\" is no tree: its task 1 \"A  [2J\" is "
                                    "its own ancestor; correct the parent of that task\n"));
        }
    }

    void aChainOfAHundredThousandLevels()
    {
        constexpr int levels = 100000;
        QByteArray reply = "{\"_id\":\"p1\",\"name\":\"Chain\",\"tasks\":[";
        for (int i = 1; i <= levels; ++i) {
            const QByteArray number = QByteArray::number(i);
            reply += (i > 1 ? "," : "") + ("{\"id\":" + number) + ",\"uniqueId\":" + number +
                     ",\"parentTaskID\":" + QByteArray::number(i - 1) + ",\"name\":\"T" + number + "\"}";
        }
        reply += "]}";
        ScriptedServer server;
        server.setHandler([&](const KvTest::Request&) { return Reply::text(reply, "application/json"); });

        const KvplanRun text = kvplan(server).run(words("tree p1"));
        QCOMPARE(text.error(), QString());
        QCOMPARE(text.exitCode, 0);
        QCOMPARE(text.output.count('\n'), levels + 4);
        QVERIFY(text.output.contains("(100000) T100000 "));

        const KvplanRun json = kvplan(server).run(words("tree p1 --json"));
        QCOMPARE(json.exitCode, 0);
        QVERIFY(json.output.startsWith("[{"));
        QVERIFY(json.output.endsWith("\"children\":[" + QByteArray("]}").repeated(levels) + "]\n"));
        QCOMPARE(json.output.count("\"children\":["), levels);
    }

    void namesCannotReachTheTerminal()
    {
        const QString bad = QStringLiteral("\x1b]0;owned\x07\x1b[31m\nred\u202e\u009b2J");
        QJsonObject plan = planReply(bad + QStringLiteral("id"), bad, {taskReply(1, bad, 0, 1, 2, 0)});
        for (const char* key : {"category", "createdBy", "updatedBy", "projectId"})
            plan.insert(QLatin1String(key), bad);
        for (const char* line : {"show p1", "tree p1", "plans", "copy p1"}) {
            ScriptedServer server;
            server.enqueue(QByteArray(line) == "plans" ? Reply::json(QJsonArray{plan}) : Reply::json(plan));
            const KvplanRun run = kvplan(server).run(words(line));
            QCOMPARE(run.exitCode, 0);
            QVERIFY2(run.text().contains(QStringLiteral("red")), line);
            for (const QChar c : run.text())
                QVERIFY2(c == QLatin1Char('\n') ||
                             (c.category() != QChar::Other_Control && c != QChar(0x202e)),
                         line);
        }
    }
};

QTEST_GUILESS_MAIN(KvplanReadingTest)
#include "KvplanReadingTest.moc"
