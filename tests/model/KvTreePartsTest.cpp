#include <model/KvGrowingForest.h>
#include <model/KvNumberRanks.h>
#include <model/KvReadySet.h>

#include <QtCore/QRandomGenerator>
#include <QtTest/QtTest>

#include <limits>
#include <set>

// What the tree is built with, each against its plain counterpart.
class KvTreePartsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readySetFindsTheNextMember_data();
    void readySetFindsTheNextMember();
    void forestKnowsReadingOrder_data();
    void forestKnowsReadingOrder();
    void ranksAreThoseOfTheSortedValues_data();
    void ranksAreThoseOfTheSortedValues();
};

void KvTreePartsTest::readySetFindsTheNextMember_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {1, 2, 63, 64, 65, 4095, 4096, 4097, 300000})
        QTest::addRow("%d", size) << size;
}

void KvTreePartsTest::readySetFindsTheNextMember()
{
    QFETCH(int, size);
    Kv::KvReadySet ready(size);
    std::set<int> plain;
    QRandomGenerator random{quint32(size)};
    QCOMPARE(ready.next(0), -1);
    for (int i = 0; i < 20000; ++i) {
        const int number = random.bounded(size);
        const bool filling = i / 4000 % 2 == 0;
        if (random.bounded(4) == 0 ? !filling : filling) {
            ready.insert(number);
            plain.insert(number);
        } else {
            const auto found = plain.lower_bound(number);
            const int member = found == plain.end() ? number : *found;
            ready.remove(member);
            plain.erase(member);
        }
        const int from = random.bounded(size);
        const auto expected = plain.lower_bound(from);
        QCOMPARE(ready.next(from), expected == plain.end() ? -1 : *expected);
    }
    QCOMPARE(ready.next(0), plain.empty() ? -1 : *plain.begin());
}

void KvTreePartsTest::forestKnowsReadingOrder_data()
{
    QTest::addColumn<int>("reach");
    QTest::newRow("one chain") << 1;
    QTest::newRow("nearly a chain") << 2;
    QTest::newRow("deep") << 10;
    QTest::newRow("bushy") << 500;
}

// The parent of each node is among the last few before it.
void KvTreePartsTest::forestKnowsReadingOrder()
{
    QFETCH(int, reach);
    constexpr int count = 500;
    Kv::KvGrowingForest forest(count);
    QVector<QVector<int>> children(count + 1);
    QRandomGenerator random{quint32(reach)};
    for (int node = 0; node < count; ++node) {
        const int back = 1 + random.bounded(reach);
        const int parent = back > node || (reach > 2 && random.bounded(40) == 0) ? -1 : node - back;
        forest.add(node, parent);
        children[parent < 0 ? count : parent].append(node);
    }
    QVector<int> place(count + 1, -1);
    int next = 0;
    for (QVector<int> open{count}; !open.isEmpty();) {
        const int node = open.takeLast();
        place[node] = next++;
        for (auto child = children.at(node).crbegin(); child != children.at(node).crend(); ++child)
            open.append(*child);
    }
    for (int a = 0; a < count; ++a) {
        for (int b = 0; b < count; ++b)
            QCOMPARE(forest.isBefore(a, b), place.at(a) < place.at(b));
    }
}

void KvTreePartsTest::ranksAreThoseOfTheSortedValues_data()
{
    QTest::addColumn<QVector<int>>("values");
    const int lowest = std::numeric_limits<int>::min();
    const int highest = std::numeric_limits<int>::max();
    QTest::newRow("one") << QVector<int>{7};
    QTest::newRow("close together") << QVector<int>{5, 3, 9, 3, -1, 9};
    QTest::newRow("far apart") << QVector<int>{1000000, -1000000, 0, 0, 999999};
    QTest::newRow("the whole range") << QVector<int>{highest, lowest, 0, highest - 1, lowest};
    QTest::newRow("close together at the lower end") << QVector<int>{lowest, lowest + 2};
    QTest::newRow("close together at the upper end") << QVector<int>{highest - 2, highest};
}

void KvTreePartsTest::ranksAreThoseOfTheSortedValues()
{
    QFETCH(QVector<int>, values);
    const std::set<int> sorted(values.begin(), values.end());
    const Kv::KvNumberRanks ranks(std::vector<int>(values.begin(), values.end()));
    QCOMPARE(ranks.count(), int(sorted.size()));
    values += {std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), -1, 0, 1, 4, 8, 10, 999998};
    for (const int value : values) {
        const auto found = sorted.find(value);
        QCOMPARE(ranks.rankOf(value), found == sorted.end() ? -1 : int(std::distance(sorted.begin(), found)));
    }
}

QTEST_GUILESS_MAIN(KvTreePartsTest)
#include "KvTreePartsTest.moc"
