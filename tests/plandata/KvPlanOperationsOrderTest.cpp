// The order in which the list of all plans comes back: natural, by name, letter case ignored.

#include "KvPlanOperationsFixture.h"

#include <QtCore/QLocale>
#include <QtCore/QSet>

#include <algorithm>
#include <random>

using KvTest::Reply;

namespace {

QStringList shuffled(QStringList names)
{
    std::mt19937 random(20260504); // the same order in each run
    for (int i = names.size() - 1; i > 0; --i)
        names.swapItemsAt(i, static_cast<int>(random() % static_cast<unsigned>(i + 1)));
    return names;
}

} // namespace

class KvPlanOperationsOrderTest : public KvPlanOperationsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void planNames();
    void order_data();
    void order();
    void equalNamesAllStay_data() { locales(); }
    void equalNamesAllStay();
    void sortsTheWholeList_data();
    void sortsTheWholeList();
    void laterOfTwoPlansWithOneIdIsCached();
    void tenThousandPlans_data() { locales(); }
    void tenThousandPlans();

private:
    static void locales();
    QList<KvPlan> listed(const QStringList& names);
};

void KvPlanOperationsOrderTest::locales()
{
    QTest::addColumn<QString>("locale");
    for (const char* locale : {"C", "en_US", "zh_CN"})
        QTest::newRow(locale) << QString::fromLatin1(locale);
}

// The service's list of those names, as the facade hands it out.
QList<KvPlan> KvPlanOperationsOrderTest::listed(const QStringList& names)
{
    QJsonArray array;
    for (int i = 0; i < names.size(); ++i)
        array.append(record(QString::number(i), names.at(i)));
    m_server.enqueue(Reply::json(array));
    QList<KvPlan> plans;
    if (!data().getAllPlan(plans, false))
        plans.clear();
    return plans;
}

void KvPlanOperationsOrderTest::planNames()
{
    QCOMPARE(namesOf(listed({QStringLiteral("Plan 2"), QStringLiteral("plan 10"), QStringLiteral("Plan 1")})),
             (QStringList{QStringLiteral("Plan 1"), QStringLiteral("Plan 2"), QStringLiteral("plan 10")}));
}

void KvPlanOperationsOrderTest::order_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QStringList>("names"); // in their order
    const QList<QPair<const char*, QStringList>> orders{
        {"numbers by value",
         {QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("10"), QStringLiteral("100")}},
        {"case ignored", {QStringLiteral("Plan 2"), QStringLiteral("plan 3"), QStringLiteral("PLAN 10")}},
        {"letters",
         {QStringLiteral("alpha"), QStringLiteral("Beta"), QStringLiteral("delta"), QStringLiteral("Gamma")}},
        {"floors",
         {QStringLiteral("第1层"), QStringLiteral("第2层"), QStringLiteral("第10层"),
          QStringLiteral("第100层")}},
        {"mixed numbers",
         {QStringLiteral("T1 floor 2"), QStringLiteral("t1 floor 12"), QStringLiteral("T2 floor 1"),
          QStringLiteral("t10 Floor 1")}},
        {"empty first", {QString(), QStringLiteral("1"), QStringLiteral("a")}},
        {"longer after its beginning",
         {QStringLiteral("plan"), QStringLiteral("plan 1"), QStringLiteral("plan 1 a")}},
        {"numbers beyond 64 bits",
         {QStringLiteral("9"), QStringLiteral("99999999999999999999"),
          QStringLiteral("100000000000000000000")}},
    };
    for (const char* locale : {"C", "en_US", "zh_CN"}) {
        for (const auto& order : orders) {
            QTest::newRow(qPrintable(
                QStringLiteral("%1, %2").arg(QString::fromLatin1(order.first), QString::fromLatin1(locale))))
                << QString::fromLatin1(locale) << order.second;
        }
    }
}

void KvPlanOperationsOrderTest::order()
{
    QFETCH(QString, locale);
    QFETCH(QStringList, names);
    QLocale::setDefault(QLocale(locale));
    QStringList turned = names;
    // Every rotation, forwards and backwards.
    for (int turn = 0; turn < names.size(); ++turn) {
        turned.append(turned.takeFirst());
        QCOMPARE(namesOf(listed(turned)), names);
        QStringList backwards = turned;
        std::reverse(backwards.begin(), backwards.end());
        QCOMPARE(namesOf(listed(backwards)), names);
    }
}

