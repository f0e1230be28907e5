#pragma once

#include <model/KvPlanNode.h>

#include <QtCore/QVector>

/// A plan whose tasks build elements: some fifty are at work on every day, each on ten elements of its own.
namespace SimulatedPlan {

constexpr int elementsOfTask = 10;

QList<KvPlanNode> nodes(int tasks);
QVector<const KvPlanNode*> listed(const QList<KvPlanNode>& nodes);
QString elementName(int number);
/// In the middle of the plan, at half a day in a second and thirty pictures a second.
QDateTime dateOf(int picture, int tasks);

} // namespace SimulatedPlan
