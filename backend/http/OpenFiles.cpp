#include "OpenFiles.h"

#include <algorithm>

#ifdef __unix__
#include <sys/resource.h>
#endif

namespace PlanService {

int connectionsPossible()
{
    // An acceptor that finds no file left takes nobody any more, so that must not come about: there is room
    // for the workers' files of the database, and for connections that are about to be closed.
    constexpr int others = 256 + mostLingering;
    constexpr int most = 60000;
#ifdef __unix__
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        rlimit raised = limit;
        raised.rlim_cur = std::min<rlim_t>(limit.rlim_max, most + others);
        if (raised.rlim_cur > limit.rlim_cur && ::setrlimit(RLIMIT_NOFILE, &raised) == 0) {
            limit = raised;
        }
        return std::clamp(static_cast<int>(std::min<rlim_t>(limit.rlim_cur, most + others)) - others, 1,
                          most);
    }
#endif
    return most;
}

} // namespace PlanService
