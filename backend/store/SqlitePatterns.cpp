#include "SqlitePatterns.h"

#include "../filters/Pattern.h"

#include <sqlite3.h>

namespace PlanService {

namespace {

void deletePattern(void* pattern)
{
    delete static_cast<Pattern*>(pattern);
}

/// The compiled pattern is kept by the statement as long as the pattern stays the same.
void matches(sqlite3_context* context, int, sqlite3_value** values)
{
    if (static_cast<const SqlitePatterns*>(sqlite3_user_data(context))->isTooSlow()) {
        sqlite3_result_error(context, SqlitePatterns::tooSlowMessage, -1);
        return;
    }
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(values[1]));
    if (text == nullptr) {
        sqlite3_result_int(context, 0);
        return;
    }
    auto* pattern = static_cast<Pattern*>(sqlite3_get_auxdata(context, 0));
    std::unique_ptr<Pattern> fresh;
    if (pattern == nullptr) {
        const auto* source = reinterpret_cast<const char*>(sqlite3_value_text(values[0]));
        fresh = std::make_unique<Pattern>(source == nullptr ? std::string() : std::string(source));
        pattern = fresh.get();
    }
    sqlite3_result_int(context, pattern->occursIn(text, sqlite3_value_bytes(values[1])) ? 1 : 0);
    if (fresh) {
        sqlite3_set_auxdata(context, 0, fresh.release(), deletePattern);
    }
}

} // namespace

void SqlitePatterns::addTo(sqlite3* connection)
{
    sqlite3_create_function_v2(connection, "matches", 2,
                               SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_DIRECTONLY, this, matches, nullptr,
                               nullptr, nullptr);
}

} // namespace PlanService
