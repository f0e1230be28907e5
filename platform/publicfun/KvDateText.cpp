#include <KvPublicFun/KvPub.h>

#include <QtCore/QLocale>

// Written out by hand, because Qt's format-string parser takes several microseconds a text, and a plan node
// holds six dates.

namespace {

constexpr int MsPerMinute = 60 * 1000;
constexpr int MsPerDay = 24 * 60 * MsPerMinute;

/// Reads a text from left to right. Every reader leaves the position alone when it finds something else.
class Reader
{
public:
    explicit Reader(const QString& text)
        : m_at(text.utf16())
        , m_end(m_at + text.size())
    {
    }

    bool atEnd() const { return m_at == m_end; }

    bool accept(char character)
    {
        if (atEnd() || *m_at != static_cast<ushort>(character))
            return false;
        ++m_at;
        return true;
    }

    /// Exactly `count` digits, of 0 to 9 alone.
    bool digits(int count, int& value)
    {
        if (m_end - m_at < count)
            return false;
        int sum = 0;
        for (int i = 0; i < count; ++i) {
            const int digit = m_at[i] - '0';
            if (digit < 0 || digit > 9)
                return false;
            sum = sum * 10 + digit;
        }
        m_at += count;
        value = sum;
        return true;
    }

    /// At least one digit of a fraction of a second; those beyond the milliseconds are passed over.
    bool fraction(int& milliseconds)
    {
        int digit = 0;
        int weight = 100;
        int sum = 0;
        if (!digits(1, digit))
            return false;
        do {
            sum += digit * weight;
            weight /= 10;
        } while (digits(1, digit));
        milliseconds = sum;
        return true;
    }

private:
    const ushort* m_at;
    const ushort* m_end;
};

/// `hh:mm`, `hh:mm:ss` or `hh:mm:ss.f…`; 24:00 gives a whole day.
bool readTime(Reader& reader, int& msOfDay)
{
    int hour = 0;
    int minute = 0;
    int second = 0;
    int milliseconds = 0;
    if (!reader.digits(2, hour) || !reader.accept(':') || !reader.digits(2, minute))
        return false;
    if (reader.accept(':')) {
        if (!reader.digits(2, second))
            return false;
        if ((reader.accept('.') || reader.accept(',')) && !reader.fraction(milliseconds))
            return false;
    }
    if (hour > 24 || minute > 59 || second > 59)
        return false;
    msOfDay = ((hour * 60 + minute) * 60 + second) * 1000 + milliseconds;
    return msOfDay <= MsPerDay;
}

/// `+hh:mm`, `+hhmm` or `+hh`, the sign being read already.
bool readOffset(Reader& reader, int& offsetMinutes)
{
    int hour = 0;
    int minute = 0;
    if (!reader.digits(2, hour))
        return false;
    if (!reader.atEnd()) {
        reader.accept(':');
        if (!reader.digits(2, minute))
            return false;
    }
    offsetMinutes = hour * 60 + minute;
    return hour <= 23 && minute <= 59;
}

QDateTime wallClock(const QDate& date, int msOfDay)
{
    const QTime time = QTime::fromMSecsSinceStartOfDay(msOfDay);
    const QDateTime local(date, time);
    if (local.isValid())
        return local;
    // The local clock skips this time. A local date-time would be invalid and its text lost.
    const int offset = QDateTime(date.addDays(-1), time).offsetFromUtc();
    return QDateTime(date, time, Qt::OffsetFromUTC, offset);
}

QDateTime instant(const QDate& date, int msOfDay, int offsetMinutes)
{
    static const qint64 unixEpoch = QDate(1970, 1, 1).toJulianDay();
    const qint64 days = date.toJulianDay() - unixEpoch;
    return QDateTime::fromMSecsSinceEpoch(days * MsPerDay + msOfDay - qint64(offsetMinutes) * MsPerMinute);
}

void put(char16_t* at, int value, int count)
{
    for (int i = count - 1; i >= 0; --i) {
        at[i] = static_cast<char16_t>('0' + value % 10);
        value /= 10;
    }
}

} // namespace

namespace KvPub {

QString getDateTimeFormat()
{
    return QStringLiteral("yyyy-MM-ddThh:mm:ss.zzz");
}

QDateTime getDateTimeByQString(const QString& text)
{
    Reader reader(text);
    int year = 0;
    int month = 0;
    int day = 0;
    if (!reader.digits(4, year) || !reader.accept('-') || !reader.digits(2, month) || !reader.accept('-') ||
        !reader.digits(2, day))
        return QDateTime();
    QDate date(year, month, day);
    if (!date.isValid())
        return QDateTime();
    if (reader.atEnd()) {
        const QDateTime midnight(date, QTime(0, 0));
        return midnight.isValid() ? midnight : date.startOfDay();
    }

    int msOfDay = 0;
    if (!(reader.accept('T') || reader.accept(' ')) || !readTime(reader, msOfDay))
        return QDateTime();
    if (msOfDay == MsPerDay) {
        date = date.addDays(1);
        msOfDay = 0;
    }
    if (reader.atEnd())
        return wallClock(date, msOfDay);

    int offsetMinutes = 0;
    if (reader.accept('+')) {
        if (!readOffset(reader, offsetMinutes))
            return QDateTime();
    } else if (reader.accept('-')) {
        if (!readOffset(reader, offsetMinutes))
            return QDateTime();
        offsetMinutes = -offsetMinutes;
    } else if (!reader.accept('Z')) {
        return QDateTime();
    }
    return reader.atEnd() ? instant(date, msOfDay, offsetMinutes) : QDateTime();
}

QString getQStringByDateTime(const QDateTime& dateTime)
{
    if (!dateTime.isValid())
        return QString();
    int year = 0;
    int month = 0;
    int day = 0;
    dateTime.date().getDate(&year, &month, &day);
    // The C locale, because QDateTime::toString would write the digits of the user's language, which the
    // service does not read.
    if (year < 0 || year > 9999)
        return QLocale::c().toString(dateTime, getDateTimeFormat());
    const int msOfDay = dateTime.time().msecsSinceStartOfDay();

    char16_t text[] = u"yyyy-MM-ddThh:mm:ss.zzz";
    put(text, year, 4);
    put(text + 5, month, 2);
    put(text + 8, day, 2);
    put(text + 11, msOfDay / (60 * MsPerMinute), 2);
    put(text + 14, msOfDay / MsPerMinute % 60, 2);
    put(text + 17, msOfDay / 1000 % 60, 2);
    put(text + 20, msOfDay % 1000, 3);
    return QString::fromUtf16(text, 23);
}

} // namespace KvPub
