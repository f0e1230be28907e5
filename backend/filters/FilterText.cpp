#include "FilterText.h"

#include "../http/Reply.h"
#include "../json/ClientJson.h"
#include "../records/FieldReader.h"
#include "Pattern.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

#include <cmath>

namespace PlanService {

namespace {

ApiError refusal(const char* code, const QString& message, const QString& field = QStringLiteral("where"))
{
    return {400, QLatin1String(code), message, field};
}

class FilterReader
{
public:
    explicit FilterReader(const QVector<FilterField>& fields)
        : m_fields(fields)
    {
    }

    /// Nested by "$or" only, at most deepestNesting deep.
    Filter read(const QJsonObject& object, int depth)
    {
        Filter all;
        for (auto it = object.begin(); it != object.end(); ++it) {
            if (it.key() == QLatin1String("$or")) {
                all.terms.append(anyOf(it.value(), depth));
            } else {
                readField(fieldNamed(it.key()), it.value(), all);
            }
        }
        return all;
    }

private:
    const FilterField& fieldNamed(const QString& name) const
    {
        if (name.startsWith(QLatin1Char('$'))) {
            unknownOperator(name);
        }
        for (const FilterField& field : m_fields) {
            if (name == QLatin1String(field.name)) {
                return field;
            }
        }
        throw refusal("unknownField",
                      QStringLiteral("the filter names the field '%1', which this list is not searched by")
                          .arg(shortened(name)),
                      shortened(name));
    }

    [[noreturn]] static void unknownOperator(const QString& name)
    {
        throw refusal("unknownOperator",
                      QStringLiteral("the filter uses '%1'; known are $or, $in, $gte, $lt, $regex, $options")
                          .arg(shortened(name)),
                      shortened(name));
    }

    [[noreturn]] static void wrongType(const FilterField& field, const char* wanted)
    {
        throw refusal("wrongType",
                      QStringLiteral("the filter compares '%1' with something that is not %2")
                          .arg(QLatin1String(field.name), QLatin1String(wanted)),
                      QLatin1String(field.name));
    }

    void count()
    {
        if (++m_conditions > mostConditions) {
            throw refusal("filterTooLarge",
                          QStringLiteral("the filter has more than %1 conditions").arg(mostConditions));
        }
    }

    Filter anyOf(const QJsonValue& value, int depth)
    {
        if (!value.isArray()) {
            throw refusal("wrongType", QStringLiteral("'$or' has to be a list of filters"),
                          QStringLiteral("$or"));
        }
        if (depth >= deepestNesting) {
            throw refusal("filterTooDeep",
                          QStringLiteral("the filter nests '$or' more than %1 deep").arg(deepestNesting));
        }
        Filter any;
        any.kind = Filter::Kind::Any;
        const QJsonArray filters = value.toArray();
        for (const QJsonValue& filter : filters) {
            if (!filter.isObject()) {
                throw refusal("wrongType", QStringLiteral("'$or' has to be a list of filters"),
                              QStringLiteral("$or"));
            }
            count();
            any.terms.append(read(filter.toObject(), depth + 1));
        }
        return any;
    }

    void readField(const FilterField& field, const QJsonValue& value, Filter& all)
    {
        if (!value.isObject()) {
            add(all, Filter::Kind::Equals, field, {valueOf(field, value)});
            return;
        }
        const QJsonObject operators = value.toObject();
        if (operators.isEmpty()) {
            wrongType(field, "a value or an operator");
        }
        for (auto it = operators.begin(); it != operators.end(); ++it) {
            readOperator(field, it.key(), it.value(), operators, all);
        }
    }

    void readOperator(const FilterField& field, const QString& name, const QJsonValue& value,
                      const QJsonObject& operators, Filter& all)
    {
        if (name == QLatin1String("$in")) {
            add(all, Filter::Kind::In, field, listOf(field, value));
        } else if (name == QLatin1String("$gte")) {
            add(all, Filter::Kind::AtLeast, field, {boundOf(field, value)});
        } else if (name == QLatin1String("$lt")) {
            add(all, Filter::Kind::Below, field, {boundOf(field, value)});
        } else if (name == QLatin1String("$regex")) {
            add(all, Filter::Kind::Matches, field,
                {patternOf(field, value, operators.value(QLatin1String("$options")))});
        } else if (name == QLatin1String("$options")) {
            if (!operators.contains(QLatin1String("$regex"))) {
                throw refusal("wrongType", QStringLiteral("'$options' of '%1' goes with a '$regex' only")
                                               .arg(QLatin1String(field.name)));
            }
        } else {
            unknownOperator(name);
        }
    }

