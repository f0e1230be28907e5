#pragma once

#include "http/Reply.h"

#include <functional>

namespace KvTest {

/// The status that a call refuses with; 200 when it does not.
inline int statusOf(const std::function<void()>& call)
{
    try {
        call();
    } catch (const PlanService::ApiError& error) {
        return error.status();
    }
    return 200;
}

} // namespace KvTest
