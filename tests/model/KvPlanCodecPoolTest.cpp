// Sharing repeated values saves memory and never changes what is read.

#include "KvPlanRecordsDump.h"

#include <model/KvDecodePool.h>
#include <model/KvPlanCodec.h>

#include <QtCore/QJsonArray>
#include <QtTest/QtTest>

#include <random>

using KvTest::difference;
using KvTest::dump;

namespace {

// Any value at all, of the kinds that repeat and of those that do not.
QJsonValue someValue(std::mt19937& random)
{
    const auto upTo = [&](unsigned last) {
        return unsigned(random()) % (last + 1);
    };
    switch (upTo(11)) {
    case 0:
        return QJsonValue::Null;
    case 1:
        return upTo(1) == 1;
    case 2:
        return int(upTo(5)) - 1;
    case 3:
        return upTo(1000) / 8.0;
    case 4:
        return QString(QLatin1String(""));
    case 5:
        return QStringLiteral("user-%1").arg(upTo(9));
    case 6:
        return QString::number(random());
    case 7:
    case 8:
        return QStringLiteral("2024-0%1-%2T02:30:00.000").arg(upTo(8) + 1).arg(upTo(18) + 10);
    case 9:
        return QJsonArray{QStringLiteral("user-%1").arg(upTo(3)), QStringLiteral("user-%1").arg(upTo(3))};
    case 10:
        return upTo(1) == 1 ? QJsonArray{QJsonValue::Null} : QJsonArray{QString(QLatin1String(""))};
    default:
        return QJsonObject{{QStringLiteral("rId"), QStringLiteral("user-1")}};
    }
}

QJsonObject someNodeJson(const QStringList& keys, std::mt19937& random)
{
    QJsonObject json;
    for (const QString& key : keys) {
        if (random() % 8 != 0)
            json.insert(key, someValue(random));
    }
    if (random() % 2 != 0) {
        json.insert(QStringLiteral("materialBills"),
                    QJsonArray{QJsonObject{{QStringLiteral("rId"), someValue(random)},
                                           {QStringLiteral("statusIds"), someValue(random)}}});
    }
    return json;
}

// Finer than comparing values: a null text is not an empty one, and a date-time keeps its time spec.
struct Fineness
{
    const KvPlanNode& node;
    QString text;

    void of(const QString& value) { text += value.isNull() ? QLatin1Char('0') : QLatin1Char('.'); }
    void of(const QStringList& value)
    {
        for (const QString& element : value)
            of(element);
    }
    void of(const QDateTime& value)
    {
        text += QStringLiteral("%1/%2/%3")
                    .arg(int(value.timeSpec()))
                    .arg(value.offsetFromUtc())
                    .arg(value.isValid() ? value.toMSecsSinceEpoch() : 0);
    }
    template<class Other>
    void of(const Other&)
    {
    }

    template<class Field>
    void operator()(const char*, Field KvPlanNode::*member)
    {
        of(node.*member);
    }
};

QString fineness(const KvPlanNode& node)
{
    Fineness fine{node, {}};
    KvTest::visitPlanNodeFields(fine);
    return fine.text;
}

} // namespace

class KvPlanCodecPoolTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pooledReadsAsUnpooled();
    void manyDifferentValues();
    void repeatedTextIsShared_data();
    void repeatedTextIsShared();
    void textsThatDifferInOneCharacterAreKeptSideBySide();
    void idsOfOneKindSpreadOverThePool_data();
    void idsOfOneKindSpreadOverThePool();
    void repeatedListIsShared();
    void repeatedBillStatesAreShared();
    void repeatedBillsAndModelIdsAreShared();
    void linksOfANodeShareItsNumber();
    void sharedTextIsStillOnesOwn();
    void poolsDoNotKnowEachOther();
};

void KvPlanCodecPoolTest::pooledReadsAsUnpooled()
{
    const QStringList keys = KvTest::readJsonFile(QStringLiteral(KV_TEST_DATA "/codec/node.in.json")).keys();
    QVERIFY(keys.size() >= 37);
    std::mt19937 random(20240315);
    Kv::KvDecodePool pool;
    for (int turn = 0; turn < 4000; ++turn) {
        const QJsonObject json = someNodeJson(keys, random);
        KvPlanNode pooled;
        Kv::jsonObjectToPlanNode(json, pooled, pool);
        KvPlanNode plain;
        Kv::jsonObjectToPlanNode(json, plain);
        QCOMPARE(difference(dump(pooled), dump(plain)), QString());
        QCOMPARE(fineness(pooled), fineness(plain));
    }
}

