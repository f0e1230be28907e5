#pragma once

#include "Filter.h"

#include <QVariantList>

namespace PlanService {

/// A condition in SQL. What a client sent stands in the parameters alone, never in the text.
struct SqlCondition
{
    QString text;
    QVariantList parameters;

    /// Appends "AND text" and its parameters.
    void also(const QString& condition, const QVariantList& values = {});
};

/// Nested conditions are put in brackets; patterns become matches(pattern, value).
SqlCondition sqlOf(const Filter& filter);

} // namespace PlanService
