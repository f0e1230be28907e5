// A host's day with plans on the real service: create, list, filter, page, change, copy, delete.

#include <plandata/KvPlanData.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvSoftBase/KvSoftBase.h>

#include <model/KvPlanRecordsDump.h>

#include <RawHttp.h>
#include <ServiceProcess.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

using KvTest::difference;
using KvTest::dump;

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

KvPlan planNamed(const QString& name)
{
    KvPlan plan;
    plan.name = name;
    return plan;
}

QStringList namesOf(const QList<KvPlan>& plans)
{
    QStringList names;
    for (const KvPlan& plan : plans)
        names.append(plan.name);
    return names;
}

KvPlanCondition named(const QString& pattern)
{
    KvPlanCondition condition;
    condition.allTime = true;
    condition.name = pattern;
    return condition;
}

} // namespace

class KvPlanOperationsServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void createdPlanComesBackWhole();
    void listIsInNaturalOrder();
    void filtersAndPages();
    void filterByDates();
    void strangeNames_data();
    void strangeNames();
    void strangeIdentifiersAreFoundAgain_data();
    void strangeIdentifiersAreFoundAgain();
    void twoHostsKeepTheirChanges();
    void changedNodesKeepTheirIds();
    void copyAndDelete();

private:
    KvPlanData& data() { return *KvPlanData::instance(); }

    KvTest::ServiceProcess m_service;
};

void KvPlanOperationsServiceTest::initTestCase()
{
    QVERIFY2(m_service.start({QStringLiteral("--create")}), qPrintable(m_service.failure()));
    KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl());
}

void KvPlanOperationsServiceTest::init()
{
    // Every test has a project of its own.
    GetSoftCache()->setCurrentProjectId(QString::fromLatin1(QTest::currentTestFunction()));
    data().clear();
}

void KvPlanOperationsServiceTest::createdPlanComesBackWhole()
{
    KvPlan plan = planNamed(QStringLiteral("Tower"));
    plan.category = QStringLiteral("construction");
    plan.projectFileId = QStringLiteral("file");
    plan.ranges = QStringList{QStringLiteral("r1"), QStringLiteral("r2")};
    KvPlanNode node;
    node.name = text("第1层 Floor 1");
    node.planNodeId = 1;
    node.uniqueId = 11;
    node.startDate = QDateTime(QDate(2026, 3, 2), QTime(8, 0));
    node.finishDate = QDateTime(QDate(2026, 3, 9), QTime(17, 0));
    node.dynamicEffect = -1;
    node.planWorkload = -1;
    node.finishedPercentage = 100.0 / 3;
    node.displaySimulation = true;
    node.links.insert(QStringLiteral("model"), {QStringLiteral("e1"), QStringLiteral("e2")});
    node.userIds = QStringList{QStringLiteral("ann")};
    node.materialBills.insert(QStringLiteral("bill"), {QStringLiteral("ordered")});
    KvPlanPredecessor link;
    link.sourcePlanNodeUniqueId = 11;
    link.targetPlanNodeUniqueId = QStringLiteral("12");
    link.lag.value = -1.5;
    link.type = 1;
    KvPlanNode next = node;
    next.planNodeId = 2;
    next.uniqueId = 12;
    next.parentTaskId = 11;
    next.predecessors.append(link);
    plan.planNodes = QList<KvPlanNode>{node, next};
    const KvPlan sent = plan;

    QVERIFY(data().createPlan(plan));
    QVERIFY(!plan.id.isEmpty());
    QVERIFY(plan.createdAt.isValid());
    QCOMPARE(plan.projectId, QStringLiteral("createdPlanComesBackWhole"));
    QCOMPARE(plan.isPublic, sent.isPublic);
    QCOMPARE(plan.planNodes.size(), 2);
    QVERIFY(plan.planNodes.first().summary && !plan.planNodes.last().summary);
    for (int i = 0; i < 2; ++i) {
        KvPlanNode back = plan.planNodes.at(i);
        QCOMPARE(back.planId, plan.id);
        QCOMPARE(back.guid, back.id);
        QCOMPARE(back.planName, plan.name);
        // Beside what the service gives a node, it is the one that was sent.
        KvPlanNode wanted = sent.planNodes.at(i);
        wanted.id = back.id;
        wanted.guid = back.guid;
        wanted.planId = back.planId;
        wanted.planName = back.planName;
        wanted.projectId = plan.projectId;
        wanted.category = plan.category;
        wanted.createdAt = wanted.updatedAt = back.createdAt;
        wanted.summary = back.summary;
        QCOMPARE(difference(dump(back), dump(wanted)), QString());
    }
    KvPlan read;
    QVERIFY(data().getPlanById(plan.id, read));
    QCOMPARE(difference(dump(read), dump(plan)), QString());
}