    void add(Filter& all, Filter::Kind kind, const FilterField& field, const QStringList& values)
    {
        count();
        Filter term;
        term.kind = kind;
        term.field = &field;
        term.values = values;
        all.terms.append(term);
    }

    static QString textOf(const FilterField& field, const QJsonValue& value)
    {
        const QString text = value.toString();
        if (!value.isString() || text.contains(QChar(0)) || !text.isValidUtf16()) {
            wrongType(field, "text");
        }
        return text;
    }

    static QString dateOf(const FilterField& field, const QJsonValue& value)
    {
        const QString text = textOf(field, value);
        const std::optional<QString> date = text.isEmpty() ? text : siteDate(text);
        if (!date) {
            wrongType(field, "a date, yyyy-MM-ddThh:mm:ss.zzz");
        }
        return *date;
    }

    static QString wholeOf(const FilterField& field, const QJsonValue& value)
    {
        const double number = value.toDouble();
        if (!value.isDouble() || std::floor(number) != number || std::abs(number) > 1e15) {
            wrongType(field, "a whole number");
        }
        return QString::number(static_cast<qint64>(number));
    }

    static QString realOf(const FilterField& field, const QJsonValue& value)
    {
        if (!value.isDouble()) {
            wrongType(field, "a number");
        }
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    }

    /// Flags come as what they are or, where the service writes numbers itself, as 1 and 0.
    static QString flagOf(const FilterField& field, const QJsonValue& value)
    {
        const bool isNumber = value.isDouble() && (value.toDouble() == 0 || value.toDouble() == 1);
        if (!value.isBool() && !isNumber) {
            wrongType(field, "true or false");
        }
        return value.toBool(value.toDouble() == 1) ? QStringLiteral("1") : QStringLiteral("0");
    }

    /// Empty for null, which is the same as a text that is not set.
    static QString valueOf(const FilterField& field, const QJsonValue& value)
    {
        if (value.isNull()) {
            return QString();
        }
        switch (field.kind) {
        case FieldKind::Date:
            return dateOf(field, value);
        case FieldKind::Whole:
            return wholeOf(field, value);
        case FieldKind::Real:
            return realOf(field, value);
        case FieldKind::Flag:
            return flagOf(field, value);
        case FieldKind::Text:
        case FieldKind::Name:
        case FieldKind::Texts:
            break;
        }
        return textOf(field, value);
    }

    static QString boundOf(const FilterField& field, const QJsonValue& value)
    {
        if (value.isNull() || field.kind == FieldKind::Flag || field.kind == FieldKind::Texts) {
            wrongType(field, "a value that has an order");
        }
        return valueOf(field, value);
    }

    QStringList listOf(const FilterField& field, const QJsonValue& value)
    {
        if (!value.isArray()) {
            wrongType(field, "a list, as '$in' needs");
        }
        QStringList list;
        const QJsonArray values = value.toArray();
        m_listed += values.size();
        if (m_listed > mostListedValues) {
            throw refusal(
                "filterTooLarge",
                QStringLiteral("the filter lists more than %1 values in '$in'").arg(mostListedValues));
        }
        for (const QJsonValue& element : values) {
            list.append(valueOf(field, element));
        }
        return list;
    }

    static QString patternOf(const FilterField& field, const QJsonValue& pattern, const QJsonValue& options)
    {
        if (field.kind != FieldKind::Text && field.kind != FieldKind::Name) {
            throw refusal("wrongType",
                          QStringLiteral("'%1' is no text that a '$regex' could look at")
                              .arg(QLatin1String(field.name)),
                          QLatin1String(field.name));
        }
        const QString letters = options.isUndefined() ? QString() : textOf(field, options);
        return checkedPattern(textOf(field, pattern), letters);
    }

    const QVector<FilterField>& m_fields;
    int m_conditions = 0;
    int m_listed = 0;
};

} // namespace

Filter readFilter(const QString& text, const QVector<FilterField>& fields)
{
    if (text.isEmpty()) {
        return Filter();
    }
    QJsonParseError error;
    const QJsonDocument document = clientDocument(text.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError) {
        throw refusal("badFilter", QStringLiteral("the filter is not JSON: %1 at byte %2")
                                       .arg(error.errorString())
                                       .arg(error.offset));
    }
    if (!document.isObject()) {
        throw refusal("badFilter", QStringLiteral("the filter has to be a JSON object"));
    }
    return FilterReader(fields).read(document.object(), 0);
}

} // namespace PlanService
