// The filter texts of plan queries, byte for byte. Runs under several time zones.

#include <service/KvQueryFilter.h>

#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QTimeZone>
#include <QtTest/QtTest>

namespace {

KvPlanCondition anyPlan()
{
    KvPlanCondition condition;
    condition.allTime = true;
    return condition;
}

QDateTime local(int year, int month, int day, const QTime& time = QTime(0, 0))
{
    return QDateTime(QDate(year, month, day), time);
}

} // namespace

class KvQueryFilterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runsInItsTimeZone();
    void emptyCondition();
    void allTimeLeavesTheDatesOut();
    void name_data();
    void name();
    void nameSurvivesTheJson_data() { name_data(); }
    void nameSurvivesTheJson();
    void longName();
    void category_data();
    void category();
    void dates_data();
    void dates();
    void datesBeforeName();
    void everythingAtOnce();
    void dateRangeIgnoresTheRest();
    void nameFilterIgnoresTheRest();
};

// Else the entries of other zones would prove nothing.
void KvQueryFilterTest::runsInItsTimeZone()
{
    const QByteArray zone = qgetenv("TZ");
    if (!zone.isEmpty())
        QCOMPARE(QTimeZone::systemTimeZoneId(), zone);
    const int summer = local(2026, 7, 1).offsetFromUtc();
    QCOMPARE(summer != local(2026, 1, 1).offsetFromUtc(), zone == "Europe/Berlin");
}

void KvQueryFilterTest::emptyCondition()
{
    QCOMPARE(Kv::buildPlanQuery(anyPlan()), QStringLiteral("{}"));
    KvPlanCondition condition = anyPlan();
    condition.name = QLatin1String(""); // empty, not null
    condition.category = QLatin1String("");
    QCOMPARE(Kv::buildPlanQuery(condition), QStringLiteral("{}"));
}

void KvQueryFilterTest::allTimeLeavesTheDatesOut()
{
    KvPlanCondition condition = anyPlan();
    condition.startDate = local(2026, 3, 1);
    condition.endDate = local(2026, 3, 31);
    QCOMPARE(Kv::buildPlanQuery(condition), QStringLiteral("{}"));
}

void KvQueryFilterTest::name_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("literal"); // as it stands in the JSON
    QTest::newRow("word") << "tower" << QByteArray("tower");
    QTest::newRow("blank") << " " << QByteArray(" ");
    QTest::newRow("blanks at the ends") << " a  b " << QByteArray(" a  b ");
    QTest::newRow("pattern, not escaped") << "^T[0-9]{2}.*(a|b)+?$" << QByteArray("^T[0-9]{2}.*(a|b)+?$");
    QTest::newRow("double quotes") << R"(a"b")" << QByteArray(R"(a\"b\")");
    QTest::newRow("single quotes") << "a'b'" << QByteArray("a'b'");
    QTest::newRow("backslashes") << R"(\d+\\)" << QByteArray(R"(\\d+\\\\)");
    QTest::newRow("backslash and quote") << R"(\")" << QByteArray(R"(\\\")");
    QTest::newRow("newline, return, tab") << "a\nb\r\nc\td" << QByteArray(R"(a\nb\r\nc\td)");
    QTest::newRow("control character") << QString(QChar(1)) << QByteArray(R"(\u0001)");
    QTest::newRow("slash") << "a/b" << QByteArray("a/b");
    QTest::newRow("ampersand and equals") << "a&category=b" << QByteArray("a&category=b");
    QTest::newRow("percent") << "100%" << QByteArray("100%");
    QTest::newRow("percent-encoded") << "a%20b%41" << QByteArray("a%20b%41");
    QTest::newRow("looks like a placeholder") << "%1%2%3%4" << QByteArray("%1%2%3%4");
    QTest::newRow("hash and plus") << "#1+2" << QByteArray("#1+2");
    QTest::newRow("question mark") << "a?b" << QByteArray("a?b");
    QTest::newRow("braces that open nothing") << "}]{[" << QByteArray("}]{[");
    QTest::newRow("angles") << "<a>" << QByteArray("<a>");
    QTest::newRow("Chinese") << QStringLiteral("第2层") << QByteArray("第2层");
    QTest::newRow("emoji") << QStringLiteral("🏗🧱") << QByteArray("🏗🧱");
    QTest::newRow("umlaut, decomposed") << QStringLiteral("u\u0308") << QByteArray("u\xcc\x88");
}

