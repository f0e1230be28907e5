#pragma once

#include <model/KvPlan.h>
#include <model/KvPlanCondition.h>

/// The task service's endpoints for plans, one function each. They block until the reply has come, write
/// their out-parameters from it even when the request failed, and touch no cache.
namespace Kv {

/// GET plans/%1. @p plan is overwritten in any case; by an empty record when the reply holds none.
bool requestPlanById(const QString& planId, KvPlan& plan);

/// GET projects/%1/plans. The current project's plans, in the service's order, are added to @p plans.
bool requestAllPlans(QList<KvPlan>& plans);

/// GET projects/%1/plans?where=…&only_count=true. @p count is 0 when the reply tells none.
bool requestPlanRangeCount(const KvPlanCondition& condition, int& count);

/// GET projects/%1/plans?where=…&skip=…&limit=…. The page's plans are added to @p plans.
bool requestPlanRangeData(const KvPlanCondition& condition, int skip, int limit, QList<KvPlan>& plans);

/// POST plans. A plan without a project gets the current one first; the reply, with the id that the service
/// gave, is read into @p plan.
bool requestCreatePlan(KvPlan& plan);

/// PUT plans/%1/copy. The new copy is read into @p plan.
bool requestCopyPlan(const QString& planId, KvPlan& plan);

/// PUT plans/%1, with the values of @p plan that differ from @p cached, to the plan that @p cached names; the
/// reply is read into @p plan. Without a difference nothing is sent, @p plan becomes @p cached, and the
/// result is true.
bool requestUpdatePlan(const KvPlan& cached, KvPlan& plan);

/// DELETE plans/%1.
bool requestDeletePlan(const QString& planId);

} // namespace Kv
