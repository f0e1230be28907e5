// Where the output goes: files, pipes, full disks, closed streams, other locales, and terminals.

#include "KvplanProcess.h"
#include "PlanReplies.h"

#include <CellText.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using KvTest::Kvplan;
using KvTest::KvplanRun;
using KvTest::planReply;
using KvTest::Reply;
using KvTest::ScriptedServer;
using KvTest::taskReply;
using KvTest::words;

namespace {

// Enough tasks for an output of more than a pipe holds.
QJsonObject largePlan()
{
    QJsonArray tasks;
    for (int i = 1; i <= 1500; ++i)
        tasks.append(taskReply(i, QStringLiteral("第%1层 Floor %1, reinforcement and formwork").arg(i),
                               i / 10, 1, 21, 50));
    return planReply(QStringLiteral("9483880f7b31d8294ab1aeed"),
                     QStringLiteral("住宅楼总进度计划 Residential tower"), tasks);
}

} // namespace

class KvplanOutputTest : public QObject
{
    Q_OBJECT

private:
    ScriptedServer m_server;
    const QByteArray m_plan = QJsonDocument(largePlan()).toJson(QJsonDocument::Compact);

    Kvplan kvplan() const { return KvTest::kvplan(m_server); }

private Q_SLOTS:
    void init()
    {
        m_server.setHandler([this](const KvTest::Request& request) {
            const bool asksForAll = request.path().endsWith("/plans");
            return Reply::text(asksForAll ? '[' + m_plan + ']' : m_plan, "application/json");
        });
    }

    void aFullDisk()
    {
        for (const char* line : {"--help", "--version", "show --help", "plans", "show p1", "show p1 --json",
                                 "tree p1", "tree p1 --json", "copy p1", "export p1 -"}) {
            Kvplan program = kvplan();
            program.setOutputFile(QStringLiteral("/dev/full"));
            const KvplanRun run = program.run(words(line));
            QCOMPARE(run.faultOfFailure(3), QString());
            QCOMPARE(
                run.error(),
                QStringLiteral("kvplan: cannot write to the standard output: No space left on device\n"));
        }
    }

    // The number of a closed stream must not go to the connection, which would get the output then.
    void aClosedOutput()
    {
        const int before = m_server.unexpectedRequests().size();
        for (const char* line : {"show p1", "tree p1 --json", "--help"}) {
            const KvplanRun run = kvplan().runInShell(QStringLiteral("exec \"$0\" \"$@\" >&-"), words(line));
            QCOMPARE(run.faultOfFailure(3), QString());
            QCOMPARE(run.error(),
                     QStringLiteral("kvplan: cannot write to the standard output: Bad file descriptor\n"));
        }
        QCOMPARE(m_server.unexpectedRequests().size(), before);
    }

    void allStreamsClosed()
    {
        QCOMPARE(
            kvplan().runInShell(QStringLiteral("exec \"$0\" \"$@\" <&- >&- 2>&-"), words("show p1")).exitCode,
            3);
        const KvplanRun good =
            kvplan().runInShell(QStringLiteral("exec \"$0\" \"$@\" <&- 2>&-"), words("show p1 --rows 0"));
        QCOMPARE(good.exitCode, 0);
        QVERIFY(good.text().contains(QStringLiteral("住宅楼")));
        // Nobody there to answer.
        QCOMPARE(kvplan().runInShell(QStringLiteral("exec \"$0\" \"$@\" <&-"), words("delete p1")).exitCode,
                 5);
    }

    // A reader who has seen enough, as head does, is no trouble worth a line.
    void aReaderWhoGoes()
    {
        const KvplanRun run = kvplan().runInShell(
            QStringLiteral("{ \"$0\" \"$@\"; echo \"code $?\" >&2; } | head -n 1"), words("show p1"));
        QCOMPARE(run.text(), QStringLiteral("住宅楼总进度计划 Residential tower\n"));
        QCOMPARE(run.error(), QStringLiteral("code 3\n"));
    }