void KvQueryFilterTest::name()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, literal);
    KvPlanCondition condition = anyPlan();
    condition.name = text;
    const QByteArray wanted = R"({"name":{"$options":"i","$regex":")" + literal + R"("}})";
    QCOMPARE(Kv::buildPlanQuery(condition).toUtf8(), wanted);
}

void KvQueryFilterTest::nameSurvivesTheJson()
{
    QFETCH(QString, text);
    KvPlanCondition condition = anyPlan();
    condition.name = text;
    const QJsonObject pattern{{QStringLiteral("$regex"), text},
                              {QStringLiteral("$options"), QStringLiteral("i")}};
    QCOMPARE(Kv::makeNameRegexFilter(condition), pattern);
    const QJsonDocument read = QJsonDocument::fromJson(Kv::buildPlanQuery(condition).toUtf8());
    QCOMPARE(read.object(), (QJsonObject{{QStringLiteral("name"), pattern}}));
}

void KvQueryFilterTest::longName()
{
    KvPlanCondition condition = anyPlan();
    condition.name = QString(10000, QChar(0x5c42)); // 层
    const QString wanted =
        QStringLiteral(R"({"name":{"$options":"i","$regex":")") + condition.name + QStringLiteral(R"("}})");
    QCOMPARE(Kv::buildPlanQuery(condition), wanted);
}

void KvQueryFilterTest::category_data()
{
    QTest::addColumn<QString>("category");
    QTest::newRow("word") << "construction";
    QTest::newRow("blank") << " ";
    QTest::newRow("quotes and backslash") << R"("a\b")";
    QTest::newRow("percent, hash, plus") << "a%b%20#c+d%2";
    QTest::newRow("ampersand and equals") << "a&b=c";
    QTest::newRow("Chinese and emoji") << QStringLiteral("施工🏗");
    QTest::newRow("long") << QString(10000, QLatin1Char('c'));
}

// Behind the JSON, as it stands.
void KvQueryFilterTest::category()
{
    QFETCH(QString, category);
    KvPlanCondition condition = anyPlan();
    condition.category = category;
    QCOMPARE(Kv::buildPlanQuery(condition), QStringLiteral("{}&category=") + category);
    condition.name = QStringLiteral("n");
    const QString wanted = QStringLiteral(R"({"name":{"$options":"i","$regex":"n"}}&category=)") + category;
    QCOMPARE(Kv::buildPlanQuery(condition), wanted);
}

