#include <KvPublicFun/KvPub.h>
#include <support/ScopedTimeZone.h>

#include <QtCore/QRandomGenerator>
#include <QtCore/QRegularExpression>
#include <QtCore/QTimeZone>
#include <QtTest/QtTest>

namespace {

const QList<QByteArray> Zones = {"Asia/Shanghai",       "Europe/Berlin", "UTC",         "America/Sao_Paulo",
                                 "Australia/Lord_Howe", "Pacific/Apia",  "Asia/Kolkata"};

/// What the reader is described to do, put together from slow and general parts: the wall-clock text, or for
/// texts with a zone the instant in milliseconds, or nothing.
struct Expected
{
    bool isNull = true;
    bool isInstant = false;
    QString text;
    qint64 msSinceEpoch = 0;
};

Expected expectedFor(const QString& text)
{
    static const QRegularExpression pattern(QStringLiteral(
        "\\A([0-9]{4})-([0-9]{2})-([0-9]{2})"
        "(?:[T "
        "]([0-9]{2}):([0-9]{2})(?::([0-9]{2})(?:[.,]([0-9]+))?)?(Z|[+-][0-9]{2}(?::?[0-9]{2})?)?)?\\z"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return {};
    QDate date(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt());
    const int hour = match.captured(4).toInt();
    const QTime time(hour == 24 ? 0 : hour, match.captured(5).toInt(), match.captured(6).toInt(),
                     match.captured(7).leftJustified(3, QLatin1Char('0'), true).toInt());
    if (!date.isValid() || !time.isValid() || (hour == 24 && time != QTime(0, 0)))
        return {};
    if (hour == 24)
        date = date.addDays(1);

    Expected expected;
    expected.isNull = false;
    const QString zone = match.captured(8);
    if (zone.isEmpty()) {
        const QDateTime utc(date, time, Qt::UTC);
        expected.text = QLocale::c().toString(utc, KvPub::getDateTimeFormat());
        return expected;
    }
    expected.isInstant = true;
    int minutes = 0;
    if (zone != QLatin1String("Z")) {
        const int offsetHour = zone.midRef(1, 2).toInt();
        const int offsetMinute = zone.size() > 3 ? zone.rightRef(2).toInt() : 0;
        if (offsetHour > 23 || offsetMinute > 59)
            return {};
        minutes = (offsetHour * 60 + offsetMinute) * (zone.startsWith(QLatin1Char('-')) ? -1 : 1);
    }
    expected.msSinceEpoch = QDateTime(date, time, Qt::UTC).toMSecsSinceEpoch() - minutes * 60000LL;
    return expected;
}

} // namespace

class KvDateTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reads_data();
    void reads();
    void refuses_data();
    void refuses();
    void keepsTheTextOfEveryMinuteAroundAClockChange_data();
    void keepsTheTextOfEveryMinuteAroundAClockChange();
    void readsWhatTheDescriptionSays();
    void writesWhatToStringWrites_data();
    void writesWhatToStringWrites();
    void writesNothingForNoDate();
    void writesAsciiDigitsInEveryLanguage();
};

void KvDateTextTest::reads_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("written");
    QTest::addColumn<QString>("instant");

