// What somebody with bad intentions sends: every route with every other method, paths that mean to get around
// the router, headers that mean to get around the method or the token.

#include "HostileWorld.h"

#include <QSet>

using namespace KvTest;

namespace {

constexpr int routesThatAskForNothing = 1; // /health

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
    HostileWorld m_world;

private Q_SLOTS:
    void initTestCase() { m_world.start(); }
    void cleanup() { m_world.check(); }
    void cleanupTestCase() { m_world.stop(); }

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
            for (const QByteArray& header :
                 {QByteArray(), bearer(m_world.stranger()), bearer(m_world.good())}) {
                RawHttp http(m_world.port());
                const RawReply reply = http.request(
                    method, targetOf(*probeOf.value(path.key()), m_world.routes()), "{}", header);
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
        RawHttp http(m_world.port());
        http.send(method + " /task-service/planNodes/victim HTTP/1.1\r\nHost: x\r\n" +
                  bearer(m_world.good()) + "\r\n");
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
            RawHttp http(m_world.port());
            const RawReply reply = http.request(method, "/task-service/planNodes/victim" + query, body,
                                                bearer(m_world.good()) + header);
            QVERIFY2(reply.status == (method == "GET" ? 200 : 405), qPrintable(about(method, reply)));
            QCOMPARE(reply.body.contains("Secret dig"), method == "GET");
        }
    }

    void methodOverridesOnEveryRoute_data()
    {
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<QByteArray>("query");
        for (const QByteArray name : {"X-HTTP-Method-Override", "X-HTTP-Method", "X-Method-Override",
                                      "Method-Override", "X-Original-Method", "_method"}) {
            QTest::newRow(name.constData()) << name + ": METHOD\r\n" << QByteArray();
        }
        QTest::newRow("in the query") << QByteArray() << QByteArray("_method=METHOD&method=METHOD");
    }
    // Who may only read is refused what changes, whichever method the request says it has besides its own,
    // and reads what he would read without.
    void methodOverridesOnEveryRoute()
    {
        QFETCH(QByteArray, header);
        QFETCH(QByteArray, query);
        for (const RouteProbe& probe : routeProbes()) {
            if (probe.route.startsWith("PUT /user-service/")) {
                continue; // a setting is one's own, and may be changed by anybody
            }
            for (const QByteArray method : {"GET", "HEAD", "POST", "PUT", "DELETE"}) {
                const QByteArray target = targetOf(probe, m_world.routes());
                QByteArray more = query;
                more.replace("METHOD", method);
                more = more.isEmpty() ? more : (target.contains('?') ? "&" : "?") + more;
                const QByteArray said = QByteArray(header).replace("METHOD", method);
                const QByteArray body = bodyOf(probe, m_world.routes());
                RawHttp http(m_world.port());
                const RawReply plain = http.request(probe.method(), target, body, bearer(m_world.reader()));
                const RawReply reply =
                    http.request(probe.method(), target + more, body, bearer(m_world.reader()) + said);
                QVERIFY2(reply.status == plain.status, qPrintable(about(method + ' ' + probe.route, reply)));
                const bool changes = probe.method() != "GET";
                QVERIFY2(reply.status == (changes ? 403 : 200), qPrintable(about(probe.route, reply)));
                if (probe.route != "GET /metrics") {
                    QCOMPARE(reply.body, plain.body);
                }
                const RawReply nobody = http.request(probe.method(), target + more, body, said);
                QVERIFY2(nobody.status == (probe.route == "GET /health" ? 200 : 401),
                         qPrintable(about(probe.route, nobody)));
            }
        }
    }

    void tokensInOtherPlaces_data()
    {
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<QByteArray>("query");
        const QByteArray none;
        for (const QByteArray name :
             {"X-Api-Key", "X-Auth-Token", "X-Access-Token", "Api-Key", "Token", "X-Authorization",
              "Proxy-Authorization", "Authorization2", "WWW-Authenticate", "Sec-WebSocket-Protocol"}) {
            QTest::newRow(name.constData()) << name + ": Bearer TOKEN\r\n" << none;
            QTest::newRow(QByteArray(name + " alone").constData()) << name + ": TOKEN\r\n" << none;
        }
        QTest::newRow("cookie") << QByteArray("Cookie: token=TOKEN; Authorization=Bearer TOKEN\r\n") << none;
        for (const QByteArray name :
             {"access_token", "token", "api_key", "apikey", "key", "auth", "Authorization", "bearer"}) {
            QTest::newRow(QByteArray(name + " in the query").constData()) << none << name + "=TOKEN";
        }
        QTest::newRow("on the way to another protocol")
            << QByteArray("Connection: Upgrade, HTTP2-Settings\r\nUpgrade: h2c\r\nHTTP2-Settings: TOKEN\r\n")
            << none;
    }
    void tokensInOtherPlaces()
    {
        QFETCH(QByteArray, header);
        QFETCH(QByteArray, query);
        header.replace("TOKEN", m_world.good());
        query.replace("TOKEN", m_world.good());
        for (const RouteProbe& probe : routeProbes()) {
            const QByteArray target = targetOf(probe, m_world.routes());
            const QByteArray more = query.isEmpty() ? query : (target.contains('?') ? "&" : "?") + query;
            RawHttp http(m_world.port());
            const RawReply reply =
                http.request(probe.method(), target + more, bodyOf(probe, m_world.routes()), header);
            QVERIFY2(reply.status == (probe.route == "GET /health" ? 200 : 401),
                     qPrintable(about(probe.route, reply)));
            QVERIFY2(!reply.body.contains("Secret"), qPrintable(about(probe.route, reply)));
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
            RawHttp http(m_world.port());
            const RawReply reply = http.request(probe.method(), targetOf(probe, m_world.routes()),
                                                bodyOf(probe, m_world.routes()), header);
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
        const QByteArray target = targetOf(*probe, m_world.routes());
        const QVector<QByteArray> targets = disguises(target);
        for (const QByteArray& disguise : targets) {
            QVERIFY(disguise != target);
            for (const QByteArray& header :
                 {QByteArray(), bearer(m_world.stranger()), bearer(m_world.good())}) {
                RawHttp http(m_world.port());
                const RawReply reply =
                    http.request(probe->method(), disguise, bodyOf(*probe, m_world.routes()), header);
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
            const QByteArray real = isPlan      ? m_world.routes().plan
                                    : isProject ? m_world.routes().project
                                                : m_world.routes().node;
            QByteArray written = id;
            written.replace("ID", real);
            written = id == "UPPER" ? real.toUpper() : written;
            QByteArray target = targetOf(probe, m_world.routes());
            const int at = target.indexOf('/' + real);
            QVERIFY(at > 0 && written != real);
            target.replace(at + 1, real.size(), written);
            RawHttp http(m_world.port());
            const QByteArray body = bodyOf(probe, m_world.routes()).replace(R"("taskId":"victim",)", "");
            const RawReply reply = http.request(probe.method(), target, body, bearer(m_world.good()));
            QVERIFY2(reply.status == 404 || reply.status == 403, qPrintable(about(target, reply)));
            QVERIFY2(!reply.body.contains("Secret"), qPrintable(about(target, reply)));
            QVERIFY(!reply.headers.contains("x-injected"));
        }
    }

    void nothingButHealthIsOpen()
    {
        int open = 0;
        RawHttp http(m_world.port());
        for (const RouteProbe& probe : routeProbes()) {
            const RawReply reply = http.request(probe.method(), targetOf(probe, m_world.routes()),
                                                bodyOf(probe, m_world.routes()));
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
