// The filter texts of plan-node queries, byte for byte, and the filters for lists of identifiers.

#include <service/KvQueryFilter.h>

#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

#include <functional>
#include <limits>

using Fill = std::function<void(KvPlanNodeCondition&)>;
Q_DECLARE_METATYPE(Fill)

namespace {

// Asks for nothing at all.
KvPlanNodeCondition anyNode()
{
    KvPlanNodeCondition condition;
    condition.allTime = true;
    condition.listType = -1;
    condition.finishState = -1;
    return condition;
}

QByteArray compact(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

class KvPlanNodeFilterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneRule_data();
    void oneRule();
    void everythingAtOnce();
    void nullWinsOverThePlan();
    void specialText_data();
    void specialText();
    void suffixTextStandsAsItIs_data() { specialText_data(); }
    void suffixTextStandsAsItIs();
    void listTypes_data();
    void listTypes();
    void finishStates_data();
    void finishStates();
    void suffixOrder_data();
    void suffixOrder();
    void dates_data();
    void dates();
    void datesOfPlansAndNodesAreTheSame();
    void conditionIsNotChanged();
    void inFilter_data();
    void inFilter();
    void idValue_data();
    void idValue();
};

void KvPlanNodeFilterTest::oneRule_data()
{
    QTest::addColumn<Fill>("fill");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char* name, const char* expected, const Fill& fill) {
        QTest::newRow(name) << fill << QByteArray(expected);
    };
    row("nothing", "{}", [](KvPlanNodeCondition&) {});
    row("empty texts", "{}", [](KvPlanNodeCondition& condition) {
        condition.name = condition.planId = condition.userId = condition.relativeUserId = condition.category =
            QStringLiteral("");
    });
    row("dates that are not asked for", "{}", [](KvPlanNodeCondition& condition) {
        condition.startDate = condition.endDate = QDateTime(QDate(2026, 5, 4), QTime(0, 0));
    });
    row("dates", R"({"createdAt":{"$gte":"2026-05-04T00:00:00.000","$lt":"2026-05-09T00:00:00.000"}})",
        [](KvPlanNodeCondition& condition) {
            condition.allTime = false;
            condition.startDate = QDateTime(QDate(2026, 5, 4), QTime(0, 0));
            condition.endDate = QDateTime(QDate(2026, 5, 8), QTime(0, 0));
        });
    row("name", R"({"displayName":{"$options":"i","$regex":"wall 1"}})",
        [](KvPlanNodeCondition& condition) { condition.name = QStringLiteral("wall 1"); });
    row("plan", R"({"planId":"p1"})",
        [](KvPlanNodeCondition& condition) { condition.planId = QStringLiteral("p1"); });
    row("without plan", R"({"planId":null})",
        [](KvPlanNodeCondition& condition) { condition.withoutPlan = true; });
    row("user", R"({"userIds":"u1"})",
        [](KvPlanNodeCondition& condition) { condition.userId = QStringLiteral("u1"); });
    row("related user", R"({"relativeUserIds":"u2"})",
        [](KvPlanNodeCondition& condition) { condition.relativeUserId = QStringLiteral("u2"); });
    row("category", "{}&category=a b",
        [](KvPlanNodeCondition& condition) { condition.category = QStringLiteral("a b"); });
    row("list", "{}&list=all", [](KvPlanNodeCondition& condition) { condition.listType = 0; });
    row("finished", "{}&finish=true", [](KvPlanNodeCondition& condition) { condition.finishState = 1; });
    // What a host gets that fills nothing.
    row("default", R"({"createdAt":{"$gte":"","$lt":""}}&list=all&finish=false)",
        [](KvPlanNodeCondition& condition) { condition = KvPlanNodeCondition(); });
}

void KvPlanNodeFilterTest::oneRule()
{
    QFETCH(Fill, fill);
    QFETCH(QByteArray, expected);
    KvPlanNodeCondition condition = anyNode();
    fill(condition);
    QCOMPARE(Kv::buildPlanNodeQuery(condition).toUtf8(), expected);
}