    const auto row = [](const char* name, const char* zone, const char* text, const char* written,
                        const char* instant) {
        QTest::newRow(name) << QByteArray(zone) << QString::fromLatin1(text) << QString::fromLatin1(written)
                            << QString::fromLatin1(instant);
    };
    row("the service's form", "Asia/Shanghai", "2024-03-05T08:00:00.125", "2024-03-05T08:00:00.125",
        "2024-03-05T00:00:00.125Z");
    row("without fraction", "Asia/Shanghai", "2024-03-05T08:00:00", "2024-03-05T08:00:00.000",
        "2024-03-05T00:00:00.000Z");
    row("with a space", "Asia/Shanghai", "2024-03-05 08:00:00", "2024-03-05T08:00:00.000",
        "2024-03-05T00:00:00.000Z");
    row("without seconds", "Asia/Shanghai", "2024-03-05T08:30", "2024-03-05T08:30:00.000",
        "2024-03-05T00:30:00.000Z");
    row("date alone", "Asia/Shanghai", "2024-03-05", "2024-03-05T00:00:00.000", "2024-03-04T16:00:00.000Z");
    row("leap day", "UTC", "2024-02-29", "2024-02-29T00:00:00.000", "2024-02-29T00:00:00.000Z");
    row("first year", "UTC", "0001-01-01T00:00:00", "0001-01-01T00:00:00.000", "0001-01-01T00:00:00.000Z");
    row("last year", "UTC", "9999-12-31T23:59:59.999", "9999-12-31T23:59:59.999", "9999-12-31T23:59:59.999Z");
    row("one digit of fraction", "UTC", "2024-03-05T08:00:00.5", "2024-03-05T08:00:00.500",
        "2024-03-05T08:00:00.500Z");
    row("two digits of fraction after a comma", "UTC", "2024-03-05T08:00:00,25", "2024-03-05T08:00:00.250",
        "2024-03-05T08:00:00.250Z");
    row("nanoseconds are cut off, not rounded", "UTC", "2024-12-31T23:59:59.999999999",
        "2024-12-31T23:59:59.999", "2024-12-31T23:59:59.999Z");
    row("forty digits of fraction", "UTC", "2024-03-05T08:00:00.1234567890123456789012345678901234567890",
        "2024-03-05T08:00:00.123", "2024-03-05T08:00:00.123Z");
    row("end of the day", "Asia/Shanghai", "2024-12-31T24:00:00", "2025-01-01T00:00:00.000",
        "2024-12-31T16:00:00.000Z");
    row("UTC is converted", "Asia/Shanghai", "2024-03-05T20:00:00.000Z", "2024-03-06T04:00:00.000",
        "2024-03-05T20:00:00.000Z");
    row("offset with colon", "Asia/Shanghai", "2024-03-05T20:00:00+02:00", "2024-03-06T02:00:00.000",
        "2024-03-05T18:00:00.000Z");
    row("offset without colon", "Asia/Shanghai", "2024-03-05T20:00:00.25-0330", "2024-03-06T07:30:00.250",
        "2024-03-05T23:30:00.250Z");
    row("offset of hours", "Asia/Shanghai", "2024-03-05 20:00+08", "2024-03-05T20:00:00.000",
        "2024-03-05T12:00:00.000Z");
    row("last minute before the skipped hour", "Europe/Berlin", "2024-03-31T01:59:59.999",
        "2024-03-31T01:59:59.999", "2024-03-31T00:59:59.999Z");
    row("skipped hour keeps its text and means the later clock", "Europe/Berlin", "2024-03-31T02:30:00",
        "2024-03-31T02:30:00.000", "2024-03-31T01:30:00.000Z");
    row("first minute after the skipped hour", "Europe/Berlin", "2024-03-31T03:00:00",
        "2024-03-31T03:00:00.000", "2024-03-31T01:00:00.000Z");
    row("first pass of the repeated hour from UTC", "Europe/Berlin", "2024-10-27T00:30:00Z",
        "2024-10-27T02:30:00.000", "2024-10-27T00:30:00.000Z");
    row("second pass of the repeated hour from UTC", "Europe/Berlin", "2024-10-27T01:30:00Z",
        "2024-10-27T02:30:00.000", "2024-10-27T01:30:00.000Z");
    row("offset that names the second pass", "Europe/Berlin", "2024-10-27T02:30:00+01:00",
        "2024-10-27T02:30:00.000", "2024-10-27T01:30:00.000Z");
    row("date alone on a day without midnight", "America/Sao_Paulo", "2017-10-15", "2017-10-15T01:00:00.000",
        "2017-10-15T03:00:00.000Z");
    row("skipped midnight keeps its text", "America/Sao_Paulo", "2017-10-15T00:00:00",
        "2017-10-15T00:00:00.000", "2017-10-15T03:00:00.000Z");
    row("skipped day keeps its text", "Pacific/Apia", "2011-12-30T12:00:00", "2011-12-30T12:00:00.000",
        "2011-12-30T22:00:00.000Z");
}

void KvDateTextTest::reads()
{
    QFETCH(QByteArray, zone);
    QFETCH(QString, text);
    QFETCH(QString, written);
    QFETCH(QString, instant);
    const ScopedTimeZone timeZone(zone);

    const QDateTime dateTime = KvPub::getDateTimeByQString(text);

    QVERIFY(dateTime.isValid());
    QCOMPARE(KvPub::getQStringByDateTime(dateTime), written);
    QCOMPARE(dateTime.toUTC().toString(Qt::ISODateWithMs), instant);
}

