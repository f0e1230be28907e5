#include "SampleSchedule.h"

#include <algorithm>
#include <limits>

namespace PlanService {

quint64 SampleRandom::next()
{
    m_state += 0x9E3779B97F4A7C15ULL;
    quint64 z = m_state;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
}

namespace {

/// Adds the items of a tower one after another and keeps what later ones hang on.
class TowerBuilder
{
public:
    TowerBuilder(int floors, std::size_t limit, int firstDay)
        : m_floors(floors)
        , m_limit(limit)
        , m_firstDay(firstDay)
    {
    }

    std::vector<SampleItem> build()
    {
        for (const SamplePhase& phase : towerPhases()) {
            addPhase(phase);
        }
        return std::move(m_items);
    }

private:
    void addPhase(const SamplePhase& phase)
    {
        m_model = phase.model;
        const int phaseItem = add(-1, phase.name);
        std::vector<int> lastOfFloor;
        int last = -1;
        const int repeats = phase.everyFloor ? m_floors : 1;
        for (int i = 0; i < repeats; ++i) {
            for (const SampleSection& section : phase.sections) {
                m_floor = phase.everyFloor ? i + 1 : 0;
                // A floor follows the same floor of the phase before and the floor below of its own phase.
                const int below = phase.everyFloor ? lastAbove(i) : m_lastOfPhase;
                last = addSection(phaseItem, section, below, last);
            }
            lastOfFloor.push_back(last);
        }
        m_floor = 0;
        m_lastOfPhase = addMilestone(phaseItem, phase.milestone, last);
        m_lastOfFloor = phase.everyFloor ? lastOfFloor : std::vector<int>();
    }

    int lastAbove(int floor) const
    {
        return static_cast<std::size_t>(floor) < m_lastOfFloor.size()
                   ? m_lastOfFloor[static_cast<std::size_t>(floor)]
                   : m_lastOfPhase;
    }

    int addSection(int phaseItem, const SampleSection& section, int before, int previous)
    {
        const int sectionItem = add(phaseItem, section.name);
        int last = previous;
        for (const SampleTrade& trade : section.trades) {
            m_code = trade.code;
            const int tradeItem = add(sectionItem, trade.name);
            bool first = true;
            for (const SampleTask& task : trade.tasks) {
                const int item = addTask(tradeItem, task, last, first);
                if (first && before >= 0 && before != last) {
                    link(item, {before, SampleLink::FinishToStart, 0, false});
                }
                last = item < 0 ? last : item;
                first = false;
            }
            before = -1;
            m_code.clear();
        }
        return last;
    }

    int addTask(int trade, const SampleTask& task, int previous, bool first)
    {
        const int item = add(trade, task.name);
        if (item < 0) {
            return item;
        }
        SampleItem& added = m_items[static_cast<std::size_t>(item)];
        added.bills = task.bills;
        added.withDocument = task.bills.size() > 1 || (first && m_floor == 0);
        added.start = m_firstDay;
        added.end = m_firstDay + task.days;
        if (previous >= 0) {
            link(item, {previous, task.link, task.lag, task.lagInHours});
        }
        return item;
    }

    int addMilestone(int phase, const SampleName& name, int after)
    {
        const int item = add(phase, name);
        if (item >= 0) {
            m_items[static_cast<std::size_t>(item)].milestone = true;
            link(item, {after, SampleLink::FinishToStart, 0, false});
        }
        return item < 0 ? after : item;
    }

    int add(int parent, const SampleName& name)
    {
        if (m_items.size() >= m_limit) {
            return -1;
        }
        SampleItem item;
        item.parent = parent;
        item.level = parent < 0 ? 1 : m_items[static_cast<std::size_t>(parent)].level + 1;
        item.name = name;
        item.model = m_model;
        item.code = m_code;
        item.floor = m_floor;
        item.start = m_firstDay;
        item.end = m_firstDay + 1;
        m_items.push_back(item);
        if (parent >= 0) {
            m_items[static_cast<std::size_t>(parent)].hasChildren = true;
        }
        return static_cast<int>(m_items.size()) - 1;
    }

