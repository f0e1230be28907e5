#include <plandata/KvPlanData.h>

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
