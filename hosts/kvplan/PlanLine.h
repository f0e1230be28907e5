#pragma once

#include "Output.h"

#include <model/KvPlan.h>

/// Tells what a command made of a plan: its identifier and name on one line or, @p asJson, the whole plan.
ExitCode sayPlan(const KvPlan& plan, bool asJson);
