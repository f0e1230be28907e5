#pragma once

#include <model/KvKeptValues.h>
#include <model/KvObjectWriter.h>
#include <model/KvPlanNode.h>

#include <QtCore/QJsonValue>

namespace Kv {

/// What the writing of many records of one list has in common, so that it is made once, and kept in memory
/// once where it is an array or an object. What is written does not depend on it.
class KvEncodePool
{
public:
    /// @param recordCount how many records will be written, or a guess; it decides the pool's size.
    explicit KvEncodePool(int recordCount = 1)
        : dates(recordCount)
        , exchangeDates(recordCount)
        , lists(recordCount)
        , durations(recordCount)
        , materialBills(recordCount)
    {
    }

    KvPatterns<KvPlanNode> nodes;
    KvPatterns<KvPlanPredecessor> predecessors;
    KvPatterns<KvPlanNode> exchangeTasks;
    KvKeptValues<KvWallClock, QJsonValue> dates;
    KvKeptValues<KvWallClock, QJsonValue> exchangeDates;
    KvKeptValues<QStringList, QJsonValue> lists;
    KvKeptValues<KvAmount, QJsonValue> durations;
    KvKeptValues<KvTextLists, QJsonValue> materialBills;
};

} // namespace Kv
