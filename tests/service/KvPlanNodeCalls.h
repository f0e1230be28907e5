#pragma once

#include <service/KvPlanNodeEndpoints.h>

#include <model/KvPlanRecordsDump.h>

#include <QtCore/QJsonObject>
#include <QtCore/QMetaType>

#include <functional>

/// The endpoint functions for plan nodes in the two shapes that most of them have, with arguments that matter
/// to nobody.
using NodeCall = std::function<bool(KvPlanNode&)>;
using ListCall = std::function<bool(QList<KvPlanNode>&)>;
Q_DECLARE_METATYPE(NodeCall)
Q_DECLARE_METATYPE(ListCall)

inline const QString n1 = QStringLiteral("n1");
inline const QString p1 = QStringLiteral("p1");
inline const QString told = QStringLiteral("told");

inline QJsonObject nodeObject(const QString& id, const QString& name)
{
    return {{QStringLiteral("_id"), id}, {QStringLiteral("name"), name}};
}

/// What the reader of a node makes of an empty object: all that the service tells is reset, but for the
/// predecessors, which it adds to.
inline KvPlanNode emptied(const KvPlanNode& before)
{
    KvPlanNode node;
    node.planNodeId = node.uniqueId = node.parentTaskId = 0;
    node.displaySimulation = false;
    node.predecessors = before.predecessors;
    node.notes = before.notes;
    node.duration = before.duration;
    node.startText = before.startText;
    node.durationText = before.durationText;
    node.finishSlack = before.finishSlack;
    node.finishText = before.finishText;
    node.type = before.type;
    node.children = before.children;
    node.reservedText1 = before.reservedText1;
    node.reservedText2 = before.reservedText2;
    node.reservedText3 = before.reservedText3;
    node.reservedText4 = before.reservedText4;
    node.reservedText5 = before.reservedText5;
    node.reservedUnits = before.reservedUnits;
    node.reservedInt1 = before.reservedInt1;
    node.reservedInt2 = before.reservedInt2;
    node.reservedInt3 = before.reservedInt3;
    node.reservedValue = before.reservedValue;
    node.reservedList = before.reservedList;
    node.reservedTail = before.reservedTail;
    return node;
}

inline KvPlanNodeCondition ofP1()
{
    KvPlanNodeCondition condition;
    condition.allTime = true;
    condition.planId = p1;
    return condition;
}

inline const NodeCall readOne = [](KvPlanNode& node) {
    return Kv::requestPlanNodeById(n1, node);
};
inline const NodeCall create = [](KvPlanNode& node) {
    return Kv::requestCreatePlanNode(node);
};
inline const NodeCall update = [](KvPlanNode& node) {
    KvPlanNode cached;
    cached.id = n1;
    return Kv::requestUpdatePlanNode(cached, node);
};
inline const ListCall readPage = [](QList<KvPlanNode>& nodes) {
    return Kv::requestPlanNodeRangeData(ofP1(), 0, 20, nodes);
};
inline const ListCall readPlans = [](QList<KvPlanNode>& nodes) {
    return Kv::requestPlanNodesByPlanIds({p1}, QString(), nodes);
};
inline const ListCall readTodo = [](QList<KvPlanNode>& nodes) {
    return Kv::requestTodoPlanNodes(0, 20, nodes, QString());
};
inline const ListCall createMany = [](QList<KvPlanNode>& nodes) {
    return Kv::requestCreatePlanNodes(p1, nodes);
};
inline const ListCall updateMany = [](QList<KvPlanNode>& nodes) {
    return Kv::requestUpdatePlanNodes({{KvPlanNode(), KvTest::fullPlanNode()}}, nodes);
};
