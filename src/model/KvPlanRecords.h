#pragma once

/// Every record that crosses the library's boundary. All are plain values: copies are independent, containers
/// and texts inside share their data until one side writes. The order of the fields is part of the interface.

#include <model/KvDuration.h>
#include <model/KvPlan.h>
#include <model/KvPlanCondition.h>
#include <model/KvPlanNode.h>
#include <model/KvPlanNodeResponse.h>
#include <model/KvPlanStatistics.h>
