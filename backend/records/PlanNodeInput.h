#pragma once

#include "PlanInput.h"

#include <functional>

namespace PlanService {

/// Ids of nodes that are written together follow each other, which keeps the store's index of ids compact.
class NodeIds
{
public:
    NodeIds();
    /// 24 hex digits.
    QString next();

private:
    QString m_prefix;
    quint32 m_number = 0;
};

/// Finds the node of the plan that has this id. Nothing: there is none.
using FindNode = std::function<std::optional<PlanNodeRecord>(const QString& id)>;

/// The nodes of @p input as nodes of @p plan, in its order; a plan without an id stands for none. A node
/// keeps the id it was sent with, one without gets a new one; category, project and stamps come from the plan
/// and from @p user. A node that
/// @p findStored knows keeps who made it and when, and counts as changed only when it differs. One without
/// a row number gets its place in the list, counted on from @p rowsBefore. Throws ApiError 400, which names
/// the node and its key, and for an id that occurs twice.
QVector<PlanNodeRecord> readPlanNodes(const PlanInput& input, const PlanRecord& plan, const QString& user,
                                      NodeIds& ids, const FindNode& findStored = {}, int rowsBefore = 0);

/// Gives the node, whose document was written here, another id.
void giveId(PlanNodeRecord& node, const QString& id);

/// Every category that the nodes have.
QStringList categoriesOf(const QVector<PlanNodeRecord>& nodes);

} // namespace PlanService
