// What the nodes of a list have in common is written once, and no node is written differently for it.

#include <model/KvEncodePool.h>
#include <model/KvPlanCodec.h>
#include <model/KvPlanDataUtils.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QTimeZone>
#include <QtTest/QtTest>

#include <random>

namespace {

QByteArray text(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QByteArray writtenAlone(const KvPlanNode& node)
{
    QJsonObject json;
    Kv::planNodeToJsonObject(node, json, true);
    return text(json);
}

QByteArray exchangedAlone(const KvPlanNode& node)
{
    QJsonObject json;
    KvPlanDataUtils::planNodeToJsonObjectMPXJ(node, json);
    return text(json);
}

// Few of each kind, so that they meet again, and among them those that are equal in part only: the same clock
// in other time specs, the same first entry of other lists.
class SomeValues
{
public:
    explicit SomeValues(unsigned seed)
        : m_random(seed)
    {
    }

    int number(int count) { return int(m_random() % unsigned(count)); }

    QString text()
    {
        const QString texts[] = {QString(),           QLatin1String(""),    QStringLiteral("a"),
                                 QStringLiteral("b"), QStringLiteral("墙"), QString::number(number(3000))};
        return texts[number(6)];
    }

    QStringList list()
    {
        const QStringList lists[] = {
            {},       {QStringLiteral("a")}, {QStringLiteral("a"), QStringLiteral("b")}, {QString()},
            {text()}, {text(), text()}};
        return lists[number(6)];
    }

    QDateTime date()
    {
        const QDate day = QDate(2024, 3, 15).addDays(number(3) * 600);
        const QTime time = QTime(8, 0).addMSecs(number(2) * 500);
        const QDateTime dates[] = {
            QDateTime(),
            QDateTime(day, time),
            QDateTime(day, time, Qt::UTC),
            QDateTime(day, time, Qt::OffsetFromUTC, 3600),
            QDateTime(day, time, QTimeZone("America/New_York")),
            QDateTime(day, QTime()),
            QDateTime(QDate(-4713, 1, 1).addDays(number(2)), QTime(0, 0)),
            QDateTime(QDate(), time),
        };
        return dates[number(8)];
    }

    Kv::KvTextLists lists()
    {
        Kv::KvTextLists lists;
        for (int left = number(3); left > 0; --left)
            lists.insert(text(), list());
        return lists;
    }

    KvDuration duration()
    {
        const double values[] = {0, -0.0, 1, -2.5, qQNaN(), qInf()};
        return {values[number(6)], number(3)};
    }

private:
    std::mt19937 m_random;
};

// One that keeps most of the node before, as those of a plan do.
void change(KvPlanNode& node, SomeValues& some)
{
    for (QString KvPlanNode::*member :
         {&KvPlanNode::id, &KvPlanNode::guid, &KvPlanNode::name, &KvPlanNode::category, &KvPlanNode::planId,
          &KvPlanNode::projectId, &KvPlanNode::remark, &KvPlanNode::createdBy, &KvPlanNode::updatedBy,
          &KvPlanNode::durationText, &KvPlanNode::notes}) {
        if (some.number(8) == 0)
            node.*member = some.text();
    }
    for (QDateTime KvPlanNode::*member :
         {&KvPlanNode::startDate, &KvPlanNode::finishDate, &KvPlanNode::actualStartDate,
          &KvPlanNode::actualFinishDate, &KvPlanNode::createdAt, &KvPlanNode::updatedAt,
          &KvPlanNode::entityHideDate}) {
        if (some.number(8) == 0)
            node.*member = some.date();
    }
    for (QStringList KvPlanNode::*member : {&KvPlanNode::userIds, &KvPlanNode::executeIds,
                                            &KvPlanNode::cooperateIds, &KvPlanNode::documentIds}) {
        if (some.number(4) == 0)
            node.*member = some.list();
    }
    if (some.number(4) == 0)
        node.materialBills = some.lists();
    if (some.number(4) == 0)
        node.links = some.lists();
    node.duration = some.duration();
    node.finishSlack = some.duration();
    node.predecessors.clear();
    for (int left = some.number(3); left > 0; --left) {
        KvPlanPredecessor link;
        link.lag = some.duration();
        link.sourcePlanNodeName = some.text();
        node.predecessors.append(link);
    }
    node.planNodeId = some.number(100);
    node.dynamicEffect = some.number(3) - 1;
    node.actualWorkload = some.number(2) - 1;
}

} // namespace

class KvPlanEncodePoolTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nodesOfAListAsAlone();
    void sameClockOfAnotherTimeZone();
    void aChangedObjectLeavesTheOthers();
    void commonListsAreKeptOnce();
};

