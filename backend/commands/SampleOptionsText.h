#pragma once

#include "../seed/SampleProject.h"
#include "Commands.h"

namespace PlanService {

/// The options that describe a sample project, shared by `seed` and `sample`.
void addSampleOptions(Options& options);
SampleOptions readSampleOptions(const Options& options);

} // namespace PlanService
