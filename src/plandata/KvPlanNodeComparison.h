#pragma once

#include <model/KvPlanNode.h>

namespace Kv {

/// Whether two nodes count as equal when an edited plan is saved: identifiers, name, dates, progress,
/// simulation, workloads, people and linked entities. Everything else is left out on purpose, and no
/// progress that is not a number equals anything.
bool isSamePlanNode(const KvPlanNode& a, const KvPlanNode& b);

} // namespace Kv
