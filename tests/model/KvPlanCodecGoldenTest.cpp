// Kept pairs: what the service sends, the record it reads as, and what that record is written as.

#include "KvPlanRecordsDump.h"

#include <model/KvPlanCodec.h>

#include <QtCore/QDir>
#include <QtCore/QJsonArray>
#include <QtTest/QtTest>

#include <limits>
#include <random>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlanNode;

namespace {

QJsonObject kept(const QString& name, const char* part)
{
    return KvTest::readJsonFile(QStringLiteral(KV_TEST_DATA "/codec/") + name + QLatin1Char('.') +
                                QLatin1String(part) + QStringLiteral(".json"));
}

QJsonObject written(const KvPlanNode& node)
{
    QJsonObject json;
    Kv::planNodeToJsonObject(node, json, true);
    return json;
}

// What a service that took this node would send back: its own names and types where they differ.
QJsonObject sentBack(QJsonObject json)
{
    json.insert(QStringLiteral("entity"), json.take(QStringLiteral("links")));
    json.insert(QStringLiteral("displaySimulation"),
                json.value(QStringLiteral("displaySimulation")).toBool() ? 1 : 0);
    return json;
}

class Random
{
public:
    int upTo(int last) { return int(m_engine() % unsigned(last + 1)); }
    bool coin() { return upTo(1) == 1; }

    QString text()
    {
        const QStringList some{QString(),
                               QStringLiteral("p1"),
                               QStringLiteral("user-1"),
                               QStringLiteral("楼 🏗"),
                               QStringLiteral("a \"b\" \\ {c}\n"),
                               QString::number(m_engine())};
        return some.at(upTo(some.size() - 1));
    }
    int whole()
    {
        const int some[] = {-1, 0, 1, 100, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()};
        return coin() ? some[upTo(5)] : upTo(100000);
    }
    QStringList list()
    {
        QStringList texts;
        for (int i = upTo(3); i > 0; --i)
            texts.append(text());
        return texts;
    }
    QMap<QString, QStringList> map()
    {
        QMap<QString, QStringList> entries;
        for (int i = upTo(3); i > 0; --i)
            entries.insert(text(), list());
        return entries;
    }
    QDateTime date()
    {
        return upTo(3) == 0 ? QDateTime()
                            : QDateTime(QDate(2020, 1, 1).addDays(upTo(4000)),
                                        QTime(upTo(23), upTo(59), upTo(59), upTo(999)));
    }
    KvPlanPredecessor predecessor()
    {
        return {text(), text(), {upTo(1000) / 8.0 - 60, upTo(9)}, upTo(3), whole(), text(), whole(), whole()};
    }

private:
    std::mt19937 m_engine{20240315};
};

KvPlanNode someNode(Random& random)
{
    KvPlanNode node;
    for (QString KvPlanNode::*member :
         {&KvPlanNode::id, &KvPlanNode::category, &KvPlanNode::name, &KvPlanNode::guid, &KvPlanNode::planId,
          &KvPlanNode::projectId, &KvPlanNode::remark, &KvPlanNode::createdBy, &KvPlanNode::updatedBy})
        node.*member = random.text();
    for (int KvPlanNode::*member : {&KvPlanNode::planNodeId, &KvPlanNode::uniqueId, &KvPlanNode::parentTaskId,
                                    &KvPlanNode::entityHideType})
        node.*member = random.whole();
    for (QDateTime KvPlanNode::*member :
         {&KvPlanNode::startDate, &KvPlanNode::finishDate, &KvPlanNode::createdAt, &KvPlanNode::updatedAt,
          &KvPlanNode::actualStartDate, &KvPlanNode::actualFinishDate, &KvPlanNode::entityHideDate})
        node.*member = random.date();
    for (QStringList KvPlanNode::*member :
         {&KvPlanNode::userIds, &KvPlanNode::executeIds, &KvPlanNode::cooperateIds, &KvPlanNode::documentIds})
        node.*member = random.list();
    node.finishedPercentage = random.upTo(800) / 8.0;
    node.planWorkload = random.upTo(1000);
    node.actualWorkload = random.upTo(1000);
    node.dynamicEffect = random.upTo(5);
    node.isDistributed = random.coin();
    node.displaySimulation = random.coin();
    node.links = random.map();
    node.materialBills = random.map();
    for (int i = random.upTo(3); i > 0; --i)
        node.predecessors.append(random.predecessor());
    if (node.guid.isEmpty())
        node.guid = node.id; // as the reader leaves it
    return node;
}

} // namespace

class KvPlanCodecGoldenTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keptPair_data();
    void keptPair();
    void everyPairIsUsed();
    void writtenNodeComesBackTheSame();
    void unsetValuesComeBackAsZero();
    void writtenPlanComesBackTheSame();
    void writtenPlanAsItStandsLosesItsNodes();
};