// More different values than any pool would keep.
void KvPlanCodecPoolTest::manyDifferentValues()
{
    const QDate day(2000, 1, 1);
    const auto text = [](int i) {
        return QStringLiteral("text %1").arg(i % 20000);
    };
    const auto date = [&](int i) {
        return day.addDays(i % 20000);
    };
    QJsonArray tasks;
    for (int i = 0; i < 40000; ++i) {
        tasks.append(QJsonObject{{QStringLiteral("planId"), text(i)},
                                 {QStringLiteral("userIds"), QJsonArray{text(i)}},
                                 {QStringLiteral("executeIds"), QJsonArray{text(i), text(i + 1)}},
                                 {QStringLiteral("startDate"), date(i).toString(Qt::ISODate)}});
    }
    KvPlan plan;
    Kv::jsonObjectToPlan({{QStringLiteral("tasks"), tasks}}, plan);
    QCOMPARE(plan.planNodes.size(), 40000);
    for (int i = 0; i < 40000; ++i) {
        const KvPlanNode& node = plan.planNodes.at(i);
        QCOMPARE(node.planId, text(i));
        QCOMPARE(node.userIds, QStringList{text(i)});
        QCOMPARE(node.executeIds, (QStringList{text(i), text(i + 1)}));
        QCOMPARE(node.startDate.date(), date(i));
    }
}

void KvPlanCodecPoolTest::repeatedTextIsShared_data()
{
    QTest::addColumn<QString>("key");
    for (const char* key : {"category", "planId", "planName", "projectId", "createdBy", "updatedBy"})
        QTest::newRow(key) << QString::fromLatin1(key);
}

void KvPlanCodecPoolTest::repeatedTextIsShared()
{
    QFETCH(QString, key);
    QJsonArray tasks;
    for (int i = 0; i < 3; ++i)
        tasks.append(QJsonObject{{key, QStringLiteral("计划 plan 7")}});
    KvPlan plan;
    Kv::jsonObjectToPlan({{QStringLiteral("tasks"), tasks}}, plan);
    bool found = false;
    KvTest::visitPlanNodeFields([&](const char* name, auto member) {
        if constexpr (std::is_same_v<decltype(member), QString KvPlanNode::*>) {
            if (key == QLatin1String(name)) {
                found = true;
                QCOMPARE(plan.planNodes.at(0).*member, QStringLiteral("计划 plan 7"));
                QVERIFY((plan.planNodes.at(0).*member).constData() ==
                        (plan.planNodes.at(2).*member).constData());
            }
        }
    });
    QVERIFY(found);
}

// None takes the place of the other, wherever in the text the character stands.
void KvPlanCodecPoolTest::textsThatDifferInOneCharacterAreKeptSideBySide()
{
    const auto copyOf = [](const QString& text) {
        return QString(text.constData(), text.size());
    };
    Kv::KvDecodePool pool(2048);
    for (int length = 1; length <= 9; ++length) {
        for (int at = 0; at < length; ++at) {
            const QString one = pool.shared(QString(length, QLatin1Char('x')));
            QString other = copyOf(one);
            other[at] = QLatin1Char('y');
            pool.shared(other);
            QVERIFY(pool.shared(copyOf(one)).constData() == one.constData());
            QVERIFY(pool.shared(copyOf(other)).constData() == other.constData());
        }
    }
}

void KvPlanCodecPoolTest::idsOfOneKindSpreadOverThePool_data()
{
    QTest::addColumn<QString>("form");
    QTest::newRow("24 hexadecimal digits") << "65f1c0ffee00112233%1";
    QTest::newRow("a GUID") << "6d1f0a52-90a0-4d3e-8f57-3b1f5d%1";
    QTest::newRow("numbered names") << "user-%1";
    QTest::newRow("numbers") << "%1";
}

// Of a thousand that come again and again, as a plan's people do, most are found again.
void KvPlanCodecPoolTest::idsOfOneKindSpreadOverThePool()
{
    QFETCH(QString, form);
    const auto idOf = [&](int number) {
        return form.arg(number, 6, 16, QLatin1Char('0'));
    };
    constexpr int count = 1000;
    Kv::KvDecodePool pool(2048);
    QVector<QString> first;
    for (int i = 0; i < count; ++i)
        first.append(pool.shared(idOf(i)));
    int found = 0;
    for (int i = 0; i < count; ++i)
        found += pool.shared(idOf(i)).constData() == first.at(i).constData() ? 1 : 0;
    // By chance a thousand in 8192 places leave some 880 alone.
    QVERIFY2(found > 800, qPrintable(QString::number(found)));
}

void KvPlanCodecPoolTest::repeatedListIsShared()
{
    const QJsonObject json{{QStringLiteral("userIds"), QJsonArray{QStringLiteral("u1")}}};
    const QJsonObject same{{QStringLiteral("userIds"), QJsonArray{QStringLiteral("u1")}}};
    KvPlan plan;
    Kv::jsonObjectToPlan({{QStringLiteral("tasks"), QJsonArray{json, same}}}, plan);
    QCOMPARE(plan.planNodes.at(1).userIds, QStringList(QStringLiteral("u1")));
    QVERIFY(plan.planNodes.at(0).userIds.isSharedWith(plan.planNodes.at(1).userIds));
}

