#include <plandata/KvPlanData.h>

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
