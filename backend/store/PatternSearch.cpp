#include "PatternSearch.h"

#include <algorithm>

namespace PlanService {

namespace {

const FilterField& idField()
{
    static const FilterField field{"_id", FieldKind::Text, "id"};
    return field;
}

} // namespace

PatternSearch::PatternSearch(const Filter& where)
    : m_where(where)
{
    collect(m_where);
}

bool PatternSearch::isNeeded(const Filter& where)
{
    return where.kind == Filter::Kind::Matches ||
           std::any_of(where.terms.begin(), where.terms.end(), isNeeded);
}

// Filters nest no deeper than deepestNesting.
void PatternSearch::collect(const Filter& where)
{
    if (where.kind == Filter::Kind::Matches) {
        m_searches.emplace_back(new Search{&where, Pattern(where.values.first().toStdString()), {}});
    }
    for (const Filter& term : where.terms) {
        collect(term);
    }
}

template<typename Replacement>
Filter PatternSearch::replaced(const Filter& where, const Replacement& replacement)
{
    if (where.kind == Filter::Kind::Matches) {
        return replacement(where);
    }
    Filter copy = where;
    copy.terms.clear();
    for (const Filter& term : where.terms) {
        copy.terms.append(replaced(term, replacement));
    }
    return copy;
}

Filter PatternSearch::wider() const
{
    return replaced(m_where, [](const Filter&) { return Filter(); });
}

QString PatternSearch::columns() const
{
    QString columns = QStringLiteral("id");
    for (const auto& search : m_searches) {
        columns += QLatin1String(", ") + QLatin1String(search->term->field->expression);
    }
    return columns;
}

void PatternSearch::look(const QString& id, const std::vector<QByteArray>& texts)
{
    for (std::size_t i = 0; i < m_searches.size(); ++i) {
        if (!texts[i].isNull() && m_searches[i]->pattern.occursIn(texts[i].constData(), texts[i].size())) {
            m_searches[i]->ids.append(id);
        }
    }
}

Filter PatternSearch::found() const
{
    return replaced(m_where, [this](const Filter& term) {
        const auto search = std::find_if(m_searches.begin(), m_searches.end(),
                                         [&term](const auto& one) { return one->term == &term; });
        Filter among;
        among.kind = Filter::Kind::In;
        among.field = &idField();
        among.values = (*search)->ids;
        return among;
    });
}

} // namespace PlanService
