#include <model/KvExchangeDate.h>
#include <support/ScopedTimeZone.h>

#include <QtCore/QLocale>
#include <QtCore/QRandomGenerator>
#include <QtTest/QtTest>

namespace {

const QString Form = QStringLiteral("yyyy-MM-ddThh:mm:ss");

/// Everything that tells two date-times apart, the invalid ones too.
QString asText(const QDateTime& dateTime)
{
    return QStringLiteral("%1 %2 %3 %4 %5 %6")
        .arg(dateTime.isNull())
        .arg(dateTime.isValid())
        .arg(dateTime.date().toJulianDay())
        .arg(dateTime.time().msecsSinceStartOfDay())
        .arg(int(dateTime.timeSpec()))
        .arg(dateTime.isValid() ? dateTime.toMSecsSinceEpoch() : 0);
}

} // namespace

class KvPlanExchangeDateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QLocale::setDefault(QLocale::c()); }
    void agreesWithQtOnHostileTexts_data();
    void agreesWithQtOnHostileTexts();
    void agreesWithQtOnRandomTexts_data();
    void agreesWithQtOnRandomTexts();
    void agreesWithQtAroundClockChanges_data() { zones(); }
    void agreesWithQtAroundClockChanges();

private:
    static void zones()
    {
        QTest::addColumn<QByteArray>("zone");
        for (const char* zone : {"Asia/Shanghai", "Europe/Berlin", "UTC", "America/Sao_Paulo"})
            QTest::newRow(zone) << QByteArray(zone);
    }
    static void compare(const QString& text)
    {
        QCOMPARE(asText(Kv::exchangeDateTime(text)), asText(QDateTime::fromString(text, Form)));
    }
};

void KvPlanExchangeDateTest::agreesWithQtOnHostileTexts_data()
{
    QTest::addColumn<QString>("text");
    const QStringList texts = {
        QString(),
        QStringLiteral(""),
        QStringLiteral(" "),
        QStringLiteral("2024-03-05T08:00:00"),
        QStringLiteral("2024-3-5T8:0:0"),
        QStringLiteral("2024-03-05T8:00:00"),
        QStringLiteral("2024-03-05T08:00:0"),
        QStringLiteral("24-03-05T08:00:00"),
        QStringLiteral("12024-03-05T08:00:00"),
        QStringLiteral("-2024-03-05T08:00:00"),
        QStringLiteral("+024-03-05T08:00:00"),
        QStringLiteral("2024-03-05"),
        QStringLiteral("2024-03-05T"),
        QStringLiteral("2024-03-05 08:00:00"),
        QStringLiteral("2024-03-05t08:00:00"),
        QStringLiteral(" 2024-03-05T08:00:00"),
        QStringLiteral("2024-03-05T08:00:00 "),
        QStringLiteral("2024-03-05T 8:00:00"),
        QStringLiteral("2024- 3-05T08:00:00"),
        QStringLiteral("2024-03-05T08:00:00Z"),
        QStringLiteral("2024-03-05T08:00:00.000"),
        QStringLiteral("2024-03-05T08:00:00+08:00"),
        QStringLiteral("2024-03-05T24:00:00"),
        QStringLiteral("2024-03-05T23:60:00"),
        QStringLiteral("2024-03-05T23:59:60"),
        QStringLiteral("2024-00-05T08:00:00"),
        QStringLiteral("2024-13-05T08:00:00"),
        QStringLiteral("2024-03-00T08:00:00"),
        QStringLiteral("2024-04-31T08:00:00"),
        QStringLiteral("2023-02-29T08:00:00"),
        QStringLiteral("2024-02-29T08:00:00"),
        QStringLiteral("1900-02-29T08:00:00"),
        QStringLiteral("0000-01-01T00:00:00"),
        QStringLiteral("0001-01-01T00:00:00"),
        QStringLiteral("0099-12-31T23:59:59"),
        QStringLiteral("1582-10-10T00:00:00"),
        QStringLiteral("9999-12-31T23:59:59"),
        QStringLiteral("0x24-03-05T08:00:00"),
        QStringLiteral("1e03-03-05T08:00:00"),
        QString::fromUtf8("٢٠٢٤-٠٣-٠٥T٠٨:٠٠:٠٠"),
        QString::fromUtf8("２０２４-０３-０５T０８:００:００"),
        QString::fromUtf8("2024−03−05T08:00:00"),
        QStringLiteral("yyyy-MM-ddThh:mm:ss"),
        QStringLiteral("2024-03-05T08:00:00") + QChar(0),
        QStringLiteral("2024-03-05T08:00") + QChar(0) + QStringLiteral("00"),
    };
    for (const char* locale : {"C", "ar_EG"}) {
        for (const QString& text : texts)
            QTest::addRow("\"%s\", %s", qPrintable(text), locale) << text;
    }
}

void KvPlanExchangeDateTest::agreesWithQtOnHostileTexts()
{
    QFETCH(QString, text);
    const QByteArray row = QTest::currentDataTag();
    QLocale::setDefault(QLocale(QString::fromLatin1(row.mid(row.lastIndexOf(' ') + 1))));
    compare(text);
}

void KvPlanExchangeDateTest::agreesWithQtOnRandomTexts_data()
{
    zones();
}

void KvPlanExchangeDateTest::agreesWithQtOnRandomTexts()
{
    QFETCH(QByteArray, zone);
    const ScopedTimeZone timeZone(zone);
    const QString alphabet = QStringLiteral("0123456789-:T +.Z");
    QRandomGenerator random(17);
    int valid = 0;
    for (int i = 0; i < 12000; ++i) {
        const auto digits = [&random](int bound, int width) {
            return QStringLiteral("%1").arg(random.bounded(bound), width, 10, QLatin1Char('0'));
        };
        QString text = digits(i % 3 == 0 ? 10000 : 2200, 4) + QLatin1Char('-') + digits(13, 2) +
                       QLatin1Char('-') + digits(32, 2) + QLatin1Char('T') + digits(25, 2) +
                       QLatin1Char(':') + digits(61, 2) + QLatin1Char(':') + digits(61, 2);
        for (int change = i % 2 == 0 ? 0 : random.bounded(3); change > 0; --change) {
            const int at = random.bounded(text.size());
            const QChar character = alphabet.at(random.bounded(alphabet.size()));
            if (random.bounded(2) == 0)
                text[at] = character;
            else if (random.bounded(2) == 0)
                text.insert(at, character);
            else
                text.remove(at, 1);
        }
        compare(text);
        if (QTest::currentTestFailed())
            return;
        valid += Kv::exchangeDateTime(text).isValid();
    }
    QVERIFY(valid > 4000);
}

void KvPlanExchangeDateTest::agreesWithQtAroundClockChanges()
{
    QFETCH(QByteArray, zone);
    const ScopedTimeZone timeZone(zone);
    for (const QDate& day : {QDate(2024, 3, 31), QDate(2024, 10, 27), QDate(2017, 10, 15), QDate(2018, 2, 17),
                             QDate(1986, 5, 4), QDate(1991, 9, 15)}) {
        const QDateTime start(day, QTime(0, 0, 1), Qt::UTC);
        for (int minute = 0; minute < 5 * 60; ++minute) {
            compare(start.addSecs(minute * 60LL).toString(Form));
            if (QTest::currentTestFailed())
                return;
        }
    }
}

QTEST_GUILESS_MAIN(KvPlanExchangeDateTest)
#include "KvPlanExchangeDateTest.moc"
