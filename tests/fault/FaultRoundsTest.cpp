// Operations on the real service over a wire that goes wrong at random: each succeeds as the service's own
// data shows or returns its failure, the caches hold what they are documented to hold, no wait lasts longer
// than it may, and nothing stays in memory.

#include <model/KvPlanCodec.h>
#include <plandata/KvPlanData.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvSoftBase/KvSoftBase.h>

#include <model/KvPlanRecordsDump.h>
#include <support/FaultyProxy.h>

#include <RawHttp.h>
#include <ServiceProcess.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

#if defined(__SANITIZE_ADDRESS__)
// Every sanitizer's runtime has it; GCC comes without the header that says so.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#elif defined(Q_OS_LINUX)
#include <malloc.h>
#endif

using KvTest::FaultyProxy;

namespace {

constexpr int IdleMs = 1000;
constexpr int TotalMs = 4000;
constexpr int GraceMs = 4000; // for a machine that is busy with other things

int fromEnvironment(const char* name, int usual)
{
    bool isNumber = false;
    const int value = qEnvironmentVariableIntValue(name, &isNumber);
    return isNumber && value > 0 ? value : usual;
}

/// Bytes that the process has allocated and not freed; 0 where the system does not tell.
qint64 bytesInUse()
{
#if defined(__SANITIZE_ADDRESS__)
    return static_cast<qint64>(__sanitizer_get_current_allocated_bytes());
#elif defined(Q_OS_LINUX)
    return static_cast<qint64>(mallinfo2().uordblks);
#else
    return 0;
#endif
}

const QString project = QStringLiteral("fault");

} // namespace

class FaultRoundsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void rounds();

private:
    void readPlan();
    void readNode();
    void renamePlan();
    void remarkNode();
    void createNode();
    void deleteNode();
    void listPlans();
    void countPlans();
    void saveNodes();
    void keepSetting();
    void readSetting();

    void run(int operation);
    void checkCaches();
    void prepare();
    KvTest::RawReply asked(const QString& target);
    QJsonObject stored(const QString& target);
    QString planTarget(const QString& id) { return QStringLiteral("/task-service/plans/") + id; }
    QString nodeTarget(const QString& id)
    {
        return QStringLiteral("/task-service/planNodes/%1?expand=true").arg(id);
    }
    int number(int below) { return static_cast<int>(m_random() % static_cast<quint32>(below)); }
    QString freshText() { return QStringLiteral("text %1").arg(++m_made); }
    QString anyPlan() { return m_plans.at(number(m_plans.size())); }
    QString anyNode() { return m_nodes.at(number(m_nodes.size())); }
    bool done(bool succeeded);
    KvPlanData& data() { return *KvPlanData::instance(); }

    KvTest::ServiceProcess m_service;
    std::unique_ptr<FaultyProxy> m_proxy;
    std::mt19937 m_random;
    QStringList m_plans;
    QStringList m_nodes;
    QStringList m_extraNodes;
    QMap<QString, QString> m_cachedPlans;     // names, as the plan cache should have them
    QMap<QString, QJsonObject> m_cachedNodes; // likewise
    QList<KvNetworkReport> m_reports;         // of the operation that runs
    int m_made = 0;
    int m_succeeded = 0;
    int m_failed = 0;
};

void FaultRoundsTest::initTestCase()
{
    QVERIFY2(m_service.start({QStringLiteral("--create")}), qPrintable(m_service.failure()));
    const auto seed = static_cast<quint32>(fromEnvironment("KV_FAULT_SEED", 1));
    qInfo("seed %u", seed);
    m_random.seed(seed);
    m_proxy = std::make_unique<FaultyProxy>(m_service.port(), seed);
    KvBaseApi::GetInstance().setBaseApi(m_proxy->baseUrl());
    GetSoftCache()->setCurrentProjectId(project);
    connect(&NetworkManager::instance(), &NetworkManager::requestFinished, this,
            [this](const KvNetworkReport& report) { m_reports.append(report); });
    prepare();
}

