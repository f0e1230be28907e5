#include <model/KvExchangeDate.h>

namespace Kv {

namespace {

constexpr int TextLength = 19;

/// Reads the digits at one place; what is none leaves a mark in `strange`.
int number(const QChar* text, int from, int count, bool& strange)
{
    int sum = 0;
    for (int at = from; at < from + count; ++at) {
        const int digit = text[at].unicode() - '0';
        strange = strange || digit < 0 || digit > 9;
        sum = sum * 10 + digit;
    }
    return sum;
}

/// What is in form and exists; a null date-time for all else, which may be valid nevertheless.
QDateTime inForm(const QString& text)
{
    if (text.size() != TextLength)
        return QDateTime();
    const QChar* const at = text.constData();
    bool strange = at[4] != QLatin1Char('-') || at[7] != QLatin1Char('-') || at[10] != QLatin1Char('T') ||
                   at[13] != QLatin1Char(':') || at[16] != QLatin1Char(':');
    if (strange)
        return QDateTime();
    const int year = number(at, 0, 4, strange);
    const int month = number(at, 5, 2, strange);
    const int day = number(at, 8, 2, strange);
    const int hour = number(at, 11, 2, strange);
    const int minute = number(at, 14, 2, strange);
    const int second = number(at, 17, 2, strange);
    // Of an invalid time QDateTime would make midnight.
    if (strange || !QTime::isValid(hour, minute, second))
        return QDateTime();
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second));
}

} // namespace

QDateTime exchangeDateTime(const QString& text)
{
    if (text.isEmpty())
        return QDateTime();
    const QDateTime dateTime = inForm(text);
    if (dateTime.isValid())
        return dateTime;
    // Qt's own reader decides whatever is not plain, digits of other scripts for one.
    return QDateTime::fromString(text, QStringLiteral("yyyy-MM-ddThh:mm:ss"));
}

} // namespace Kv