void KvPlanNodeFilterTest::everythingAtOnce()
{
    KvPlanNodeCondition condition;
    condition.startDate = QDateTime(QDate(2026, 12, 31), QTime(0, 0));
    condition.endDate = QDateTime(QDate(2026, 12, 31), QTime(0, 0));
    condition.name = QStringLiteral("主楼 \"A\"");
    condition.listType = 2;
    condition.planId = QStringLiteral("p1");
    condition.userId = QStringLiteral("u1");
    condition.relativeUserId = QStringLiteral("u2");
    condition.finishState = 1;
    condition.category = QStringLiteral("施工");
    const QByteArray wanted =
        R"({"createdAt":{"$gte":"2026-12-31T00:00:00.000","$lt":"2027-01-01T00:00:00.000"},)"
        R"("displayName":{"$options":"i","$regex":"主楼 \"A\""},"planId":"p1","relativeUserIds":"u2",)"
        R"("userIds":"u1"}&category=施工&list=post&finish=true)";
    QCOMPARE(Kv::buildPlanNodeQuery(condition).toUtf8(), wanted);
}

void KvPlanNodeFilterTest::nullWinsOverThePlan()
{
    KvPlanNodeCondition condition = anyNode();
    condition.planId = QStringLiteral("p1");
    condition.withoutPlan = true;
    QCOMPARE(Kv::buildPlanNodeQuery(condition), QStringLiteral(R"({"planId":null})"));
    condition.userId = QStringLiteral("u1");
    QCOMPARE(Kv::buildPlanNodeQuery(condition), QStringLiteral(R"({"planId":null,"userIds":"u1"})"));
}

void KvPlanNodeFilterTest::specialText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("literal"); // as it stands in the JSON
    QTest::newRow("pattern, not escaped") << "^W[0-9]{2}.*(a|b)+?$" << QByteArray("^W[0-9]{2}.*(a|b)+?$");
    QTest::newRow("blanks at the ends") << " a  b " << QByteArray(" a  b ");
    QTest::newRow("double quotes") << R"(a"b")" << QByteArray(R"(a\"b\")");
    QTest::newRow("backslashes") << R"(\d+\\)" << QByteArray(R"(\\d+\\\\)");
    QTest::newRow("a way out of the literal") << R"("}}&list=all)" << QByteArray(R"(\"}}&list=all)");
    QTest::newRow("newline and tab") << "a\nb\tc" << QByteArray(R"(a\nb\tc)");
    QTest::newRow("slash") << "a/b" << QByteArray("a/b");
    QTest::newRow("ampersand and equals") << "a&finish=true" << QByteArray("a&finish=true");
    QTest::newRow("percent-encoded") << "50%25%41%" << QByteArray("50%25%41%");
    QTest::newRow("looks like placeholders") << "%1%2%3%4%5" << QByteArray("%1%2%3%4%5");
    QTest::newRow("hash, plus, question mark") << "#1+2?" << QByteArray("#1+2?");
    QTest::newRow("Chinese and emoji") << QStringLiteral("第2层🏗") << QByteArray("第2层🏗");
}

// In each of the four places that take a text.
void KvPlanNodeFilterTest::specialText()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, literal);
    KvPlanNodeCondition condition = anyNode();
    condition.name = text;
    QCOMPARE(Kv::buildPlanNodeQuery(condition).toUtf8(),
             R"({"displayName":{"$options":"i","$regex":")" + literal + R"("}})");
    condition = anyNode();
    condition.planId = text;
    QCOMPARE(Kv::buildPlanNodeQuery(condition).toUtf8(), R"({"planId":")" + literal + R"("})");
    condition = anyNode();
    condition.userId = text;
    QCOMPARE(Kv::buildPlanNodeQuery(condition).toUtf8(), R"({"userIds":")" + literal + R"("})");
    condition = anyNode();
    condition.relativeUserId = text;
    QCOMPARE(Kv::buildPlanNodeQuery(condition).toUtf8(), R"({"relativeUserIds":")" + literal + R"("})");
}

void KvPlanNodeFilterTest::suffixTextStandsAsItIs()
{
    QFETCH(QString, text);
    KvPlanNodeCondition condition = anyNode();
    condition.category = text;
    condition.finishState = 0;
    QCOMPARE(Kv::buildPlanNodeQuery(condition),
             QStringLiteral("{}&category=") + text + QStringLiteral("&finish=false"));
}