void FaultRoundsTest::prepare()
{
    for (int i = 0; i < 4; ++i) {
        KvPlan plan;
        plan.name = freshText();
        for (int row = 1; row <= 5; ++row) {
            KvPlanNode node;
            node.name = QStringLiteral("Floor %1").arg(row);
            node.planNodeId = node.uniqueId = row;
            node.startDate = QDateTime(QDate(2026, 3, row), QTime(8, 0));
            plan.planNodes.append(node);
        }
        QVERIFY(data().createPlan(plan));
        QCOMPARE(plan.planNodes.size(), 5);
        m_plans.append(plan.id);
        m_cachedPlans.insert(plan.id, plan.name);
        for (const KvPlanNode& node : qAsConst(plan.planNodes))
            m_nodes.append(node.id);
    }
}

void FaultRoundsTest::rounds()
{
    const int operations = fromEnvironment("KV_FAULT_OPERATIONS", 400);
    NetworkManager::instance().setTimeout(IdleMs);
    NetworkManager::instance().setTotalTimeout(TotalMs);
    m_proxy->setFaultsPerThousand(400);
    m_proxy->setSilencePerThousand(2);
    qint64 memoryBefore = 0;
    const auto memory = [this] {
        data().clear();
        m_cachedPlans.clear();
        m_cachedNodes.clear();
        m_reports.clear();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return bytesInUse();
    };
    for (int i = 0; i < operations; ++i) {
        if (i == operations / 4)
            memoryBefore = memory();
        m_reports.clear();
        const int operation = number(11);
        run(operation);
        checkCaches();
        if (QTest::currentTestFailed()) {
            qWarning("operation %d, number %d", operation, i);
            return;
        }
    }
    const qint64 growth = memory() - memoryBefore;
    qInfo("%d operations, %d succeeded, %d failed, %d exchanges, %lld bytes more in use", operations,
          m_succeeded, m_failed, m_proxy->exchangeCount(), static_cast<long long>(growth));
    QVERIFY2(growth < 1024 * 1024, qPrintable(QString::number(growth)));
    QVERIFY(m_succeeded > operations / 3);
    QVERIFY(m_failed > operations / 50);
    for (int fault = 0; fault < FaultyProxy::FaultCount; ++fault) {
        if (fault != FaultyProxy::Never || operations >= 10000)
            QVERIFY2(m_proxy->count(FaultyProxy::Fault(fault)) > 0, qPrintable(QString::number(fault)));
    }
}

void FaultRoundsTest::run(int operation)
{
    using Operation = void (FaultRoundsTest::*)();
    static const Operation all[] = {
        &FaultRoundsTest::readPlan,    &FaultRoundsTest::readNode,   &FaultRoundsTest::renamePlan,
        &FaultRoundsTest::remarkNode,  &FaultRoundsTest::createNode, &FaultRoundsTest::deleteNode,
        &FaultRoundsTest::listPlans,   &FaultRoundsTest::countPlans, &FaultRoundsTest::saveNodes,
        &FaultRoundsTest::keepSetting, &FaultRoundsTest::readSetting};
    QElapsedTimer clock;
    clock.start();
    (this->*all[operation])();
    // The service is asked for what it holds after the operation; that takes a moment of the same clock.
    const int requests = qMax(1, m_reports.size());
    QVERIFY2(clock.elapsed() < requests * TotalMs + GraceMs, qPrintable(QString::number(clock.elapsed())));
}

/// Counts the operation. Its flag is the outcome of its last request.
bool FaultRoundsTest::done(bool succeeded)
{
    ++(succeeded ? m_succeeded : m_failed);
    if (!m_reports.isEmpty() && succeeded != (m_reports.last().category == KvNetworkReport::Ok))
        QTest::qFail("the flag is not the outcome that was reported", __FILE__, __LINE__);
    return succeeded;
}

