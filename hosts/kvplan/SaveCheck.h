#pragma once

#include "NodeEdits.h"

/// What a plan holds of edits that were saved.
struct SaveFindings
{
    QList<KvPlanNode> created; ///< as the plan has them, in the order of the edits
    QList<KvPlanNode> updated;
    /// One line each for what was sent and is not so; the first few of each kind, then a count.
    QStringList problems;
};

/// Compares @p edits with the tasks that the plan has after them. New tasks are known by their number among
/// those whose ids are not in @p before.
SaveFindings checkSaved(const QVector<NodeEdit>& edits, const QList<KvPlanNode>& before,
                        const QList<KvPlanNode>& after);
