#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

namespace PlanService {

enum class FieldKind
{
    Text, ///< "" where nothing is set
    Name, ///< as Text, but NULL where nothing is set
    Date,
    Whole,
    Real,
    Flag,  ///< 1 or 0
    Texts, ///< a list of texts; it equals a text that is one of its elements
};

struct SqlCondition;

/// A field that filters may name.
struct FilterField
{
    const char* name; ///< on the wire
    FieldKind kind;
    const char* expression; ///< its value in SQL, see SqlWords; for Texts the list as JSON
    /// Texts: a quicker way to say that the text is in the list; without one the list is read.
    SqlCondition (*holds)(const QString& text) = nullptr;
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
    QStringList values; ///< empty text stands for "not set"; numbers and flags are written in digits
    QVector<Filter> terms;
};

} // namespace PlanService