KvTest::RawReply FaultRoundsTest::asked(const QString& target)
{
    KvTest::RawHttp http(m_service.port());
    return http.get(target.toUtf8());
}

QJsonObject FaultRoundsTest::stored(const QString& target)
{
    return QJsonDocument::fromJson(asked(target).body).object();
}

void FaultRoundsTest::readPlan()
{
    const QString id = anyPlan();
    KvPlan plan;
    if (!done(data().getPlanById(id, plan))) {
        QCOMPARE(plan.id, QString());
        QVERIFY(plan.planNodes.isEmpty());
        return;
    }
    KvPlan truth;
    Kv::jsonObjectToPlan(stored(planTarget(id)), truth);
    QCOMPARE(KvTest::difference(KvTest::dump(plan), KvTest::dump(truth)), QString());
    m_cachedPlans.insert(id, plan.name);
}

void FaultRoundsTest::readNode()
{
    const QString id = anyNode();
    KvPlanNode node;
    if (!done(data().getPlanNodeById(id, node))) {
        QCOMPARE(node.id, QString());
        return;
    }
    KvPlanNode truth;
    Kv::jsonObjectToPlanNode(stored(nodeTarget(id)), truth);
    QCOMPARE(KvTest::difference(KvTest::dump(node), KvTest::dump(truth)), QString());
    m_cachedNodes.insert(id, KvTest::dump(node));
}

void FaultRoundsTest::renamePlan()
{
    if (m_cachedPlans.isEmpty())
        return;
    const QString id = m_cachedPlans.keys().at(number(m_cachedPlans.size()));
    const QString before = stored(planTarget(id)).value(QLatin1String("name")).toString();
    KvPlan plan;
    QVERIFY(data().getPlanFromCacheById(id, plan));
    plan.name = freshText();
    const QString name = plan.name;
    const bool succeeded = done(data().updatePlan(plan));
    const QString after = stored(planTarget(id)).value(QLatin1String("name")).toString();
    if (succeeded) {
        QCOMPARE(plan.name, name);
        QCOMPARE(after, name);
        m_cachedPlans.insert(id, name);
    } else {
        QVERIFY2(after == name || after == before, qPrintable(after)); // the answer alone may have been lost
    }
}

void FaultRoundsTest::remarkNode()
{
    if (m_cachedNodes.isEmpty())
        return;
    const QString id = m_cachedNodes.keys().at(number(m_cachedNodes.size()));
    const QJsonObject before = stored(nodeTarget(id));
    if (before.isEmpty() || !before.contains(QLatin1String("_id")))
        return; // deleted meanwhile; the cache keeps its copy
    KvPlanNode node;
    QVERIFY(data().getPlanNodeFromCacheById(id, node));
    node.remark = freshText();
    const QString remark = node.remark;
    const bool succeeded = done(data().updatePlanNode(node));
    const QString after = stored(nodeTarget(id)).value(QLatin1String("remark")).toString();
    if (succeeded) {
        QCOMPARE(after, remark);
        QCOMPARE(node.remark, remark);
        m_cachedNodes.insert(id, KvTest::dump(node));
    } else {
        QVERIFY(after == remark || after == before.value(QLatin1String("remark")).toString());
    }
}

void FaultRoundsTest::createNode()
{
    KvPlanNode node;
    node.planId = anyPlan();
    node.name = freshText();
    const QString name = node.name;
    if (!done(data().createPlanNode(node))) {
        QCOMPARE(node.id, QString());
        return;
    }
    QCOMPARE(node.name, name);
    QCOMPARE(stored(nodeTarget(node.id)).value(QLatin1String("name")).toString(), name);
    m_extraNodes.append(node.id);
    m_cachedNodes.insert(node.id, KvTest::dump(node));
}