void KvPlanOperationsServiceTest::listIsInNaturalOrder()
{
    for (const char* name : {"Plan 2", "plan 10", "第10层", "Plan 1", "第2层"}) {
        KvPlan plan = planNamed(text(name));
        QVERIFY(data().createPlan(plan));
    }
    QList<KvPlan> plans;
    QVERIFY(data().getAllPlan(plans, true));
    const QStringList names = namesOf(plans);
    QCOMPARE(names.filter(QStringLiteral("lan")),
             QStringList({QStringLiteral("Plan 1"), QStringLiteral("Plan 2"), QStringLiteral("plan 10")}));
    QCOMPARE(names.filter(text("层")), QStringList({text("第2层"), text("第10层")}));
    QCOMPARE(data().getAllPlanNames().size(), 5);
}

void KvPlanOperationsServiceTest::filtersAndPages()
{
    for (int i = 0; i < 7; ++i) {
        KvPlan plan = planNamed(QStringLiteral("Tower %1").arg(i));
        plan.category = QLatin1String(i % 2 == 0 ? "even & more" : "odd");
        QVERIFY(data().createPlan(plan));
    }
    int count = -1;
    QVERIFY(data().getPlanRangeCount(named(QString()), count));
    QCOMPARE(count, 7);
    QVERIFY(data().getPlanRangeCount(named(QStringLiteral("^tower [2-4]$")), count));
    QCOMPARE(count, 3);
    QList<KvPlan> page;
    QVERIFY(data().getPlanRangeData(named(QStringLiteral("tower")), 2, 3, page));
    QCOMPARE(page.size(), 3);
    QList<KvPlan> rest;
    QVERIFY(data().getPlanRangeData(named(QStringLiteral("tower")), 5, 3, rest));
    QCOMPARE(rest.size(), 2);
    KvPlanCondition odd = named(QString());
    odd.category = QStringLiteral("odd");
    QVERIFY(data().getPlanRangeCount(odd, count));
    QCOMPARE(count, 3);
    // A pattern that is none is the service's refusal, and the list stays as it was.
    QVERIFY(!data().getPlanRangeCount(named(QStringLiteral("(")), count));
    QCOMPARE(count, 0);
}

void KvPlanOperationsServiceTest::filterByDates()
{
    KvPlan plan = planNamed(QStringLiteral("today"));
    QVERIFY(data().createPlan(plan));
    const QDate today = plan.createdAt.date();
    const auto countFrom = [&](const QDate& first, const QDate& last) {
        KvPlanCondition condition;
        condition.startDate = first.startOfDay();
        condition.endDate = last.startOfDay();
        int count = -1;
        return data().getPlanRangeCount(condition, count) ? count : -1;
    };
    QCOMPARE(countFrom(today, today), 1);
    QCOMPARE(countFrom(today.addDays(-9), today.addDays(-1)), 0);
    QCOMPARE(countFrom(today.addDays(1), today.addDays(9)), 0);
}

void KvPlanOperationsServiceTest::strangeNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("pattern");
    QTest::newRow("quotes") << text("Tower \"A\" 'b'") << text("\"A\" 'b'$");
    QTest::newRow("what URLs cut at") << text("a&b=c%20#d+e/f") << text("^a&b=c%20#d[+]e/f$");
    QTest::newRow("lines") << text("one\ntwo") << text("one\ntwo");
    QTest::newRow("emoji") << text("🏗️ 第2层") << text("🏗.*第2层");
    QTest::newRow("10,000 characters") << text("塔").repeated(10000) << text("塔").repeated(10000);
}

void KvPlanOperationsServiceTest::strangeNames()
{
    QFETCH(QString, name);
    QFETCH(QString, pattern);
    KvPlan plan = planNamed(name);
    QVERIFY(data().createPlan(plan));
    QCOMPARE(plan.name, name);
    QList<KvPlan> found;
    QVERIFY(data().getPlanRangeData(named(pattern), 0, 10, found));
    QCOMPARE(namesOf(found), QStringList{name});
    QVERIFY(data().deletePlan(plan.id));
}

