#include "PlainTree.h"

#include <model/KvPlanDataUtils.h>

#include <QtCore/QRandomGenerator>
#include <QtTest/QtTest>

#include <functional>

namespace {

KvPlanNode makeNode(int planNodeId, int uniqueId, int parentTaskId)
{
    static int made = 0;
    KvPlanNode node;
    node.id = QString::number(++made); // tells the nodes apart, whatever their numbers
    node.planNodeId = planNodeId;
    node.uniqueId = uniqueId;
    node.parentTaskId = parentTaskId;
    return node;
}

/// Tree as text, children in brackets, so that a difference can be read.
QString asText(const QList<KvPlanNode>& nodes)
{
    QString text;
    for (const KvPlanNode& node : nodes) {
        text += QStringLiteral("%1#%2/%3<%4")
                    .arg(node.planNodeId)
                    .arg(node.uniqueId)
                    .arg(node.parentTaskId)
                    .arg(node.id);
        text += node.children.isEmpty() ? QStringLiteral(" ")
                                        : QStringLiteral("[%1] ").arg(asText(node.children));
    }
    return text;
}

/// What random lists are made of.
struct Mix
{
    const char* name;
    int maxCount;
    int numbers;     ///< how many different uniqueIds, from -2 on; 0: all different
    int rows;        ///< how many different planNodeIds; 0: all different
    int selfParents; ///< percent
    int noParents;   ///< percent
    int carriers;    ///< percent of nodes that bring children along
    int upward;      ///< percent whose parent is taken from the nodes before it
};

const Mix Mixes[] = {
    {"all different", 14, 0, 0, 5, 20, 0, 90},
    {"any parents", 10, 0, 0, 5, 25, 0, 0},
    {"repeated numbers", 14, 6, 0, 5, 20, 0, 50},
    {"few numbers", 20, 3, 0, 5, 30, 0, 30},
    {"repeated rows", 40, 0, 6, 5, 20, 0, 95},
    {"carried children", 10, 8, 0, 5, 25, 40, 60},
    {"carried children, few numbers", 12, 3, 0, 10, 30, 50, 30},
    {"everything", 24, 9, 12, 8, 25, 25, 60},
    {"long", 120, 0, 0, 2, 5, 0, 100},
    {"long with repeated numbers", 100, 40, 80, 2, 10, 5, 90},
};

class Lists
{
public:
    explicit Lists(const Mix& mix, quint32 seed)
        : m_mix(mix)
        , m_random(seed)
    {
    }

    QList<KvPlanNode> next()
    {
        const int count = m_random.bounded(m_mix.maxCount + 1);
        QVector<int> numbers;
        for (int i = 0; i < count; ++i)
            numbers.append(m_mix.numbers > 0 ? m_random.bounded(m_mix.numbers) - 2 : spread(i));
        QList<KvPlanNode> nodes;
        for (int i = 0; i < count; ++i) {
            int parent = 0;
            if (chance(m_mix.selfParents))
                parent = numbers.at(i);
            else if (chance(m_mix.noParents))
                parent = -1 - m_random.bounded(3);
            else
                parent = numbers.at(m_random.bounded(i > 0 && chance(m_mix.upward) ? i : count));
            const int row = m_mix.rows > 0 ? m_random.bounded(m_mix.rows) - 3 : i;
            nodes.append(makeNode(row, numbers.at(i), parent));
            if (chance(m_mix.carriers))
                nodes.last().children = carried(2);
        }
        shuffle(nodes);
        if (m_mix.rows == 0 && chance(60)) {
            for (int i = 0; i < count; ++i)
                nodes[i].planNodeId = i; // rows that say nothing of the hierarchy: children before parents
        }
        shuffle(nodes);
        return nodes;
    }

private:
    bool chance(int percent) { return m_random.bounded(100) < percent; }

    // Close together in some lists, far apart in others.
    int spread(int i) { return m_mix.maxCount % 4 == 0 ? i - 3 : i * 100003 - 500000000; }

    QList<KvPlanNode> carried(int levels)
    {
        QList<KvPlanNode> nodes;
        for (int i = 1 + m_random.bounded(2); i > 0; --i) {
            const int numbers = m_mix.numbers > 0 ? m_mix.numbers : 5;
            nodes.append(
                makeNode(m_random.bounded(9), m_random.bounded(numbers + 2) - 2, m_random.bounded(numbers)));
            if (levels > 0 && chance(50))
                nodes.last().children = carried(levels - 1);
        }
        return nodes;
    }

    void shuffle(QList<KvPlanNode>& nodes)
    {
        for (int i = nodes.size() - 1; i > 0; --i)
            nodes.swapItemsAt(i, m_random.bounded(i + 1));
    }

