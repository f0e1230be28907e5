// Trees, flat lists and circles of parents, of any list: they are those of the step by step description.

#include "FuzzTarget.h"

#include <model/PlainTree.h>

#include <model/KvPlanDataUtils.h>

#include <vector>

namespace {

constexpr std::size_t MostNodes = 48; // the description's own steps take time cubed

/// A list of four bytes a node: row, number, parent's number, and where it stands: in the list, or below the
/// node before it, one level deeper or so many levels up. The first byte says how far apart the numbers lie.
QList<KvPlanNode> listOf(const std::uint8_t* data, std::size_t size)
{
    struct Level
    {
        QList<KvPlanNode> nodes;
    };
    const int apart = size > 0 && data[0] % 2 == 1 ? 100003 : 1;
    std::vector<Level> levels(1);
    const auto closeLevel = [&] {
        const QList<KvPlanNode> children = levels.back().nodes;
        levels.pop_back();
        levels.back().nodes.last().children = children;
    };
    for (std::size_t at = 1; at + 4 <= size && at / 4 < MostNodes; at += 4) {
        const int place = data[at + 3] % 8;
        if (place == 7 && !levels.back().nodes.isEmpty())
            levels.push_back({});
        for (int up = place; up < 7 && up > 4 && levels.size() > 1; --up)
            closeLevel();
        KvPlanNode node;
        node.id = QString::number(at); // tells the nodes apart, whatever their numbers
        node.planNodeId = static_cast<std::int8_t>(data[at]) * apart;
        node.uniqueId = static_cast<std::int8_t>(data[at + 1]) * apart;
        node.parentTaskId = static_cast<std::int8_t>(data[at + 2]) * apart;
        levels.back().nodes.append(node);
    }
    while (levels.size() > 1)
        closeLevel();
    return levels.front().nodes;
}

QString asText(const QList<KvPlanNode>& nodes)
{
    QString text;
    for (const KvPlanNode& node : nodes) {
        text += node.id;
        text += node.children.isEmpty() ? QStringLiteral(" ")
                                        : QStringLiteral("[%1] ").arg(asText(node.children));
    }
    return text;
}

void requireSame(const QList<KvPlanNode>& actual, const QList<KvPlanNode>& expected, const char* what)
{
    if (asText(actual) != asText(expected))
        KvFuzz::fail(
            QStringLiteral("%1:\n%2\n%3").arg(QString::fromUtf8(what), asText(actual), asText(expected)));
}

void checkTree(const QList<KvPlanNode>& nodes)
{
    QList<KvPlanNode> expected = nodes;
    PlainTree::makePlanNodeListTree(expected);
    QList<KvPlanNode> shared = nodes;
    KvPlanDataUtils::makePlanNodeListTree(shared);
    requireSame(shared, expected, "tree of a shared list");
    QList<KvPlanNode> owned = nodes;
    owned.detach();
    KvPlanDataUtils::makePlanNodeListTree(owned);
    requireSame(owned, expected, "tree of a list of its own");
}

void checkFlat(const QList<KvPlanNode>& nodes)
{
    QList<KvPlanNode> expected = nodes;
    PlainTree::makePlanNodeListFlat(expected);
    QList<KvPlanNode> shared = nodes;
    KvPlanDataUtils::makePlanNodeListFlat(shared);
    requireSame(shared, expected, "flat list of a shared tree");
    QList<KvPlanNode> owned = nodes;
    owned.detach();
    KvPlanDataUtils::makePlanNodeListFlat(owned);
    requireSame(owned, expected, "flat list of a tree of its own");
}

void checkSteps(const QList<KvPlanNode>& nodes)
{
    QList<KvPlanNode> tree;
    QList<KvPlanNode> expected;
    QList<KvPlanNode> flat;
    QList<KvPlanNode> expectedFlat;
    for (const KvPlanNode& node : nodes) {
        const bool attached = KvPlanDataUtils::attachChildNode(node, tree);
        KvFuzz::require(attached == PlainTree::attachChildNode(node, expected), "whether a parent was found");
        if (!attached) {
            tree.append(node);
            expected.append(node);
        }
        KvPlanDataUtils::addPlanNode(node, flat);
        PlainTree::addPlanNode(node, expectedFlat);
    }
    requireSame(tree, expected, "nodes attached one by one");
    requireSame(flat, expectedFlat, "nodes added one by one");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QList<KvPlanNode> nodes = listOf(data, size);
    const QString before = asText(nodes);
    const bool returns = PlainTree::treeReturns(nodes);
    KvFuzz::require(KvPlanDataUtils::findParentCycles(nodes).isEmpty() == returns, "circles of parents");
    if (returns)
        checkTree(nodes);
    checkFlat(nodes);
    checkSteps(nodes);
    KvFuzz::require(asText(nodes) == before, "the list that was passed");
    return 0;
}