void KvQueryFilterTest::dates_data()
{
    QTest::addColumn<QDateTime>("start");
    QTest::addColumn<QDateTime>("end");
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("a week") << local(2026, 5, 4) << local(2026, 5, 8) << QByteArray("2026-05-04T00:00:00.000")
                            << QByteArray("2026-05-09T00:00:00.000");
    QTest::newRow("one day, taken whole")
        << local(2026, 5, 4) << local(2026, 5, 4) << QByteArray("2026-05-04T00:00:00.000")
        << QByteArray("2026-05-05T00:00:00.000");
    QTest::newRow("times of day stay")
        << local(2026, 5, 4, QTime(7, 30, 1, 5)) << local(2026, 5, 4, QTime(17, 45))
        << QByteArray("2026-05-04T07:30:01.005") << QByteArray("2026-05-05T17:45:00.000");
    QTest::newRow("end of the last day")
        << local(2026, 5, 4) << local(2026, 5, 4, QTime(23, 59, 59, 999))
        << QByteArray("2026-05-04T00:00:00.000") << QByteArray("2026-05-05T23:59:59.999");
    QTest::newRow("end of a month") << local(2026, 4, 1) << local(2026, 4, 30)
                                    << QByteArray("2026-04-01T00:00:00.000")
                                    << QByteArray("2026-05-01T00:00:00.000");
    QTest::newRow("end of a year") << local(2026, 12, 31) << local(2026, 12, 31)
                                   << QByteArray("2026-12-31T00:00:00.000")
                                   << QByteArray("2027-01-01T00:00:00.000");
    QTest::newRow("leap day") << local(2028, 2, 28) << local(2028, 2, 28)
                              << QByteArray("2028-02-28T00:00:00.000")
                              << QByteArray("2028-02-29T00:00:00.000");
    QTest::newRow("end before start")
        << local(2026, 5, 8) << local(2026, 5, 1) << QByteArray("2026-05-08T00:00:00.000")
        << QByteArray("2026-05-02T00:00:00.000");
    QTest::newRow("no dates") << QDateTime() << QDateTime() << QByteArray() << QByteArray();
    QTest::newRow("no start") << QDateTime() << local(2026, 5, 4) << QByteArray()
                              << QByteArray("2026-05-05T00:00:00.000");
    QTest::newRow("no end") << local(2026, 5, 4) << QDateTime() << QByteArray("2026-05-04T00:00:00.000")
                            << QByteArray();
    QTest::newRow("30 February") << local(2026, 2, 30) << local(2026, 2, 30) << QByteArray() << QByteArray();
    QTest::newRow("UTC keeps its own wall clock")
        << QDateTime(QDate(2026, 5, 4), QTime(22, 0), Qt::UTC)
        << QDateTime(QDate(2026, 5, 4), QTime(22, 0), Qt::UTC) << QByteArray("2026-05-04T22:00:00.000")
        << QByteArray("2026-05-05T22:00:00.000");

    // The nights in which the clocks of Europe change; elsewhere days like any other.
    QTest::newRow("day before clocks go forward")
        << local(2026, 3, 28) << local(2026, 3, 28) << QByteArray("2026-03-28T00:00:00.000")
        << QByteArray("2026-03-29T00:00:00.000");
    QTest::newRow("day of 23 hours") << local(2026, 3, 29) << local(2026, 3, 29)
                                     << QByteArray("2026-03-29T00:00:00.000")
                                     << QByteArray("2026-03-30T00:00:00.000");
    QTest::newRow("day of 23 hours, in its evening")
        << local(2026, 3, 29) << local(2026, 3, 29, QTime(23, 30)) << QByteArray("2026-03-29T00:00:00.000")
        << QByteArray("2026-03-30T23:30:00.000");
    QTest::newRow("day before clocks go back")
        << local(2026, 10, 24) << local(2026, 10, 24) << QByteArray("2026-10-24T00:00:00.000")
        << QByteArray("2026-10-25T00:00:00.000");
    QTest::newRow("day of 25 hours") << local(2026, 10, 25) << local(2026, 10, 25)
                                     << QByteArray("2026-10-25T00:00:00.000")
                                     << QByteArray("2026-10-26T00:00:00.000");
    QTest::newRow("day of 25 hours, in its evening")
        << local(2026, 10, 25) << local(2026, 10, 25, QTime(23, 30)) << QByteArray("2026-10-25T00:00:00.000")
        << QByteArray("2026-10-26T23:30:00.000");
    QTest::newRow("into the hour that occurs twice")
        << local(2026, 10, 24, QTime(2, 30)) << local(2026, 10, 24, QTime(2, 30))
        << QByteArray("2026-10-24T02:30:00.000") << QByteArray("2026-10-25T02:30:00.000");
    // A time that no clock shows becomes the one an hour on.
    const bool isSkipped = qgetenv("TZ") == "Europe/Berlin";
    QTest::newRow("into the hour that is skipped")
        << local(2026, 3, 28, QTime(2, 30)) << local(2026, 3, 28, QTime(2, 30))
        << QByteArray("2026-03-28T02:30:00.000")
        << QByteArray(isSkipped ? "2026-03-29T03:30:00.000" : "2026-03-29T02:30:00.000");
}

