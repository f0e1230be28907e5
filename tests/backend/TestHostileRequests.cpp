// What somebody with bad intentions sends: every route with every other method, paths that mean to get around
// the router, headers that mean to get around the method, and requests that two readers might read
// differently.

#include "PlanRequests.h"
#include "RouteProbes.h"
#include "ServiceProcess.h"
#include "Text.h"

#include <QSet>
#include <QtTest>

using namespace KvTest;

namespace {

constexpr int routesThatAskForNothing = 1; // /health

const QByteArray smuggled =
    "DELETE /task-service/planNodes/victim HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer ";

/// The path of a target, and what follows it.
QPair<QByteArray, QByteArray> parted(const QByteArray& target)
{
    const int query = target.indexOf('?');
    return query < 0 ? qMakePair(target, QByteArray()) : qMakePair(target.left(query), target.mid(query));
}

/// Other ways to write a target, none of which is to be taken for it.
QVector<QByteArray> disguises(const QByteArray& target)
{
    const auto [path, query] = parted(target);
    const QByteArray rest = path.mid(1);
    const int slash = path.indexOf('/', 1);
    const QByteArray service = path.left(slash < 0 ? path.size() : slash);
    const QByteArray inside = slash < 0 ? QByteArray() : path.mid(slash);
    const int last = path.lastIndexOf('/');
    const QByteArray upper = "/" + rest.toUpper();
    return {
        "/" + path + query,
        path + "/" + query,
        path + "//" + query,
        service + "/" + inside + "/" + query,
        "/." + path + query,
        "/%2e" + path + query,
        "/x/.." + path + query,
        "/health/.." + path + query,
        "/health/%2e%2e" + path + query,
        "/health%2f..%2f" + rest + query,
        "/health;" + path + query,
        "/health" + path + query,
        service + "/x/.." + inside + "/." + query,
        service + "/./" + inside.mid(1) + "/.." + query,
        path.left(last) + "%2f" + path.mid(last + 1) + query,
        path.left(last) + "\\" + path.mid(last + 1) + query,
        "/" + QByteArray(path + "/").mid(1).replace("/", "%5c") + query,
        path + "%00" + query,
        path + "%00.json" + query,
        "/%00" + path + query,
        path.left(2) + "%" + query,
        service + "%c0%af" + inside.mid(1) + query,
        "/%" + path.mid(1, 1).toHex() + "%2" + path.mid(2) + query,
        "/%25" + path.mid(1, 1).toHex() + path.mid(2) + query,
        upper == path ? "/x" + path : upper + query,
        "http://localhost" + path + query,
        "https://elsewhere.example" + path + query,
        "//elsewhere.example" + path + query,
        "*",
    };
}

} // namespace

