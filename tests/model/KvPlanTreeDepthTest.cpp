#include <model/KvPlanDataUtils.h>

#include <QtCore/QThread>
#include <QtTest/QtTest>

#include <functional>
#include <memory>

namespace {

constexpr int ChainLength = 100000;

KvPlanNode makeNode(int planNodeId, int uniqueId, int parentTaskId)
{
    KvPlanNode node;
    node.planNodeId = planNodeId;
    node.uniqueId = uniqueId;
    node.parentTaskId = parentTaskId;
    return node;
}

/// Each node below the one before it; or, `reversed`, below the one behind it, so that each needs a round.
QList<KvPlanNode> chain(bool reversed)
{
    QList<KvPlanNode> nodes;
    for (int i = 0; i < ChainLength; ++i)
        nodes.append(reversed ? makeNode(i, i, i + 1) : makeNode(i, i, i - 1));
    return nodes;
}

int depthOf(const QList<KvPlanNode>& tree)
{
    int depth = 0;
    for (const QList<KvPlanNode>* level = &tree; !level->isEmpty(); level = &level->first().children)
        ++depth;
    return depth;
}

/// Runs a step in a thread with a small stack: a call for each level would need many times as much.
bool runOnSmallStack(const std::function<bool()>& step)
{
    bool result = false;
    const std::unique_ptr<QThread> thread(QThread::create([&] { result = step(); }));
    thread->setStackSize(256 * 1024);
    thread->start();
    thread->wait();
    return result;
}

} // namespace

class KvPlanTreeDepthTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void deepTreeOnASmallStack_data();
    void deepTreeOnASmallStack();
    void millionsOnOneRoot();
};

void KvPlanTreeDepthTest::deepTreeOnASmallStack_data()
{
    QTest::addColumn<bool>("reversed");
    QTest::newRow("chain") << false;
    QTest::newRow("reversed chain") << true;
}

void KvPlanTreeDepthTest::deepTreeOnASmallStack()
{
    QFETCH(bool, reversed);
    QList<KvPlanNode> tree;
    QVERIFY(runOnSmallStack([&] {
        tree = chain(reversed);
        KvPlanDataUtils::makePlanNodeListTree(tree);
        return depthOf(tree) == ChainLength;
    }));
    QVERIFY(runOnSmallStack([&] { // detached level by level, then let go
        QList<KvPlanNode> copy = tree;
        for (QList<KvPlanNode>* level = &copy; !level->isEmpty(); level = &level->first().children)
            level->first().name = QStringLiteral("copy");
        return depthOf(copy) == ChainLength && tree.first().name.isEmpty();
    }));
    QVERIFY(runOnSmallStack([&] { // shared, so copied out
        QList<KvPlanNode> flat = tree;
        KvPlanDataUtils::makePlanNodeListFlat(flat);
        return flat.size() == ChainLength && depthOf(flat) == 1 && depthOf(tree) == ChainLength;
    }));
    QVERIFY(runOnSmallStack([&] {
        QList<KvPlanNode> flat;
        KvPlanDataUtils::addPlanNode(tree.first(), flat);
        return flat.size() == ChainLength && flat.first().children.isEmpty();
    }));
    QVERIFY(runOnSmallStack([&] {
        const int deepest = reversed ? 0 : ChainLength - 1;
        return KvPlanDataUtils::attachChildNode(makeNode(-1, -100, deepest), tree) &&
               depthOf(tree) == ChainLength + 1 &&
               !KvPlanDataUtils::attachChildNode(makeNode(-1, -100, -200), tree);
    }));
    QVERIFY(runOnSmallStack([&] { // as carried children of a root
        QList<KvPlanNode> nodes{makeNode(0, 500000, -1), makeNode(1, -100, 500000), makeNode(2, -7, -100)};
        nodes[0].children = tree;
        if (!KvPlanDataUtils::findParentCycles(nodes).isEmpty())
            return false;
        KvPlanDataUtils::makePlanNodeListTree(nodes);
        return depthOf(nodes) == ChainLength + 3;
    }));
    QVERIFY(runOnSmallStack([&] {
        KvPlanDataUtils::makePlanNodeListFlat(tree);
        const bool flattened = tree.size() == ChainLength + 1 && depthOf(tree) == 1;
        KvPlanDataUtils::makePlanNodeListTree(tree);
        tree.clear();
        return flattened;
    }));
}

void KvPlanTreeDepthTest::millionsOnOneRoot()
{
    constexpr int count = 2000000;
    QList<KvPlanNode> nodes;
    nodes.reserve(count);
    nodes.append(makeNode(0, 0, -1));
    for (int i = 1; i < count; ++i)
        nodes.append(makeNode(i, i, 0));
    KvPlanDataUtils::makePlanNodeListTree(nodes);
    QCOMPARE(nodes.size(), 1);
    QCOMPARE(nodes.first().children.size(), count - 1);
    QCOMPARE(nodes.first().children.last().planNodeId, count - 1);
    KvPlanDataUtils::makePlanNodeListFlat(nodes);
    QCOMPARE(nodes.size(), count);
    for (int i = 0; i < count; ++i)
        QVERIFY(nodes.at(i).planNodeId == i);
}

QTEST_GUILESS_MAIN(KvPlanTreeDepthTest)
#include "KvPlanTreeDepthTest.moc"
