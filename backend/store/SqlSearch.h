#pragma once

// How SqlStore answers lists and counts that are searched by a filter.

#include "PatternSearch.h"
#include "SqlStore.h"

namespace PlanService {

inline const QString countOfRows = QStringLiteral("count(*)");

/// @param rows the statement for some columns of the rows of a query. @param answer gets the query as the
/// database can answer it, without patterns where it knows none; all is read of one moment then.
template<typename Query, typename Answer>
auto SqlStore::searched(const Query& query, SqlStatement (*rows)(const QString&, const Query&),
                        const Answer& answer) -> decltype(answer(query))
{
    if (m_database->knowsPatterns() || !PatternSearch::isNeeded(query.where)) {
        return answer(query);
    }
    m_database->beginReading();
    try {
        m_database->limitSearch();
        PatternSearch search(query.where);
        Query found = query;
        found.where = search.wider();
        lookFor(search, rows(search.columns(), found));
        found.where = search.found();
        const auto result = answer(found);
        m_database->commit();
        return result;
    } catch (...) {
        m_database->rollback();
        throw;
    }
}

} // namespace PlanService
