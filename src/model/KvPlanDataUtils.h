#pragma once

#include <model/KvPlanRecords.h>

#include <QtCore/QJsonObject>
#include <QtCore/QList>

/// Plan nodes as a tree, and plans in the exchange format of schedule files. Plain functions over the
/// records: nothing here knows the service or a cache. All may be called from any thread that owns its
/// arguments.
namespace KvPlanDataUtils {

/// Replaces the flat list @p nodes by the list of its root nodes, each with its descendants in `children`.
///
/// A node's parent is the node whose `uniqueId` is its `parentTaskId`. A node is a root when the list has no
/// such node, or when it names itself. Roots stand in ascending order of `planNodeId`, nodes with equal
/// numbers in no defined order. Children do too, except that a child which comes before its parent, or before
/// an ancestor that has to wait in its turn, follows behind those that were placed in earlier rounds.
///
/// When a number occurs more than once, a child goes under the first such node in reading order (a node
/// before its descendants) of the tree as it stands when the child is placed. Children that a node brings
/// along stay with it, before all others, and take children by their numbers too.
///
/// Takes n log n time; nodes are moved, not copied, unless @p nodes shares its data.
/// Never returns when nodes name each other as parents in a circle: ask `findParentCycles` first when the
/// list comes from outside.
KVPLANDATA_EXPORT void makePlanNodeListTree(QList<KvPlanNode>& nodes);

/// Replaces @p nodes, a tree or partly one, by the flat list of all its nodes in ascending order of
/// `planNodeId`, each with empty `children`. Nodes with equal numbers stand in no defined order. Takes n log
/// n time.
KVPLANDATA_EXPORT void makePlanNodeListFlat(QList<KvPlanNode>& nodes);

/// Appends to @p flat the descendants of @p node and then the node itself, all with empty `children`:
/// children in list order, each behind its own descendants. Moves what it takes when the caller moves @p node
/// in.
KVPLANDATA_EXPORT void addPlanNode(KvPlanNode node, QList<KvPlanNode>& flat);

/// Appends a copy of @p node, its children included, to the children of the first node in reading order (a
/// node before its descendants) of @p tree whose `uniqueId` is the `parentTaskId` of @p node. Looks at each
/// node of @p tree in turn; to build a whole tree use `makePlanNodeListTree`.
/// @return false when there is no such node; @p tree is then unchanged.
KVPLANDATA_EXPORT bool attachChildNode(const KvPlanNode& node, QList<KvPlanNode>& tree);

/// The circles of parents that keep `makePlanNodeListTree` from returning; empty exactly when it returns.
///
/// Each circle is a list of positions in @p nodes: the node at each position has the `uniqueId` of the node
/// at the next one as its `parentTaskId`, the last that of the first. A circle starts with its lowest
/// position, and the circles are in order of these; no position occurs twice. When several nodes have the
/// same `uniqueId`, the first of them stands for all, so there may be further circles once those told are
/// mended. Nodes that merely hang below a circle are not named.
///
/// Takes n log n time at most; @p nodes is only read.
KVPLANDATA_EXPORT QList<QList<int>> findParentCycles(const QList<KvPlanNode>& nodes);

/// Reads a plan in the exchange format: "Name", "MPPFilePath" and the tasks of "AllTasks", which are appended
/// to `planNodes` as a flat list (the hierarchy is in `parentTaskId`). All other fields of @p out stay as
/// they are. Never fails: a missing or mistyped key reads as empty, 0 or false.
KVPLANDATA_EXPORT void jsonObjectToPlanMPXJ(const QJsonObject& in, KvPlan& out);

/// Reads one task of the exchange format. Fields without a key in that format stay as they are; predecessors
/// are appended. "Start" and "Finish" are local time in the form yyyy-MM-ddThh:mm:ss, anything else gives an
/// invalid date-time. "Notes" is read as a flag: `notes` becomes one character, of code 0 or 1.
/// "TargetTaskUniqueID" of a predecessor becomes one character too, of the code that is the number's low
/// byte.
KVPLANDATA_EXPORT void jsonObjectToPlanNodeMPJX(const QJsonObject& in, KvPlanNode& out);

/// Writes a task in the exchange format, all keys always. Its predecessors get the keys of the service's
/// format, unlike those that are read; `milestone` and `children` are not written. Other keys of @p out stay.
KVPLANDATA_EXPORT void planNodeToJsonObjectMPXJ(const KvPlanNode& in, QJsonObject& out);

/// Writes "Name" and, under "AllPlanNodes", the nodes of a flat list; make a tree flat before. Neither
/// `mppFilePath` nor any other field of the plan is written. Other keys of @p out stay.
KVPLANDATA_EXPORT void planToJsonObjectMPXJ(const KvPlan& in, QJsonObject& out);

} // namespace KvPlanDataUtils
