// Dates are the wall-clock time of the site: what is read and written again is the same text, in every time
// zone, also in hours that the clock skips or shows twice. The program is run once a zone, by the variable
// TZ.

#include "KvPlanRecordsDump.h"

#include <model/KvDecodePool.h>
#include <model/KvPlanCodec.h>

#include <QtCore/QJsonArray>
#include <QtCore/QTimeZone>
#include <QtTest/QtTest>

namespace {

const char* const dateKeys[] = {"createdAt",       "updatedAt",        "startDate",     "finishDate",
                                "actualStartDate", "actualFinishDate", "entityHideDate"};

QString textOf(const QDate& date, int minute)
{
    return date.toString(Qt::ISODate) + QStringLiteral("T%1:%2:00.000")
                                            .arg(minute / 60, 2, 10, QLatin1Char('0'))
                                            .arg(minute % 60, 2, 10, QLatin1Char('0'));
}

// The same text under every date key of a node, read and written again.
QJsonObject throughNode(const QString& text)
{
    QJsonObject json;
    for (const char* key : dateKeys)
        json.insert(QLatin1String(key), text);
    KvPlanNode node;
    Kv::jsonObjectToPlanNode(json, node);
    QJsonObject out;
    Kv::planNodeToJsonObject(node, out, true);
    QJsonObject dates;
    for (const char* key : dateKeys)
        dates.insert(QLatin1String(key), out.value(QLatin1String(key)));
    return dates;
}

QString firstDifference(const QString& in, const QString& expected)
{
    const QJsonObject out = throughNode(in);
    for (const char* key : dateKeys) {
        const QString text = out.value(QLatin1String(key)).toString();
        if (text != expected)
            return QStringLiteral("%1 under %2 came back as \"%3\"").arg(in, QLatin1String(key), text);
    }
    return {};
}

QByteArray zone()
{
    return qgetenv("TZ");
}

} // namespace

class KvPlanCodecDatesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void sameTextAgain_data();
    void sameTextAgain();
    void everyQuarterOfTheDay_data();
    void everyQuarterOfTheDay();
    void everyDayOfTenYears();
    void otherForms_data();
    void otherForms();
    void unreadable_data();
    void unreadable();
    void instants_data();
    void instants();
    void planDates();
};

void KvPlanCodecDatesTest::initTestCase()
{
    // The zone must really be the one that the rows are about.
    const QList<QByteArray> known{"Asia/Shanghai", "Europe/Berlin", "UTC"};
    QVERIFY2(known.contains(zone()), zone().constData());
    const int offset = QDateTime(QDate(2024, 7, 1), QTime(12, 0)).offsetFromUtc();
    QCOMPARE(offset, zone() == "Asia/Shanghai" ? 8 * 3600 : zone() == "Europe/Berlin" ? 2 * 3600 : 0);
}

void KvPlanCodecDatesTest::sameTextAgain_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << "";
    QTest::newRow("ordinary") << "2024-03-15T08:30:00.000";
    QTest::newRow("milliseconds") << "2024-03-15T08:30:00.007";
    QTest::newRow("last moment of a year") << "2023-12-31T23:59:59.999";
    QTest::newRow("first moment of a year") << "2024-01-01T00:00:00.000";
    QTest::newRow("leap day") << "2024-02-29T12:00:00.000";
    QTest::newRow("epoch") << "1970-01-01T00:00:00.000";
    QTest::newRow("before the epoch") << "1969-12-31T23:59:59.999";
    QTest::newRow("far past") << "1890-06-01T12:00:00.000";
    QTest::newRow("year 1") << "0001-01-01T00:00:00.000";
    QTest::newRow("beyond 2038") << "2040-06-01T12:00:00.000";
    QTest::newRow("year 9999") << "9999-12-31T23:59:59.999";
    // Berlin: skipped and doubled; Shanghai kept summer time from 1986 to 1991.
    QTest::newRow("before the skip") << "2024-03-31T01:59:59.999";
    QTest::newRow("skip begins") << "2024-03-31T02:00:00.000";
    QTest::newRow("in the skip") << "2024-03-31T02:30:00.125";
    QTest::newRow("skip ends") << "2024-03-31T03:00:00.000";
    QTest::newRow("doubled hour begins") << "2024-10-27T02:00:00.000";
    QTest::newRow("in the doubled hour") << "2024-10-27T02:30:00.125";
    QTest::newRow("doubled hour ends") << "2024-10-27T03:00:00.000";
    QTest::newRow("Shanghai 1988, in the skip") << "1988-04-17T02:30:00.000";
    QTest::newRow("Shanghai 1988, doubled") << "1988-09-11T01:30:00.000";
}

