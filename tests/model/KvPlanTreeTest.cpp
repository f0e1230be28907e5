#include <model/KvPlanDataUtils.h>

#include <QtCore/QProcess>
#include <QtTest/QtTest>

#include <cstdio>

namespace {

KvPlanNode makeNode(int planNodeId, int uniqueId, int parentTaskId)
{
    KvPlanNode node;
    node.planNodeId = planNodeId;
    node.uniqueId = uniqueId;
    node.parentTaskId = parentTaskId;
    node.name = QStringLiteral("task %1").arg(uniqueId);
    return node;
}

/// "row unique<parent" of each node, as in "1 10<-1  2 11<10".
QList<KvPlanNode> fromText(const QString& text)
{
    QList<KvPlanNode> nodes;
    const QStringList words = text.split(QStringLiteral("  "), Qt::SkipEmptyParts);
    for (const QString& word : words) {
        const int space = word.indexOf(QLatin1Char(' '));
        const int below = word.indexOf(QLatin1Char('<'));
        nodes.append(makeNode(word.left(space).toInt(), word.mid(space + 1, below - space - 1).toInt(),
                              word.mid(below + 1).toInt()));
    }
    return nodes;
}

/// The rows of a tree, children in brackets: "1[2 3[4]] 5".
QString rows(const QList<KvPlanNode>& nodes)
{
    QStringList texts;
    for (const KvPlanNode& node : nodes) {
        const QString children =
            node.children.isEmpty() ? QString() : QStringLiteral("[%1]").arg(rows(node.children));
        texts.append(QString::number(node.planNodeId) + children);
    }
    return texts.join(QLatin1Char(' '));
}

} // namespace

class KvPlanTreeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void makesATree_data();
    void makesATree();
    void keepsWhatANodeHolds();
    void leavesSharedListsAlone();
    void makesAFlatList();
    void carriedChildrenStayAndTakeChildren();
    void appendsDescendantsBeforeTheirAncestor();
    void attachesToTheFirstInReadingOrder();
    void attachesANodeOfTheTreeItself();
    void attachesNothingWithoutAParent();
    void tellsCycles_data();
    void tellsCycles();
    void aCycleNeverReturns();
};

void KvPlanTreeTest::makesATree_data()
{
    QTest::addColumn<QString>("nodes");
    QTest::addColumn<QString>("tree");
    const auto row = [](const char* name, const char* nodes, const char* tree) {
        QTest::newRow(name) << QString::fromLatin1(nodes) << QString::fromLatin1(tree);
    };
    row("nothing", "", "");
    row("one node", "1 10<-1", "1");
    row("ordinary plan", "1 10<-1  2 11<10  3 12<11  4 13<10  5 14<-1", "1[2[3] 4] 5");
    row("listed in any order", "4 13<10  2 11<10  5 14<-1  3 12<11  1 10<-1", "1[2[3] 4] 5");
    row("missing parent", "1 10<99  2 11<10", "1[2]");
    row("negative numbers", "-3 -10<7  -2 -11<-10  -1 -12<-11", "-3[-2[-1]]");
    row("parent -1 is a root", "1 10<-1  2 11<-1", "1 2");
    row("parent -1 that some node has", "1 10<-1  2 -1<50", "2[1]");
    row("own parent", "1 10<10  2 11<10", "1[2]");
    row("own parent below a node of the same number", "1 10<-1  2 10<10  3 11<10", "1[3] 2");
    row("child before its parent goes behind its siblings", "1 11<10  2 10<-1  3 12<10  4 13<10", "2[3 4 1]");
    row("child of a waiting parent comes in the same later round", "1 11<10  2 12<11  3 10<-1  4 13<11",
        "3[1[2 4]]");
    row("all in reverse", "1 14<13  2 13<12  3 12<11  4 11<-1", "4[3[2[1]]]");
    row("number twice: the first root takes all", "1 10<-1  2 10<-1  3 11<10  4 12<10", "1[3 4] 2");
    row("number twice: deeper but in an earlier root", "1 10<-1  2 20<-1  3 20<10  4 30<20", "1[3[4]] 2");
    row("number twice: the one that is there first takes the early ones",
        "1 20<-1  2 30<20  3 10<-1  4 31<20", "1[2 4] 3");
    row("number twice: a later but earlier-read node takes the rest",
        "1 10<-1  2 20<-1  3 30<20  4 20<10  5 31<20", "1[4[5]] 2[3]");
}

void KvPlanTreeTest::makesATree()
{
    QFETCH(QString, nodes);
    QList<KvPlanNode> list = fromText(nodes);
    KvPlanDataUtils::makePlanNodeListTree(list);
    QTEST(rows(list), "tree");
}

