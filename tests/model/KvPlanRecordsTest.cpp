// Records are values: a copy is whole and independent, at any depth of children, and no depth ends the stack.

#include "KvPlanRecordsDump.h"

#include <QtCore/QThread>
#include <QtTest/QtTest>

#include <functional>
#include <memory>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullPlan;
using KvTest::fullPlanNode;

namespace {

constexpr int chainDepth = 100000;

KvPlanNode named(const char* id)
{
    KvPlanNode node;
    node.id = QLatin1String(id);
    return node;
}

// root > middle > leaf, with two leaves
KvPlanNode threeLevels()
{
    KvPlanNode middle = named("middle");
    middle.children = {named("leaf"), named("second leaf")};
    KvPlanNode root = named("root");
    root.children = {middle};
    return root;
}

KvPlanNode chain(int depth)
{
    KvPlanNode top;
    top.uniqueId = depth;
    for (int level = depth - 1; level > 0; --level) {
        KvPlanNode parent;
        parent.uniqueId = level;
        parent.children.append(top);
        top = parent;
    }
    return top;
}

int depthOf(const KvPlanNode& top)
{
    int depth = 1;
    for (const KvPlanNode* at = &top; !at->children.isEmpty(); at = &at->children.first())
        ++depth;
    return depth;
}

KvPlanNode& deepest(KvPlanNode& top) // takes each level of its own on the way
{
    KvPlanNode* at = &top;
    while (!at->children.isEmpty())
        at = &at->children.first();
    return *at;
}

// A stack on which one frame a level would not fit, however small the frame.
void onSmallStack(const std::function<void()>& work)
{
    const std::unique_ptr<QThread> thread(QThread::create(work));
    thread->setStackSize(128 * 1024);
    thread->start();
    QVERIFY(thread->wait());
}

} // namespace

class KvPlanRecordsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void copyHoldsEveryField();
    void copyIsIndependentInEveryField();
    void planCopyIsIndependent();
    void copyOfThreeLevelsIsDeep();
    void targetUniqueIdIsText();
    void assignmentFromOwnChild();
    void moveAssignmentFromOwnChild();
    void assignmentFromOwnGrandchild();
    void assignmentToItself();
    void childAppendedToItsParentAgain();
    void movedFromNodeCanBeUsedAgain();
    void listOfNodesMovesWhole();
    void deepChainIsBuiltAndDestroyed();
    void deepChainIsCopiedAndWritten();
    void deepChainIsAssigned();
    void deepChainIsMoved();
    void deepChainWithTwoOwners();
    void sameChildrenInTwoPlacesOfOneTree();
};

void KvPlanRecordsTest::copyHoldsEveryField()
{
    const KvPlanNode node = fullPlanNode();
    const QJsonObject whole = dump(node);
    QCOMPARE(whole.size(), 57);
    const KvPlanNode constructed(node);
    QCOMPARE(difference(dump(constructed), whole), QString());
    KvPlanNode assigned = fullPlanNode(2);
    assigned = node;
    QCOMPARE(difference(dump(assigned), whole), QString());
    KvPlanNode source = node;
    const KvPlanNode moved(std::move(source));
    QCOMPARE(difference(dump(moved), whole), QString());
    source = node;
    assigned = std::move(source);
    QCOMPARE(difference(dump(assigned), whole), QString());
}

void KvPlanRecordsTest::copyIsIndependentInEveryField()
{
    const KvPlanNode other = fullPlanNode(2);
    const QJsonObject original = dump(fullPlanNode());
    KvTest::visitPlanNodeFields([&](const char* name, auto member) {
        const KvPlanNode node = fullPlanNode();
        KvPlanNode copy = node;
        copy.*member = other.*member;
        QCOMPARE(difference(dump(node), original), QString());
        QJsonObject changed = original;
        changed.insert(QLatin1String(name), dump(other).value(QLatin1String(name)));
        QVERIFY2(changed != original, name);
        QCOMPARE(difference(dump(copy), changed), QString());
    });
}