void FaultRoundsTest::deleteNode()
{
    if (m_extraNodes.isEmpty())
        return;
    const QString id = m_extraNodes.takeFirst();
    if (done(data().deletePlanNodeById(id)))
        QCOMPARE(asked(nodeTarget(id)).status, 404);
}

void FaultRoundsTest::listPlans()
{
    QList<KvPlan> plans;
    const bool succeeded = done(data().getAllPlan(plans, false));
    m_cachedPlans.clear(); // also when the request fails
    m_cachedNodes.clear();
    if (!succeeded) {
        QVERIFY(plans.isEmpty());
        return;
    }
    QCOMPARE(plans.size(), m_plans.size());
    for (const KvPlan& plan : qAsConst(plans)) {
        QCOMPARE(plan.name, stored(planTarget(plan.id)).value(QLatin1String("name")).toString());
        m_cachedPlans.insert(plan.id, plan.name);
    }
}

void FaultRoundsTest::countPlans()
{
    KvPlanCondition condition;
    condition.allTime = true;
    int count = -1;
    const bool succeeded = done(data().getPlanRangeCount(condition, count));
    QCOMPARE(count, succeeded ? m_plans.size() : 0);
}

/// A batch is stored whole or not at all, and not told to have failed.
void FaultRoundsTest::saveNodes()
{
    if (m_cachedNodes.size() < 2)
        return;
    const QStringList ids{m_cachedNodes.firstKey(), m_cachedNodes.lastKey()};
    const QString name = freshText();
    QList<KvPlanNode> nodes;
    for (const QString& id : ids) {
        KvPlanNode node;
        QVERIFY(data().getPlanNodeFromCacheById(id, node));
        node.name = name;
        nodes.append(node);
    }
    data().savePlanNodes(QString(), nodes);
    QCOMPARE(m_reports.size(), 1);
    int changed = 0;
    for (const QString& id : ids)
        changed += stored(nodeTarget(id)).value(QLatin1String("name")).toString() == name ? 1 : 0;
    QVERIFY(changed == 0 || changed == ids.size());
    if (done(m_reports.last().category == KvNetworkReport::Ok))
        QCOMPARE(changed, ids.size());
}

void FaultRoundsTest::keepSetting()
{
    const QString text = freshText();
    const QJsonObject value{{QStringLiteral("value"), QJsonArray{text, 1}}};
    const QString target = QStringLiteral("/user-service/settings/columns");
    const QJsonObject before = stored(target);
    const bool succeeded = done(data().saveSetting(QStringLiteral("columns"), value));
    const QJsonObject after = stored(target);
    QVERIFY(after == value || (!succeeded && after == before));
}

void FaultRoundsTest::readSetting()
{
    QJsonObject read{{QStringLiteral("old"), 1}};
    const bool succeeded = done(data().loadSetting(QStringLiteral("columns"), read));
    const QJsonObject truth = stored(QStringLiteral("/user-service/settings/columns"));
    const QJsonValue value = truth.value(QLatin1String("value"));
    QCOMPARE(read, succeeded && truth.contains(QLatin1String("value"))
                       ? QJsonObject({{QStringLiteral("columns"), value}})
                       : QJsonObject());
}

/// Reads nothing from the service.
void FaultRoundsTest::checkCaches()
{
    const int exchanges = m_proxy->exchangeCount();
    for (const QString& id : qAsConst(m_plans))
        QCOMPARE(data().getPlanName(id), m_cachedPlans.value(id));
    for (auto cached = m_cachedNodes.constBegin(); cached != m_cachedNodes.constEnd(); ++cached) {
        KvPlanNode node;
        QVERIFY(data().getPlanNodeFromCacheById(cached.key(), node));
        QCOMPARE(KvTest::difference(KvTest::dump(node), *cached), QString());
    }
    QCOMPARE(m_proxy->exchangeCount(), exchanges);
}

QTEST_GUILESS_MAIN(FaultRoundsTest)
#include "FaultRoundsTest.moc"
