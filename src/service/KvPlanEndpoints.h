#pragma once

#include <model/KvPlan.h>

/// The task service's endpoints for plans, one function each. They block until the reply has come, write
/// their out-parameters from it even when the request failed, and touch no cache.
namespace Kv {

/// GET plans/%1. @p plan is overwritten in any case; by an empty record when the reply holds none.
bool requestPlanById(const QString& planId, KvPlan& plan);

} // namespace Kv
