#pragma once

namespace PlanService {

/// Connections that were refused and are about to be closed, at a time.
constexpr int mostLingering = 128;

/// Raises the limit of files that this process may have open as far as it goes. @return how many clients that
/// leaves room for, beside what else the service opens; at least 1.
int connectionsPossible();

} // namespace PlanService
