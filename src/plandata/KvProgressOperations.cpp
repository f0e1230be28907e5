// The facade's operations on progress: responses, quantities, statistics and metering states.

#include <plandata/KvPlanData.h>

#include <service/KvProgressEndpoints.h>

bool KvPlanData::getPlanNodeResponses(const QString& planNodeId, QList<KvPlanNodeResponse>& responses)
{
    return Kv::requestPlanNodeResponses(planNodeId, responses);
}

bool KvPlanData::createPlanNodeResponse(const QString& planNodeId, KvPlanNodeResponse& response)
{
    return Kv::requestCreatePlanNodeResponse(planNodeId, response);
}

bool KvPlanData::getPlanNodeQuantities(QList<KvStatisticsQuantity>& quantities, const QString& category,
                                       const QString& period)
{
    return Kv::requestPlanNodeQuantities(quantities, category, period);
}

bool KvPlanData::geStatistics(const QString& category, KvPlanStatistics& statistics)
{
    return Kv::requestPlanNodeStatistics(category, statistics);
}

bool KvPlanData::createMeteringState(KvMeteringState& state)
{
    if (!Kv::requestCreateMeteringState(state))
        return false;
    m_meteringStateCache.insert(state.taskId, state);
    return true;
}

bool KvPlanData::updateMeteringState(KvMeteringState& state)
{
    if (!Kv::requestUpdateMeteringState(state))
        return false;
    m_meteringStateCache.insert(state.taskId, state);
    return true;
}

bool KvPlanData::getMeteringState(const QStringList& planIds, QList<KvMeteringState>& states)
{
    if (!Kv::requestMeteringStates(planIds, states))
        return false;
    for (const KvMeteringState& state : qAsConst(states))
        m_meteringStateCache.insert(state.taskId, state);
    return true;
}

bool KvPlanData::getPlanNodeMeteringState(const QString& taskId, KvMeteringState& state)
{
    const auto cached = m_meteringStateCache.constFind(taskId);
    if (cached == m_meteringStateCache.constEnd())
        return false;
    state = *cached;
    return true;
}
