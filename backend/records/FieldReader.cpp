#include "FieldReader.h"

#include "../http/Reply.h"

#include <QDateTime>

#include <cmath>
#include <limits>

namespace PlanService {

FieldReader::FieldReader(const FieldReader* parent, const char* list, int index, const QJsonValue& element)
    : m_object(element.toObject())
    , m_parent(parent)
    , m_name(list)
    , m_index(index)
{
    if (!element.isObject()) {
        throw ApiError(400, QStringLiteral("wrongType"),
                       QStringLiteral("'%1' has to be an object").arg(path()), path());
    }
}

FieldReader::FieldReader(const FieldReader* parent, const char* key)
    : m_parent(parent)
    , m_name(key)
{
    const QJsonValue value = parent->m_object.value(QLatin1String(key));
    if (!value.isUndefined() && !value.isObject()) {
        parent->wrongType(key, "an object");
    }
    m_object = value.toObject();
}

QString FieldReader::path() const
{
    QString text;
    for (const FieldReader* at = this; at != nullptr && at->m_name != nullptr; at = at->m_parent) {
        QString step = QLatin1String(at->m_name);
        if (at->m_index >= 0) {
            step += QStringLiteral("[%1]").arg(at->m_index);
        }
        text = text.isEmpty() ? step : step + QLatin1Char('.') + text;
    }
    return text;
}

QString FieldReader::pathOf(const char* key) const
{
    const QString before = path();
    return before.isEmpty() ? QString(QLatin1String(key)) : before + QLatin1Char('.') + QLatin1String(key);
}

void FieldReader::refuse(const char* key, const QString& code, const QString& message) const
{
    throw ApiError(400, code, message, pathOf(key));
}

void FieldReader::wrongType(const char* key, const char* wanted) const
{
    refuse(key, QStringLiteral("wrongType"),
           QStringLiteral("'%1' has to be %2").arg(pathOf(key), QLatin1String(wanted)));
}

namespace {

/// Most texts are ASCII, which is told in one go.
bool isWellFormed(const QString& text)
{
    for (const QChar c : text) {
        if (c.unicode() == 0 || c.unicode() >= 0x80) {
            return !text.contains(QChar(0)) && text.isValidUtf16();
        }
    }
    return true;
}

} // namespace

QString FieldReader::checked(const char* key, const QJsonValue& value) const
{
    if (!value.isString()) {
        wrongType(key, "text");
    }
    const QString text = value.toString();
    if (text.size() > longestText) {
        refuse(key, QStringLiteral("textTooLong"),
               QStringLiteral("'%1' has %2 characters, at most %3 are accepted")
                   .arg(pathOf(key))
                   .arg(text.size())
                   .arg(longestText));
    }
    if (!isWellFormed(text)) {
        refuse(key, QStringLiteral("badText"),
               QStringLiteral("'%1' holds a null character or half of a surrogate pair").arg(pathOf(key)));
    }
    return text;
}

QString FieldReader::text(const char* key) const
{
    const QJsonValue value = m_object.value(QLatin1String(key));
    return value.isUndefined() ? QString() : checked(key, value);
}

QString FieldReader::indexedName(const char* key) const
{
    const QString name = text(key);
    const int bytes = name.toUtf8().size();
    if (bytes > longestIndexedName) {
        refuse(key, QStringLiteral("textTooLong"),
               QStringLiteral("'%1' has %2 bytes in UTF-8, at most %3 are accepted")
                   .arg(pathOf(key))
                   .arg(bytes)
                   .arg(longestIndexedName));
    }
    return name;
}

QString FieldReader::textOrNull(const char* key) const
{
    return m_object.value(QLatin1String(key)).isNull() ? QString() : text(key);
}

QString FieldReader::date(const char* key) const
{
    const QString given = text(key);
    if (given.isEmpty()) {
        return given;
    }
    const std::optional<QString> date = siteDate(given);
    if (!date) {
        refuse(key, QStringLiteral("badDate"),
               QStringLiteral("'%1' has to be a date of the site's clock, yyyy-MM-ddThh:mm:ss.zzz, not '%2'")
                   .arg(pathOf(key), shortened(given)));
    }
    return *date;
}

std::optional<int> FieldReader::whole(const char* key) const
{
    const std::optional<double> given = number(key);
    if (!given) {
        return std::nullopt;
    }
    if (std::floor(*given) != *given || *given < std::numeric_limits<int>::min() ||
        *given > std::numeric_limits<int>::max()) {
        wrongType(key, "a whole number of 32 bits");
    }
    return static_cast<int>(*given);
}

std::optional<double> FieldReader::number(const char* key) const
{
    const QJsonValue value = m_object.value(QLatin1String(key));
    if (value.isUndefined()) {
        return std::nullopt;
    }
    if (!value.isDouble() || !std::isfinite(value.toDouble())) {
        wrongType(key, "a number");
    }
    return value.toDouble();
}

std::optional<bool> FieldReader::flag(const char* key) const
{
    const QJsonValue value = m_object.value(QLatin1String(key));
    if (value.isUndefined()) {
        return std::nullopt;
    }
    if (!value.isBool()) {
        wrongType(key, "true or false");
    }
    return value.toBool();
}

QStringList FieldReader::texts(const char* key) const
{
    QStringList list;
    const QJsonArray values = array(key);
    for (const QJsonValue& value : values) {
        list.append(checked(key, value));
    }
    return list;
}

QJsonArray FieldReader::array(const char* key) const
{
    const QJsonValue value = m_object.value(QLatin1String(key));
    if (!value.isUndefined() && !value.isArray()) {
        wrongType(key, "a list");
    }
    return value.toArray();
}

namespace {

/// The digits at @p at as a number, -1 when they are none.
int digits(const QString& text, int at, int count)
{
    int number = 0;
    for (int i = at; i < at + count; ++i) {
        const ushort c = i < text.size() ? text.at(i).unicode() : 0;
        if (c < '0' || c > '9') {
            return -1;
        }
        number = number * 10 + (c - '0');
    }
    return number;
}

} // namespace

std::optional<QString> siteDate(const QString& text)
{
    const auto is = [&](int at, char c) {
        return at < text.size() && text.at(at) == QLatin1Char(c);
    };
    const int year = digits(text, 0, 4);
    const int month = digits(text, 5, 2);
    const int day = digits(text, 8, 2);
    if (year < 1 || !is(4, '-') || !is(7, '-') || !QDate::isValid(year, month, day)) {
        return std::nullopt;
    }
    QString whole = text;
    if (text.size() == 10) {
        return whole + QLatin1String("T00:00:00.000");
    }
    if (text.size() == 16) {
        whole += QLatin1String(":00.000");
    } else if (text.size() == 19) {
        whole += QLatin1String(".000");
    } else if (text.size() == 21 || text.size() == 22) {
        whole += QStringLiteral("0").repeated(23 - text.size());
    }
    const int hour = digits(whole, 11, 2);
    const int minute = digits(whole, 14, 2);
    const int second = digits(whole, 17, 2);
    const bool separated = (is(10, 'T') || is(10, ' ')) && is(13, ':') && whole.size() == 23 &&
                           whole.at(16) == QLatin1Char(':') && whole.at(19) == QLatin1Char('.');
    if (!separated || hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59 ||
        digits(whole, 20, 3) < 0) {
        return std::nullopt;
    }
    if (whole.at(10) != QLatin1Char('T')) {
        whole[10] = QLatin1Char('T');
    }
    return whole;
}

QString siteNow()
{
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddThh:mm:ss.zzz"));
}

QString shortened(const QString& text)
{
    constexpr int most = 80;
    return text.size() <= most ? text : text.left(most) + QStringLiteral("...");
}

} // namespace PlanService