void KvPlanCodecGoldenTest::keptPair_data()
{
    QTest::addColumn<bool>("isPlan");
    QTest::newRow("node") << false;
    QTest::newRow("empty-node") << false;
    QTest::newRow("plan") << true;
    QTest::newRow("empty-plan") << true;
}

void KvPlanCodecGoldenTest::keptPair()
{
    QFETCH(bool, isPlan);
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    const QJsonObject in = kept(name, "in");
    QJsonObject record;
    QJsonObject out;
    if (isPlan) {
        KvPlan plan;
        Kv::jsonObjectToPlan(in, plan);
        record = dump(plan);
        Kv::planToJsonObject(plan, out);
    } else {
        KvPlanNode node;
        Kv::jsonObjectToPlanNode(in, node);
        record = dump(node);
        out = written(node);
    }
    QCOMPARE(difference(record, kept(name, "record")), QString());
    QCOMPARE(difference(out, kept(name, "out")), QString());
}

void KvPlanCodecGoldenTest::everyPairIsUsed()
{
    const QStringList files = QDir(QStringLiteral(KV_TEST_DATA "/codec")).entryList(QDir::Files, QDir::Name);
    QStringList wanted;
    for (const char* name : {"empty-node", "empty-plan", "node", "plan"}) {
        for (const char* part : {".in.json", ".out.json", ".record.json"})
            wanted.append(QLatin1String(name) + QLatin1String(part));
    }
    QCOMPARE(files, wanted);
}

void KvPlanCodecGoldenTest::writtenNodeComesBackTheSame()
{
    Random random;
    for (int turn = 0; turn < 2000; ++turn) {
        const KvPlanNode node = someNode(random);
        const QJsonObject json = written(node);
        KvPlanNode again;
        Kv::jsonObjectToPlanNode(sentBack(json), again);
        QCOMPARE(difference(dump(again), dump(node)), QString());
        QCOMPARE(difference(written(again), json), QString());
    }
}

void KvPlanCodecGoldenTest::unsetValuesComeBackAsZero()
{
    KvPlanNode node;
    node.dynamicEffect = node.planWorkload = node.actualWorkload = -1;
    node.finishedPercentage = -1;
    KvPlanNode again;
    Kv::jsonObjectToPlanNode(sentBack(written(node)), again);
    QCOMPARE(again.dynamicEffect, 0);
    QCOMPARE(again.planWorkload, 0);
    QCOMPARE(again.actualWorkload, 0);
    QCOMPARE(again.finishedPercentage, 0.0);
}

void KvPlanCodecGoldenTest::writtenPlanComesBackTheSame()
{
    Random random;
    KvPlan plan;
    plan.category = random.text();
    plan.projectId = QStringLiteral("project");
    plan.name = QStringLiteral("name");
    plan.projectFileId = QStringLiteral("file");
    plan.isPublic = 2;
    plan.ranges = random.list();
    for (int i = 0; i < 50; ++i)
        plan.planNodes.append(someNode(random));

    QJsonObject json;
    Kv::planToJsonObject(plan, json);
    QJsonObject sent = json;
    QJsonArray tasks;
    const QJsonArray data = sent.take(QStringLiteral("projectData")).toArray();
    for (const QJsonValue node : data)
        tasks.append(sentBack(node.toObject()));
    sent.insert(QStringLiteral("tasks"), tasks);
    KvPlan again;
    Kv::jsonObjectToPlan(sent, again);
    QCOMPARE(difference(dump(again), dump(plan)), QString());
    QJsonObject jsonAgain;
    Kv::planToJsonObject(again, jsonAgain);
    QCOMPARE(difference(jsonAgain, json), QString());
}

// The asymmetry itself: without a service in between, nodes, links and the simulation flag do not come back.
void KvPlanCodecGoldenTest::writtenPlanAsItStandsLosesItsNodes()
{
    KvPlan plan;
    plan.planNodes = {fullPlanNode()};
    QJsonObject json;
    Kv::planToJsonObject(plan, json);
    KvPlan again;
    Kv::jsonObjectToPlan(json, again);
    QVERIFY(again.planNodes.isEmpty());

    KvPlanNode node = fullPlanNode();
    node.displaySimulation = true;
    KvPlanNode nodeAgain;
    Kv::jsonObjectToPlanNode(written(node), nodeAgain);
    QVERIFY(nodeAgain.links.isEmpty());
    QCOMPARE(nodeAgain.displaySimulation, false);
}

QTEST_APPLESS_MAIN(KvPlanCodecGoldenTest)
#include "KvPlanCodecGoldenTest.moc"
