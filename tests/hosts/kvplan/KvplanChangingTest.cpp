// create, copy, rename and delete on a scripted server: exact requests, answers, and the question before a
// deletion.

#include "KvplanProcess.h"
#include "PlanReplies.h"

#include <QtTest/QtTest>

using KvTest::Kvplan;
using KvTest::KvplanRun;
using KvTest::planReply;
using KvTest::Reply;
using KvTest::ScriptedServer;

class KvplanChangingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void create_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("category");
        QTest::newRow("plain") << QStringLiteral("Tower 2") << QString();
        QTest::newRow("with a category") << QStringLiteral("Tower") << QStringLiteral("construction");
        QTest::newRow("Chinese") << QStringLiteral("第2层") << QStringLiteral("施工");
        QTest::newRow("quotes and more") << QStringLiteral("a\"b'c&d%41\\ 🏗\n") << QString();
        QTest::newRow("like an option") << QStringLiteral("--yes") << QString();
    }

    void create()
    {
        QFETCH(QString, name);
        QFETCH(QString, category);
        ScriptedServer server;
        server.enqueue(Reply::json(planReply(QStringLiteral("p9"), name), 201));
        QStringList arguments{QStringLiteral("create")};
        if (!category.isEmpty())
            arguments += {QStringLiteral("--category"), category};
        const KvplanRun run = kvplan(server).run(arguments + QStringList{QStringLiteral("--"), name});
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.text(),
                 QStringLiteral("p9  %1\n").arg(QString(name).replace(QLatin1Char('\n'), QLatin1Char(' '))));
        QCOMPARE(server.complaint(), QString());
        const KvTest::Request request = server.lastRequest();
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.target, QByteArray("/task-service/plans"));
        QJsonObject expected{{QStringLiteral("name"), name},
                             {QStringLiteral("projectId"), QStringLiteral("tower")},
                             {QStringLiteral("projectData"), QJsonArray()}};
        if (!category.isEmpty())
            expected.insert(QStringLiteral("category"), category);
        QJsonObject sent = request.object();
        sent.remove(QStringLiteral("ranges")); // an empty list
        QCOMPARE(QJsonDocument(sent).toJson(), QJsonDocument(expected).toJson());
    }

    void createAsJson()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(planReply(QStringLiteral("p9"), QStringLiteral("Tower"))));
        const KvplanRun run =
            kvplan(server).run({QStringLiteral("create"), QStringLiteral("Tower"), QStringLiteral("--json")});
        QCOMPARE(run.object().value(QLatin1String("id")).toString(), QStringLiteral("p9"));
        QCOMPARE(run.object().value(QLatin1String("createdBy")).toString(), QStringLiteral("ann"));
    }

    void copy()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(planReply(QStringLiteral("p9"), QStringLiteral("Tower (copy)"))));
        const KvplanRun run = kvplan(server).run({QStringLiteral("copy"), QStringLiteral("p1")});
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), QStringLiteral("p9  Tower (copy)\n"));
        QCOMPARE(server.complaint(), QString());
        QCOMPARE(server.lastRequest().method, QByteArray("PUT"));
        QCOMPARE(server.lastRequest().target, QByteArray("/task-service/plans/p1/copy"));
        QCOMPARE(server.lastRequest().body, QByteArray("{}"));
    }

    void renameSendsTheNameAlone()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(planReply(QStringLiteral("p1"), QStringLiteral("Old"),
                                             {KvTest::taskReply(1, QStringLiteral("A"), 0, 1, 2, 0)})));
        server.enqueue(Reply::json(planReply(QStringLiteral("p1"), QStringLiteral("第2期"))));
        const KvplanRun run =
            kvplan(server).run({QStringLiteral("rename"), QStringLiteral("p1"), QStringLiteral("第2期")});
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), QStringLiteral("p1  第2期\n"));
        QCOMPARE(server.complaint(), QString());
        QCOMPARE(server.requests().first().method, QByteArray("GET"));
        QCOMPARE(server.lastRequest().method, QByteArray("PUT"));
        QCOMPARE(server.lastRequest().target, QByteArray("/task-service/plans/p1"));
        QCOMPARE(server.lastRequest().body, QStringLiteral("{\"name\":\"第2期\"}").toUtf8());
    }

    void renameToTheSameNameSendsNothing()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(planReply(QStringLiteral("p1"), QStringLiteral("Old"))));
        const KvplanRun run =
            kvplan(server).run({QStringLiteral("rename"), QStringLiteral("p1"), QStringLiteral("Old")});
        QCOMPARE(run.text(), QStringLiteral("p1  Old\n"));
        QCOMPARE(server.requestCount(), 1);
    }

    void deleteAsks_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<bool>("agrees");
        QTest::newRow("y") << QByteArray("y\n") << true;
        QTest::newRow("yes") << QByteArray("yes\n") << true;
        QTest::newRow("Yes, and spaces") << QByteArray(" Yes \n") << true;
        QTest::newRow("yes without a line end") << QByteArray("yes") << true;
        QTest::newRow("n") << QByteArray("n\n") << false;
        QTest::newRow("no") << QByteArray("no\n") << false;
        QTest::newRow("an empty line") << QByteArray("\n") << false;
        QTest::newRow("nobody there") << QByteArray() << false;
        QTest::newRow("yes on the second line") << QByteArray("\ny\n") << false;
        QTest::newRow("more than yes") << QByteArray("yes but\n") << false;
        QTest::newRow("half a word") << QByteArray("ye\n") << false;
        QTest::newRow("a very long line") << QByteArray(100000, 'y') + '\n' << false;
        QTest::newRow("y far behind") << QByteArray(40, ' ') + "y\n" << false;
    }

    void deleteAsks()
    {
        QFETCH(QByteArray, answer);
        QFETCH(bool, agrees);
        ScriptedServer server;
        server.enqueue(Reply::json(planReply(QStringLiteral("p1"), QStringLiteral("第2期\x1b[2J"),
                                             {KvTest::taskReply(1, QStringLiteral("A"), 0, 1, 2, 0),
                                              KvTest::taskReply(2, QStringLiteral("B"), 0, 1, 2, 0)})));
        if (agrees)
            server.enqueue(Reply::empty());
        Kvplan program = kvplan(server);
        program.setInput(answer);
        const KvplanRun run = program.run({QStringLiteral("delete"), QStringLiteral("p1")});
        QCOMPARE(run.exitCode, agrees ? 0 : 5);
        QCOMPARE(run.text(), QString());
        QCOMPARE(run.error(), QStringLiteral("Delete \"第2期 [2J\" with its 2 tasks? [y/N] \n") +
                                  (agrees ? QString() : QStringLiteral("kvplan: nothing was deleted\n")));
        QCOMPARE(server.complaint(), QString());
        QCOMPARE(server.lastRequest().method, QByteArray(agrees ? "DELETE" : "GET"));
        QCOMPARE(server.lastRequest().target, QByteArray("/task-service/plans/p1"));
    }

    void deleteUnasked()
    {
        ScriptedServer server;
        server.enqueue(Reply::empty());
        const KvplanRun run =
            kvplan(server).run({QStringLiteral("delete"), QStringLiteral("--yes"), QStringLiteral("p1")});
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), QString());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(server.complaint(), QString());
        QCOMPARE(server.lastRequest().method, QByteArray("DELETE"));
        QCOMPARE(server.lastRequest().target, QByteArray("/task-service/plans/p1"));
    }

    void deleteOnATerminal()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(planReply(QStringLiteral("p1"), QStringLiteral("Tower"))));
        server.enqueue(Reply::empty());
        Kvplan program = kvplan(server);
        program.setInput("y\n");
        const KvplanRun run = program.runOnTerminal({QStringLiteral("delete"), QStringLiteral("p1")}, 80);
        QCOMPARE(run.text(), QStringLiteral("Delete \"Tower\" with its 0 tasks? [y/N] "));
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(server.lastRequest().method, QByteArray("DELETE"));
    }
};

QTEST_GUILESS_MAIN(KvplanChangingTest)
#include "KvplanChangingTest.moc"
