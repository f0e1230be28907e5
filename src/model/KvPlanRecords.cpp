#include <model/KvPlanRecords.h>

#include <QtCore/QVector>

#include <new>
#include <utility>

KvPlanNode::KvPlanNode() = default;
KvPlanNode::KvPlanNode(const KvPlanNode& other) = default;
KvPlanNode::KvPlanNode(KvPlanNode&& other) noexcept = default;

// Through a node of its own, because `other` may live in our children: assigned field by field, it would be
// destroyed with them half way.
KvPlanNode& KvPlanNode::operator=(KvPlanNode&& other) noexcept
{
    KvPlanNode taken(std::move(other));
    this->~KvPlanNode();
    return *new (this) KvPlanNode(std::move(taken));
}

KvPlanNode& KvPlanNode::operator=(const KvPlanNode& other)
{
    return *this = KvPlanNode(other);
}

// Children nest by value, so the members' own destructors would recurse once a level and a deep plan would
// end the stack. Taking the lists apart here, level by level, leaves every destroyed node without children.
KvPlanNode::~KvPlanNode()
{
    if (children.isEmpty() || !children.isDetached())
        return;
    QVector<QList<KvPlanNode>> pending;
    pending.append(std::move(children));
    while (!pending.isEmpty()) {
        QList<KvPlanNode> level = pending.takeLast();
        if (!level.isDetached())
            continue; // somebody else holds these nodes; giving up our share touches none of them
        for (KvPlanNode& node : level) {
            if (!node.children.isEmpty())
                pending.append(std::move(node.children));
        }
    }
}