    void otherLocales_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::newRow("C") << QStringLiteral("C");
        QTest::newRow("POSIX") << QStringLiteral("POSIX");
        QTest::newRow("one that is not installed") << QStringLiteral("xx_YY.GBK");
    }

    void otherLocales()
    {
        QFETCH(QString, locale);
        QTemporaryDir folder;
        const QString expected = kvplan().run(words("tree p1")).text();
        Kvplan program = kvplan();
        program.setEnvironment(QStringLiteral("LC_ALL"), locale);
        QCOMPARE(program.run(words("tree p1")).text(), expected);

        const int before = m_server.requestCount();
        program.run({QStringLiteral("rename"), QStringLiteral("第2期"), QStringLiteral("第10层")});
        const QList<KvTest::Request> sent = m_server.requests().mid(before);
        QCOMPARE(sent.size(), 2);
        QCOMPARE(sent.first().decodedPath(), QStringLiteral("/task-service/plans/第2期"));
        QCOMPARE(sent.last().body, QStringLiteral("{\"name\":\"第10层\"}").toUtf8());

        const QString file = folder.filePath(QStringLiteral("第2期.json"));
        QCOMPARE(program.run({QStringLiteral("export"), QStringLiteral("p1"), file}).exitCode, 0);
        QVERIFY(QFileInfo::exists(file));
    }

    void terminals_data()
    {
        QTest::addColumn<int>("columns");
        for (const int columns : {70, 80, 81, 120})
            QTest::addRow("%d columns", columns) << columns;
    }

    void terminals()
    {
        QFETCH(int, columns);
        for (const char* line : {"show p1", "tree p1", "plans"}) {
            const KvplanRun run = kvplan().runOnTerminal(words(line), columns);
            QCOMPARE(run.exitCode, 0);
            QVERIFY(!run.output.contains('\x1b'));
            const QStringList rows = run.text().split(QLatin1Char('\n'));
            QVERIFY(rows.size() > 3);
            for (const QString& row : rows)
                QVERIFY2(cellWidth(row) <= columns, qPrintable(row));
        }
        // Identifiers are for copying, and dates and bars tell nothing when cut.
        const QString plans = kvplan().runOnTerminal(words("plans"), columns).text();
        QVERIFY(plans.contains(QStringLiteral("9483880f7b31d8294ab1aeed")));
        const QString tree = kvplan().runOnTerminal(words("tree p1 --depth 1"), columns).text();
        QVERIFY2(tree.contains(QStringLiteral("  2026-03-01  2026-03-21   50%  █")), qPrintable(tree));
        QVERIFY2(tree.section(QLatin1Char('\n'), 4, 4).endsWith(QStringLiteral("░")), qPrintable(tree));
    }

    void pipesGetWholeNames()
    {
        QVERIFY(kvplan()
                    .run(words("show p1"))
                    .text()
                    .contains(QStringLiteral("第1500层 Floor 1500, reinforcement and formwork")));
    }

    void progressOnATerminal()
    {
        ScriptedServer slow;
        const QJsonObject plan = planReply(QStringLiteral("p1"), QStringLiteral("Tower"));
        // Some 280 bytes, one every few milliseconds: longer than a person likes to wait without a word.
        slow.setHandler([&](const KvTest::Request&) {
            Reply reply = Reply::json(plan).with(Reply::SlowSlices);
            reply.sliceInterval = 6;
            return reply;
        });
        const KvplanRun run = Kvplan(slow.baseUrl()).runOnTerminal(words("show p1 --rows 0"), 80);
        QCOMPARE(run.exitCode, 0);
        // Again and again, with the seconds from the first one on, and wiped out before the output begins.
        const QRegularExpression told(
            QStringLiteral("^(\\rreading the plan …( \\d+ s)? *)+\\r {18,}\\rTower\n"));
        QVERIFY2(run.text().contains(told), qPrintable(run.text()));

        const KvplanRun piped = Kvplan(slow.baseUrl()).run(words("show p1 --rows 0"));
        QCOMPARE(piped.error(), QString());
    }

    void progressOfALongImport()
    {
        QByteArray schedule = "{\"AllTasks\": [";
        for (int i = 1; schedule.size() < 5000000; ++i)
            schedule += (i > 1 ? ",\n{" : "{") + ("\"UniqueID\":" + QByteArray::number(i)) +
                        ", \"Name\": \"Floor, reinforcement and formwork\"}";
        schedule += "]}";
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("long.json")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(schedule), qint64(schedule.size()));
        file.close();
        const KvplanRun run = Kvplan().runOnTerminal(
            {QStringLiteral("import"), QStringLiteral("--dry-run"), file.fileName()}, 120);
        QCOMPARE(run.exitCode, 0);
        const QString told = QStringLiteral("\rreading the tasks …\r") + QString(19, QLatin1Char(' '));
        QVERIFY2(run.text().contains(told + QLatin1Char('\r')), qPrintable(run.text()));
        QVERIFY2(run.text().endsWith(QStringLiteral(" tasks, nothing wrong\n")), qPrintable(run.text()));
    }
};

QTEST_GUILESS_MAIN(KvplanOutputTest)
#include "KvplanOutputTest.moc"