void KvPlanNodeFilterTest::listTypes_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("expected");
    QTest::newRow("all") << 0 << "{}&list=all";
    QTest::newRow("received") << 1 << "{}&list=received";
    QTest::newRow("post") << 2 << "{}&list=post";
    for (const int type : {-1, 3, 4, 100, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        QTest::newRow(qPrintable(QString::number(type))) << type << "{}";
}

void KvPlanNodeFilterTest::listTypes()
{
    QFETCH(int, type);
    QFETCH(QString, expected);
    KvPlanNodeCondition condition = anyNode();
    condition.listType = type;
    QCOMPARE(Kv::buildPlanNodeQuery(condition), expected);
}

void KvPlanNodeFilterTest::finishStates_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("expected");
    QTest::newRow("any") << -1 << "{}";
    QTest::newRow("finished") << 1 << "{}&finish=true";
    for (const int state : {0, 2, -2, 100, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        QTest::newRow(qPrintable(QString::number(state))) << state << "{}&finish=false";
}

void KvPlanNodeFilterTest::finishStates()
{
    QFETCH(int, state);
    QFETCH(QString, expected);
    KvPlanNodeCondition condition = anyNode();
    condition.finishState = state;
    QCOMPARE(Kv::buildPlanNodeQuery(condition), expected);
}

void KvPlanNodeFilterTest::suffixOrder_data()
{
    QTest::addColumn<QString>("category");
    QTest::addColumn<int>("listType");
    QTest::addColumn<int>("finishState");
    QTest::addColumn<QString>("expected");
    QTest::newRow("all three") << "c" << 1 << 0 << "{}&category=c&list=received&finish=false";
    QTest::newRow("category, list") << "c" << 0 << -1 << "{}&category=c&list=all";
    QTest::newRow("category, finish") << "c" << 3 << 1 << "{}&category=c&finish=true";
    QTest::newRow("list, finish") << "" << 2 << 1 << "{}&list=post&finish=true";
}

void KvPlanNodeFilterTest::suffixOrder()
{
    QFETCH(QString, category);
    QFETCH(int, listType);
    QFETCH(int, finishState);
    QFETCH(QString, expected);
    KvPlanNodeCondition condition = anyNode();
    condition.category = category;
    condition.listType = listType;
    condition.finishState = finishState;
    QCOMPARE(Kv::buildPlanNodeQuery(condition), expected);
}

void KvPlanNodeFilterTest::dates_data()
{
    QTest::addColumn<QDateTime>("start");
    QTest::addColumn<QDateTime>("end");
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("before");
    const QDateTime may4(QDate(2026, 5, 4), QTime(0, 0));
    const QByteArray may4Text("2026-05-04T00:00:00.000");
    const QByteArray may5Text("2026-05-05T00:00:00.000");
    QTest::newRow("one day, taken whole") << may4 << may4 << may4Text << may5Text;
    QTest::newRow("times of day stay")
        << QDateTime(QDate(2026, 5, 4), QTime(7, 30, 1, 5)) << QDateTime(QDate(2026, 5, 4), QTime(17, 45))
        << QByteArray("2026-05-04T07:30:01.005") << QByteArray("2026-05-05T17:45:00.000");
    QTest::newRow("leap day") << QDateTime(QDate(2028, 2, 28), QTime(0, 0))
                              << QDateTime(QDate(2028, 2, 28), QTime(0, 0))
                              << QByteArray("2028-02-28T00:00:00.000")
                              << QByteArray("2028-02-29T00:00:00.000");
    QTest::newRow("end before start")
        << may4 << may4.addDays(-3) << may4Text << QByteArray("2026-05-02T00:00:00.000");
    QTest::newRow("no dates") << QDateTime() << QDateTime() << QByteArray() << QByteArray();
    QTest::newRow("no start") << QDateTime() << may4 << QByteArray() << may5Text;
    QTest::newRow("no end") << may4 << QDateTime() << may4Text << QByteArray();
    const QDateTime never(QDate(2026, 2, 30), QTime(0, 0));
    QTest::newRow("no such day") << never << never << QByteArray() << QByteArray();
    const QDateTime noTime(QDate(2026, 5, 4), QTime(25, 0), Qt::UTC);
    QTest::newRow("hour 25, read as midnight") << noTime << noTime << may4Text << may5Text;
}

void KvPlanNodeFilterTest::dates()
{
    QFETCH(QDateTime, start);
    QFETCH(QDateTime, end);
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, before);
    KvPlanNodeCondition condition = anyNode();
    condition.allTime = false;
    condition.startDate = start;
    condition.endDate = end;
    const QByteArray range = R"({"$gte":")" + from + R"(","$lt":")" + before + R"("})";
    QCOMPARE(compact(Kv::makeDateRangeFilter(condition)), range);
    // On their creation only: "updatedAt" is for plans.
    QCOMPARE(Kv::buildPlanNodeQuery(condition).toUtf8(), R"({"createdAt":)" + range + "}");
}

void KvPlanNodeFilterTest::datesOfPlansAndNodesAreTheSame()
{
    KvPlanCondition plans;
    KvPlanNodeCondition nodes;
    for (int day = 0; day < 800; day += 7) {
        plans.startDate = nodes.startDate = QDateTime(QDate(2026, 1, 1), QTime(6, 0)).addDays(day);
        plans.endDate = nodes.endDate = plans.startDate.addDays(day % 5).addMSecs(day);
        QCOMPARE(Kv::makeDateRangeFilter(nodes), Kv::makeDateRangeFilter(plans));
    }
}

void KvPlanNodeFilterTest::conditionIsNotChanged()
{
    KvPlanNodeCondition condition;
    condition.startDate = condition.endDate = QDateTime(QDate(2026, 5, 4), QTime(0, 0));
    condition.name = QStringLiteral("n");
    const QString first = Kv::buildPlanNodeQuery(condition);
    QCOMPARE(Kv::buildPlanNodeQuery(condition), first);
    QCOMPARE(condition.endDate, QDateTime(QDate(2026, 5, 4), QTime(0, 0)));
}

void KvPlanNodeFilterTest::inFilter_data()
{
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char* name, const QStringList& values, const char* expected) {
        QTest::newRow(name) << values << QByteArray(expected);
    };
    const QString a = QStringLiteral("a");
    const QString b = QStringLiteral("b");
    row("none", {}, R"({"$in":[]})");
    row("one", {a}, R"({"$in":["a"]})");
    row("order kept", {b, a}, R"({"$in":["b","a"]})");
    row("twice the same", {a, a}, R"({"$in":["a","a"]})");
    row("empty at its place", {a, QStringLiteral(""), b}, R"({"$in":["a",null,"b"]})");
    row("null at its place", {QString(), a, QString()}, R"({"$in":[null,"a",null]})");
    row("nothing but empty", {QString()}, R"({"$in":[null]})");
    row("blank and the word", {QStringLiteral(" "), QStringLiteral("null")}, R"({"$in":[" ","null"]})");
    row("special characters", {QStringLiteral("\"a\\"), QStringLiteral("层")}, R"({"$in":["\"a\\","层"]})");
}

