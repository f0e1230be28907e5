#pragma once

#include <model/KvPlanRecords.h>

#include <QtCore/QJsonObject>

/// The readers of records as they are described, key by key and without any thought for speed: what the real
/// ones are compared with.
namespace PlainCodec {

void readPlan(const QJsonObject& in, KvPlan& out);
void readNode(const QJsonObject& in, KvPlanNode& out);
void readExchangePlan(const QJsonObject& in, KvPlan& out);
void readExchangeTask(const QJsonObject& in, KvPlanNode& out);

} // namespace PlainCodec