    const Mix& m_mix;
    QRandomGenerator m_random;
};

/// Empty when the cycles that are told are cycles of the list, in the promised form.
QString faultOf(const QList<QList<int>>& cycles, const QList<KvPlanNode>& nodes)
{
    QSet<int> seen;
    int lastFirst = -1;
    for (const QList<int>& cycle : cycles) {
        if (cycle.size() < 2)
            return QStringLiteral("a cycle of less than two nodes");
        if (cycle.first() <= lastFirst || *std::min_element(cycle.begin(), cycle.end()) != cycle.first())
            return QStringLiteral("not in order");
        lastFirst = cycle.first();
        for (int i = 0; i < cycle.size(); ++i) {
            const KvPlanNode& node = nodes.at(cycle.at(i));
            const KvPlanNode& parent = nodes.at(cycle.at((i + 1) % cycle.size()));
            if (node.parentTaskId != parent.uniqueId)
                return QStringLiteral("node %1 is not below node %2").arg(node.id, parent.id);
            if (seen.contains(cycle.at(i)))
                return QStringLiteral("node %1 twice").arg(node.id);
            seen.insert(cycle.at(i));
        }
    }
    return QString();
}

} // namespace

class KvPlanTreePropertyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void treeIsThatOfTheDescription_data() { mixes(); }
    void treeIsThatOfTheDescription();
    void flatIsThatOfTheDescription_data() { mixes(); }
    void flatIsThatOfTheDescription();
    void stepsAreThoseOfTheDescription_data() { mixes(); }
    void stepsAreThoseOfTheDescription();

private:
    static void mixes()
    {
        QTest::addColumn<int>("mix");
        int number = 0;
        for (const Mix& mix : Mixes)
            QTest::newRow(mix.name) << number++;
    }
};

void KvPlanTreePropertyTest::treeIsThatOfTheDescription()
{
    QFETCH(int, mix);
    Lists lists(Mixes[mix], 1000 + quint32(mix));
    const int rounds = Mixes[mix].maxCount > 50 ? 300 : 2500;
    int returned = 0;
    int cyclic = 0;
    for (int i = 0; i < rounds; ++i) {
        const QList<KvPlanNode> nodes = lists.next();
        const QList<QList<int>> cycles = KvPlanDataUtils::findParentCycles(nodes);
        QCOMPARE(faultOf(cycles, nodes), QString());
        const bool returns = PlainTree::treeReturns(nodes);
        QVERIFY2(cycles.isEmpty() == returns, qPrintable(asText(nodes)));
        if (!returns) {
            ++cyclic;
            continue;
        }
        ++returned;
        QList<KvPlanNode> expected = nodes;
        PlainTree::makePlanNodeListTree(expected);
        const QString before = asText(nodes);

        QList<KvPlanNode> shared = nodes;
        KvPlanDataUtils::makePlanNodeListTree(shared);
        QVERIFY2(asText(shared) == asText(expected), qPrintable(before));
        QCOMPARE(asText(nodes), before);

        QList<KvPlanNode> owned = nodes;
        owned.detach();
        KvPlanDataUtils::makePlanNodeListTree(owned);
        QVERIFY2(asText(owned) == asText(expected), qPrintable(before));
        QCOMPARE(asText(nodes), before);
    }
    QVERIFY(returned > rounds / 10);
    QVERIFY(cyclic > 0 || Mixes[mix].upward == 100);
}

void KvPlanTreePropertyTest::flatIsThatOfTheDescription()
{
    QFETCH(int, mix);
    Lists lists(Mixes[mix], 2000 + quint32(mix));
    for (int i = 0; i < (Mixes[mix].maxCount > 50 ? 200 : 1000); ++i) {
        QList<KvPlanNode> nodes = lists.next();
        if (PlainTree::treeReturns(nodes))
            PlainTree::makePlanNodeListTree(nodes);
        QList<KvPlanNode> expected = nodes;
        PlainTree::makePlanNodeListFlat(expected);
        const QString before = asText(nodes);

        QList<KvPlanNode> shared = nodes;
        KvPlanDataUtils::makePlanNodeListFlat(shared);
        QVERIFY2(asText(shared) == asText(expected), qPrintable(before));
        QCOMPARE(asText(nodes), before);

        // Nobody else holds the list or what is in it, so that nodes are moved.
        KvPlanDataUtils::makePlanNodeListFlat(nodes);
        QVERIFY2(asText(nodes) == asText(expected), qPrintable(before));
    }
}

void KvPlanTreePropertyTest::stepsAreThoseOfTheDescription()
{
    QFETCH(int, mix);
    Lists lists(Mixes[mix], 3000 + quint32(mix));
    for (int i = 0; i < 300; ++i) {
        QList<KvPlanNode> tree = lists.next();
        if (PlainTree::treeReturns(tree))
            PlainTree::makePlanNodeListTree(tree);
        QList<KvPlanNode> expected = tree;
        const QList<KvPlanNode> held = tree;
        const QString before = asText(held);
        for (const KvPlanNode& node : lists.next()) {
            QCOMPARE(KvPlanDataUtils::attachChildNode(node, tree),
                     PlainTree::attachChildNode(node, expected));
            QCOMPARE(asText(tree), asText(expected));
        }
        QCOMPARE(asText(held), before);

        QList<KvPlanNode> flat = lists.next();
        QList<KvPlanNode> expectedFlat = flat;
        for (const KvPlanNode& node : tree) {
            KvPlanDataUtils::addPlanNode(node, flat);
            PlainTree::addPlanNode(node, expectedFlat);
        }
        QCOMPARE(asText(flat), asText(expectedFlat));
        QCOMPARE(asText(tree), asText(expected));
    }
}

QTEST_GUILESS_MAIN(KvPlanTreePropertyTest)
#include "KvPlanTreePropertyTest.moc"