void KvDateTextTest::refuses_data()
{
    QTest::addColumn<QString>("text");

    const QStringList texts = {
        QString(),
        QStringLiteral(""),
        QStringLiteral(" "),
        QStringLiteral("2024"),
        QStringLiteral("2024-03"),
        QStringLiteral("2024-3-5"),
        QStringLiteral("24-03-05"),
        QStringLiteral("20240305T080000"),
        QStringLiteral("2024/03/05"),
        QStringLiteral("05.03.2024"),
        QStringLiteral("2023-02-29"),
        QStringLiteral("2024-04-31T08:00:00"),
        QStringLiteral("2024-13-01"),
        QStringLiteral("2024-00-10"),
        QStringLiteral("0000-01-01"),
        QStringLiteral("-0044-03-15"),
        QStringLiteral("+2024-03-05"),
        QStringLiteral("12024-03-05"),
        QStringLiteral(" 2024-03-05"),
        QStringLiteral("2024-03-05 "),
        QStringLiteral("2024-03-05Z"),
        QStringLiteral("2024-03-05T"),
        QStringLiteral("2024-03-05T08"),
        QStringLiteral("2024-03-05T8:00:00"),
        QStringLiteral("2024-03-05T08:00:"),
        QStringLiteral("2024-03-05T08:00:00."),
        QStringLiteral("2024-03-05T08:00:00.Z"),
        QStringLiteral("2024-03-05T08:00.5"),
        QStringLiteral("2024-03-05t08:00:00"),
        QStringLiteral("2024-03-05  08:00:00"),
        QStringLiteral("2024-03-05T24:00:00.001"),
        QStringLiteral("2024-03-05T24:01:00"),
        QStringLiteral("2024-03-05T25:00:00"),
        QStringLiteral("2024-03-05T08:60:00"),
        QStringLiteral("2024-03-05T08:00:60"),
        QStringLiteral("2024-03-05T08:00:00z"),
        QStringLiteral("2024-03-05T08:00:00 Z"),
        QStringLiteral("2024-03-05T08:00:00ZZ"),
        QStringLiteral("2024-03-05T08:00:00+"),
        QStringLiteral("2024-03-05T08:00:00+8"),
        QStringLiteral("2024-03-05T08:00:00+08:"),
        QStringLiteral("2024-03-05T08:00:00+08:0"),
        QStringLiteral("2024-03-05T08:00:00+24:00"),
        QStringLiteral("2024-03-05T08:00:00+08:60"),
        QStringLiteral("2024-03-05T08:00:00+08:000"),
        QStringLiteral("2024-03-05T08:00:00 Europe/Berlin"),
        QString::fromUtf8("２０２４-03-05"),
        QString::fromUtf8("٢٠٢٤-٠٣-٠٥"),
        QString::fromUtf8("2024-03-05T08:00:00.٥"),
        QStringLiteral("2024-03-05T08:00:00") + QChar(0),
        QStringLiteral("2024-03-05\n"),
        QStringLiteral("null"),
    };
    for (const QString& text : texts)
        QTest::newRow(qPrintable(QStringLiteral("\"%1\"").arg(text))) << text;
}

void KvDateTextTest::refuses()
{
    QFETCH(QString, text);
    QVERIFY(KvPub::getDateTimeByQString(text).isNull());
}

void KvDateTextTest::keepsTheTextOfEveryMinuteAroundAClockChange_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<QDate>("firstDay");

    const QList<QDate> days = {QDate(2024, 3, 30),  QDate(2024, 10, 26), QDate(2017, 10, 14),
                               QDate(2018, 2, 16),  QDate(2024, 4, 6),   QDate(2024, 10, 5),
                               QDate(2011, 12, 29), QDate(1986, 5, 3),   QDate(1991, 9, 14),
                               QDate(1969, 12, 31), QDate(1900, 12, 31), QDate(2038, 1, 18),
                               QDate(2100, 3, 27)};
    for (const QByteArray& zone : Zones) {
        for (const QDate& day : days)
            QTest::addRow("%s from %s", zone.constData(), qPrintable(day.toString(Qt::ISODate)))
                << zone << day;
    }
}

void KvDateTextTest::keepsTheTextOfEveryMinuteAroundAClockChange()
{
    QFETCH(QByteArray, zone);
    QFETCH(QDate, firstDay);
    const ScopedTimeZone timeZone(zone);

    const QDateTime start(firstDay, QTime(0, 0, 17, 42), Qt::UTC);
    for (int minute = 0; minute < 3 * 24 * 60; ++minute) {
        const QString text = start.addSecs(minute * 60LL).toString(QStringLiteral("yyyy-MM-ddThh:mm:ss.zzz"));
        QCOMPARE(KvPub::getQStringByDateTime(KvPub::getDateTimeByQString(text)), text);
    }
}

