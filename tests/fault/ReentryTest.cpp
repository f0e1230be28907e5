// A host that calls again from timers and from painting, three deep, while any operation of the facade waits.

#include <plandata/KvPlanData.h>
#include <setting/KvPlanSetting.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>

#include <support/ScriptedServer.h>

#include <QtCore/QJsonArray>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTimer>
#include <QtGui/QRasterWindow>
#include <QtTest/QtTest>

#include <functional>

using KvTest::Reply;
using KvTest::Request;

namespace {

constexpr int Depth = 3;

/// Does something each time it is painted.
class PaintedWindow : public QRasterWindow
{
public:
    std::function<void()> onPaint;

protected:
    void paintEvent(QPaintEvent*) override
    {
        if (onPaint)
            onPaint();
    }
};

struct Operation
{
    const char* name;
    bool (*run)(KvPlanData& data, const QString& id);
};

// Each kind of wait. What they are asked about is told by the id, so that a reply of another one
// shows.
const Operation Operations[] = {
    {"read a plan",
     [](KvPlanData& data, const QString& id) {
         KvPlan plan;
         return data.getPlanById(id, plan) && plan.id == id && data.getPlanName(id) == id;
     }},
    {"read a node",
     [](KvPlanData& data, const QString& id) {
         KvPlanNode node;
         KvPlanNode cached;
         return data.getPlanNodeById(id, node) && node.id == id &&
                data.getPlanNodeFromCacheById(id, cached) && cached.id == id;
     }},
    {"list plans",
     [](KvPlanData& data, const QString&) {
         QList<KvPlan> plans;
         return data.getAllPlan(plans, false) && plans.size() == 1;
     }},
    {"count plans",
     [](KvPlanData& data, const QString&) {
         KvPlanCondition condition;
         condition.allTime = true;
         int count = 0;
         return data.getPlanRangeCount(condition, count) && count == 1;
     }},
    {"create a plan",
     [](KvPlanData& data, const QString& id) {
         KvPlan plan;
         plan.name = id;
         return data.createPlan(plan) && plan.id == QLatin1String("plans") &&
                data.getPlanName(plan.id) == plan.name;
     }},
    {"create a node",
     [](KvPlanData& data, const QString& id) {
         KvPlanNode node;
         node.name = id;
         return data.createPlanNode(node) && node.id == QLatin1String("planNodes");
     }},
    {"update a plan",
     [](KvPlanData& data, const QString& id) {
         KvPlan plan;
         if (!data.getPlanById(id, plan))
             return false;
         plan.category = QStringLiteral("changed");
         return data.updatePlan(plan) && plan.id == id;
     }},
    {"update a node",
     [](KvPlanData& data, const QString& id) {
         KvPlanNode node;
         if (!data.getPlanNodeById(id, node))
             return false;
         node.remark = QStringLiteral("changed");
         return data.updatePlanNode(node) && node.id == id;
     }},
    {"copy a plan",
     [](KvPlanData& data, const QString& id) {
         KvPlan plan;
         return data.copyPlanById(id, plan) && plan.id == QLatin1String("copy");
     }},
    {"list a plan's nodes",
     [](KvPlanData& data, const QString& id) {
         QList<KvPlanNode> nodes;
         data.getPlanNodesByPlanId(id, nodes); // reads the plan first, for its category
         return nodes.size() == 1 && data.getPlanName(id) == id;
     }},
    {"save nodes",
     [](KvPlanData& data, const QString& id) {
         KvPlanNode known;
         if (!data.getPlanNodeById(id, known))
             return false;
         known.name = QStringLiteral("changed");
         data.savePlanNodes(QStringLiteral("p1"), {KvPlanNode(), known});
         KvPlanNode created;
         return data.getPlanNodeFromCacheById(QStringLiteral("planNodes"), created) &&
                created.name == QLatin1String("planNodes");
     }},
    {"update nodes",
     [](KvPlanData& data, const QString& id) {
         KvPlanNode node;
         node.id = id;
         QList<KvPlanNode> nodes{node};
         return data.updatePlanNodes(nodes) && nodes.isEmpty();
     }},
    {"report progress",
     [](KvPlanData& data, const QString& id) {
         KvPlanNodeResponse response;
         return data.createPlanNodeResponse(id, response) && response.id == QLatin1String("responses");
     }},
    {"count progress",
     [](KvPlanData& data, const QString&) {
         KvPlanStatistics statistics;
         return data.geStatistics(QStringLiteral("c"), statistics) && statistics.total == 1;
     }},
    {"set a state",
     [](KvPlanData& data, const QString& id) {
         KvMeteringState state;
         state.taskId = id;
         return data.updateMeteringState(state) && state.id == QLatin1String("taskstates");
     }},
    {"delete a node",
     [](KvPlanData& data, const QString& id) {
         return data.deletePlanNodeById(id);
     }},
    {"ask for rights",
     [](KvPlanData& data, const QString&) {
         data.initAuth(QStringLiteral("c"));
         return data.getCreateAuth() && data.getExportAuth();
     }},
    {"load the hidden columns",
     [](KvPlanData&, const QString&) {
         KvPlanSetting::instance()->LoadPlanSetting();
         return KvPlanSetting::instance()->GetGanttHideHeader() == QStringList{QStringLiteral("a")};
     }},
    {"store a setting",
     [](KvPlanData& data, const QString&) {
         return data.saveSetting(QStringLiteral("k"), {{QStringLiteral("value"), 1}});
     }},
};

/// Answers any of the operations, naming what was asked about.
Reply answerTo(const Request& request)
{
    const QString path = request.decodedPath();
    const QString id = path.section(QLatin1Char('/'), -1);
    const QJsonObject record{{QStringLiteral("_id"), id}, {QStringLiteral("name"), id}};
    if (path.contains(QLatin1String("/settings/")))
        return Reply::json(QJsonObject{{QStringLiteral("value"), QJsonArray{QStringLiteral("a")}}});
    if (path.endsWith(QLatin1String("/auth")))
        return Reply::json(QJsonObject{{QStringLiteral("value"), QStringLiteral("true")}});
    if (request.target.contains("only_count"))
        return Reply::json(QJsonObject{{QStringLiteral("count"), 1}});
    if (path.endsWith(QLatin1String("_statistics")))
        return Reply::json(QJsonObject{{QStringLiteral("total"), 1}});
    if (path.contains(QLatin1String("/projects/")) ||
        (path.contains(QLatin1String("/plans/")) && path.endsWith(QLatin1String("/planNodes"))))
        return Reply::json(QJsonArray{record});
    return Reply::json(record);
}

} // namespace

class ReentryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void fromATimer_data() { operations(); }
    void fromATimer();
    void fromPainting_data() { operations(); }
    void fromPainting();
    void timerAndPaintingTakeTurns();

private:
    static void operations();
    void enter(int level, const Operation& outer, const std::function<void(int)>& again);

    QTemporaryDir m_folder;
    KvTest::ScriptedServer m_server;
    QList<int> m_ended;
    int m_entered = 0;
};

void ReentryTest::initTestCase()
{
    SetSettingsDirectory(m_folder.path());
    KvBaseApi::GetInstance().setBaseApi(m_server.baseUrl());
    GetSoftCache()->setCurrentProjectId(QStringLiteral("project"));
}

void ReentryTest::init()
{
    KvPlanData::instance()->clear();
    m_ended.clear();
    m_entered = 0;
}

void ReentryTest::cleanup()
{
    // The connections stay open: a request with a body is sent once only, so one that met a closing one would
    // fail.
    m_server.setHandler({});
    m_server.forgetRequests();
    disconnect(&m_server, nullptr, this, nullptr);
}

void ReentryTest::operations()
{
    QTest::addColumn<int>("number");
    int number = 0;
    for (const Operation& operation : Operations)
        QTest::newRow(operation.name) << number++;
}

/// Runs an operation and has `again` called for the next level once this one waits. All that are outstanding
/// are answered when the innermost has asked.
void ReentryTest::enter(int level, const Operation& outer, const std::function<void(int)>& again)
{
    // The outermost is the operation of the row; further in come the others, in turn.
    const auto index = static_cast<std::size_t>(&outer - Operations);
    const Operation& operation =
        Operations[(index + static_cast<std::size_t>(level - 1)) % std::size(Operations)];
    ++m_entered;
    if (level < Depth) {
        const int asked = m_server.requestCount() + 1;
        auto* const once = new QObject(this);
        connect(&m_server, &KvTest::ScriptedServer::requestReceived, once,
                [this, once, asked, level, again](int count) {
                    if (count < asked)
                        return;
                    disconnect(&m_server, nullptr, once,
                               nullptr); // the deletion waits until this loop has ended
                    once->deleteLater();
                    again(level + 1);
                });
    }
    QVERIFY2(operation.run(*KvPlanData::instance(), QStringLiteral("id%1").arg(level)), operation.name);
    m_ended.append(level);
}