void KvPlanTreeTest::keepsWhatANodeHolds()
{
    QList<KvPlanNode> nodes = fromText(QStringLiteral("1 11<10  2 10<-1"));
    nodes[0].userIds = QStringList{QStringLiteral("u1")};
    nodes[0].reservedTail = 7;
    nodes[0].startDate = QDateTime(QDate(2024, 3, 5), QTime(8, 0));
    const KvPlanNode before = nodes.at(0);
    KvPlanDataUtils::makePlanNodeListTree(nodes);
    const KvPlanNode& child = nodes.at(0).children.at(0);
    QCOMPARE(child.name, before.name);
    QCOMPARE(child.userIds, before.userIds);
    QCOMPARE(child.reservedTail, before.reservedTail);
    QCOMPARE(child.startDate, before.startDate);
    KvPlanDataUtils::makePlanNodeListFlat(nodes);
    QCOMPARE(nodes.at(0).name, before.name);
    QCOMPARE(nodes.at(0).userIds, before.userIds);
    QCOMPARE(nodes.at(0).reservedTail, before.reservedTail);
    QCOMPARE(nodes.at(0).startDate, before.startDate);
}

void KvPlanTreeTest::leavesSharedListsAlone()
{
    const QString text = QStringLiteral("1 10<-1  2 11<10  3 12<11");
    const QList<KvPlanNode> flat = fromText(text);
    QList<KvPlanNode> tree = flat;
    KvPlanDataUtils::makePlanNodeListTree(tree);
    QCOMPARE(rows(flat), QStringLiteral("1 2 3"));
    const QList<KvPlanNode> keptTree = tree;
    KvPlanDataUtils::makePlanNodeListFlat(tree);
    QCOMPARE(rows(tree), QStringLiteral("1 2 3"));
    QCOMPARE(rows(keptTree), QStringLiteral("1[2[3]]"));
    QCOMPARE(keptTree.at(0).children.at(0).children.at(0).name, flat.at(2).name);
}

void KvPlanTreeTest::makesAFlatList()
{
    QList<KvPlanNode> nodes;
    KvPlanDataUtils::makePlanNodeListFlat(nodes);
    QVERIFY(nodes.isEmpty());

    nodes = fromText(QStringLiteral("5 10<-1  1 11<10  4 12<11  3 13<12  2 14<-1"));
    KvPlanDataUtils::makePlanNodeListTree(nodes);
    QCOMPARE(rows(nodes), QStringLiteral("2 5[1[4[3]]]"));
    KvPlanDataUtils::makePlanNodeListFlat(nodes);
    QCOMPARE(rows(nodes), QStringLiteral("1 2 3 4 5"));

    // Nodes of equal rows come out as the tree gives them up, descendants first.
    nodes = fromText(QStringLiteral("7 10<-1  7 11<10  7 12<11  7 13<10"));
    KvPlanDataUtils::makePlanNodeListTree(nodes);
    KvPlanDataUtils::makePlanNodeListFlat(nodes);
    QList<int> uniqueIds;
    for (const KvPlanNode& node : nodes)
        uniqueIds.append(node.uniqueId);
    QCOMPARE(uniqueIds, (QList<int>{12, 11, 13, 10}));
}

void KvPlanTreeTest::carriedChildrenStayAndTakeChildren()
{
    QList<KvPlanNode> nodes = fromText(QStringLiteral("1 10<-1  2 11<10  3 30<20  4 20<-1  5 12<10"));
    nodes[1].children = fromText(QStringLiteral("90 20<0  91 21<0"));
    const QList<KvPlanNode> carried = nodes.at(1).children;
    KvPlanDataUtils::makePlanNodeListTree(nodes);
    QCOMPARE(rows(nodes), QStringLiteral("1[2[90[3] 91] 5] 4"));
    QCOMPARE(rows(carried), QStringLiteral("90 91"));
}

void KvPlanTreeTest::appendsDescendantsBeforeTheirAncestor()
{
    QList<KvPlanNode> tree = fromText(QStringLiteral("1 10<-1  2 11<10  3 12<11  4 13<10"));
    KvPlanDataUtils::makePlanNodeListTree(tree);
    QList<KvPlanNode> flat = fromText(QStringLiteral("9 99<-1"));
    KvPlanDataUtils::addPlanNode(tree.at(0), flat);
    QCOMPARE(rows(flat), QStringLiteral("9 3 2 4 1"));
    QCOMPARE(rows(tree), QStringLiteral("1[2[3] 4]"));

    KvPlanDataUtils::addPlanNode(tree.takeFirst(), flat);
    QCOMPARE(rows(flat), QStringLiteral("9 3 2 4 1 3 2 4 1"));
    QCOMPARE(flat.at(5).name, QStringLiteral("task 12"));
}

