#pragma once

#include "Filter.h"

namespace PlanService {

/// What lists of plan nodes are searched by.
const QVector<FilterField>& planNodeFields();

} // namespace PlanService
