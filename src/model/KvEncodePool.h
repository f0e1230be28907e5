#pragma once

#include <model/KvObjectWriter.h>

namespace Kv {

/// What the writing of many records of one list has in common, so that it is made once. What is written does
/// not depend on it.
class KvEncodePool
{
public:
    KvKeyedObjects nodes;
    KvKeyedObjects predecessors;
    KvKeyedObjects durations;
    KvKeyedObjects materialBills;
    KvKeyedObjects exchangeTasks;
};

} // namespace Kv
