#pragma once

#include "SampleProject.h"

namespace PlanService {

/// What was reported on one node of the sample, and the metering state that came of it.
struct SampleProgress
{
    QVector<DocumentRecord> documents;
    QVector<ResponseRecord> responses; ///< the last one tells what the node stands at
    std::optional<TaskStateRecord> state;
};

/// Every second task that has begun was reported on: when it began, and once more when it was finished or, on
/// the status day, how far it is. A state is 1 while there is something to be measured and 2 once it was.
SampleProgress sampleProgress(const SampleNode& node, const PlanRecord& plan, SampleLanguage language);

} // namespace PlanService
