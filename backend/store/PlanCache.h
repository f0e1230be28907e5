#pragma once

#include "Store.h"

#include <list>
#include <mutex>

namespace PlanService {

/// Keeps the text of plans that were read, those that were asked for last, so that the next one who reads a
/// plan that did not change costs the database one look at its version. All stores of a database share one;
/// the calls may come from any thread.
class PlanCache
{
public:
    /// @param limit bytes of all texts together; a plan that is larger is not kept. 0: nothing is kept.
    explicit PlanCache(qint64 limit)
        : m_limit(limit)
    {
    }
    PlanCache(const PlanCache&) = delete;
    PlanCache& operator=(const PlanCache&) = delete;

    /// @return nothing when another version is kept or none. An empty version, which is none, is not counted.
    std::shared_ptr<PlanText> find(const QString& planId, const QString& version);
    /// In the place of what was kept of the plan. An empty version is not kept.
    void keep(const QString& planId, const QString& version, const std::shared_ptr<PlanText>& text);

    struct Numbers
    {
        qint64 hits = 0;
        qint64 misses = 0;
        qint64 bytes = 0; ///< of the texts that are kept
    };
    Numbers numbers() const;

private:
    struct Kept
    {
        QString planId;
        QString version;
        std::shared_ptr<PlanText> text;
        qint64 bytes = 0;
    };

    const qint64 m_limit;
    mutable std::mutex m_mutex;
    std::list<Kept> m_kept; ///< asked for last, first
    QHash<QString, std::list<Kept>::iterator> m_places;
    Numbers m_numbers;
};

} // namespace PlanService