void ReentryTest::fromATimer()
{
    QFETCH(int, number);
    m_server.setHandler([](const Request& request) { return answerTo(request).heldUntil(Depth); });
    std::function<void(int)> again = [&](int level) {
        QTimer::singleShot(0, this,
                           [this, level, number, &again] { enter(level, Operations[number], again); });
    };
    enter(1, Operations[number], again);
    QCOMPARE(m_entered, Depth);
    QCOMPARE(m_ended, (QList<int>{3, 2, 1})); // from the inside out
}

void ReentryTest::fromPainting()
{
    QFETCH(int, number);
    PaintedWindow window;
    window.resize(50, 50);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    m_server.setHandler([](const Request& request) { return answerTo(request).heldUntil(Depth); });
    int next = 0;
    std::function<void(int)> again = [&](int level) {
        next = level;
        window.update();
    };
    // A window is not painted while it is painted, so each level paints one of its own.
    std::vector<std::unique_ptr<PaintedWindow>> inner;
    std::function<void()> paint = [&] {
        if (next == 0)
            return;
        const int level = std::exchange(next, 0);
        inner.push_back(std::make_unique<PaintedWindow>());
        PaintedWindow& own = *inner.back();
        own.onPaint = paint;
        own.resize(40, 40);
        own.show();
        enter(level, Operations[number], [&next, &own](int deeper) {
            next = deeper;
            own.update();
        });
    };
    window.onPaint = paint;
    enter(1, Operations[number], again);
    QCOMPARE(m_entered, Depth);
    QCOMPARE(m_ended, (QList<int>{3, 2, 1}));
}

/// A window that is painted from the caches as they change under it.
void ReentryTest::timerAndPaintingTakeTurns()
{
    m_server.setHandler(answerTo);
    PaintedWindow window;
    window.resize(50, 50);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    KvPlanData& data = *KvPlanData::instance();
    int depth = 0;
    int painted = 0;
    int read = 0;
    window.onPaint = [&] {
        ++painted;
        data.getAllPlanNames();
        KvPlan plan;
        if (depth < Depth) {
            ++depth;
            read += data.getPlanFromCacheById(QStringLiteral("painted"), plan) ? 1 : 0;
            --depth;
        }
    };
    QTimer clock;
    connect(&clock, &QTimer::timeout, &window, [&] {
        window.update();
        if (depth == 0)
            data.clear();
    });
    clock.start(0);
    for (int i = 0; i < 100; ++i) {
        KvPlan plan;
        const QString id = QString::number(i);
        QVERIFY(data.getPlanById(id, plan));
        QCOMPARE(plan.id, id);
        QList<KvPlan> plans;
        QVERIFY(data.getAllPlan(plans, false));
    }
    QTRY_VERIFY(painted > 3);
    QVERIFY(read > 0);
}

QTEST_MAIN(ReentryTest)
#include "ReentryTest.moc"
