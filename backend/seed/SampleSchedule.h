#pragma once

#include "SampleNames.h"

#include <QtGlobal>

namespace PlanService {

/// Numbers that look random and are the same everywhere for the same seed.
class SampleRandom
{
public:
    explicit SampleRandom(quint64 seed)
        : m_state(seed)
    {
    }
    /// Evenly from low to high, both included.
    int between(int low, int high)
    {
        return low + static_cast<int>(next() % static_cast<quint64>(high - low + 1));
    }
    quint64 next();

private:
    quint64 m_state;
};

struct SampleLinkTo
{
    int source = -1; ///< index in the same tower
    SampleLink type = SampleLink::None;
    int lag = 0;
    bool lagInHours = false;
};

/// A node on its way: days count from the project's start, an end is the first day after.
struct SampleItem
{
    int parent = -1; ///< index in the same tower, always smaller than the own one
    int level = 0;
    SampleName name;
    QString model;
    QString code;
    QStringList bills;
    int floor = 0; ///< 0: not on a floor
    bool milestone = false;
    bool withDocument = false;
    bool hasChildren = false;
    std::vector<SampleLinkTo> links;

    int start = 0;
    int end = 0;
    int actualStart = -1; ///< -1: not started by the status day
    int actualEnd = -1;   ///< -1: not finished by the status day
    double progress = 0;  ///< percent
    int workDays = 0;     ///< of the tasks below, the weight of the progress
    double doneDays = 0;
};

/// The items of one tower in row order, at most @p limit, scheduled from @p firstDay on.
std::vector<SampleItem> scheduleTower(int floors, std::size_t limit, int firstDay);

/// Fills in what had happened by the status day, and what summaries make of it.
void playUntil(std::vector<SampleItem>& items, int statusDay, SampleRandom& random);

} // namespace PlanService