void KvQueryFilterTest::dates()
{
    QFETCH(QDateTime, start);
    QFETCH(QDateTime, end);
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, before);
    KvPlanCondition condition;
    condition.allTime = false;
    condition.startDate = start;
    condition.endDate = end;
    const QByteArray range = R"({"$gte":")" + from + R"(","$lt":")" + before + R"("})";
    const QByteArray wanted = R"({"$or":[{"createdAt":)" + range + R"(},{"updatedAt":)" + range + "}]}";
    QCOMPARE(Kv::buildPlanQuery(condition).toUtf8(), wanted);
    QCOMPARE(QJsonDocument(Kv::makeDateRangeFilter(condition)).toJson(QJsonDocument::Compact), range);
    QCOMPARE(condition.endDate, end);
}

void KvQueryFilterTest::datesBeforeName()
{
    KvPlanCondition condition;
    condition.name = QStringLiteral("tower");
    const QString wanted =
        QStringLiteral(R"({"$or":[{"createdAt":{"$gte":"","$lt":""}},{"updatedAt":{"$gte":"","$lt":""}}],)"
                       R"("name":{"$options":"i","$regex":"tower"}})");
    QCOMPARE(Kv::buildPlanQuery(condition), wanted);
    const QJsonObject read = QJsonDocument::fromJson(Kv::buildPlanQuery(condition).toUtf8()).object();
    QCOMPARE(read.keys(), (QStringList{QStringLiteral("$or"), QStringLiteral("name")}));
    const QJsonArray either = read.value(QLatin1String("$or")).toArray();
    QCOMPARE(either.size(), 2);
    QCOMPARE(either.at(0).toObject().keys(), QStringList{QStringLiteral("createdAt")});
    QCOMPARE(either.at(1).toObject().keys(), QStringList{QStringLiteral("updatedAt")});
}

void KvQueryFilterTest::everythingAtOnce()
{
    KvPlanCondition condition;
    condition.startDate = local(2026, 5, 4);
    condition.endDate = local(2026, 5, 8);
    condition.name = QStringLiteral("主楼 \"A\"");
    condition.category = QStringLiteral("施工");
    const QByteArray wanted = QByteArray(
        R"({"$or":[{"createdAt":{"$gte":"2026-05-04T00:00:00.000","$lt":"2026-05-09T00:00:00.000"}},)"
        R"({"updatedAt":{"$gte":"2026-05-04T00:00:00.000","$lt":"2026-05-09T00:00:00.000"}}],)"
        R"("name":{"$options":"i","$regex":"主楼 \"A\""}}&category=施工)");
    QCOMPARE(Kv::buildPlanQuery(condition).toUtf8(), wanted);
}

void KvQueryFilterTest::dateRangeIgnoresTheRest()
{
    KvPlanCondition condition = anyPlan();
    condition.startDate = local(2026, 5, 4);
    condition.endDate = local(2026, 5, 8);
    condition.name = QStringLiteral("n");
    condition.category = QStringLiteral("c");
    QCOMPARE(Kv::makeDateRangeFilter(condition),
             (QJsonObject{{QStringLiteral("$gte"), QStringLiteral("2026-05-04T00:00:00.000")},
                          {QStringLiteral("$lt"), QStringLiteral("2026-05-09T00:00:00.000")}}));
}

// Also with an empty name: leaving the filter out is the query's affair.
void KvQueryFilterTest::nameFilterIgnoresTheRest()
{
    KvPlanCondition condition;
    condition.category = QStringLiteral("c");
    QCOMPARE(Kv::makeNameRegexFilter(condition),
             (QJsonObject{{QStringLiteral("$regex"), QString()},
                          {QStringLiteral("$options"), QStringLiteral("i")}}));
}

QTEST_GUILESS_MAIN(KvQueryFilterTest)
#include "KvQueryFilterTest.moc"
