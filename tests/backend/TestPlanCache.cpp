// Plans that are sent as they were kept: never another state than the one that the database holds, whoever
// changed it.

#include "PlanRequests.h"
#include "ServiceProcess.h"
#include "endpoints/Endpoints.h"
#include "store/OpenStore.h"
#include "store/SqliteDatabase.h"

#include <QtTest>

#include <array>
#include <atomic>
#include <thread>

using namespace KvTest;

namespace {

double number(RawHttp& http, const QByteArray& name)
{
    const QList<QByteArray> lines = http.get("/metrics").body.split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith(name + ' ')) {
            return line.mid(name.size() + 1).toDouble();
        }
    }
    return -1;
}

double hits(RawHttp& http)
{
    return number(http, "planservice_plan_cache_hits_total");
}

/// A change of one plan or more; PLAN, NODE and OTHER (a node of another plan) are filled in.
struct Write
{
    QByteArray method;
    QByteArray target;
    QByteArray body;
    bool changes = true; ///< whether the plan's text is another one afterwards
};

const std::vector<std::pair<const char*, Write>>& writes()
{
    static const QByteArray plan = "/task-service/plans/PLAN";
    static const QByteArray node = "/task-service/planNodes/NODE";
    static const std::vector<std::pair<const char*, Write>> all{
        {"plan renamed", {"PUT", plan, R"({"name":"Another"})"}},
        {"plan in another category, with its nodes", {"PUT", plan, R"({"category":"c2"})"}},
        {"plan as it was", {"PUT", plan, "{}", false}},
        {"nodes replaced", {"PUT", plan, R"({"projectData":[{"name":"Only one"}]})"}},
        {"nodes taken away", {"PUT", plan, R"({"projectData":[]})"}},
        {"plan copied", {"PUT", plan + "/copy", "{}", false}},
        {"another plan", {"POST", "/task-service/plans", R"({"projectId":"p1","name":"New"})", false}},
        {"plan deleted", {"DELETE", plan, ""}},
        {"node added", {"POST", "/task-service/planNodes", R"({"planId":"PLAN","name":"n"})"}},
        {"node without plan", {"POST", "/task-service/planNodes", R"({"projectId":"p1","name":"n"})", false}},
        {"nodes added", {"POST", plan + "/planNodes", R"([{"name":"n"},{"name":"m"}])"}},
        {"nodes added to another plan",
         {"POST", "/task-service/plans/ANOTHER/planNodes", R"([{"name":"n"}])", false}},
        {"child added", {"POST", plan + "/planNodes", R"([{"name":"n","parentTaskID":2}])"}},
        {"node changed", {"PUT", node, R"({"name":"Another"})"}},
        {"node as it was", {"PUT", node, R"({"name":"Dig"})", false}},
        {"nodes changed", {"PUT", "/task-service/planNodes", R"([{"_id":"NODE","remark":"r"}])"}},
        {"nodes of two plans changed",
         {"PUT", "/task-service/planNodes",
          R"([{"_id":"OTHER","remark":"r"},{"_id":"NODE","remark":"r"},{"_id":"OTHER","remark":"s"}])"}},
        {"node of another plan changed",
         {"PUT", "/task-service/planNodes", R"([{"_id":"OTHER","remark":"r"}])", false}},
        {"node deleted", {"DELETE", node, ""}},
        {"nodes of two plans deleted",
         {"DELETE", "/task-service/planNodes?queryParam=%7B%22ids%22:%5B%22OTHER%22,%22NODE%22%5D%7D", ""}},
        {"progress reported", {"POST", node + "/responses", R"({"percentage":40})"}},
        {"a word reported", {"POST", node + "/responses", R"({"remark":"rain"})", false}},
        {"metering state", {"PUT", "/ka-rond-service/tasks/NODE/taskstates", R"({"state":3})", false}},
        {"metering state made",
         {"POST", "/ka-rond-service/taskstates",
          R"({"projectId":"p1","planId":"PLAN","taskId":"NODE","responseId":null})", false}},
        {"setting", {"PUT", "/user-service/settings/k", R"({"value":1})", false}},
    };
    return all;
}

} // namespace

