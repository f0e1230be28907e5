#include "NodeChanges.h"

QVector<FieldChange> changesBetween(const KvPlanNode& before, const KvPlanNode& after)
{
    QVector<FieldChange> changes;
    for (const NodeField& field : nodeFields()) {
        if (field.fixed)
            continue;
        const QJsonValue was = field.value(before);
        const QJsonValue becomes = field.value(after);
        if (was != becomes)
            changes.append({&field, was, becomes});
    }
    return changes;
}