// Names that differ in case only stand in no defined order, but next to each other, and none is lost.
void KvPlanOperationsOrderTest::equalNamesAllStay()
{
    QFETCH(QString, locale);
    QLocale::setDefault(QLocale(locale));
    QStringList names;
    for (int i = 0; i < 50; ++i)
        names << QStringLiteral("Plan 2") << QStringLiteral("plan 2") << QStringLiteral("Plan 1")
              << QString();
    const QList<KvPlan> plans = listed(shuffled(names));
    QCOMPARE(plans.size(), 200);
    QSet<QString> ids;
    for (int i = 0; i < plans.size(); ++i) {
        ids.insert(plans.at(i).id);
        QCOMPARE(plans.at(i).name.toLower(), i < 50    ? QString()
                                             : i < 100 ? QStringLiteral("plan 1")
                                                       : QStringLiteral("plan 2"));
    }
    QCOMPARE(ids.size(), 200);
}

void KvPlanOperationsOrderTest::sortsTheWholeList_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("success") << 200;
    QTest::newRow("failure") << 500;
}

// What the caller's list held before is sorted with the rest, also when nothing came.
void KvPlanOperationsOrderTest::sortsTheWholeList()
{
    QFETCH(int, status);
    QList<KvPlan> plans;
    for (const QString& name : {QStringLiteral("b"), QStringLiteral("a 10"), QStringLiteral("A 2")}) {
        plans.append(KvPlan());
        plans.last().id = plans.last().name = name;
    }
    m_server.enqueue(Reply::json(QJsonArray{record(p1, QStringLiteral("a 3"))}, status));
    QCOMPARE(data().getAllPlan(plans, false), status == 200);
    QStringList wanted{QStringLiteral("A 2"), QStringLiteral("a 3"), QStringLiteral("a 10"),
                       QStringLiteral("b")};
    if (status != 200)
        wanted.removeOne(QStringLiteral("a 3"));
    QCOMPARE(namesOf(plans), wanted);
    // All of the list is cached.
    for (const KvPlan& plan : qAsConst(plans))
        QCOMPARE(data().getPlanName(plan.id), plan.name);
    QCOMPARE(data().getAllPlanNames().size(), wanted.size());
}

// Later in the sorted list, not in the reply.
void KvPlanOperationsOrderTest::laterOfTwoPlansWithOneIdIsCached()
{
    m_server.enqueue(
        Reply::json(QJsonArray{record(p1, QStringLiteral("z")), record(p1, QStringLiteral("a"))}));
    QList<KvPlan> plans;
    QVERIFY(data().getAllPlan(plans, false));
    QCOMPARE(plans.size(), 2);
    QCOMPARE(data().getAllPlanNames(), QStringList{QStringLiteral("z")});
}

void KvPlanOperationsOrderTest::tenThousandPlans()
{
    QFETCH(QString, locale);
    QLocale::setDefault(QLocale(locale));
    constexpr int count = 10000;
    QStringList names;
    names.reserve(count);
    for (int i = 0; i < count / 2; ++i)
        names.append((i % 2 == 0 ? QStringLiteral("Tower %1 plan") : QStringLiteral("tower %1 PLAN")).arg(i));
    for (int i = 0; i < count / 2; ++i)
        names.append(QStringLiteral("总进度第%1层").arg(i));
    const QList<KvPlan> plans = listed(shuffled(names));
    QCOMPARE(plans.size(), count);
    // Which script comes first is the language's affair; within each the numbers decide.
    QStringList sorted = namesOf(plans);
    if (sorted.first() == names.at(count / 2))
        std::rotate(sorted.begin(), sorted.begin() + count / 2, sorted.end());
    QCOMPARE(sorted, names);
    QCOMPARE(data().getAllPlanNames().size(), count);
}

QTEST_GUILESS_MAIN(KvPlanOperationsOrderTest)
#include "KvPlanOperationsOrderTest.moc"
