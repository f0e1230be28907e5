#pragma once

#include "Filter.h"

namespace PlanService {

constexpr int mostListedValues = 20000; ///< of all "$in" of one filter together
constexpr int mostConditions = 200;     ///< of one filter
constexpr int deepestNesting = 8;       ///< of "$or" in "$or"

/// Reads the text of a "where" parameter, {"name": {"$regex": "^T", "$options": "i"}, "createdAt": null}.
/// Throws ApiError 400 naming the operator, field or value that does not fit, or the limit that is passed.
Filter readFilter(const QString& text, const QVector<FilterField>& fields);

} // namespace PlanService
