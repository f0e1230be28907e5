#pragma once

#include <model/KvPlanRecords.h>

#include <QtCore/QCborMap>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

/// Conversion between the records and the JSON of the task service.
///
/// Readers never fail: a missing or mistyped key reads as empty, 0, 0.0 or false, whatever the record's own
/// default is. Writers leave unset values out. Several keys differ between the two directions, because the
/// service names or types the same data differently when it sends it and when it takes it.
namespace Kv {

class KvDecodePool;
class KvEncodePool;

void jsonObjectToPlan(const QJsonObject& in, KvPlan& out);
/// The same for one plan of many, as for a node of many below.
void jsonObjectToPlan(const QJsonObject& in, KvPlan& out, KvDecodePool& pool);
void planToJsonObject(const KvPlan& in, QJsonObject& out);

void jsonObjectToPlanNode(const QJsonObject& in, KvPlanNode& out);
/// The same for one node of many: text and dates that repeat from node to node are kept once in @p pool.
void jsonObjectToPlanNode(const QJsonObject& in, KvPlanNode& out, KvDecodePool& pool);
void planNodeToJsonObject(const KvPlanNode& in, QJsonObject& out, bool withId);
/// The same for one node of many, as an object of its own.
QJsonObject planNodeToJsonObject(const KvPlanNode& in, bool withId, KvEncodePool& pool);

KvPlanPredecessor jsonObjectToPredecessor(const QJsonObject& in);
QJsonObject predecessorToJsonObject(const KvPlanPredecessor& in);
/// All those of a node of many; the exchange format takes them in this form too.
QJsonArray predecessorsToJsonArray(const QList<KvPlanPredecessor>& in, KvEncodePool& pool);

KvDuration jsonObjectToDuration(const QJsonObject& in);
/// The same for one of many, and for the exchange format, which writes durations alike.
void readDuration(const QCborMap& in, KvDuration& out);
QJsonObject durationToJsonObject(const KvDuration& in);
/// The same for one of many.
QJsonValue durationToJsonValue(const KvDuration& in, KvEncodePool& pool);

KvDocument jsonObjectToDocument(const QJsonObject& in);

} // namespace Kv
