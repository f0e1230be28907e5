#pragma once

#include "../store/Store.h"

#include <QDate>

#include <functional>

namespace PlanService {

enum class SampleLanguage
{
    Chinese,
    English,
    Both,
};

struct SampleOptions
{
    QString projectId = QStringLiteral("sample-project");
    QString category = QStringLiteral("construction");
    int floors = 0; ///< of each tower; 0: 18, or as many as suit the node count
    int nodes = 0;  ///< exactly so many; 0: one whole tower
    quint32 seed = 1;
    SampleLanguage language = SampleLanguage::Both;
    QDate start{2026, 3, 2};
    QDate
        status; ///< the day up to which actual dates and progress are known; null: 45 % into the first tower
};

struct SampleNode
{
    PlanNodeRecord record;
    bool summary = false;
    bool milestone = false;
    double progress = 0;  ///< percent
    QString worker;       ///< one who executes it; empty for summaries
    int tower = 0;        ///< its number from 1; 0 when there is only one
    int floor = 0;        ///< 0: not on a floor
    QString trade;        ///< its code; empty when the node builds nothing
    QStringList entities; ///< that it builds
};

/// A residential tower, or as many as the node count asks for: phase, floor or section, trade, task. Links of
/// all four types with positive and negative lags, milestones, people, progress and delays up to the status
/// date, model entities, material bills and documents. The same options give the same bytes on every machine;
/// nothing here reads the clock.
///
/// Link types are 0 finish-finish, 1 finish-start, 2 start-finish, 3 start-start; lag units 1 hours, 2 days.
class SampleProject
{
public:
    explicit SampleProject(const SampleOptions& options);

    const PlanRecord& plan() const { return m_plan; }
    SampleLanguage language() const { return m_options.language; }

    struct Sink
    {
        std::function<void(const SampleNode&)> node;
        std::function<void(const DocumentRecord&)> document;
    };
    /// Hands out nodes in row order and each document before the node that names it; memory stays that of one
    /// tower.
    void generate(const Sink& sink) const;

private:
    SampleOptions m_options;
    PlanRecord m_plan;
};

/// Puts the whole sample into the store in one transaction, with what was reported on its nodes. Throws
/// StoreError when the plan is there already.
void seedStore(const SampleProject& project, Store& store);

/// The JSON pieces of the plan as the service sends it, handed to @p write one after another.
void writeSample(const SampleProject& project, const std::function<void(const QByteArray&)>& write);

} // namespace PlanService
