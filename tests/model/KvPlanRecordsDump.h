#pragma once

#include <model/KvPlanRecords.h>

#include <QtCore/QJsonObject>
#include <QtCore/QString>

/// Records as JSON under their own field names, so that tests compare whole records and show what differs.
/// This is no service format: every field is there, whatever its value.
namespace KvTest {

/// Every field in declaration order, as `visit(name, pointer to member)`.
template<class Visit>
void visitPlanNodeFields(Visit&& visit)
{
    visit("id", &KvPlanNode::id);
    visit("category", &KvPlanNode::category);
    visit("name", &KvPlanNode::name);
    visit("reservedText1", &KvPlanNode::reservedText1);
    visit("finishedPercentage", &KvPlanNode::finishedPercentage);
    visit("planNodeId", &KvPlanNode::planNodeId);
    visit("uniqueId", &KvPlanNode::uniqueId);
    visit("parentTaskId", &KvPlanNode::parentTaskId);
    visit("guid", &KvPlanNode::guid);
    visit("planId", &KvPlanNode::planId);
    visit("planName", &KvPlanNode::planName);
    visit("projectId", &KvPlanNode::projectId);
    visit("reservedText2", &KvPlanNode::reservedText2);
    visit("notes", &KvPlanNode::notes);
    visit("reservedUnits", &KvPlanNode::reservedUnits);
    visit("summary", &KvPlanNode::summary);
    visit("milestone", &KvPlanNode::milestone);
    visit("predecessors", &KvPlanNode::predecessors);
    visit("startDate", &KvPlanNode::startDate);
    visit("finishDate", &KvPlanNode::finishDate);
    visit("duration", &KvPlanNode::duration);
    visit("startText", &KvPlanNode::startText);
    visit("durationText", &KvPlanNode::durationText);
    visit("finishSlack", &KvPlanNode::finishSlack);
    visit("finishText", &KvPlanNode::finishText);
    visit("type", &KvPlanNode::type);
    visit("reservedInt1", &KvPlanNode::reservedInt1);
    visit("reservedInt2", &KvPlanNode::reservedInt2);
    visit("reservedInt3", &KvPlanNode::reservedInt3);
    visit("children", &KvPlanNode::children);
    visit("remark", &KvPlanNode::remark);
    visit("isDistributed", &KvPlanNode::isDistributed);
    visit("dynamicEffect", &KvPlanNode::dynamicEffect);
    visit("displaySimulation", &KvPlanNode::displaySimulation);
    visit("entityHideDate", &KvPlanNode::entityHideDate);
    visit("entityHideType", &KvPlanNode::entityHideType);
    visit("planWorkload", &KvPlanNode::planWorkload);
    visit("actualWorkload", &KvPlanNode::actualWorkload);
    visit("createdAt", &KvPlanNode::createdAt);
    visit("updatedAt", &KvPlanNode::updatedAt);
    visit("createdBy", &KvPlanNode::createdBy);
    visit("updatedBy", &KvPlanNode::updatedBy);
    visit("actualStartDate", &KvPlanNode::actualStartDate);
    visit("actualFinishDate", &KvPlanNode::actualFinishDate);
    visit("reservedValue", &KvPlanNode::reservedValue);
    visit("reservedText3", &KvPlanNode::reservedText3);
    visit("reservedText4", &KvPlanNode::reservedText4);
    visit("reservedText5", &KvPlanNode::reservedText5);
    visit("userIds", &KvPlanNode::userIds);
    visit("executeIds", &KvPlanNode::executeIds);
    visit("cooperateIds", &KvPlanNode::cooperateIds);
    visit("links", &KvPlanNode::links);
    visit("reservedList", &KvPlanNode::reservedList);
    visit("documentIds", &KvPlanNode::documentIds);
    visit("documents", &KvPlanNode::documents);
    visit("reservedTail", &KvPlanNode::reservedTail);
    visit("materialBills", &KvPlanNode::materialBills);
}

QJsonObject dump(const KvDuration& duration);
QJsonObject dump(const KvPlanPredecessor& predecessor);
QJsonObject dump(const KvDocument& document);
QJsonObject dump(const KvPlanNode& node);
QJsonObject dump(const KvPlan& plan);

/// A node, or plan, in which every field holds something else than its default. Two of different @p seed
/// differ in every field; flags and numbers between an odd and an even one.
KvPlanNode fullPlanNode(int seed = 1);
KvPlan fullPlan(int seed = 1);

/// The keys whose values differ, one a line, for people; empty when both objects are equal.
QString difference(const QJsonObject& actual, const QJsonObject& expected);

/// Reads a file of the tests' data as a JSON object; an unreadable one is fatal, for it is a mistake of the
/// test.
QJsonObject readJsonFile(const QString& path);

} // namespace KvTest
