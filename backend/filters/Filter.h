#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

namespace PlanService {

enum class FieldKind
{
    Text,
    Date,
    Whole,
    Texts, ///< a list of texts; it equals a text that is one of its elements
};

/// A field that filters may name.
struct FilterField
{
    const char* name; ///< on the wire
    FieldKind kind;
    const char* expression; ///< its value in SQL; for Texts the list as JSON
};

/// A condition on a record, as a small tree. The default holds for every record.
struct Filter
{
    enum class Kind
    {
        All, ///< every one of terms; without terms: always
        Any, ///< at least one of terms; without terms: never
        Equals,
        In, ///< one of values
        AtLeast,
        Below,
        Matches, ///< values.first() is the pattern, options included
    };
    Kind kind = Kind::All;
    const FilterField* field = nullptr; ///< of the last five
    QStringList values; ///< empty text stands for "not set"; a whole number is written in digits
    QVector<Filter> terms;
};

} // namespace PlanService
