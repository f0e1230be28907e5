#pragma once

#include "../store/Store.h"

namespace PlanService {

class FieldReader;
struct Stamp;

/// Fills @p node, document included, with the values that @p in holds under the keys a client sends. Id, plan
/// and project are set before and stay; category and row number are set before to what holds where none was
/// sent. Throws ApiError 400 that names the key.
void writePlanNode(PlanNodeRecord& node, const FieldReader& in, const Stamp& stamp);

/// Who wrote the node when; @p node holds at least its stamp and its document.
Stamp stampOf(const PlanNodeRecord& node);

} // namespace PlanService
