// Who may do what: every route of the service with every kind of token, and what the service tells about
// rights against what it enforces.

#include "PlanRequests.h"
#include "RouteProbes.h"
#include "ServiceProcess.h"
#include "Text.h"
#include "TokenMaking.h"
#include "endpoints/Endpoints.h"
#include "store/OpenStore.h"

#include <QSet>
#include <QtTest>

using namespace KvTest;
using PlanService::RightsRecord;

namespace {

/// A probe's needs as rights that a token has.
QStringList rightsFor(const QStringList& needs)
{
    return QStringList(needs).replaceInStrings("list"_s, "read"_s);
}

QString about(const RouteProbe& probe, const RawReply& reply)
{
    return QString::fromUtf8(probe.route + ": " + QByteArray::number(reply.status) + ' ' +
                             reply.body.left(500));
}

} // namespace

class TestRights : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    std::unique_ptr<RawHttp> m_http;
    std::unique_ptr<PlanService::Store> m_store;
    RouteWorld m_here{"p1", "", "", "victim-plan-1", "victim-node-1"};
    RouteWorld m_there{"p2", "", "", "victim-plan-2", "victim-node-2"};

    void fill(RouteWorld& world)
    {
        const QJsonObject node{{"_id"_s, "node-of-"_s + QString::fromLatin1(world.project)},
                               {"name"_s, "Secret dig"_s}};
        const RawReply reply = m_http->request("POST", "/task-service/plans",
                                               jsonOf({{"projectId"_s, QString::fromLatin1(world.project)},
                                                       {"category"_s, "c1"_s},
                                                       {"name"_s, "Secret tower"_s},
                                                       {"projectData"_s, QJsonArray{node}}}));
        QCOMPARE(reply.status, 200);
        world.plan = idOf(objectOf(reply));
        world.node = idOf(objectOf(reply).value("tasks"_s).toArray().first().toObject());
        QCOMPARE(
            m_http->request("PUT", "/ka-rond-service/tasks/" + world.node + "/taskstates", "{\"state\":1}")
                .status,
            200);
    }

    qint64 addToken(const QString& user, QByteArray& text, const QString& expiresAt = {})
    {
        return KvTest::addToken(*m_store, user, text, expiresAt);
    }
    QByteArray tokenWith(const QString& user, const QList<RightsRecord>& rights)
    {
        return KvTest::tokenWith(*m_store, user, rights);
    }

    /// What DELETE takes away each time.
    void bringVictims(const RouteWorld& world)
    {
        const QString project = QString::fromLatin1(world.project);
        const QString plan = QString::fromLatin1(world.victimPlan);
        const QString node = QString::fromLatin1(world.victimNode);
        if (m_store->planNodeOwnership(node)) {
            return;
        }
        m_store->removePlan(plan);
        m_store->insertPlan({plan, project, "c1"_s, "v"_s, {}, {}, "owner"_s, "{}"});
        PlanService::PlanNodeRecord record;
        record.id = node;
        record.planId = plan;
        record.projectId = project;
        record.category = "c1"_s;
        record.document = "{}";
        m_store->insertPlanNode(record);
    }

    RawReply ask(const RouteProbe& probe, const RouteWorld& world, const QByteArray& token)
    {
        if (probe.method() == "DELETE") {
            bringVictims(world);
        }
        return m_http->request(probe.method(), targetOf(probe, world), bodyOf(probe, world),
                               token.isEmpty() ? QByteArray() : bearer(token));
    }

    QString told(const QString& key, const QByteArray& project, const QByteArray& category,
                 const QByteArray& token)
    {
        const RawReply reply =
            m_http->get("/task-service/projects/" + project + "/auth?key=" + key.toLatin1() +
                            "&moduleKey=plan&category=" + category,
                        bearer(token));
        return reply.status == 200 ? objectOf(reply).value("value"_s).toString() : "failed"_s;
    }

    /// Every route in one project, against what the service tells the token of its rights there.
    void compareToldAndEnforced(const RouteWorld& world, const QByteArray& token, const QString& rights)
    {
        QSet<QString> granted;
        for (const QString& key : allRights) {
            const QString value = told(key, world.project, "c1", token);
            QVERIFY(QStringList({"all"_s, "own"_s, ""_s, "true"_s, "false"_s}).contains(value));
            if (value == (key == "read"_s ? "all"_s : "true"_s)) {
                granted.insert(key);
            }
        }
        for (const QByteArray category : {"", "c1", "c2"}) {
            if (!told("read"_s, world.project, category, token).isEmpty()) {
                granted.insert("list"_s);
            }
        }
        for (const RouteProbe& probe : routeProbes()) {
            const RawReply reply = ask(probe, world, token);
            const QString what = about(probe, reply) + rights;
            const bool may = granted.contains(QSet<QString>(probe.needs.begin(), probe.needs.end()));
            QVERIFY2(may ? reply.status / 100 == 2 : reply.status == 403, qPrintable(what));
            // Lists hold what may be read and nothing else; numbers alone show nothing.
            if (may && probe.needs == QStringList{"list"_s} && !probe.route.endsWith("_statistics")) {
                const bool shows = reply.body.contains("\"_id\":\"" + world.plan + '"') ||
                                   reply.body.contains("\"_id\":\"" + world.node + '"') ||
                                   reply.body.contains("\"taskId\":\"" + world.node + '"');
                QVERIFY2(shows == granted.contains("read"_s), qPrintable(what));
            }
        }
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_service.start({"--create"_s}), qPrintable(m_service.failure()));
        m_http = std::make_unique<RawHttp>(m_service.port());
        fill(m_here);
        fill(m_there);
        m_store = PlanService::connectStore(m_service.database());
    }
    void cleanupTestCase() { QVERIFY2(m_service.stop(), qPrintable(m_service.failure())); }

    void withoutTokensEverythingIsTold()
    {
        for (const QString& key : allRights) {
            QCOMPARE(told(key, "p1", "", "x"), key == "read"_s ? "all"_s : "true"_s);
        }
    }

    void everyRouteIsProbed()
    {
        QStringList unprobed;
        for (const PlanService::Route& route : PlanService::serviceRoutes()) {
            unprobed.append(QString::fromLatin1(route.method + ' ' + route.pathTemplate));
        }
        for (const RouteProbe& probe : routeProbes()) {
            QVERIFY2(unprobed.removeOne(QString::fromLatin1(probe.route)), probe.route.constData());
        }
        // A new route says in RouteProbes.cpp which rights it takes.
        QCOMPARE(unprobed.join(QLatin1Char('\n')), QString());
    }

    void needsAToken_data()
    {
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<QString>("code");
        QByteArray revoked;
        const qint64 id = addToken("ann"_s, revoked);
        m_store->setRights(id, rightsOf("p1"_s, ""_s, allRights));
        QVERIFY(m_store->revokeToken(id, "2026-01-02T00:00:00Z"_s));
        QByteArray expired;
        m_store->setRights(addToken("ann"_s, expired, "2026-01-02T00:00:00Z"_s),
                           rightsOf("p1"_s, ""_s, allRights));
        QByteArray good;
        m_store->setRights(addToken("ann"_s, good), rightsOf("p1"_s, ""_s, allRights));
        const QByteArray name = "Authorization: ";
        QTest::newRow("none") << QByteArray() << "tokenMissing"_s;
        QTest::newRow("nothing in the header") << name + "\r\n"
                                               << "tokenMissing"_s;
        QTest::newRow("spaces in the header") << name + " \t \r\n"
                                              << "tokenMissing"_s;
        QTest::newRow("no scheme") << name + good + "\r\n"
                                   << "tokenMalformed"_s;
        QTest::newRow("another scheme") << name + "Basic " + good + "\r\n"
                                        << "tokenMalformed"_s;
        QTest::newRow("scheme alone") << name + "Bearer\r\n"
                                      << "tokenMalformed"_s;
        QTest::newRow("scheme and spaces") << bearer("   ") << "tokenMalformed"_s;
        QTest::newRow("tab behind the scheme") << name + "Bearer\t" + good + "\r\n"
                                               << "tokenMalformed"_s;
        QTest::newRow("cut off") << bearer(good.chopped(1)) << "tokenMalformed"_s;
        QTest::newRow("a letter too many") << bearer(good + 'A') << "tokenMalformed"_s;
        QTest::newRow("padded") << bearer(good + '=') << "tokenMalformed"_s;
        QTest::newRow("another alphabet") << bearer(good.chopped(1) + "\xd0\xb0") << "tokenMalformed"_s;
        QTest::newRow("long") << bearer(QByteArray(8000, 'A')) << "tokenMalformed"_s;
        QTest::newRow("twice") << bearer(good) + bearer(good) << "tokenMalformed"_s;
        QTest::newRow("behind another one")
            << bearer(QByteArray(43, 'A')) + bearer(good) << "tokenMalformed"_s;
        QTest::newRow("of somebody else") << bearer(QByteArray(43, 'A')) << "tokenUnknown"_s;
        QTest::newRow("in a header of another name")
            << "X-Authorization: Bearer " + good + "\r\nProxy-Authorization: Bearer " + good +
                   "\r\nCookie: Authorization=Bearer " + good + "\r\n"
            << "tokenMissing"_s;
        QTest::newRow("revoked") << bearer(revoked) << "tokenRevoked"_s;
        QTest::newRow("expired") << bearer(expired) << "tokenExpired"_s;
    }
    void needsAToken()
    {
        QFETCH(QByteArray, header);
        QFETCH(QString, code);
        for (const RouteProbe& probe : routeProbes()) {
            QByteArray body = bodyOf(probe, m_here);
            const RawReply reply = m_http->request(probe.method(), targetOf(probe, m_here), body, header);
            const bool open = probe.route == "GET /health";
            QVERIFY2(reply.status == (open ? 200 : 401), probe.route.constData());
            QVERIFY2(open || errorOf(reply) == code + " "_s, probe.route.constData());
            QVERIFY2(!reply.body.contains("Secret"), probe.route.constData());
        }
    }

    void showsNothingOfAnotherProject()
    {
        const QByteArray token = tokenWith("ann"_s, {rightsOf("p2"_s, ""_s, allRights)});
        for (const RouteProbe& probe : routeProbes()) {
            const RawReply reply = ask(probe, m_here, token);
            if (probe.needs.isEmpty()) {
                QVERIFY2(reply.status == 200, probe.route.constData());
                continue;
            }
            QVERIFY2(reply.status == 403, qPrintable(about(probe, reply)));
            for (const QByteArray& secret : {QByteArray("Secret"), QByteArray("p1"), QByteArray("c1")}) {
                QVERIFY2(!reply.body.contains(secret), qPrintable(about(probe, reply)));
            }
            QVERIFY2(ask(probe, m_there, token).status / 100 == 2, probe.route.constData());
        }
        for (const QString& key : allRights) {
            QCOMPARE(told(key, "p1", "c1", token), key == "read"_s ? ""_s : "false"_s);
        }
        // By the filter of one project the other one's states do not come in.
        const RawReply states = m_http->get(
            "/ka-rond-service/projects/p2/taskstates?where=%7B%22planId%22:%22" + m_here.plan + "%22%7D",
            bearer(token));
        QCOMPARE(states.body, QByteArray("[]"));
    }

    void eachRightIsNeeded()
    {
        for (const RouteProbe& probe : routeProbes()) {
            const QStringList needed = rightsFor(probe.needs);
            const QByteArray enough = tokenWith("ann"_s, {rightsOf("p1"_s, ""_s, needed)});
            const RawReply allowed = ask(probe, m_here, enough);
            QVERIFY2(allowed.status / 100 == 2, qPrintable(about(probe, allowed)));
            for (const QString& right : needed) {
                QStringList others = allRights;
                others.removeAll(right);
                const RawReply refused =
                    ask(probe, m_here, tokenWith("ann"_s, {rightsOf("p1"_s, ""_s, others)}));
                QVERIFY2(refused.status == 403, qPrintable(about(probe, refused)));
                QVERIFY2(errorOf(refused) == "rightMissing "_s + right, qPrintable(about(probe, refused)));
                QVERIFY2(refused.body.contains("no right '" + right.toLatin1() + "'"),
                         refused.body.constData());
                QVERIFY2(!refused.body.contains("Secret"), probe.route.constData());
            }
        }
    }

    void tellsWhatItEnforces_data()
    {
        QTest::addColumn<QStringList>("places"); // categories that the rights are entered for
        QTest::addColumn<bool>("shut");          // and an entry of no rights for c1
        QTest::newRow("for the project") << QStringList{""_s} << false;
        QTest::newRow("for the category") << QStringList{"c1"_s} << false;
        QTest::newRow("for another category") << QStringList{"c2"_s} << false;
        QTest::newRow("for the project but not the category") << QStringList{""_s} << true;
    }
    void tellsWhatItEnforces()
    {
        QFETCH(QStringList, places);
        QFETCH(bool, shut);
        QByteArray token;
        const qint64 id = addToken("ann"_s, token);
        if (shut) {
            m_store->setRights(id, rightsOf("p1"_s, "c1"_s, {}));
        }
        const QStringList reads{""_s, "read=own"_s, "read=all"_s};
        const QStringList others{"create"_s, "edit"_s, "delete"_s, "export"_s};
        for (int i = 0; i < 3 * 16; ++i) {
            QStringList words{reads.at(i / 16)};
            for (int bit = 0; bit < 4; ++bit) {
                words += (i >> bit & 1) != 0 ? QStringList{others.at(bit)} : QStringList();
            }
            for (const QString& place : places) {
                m_store->setRights(id, rightsOf("p1"_s, place, words));
            }
            // What earlier rounds added would make copies and lists ever longer.
            m_store->keepPlanNodes(QString::fromLatin1(m_here.plan), {QString::fromLatin1(m_here.node)});
            compareToldAndEnforced(m_here, token, words.join(QLatin1Char(',')));
            if (i % 16 == 15) {
                compareToldAndEnforced(m_there, token, words.join(QLatin1Char(',')));
            }
        }
    }

    void ownIsWhatNamesTheUser()
    {
        const QJsonObject mine{{"_id"_s, "mine"_s}, {"executeIds"_s, QJsonArray{"ann"_s}}};
        const QByteArray all = tokenWith("bo"_s, {rightsOf("p3"_s, ""_s, allRights)});
        const RawReply plan =
            m_http->request("POST", "/task-service/plans",
                            jsonOf({{"projectId"_s, "p3"_s},
                                    {"projectData"_s, QJsonArray{mine, QJsonObject{{"_id"_s, "his"_s}}}}}),
                            bearer(all));
        QCOMPARE(plan.status, 200);
        for (const QByteArray task : {"mine", "his"}) {
            QCOMPARE(m_http
                         ->request("PUT", "/ka-rond-service/tasks/" + task + "/taskstates", "{\"state\":1}",
                                   bearer(all))
                         .status,
                     200);
        }
        const QByteArray own = tokenWith("ann"_s, {rightsOf("p3"_s, ""_s, {"read=own"_s, "edit"_s})});
        for (const QByteArray task : {"mine", "his"}) {
            const int status = task == "mine" ? 200 : 403;
            const QByteArray responses = "/task-service/planNodes/" + task + "/responses";
            QCOMPARE(m_http->get("/task-service/planNodes/" + task, bearer(own)).status, status);
            QCOMPARE(m_http->get(responses, bearer(own)).status, status);
            QCOMPARE(m_http->request("POST", responses, "{}", bearer(own)).status, status);
            QCOMPARE(m_http
                         ->request("PUT", "/ka-rond-service/tasks/" + task + "/taskstates", "{\"state\":2}",
                                   bearer(own))
                         .status,
                     status);
        }
        const auto total = [&](const QByteArray& rest, const QByteArray& token) {
            return objectOf(
                       m_http->get("/task-service/projects/p3/planNodes_statistics" + rest, bearer(token)))
                .value("total"_s)
                .toInt();
        };
        QCOMPARE(total("", own), 1);
        QCOMPARE(total("?personal=true", own), 1);
        QCOMPARE(total("", all), 2);
        QCOMPARE(total("?personal=true", all), 2); // bo created both
        const QJsonArray states =
            QJsonDocument::fromJson(m_http->get("/ka-rond-service/projects/p3/taskstates", bearer(own)).body)
                .array();
        QCOMPARE(states.size(), 1);
        QCOMPARE(states.first().toObject().value("taskId"_s).toString(), "mine"_s);
    }

    void refusesWhatItDoesNotKnow_data()
    {
        QTest::addColumn<QByteArray>("query");
        QTest::addColumn<QString>("field");
        QTest::newRow("unknown key") << QByteArray("?key=publish&moduleKey=plan") << "key"_s;
        QTest::newRow("key in another case") << QByteArray("?key=Read&moduleKey=plan") << "key"_s;
        QTest::newRow("no key") << QByteArray("?moduleKey=plan&category=c1") << "key"_s;
        QTest::newRow("unknown module") << QByteArray("?key=read&moduleKey=cost") << "moduleKey"_s;
        QTest::newRow("no module") << QByteArray("?key=read") << "moduleKey"_s;
    }
    void refusesWhatItDoesNotKnow()
    {
        QFETCH(QByteArray, query);
        QFETCH(QString, field);
        const QByteArray token = tokenWith("ann"_s, {});
        const RawReply reply = m_http->get("/task-service/projects/p1/auth" + query, bearer(token));
        QCOMPARE(reply.status, 400);
        QCOMPARE(errorOf(reply), "badParameter "_s + field);
    }
};

QTEST_GUILESS_MAIN(TestRights)
#include "TestRights.moc"
