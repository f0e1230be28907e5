// Two hosts that save different fields of the same 1,000 nodes at once: nothing is lost. Once as two facades
// of one program, whose requests meet on the service, and once as two programs.

#include "FacadeCopies.h"

#include <plandata/KvPlanData.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>

#include <ServiceProcess.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QProcess>
#include <QtCore/QTimer>
#include <QtTest/QtTest>

#include <algorithm>

namespace {

constexpr int size = 1000;
constexpr int rounds = 3;
const QString project = QStringLiteral("two-hosts");

using NodeList = QList<KvPlanNode>;

// The fields of one host, and none of the other.
void edit(KvPlanNode& node, int host, int round)
{
    if (host == 0) {
        node.name = QStringLiteral("round %1 of %2").arg(round).arg(node.uniqueId);
        node.planWorkload = round * 10000 + node.uniqueId;
        node.userIds = QStringList{QStringLiteral("u%1").arg(round), QStringLiteral("first")};
    } else {
        node.actualWorkload = round * 10000 + node.uniqueId;
        node.startDate = QDateTime(QDate(2026, 1, 1).addDays(round), QTime(8, 0)).addSecs(node.uniqueId);
        node.links = {{QStringLiteral("model"), {QString::number(round), QString::number(node.uniqueId)}}};
    }
}

bool isEdited(const KvPlanNode& node, int host, int round)
{
    KvPlanNode wanted = node;
    edit(wanted, host, round);
    return node.name == wanted.name && node.planWorkload == wanted.planWorkload &&
           node.userIds == wanted.userIds && node.actualWorkload == wanted.actualWorkload &&
           node.startDate == wanted.startDate && node.links == wanted.links;
}

int countEdited(const NodeList& nodes, int host, int round)
{
    return static_cast<int>(std::count_if(
        nodes.cbegin(), nodes.cend(), [=](const KvPlanNode& node) { return isEdited(node, host, round); }));
}

// The second program: reads the plan, then saves its fields again and again while the other one does.
int runHost(const QStringList& arguments)
{
    KvBaseApi::GetInstance().setBaseApi(arguments.at(2));
    GetSoftCache()->setCurrentProjectId(project);
    const QString planId = arguments.at(3);
    const int host = arguments.at(4).toInt();
    KvPlanData& data = *KvPlanData::instance();
    for (int round = 1; round <= rounds; ++round) {
        NodeList nodes;
        data.getPlanNodesByPlanId(planId, nodes);
        if (nodes.size() != size)
            return 1;
        for (KvPlanNode& node : nodes)
            edit(node, host, round);
        if (!data.hasChanged(nodes))
            return 2;
        NodeList sent = nodes;
        if (!data.updatePlanNodes(sent))
            return 3;
    }
    return 0;
}

} // namespace

class KvTwoHostsServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void twoFacades();
    void twoFacadesOneNode();
    void twoPrograms();

private:
    static KvPlanData& data() { return *KvPlanData::instance(); }
    NodeList stored() const
    {
        NodeList nodes;
        data().getPlanNodesByPlanId(m_planId, nodes);
        return nodes;
    }

    KvTest::ServiceProcess m_service;
    QString m_planId;
};

void KvTwoHostsServiceTest::initTestCase()
{
    QVERIFY2(m_service.start({QStringLiteral("--create")}), qPrintable(m_service.failure()));
    KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl());
    GetSoftCache()->setCurrentProjectId(project);
}

void KvTwoHostsServiceTest::init()
{
    data().clear();
    KvPlan plan;
    plan.name = QString::fromLatin1(QTest::currentTestFunction());
    QVERIFY(data().createPlan(plan));
    m_planId = plan.id;
    NodeList nodes;
    for (int i = 1; i <= size; ++i) {
        nodes.append(KvPlanNode());
        nodes.last().planNodeId = nodes.last().uniqueId = i;
    }
    QVERIFY(data().createPlanNodes(m_planId, nodes));
    QCOMPARE(stored().size(), size);
}

void KvTwoHostsServiceTest::twoFacades()
{
    KvPlanData* const hosts[] = {&data(), copyOf(data())};
    for (int round = 1; round <= rounds; ++round) {
        NodeList edited[2];
        for (int host = 0; host < 2; ++host) {
            hosts[host]->getPlanNodesByPlanId(m_planId, edited[host]);
            QCOMPARE(edited[host].size(), size);
            for (KvPlanNode& node : edited[host])
                edit(node, host, round);
        }
        // The second saves while the first one waits: both requests are on their way at once.
        bool isWaiting = false;
        bool met = false;
        QTimer::singleShot(0, this, [&] {
            met = isWaiting;
            hosts[1]->savePlanNodes(m_planId, edited[1]);
        });
        isWaiting = true;
        hosts[0]->savePlanNodes(m_planId, edited[0]);
        isWaiting = false;
        QVERIFY(met);
        const NodeList nodes = stored();
        QCOMPARE(nodes.size(), size);
        QCOMPARE(countEdited(nodes, 0, round), size);
        QCOMPARE(countEdited(nodes, 1, round), size);
    }
}

// Each with a view of the node that the other one has left behind.
void KvTwoHostsServiceTest::twoFacadesOneNode()
{
    KvPlanData& second = *copyOf(data());
    KvPlanNode mine = stored().first();
    KvPlanNode theirs = mine;
    for (int round = 1; round <= rounds; ++round) {
        edit(mine, 0, round);
        QVERIFY(data().updatePlanNode(mine));
        edit(theirs, 1, round);
        QVERIFY(second.updatePlanNode(theirs));
        QVERIFY(isEdited(theirs, 0, round) && isEdited(theirs, 1, round)); // the reply tells both
    }
    KvPlanNode read;
    QVERIFY(data().getPlanNodeById(mine.id, read));
    QVERIFY(isEdited(read, 0, rounds) && isEdited(read, 1, rounds));
}

void KvTwoHostsServiceTest::twoPrograms()
{
    QProcess hosts[2];
    for (int host = 0; host < 2; ++host) {
        hosts[host].setProcessChannelMode(QProcess::ForwardedChannels);
        hosts[host].start(QCoreApplication::applicationFilePath(),
                          {QStringLiteral("--host"), m_service.baseUrl(), m_planId, QString::number(host)});
    }
    for (QProcess& host : hosts) {
        QVERIFY(host.waitForFinished(60000));
        QCOMPARE(host.exitStatus(), QProcess::NormalExit);
        QCOMPARE(host.exitCode(), 0);
    }
    const NodeList nodes = stored();
    QCOMPARE(nodes.size(), size);
    QCOMPARE(countEdited(nodes, 0, rounds), size);
    QCOMPARE(countEdited(nodes, 1, rounds), size);
}

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == QLatin1String("--host"))
        return runHost(arguments);
    KvTwoHostsServiceTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "KvTwoHostsServiceTest.moc"
