#include "PlanCache.h"

namespace PlanService {

std::shared_ptr<PlanText> PlanCache::find(const QString& planId, const QString& version)
{
    if (version.isEmpty() || m_limit == 0) {
        return nullptr;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto place = m_places.constFind(planId);
    if (place == m_places.constEnd() || (*place)->version != version) {
        ++m_numbers.misses;
        return nullptr;
    }
    ++m_numbers.hits;
    m_kept.splice(m_kept.begin(), m_kept, *place);
    return (*place)->text;
}

void PlanCache::keep(const QString& planId, const QString& version, const std::shared_ptr<PlanText>& text)
{
    Kept kept{planId, version, text, 0};
    for (const QByteArray& piece : qAsConst(text->pieces)) {
        kept.bytes += piece.size();
    }
    std::list<Kept> forgotten; // its memory goes back when others may go on
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto drop = [this, &forgotten](std::list<Kept>::iterator old) {
        m_numbers.bytes -= old->bytes;
        m_places.remove(old->planId);
        forgotten.splice(forgotten.begin(), m_kept, old);
    };
    const auto before = m_places.constFind(planId);
    if (before != m_places.constEnd()) {
        drop(*before);
    }
    if (version.isEmpty() || kept.bytes > m_limit) {
        return;
    }
    while (m_numbers.bytes + kept.bytes > m_limit) {
        drop(std::prev(m_kept.end()));
    }
    m_numbers.bytes += kept.bytes;
    m_kept.push_front(std::move(kept));
    m_places.insert(planId, m_kept.begin());
}

PlanCache::Numbers PlanCache::numbers() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_numbers;
}

} // namespace PlanService