void KvPlanTreeTest::attachesToTheFirstInReadingOrder()
{
    QList<KvPlanNode> tree = fromText(QStringLiteral("1 10<-1  2 20<-1  3 20<10"));
    KvPlanDataUtils::makePlanNodeListTree(tree);
    const QList<KvPlanNode> before = tree;
    KvPlanNode node = makeNode(4, 30, 20);
    node.children = fromText(QStringLiteral("5 31<30"));
    QVERIFY(KvPlanDataUtils::attachChildNode(node, tree));
    QCOMPARE(rows(tree), QStringLiteral("1[3[4[5]]] 2"));
    QCOMPARE(rows(before), QStringLiteral("1[3] 2"));
}

void KvPlanTreeTest::attachesANodeOfTheTreeItself()
{
    QList<KvPlanNode> tree = fromText(QStringLiteral("1 10<11  2 11<10"));
    tree[0].children.append(tree.takeAt(1));
    QVERIFY(KvPlanDataUtils::attachChildNode(tree.at(0), tree));
    QCOMPARE(rows(tree), QStringLiteral("1[2[1[2]]]"));
}

void KvPlanTreeTest::attachesNothingWithoutAParent()
{
    QList<KvPlanNode> tree;
    QVERIFY(!KvPlanDataUtils::attachChildNode(makeNode(1, 10, -1), tree));
    QVERIFY(tree.isEmpty());

    tree = fromText(QStringLiteral("1 10<-1  2 11<10"));
    KvPlanDataUtils::makePlanNodeListTree(tree);
    const QList<KvPlanNode> shared = tree;
    QVERIFY(!KvPlanDataUtils::attachChildNode(makeNode(3, 12, 99), tree));
    QCOMPARE(rows(tree), QStringLiteral("1[2]"));
    QVERIFY(tree.isSharedWith(shared));
}

void KvPlanTreeTest::tellsCycles_data()
{
    using Cycles = QList<QList<int>>;
    QTest::addColumn<QString>("nodes");
    QTest::addColumn<Cycles>("cycles");
    const auto row = [](const char* name, const char* nodes, const Cycles& cycles) {
        QTest::newRow(name) << QString::fromLatin1(nodes) << cycles;
    };
    row("nothing", "", {});
    row("ordinary plan", "1 10<-1  2 11<10  3 12<11", {});
    row("own parent is no cycle", "1 10<10  2 11<10", {});
    row("two nodes", "1 10<11  2 11<10", {{0, 1}});
    row("three, told upwards from the first", "1 10<12  2 11<10  3 12<11", {{0, 2, 1}});
    row("starts at the lowest position", "1 5<-1  2 12<11  3 10<12  4 11<10", {{1, 3, 2}});
    row("what hangs below is not named", "1 30<10  2 10<11  3 11<10  4 31<30", {{1, 2}});
    row("two cycles in order", "1 10<11  2 20<21  3 21<20  4 11<10", {{0, 3}, {1, 2}});
    row("number twice, one of them at the top", "1 10<11  2 11<10  3 11<-1", {});
    row("number twice, both waiting", "1 10<11  2 11<10  3 11<10", {{0, 1}});
    row("reached from a node before it", "1 40<30  2 30<10  3 10<11  4 11<10", {{2, 3}});
}

void KvPlanTreeTest::tellsCycles()
{
    QFETCH(QString, nodes);
    using Cycles = QList<QList<int>>;
    QFETCH(Cycles, cycles);
    QCOMPARE(KvPlanDataUtils::findParentCycles(fromText(nodes)), cycles);
}

// In a process of its own, which is seen to begin the call, to be still in it a while later, and is then
// ended.
void KvPlanTreeTest::aCycleNeverReturns()
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--cycle")});
    QVERIFY(process.waitForStarted());
    QVERIFY(process.waitForReadyRead());
    QCOMPARE(process.readAllStandardOutput(), QByteArray("acyclic returned, cyclic begins\n"));
    QVERIFY(!process.waitForFinished(1500));
    QCOMPARE(process.state(), QProcess::Running);
    QCOMPARE(process.readAllStandardOutput(), QByteArray());
    process.kill();
    QVERIFY(process.waitForFinished());
}

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    if (application.arguments().contains(QStringLiteral("--cycle"))) {
        QList<KvPlanNode> acyclic = fromText(QStringLiteral("1 10<12  2 11<10  3 12<-1"));
        KvPlanDataUtils::makePlanNodeListTree(acyclic);
        std::printf("acyclic returned, cyclic begins\n");
        std::fflush(stdout);
        QList<KvPlanNode> cyclic = fromText(QStringLiteral("1 10<12  2 11<10  3 12<11"));
        KvPlanDataUtils::makePlanNodeListTree(cyclic);
        std::printf("cyclic returned\n");
        return 0;
    }
    KvPlanTreeTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "KvPlanTreeTest.moc"
