#pragma once

#include "Filter.h"

namespace PlanService {

/// What lists of plans are searched by.
const QVector<FilterField>& planFields();

} // namespace PlanService