void KvPlanOperationsServiceTest::strangeIdentifiersAreFoundAgain_data()
{
    QTest::addColumn<QString>("id");
    QTest::newRow("space") << "a b";
    QTest::newRow("hash") << "a#b";
    QTest::newRow("percent") << "100%";
    QTest::newRow("plus") << "a+b";
    QTest::newRow("quotes") << "\"a\" 'b'";
    QTest::newRow("braces") << "{a}[b]";
    QTest::newRow("backslash") << "a\\b";
    QTest::newRow("ampersand and equals") << "a&b=c";
    QTest::newRow("Chinese") << text("三层");
    QTest::newRow("emoji") << text("🏗");
    QTest::newRow("database text") << "' or '1'='1";
}

// A node keeps the identifier that its host gave it; whatever the way did to it, another would be found, or
// none.
void KvPlanOperationsServiceTest::strangeIdentifiersAreFoundAgain()
{
    QFETCH(QString, id);
    KvPlan plan = planNamed(text("一"));
    KvPlanNode node;
    node.id = id;
    node.name = QString::fromLatin1(QTest::currentDataTag());
    plan.planNodes.append(node);
    QVERIFY(data().createPlan(plan));
    QCOMPARE(plan.planNodes.first().id, id);

    KvPlanNode found;
    QVERIFY(data().getPlanNodeFromCacheById(id, found));
    QCOMPARE(found.id, id);
    QCOMPARE(found.name, node.name);
    QCOMPARE(found.planId, plan.id);
}

void KvPlanOperationsServiceTest::twoHostsKeepTheirChanges()
{
    KvPlan plan = planNamed(QStringLiteral("start"));
    QVERIFY(data().createPlan(plan));
    const auto otherHost = [&](const QByteArray& changes) {
        return KvTest::RawHttp(m_service.port())
            .request("PUT", "/task-service/plans/" + plan.id.toLatin1(), changes)
            .status;
    };
    QCOMPARE(otherHost("{\"projectFileId\":\"theirs\"}"), 200);
    plan.name = QStringLiteral("ours");
    QVERIFY(data().updatePlan(plan));
    QCOMPARE(plan.name, QStringLiteral("ours"));
    QCOMPARE(plan.projectFileId, QStringLiteral("theirs"));
    // On the same field the later one wins, and nothing else is touched.
    QCOMPARE(otherHost("{\"name\":\"theirs\"}"), 200);
    plan.name = QStringLiteral("ours, later");
    QVERIFY(data().updatePlan(plan));
    QCOMPARE(plan.name, QStringLiteral("ours, later"));
    QCOMPARE(plan.projectFileId, QStringLiteral("theirs"));
    QVERIFY(plan.updatedAt >= plan.createdAt);
}

void KvPlanOperationsServiceTest::changedNodesKeepTheirIds()
{
    KvPlan plan = planNamed(QStringLiteral("nodes"));
    for (int i = 1; i <= 3; ++i) {
        KvPlanNode node;
        node.name = QStringLiteral("task %1").arg(i);
        node.planNodeId = node.uniqueId = i;
        plan.planNodes.append(node);
    }
    QVERIFY(data().createPlan(plan));
    const KvPlan before = plan;
    plan.planNodes[1].name = QStringLiteral("renamed");
    plan.planNodes.removeLast();
    QVERIFY(data().updatePlan(plan));
    QCOMPARE(plan.planNodes.size(), 2);
    QCOMPARE(difference(dump(plan.planNodes.first()), dump(before.planNodes.first())), QString());
    QCOMPARE(plan.planNodes.last().name, QStringLiteral("renamed"));
    QCOMPARE(plan.planNodes.last().id, before.planNodes.at(1).id);
}

void KvPlanOperationsServiceTest::copyAndDelete()
{
    KvPlan plan = planNamed(QStringLiteral("Tower"));
    plan.planNodes.append(KvPlanNode());
    QVERIFY(data().createPlan(plan));
    KvPlan copy;
    QVERIFY(data().copyPlanById(plan.id, copy));
    QCOMPARE(copy.name, QStringLiteral("Tower (2)"));
    QVERIFY(!copy.id.isEmpty() && copy.id != plan.id);
    QCOMPARE(copy.planNodes.size(), 1);
    QVERIFY(copy.planNodes.first().id != plan.planNodes.first().id);
    QVERIFY(data().deletePlan(plan.id));
    QVERIFY(!data().deletePlan(plan.id));
    QList<KvPlan> left;
    QVERIFY(data().getAllPlan(left, false));
    QCOMPARE(namesOf(left), QStringList{QStringLiteral("Tower (2)")});
}

QTEST_GUILESS_MAIN(KvPlanOperationsServiceTest)
#include "KvPlanOperationsServiceTest.moc"