void KvPlanCodecDatesTest::sameTextAgain()
{
    QFETCH(QString, text);
    QCOMPARE(firstDifference(text, text), QString());
}

void KvPlanCodecDatesTest::everyQuarterOfTheDay_data()
{
    QTest::addColumn<QDate>("date");
    QTest::newRow("Berlin, clock forward") << QDate(2024, 3, 31);
    QTest::newRow("Berlin, clock back") << QDate(2024, 10, 27);
    QTest::newRow("Shanghai, clock forward") << QDate(1988, 4, 17);
    QTest::newRow("Shanghai, clock back") << QDate(1988, 9, 11);
    QTest::newRow("ordinary") << QDate(2024, 6, 1);
}

void KvPlanCodecDatesTest::everyQuarterOfTheDay()
{
    QFETCH(QDate, date);
    for (int minute = 0; minute < 24 * 60; minute += 15) {
        const QString text = textOf(date, minute);
        QCOMPARE(firstDifference(text, text), QString());
    }
}

// Read as a plan is, one pool for many, so that remembered dates count too.
void KvPlanCodecDatesTest::everyDayOfTenYears()
{
    QJsonArray tasks;
    QStringList texts;
    for (QDate date(2020, 1, 1); date.year() < 2030; date = date.addDays(1)) {
        for (const int minute : {0, 150, 1439}) {
            texts.append(textOf(date, minute));
            tasks.append(QJsonObject{{QStringLiteral("startDate"), texts.last()}});
        }
    }
    KvPlan plan;
    Kv::jsonObjectToPlan({{QStringLiteral("tasks"), tasks}}, plan);
    QJsonObject out;
    Kv::planToJsonObject(plan, out);
    const QJsonArray data = out.value(QStringLiteral("projectData")).toArray();
    QCOMPARE(data.size(), texts.size());
    for (int i = 0; i < texts.size(); ++i)
        QCOMPARE(data.at(i).toObject().value(QStringLiteral("startDate")).toString(), texts.at(i));
}

void KvPlanCodecDatesTest::otherForms_data()
{
    QTest::addColumn<QString>("in");
    QTest::addColumn<QString>("out");
    QTest::newRow("date alone") << "2024-03-15"
                                << "2024-03-15T00:00:00.000";
    QTest::newRow("date alone, clock forward") << "2024-03-31"
                                               << "2024-03-31T00:00:00.000";
    QTest::newRow("date alone, clock back") << "2024-10-27"
                                            << "2024-10-27T00:00:00.000";
    QTest::newRow("space") << "2024-03-15 08:30:00"
                           << "2024-03-15T08:30:00.000";
    QTest::newRow("without fraction") << "2024-03-15T08:30:00"
                                      << "2024-03-15T08:30:00.000";
    QTest::newRow("one digit of fraction") << "2024-03-15T08:30:00.5"
                                           << "2024-03-15T08:30:00.500";
    QTest::newRow("six digits of fraction") << "2024-03-15T08:30:00.123456"
                                            << "2024-03-15T08:30:00.123";
}

void KvPlanCodecDatesTest::otherForms()
{
    QFETCH(QString, in);
    QFETCH(QString, out);
    QCOMPARE(firstDifference(in, out), QString());
}

void KvPlanCodecDatesTest::unreadable_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("words") << "tomorrow";
    QTest::newRow("blank") << " ";
    QTest::newRow("no such day") << "2023-02-29T08:00:00.000";
    QTest::newRow("no such month") << "2023-13-01T08:00:00.000";
    QTest::newRow("no such hour") << "2023-01-01T25:00:00.000";
    QTest::newRow("another order") << "15.03.2024";
    QTest::newRow("something behind") << "2024-03-15T08:30:00.000 and more";
    QTest::newRow("a number") << "1710491400000";
}

