#include <plandata/KvPlanData.h>

#include <service/KvPlanEndpoints.h>
#include <service/KvPlanNodeEndpoints.h>

KvPlanData::KvPlanData() = default;
KvPlanData::~KvPlanData() = default;
KvPlanData::KvPlanData(const KvPlanData& other) = default;
KvPlanData& KvPlanData::operator=(const KvPlanData& other) = default;

KvPlanData* KvPlanData::instance()
{
    static KvPlanData object;
    return &object;
}

void KvPlanData::clear()
{
    m_planCache.clear();
    m_planDetailLoaded.clear();
    m_planNodeCache.clear();
    m_meteringStateCache.clear();
}

bool KvPlanData::getPlanById(const QString& id, KvPlan& plan)
{
    const QString requested = id; // `id` may be the caller's plan.id, which the reply overwrites
    if (!Kv::requestPlanById(requested, plan))
        return false;
    m_planCache.insert(requested, plan);
    // By the id inside the plan, which the service may give differently from the one it was asked for.
    m_planDetailLoaded.insert(plan.id, true);
    return true;
}

bool KvPlanData::getPlanFromCacheById(const QString& id, KvPlan& plan)
{
    const auto cached = m_planCache.constFind(id);
    if (cached == m_planCache.constEnd())
        return getPlanById(id, plan);
    plan = *cached;
    return true;
}

bool KvPlanData::getPlanNodeFromCacheById(const QString& id, KvPlanNode& node)
{
    const auto cached = m_planNodeCache.constFind(id);
    if (cached != m_planNodeCache.constEnd()) {
        node = *cached;
        return true;
    }
    const QString requested = id; // `id` may be the caller's node.id, which the reply overwrites
    if (!Kv::requestPlanNodeById(requested, node))
        return false;
    m_planNodeCache.insert(requested, node);
    return true;
}

QString KvPlanData::getPlanName(const QString& id) const
{
    const auto cached = m_planCache.constFind(id);
    return cached == m_planCache.constEnd() ? QString() : cached->name;
}