void KvPlanRecordsTest::planCopyIsIndependent()
{
    const KvPlan plan = fullPlan();
    const QJsonObject original = dump(plan);
    KvPlan copy = plan;
    QCOMPARE(difference(dump(copy), original), QString());
    copy.name = QStringLiteral("another");
    copy.ranges.append(QStringLiteral("another"));
    copy.planNodes.first().children.first().name = QStringLiteral("another");
    copy.planNodes.first().links.insert(QStringLiteral("another"), {});
    copy.planNodes.removeLast();
    QCOMPARE(difference(dump(plan), original), QString());
}

void KvPlanRecordsTest::copyOfThreeLevelsIsDeep()
{
    KvPlanNode original = threeLevels();
    const QJsonObject before = dump(original);
    KvPlanNode copy = original;
    copy.id = QStringLiteral("copied root");
    copy.children[0].id = QStringLiteral("copied middle");
    copy.children[0].children[0].id = QStringLiteral("copied leaf");
    QCOMPARE(difference(dump(original), before), QString());

    const QJsonObject copied = dump(copy);
    original.children[0].children[1].id = QStringLiteral("changed");
    original.children[0].children.removeFirst();
    original.children.clear();
    QCOMPARE(difference(dump(copy), copied), QString());
    QCOMPARE(copy.children[0].children[0].id, QStringLiteral("copied leaf"));
    QCOMPARE(copy.children[0].children[1].id, QStringLiteral("second leaf"));
}

void KvPlanRecordsTest::targetUniqueIdIsText()
{
    KvPlanPredecessor one;
    KvPlanPredecessor other;
    one.targetPlanNodeUniqueId = QStringLiteral("12");
    other.targetPlanNodeUniqueId = QStringLiteral("012");
    QVERIFY(one.targetPlanNodeUniqueId != other.targetPlanNodeUniqueId);
    one.sourcePlanNodeUniqueId = 12;
    other.sourcePlanNodeUniqueId = 012 + 2; // a number, whatever it was written as
    QCOMPARE(one.sourcePlanNodeUniqueId, other.sourcePlanNodeUniqueId);
}

void KvPlanRecordsTest::assignmentFromOwnChild()
{
    KvPlanNode node = fullPlanNode();
    node.children = {fullPlanNode(2), named("other")};
    node = node.children.first();
    QCOMPARE(difference(dump(node), dump(fullPlanNode(2))), QString());
}

void KvPlanRecordsTest::moveAssignmentFromOwnChild()
{
    KvPlanNode node = fullPlanNode();
    node.children = {fullPlanNode(2), named("other")};
    node = std::move(node.children.first());
    QCOMPARE(difference(dump(node), dump(fullPlanNode(2))), QString());
}

void KvPlanRecordsTest::assignmentFromOwnGrandchild()
{
    KvPlanNode node = threeLevels();
    node = node.children.first().children.last();
    QCOMPARE(difference(dump(node), dump(named("second leaf"))), QString());
    node = threeLevels();
    node = std::move(node.children.first().children.last());
    QCOMPARE(difference(dump(node), dump(named("second leaf"))), QString());
}

void KvPlanRecordsTest::assignmentToItself()
{
    KvPlanNode node = fullPlanNode();
    KvPlanNode& same = node;
    node = same;
    QCOMPARE(difference(dump(node), dump(fullPlanNode())), QString());
    node = std::move(same);
    QCOMPARE(difference(dump(node), dump(fullPlanNode())), QString());
}

void KvPlanRecordsTest::childAppendedToItsParentAgain()
{
    KvPlanNode node = threeLevels();
    node.children.append(KvPlanNode(node)); // what it was before, one level down
    QCOMPARE(node.children.size(), 2);
    QCOMPARE(difference(dump(node.children.last()), dump(threeLevels())), QString());
}

void KvPlanRecordsTest::movedFromNodeCanBeUsedAgain()
{
    KvPlanNode source = threeLevels();
    const KvPlanNode target = std::move(source);
    QCOMPARE(difference(dump(target), dump(threeLevels())), QString());
    QVERIFY(source.children.isEmpty());
    source.children.append(named("new child"));
    QCOMPARE(target.children.size(), 1);
    source = fullPlanNode();
    QCOMPARE(difference(dump(source), dump(fullPlanNode())), QString());
}