class TestHostileRequests : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    QByteArray m_good;     ///< may everything in the project
    QByteArray m_stranger; ///< may everything in another one
    RouteWorld m_world{"p1", "", "victim", "", "victim"};
    QByteArray m_before;

    /// Plan, nodes and a setting as they are now.
    QByteArray state()
    {
        RawHttp http(m_service.port());
        QByteArray all;
        for (const QByteArray& target :
             {"/task-service/plans/" + m_world.plan, QByteArray("/task-service/projects/p1/planNodes"),
              QByteArray("/ka-rond-service/projects/p1/taskstates"),
              QByteArray("/task-service/projects/p1/plans"), QByteArray("/user-service/settings/k")}) {
            const RawReply reply = http.get(target, bearer(m_good));
            all += QByteArray::number(reply.status) + reply.body + '\n';
        }
        return all;
    }

    static QString about(const QByteArray& what, const RawReply& reply)
    {
        return QString::fromUtf8(what.left(300) + ": " + QByteArray::number(reply.status) + ' ' +
                                 reply.body.left(300));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_service.start({"--create"_s, "--max-body"_s, "100000"_s}),
                 qPrintable(m_service.failure()));
        const QJsonObject node{{"_id"_s, "victim"_s}, {"name"_s, "Secret dig"_s}};
        RawHttp http(m_service.port());
        const RawReply plan = http.request("POST", "/task-service/plans",
                                           jsonOf({{"projectId"_s, "p1"_s},
                                                   {"category"_s, "c1"_s},
                                                   {"name"_s, "Secret tower"_s},
                                                   {"projectData"_s, QJsonArray{node}}}));
        QCOMPARE(plan.status, 200);
        m_world.plan = m_world.victimPlan = idOf(objectOf(plan));
        QCOMPARE(http.request("PUT", "/ka-rond-service/tasks/victim/taskstates", "{\"state\":1}").status,
                 200);
        const QString rights = "read=all,create,edit,delete,export"_s;
        m_good = m_service.createToken("ann"_s, "p1"_s, rights);
        m_stranger = m_service.createToken("bo"_s, "p2"_s, rights);
        QVERIFY(!m_stranger.isEmpty());
        QCOMPARE(
            http.request("PUT", "/user-service/settings/k", "{\"value\":\"Secret\"}", bearer(m_good)).status,
            200);
        m_before = state();
        QVERIFY(m_before.count("Secret") >= 5);
    }
    // Whatever was sent, nothing has changed, the service still answers, and nobody's token stands in the
    // log.
    void cleanup()
    {
        QCOMPARE(state(), m_before);
        QVERIFY(!m_service.log().contains(m_good));
        QVERIFY(!m_service.log().contains(m_stranger));
    }
    void cleanupTestCase() { QVERIFY2(m_service.stop(), qPrintable(m_service.failure())); }

    void otherMethods_data()
    {
        QTest::addColumn<QByteArray>("method");
        for (const char* method :
             {"GET",     "HEAD",  "POST",   "PUT",       "DELETE",   "PATCH", "OPTIONS", "TRACE",
              "CONNECT", "COPY",  "LOCK",   "MKCOL",     "MOVE",     "MERGE", "SEARCH",  "UNLOCK",
              "LINK",    "PURGE", "REPORT", "SUBSCRIBE", "PROPFIND", "BIND",  "SOURCE"}) {
            QTest::newRow(method) << QByteArray(method);
        }
    }
    void otherMethods()
    {
        QFETCH(QByteArray, method);
        QMap<QByteArray, QSet<QByteArray>> methodsOf;
        QMap<QByteArray, const RouteProbe*> probeOf;
        for (const RouteProbe& probe : routeProbes()) {
            const QByteArray path = probe.route.mid(probe.route.indexOf(' ') + 1);
            methodsOf[path].insert(probe.method());
            probeOf[path] = &probe;
        }
        int refused = 0;
        for (auto path = methodsOf.cbegin(); path != methodsOf.cend(); ++path) {
            if (path->contains(method)) {
                continue;
            }
            for (const QByteArray& header : {QByteArray(), bearer(m_stranger), bearer(m_good)}) {
                RawHttp http(m_service.port());
                const RawReply reply =
                    http.request(method, targetOf(*probeOf.value(path.key()), m_world), "{}", header);
                QVERIFY2(reply.status == 405, qPrintable(about(method + ' ' + path.key(), reply)));
                const QList<QByteArray> allow =
                    QByteArray(reply.headers.value("allow")).replace(" ", "").split(',');
                QCOMPARE(QSet<QByteArray>(allow.begin(), allow.end()), path.value());
                ++refused;
            }
        }
        QVERIFY(refused > 0);
    }

    void noMethodOfItsOwn_data()
    {
        QTest::addColumn<QByteArray>("method");
        for (const char* method : {"get", "Delete", "FROB", "GETT", "DELETE\t", "X DELETE", ""}) {
            QTest::newRow(method) << QByteArray(method);
        }
    }
    void noMethodOfItsOwn()
    {
        QFETCH(QByteArray, method);
        RawHttp http(m_service.port());
        http.send(method + " /task-service/planNodes/victim HTTP/1.1\r\nHost: x\r\n" + bearer(m_good) +
                  "\r\n");
        const RawReply reply = http.read();
        QVERIFY2(reply.status == 400, qPrintable(about(method, reply)));
        QVERIFY(http.waitForClose());
    }

    void methodOverrides_data()
    {
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<QByteArray>("query");
        QTest::addColumn<QByteArray>("body");
        const QByteArray none;
        for (const QByteArray name : {"X-HTTP-Method-Override", "X-HTTP-Method", "X-Method-Override",
                                      "X-Http-Method-Override", "Method-Override", "_method"}) {
            QTest::newRow(name.constData()) << name + ": DELETE\r\n" << none << none;
        }
        QTest::newRow("in the query") << none << QByteArray("?_method=DELETE&method=DELETE") << none;
        QTest::newRow("in a body") << QByteArray("Content-Type: application/x-www-form-urlencoded\r\n")
                                   << none << QByteArray("_method=DELETE");
        for (const QByteArray name :
             {"X-Original-URL", "X-Rewrite-URL", "X-Forwarded-Uri", "X-Original-Method"}) {
            QTest::newRow(name.constData())
                << name + ": /task-service/planNodes?queryParam=%7B%22ids%22:[%22victim%22]%7D\r\n"
                << none << none;
        }
    }
    void methodOverrides()
    {
        QFETCH(QByteArray, header);
        QFETCH(QByteArray, query);
        QFETCH(QByteArray, body);
        // Each is what it says it is: reading passes and reads, a method that is not answered is not.
        for (const QByteArray method : {"GET", "POST"}) {
            RawHttp http(m_service.port());
            const RawReply reply =
                http.request(method, "/task-service/planNodes/victim" + query, body, bearer(m_good) + header);
            QVERIFY2(reply.status == (method == "GET" ? 200 : 405), qPrintable(about(method, reply)));
            QCOMPARE(reply.body.contains("Secret dig"), method == "GET");
        }
    }

    void namesOfUsersInHeaders_data()
    {
        QTest::addColumn<QByteArray>("header");
        for (const QByteArray name :
             {"X-Forwarded-User", "X-Remote-User", "Remote-User", "X-User", "X-Authenticated-User", "From"}) {
            QTest::newRow(name.constData()) << name + ": ann\r\n";
        }
        for (const QByteArray name : {"X-Forwarded-For", "X-Real-IP", "Forwarded", "X-Client-IP", "Via"}) {
            QTest::newRow(name.constData()) << name + ": 127.0.0.1\r\n";
        }
    }
    void namesOfUsersInHeaders()
    {
        QFETCH(QByteArray, header);
        for (const RouteProbe& probe : routeProbes()) {
            RawHttp http(m_service.port());
            const RawReply reply =
                http.request(probe.method(), targetOf(probe, m_world), bodyOf(probe, m_world), header);
            QVERIFY2(reply.status == (probe.route == "GET /health" ? 200 : 401),
                     qPrintable(about(probe.route, reply)));
        }
    }

    void disguisedPaths_data()
    {
        QTest::addColumn<QByteArray>("route");
        for (const RouteProbe& probe : routeProbes()) {
            QTest::newRow(probe.route.constData()) << probe.route;
        }
    }
    void disguisedPaths()
    {
        QFETCH(QByteArray, route);
        const auto probe = std::find_if(routeProbes().begin(), routeProbes().end(),
                                        [&](const RouteProbe& one) { return one.route == route; });
        const QByteArray target = targetOf(*probe, m_world);
        const QVector<QByteArray> targets = disguises(target);
        for (const QByteArray& disguise : targets) {
            QVERIFY(disguise != target);
            for (const QByteArray& header : {QByteArray(), bearer(m_stranger), bearer(m_good)}) {
                RawHttp http(m_service.port());
                const RawReply reply =
                    http.request(probe->method(), disguise, bodyOf(*probe, m_world), header);
                // Such a slash is part of an identifier, which there is not; who may ask is asked first.
                const bool isLongId = (disguise.contains("%2f") || disguise.contains('\\')) &&
                                      (reply.status == 405 || (header.isEmpty() && reply.status == 401));
                QVERIFY2(reply.status == 400 || reply.status == 404 || isLongId,
                         qPrintable(about(disguise, reply)));
                QVERIFY2(!reply.body.contains("Secret"), qPrintable(about(disguise, reply)));
            }
        }
    }

    void identifiersThatAreNone_data()
    {
        QTest::addColumn<QByteArray>("id");
        QTest::newRow("parent folder") << QByteArray("..");
        QTest::newRow("parent folder, encoded") << QByteArray("%2e%2e");
        QTest::newRow("path") << QByteArray("..%2f..%2fetc%2fpasswd");
        QTest::newRow("path with backslashes") << QByteArray("..%5c..%5cboot.ini");
        QTest::newRow("encoded twice") << QByteArray("%252e%252e%252f");
        QTest::newRow("something behind") << QByteArray("ID%20");
        QTest::newRow("something before") << QByteArray("%20ID");
        QTest::newRow("matrix parameter") << QByteArray("ID;v=1");
        QTest::newRow("line end") << QByteArray("ID%0d%0aX-Injected:%201");
        QTest::newRow("SQL") << QByteArray("x'%20OR%20'1'='1");
        QTest::newRow("SQL with a comment") << QByteArray("ID'--");
        QTest::newRow("pattern of SQL") << QByteArray("%25");
        QTest::newRow("one character of any kind") << QByteArray("_______________________");
        QTest::newRow("in capitals") << QByteArray("UPPER");
        QTest::newRow("soft hyphen") << QByteArray("ID%c2%ad");
        QTest::newRow("space of no width") << QByteArray("%e2%80%8bID");
        QTest::newRow("full width") << QByteArray("%ef%bd%96ictim");
        QTest::newRow("format of C") << QByteArray("%25s%25n");
        QTest::newRow("very long") << QByteArray(5000, 'a');
    }
    void identifiersThatAreNone()
    {
        QFETCH(QByteArray, id);
        for (const RouteProbe& probe : routeProbes()) {
            const int from = probe.route.indexOf('{');
            if (from < 0 || probe.route.contains("/settings/") || probe.route.endsWith("/auth")) {
                continue; // a setting's key may be anything, and of any project one may ask for one's rights
            }
            const bool isPlan = probe.route.contains("{planId}");
            const bool isProject = probe.route.contains("{projectId}");
            const QByteArray real = isPlan ? m_world.plan : isProject ? m_world.project : m_world.node;
            QByteArray written = id;
            written.replace("ID", real);
            written = id == "UPPER" ? real.toUpper() : written;
            QByteArray target = targetOf(probe, m_world);
            const int at = target.indexOf('/' + real);
            QVERIFY(at > 0 && written != real);
            target.replace(at + 1, real.size(), written);
            RawHttp http(m_service.port());
            const QByteArray body = bodyOf(probe, m_world).replace(R"("taskId":"victim",)", "");
            const RawReply reply = http.request(probe.method(), target, body, bearer(m_good));
            QVERIFY2(reply.status == 404 || reply.status == 403, qPrintable(about(target, reply)));
            QVERIFY2(!reply.body.contains("Secret"), qPrintable(about(target, reply)));
            QVERIFY(!reply.headers.contains("x-injected"));
        }
    }

    void headersBeyondTheLimits_data()
    {
        QTest::addColumn<QByteArray>("header");
        const QByteArray name = "Authorization: Bearer ";
        QTest::newRow("value") << "X: " + QByteArray(9000, 'a') + "\r\n";
        QTest::newRow("name") << QByteArray(9000, 'a') + ": x\r\n";
        QTest::newRow("number") << QByteArray("X: a\r\n").repeated(150);
        QTest::newRow("token of 9 kB") << name + QByteArray(9000, 'a') + "\r\n";
        QTest::newRow("token of 1 MB") << name + QByteArray(1 << 20, 'a') + "\r\n";
        QTest::newRow("spaces before the token") << name + QByteArray(1 << 20, ' ') + "x\r\n";
    }
    void headersBeyondTheLimits()
    {
        QFETCH(QByteArray, header);
        for (const RouteProbe& probe : routeProbes()) {
            RawHttp http(m_service.port());
            http.send(probe.method() + ' ' + targetOf(probe, m_world) + " HTTP/1.1\r\nHost: x\r\n" + header +
                      bearer(m_good) + "Content-Length: 0\r\n\r\n");
            const RawReply reply = http.read();
            QVERIFY2(reply.status == 431, qPrintable(about(probe.route, reply)));
            QVERIFY(http.waitForClose());
        }
    }

    void bodiesBeyondTheLimits()
    {
        int refused = 0;
        for (const RouteProbe& probe : routeProbes()) {
            for (const bool chunked : {false, true}) {
                RawHttp http(m_service.port());
                // Nothing of the one body is sent, and of the other no more than the limit takes.
                http.send(probe.method() + ' ' + targetOf(probe, m_world) + " HTTP/1.1\r\nHost: x\r\n" +
                          (chunked ? "Transfer-Encoding: chunked\r\n\r\n186a1\r\n" + QByteArray(100001, ' ')
                                   : QByteArray("Content-Length: 100001\r\n\r\n")));
                const RawReply reply = http.read();
                QVERIFY2(reply.status == 413, qPrintable(about(probe.route, reply)));
                QVERIFY(http.waitForClose());
                ++refused;
            }
        }
        QCOMPARE(refused, 2 * routeProbes().size());
    }

    void readInOneWayOnly_data()
    {
        QTest::addColumn<QByteArray>("framing"); // headers
        QTest::addColumn<QByteArray>("version");
        const QByteArray now = "HTTP/1.1";
        const auto row = [&](const char* name, const QByteArray& framing, const QByteArray& version) {
            QTest::newRow(name) << framing << version;
        };
        row("two lengths that differ", "Content-Length: 0\r\nContent-Length: BODY\r\n", now);
        row("two lengths that are the same", "Content-Length: BODY\r\nContent-Length: BODY\r\n", now);
        row("list of lengths", "Content-Length: BODY, BODY\r\n", now);
        row("signed length", "Content-Length: +BODY\r\n", now);
        row("negative length", "Content-Length: -1\r\n", now);
        row("length in hex", "Content-Length: 0x5\r\n", now);
        row("length and something", "Content-Length: 0 BODY\r\n", now);
        row("empty length", "Content-Length: \r\n", now);
        row("space behind the length's name", "Content-Length : 0\r\n", now);
        row("tab behind the length's name", "Content-Length\t: 0\r\n", now);
        row("folded length", "Content-Length: 0\r\n BODY\r\n", now);
        row("length and chunks", "Content-Length: 5\r\nTransfer-Encoding: chunked\r\n", now);
        row("chunks and length", "Transfer-Encoding: chunked\r\nContent-Length: 5\r\n", now);
        row("chunks, and chunks no more", "Transfer-Encoding: chunked\r\nTransfer-Encoding: identity\r\n",
            now);
        row("chunks twice", "Transfer-Encoding: chunked, chunked\r\n", now);
        row("something within chunks", "Transfer-Encoding: gzip, chunked\r\n", now);
        row("chunks within something", "Transfer-Encoding: chunked, gzip\r\n", now);
        row("not quite chunks", "Transfer-Encoding: xchunked\r\n", now);
        row("chunks in quotes", "Transfer-Encoding: \"chunked\"\r\n", now);
        row("space behind the name", "Transfer-Encoding : chunked\r\n", now);
        row("vertical tab", "Transfer-Encoding: \vchunked\r\n", now);
        row("null character", QByteArray("Transfer-Encoding: chunked") + '\0' + "\r\n", now);
        row("lone return", "X: a\rTransfer-Encoding: chunked\r\n", now);
        row("no name", ": chunked\r\n", now);
        row("no colon", "Transfer-Encoding chunked\r\n", now);
        row("two hosts", "Host: y\r\nContent-Length: 0\r\n", now);
        row("two versions", "Content-Length: 0\r\n", "HTTP/1.1 HTTP/1.1");
        row("no version", "Content-Length: 0\r\n", "");
    }
    // The second request in what follows the head must not be answered, whoever's it is.
    void readInOneWayOnly()
    {
        QFETCH(QByteArray, framing);
        QFETCH(QByteArray, version);
        const QByteArray second = smuggled + m_good + "\r\nContent-Length: 0\r\n\r\n";
        framing.replace("BODY", QByteArray::number(second.size()));
        RawHttp http(m_service.port());
        http.send("GET /health " + version + "\r\nHost: x\r\n" + framing + "\r\n" + second);
        const RawReply reply = http.read();
        QVERIFY2(reply.status == 400, qPrintable(about(framing, reply)));
        QCOMPARE(http.read().status, 0);
        QVERIFY(http.waitForClose());
    }

    void chunksThatAreNone_data()
    {
        QTest::addColumn<QByteArray>("chunks");
        QTest::newRow("negative") << QByteArray("-1\r\nx\r\n0\r\n\r\n");
        QTest::newRow("prefixed") << QByteArray("0x1\r\nx\r\n0\r\n\r\n");
        QTest::newRow("more than there are numbers") << QByteArray("fffffffffffffffff\r\nx\r\n0\r\n\r\n");
        QTest::newRow("shorter than its text") << QByteArray("1\r\nxy\r\n0\r\n\r\n");
        QTest::newRow("no return behind its size") << QByteArray("1\nx\r\n0\r\n\r\n");
        QTest::newRow("no size") << QByteArray("\r\nx\r\n0\r\n\r\n");
    }
    void chunksThatAreNone()
    {
        QFETCH(QByteArray, chunks);
        RawHttp http(m_service.port());
        http.send("PUT /user-service/settings/k HTTP/1.1\r\nHost: x\r\n" + bearer(m_good) +
                  "Transfer-Encoding: chunked\r\n\r\n" + chunks + smuggled + m_good + "\r\n\r\n");
        QCOMPARE(http.read().status, 400);
        QCOMPARE(http.read().status, 0);
        QVERIFY(http.waitForClose());
    }

    void headersBehindTheBodyCountForNothing()
    {
        RawHttp http(m_service.port());
        http.send("PUT /user-service/settings/k HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n"
                  "Trailer: Authorization\r\n\r\nb\r\n{\"value\":1}\r\n0\r\n" +
                  bearer(m_good) + "\r\n");
        QCOMPARE(http.read().status, 401);
    }

    void aLoneLineEndAndAFoldedLineAreReadInOneWay_data()
    {
        QTest::addColumn<QByteArray>("head");
        QTest::newRow("line ends without return") << QByteArray("Host: x\nTransfer-Encoding: chunked\n\n");
        QTest::newRow("folded coding") << QByteArray("Host: x\r\nTransfer-Encoding:\r\n chunked\r\n\r\n");
        QTest::newRow("folded header") << QByteArray("X: a\r\n b\r\nTransfer-Encoding: chunked\r\n\r\n");
    }
    // These are the two that the parser takes. What follows is then within the body for everybody who knows
    // the header, and never a request.
    void aLoneLineEndAndAFoldedLineAreReadInOneWay()
    {
        QFETCH(QByteArray, head);
        const QByteArray second = smuggled + m_good + "\r\nContent-Length: 0\r\n\r\n";
        RawHttp http(m_service.port());
        http.send("GET /health HTTP/1.1\r\n" + head + QByteArray::number(second.size(), 16) + "\r\n" +
                  second + "\r\n0\r\n\r\n");
        QCOMPARE(http.read().status, 200);
        // The next request is the one that comes next.
        QCOMPARE(http.get("/elsewhere").status, 404);
    }

    void nothingButHealthIsOpen()
    {
        int open = 0;
        RawHttp http(m_service.port());
        for (const RouteProbe& probe : routeProbes()) {
            const RawReply reply =
                http.request(probe.method(), targetOf(probe, m_world), bodyOf(probe, m_world));
            open += reply.status == 401 ? 0 : 1;
        }
        QCOMPARE(open, routesThatAskForNothing);
        // What it tells to anybody.
        QCOMPARE(objectOf(http.get("/health")).keys(),
                 QStringList({"schemaVersion"_s, "status"_s, "version"_s}));
    }
};

QTEST_GUILESS_MAIN(TestHostileRequests)
#include "TestHostileRequests.moc"
