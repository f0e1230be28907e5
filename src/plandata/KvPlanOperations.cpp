// The facade's operations on plans.

#include <plandata/KvPlanData.h>

#include <service/KvPlanEndpoints.h>

#include <KvPublicFun/KvPub.h>

#include <algorithm>

bool KvPlanData::createPlan(KvPlan& plan)
{
    if (!Kv::requestCreatePlan(plan))
        return false;
    m_planCache.insert(plan.id, plan);
    return true;
}

bool KvPlanData::updatePlan(KvPlan& plan)
{
    // A copy, because the host may come back in during the wait and change the cache. A plan that is not
    // cached gets an empty entry, which stays when the request fails: existing hosts count on the entry.
    const KvPlan cached = m_planCache[plan.id];
    if (!Kv::requestUpdatePlan(cached, plan))
        return false;
    m_planCache.insert(plan.id, plan);
    return true;
}

// The cache keeps the entry: lists that still show the plan can go on naming it.
bool KvPlanData::deletePlan(const QString& id)
{
    return Kv::requestDeletePlan(id);
}

bool KvPlanData::copyPlanById(const QString& id, KvPlan& plan)
{
    if (!Kv::requestCopyPlan(id, plan))
        return false;
    m_planCache.insert(plan.id, plan);
    return true;
}

bool KvPlanData::getAllPlan(QList<KvPlan>& plans, bool flag)
{
    Q_UNUSED(flag) // part of the signature that hosts are linked against; it never made a difference
    clear();
    const bool read = Kv::requestAllPlans(plans);
    const auto before = [](const KvPlan& a, const KvPlan& b) {
        return KvPub::naturalSort(a.name, b.name, Qt::CaseInsensitive);
    };
    // Sorting costs more than all else here, and plans often come in order already.
    if (!std::is_sorted(plans.constBegin(), plans.constEnd(), before))
        std::sort(plans.begin(), plans.end(), before);
    // Ids mostly rise with the names, as both come with the order of creation: then nothing is to be looked
    // up.
    for (const KvPlan& plan : qAsConst(plans)) {
        m_planCache.insert(m_planCache.constEnd(), plan.id, plan);
        m_planDetailLoaded.insert(m_planDetailLoaded.constEnd(), plan.id, false);
    }
    return read;
}

QStringList KvPlanData::getAllPlanNames()
{
    QStringList names;
    names.reserve(m_planCache.size());
    for (const KvPlan& plan : qAsConst(m_planCache))
        names.append(plan.name);
    return names;
}

bool KvPlanData::getPlanRangeCount(const KvPlanCondition& condition, int& count)
{
    return Kv::requestPlanRangeCount(condition, count);
}

bool KvPlanData::getPlanRangeData(const KvPlanCondition& condition, int skip, int limit, QList<KvPlan>& plans)
{
    QList<KvPlan> page; // apart from the host's list, which the host may change during the wait
    if (Kv::requestPlanRangeData(condition, skip, limit, page)) {
        m_planCache.clear();
        for (const KvPlan& plan : qAsConst(page))
            m_planCache.insert(plan.id, plan);
    }
    plans.append(page);
    return true; // also after a failure, which existing hosts tell by the unchanged list
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

QString KvPlanData::getPlanName(const QString& id) const
{
    const auto cached = m_planCache.constFind(id);
    return cached == m_planCache.constEnd() ? QString() : cached->name;
}