void KvPlanCodecPoolTest::repeatedBillStatesAreShared()
{
    const QStringList states{QStringLiteral("ordered"), QStringLiteral("delivered"), QStringLiteral("used")};
    QJsonArray tasks;
    for (const QString& bill : {QStringLiteral("b1"), QStringLiteral("b2")}) {
        const QJsonObject json{{QStringLiteral("rId"), bill},
                               {QStringLiteral("statusIds"), QJsonArray::fromStringList(states)}};
        tasks.append(QJsonObject{{QStringLiteral("materialBills"), QJsonArray{json}}});
    }
    KvPlan plan;
    Kv::jsonObjectToPlan({{QStringLiteral("tasks"), tasks}}, plan);
    const QStringList first = plan.planNodes.at(0).materialBills.value(QStringLiteral("b1"));
    QCOMPARE(first, states);
    QVERIFY(first.isSharedWith(plan.planNodes.at(1).materialBills.value(QStringLiteral("b2"))));
}

void KvPlanCodecPoolTest::repeatedBillsAndModelIdsAreShared()
{
    const auto bill = [](const QString& state) {
        return QJsonArray{QJsonObject{{QStringLiteral("rId"), QStringLiteral("b1")},
                                      {QStringLiteral("statusIds"), QJsonArray{state}}}};
    };
    const auto entities = [](const QString& id) {
        return QJsonArray{QJsonObject{{QStringLiteral("modelId"), QStringLiteral("model 1")},
                                      {QStringLiteral("entityIds"), QJsonArray{id}}}};
    };
    QJsonArray tasks;
    for (const char* state : {"ordered", "used", "used", "ordered"}) {
        tasks.append(
            QJsonObject{{QStringLiteral("materialBills"), bill(QString::fromLatin1(state))},
                        {QStringLiteral("entity"), entities(QStringLiteral("e%1").arg(tasks.size()))}});
    }
    KvPlan plan;
    Kv::jsonObjectToPlan({{QStringLiteral("tasks"), tasks}}, plan);
    QVERIFY(plan.planNodes.at(1).materialBills.isSharedWith(plan.planNodes.at(2).materialBills));
    for (int i = 0; i < tasks.size(); ++i) {
        const KvPlanNode& node = plan.planNodes.at(i);
        const QString state = QString::fromLatin1(i == 1 || i == 2 ? "used" : "ordered");
        QCOMPARE(node.materialBills.value(QStringLiteral("b1")), QStringList(state));
        QCOMPARE(node.links.value(QStringLiteral("model 1")), QStringList(QStringLiteral("e%1").arg(i)));
        QVERIFY(node.links.firstKey().constData() == plan.planNodes.at(0).links.firstKey().constData());
    }
}

void KvPlanCodecPoolTest::linksOfANodeShareItsNumber()
{
    const auto link = [](const QJsonValue& successor) {
        return QJsonObject{{QStringLiteral("TargetPlanNodeUniqueID"), successor}};
    };
    KvPlanNode node;
    Kv::jsonObjectToPlanNode(
        {{QStringLiteral("predecessors"),
          QJsonArray{link(QStringLiteral("1006")), link(QStringLiteral("1006")), link(QStringLiteral("1007")),
                     link(QString(QLatin1String(""))), link(QJsonValue())}}},
        node);
    const auto successor = [&](int i) -> const QString& {
        return node.predecessors.at(i).targetPlanNodeUniqueId;
    };
    QCOMPARE(successor(0), QStringLiteral("1006"));
    QCOMPARE(successor(1), QStringLiteral("1006"));
    QVERIFY(successor(1).constData() == successor(0).constData());
    QCOMPARE(successor(2), QStringLiteral("1007"));
    // What is empty stays what it is.
    QVERIFY(successor(3).isEmpty() && !successor(3).isNull());
    QVERIFY(successor(4).isNull());
}

void KvPlanCodecPoolTest::sharedTextIsStillOnesOwn()
{
    const QJsonObject json{{QStringLiteral("planId"), QStringLiteral("p1")},
                           {QStringLiteral("userIds"), QJsonArray{QStringLiteral("u1")}}};
    KvPlan plan;
    Kv::jsonObjectToPlan({{QStringLiteral("tasks"), QJsonArray{json, json}}}, plan);
    plan.planNodes[0].planId.append(QLatin1Char('x'));
    plan.planNodes[0].userIds.append(QStringLiteral("u2"));
    QCOMPARE(plan.planNodes.at(1).planId, QStringLiteral("p1"));
    QCOMPARE(plan.planNodes.at(1).userIds, QStringList(QStringLiteral("u1")));
}

void KvPlanCodecPoolTest::poolsDoNotKnowEachOther()
{
    const QJsonObject json{{QStringLiteral("planId"), QStringLiteral("p1")}};
    Kv::KvDecodePool one;
    KvPlanNode first;
    KvPlanNode second;
    KvPlanNode other;
    Kv::jsonObjectToPlanNode(json, first, one);
    Kv::jsonObjectToPlanNode(json, second, one);
    Kv::jsonObjectToPlanNode(json, other);
    QVERIFY(first.planId.constData() == second.planId.constData());
    QVERIFY(first.planId.constData() != other.planId.constData());
    QCOMPARE(other.planId, QStringLiteral("p1"));
}

QTEST_APPLESS_MAIN(KvPlanCodecPoolTest)
#include "KvPlanCodecPoolTest.moc"
