#include "FilterSql.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace PlanService {

namespace {

QString expressionOf(const Filter& filter)
{
    return QString::fromLatin1(filter.field->expression);
}

QVariant parameterOf(const Filter& filter, const QString& value)
{
    switch (filter.field->kind) {
    case FieldKind::Whole:
    case FieldKind::Flag:
        return value.toLongLong();
    case FieldKind::Real:
        return value.toDouble();
    case FieldKind::Text:
    case FieldKind::Name:
    case FieldKind::Date:
    case FieldKind::Texts:
        break;
    }
    return value.isNull() ? QStringLiteral("") : value;
}

SqlCondition equals(const Filter& filter, const QString& value)
{
    const QString expression = expressionOf(filter);
    switch (filter.field->kind) {
    case FieldKind::Name:
    case FieldKind::Date:
    case FieldKind::Whole:
    case FieldKind::Real:
    case FieldKind::Flag:
        if (value.isEmpty()) {
            return {expression + QLatin1String(" IS NULL"), {}};
        }
        break;
    case FieldKind::Texts:
        if (value.isEmpty()) {
            return {QStringLiteral("NOT EXISTS (SELECT 1 FROM {elements}(%1))").arg(expression), {}};
        }
        return filter.field->holds != nullptr
                   ? filter.field->holds(value)
                   : SqlCondition{QStringLiteral("EXISTS (SELECT 1 FROM {elements}(%1) WHERE value = ?)")
                                      .arg(expression),
                                  {value}};
    case FieldKind::Text:
        break;
    }
    return {expression + QLatin1String(" = ?"), {parameterOf(filter, value)}};
}

/// An element of a list that the field's value may be among.
QString elementOf(const Filter& filter)
{
    switch (filter.field->kind) {
    case FieldKind::Whole:
    case FieldKind::Flag:
    case FieldKind::Real:
        return QStringLiteral("CAST(value AS NUMERIC)");
    case FieldKind::Text:
    case FieldKind::Name:
    case FieldKind::Date:
    case FieldKind::Texts:
        break;
    }
    return QStringLiteral("value");
}

/// One parameter, whatever the length of the list.
SqlCondition in(const Filter& filter)
{
    QJsonArray values;
    bool withNotSet = false;
    for (const QString& value : filter.values) {
        withNotSet = withNotSet || value.isEmpty();
        if (!value.isEmpty()) {
            values.append(QJsonValue::fromVariant(parameterOf(filter, value)));
        }
    }
    const QString list = QString::fromUtf8(QJsonDocument(values).toJson(QJsonDocument::Compact));
    const QString member = filter.field->kind == FieldKind::Texts
                               ? QStringLiteral("EXISTS (SELECT 1 FROM {elements}(%1) e WHERE e.value IN"
                                                " (SELECT %2 FROM {elements}(CAST(? AS {json}))))")
                               : QStringLiteral("%1 IN (SELECT %2 FROM {elements}(CAST(? AS {json})))");
    SqlCondition condition{member.arg(expressionOf(filter), elementOf(filter)), {list}};
    if (withNotSet) {
        const SqlCondition notSet = equals(filter, QString());
        condition.text =
            QLatin1Char('(') + condition.text + QLatin1String(" OR ") + notSet.text + QLatin1Char(')');
        condition.parameters += notSet.parameters;
    }
    return condition;
}

SqlCondition joined(const Filter& filter)
{
    const bool all = filter.kind == Filter::Kind::All;
    if (filter.terms.isEmpty()) {
        return {all ? QStringLiteral("TRUE") : QStringLiteral("FALSE"), {}};
    }
    QStringList texts;
    SqlCondition condition;
    for (const Filter& term : filter.terms) {
        const SqlCondition part = sqlOf(term);
        texts.append(part.text);
        condition.parameters += part.parameters;
    }
    condition.text = texts.size() == 1
                         ? texts.first()
                         : QLatin1Char('(') +
                               texts.join(all ? QLatin1String(" AND ") : QLatin1String(" OR ")) +
                               QLatin1Char(')');
    return condition;
}

} // namespace

void SqlCondition::also(const QString& condition, const QVariantList& values)
{
    text += (text.isEmpty() ? QString() : QStringLiteral(" AND ")) + condition;
    parameters += values;
}

SqlCondition sqlOf(const Filter& filter)
{
    switch (filter.kind) {
    case Filter::Kind::All:
    case Filter::Kind::Any:
        break;
    case Filter::Kind::Equals:
        return equals(filter, filter.values.first());
    case Filter::Kind::In:
        return in(filter);
    case Filter::Kind::AtLeast:
        return {expressionOf(filter) + QLatin1String(" >= ?"), {parameterOf(filter, filter.values.first())}};
    case Filter::Kind::Below:
        return {expressionOf(filter) + QLatin1String(" < ?"), {parameterOf(filter, filter.values.first())}};
    case Filter::Kind::Matches:
        return {QStringLiteral("matches(?, %1)").arg(expressionOf(filter)),
                {parameterOf(filter, filter.values.first())}};
    }
    return joined(filter);
}

} // namespace PlanService
