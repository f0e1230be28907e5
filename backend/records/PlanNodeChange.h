#pragma once

#include "../store/Store.h"

#include <QJsonObject>

namespace PlanService {

/// The node @p stored, as Store::planNode() gave it, with what @p changes holds put in the place of what it
/// had, key by key; keys are those of a node that a client sends ("links", not "entity"). Keys that a client
/// cannot set are passed over. Nothing else changes, not even the stamp, when no value differs: the document
/// is then the same. Throws ApiError 400, which names the key, for a value that does not fit and for another
/// plan or project.
///
/// To change a node inside a transaction that is open: read it with planNode(), write the result with
/// updatePlanNode() where its document differs. Whoever reads and writes within one transaction keeps what
/// others changed under other keys.
/// @param index place of the changes in a list that the client sent, for messages; -1: they are no list's.
PlanNodeRecord changedPlanNode(const PlanNodeRecord& stored, const QJsonObject& changes, const QString& user,
                               int index = -1);

} // namespace PlanService
