#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace PlanService {

/// A name in both languages of the sample.
struct SampleName
{
    QString zh;
    QString en;
};

enum class SampleLink
{
    None,
    FinishToStart,
    StartToStart,
    FinishToFinish,
    StartToFinish,
};

/// One task of a trade: how long it takes and how it hangs on the task before it in the same trade.
struct SampleTask
{
    SampleName name;
    int days = 1;
    SampleLink link = SampleLink::FinishToStart;
    int lag = 0;
    bool lagInHours = false; ///< otherwise in days
    QStringList bills;       ///< material bills that the task draws on
};

struct SampleTrade
{
    SampleName name;
    QString code; ///< in the ids of model entities
    std::vector<SampleTask> tasks;
};

/// A stretch of work below a phase: once, or again on every floor.
struct SampleSection
{
    SampleName name;
    std::vector<SampleTrade> trades;
};

struct SamplePhase
{
    SampleName name;
    QString model;           ///< suffix of the model's id
    bool everyFloor = false; ///< the one section is repeated for each floor
    std::vector<SampleSection> sections;
    SampleName milestone; ///< closes the phase
};

/// How a residential tower is built, in order.
const std::vector<SamplePhase>& towerPhases();

const QStringList& samplePeople();

} // namespace PlanService