void KvPlanCodecDatesTest::unreadable()
{
    QFETCH(QString, text);
    QCOMPARE(firstDifference(text, QString()), QString());
    KvPlanNode node = KvTest::fullPlanNode();
    Kv::jsonObjectToPlanNode({{QStringLiteral("startDate"), text}}, node);
    QVERIFY(node.startDate.isNull());
}

// With a zone, the text names an instant; it is shown in the site's wall-clock time.
void KvPlanCodecDatesTest::instants_data()
{
    QTest::addColumn<QString>("in");
    QTest::addColumn<QString>("shanghai");
    QTest::addColumn<QString>("berlin");
    QTest::addColumn<QString>("utc");
    QTest::newRow("Z, winter") << "2024-01-15T20:30:00.250Z"
                               << "2024-01-16T04:30:00.250"
                               << "2024-01-15T21:30:00.250"
                               << "2024-01-15T20:30:00.250";
    QTest::newRow("Z, summer") << "2024-07-15T20:30:00Z"
                               << "2024-07-16T04:30:00.000"
                               << "2024-07-15T22:30:00.000"
                               << "2024-07-15T20:30:00.000";
    QTest::newRow("offset east") << "2024-01-15T20:30:00+08:00"
                                 << "2024-01-15T20:30:00.000"
                                 << "2024-01-15T13:30:00.000"
                                 << "2024-01-15T12:30:00.000";
    QTest::newRow("offset west") << "2024-01-15T20:30:00-05:30"
                                 << "2024-01-16T10:00:00.000"
                                 << "2024-01-16T03:00:00.000"
                                 << "2024-01-16T02:00:00.000";
    QTest::newRow("just before Berlin's skip") << "2024-03-31T00:59:59.999Z"
                                               << "2024-03-31T08:59:59.999"
                                               << "2024-03-31T01:59:59.999"
                                               << "2024-03-31T00:59:59.999";
    QTest::newRow("just after Berlin's skip") << "2024-03-31T01:00:00Z"
                                              << "2024-03-31T09:00:00.000"
                                              << "2024-03-31T03:00:00.000"
                                              << "2024-03-31T01:00:00.000";
    QTest::newRow("Berlin's doubled hour, first") << "2024-10-27T00:30:00Z"
                                                  << "2024-10-27T08:30:00.000"
                                                  << "2024-10-27T02:30:00.000"
                                                  << "2024-10-27T00:30:00.000";
    QTest::newRow("Berlin's doubled hour, second") << "2024-10-27T01:30:00Z"
                                                   << "2024-10-27T09:30:00.000"
                                                   << "2024-10-27T02:30:00.000"
                                                   << "2024-10-27T01:30:00.000";
}

void KvPlanCodecDatesTest::instants()
{
    QFETCH(QString, in);
    QFETCH(QString, shanghai);
    QFETCH(QString, berlin);
    QFETCH(QString, utc);
    QCOMPARE(firstDifference(in, zone() == "Asia/Shanghai"   ? shanghai
                                 : zone() == "Europe/Berlin" ? berlin
                                                             : utc),
             QString());
}

void KvPlanCodecDatesTest::planDates()
{
    KvPlan plan;
    Kv::jsonObjectToPlan({{QStringLiteral("createdAt"), QStringLiteral("2024-03-31T02:30:00.125")},
                          {QStringLiteral("updatedAt"), QStringLiteral("2024-10-27")}},
                         plan);
    const QJsonObject record = KvTest::dump(plan);
    QCOMPARE(record.value(QStringLiteral("createdAt")).toString(), QStringLiteral("2024-03-31T02:30:00.125"));
    QCOMPARE(record.value(QStringLiteral("updatedAt")).toString(), QStringLiteral("2024-10-27T00:00:00.000"));
}

QTEST_APPLESS_MAIN(KvPlanCodecDatesTest)
#include "KvPlanCodecDatesTest.moc"