    /// Adds the link and moves the item as far back as the link asks.
    void link(int target, const SampleLinkTo& to)
    {
        if (target < 0 || to.source < 0) {
            return;
        }
        const SampleItem& source = m_items[static_cast<std::size_t>(to.source)];
        SampleItem& item = m_items[static_cast<std::size_t>(target)];
        // A lag of hours fits between two working days.
        const int lag = to.lagInHours ? 0 : to.lag;
        const int days = item.end - item.start;
        int earliest = 0;
        switch (to.type) {
        case SampleLink::FinishToStart:
            earliest = source.end + lag;
            break;
        case SampleLink::StartToStart:
            earliest = source.start + lag;
            break;
        case SampleLink::FinishToFinish:
            earliest = source.end + lag - days;
            break;
        case SampleLink::StartToFinish:
            earliest = source.start + lag - days;
            break;
        case SampleLink::None:
            return;
        }
        item.start = std::max(item.start, earliest);
        item.end = item.start + days;
        item.links.push_back(to);
    }

    int m_floors;
    std::size_t m_limit;
    int m_firstDay;
    std::vector<SampleItem> m_items;
    std::vector<int> m_lastOfFloor;
    int m_lastOfPhase = -1;
    QString m_model;
    QString m_code;
    int m_floor = 0;
};

void playTask(SampleItem& item, int statusDay, int drift, SampleRandom& random)
{
    const int days = item.end - item.start;
    const int start = std::max(0, item.start + drift + random.between(0, 1));
    const int end = start + std::max(1, days + random.between(-1, 2));
    item.workDays = item.milestone ? 0 : days;
    if (start > statusDay) {
        return;
    }
    item.actualStart = start;
    if (item.milestone || end <= statusDay) {
        item.actualEnd = item.milestone ? start + 1 : end;
        item.progress = 100;
    } else {
        item.progress = std::clamp((statusDay - start) * 100 / (end - start) / 5 * 5, 5, 95);
    }
    item.doneDays = item.workDays * item.progress / 100;
}

void startSummary(SampleItem& item)
{
    item.start = std::numeric_limits<int>::max();
    item.end = std::numeric_limits<int>::min();
    item.actualStart = -1;
    item.actualEnd = 0;
}

void addToSummary(SampleItem& parent, const SampleItem& child)
{
    parent.start = std::min(parent.start, child.start);
    parent.end = std::max(parent.end, child.end);
    if (child.actualStart >= 0 && (parent.actualStart < 0 || child.actualStart < parent.actualStart)) {
        parent.actualStart = child.actualStart;
    }
    parent.actualEnd =
        child.actualEnd < 0 || parent.actualEnd < 0 ? -1 : std::max(parent.actualEnd, child.actualEnd);
    parent.workDays += child.workDays;
    parent.doneDays += child.doneDays;
}

} // namespace

std::vector<SampleItem> scheduleTower(int floors, std::size_t limit, int firstDay)
{
    return TowerBuilder(floors, limit, firstDay).build();
}

void playUntil(std::vector<SampleItem>& items, int statusDay, SampleRandom& random)
{
    int drift = 0;
    for (SampleItem& item : items) {
        if (item.hasChildren) {
            startSummary(item);
            // Every stretch of work has its own luck.
            drift = item.level == 2 ? random.between(-2, 5) : drift;
        } else {
            playTask(item, statusDay, drift, random);
        }
    }
    // Parents stand before their children, so that one walk from the end sums up every level.
    for (std::size_t i = items.size(); i-- > 0;) {
        SampleItem& item = items[i];
        if (item.hasChildren) {
            item.progress = item.workDays > 0 ? qRound(item.doneDays * 1000 / item.workDays) / 10.0
                                              : (item.actualEnd >= 0 ? 100 : 0);
        }
        if (item.parent >= 0) {
            addToSummary(items[static_cast<std::size_t>(item.parent)], item);
        }
    }
}

} // namespace PlanService