void KvPlanEncodePoolTest::nodesOfAListAsAlone()
{
    SomeValues some(20260321);
    Kv::KvEncodePool pool;
    KvPlan plan;
    KvPlanNode node;
    for (int turn = 0; turn < 3000; ++turn) {
        change(node, some);
        plan.planNodes.append(node);
        QCOMPARE(text(Kv::planNodeToJsonObject(node, true, pool)), writtenAlone(node));
    }
    QJsonObject exchange;
    KvPlanDataUtils::planToJsonObjectMPXJ(plan, exchange);
    const QJsonArray tasks = exchange.value(QLatin1String("AllPlanNodes")).toArray();
    QCOMPARE(tasks.size(), plan.planNodes.size());
    for (int i = 0; i < tasks.size(); ++i)
        QCOMPARE(text(tasks.at(i).toObject()), exchangedAlone(plan.planNodes.at(i)));
}

// The exchange format tells a time zone apart, the service's form does not.
void KvPlanEncodePoolTest::sameClockOfAnotherTimeZone()
{
    const QDate day(2024, 3, 15);
    const QTime morning(8, 0);
    KvPlan plan;
    for (const QDateTime& start :
         {QDateTime(day, morning), QDateTime(day, morning, Qt::UTC),
          QDateTime(day, morning, Qt::OffsetFromUTC, -3600), QDateTime(day, morning)}) {
        KvPlanNode node;
        node.startDate = start;
        plan.planNodes.append(node);
    }
    QJsonObject json;
    KvPlanDataUtils::planToJsonObjectMPXJ(plan, json);
    Kv::planToJsonObject(plan, json);
    QStringList starts;
    for (const QJsonValue task : json.value(QLatin1String("AllPlanNodes")).toArray())
        starts.append(task[QLatin1String("Start")].toString());
    QCOMPARE(
        starts,
        (QStringList{QStringLiteral("2024-03-15T08:00:00"), QStringLiteral("2024-03-15T08:00:00Z"),
                     QStringLiteral("2024-03-15T08:00:00-01:00"), QStringLiteral("2024-03-15T08:00:00")}));
    for (const QJsonValue node : json.value(QLatin1String("projectData")).toArray())
        QCOMPARE(node[QLatin1String("startDate")].toString(), QStringLiteral("2024-03-15T08:00:00.000"));
}

void KvPlanEncodePoolTest::aChangedObjectLeavesTheOthers()
{
    KvPlanNode node;
    node.category = QStringLiteral("construction");
    node.userIds = QStringList{QStringLiteral("a")};
    node.predecessors.append(KvPlanPredecessor());
    Kv::KvEncodePool pool;
    QJsonObject first = Kv::planNodeToJsonObject(node, true, pool);
    const QJsonObject second = Kv::planNodeToJsonObject(node, true, pool);
    first.insert(QStringLiteral("category"), QStringLiteral("other"));
    QJsonArray users = first.value(QLatin1String("userIds")).toArray();
    users.append(QStringLiteral("b"));
    first.insert(QStringLiteral("userIds"), users);
    QCOMPARE(text(second), writtenAlone(node));
    QCOMPARE(text(Kv::planNodeToJsonObject(node, true, pool)), writtenAlone(node));
}

// An equal list is the list that is there already: what was written of it last time is taken as it stands.
void KvPlanEncodePoolTest::commonListsAreKeptOnce()
{
    Kv::KvEncodePool pool;
    int made = 0;
    const auto make = [&](const QStringList& ids) {
        ++made;
        return QJsonArray::fromStringList(ids);
    };
    const QStringList ids{QStringLiteral("a"), QStringLiteral("b")};
    for (int turn = 0; turn < 3; ++turn)
        QCOMPARE(pool.lists.of(ids, make).toArray(), QJsonArray::fromStringList(ids));
    QCOMPARE(made, 1);
    const QStringList others{QStringLiteral("a"), QStringLiteral("c")}; // to the same place
    QCOMPARE(pool.lists.of(others, make).toArray(), QJsonArray::fromStringList(others));
    QCOMPARE(pool.lists.of(ids, make).toArray(), QJsonArray::fromStringList(ids));
    QCOMPARE(made, 3);
}

QTEST_APPLESS_MAIN(KvPlanEncodePoolTest)
#include "KvPlanEncodePoolTest.moc"
