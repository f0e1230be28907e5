#include "SaveCheck.h"

#include "CellText.h"
#include "ProblemKind.h"

#include <QtCore/QHash>
#include <QtCore/QSet>

namespace {

QString named(const KvPlanNode& node)
{
    return QStringLiteral("task %1 \"%2\"").arg(node.planNodeId).arg(fitted(node.name, 60));
}

// The first field that is not as it was sent; null when all are.
const FieldChange* firstLost(const NodeEdit& edit, const KvPlanNode& node)
{
    for (const FieldChange& change : edit.changes) {
        if (change.field->isSent(edit.node) && change.field->value(node) != change.becomes)
            return &change;
    }
    return nullptr;
}

} // namespace

SaveFindings checkSaved(const QVector<NodeEdit>& edits, const QList<KvPlanNode>& before,
                        const QList<KvPlanNode>& after)
{
    SaveFindings findings;
    QSet<QString> known;
    for (const KvPlanNode& node : before)
        known.insert(node.id);
    QHash<QString, const KvPlanNode*> byId;
    QHash<int, const KvPlanNode*> newByNumber;
    for (const KvPlanNode& node : after) {
        byId.insert(node.id, &node);
        if (!known.contains(node.id))
            newByNumber.insert(node.uniqueId, &node);
    }
    ProblemKind other(findings.problems);
    ProblemKind missing(findings.problems); // goes first, and stands first then
    for (const NodeEdit& edit : edits) {
        const KvPlanNode* node =
            edit.isNew ? newByNumber.value(edit.node.uniqueId) : byId.value(edit.node.id);
        if (!node) {
            missing.add([&] {
                return edit.isNew ? QStringLiteral("%1 was not created").arg(named(edit.node))
                                  : QStringLiteral("%1 is gone").arg(named(edit.node));
            });
            continue;
        }
        if (const FieldChange* lost = firstLost(edit, *node)) {
            other.add([&] {
                return QStringLiteral("%1: \"%2\" was to become %3 and is %4")
                    .arg(named(edit.node), lost->field->name, lost->field->shown(lost->becomes),
                         lost->field->shown(lost->field->value(*node)));
            });
            continue;
        }
        (edit.isNew ? findings.created : findings.updated).append(*node);
    }
    return findings;
}
