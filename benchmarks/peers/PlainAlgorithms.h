#pragma once

#include <model/KvPlanRecords.h>

#include <QtCore/QMap>

/// The tree as its rules are told: pass after pass over what has no parent in the tree yet, each node looked
/// up by walking through the tree. Quadratic, and recursive on depth.
void makeTreePlainly(QList<KvPlanNode>& nodes);

/// The flat list as its rules are told: each node and its children copied on the way. Recursive on depth.
void makeFlatPlainly(QList<KvPlanNode>& nodes);

/// Whether any node differs from the one that @p cache holds under its id, with the records and lists copied
/// as they are taken out.
bool hasChangedPlainly(const QList<KvPlanNode>& nodes, const QMap<QString, KvPlanNode>& cache);

/// Whether two nodes are equal in every field that the service sends.
bool isSamePlainly(const KvPlanNode& a, const KvPlanNode& b);
