#pragma once

#include "../filters/Filter.h"
#include "../filters/Pattern.h"

#include <QVariant>

#include <vector>

namespace PlanService {

/// Looks for a filter's patterns outside the database, where SQL has none that take linear time. The rows
/// that everything else of the filter lets through are read once; each pattern then stands for the ids of the
/// rows that it is found in.
class PatternSearch
{
public:
    explicit PatternSearch(const Filter& where);

    static bool isNeeded(const Filter& where);

    /// The filter with every pattern left away, so that it lets more rows through: filters have no "not".
    Filter wider() const;
    /// What is to be read of those rows: the id, then the texts that patterns look at.
    QString columns() const;
    /// @param text UTF-8 of column 1 and up; null where nothing is set.
    void look(const QString& id, const std::vector<QByteArray>& texts);
    /// The filter with ids instead of patterns.
    Filter found() const;

    std::size_t patterns() const { return m_searches.size(); }

private:
    struct Search
    {
        const Filter* term;
        Pattern pattern;
        QStringList ids;
    };

    void collect(const Filter& where);
    template<typename Replacement>
    static Filter replaced(const Filter& where, const Replacement& replacement);

    Filter m_where;
    std::vector<std::unique_ptr<Search>> m_searches;
};

} // namespace PlanService