class TestPlanCache : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_first;
    ServiceProcess m_second;
    ServiceProcess m_keepsNothing;
    std::unique_ptr<RawHttp> m_one;
    std::unique_ptr<RawHttp> m_other;
    std::unique_ptr<RawHttp> m_truth;

    QJsonObject newPlan(const QString& name, int nodes = 3, const QByteArray& headers = {})
    {
        QJsonArray tasks{task("Summary"_s, 1), task("Dig"_s, 2, 1)};
        for (int i = 3; i <= nodes; ++i) {
            tasks.append(task("Task %1"_s.arg(i), i, 1));
        }
        return objectOf(m_one->request("POST", "/task-service/plans",
                                       jsonOf({{"projectId"_s, "p1"_s},
                                               {"category"_s, "c1"_s},
                                               {"name"_s, name},
                                               {"projectData"_s, tasks}}),
                                       headers));
    }
    static QByteArray targetOf(const QJsonObject& plan) { return "/task-service/plans/" + idOf(plan); }
    static QByteArray nodeOf(const QJsonObject& plan)
    {
        return idOf(plan.value("tasks"_s).toArray().at(1).toObject());
    }

    /// Both read what the database holds. @return that.
    RawReply readByAll(const QByteArray& target)
    {
        const RawReply truth = m_truth->get(target);
        for (RawHttp* http : {m_other.get(), m_one.get(), m_other.get()}) {
            const RawReply reply = http->get(target);
            if (reply.status != truth.status || (reply.status == 200 && reply.body != truth.body)) {
                return {};
            }
        }
        return truth;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_first.start({"--create"_s}), qPrintable(m_first.failure()));
        const QStringList same{"--database"_s, m_first.database()};
        QVERIFY2(m_second.start(same), qPrintable(m_second.failure()));
        QVERIFY2(m_keepsNothing.start(same + QStringList{"--plan-cache"_s, "0"_s}),
                 qPrintable(m_keepsNothing.failure()));
        m_one = std::make_unique<RawHttp>(m_first.port());
        m_other = std::make_unique<RawHttp>(m_second.port());
        m_truth = std::make_unique<RawHttp>(m_keepsNothing.port());
    }
    void cleanupTestCase()
    {
        QVERIFY2(m_first.stop(), qPrintable(m_first.failure()));
        QVERIFY2(m_second.stop(), qPrintable(m_second.failure()));
        QVERIFY2(m_keepsNothing.stop(), qPrintable(m_keepsNothing.failure()));
    }

    void theSecondReadIsKept()
    {
        const QJsonObject plan = newPlan("Kept"_s);
        const QByteArray first = m_other->get(targetOf(plan)).body;
        const double before = hits(*m_other);
        QVERIFY(first.contains("\"Kept\""));
        QCOMPARE(m_other->get(targetOf(plan)).body, first);
        QCOMPARE(hits(*m_other), before + 1);
        QVERIFY(number(*m_other, "planservice_plan_cache_bytes") >= first.size());
        QCOMPARE(m_truth->get(targetOf(plan)).body, first);
        QCOMPARE(m_truth->get(targetOf(plan)).body, first);
        QCOMPARE(hits(*m_truth), 0.0);
        QCOMPARE(number(*m_truth, "planservice_plan_cache_bytes"), 0.0);
    }

    void everyWriteIsRead_data()
    {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<bool>("changes");
        for (const auto& write : writes()) {
            QTest::newRow(write.first)
                << write.second.method << write.second.target << write.second.body << write.second.changes;
        }
    }
    void everyWriteIsRead()
    {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, target);
        QFETCH(QByteArray, body);
        QFETCH(bool, changes);
        const QJsonObject plan = newPlan("Tower"_s);
        const QJsonObject another = newPlan("Bridge"_s);
        const auto filled = [&](QByteArray text) {
            return text.replace("ANOTHER", idOf(another))
                .replace("PLAN", idOf(plan))
                .replace("OTHER", nodeOf(another))
                .replace("NODE", nodeOf(plan));
        };
        const RawReply before = readByAll(targetOf(plan));
        QCOMPARE(before.status, 200);
        QCOMPARE(readByAll(targetOf(another)).status, 200);
        const double kept = hits(*m_other);
        QCOMPARE(m_other->get(targetOf(plan)).body, before.body);
        QCOMPARE(hits(*m_other), kept + 1);

        const RawReply reply = m_one->request(method, filled(target), filled(body));
        QVERIFY2(reply.status / 100 == 2, reply.body.constData());
        const RawReply after = readByAll(targetOf(plan));
        QVERIFY2(after.status != 0, "the processes read different plans");
        QCOMPARE(after.status != 200 || after.body != before.body, changes);
        QCOMPARE(readByAll(targetOf(another)).status, 200);
    }

    // A new route that writes gets its row above.
    void everyRouteThatWritesIsAmongThem()
    {
        const PlanService::Router router(PlanService::serviceRoutes());
        QSet<QByteArray> written;
        for (const auto& write : writes()) {
            const auto match = router.match(write.second.method, write.second.target);
            written.insert(match.route->method + ' ' + match.route->pathTemplate);
        }
        for (const PlanService::Route& route : PlanService::serviceRoutes()) {
            const QByteArray name = route.method + ' ' + route.pathTemplate;
            QVERIFY2(route.method == "GET" || written.contains(name), name.constData());
        }
    }

    void rightsCountThoughThePlanIsKept()
    {
        ServiceProcess service;
        QVERIFY2(service.start({"--create"_s}), qPrintable(service.failure()));
        RawHttp http(service.port());
        const RawReply made = http.request("POST", "/task-service/plans",
                                           jsonOf({{"projectId"_s, "p1"_s},
                                                   {"name"_s, "Tower"_s},
                                                   {"projectData"_s, QJsonArray{task("a"_s, 1)}}}));
        const QByteArray plan = targetOf(objectOf(made));
        const QByteArray owner = service.createToken("ann"_s, "p1"_s, "read=all,edit"_s);
        const QByteArray stranger = service.createToken("bo"_s, "p2"_s, "read=all,edit"_s);
        const QByteArray another = service.createToken("cy"_s, "p1"_s, "read=own"_s);
        QVERIFY(!owner.isEmpty() && !stranger.isEmpty() && !another.isEmpty());
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(http.get(plan, bearer(owner)).status, 200);
            QCOMPARE(http.get(plan, bearer(stranger)).status, 403);
            QCOMPARE(http.get(plan, bearer(another)).status, 403);
            QCOMPARE(http.get(plan).status, 401);
        }
        const auto store = PlanService::connectStore(service.database());
        const qint64 id = store->tokens().first().id;
        store->setRights(id, {"p1"_s, ""_s, ""_s, true, true, true, true});
        QCOMPARE(http.get(plan, bearer(owner)).status, 403);
        store->setRights(id, {"p1"_s, ""_s, "all"_s, true, true, true, true});
        QCOMPARE(http.get(plan, bearer(owner)).status, 200);
        QVERIFY(store->revokeToken(id, "2026-01-01T00:00:00Z"_s));
        QCOMPARE(http.get(plan, bearer(owner)).status, 401);
    }

    void aRestoreIsRead()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath("backup"_s);
        const QJsonObject plan = newPlan("Before"_s);
        const RawReply before = readByAll(targetOf(plan));
        ServiceRun run = ServiceProcess::run({"backup"_s, file, "--database"_s, m_first.database()});
        QVERIFY2(run.exitCode == 0, run.errors.constData());
        QCOMPARE(m_one->request("PUT", targetOf(plan), R"({"name":"After"})").status, 200);
        const QJsonObject later = newPlan("Later"_s);
        QVERIFY(readByAll(targetOf(plan)).body.contains("\"After\""));
        QCOMPARE(readByAll(targetOf(later)).status, 200);

        const QStringList restore{"restore"_s, file, "--database"_s, m_first.database(), "--force"_s};
        run = ServiceProcess::run(restore);
        QVERIFY2(run.exitCode == 0, run.errors.constData());
        QCOMPARE(readByAll(targetOf(plan)).body, before.body);
        QCOMPARE(readByAll(targetOf(later)).status, 404);
        if (FreshDatabase::isPostgres()) {
            return;
        }
        // A backup that somebody changed by hand has the versions of before.
        PlanService::SqliteDatabase(file).execute(
            "UPDATE planNodes SET document = '{\"name\":\"Edited\"}'"_s);
        run = ServiceProcess::run(restore);
        QVERIFY2(run.exitCode == 0, run.errors.constData());
        QVERIFY(readByAll(targetOf(plan)).body.contains("\"Edited\""));
    }

    void theLimitHolds()
    {
        QVERIFY2(m_second.start({"--database"_s, m_first.database(), "--plan-cache"_s, "1"_s}),
                 qPrintable(m_second.failure()));
        m_other = std::make_unique<RawHttp>(m_second.port());
        const QByteArray large = targetOf(newPlan("Large"_s, 1500));
        QVERIFY(m_other->get(large).body.size() > 1 << 20);
        QCOMPARE(m_other->get(large).status, 200);
        QCOMPARE(hits(*m_other), 0.0);
        QCOMPARE(number(*m_other, "planservice_plan_cache_misses_total"), 2.0);
        QCOMPARE(number(*m_other, "planservice_plan_cache_bytes"), 0.0);
        QByteArray last;
        for (int i = 0; i < 6; ++i) {
            last = targetOf(newPlan("Part %1"_s.arg(i), 400));
            QVERIFY(m_other->get(last).body.size() > 200000);
            QVERIFY(number(*m_other, "planservice_plan_cache_bytes") <= 1 << 20);
        }
        QVERIFY(number(*m_other, "planservice_plan_cache_bytes") > 1 << 19);
        QCOMPARE(m_other->get(last).status, 200);
        QCOMPARE(hits(*m_other), 1.0);
    }

    // What a reply acknowledged is what everybody reads from then on, or something newer.
    void readersNeverGoBack()
    {
        constexpr int nodes = 3;
        constexpr int rounds = 60;
        const QJsonObject plan = newPlan("Busy"_s, nodes);
        const QByteArray target = targetOf(plan);
        QList<QByteArray> ids;
        const QJsonArray tasks = plan.value("tasks"_s).toArray();
        for (const QJsonValue& node : tasks) {
            ids.append(idOf(node.toObject()));
        }
        std::array<std::atomic<int>, nodes> acknowledged{};
        for (std::atomic<int>& workload : acknowledged) {
            workload = -1; // as long as it is not set
        }
        std::atomic<int> failures{0};
        std::atomic<int> writing{nodes};
        const quint16 ports[]{m_first.port(), m_second.port()};
        /// Whether the plan shows each node at least where it was when the request began.
        const auto isNew = [&](RawHttp& http) {
            std::array<int, nodes> least{};
            for (std::size_t i = 0; i < nodes; ++i) {
                least[i] = acknowledged[i];
            }
            const QJsonArray found = objectOf(http.get(target)).value("tasks"_s).toArray();
            bool good = found.size() == nodes;
            for (int i = 0; i < found.size(); ++i) {
                const auto place = static_cast<std::size_t>(ids.indexOf(idOf(found.at(i).toObject())));
                good = good && found.at(i).toObject().value("planWorkload"_s).toInt(-2) >= least[place];
            }
            return good;
        };
        std::vector<std::thread> threads;
        for (std::size_t writer = 0; writer < nodes; ++writer) {
            threads.emplace_back([&, writer] {
                RawHttp here(ports[writer % 2]);
                RawHttp there(ports[(writer + 1) % 2]);
                for (int round = 1; round <= rounds; ++round) {
                    const RawReply reply =
                        here.request("PUT", "/task-service/planNodes/" + ids.at(static_cast<int>(writer)),
                                     "{\"planWorkload\":" + QByteArray::number(round) + '}');
                    acknowledged[writer] = round;
                    failures += reply.status == 200 && isNew(there) && isNew(here) ? 0 : 1;
                }
                --writing;
            });
        }
        for (int reader = 0; reader < 4; ++reader) {
            threads.emplace_back([&, reader] {
                RawHttp http(ports[reader % 2]);
                while (writing > 0) {
                    failures += isNew(http) ? 0 : 1;
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        QCOMPARE(failures.load(), 0);
        QCOMPARE(readByAll(target).status, 200);
    }
};

QTEST_GUILESS_MAIN(TestPlanCache)
#include "TestPlanCache.moc"
