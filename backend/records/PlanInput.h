#pragma once

#include "../json/JsonSlices.h"
#include "../store/Store.h"

#include <QJsonObject>

namespace PlanService {

constexpr int mostNodes = 100000;                   ///< in one request
constexpr int largestSingleNode = 16 * 1024 * 1024; ///< bytes of a body that is one node

/// A plan as a client sends it: the nodes under "projectData", everything else beside them. Or nodes alone.
struct PlanInput
{
    QJsonObject plan; ///< without "projectData"
    bool hasNodes = false;
    const char* list = "projectData"; ///< where the nodes stand, for messages; empty: they are the whole body
    QByteArray text;                  ///< of the whole body; nodes are parsed one by one
    QVector<JsonSlice> nodes;         ///< in text
};

/// Throws ApiError: 400 when the body is no JSON object or "projectData" no list, 413 for too many nodes.
PlanInput readPlanInput(const QByteArray& body);

/// A body that is a list of nodes. Throws ApiError: 400 when it is no JSON array, 413 for too many nodes.
PlanInput readNodeList(const QByteArray& body);

/// A body that is one node. Throws ApiError 400, 413 when it is larger than a node may be.
PlanInput readSingleNode(const QByteArray& body);

/// Node @p index of the input, an object; what else it is is not looked at. Throws ApiError 400.
QJsonObject parsedNode(const PlanInput& input, int index);

/// As "projectData[3]" or "[3]"; empty for a body that is the node.
QString pathOfNode(const PlanInput& input, int index);

/// Who wrote a record when.
struct Stamp
{
    QString createdAt;
    QString createdBy;
    QString updatedAt;
    QString updatedBy;
};

/// A plan that does not exist yet, with an id of its own. Throws ApiError 400.
PlanRecord newPlan(const QJsonObject& input, const QString& user);

/// The plan with what @p input holds put in the place of what it had, key by key. Keys that a client cannot
/// set are passed over. Nothing else changes, not even the stamp, when no value differs. Throws ApiError 400.
PlanRecord changedPlan(const PlanRecord& plan, const QJsonObject& input, const QString& user);

/// The same plan with what it stands for elsewhere in the document: id, name and stamp.
PlanRecord copiedPlan(const PlanRecord& plan, const QString& name, const QString& user);

/// 24 hex digits.
QString newPlanId();

} // namespace PlanService