void KvDateTextTest::readsWhatTheDescriptionSays()
{
    const QStringList seeds = {QStringLiteral("2024-02-28T23:59:59.987"),
                               QStringLiteral("2024-10-27 02:30:00+01:00"),
                               QStringLiteral("1999-12-31T24:00"),
                               QStringLiteral("2024-03-31T02:15:00.123456Z"),
                               QStringLiteral("0001-01-01"),
                               QStringLiteral("2031-07-09T08:00:00-1130")};
    const QString alphabet = QStringLiteral("0123456789-:.,TZ +t");
    const ScopedTimeZone timeZone("Europe/Berlin");
    QRandomGenerator random(20240331);
    int accepted = 0;
    for (int i = 0; i < 60000; ++i) {
        QString text = seeds.at(i % seeds.size());
        for (int change = random.bounded(4); change > 0; --change) {
            const int at = random.bounded(text.size() + 1);
            const QChar character = alphabet.at(random.bounded(alphabet.size()));
            switch (random.bounded(4)) {
            case 0:
                text.insert(at, character);
                break;
            case 1:
                text.remove(at, 1);
                break;
            case 2:
                text.truncate(at);
                break;
            default:
                text.replace(at, 1, character);
            }
        }
        const Expected expected = expectedFor(text);
        const QDateTime dateTime = KvPub::getDateTimeByQString(text);
        QVERIFY2(dateTime.isNull() == expected.isNull, qPrintable(text));
        if (expected.isNull)
            continue;
        ++accepted;
        QVERIFY2(dateTime.isValid(), qPrintable(text));
        if (expected.isInstant)
            QVERIFY2(dateTime.toMSecsSinceEpoch() == expected.msSinceEpoch, qPrintable(text));
        else if (text.size() > 10)
            QCOMPARE(KvPub::getQStringByDateTime(dateTime), expected.text);
        else
            QVERIFY2(dateTime == dateTime.date().startOfDay(), qPrintable(text));
    }
    QVERIFY(accepted > 10000);
}

void KvDateTextTest::writesWhatToStringWrites_data()
{
    QTest::addColumn<QByteArray>("zone");
    for (const QByteArray& zone : Zones)
        QTest::newRow(zone.constData()) << zone;
}

void KvDateTextTest::writesWhatToStringWrites()
{
    QFETCH(QByteArray, zone);
    const ScopedTimeZone timeZone(zone);
    const QTimeZone berlin("Europe/Berlin");
    QVERIFY(berlin.isValid());
    QRandomGenerator random(7);
    const qint64 firstDay = QDate(-4700, 1, 1).toJulianDay();
    const qint64 lastDay = QDate(12000, 1, 1).toJulianDay();
    for (int i = 0; i < 20000; ++i) {
        const bool anyYear = i % 4 == 0;
        const QDate date =
            anyYear ? QDate::fromJulianDay(firstDay + qint64(random.generate() % quint64(lastDay - firstDay)))
                    : QDate(1970, 1, 1).addDays(random.bounded(365 * 70));
        const QTime time = QTime::fromMSecsSinceStartOfDay(random.bounded(24 * 60 * 60 * 1000));
        QDateTime dateTime;
        switch (random.bounded(5)) {
        case 0:
            dateTime = QDateTime(date, time, Qt::UTC);
            break;
        case 1:
            dateTime = QDateTime(date, time, Qt::OffsetFromUTC, random.bounded(-50000, 50000));
            break;
        case 2:
            dateTime = QDateTime(date, time, berlin);
            break;
        default:
            dateTime = QDateTime(date, time);
        }
        QCOMPARE(KvPub::getQStringByDateTime(dateTime),
                 QLocale::c().toString(dateTime, KvPub::getDateTimeFormat()));
    }
}

void KvDateTextTest::writesNothingForNoDate()
{
    const ScopedTimeZone timeZone("Europe/Berlin");
    QCOMPARE(KvPub::getQStringByDateTime(QDateTime()), QString());
    QCOMPARE(KvPub::getQStringByDateTime(QDateTime(QDate(), QTime(8, 0))), QString());
    QCOMPARE(KvPub::getQStringByDateTime(QDateTime(QDate(2023, 2, 29), QTime(8, 0))), QString());
    // Built by hand in the skipped hour it is invalid; only reading the text keeps such a time.
    QCOMPARE(KvPub::getQStringByDateTime(QDateTime(QDate(2024, 3, 31), QTime(2, 30))), QString());
}

void KvDateTextTest::writesAsciiDigitsInEveryLanguage()
{
    const bool ownDigits = QLocale::system().zeroDigit() != QLatin1Char('0');
    QCOMPARE(ownDigits, qEnvironmentVariable("LC_ALL").startsWith(QLatin1String("ar_EG")));
    for (const int year : {2024, 12024, -44}) {
        const QDateTime dateTime(QDate(year, 3, 5), QTime(8, 9, 10, 11));
        const QString text = KvPub::getQStringByDateTime(dateTime);
        QVERIFY(text.endsWith(QLatin1String("-03-05T08:09:10.011")));
        QCOMPARE(text != dateTime.toString(KvPub::getDateTimeFormat()), ownDigits);
    }
}

QTEST_GUILESS_MAIN(KvDateTextTest)
#include "KvDateTextTest.moc"