void KvPlanNodeFilterTest::inFilter()
{
    QFETCH(QStringList, values);
    QFETCH(QByteArray, expected);
    QCOMPARE(compact(Kv::makeInFilter(values)), expected);
    QCOMPARE(Kv::filterText(Kv::makeInFilter(values)).toUtf8(), expected);
}

void KvPlanNodeFilterTest::idValue_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QJsonValue>("expected");
    QTest::newRow("null") << QString() << QJsonValue(QJsonValue::Null);
    QTest::newRow("empty") << "" << QJsonValue(QJsonValue::Null);
    QTest::newRow("blank") << " " << QJsonValue(QStringLiteral(" "));
    QTest::newRow("number") << "0" << QJsonValue(QStringLiteral("0"));
    QTest::newRow("word") << "null" << QJsonValue(QStringLiteral("null"));
    QTest::newRow("Chinese") << "层" << QJsonValue(QStringLiteral("层"));
}

void KvPlanNodeFilterTest::idValue()
{
    QFETCH(QString, text);
    QFETCH(QJsonValue, expected);
    const QJsonValue value = Kv::toIdValue(text);
    QCOMPARE(value.type(), expected.type());
    QCOMPARE(value, expected);
}

QTEST_GUILESS_MAIN(KvPlanNodeFilterTest)
#include "KvPlanNodeFilterTest.moc"