void KvPlanRecordsTest::listOfNodesMovesWhole()
{
    QList<KvPlanNode> nodes{fullPlanNode(1), fullPlanNode(2), fullPlanNode(3)};
    nodes.swapItemsAt(0, 2);
    nodes.move(1, 0);
    const KvPlanNode taken = nodes.takeLast();
    QCOMPARE(difference(dump(taken), dump(fullPlanNode(1))), QString());
    QCOMPARE(difference(dump(nodes.first()), dump(fullPlanNode(2))), QString());
    QCOMPARE(difference(dump(nodes.last()), dump(fullPlanNode(3))), QString());
}

void KvPlanRecordsTest::deepChainIsBuiltAndDestroyed()
{
    int depth = 0;
    onSmallStack([&] { depth = depthOf(chain(chainDepth)); });
    QCOMPARE(depth, chainDepth);
}

void KvPlanRecordsTest::deepChainIsCopiedAndWritten()
{
    onSmallStack([] {
        KvPlanNode original = chain(chainDepth);
        KvPlanNode copy = original;
        QVERIFY(copy.children.isSharedWith(original.children)); // no cost until one side writes
        deepest(copy).name = QStringLiteral("changed");
        QCOMPARE(deepest(original).name, QString());
        QCOMPARE(deepest(copy).name, QStringLiteral("changed"));
        QCOMPARE(depthOf(copy), chainDepth);
        QCOMPARE(depthOf(original), chainDepth);
    });
}

void KvPlanRecordsTest::deepChainIsAssigned()
{
    onSmallStack([] {
        KvPlanNode node = chain(chainDepth);
        node = chain(3); // lets the long one go
        QCOMPARE(depthOf(node), 3);
        node = chain(chainDepth);
        node = node.children.first();
        QCOMPARE(node.uniqueId, 2);
        QCOMPARE(depthOf(node), chainDepth - 1);
        const KvPlanNode last = deepest(node);
        node = last;
        QCOMPARE(node.uniqueId, chainDepth);
        QCOMPARE(depthOf(node), 1);
        node = chain(chainDepth);
        node.children.clear();
        QCOMPARE(depthOf(node), 1);
    });
}

void KvPlanRecordsTest::deepChainIsMoved()
{
    onSmallStack([] {
        KvPlanNode source = chain(chainDepth);
        KvPlanNode target = chain(chainDepth);
        target = std::move(source);
        QCOMPARE(depthOf(target), chainDepth);
        target = std::move(target.children.first());
        QCOMPARE(target.uniqueId, 2);
        QCOMPARE(depthOf(target), chainDepth - 1);
    });
}

void KvPlanRecordsTest::deepChainWithTwoOwners()
{
    onSmallStack([] {
        auto first = std::make_unique<KvPlanNode>(chain(chainDepth));
        KvPlanNode second = *first;
        // Only the lower half stays shared, so that giving up the first owner ends in the middle.
        KvPlanNode* at = &second;
        for (int level = 1; level < chainDepth / 2; ++level)
            at = &at->children.first();
        at->name = QStringLiteral("here");
        first.reset();
        QCOMPARE(depthOf(second), chainDepth);
        QCOMPARE(at->uniqueId, chainDepth / 2);
        QCOMPARE(at->name, QStringLiteral("here"));
        QCOMPARE(deepest(second).uniqueId, chainDepth);
    });
}

void KvPlanRecordsTest::sameChildrenInTwoPlacesOfOneTree()
{
    onSmallStack([] {
        const KvPlanNode shared = chain(chainDepth);
        auto root = std::make_unique<KvPlanNode>(named("root"));
        root->children = {named("left"), named("right"), shared};
        root->children[0].children = {shared, shared};
        root->children[1].children = root->children[0].children;
        root->children[2].children.append(root->children[1]);
        root.reset();
        QCOMPARE(depthOf(shared), chainDepth);
    });
}

QTEST_APPLESS_MAIN(KvPlanRecordsTest)
#include "KvPlanRecordsTest.moc"
