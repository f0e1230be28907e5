// What goes wrong between kvplan and the service: one line that names the cause, a code, and no secret.

#include "KvplanProcess.h"

#include <support/ScriptedServer.h>

#include <QtTest/QtTest>

using KvTest::Kvplan;
using KvTest::KvplanRun;
using KvTest::Reply;
using KvTest::ScriptedServer;
using KvTest::TlsIdentity;
using KvTest::words;

namespace {

const QString secret = QStringLiteral("s3cr3t-t0k3n");

struct Command
{
    const char* name;
    const char* line;
    const char* says; ///< what it cannot do
};

const Command commands[] = {
    {"plans", "plans", "cannot read the plans"},
    {"plans, filtered", "plans --name pattern-in-query", "cannot read the plans"},
    {"show", "show p1", "cannot read the plan \"p1\""},
    {"show, JSON", "show p1 --json", "cannot read the plan \"p1\""},
    {"tree", "tree p1", "cannot read the plan \"p1\""},
    {"create", "create Tower", "cannot create the plan \"Tower\""},
    {"copy", "copy p1", "cannot copy the plan \"p1\""},
    {"rename", "rename p1 Tower", "cannot read the plan \"p1\""},
    {"delete", "delete p1", "cannot read the plan \"p1\""},
    {"delete, unasked", "delete p1 --yes", "cannot delete the plan \"p1\""},
    {"export", "export p1 -", "cannot read the plan \"p1\""},
    {"nodes", "nodes p1 --name pattern-in-query", "cannot read the tasks of \"p1\""},
    {"nodes, JSON", "nodes p1 --json", "cannot read the tasks of \"p1\""},
    {"nodes, counted", "nodes p1 --count", "cannot read the tasks of \"p1\""},
    {"todo", "todo", "cannot read your tasks"},
    {"update", "update n1 name=Fence", "cannot read the task \"n1\""},
    {"delete-nodes", "delete-nodes n1", "cannot read the task \"n1\""},
    {"delete-nodes, one unasked", "delete-nodes n1 --yes", "cannot delete the task \"n1\""},
    {"delete-nodes, two unasked", "delete-nodes n1 n2 --yes", "cannot delete the 2 tasks"},
    {"respond", "respond n1 --percent 50", "cannot read the task \"n1\""},
    {"responses", "responses n1", "cannot read the reports on the task \"n1\""},
    {"stats", "stats", "cannot count your tasks"},
    {"quantities", "quantities", "cannot count your finished tasks"},
    {"rights", "rights", "cannot read your rights"},
    {"state", "state p1", "cannot read the metering states"},
    {"state, set", "state --task n1 --set 2", "cannot set the metering state of the task \"n1\""},
    {"state, set with a response", "state --task n1 --set 2 --response r1",
     "cannot set the metering state of the task \"n1\""},
};

Reply error(int status, const char* code, const char* message)
{
    return Reply::json(QJsonObject{{QStringLiteral("error"),
                                    QJsonObject{{QStringLiteral("code"), QLatin1String(code)},
                                                {QStringLiteral("message"), QLatin1String(message)}}}},
                       status);
}

Kvplan kvplanAt(const QString& address)
{
    Kvplan kvplan(address);
    kvplan.setEnvironment(QStringLiteral("KV_PROJECT_ID"), QStringLiteral("tower"));
    kvplan.setEnvironment(QStringLiteral("KV_ACCESS_TOKEN"), secret);
    return kvplan;
}

QString secretsIn(const KvplanRun& run)
{
    for (const char* text : {"s3cr3t", "pattern-in-query", "where=", "s%33cr"}) {
        if (run.errors.contains(text) || run.output.contains(text))
            return run.error();
    }
    return QString();
}

} // namespace

Q_DECLARE_METATYPE(Reply)

class KvplanFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void causes_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<QString>("says");
        QTest::newRow("401") << error(401, "tokenUnknown", "the access token is unknown")
                             << QStringLiteral("the service answered 401: the access token is unknown "
                                               "(tokenUnknown); check the access token (--token-file or "
                                               "KV_ACCESS_TOKEN)");
        QTest::newRow("403") << error(403, "rightMissing", "the right 'read' on project 'tower' is missing")
                             << QStringLiteral(
                                    "the service answered 403: the right 'read' on project 'tower' is "
                                    "missing (rightMissing); the user has no right to this; ask "
                                    "whoever administers the service for it");
        QTest::newRow("404") << error(404, "planNotFound", "there is no plan 'p1'")
                             << QStringLiteral(
                                    "the service answered 404: there is no plan 'p1' (planNotFound); "
                                    "check the identifier and the address");
        QTest::newRow("404 of something else")
            << Reply::text("<html>nginx</html>", "text/html", 404)
            << QStringLiteral("the service answered 404 Not Found; check the identifier and the address "
                              "(--server or KV_BASE_API)");
        QTest::newRow("500") << Reply::text("<html>oops</html>", "text/html", 500)
                             << QStringLiteral("the service answered 500");
        QTest::newRow("503") << error(503, "busy", "too many requests are waiting")
                             << QStringLiteral(
                                    "the service answered 503: too many requests are waiting (busy); "
                                    "look into the service's log");
        QTest::newRow("broken JSON") << Reply::text("{\"name\": ", "application/json")
                                     << QStringLiteral("the reply is no valid JSON");
        QTest::newRow("a page instead of JSON")
            << Reply::text("<html>welcome</html>", "text/html")
            << QStringLiteral("check that the base address is that of the service (--server or KV_BASE_API)");
        QTest::newRow("redirect to another place")
            << Reply::redirect("http://elsewhere.invalid/") << QStringLiteral("the service answered 302");
        QTest::newRow("control characters from the service")
            << error(400, "bad", "\x1b[2J\nkvplan: all is well")
            << QStringLiteral(": [2J kvplan: all is well");
        QTest::newRow("the token told back") << error(401, "s3cr3t-t0k3n", "no such token: s3cr3t-t0k3n")
                                             << QStringLiteral("no such token: ***");
    }

    // Every cause with every command.
    void causes()
    {
        QFETCH(Reply, reply);
        QFETCH(QString, says);
        for (const Command& command : commands) {
            ScriptedServer server;
            server.setHandler([&](const KvTest::Request&) { return reply; });
            const KvplanRun run = kvplanAt(server.baseUrl()).run(words(command.line));
            // A deletion may be answered with anything.
            if (reply.status == 200 && QByteArray(command.line).endsWith("--yes"))
                continue;
            QVERIFY2(run.faultOfFailure(1).isEmpty(), qPrintable(run.faultOfFailure(1)));
            QVERIFY2(run.error().startsWith(QStringLiteral("kvplan: ") + QLatin1String(command.says)),
                     qPrintable(run.error()));
            QVERIFY2(run.error().contains(says), qPrintable(run.error()));
            QVERIFY2(run.error().contains(server.baseUrl().chopped(1)), qPrintable(run.error()));
            QCOMPARE(secretsIn(run), QString());
            QVERIFY(server.requestCount() > 0);
        }
    }

    void refused()
    {
        const QString address = ScriptedServer::refusingUrl();
        for (const Command& command : commands) {
            const KvplanRun run = kvplanAt(address).run(words(command.line));
            QCOMPARE(run.faultOfFailure(1), QString());
            QVERIFY2(run.error().contains(QLatin1String(command.says)), qPrintable(run.error()));
            QVERIFY2(run.error().contains(QStringLiteral("cannot reach ") + address.chopped(1)),
                     qPrintable(run.error()));
            QVERIFY2(run.error().contains(QStringLiteral("refused")), qPrintable(run.error()));
            QVERIFY2(run.error().endsWith(QStringLiteral("(--server or KV_BASE_API)\n")),
                     qPrintable(run.error()));
            QCOMPARE(secretsIn(run), QString());
        }
    }

    void passwordOfTheAddress()
    {
        QString address = ScriptedServer::refusingUrl();
        address.insert(int(qstrlen("http://")), QStringLiteral("ann:") + secret + QLatin1Char('@'));
        const KvplanRun run = kvplanAt(address).run(words("show p1"));
        QCOMPARE(run.faultOfFailure(1), QString());
        QCOMPARE(secretsIn(run), QString());

        ScriptedServer server;
        server.enqueue(error(403, "rightMissing", "no"));
        address = server.baseUrl();
        address.insert(int(qstrlen("http://")), QStringLiteral("ann:") + secret + QLatin1Char('@'));
        const KvplanRun answered = kvplanAt(address).run(words("show p1"));
        QCOMPARE(answered.faultOfFailure(1), QString());
        QVERIFY2(answered.error().contains(server.baseUrl()), qPrintable(answered.error()));
        QCOMPARE(secretsIn(answered), QString());
    }

    void brokenConnections_data()
    {
        QTest::addColumn<int>("fault");
        QTest::newRow("closed unanswered") << int(Reply::CloseUnanswered);
        QTest::newRow("reset unanswered") << int(Reply::ResetUnanswered);
        QTest::newRow("reset in the body") << int(Reply::ResetInBody);
        QTest::newRow("cut short") << int(Reply::Truncate);
        QTest::newRow("no HTTP") << int(Reply::Garbage);
    }

    void brokenConnections()
    {
        QFETCH(int, fault);
        ScriptedServer server;
        server.setHandler([&](const KvTest::Request&) {
            return Reply::json(QJsonObject{{QStringLiteral("name"), QStringLiteral("Tower")}})
                .with(Reply::Fault(fault));
        });
        const KvplanRun run = kvplanAt(server.baseUrl()).run(words("show p1"));
        QCOMPARE(run.faultOfFailure(1), QString());
        QVERIFY2(run.error().contains(QStringLiteral("cannot read the plan \"p1\"")),
                 qPrintable(run.error()));
        QVERIFY2(run.error().contains(server.baseUrl().chopped(1)), qPrintable(run.error()));
        QCOMPARE(secretsIn(run), QString());
    }

    void stalled_data()
    {
        QTest::addColumn<int>("fault");
        QTest::addColumn<bool>("byOption");
        QTest::newRow("before the headers, option") << int(Reply::StallBeforeHeaders) << true;
        QTest::newRow("in the body, environment") << int(Reply::StallInBody) << false;
    }

    void stalled()
    {
        QFETCH(int, fault);
        QFETCH(bool, byOption);
        ScriptedServer server;
        server.setHandler([&](const KvTest::Request&) {
            return Reply::json(QJsonObject{{QStringLiteral("name"), QStringLiteral("Tower")}})
                .with(Reply::Fault(fault));
        });
        Kvplan kvplan = kvplanAt(server.baseUrl());
        // The option wins over an environment that would wait for long.
        kvplan.setEnvironment(QStringLiteral("KV_NETWORK_TIMEOUT_MS"),
                              byOption ? QStringLiteral("600000") : QStringLiteral("300"));
        QElapsedTimer clock;
        clock.start();
        const KvplanRun run = kvplan.run(words(byOption ? "show p1 --timeout 300" : "show p1"));
        QCOMPARE(run.faultOfFailure(1), QString());
        QVERIFY(clock.elapsed() >= 300);
        QVERIFY2(run.error().contains(QStringLiteral("the service sent nothing for 300 ms")),
                 qPrintable(run.error()));
        QVERIFY2(run.error().endsWith(QStringLiteral("(KV_NETWORK_TIMEOUT_MS) or --timeout\n")),
                 qPrintable(run.error()));
    }

    void untrustedCertificate()
    {
        const TlsIdentity identity = TlsIdentity::selfSigned(QStringLiteral("127.0.0.1"));
        QVERIFY(!identity.isNull());
        ScriptedServer server(identity);
        server.setHandler([](const KvTest::Request&) { return Reply::json(QJsonObject()); });
        const KvplanRun run = kvplanAt(server.baseUrl()).run(words("show p1"));
        QCOMPARE(run.faultOfFailure(1), QString());
        QVERIFY2(run.error().contains(QStringLiteral("self-signed")), qPrintable(run.error()));
        QVERIFY2(run.error().contains(QStringLiteral("install the certificate's authority")),
                 qPrintable(run.error()));
        QCOMPARE(server.requestCount(), 0);
    }

    // Reading the page fails after the count has come: the library tells it by its report alone.
    void theSecondOfTwoRequests()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonObject{{QStringLiteral("count"), 3}}));
        server.enqueue(error(500, "internal", "the database failed"));
        const KvplanRun run = kvplanAt(server.baseUrl()).run(words("plans --page 1"));
        QCOMPARE(run.faultOfFailure(1), QString());
        QVERIFY2(run.error().contains(QStringLiteral("the database failed")), qPrintable(run.error()));
        QCOMPARE(server.complaint(), QString());
    }

    void theSecondOfARename()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonObject{{QStringLiteral("_id"), QStringLiteral("p1")},
                                               {QStringLiteral("name"), QStringLiteral("Old")}}));
        server.enqueue(error(403, "rightMissing", "the right 'edit' is missing"));
        const KvplanRun run = kvplanAt(server.baseUrl()).run(words("rename p1 New"));
        QCOMPARE(run.faultOfFailure(1), QString());
        QVERIFY2(run.error().startsWith(QStringLiteral("kvplan: cannot rename the plan \"p1\"")),
                 qPrintable(run.error()));
        QVERIFY2(run.error().contains(QStringLiteral("the right 'edit' is missing")),
                 qPrintable(run.error()));
    }
};

QTEST_GUILESS_MAIN(KvplanFaultsTest)
#include "KvplanFaultsTest.moc"
