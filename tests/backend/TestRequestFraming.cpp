// Requests that two readers might read differently, and requests that are too large.

#include "HostileWorld.h"

using namespace KvTest;

namespace {

const QByteArray smuggled =
    "DELETE /task-service/planNodes/victim HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer ";

} // namespace

class TestRequestFraming : public QObject
{
    Q_OBJECT

private:
    HostileWorld m_world;

private Q_SLOTS:
    void initTestCase() { m_world.start(); }
    void cleanup() { m_world.check(); }
    void cleanupTestCase() { m_world.stop(); }

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
            RawHttp http(m_world.port());
            http.send(probe.method() + ' ' + targetOf(probe, m_world.routes()) + " HTTP/1.1\r\nHost: x\r\n" +
                      header + bearer(m_world.good()) + "Content-Length: 0\r\n\r\n");
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
                RawHttp http(m_world.port());
                // Nothing of the one body is sent, and of the other no more than the limit takes.
                http.send(probe.method() + ' ' + targetOf(probe, m_world.routes()) +
                          " HTTP/1.1\r\nHost: x\r\n" +
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
        const QByteArray second = smuggled + m_world.good() + "\r\nContent-Length: 0\r\n\r\n";
        framing.replace("BODY", QByteArray::number(second.size()));
        RawHttp http(m_world.port());
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
        RawHttp http(m_world.port());
        http.send("PUT /user-service/settings/k HTTP/1.1\r\nHost: x\r\n" + bearer(m_world.good()) +
                  "Transfer-Encoding: chunked\r\n\r\n" + chunks + smuggled + m_world.good() + "\r\n\r\n");
        QCOMPARE(http.read().status, 400);
        QCOMPARE(http.read().status, 0);
        QVERIFY(http.waitForClose());
    }

    void headersBehindTheBodyCountForNothing()
    {
        RawHttp http(m_world.port());
        http.send("PUT /user-service/settings/k HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n"
                  "Trailer: Authorization\r\n\r\nb\r\n{\"value\":1}\r\n0\r\n" +
                  bearer(m_world.good()) + "\r\n");
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
        const QByteArray second = smuggled + m_world.good() + "\r\nContent-Length: 0\r\n\r\n";
        RawHttp http(m_world.port());
        http.send("GET /health HTTP/1.1\r\n" + head + QByteArray::number(second.size(), 16) + "\r\n" +
                  second + "\r\n0\r\n\r\n");
        QCOMPARE(http.read().status, 200);
        // The next request is the one that comes next.
        QCOMPARE(http.get("/elsewhere").status, 404);
    }
};

QTEST_GUILESS_MAIN(TestRequestFraming)
#include "TestRequestFraming.moc"
