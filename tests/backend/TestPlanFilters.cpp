// What filters hold for, what they refuse, and how the database answers them.

#include "FilterQueries.h"
#include "FreshDatabase.h"
#include "filters/Pattern.h"
#include "filters/PlanFields.h"
#include "store/Migrations.h"
#include "store/OpenStore.h"
#include "store/SqliteDatabase.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using namespace PlanService;
using KvTest::operator""_s;

namespace {

void add(Store& store, const QString& id, const QString& name, const QString& created,
         const QString& category = "c1"_s, const QString& creator = "ann"_s,
         const QStringList& ranges = QStringList())
{
    QJsonObject document{{"_id"_s, id}, {"name"_s, name}, {"public"_s, id.size()}, {"updatedBy"_s, creator}};
    document.insert("ranges"_s, QJsonArray::fromStringList(ranges));
    store.insertPlan({id, "p1"_s, category, name, created, created, creator,
                      QJsonDocument(document).toJson(QJsonDocument::Compact)});
}

PlanQuery queryFor(const QString& where)
{
    PlanQuery query;
    query.projectId = "p1"_s;
    query.visible.elsewhere = ReadScope::All;
    query.where = readFilter(where, planFields());
    return query;
}

QStringList ids(Store& store, const PlanQuery& query)
{
    QByteArray text;
    for (const QByteArray& piece : store.planListJson(query)) {
        text += piece;
    }
    QStringList found;
    const QJsonArray plans = QJsonDocument::fromJson(text).array();
    for (const QJsonValue& plan : plans) {
        found.append(plan.toObject().value("_id"_s).toString());
    }
    return found;
}

QString nested(int depth)
{
    return "{\"$or\":["_s.repeated(depth) + "{}"_s + "]}"_s.repeated(depth);
}

} // namespace

Q_DECLARE_METATYPE(PlanService::ReadScope)

class TestPlanFilters : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    KvTest::FreshDatabase m_database{m_folder.filePath("a.db"_s)};
    std::unique_ptr<Store> m_store;

    QStringList queryPlan(const PlanQuery& query)
    {
        return KvTest::stepsOf(planListSql(query)).split(QLatin1Char('\n'));
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_store = openStore(m_database.name(), MissingDatabase::Create);
        add(*m_store, "c"_s, "Tower 10% \"A\""_s, "2026-03-02T08:00:00.000"_s);
        add(*m_store, "b"_s, "第2层"_s, "2026-03-02T08:00:00.000"_s, "c2"_s, "bo"_s, {"r1"_s, "r2"_s});
        add(*m_store, "a"_s, "tower b"_s, "2026-03-05T00:00:00.000"_s, ""_s, "bo"_s, {"r2"_s});
        add(*m_store, "dd"_s, "'; DROP TABLE plans; --"_s, ""_s);
        m_store->insertPlan({"x"_s, "p2"_s, "c1"_s, "Tower"_s, {}, {}, "ann"_s, "{\"_id\":\"x\"}"});
    }

    void finds_data()
    {
        QTest::addColumn<QString>("where");
        QTest::addColumn<QStringList>("found");
        const QStringList all{"dd"_s, "b"_s, "c"_s, "a"_s};
        QTest::newRow("everything, oldest first, then by id") << "{}"_s << all;
        QTest::newRow("no filter at all") << ""_s << all;
        QTest::newRow("name") << "{\"name\":\"第2层\"}"_s << QStringList{"b"_s};
        QTest::newRow("name with quotes and percent")
            << "{\"name\":\"Tower 10% \\\"A\\\"\"}"_s << QStringList{"c"_s};
        QTest::newRow("SQL as a name") << "{\"name\":\"'; DROP TABLE plans; --\"}"_s << QStringList{"dd"_s};
        QTest::newRow("SQL that is nobody's name") << "{\"name\":\"' OR 1=1 --\"}"_s << QStringList{};
        QTest::newRow("SQL in a list") << "{\"name\":{\"$in\":[\"')) OR 1=1 --\"]}}"_s << QStringList{};
        QTest::newRow("SQL as a pattern")
            << "{\"name\":{\"$regex\":\"', name\\\\) OR 1=1 --|^'; DROP\"}}"_s << QStringList{"dd"_s};
        QTest::newRow("pattern in any case")
            << "{\"name\":{\"$regex\":\"TOWER\",\"$options\":\"i\"}}"_s << QStringList{"c"_s, "a"_s};
        QTest::newRow("pattern in this case") << "{\"name\":{\"$regex\":\"^Tower\"}}"_s << QStringList{"c"_s};
        QTest::newRow("pattern on Chinese") << "{\"name\":{\"$regex\":\"^第.层$\"}}"_s << QStringList{"b"_s};
        QTest::newRow("date not set") << "{\"createdAt\":null}"_s << QStringList{"dd"_s};
        QTest::newRow("date range without its end")
            << "{\"createdAt\":{\"$gte\":\"2026-03-02\",\"$lt\":\"2026-03-05T00:00:00.000\"}}"_s
            << QStringList{"b"_s, "c"_s};
        QTest::newRow("either range")
            << "{\"$or\":[{\"createdAt\":{\"$gte\":\"2026-03-05\"}},{\"updatedAt\":{\"$lt\":\"2026-01-01\"}}]}"_s
            << QStringList{"a"_s};
        QTest::newRow("all members hold")
            << "{\"createdBy\":\"bo\",\"name\":{\"$regex\":\"tower\"}}"_s << QStringList{"a"_s};
        QTest::newRow("in, with not set")
            << "{\"category\":{\"$in\":[\"c2\",null]}}"_s << QStringList{"b"_s, "a"_s};
        QTest::newRow("dates in, with not set")
            << "{\"createdAt\":{\"$in\":[null,\"2026-03-05\"]}}"_s << QStringList{"dd"_s, "a"_s};
        QTest::newRow("in nothing") << "{\"category\":{\"$in\":[]}}"_s << QStringList{};
        QTest::newRow("one of none") << "{\"$or\":[]}"_s << QStringList{};
        QTest::newRow("changed by nobody, which is never the case")
            << "{\"updatedBy\":null}"_s << QStringList{};
        QTest::newRow("no file, in documents that do not name one")
            << "{\"projectFileId\":null,\"name\":\"第2层\"}"_s << QStringList{"b"_s};
        QTest::newRow("number") << "{\"public\":2}"_s << QStringList{"dd"_s};
        QTest::newRow("numbers in") << "{\"public\":{\"$in\":[2,7]}}"_s << QStringList{"dd"_s};
        QTest::newRow("member of a list") << "{\"ranges\":\"r2\"}"_s << QStringList{"b"_s, "a"_s};
        QTest::newRow("list in list") << "{\"ranges\":{\"$in\":[\"r1\",\"r9\"]}}"_s << QStringList{"b"_s};
        QTest::newRow("empty list") << "{\"ranges\":null}"_s << QStringList{"dd"_s, "c"_s};
        QTest::newRow("another project") << "{\"projectId\":\"p2\"}"_s << QStringList{};
    }
    void finds()
    {
        QFETCH(QString, where);
        QFETCH(QStringList, found);
        const PlanQuery query = queryFor(where);
        QCOMPARE(ids(*m_store, query), found);
        QCOMPARE(m_store->planCount(query), found.size());
        for (int skip = 0; skip <= found.size(); ++skip) {
            PlanQuery page = query;
            page.skip = skip;
            page.limit = 2;
            QCOMPARE(ids(*m_store, page), found.mid(skip, 2));
        }
    }

    void refuses_data()
    {
        QTest::addColumn<QString>("where");
        QTest::addColumn<QString>("refusal");
        QTest::newRow("no JSON") << "{"_s
                                 << "badFilter where"_s;
        QTest::newRow("no object") << "[]"_s
                                   << "badFilter where"_s;
        QTest::newRow("unknown field") << "{\"colour\":1}"_s
                                       << "unknownField colour"_s;
        QTest::newRow("SQL as a field") << "{\"name=name--\":1}"_s
                                        << "unknownField name=name--"_s;
        QTest::newRow("unknown operator") << "{\"name\":{\"$where\":\"1\"}}"_s
                                          << "unknownOperator $where"_s;
        QTest::newRow("unknown operator outside") << "{\"$and\":[]}"_s
                                                  << "unknownOperator $and"_s;
        QTest::newRow("field for an operator") << "{\"name\":{\"a\":1}}"_s
                                               << "unknownOperator a"_s;
        QTest::newRow("no operator") << "{\"name\":{}}"_s
                                     << "wrongType name"_s;
        QTest::newRow("number for a name") << "{\"name\":1}"_s
                                           << "wrongType name"_s;
        QTest::newRow("flag for a name") << "{\"name\":true}"_s
                                         << "wrongType name"_s;
        QTest::newRow("list for a name") << "{\"name\":[]}"_s
                                         << "wrongType name"_s;
        QTest::newRow("number in a list of names") << "{\"name\":{\"$in\":[\"a\",1]}}"_s
                                                   << "wrongType name"_s;
        QTest::newRow("in without a list") << "{\"name\":{\"$in\":\"a\"}}"_s
                                           << "wrongType name"_s;
        QTest::newRow("no date") << "{\"createdAt\":{\"$gte\":\"soon\"}}"_s
                                 << "wrongType createdAt"_s;
        QTest::newRow("bound is null") << "{\"createdAt\":{\"$lt\":null}}"_s
                                       << "wrongType createdAt"_s;
        QTest::newRow("fraction for a number") << "{\"public\":1.5}"_s
                                               << "wrongType public"_s;
        QTest::newRow("or without a list") << "{\"$or\":{}}"_s
                                           << "wrongType $or"_s;
        QTest::newRow("or of no filters") << "{\"$or\":[1]}"_s
                                          << "wrongType $or"_s;
        QTest::newRow("pattern on a date") << "{\"createdAt\":{\"$regex\":\"a\"}}"_s
                                           << "wrongType createdAt"_s;
        QTest::newRow("pattern is none") << "{\"name\":{\"$regex\":\"(a\"}}"_s
                                         << "badPattern $regex"_s;
        QTest::newRow("look-ahead") << "{\"name\":{\"$regex\":\"(?=a)b\"}}"_s
                                    << "badPattern $regex"_s;
        QTest::newRow("back-reference") << "{\"name\":{\"$regex\":\"(a)\\\\1\"}}"_s
                                        << "badPattern $regex"_s;
        QTest::newRow("unknown option") << "{\"name\":{\"$regex\":\"a\",\"$options\":\"e\"}}"_s
                                        << "badPattern $options"_s;
        QTest::newRow("options alone") << "{\"name\":{\"$options\":\"i\"}}"_s
                                       << "wrongType where"_s;
        QTest::newRow("pattern too long")
            << "{\"name\":{\"$regex\":\"%1\"}}"_s.arg("a"_s.repeated(longestPattern + 1))
            << "patternTooLarge $regex"_s;
        QTest::newRow("pattern grows too large") << "{\"name\":{\"$regex\":\"\\\\pL{990}\"}}"_s
                                                 << "patternTooLarge $regex"_s;
        QTest::newRow("too deep") << nested(deepestNesting + 1) << "filterTooDeep where"_s;
        QTest::newRow("deeper than JSON goes") << nested(5000) << "badFilter where"_s;
        QTest::newRow("too many conditions")
            << "{\"$or\":[%1{}]}"_s.arg("{},"_s.repeated(mostConditions)) << "filterTooLarge where"_s;
        QTest::newRow("too many values")
            << "{\"name\":{\"$in\":[%1\"\"]}}"_s.arg("\"\","_s.repeated(mostListedValues))
            << "filterTooLarge where"_s;
    }
    void refuses()
    {
        QFETCH(QString, where);
        QFETCH(QString, refusal);
        QCOMPARE(KvTest::refusalOf(where, planFields()), refusal);
    }

    void takesWhatTheLimitsAllow()
    {
        QCOMPARE(KvTest::refusalOf(nested(deepestNesting), planFields()), QString());
        QString many = "{\"name\":{\"$in\":["_s;
        for (int i = 0; i < 10000; ++i) {
            many += "\"plan %1\","_s.arg(i);
        }
        QCOMPARE(ids(*m_store, queryFor(many + "\"第2层\"]}}"_s)), QStringList{"b"_s});
        const QString name = "十"_s.repeated(10000);
        QCOMPARE(
            KvTest::refusalOf("{\"name\":{\"$regex\":\"%1\",\"$options\":\"i\"}}"_s.arg(name), planFields()),
            QString());
    }

    void putsNothingThatWasSentIntoTheStatement()
    {
        const SqlStatement statement = planListSql(
            queryFor("{\"name\":\"hostile\",\"createdBy\":{\"$in\":[\"hostile\"]},"
                     "\"$or\":[{\"category\":{\"$regex\":\"hostile\"}},{\"ranges\":\"hostile\"}]}"_s));
        QVERIFY(!statement.text.contains("hostile"_s));
        QCOMPARE(statement.text.count(QLatin1Char('?')), statement.parameters.size());
    }

    void keepsCatastrophicPatternsLinear()
    {
        const QString where = "{\"name\":{\"$regex\":\"^(a+)+$\"}}"_s;
        const Pattern pattern("^(a+)+$");
        const QByteArray text = QByteArray(100000, 'a') + 'b';
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!pattern.occursIn(text.constData(), text.size()));
        QVERIFY(pattern.occursIn(text.constData(), text.size() - 1));
        QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(ids(*m_store, queryFor(where)), QStringList());
    }

    void givesUpASearchThatTakesTooLong()
    {
        SqliteDatabase database(m_folder.filePath("slow.db"_s));
        database.setLongestSearch(50);
        const QString search = "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1)"
                               " SELECT count(*) FROM n WHERE matches('(a|b|ab)*c', ? || i)"_s;
        const QVariantList name{"a"_s.repeated(100000)};
        QSqlQuery few = database.runOnce(search.arg(3), name);
        QVERIFY(database.next(few));
        few.finish();
        // The clock is asked between one name and the next.
        QElapsedTimer timer;
        timer.start();
        const auto readAll = [&] {
            QSqlQuery rows = database.runOnce(search.arg(1000000), name);
            database.next(rows);
        };
        QVERIFY_EXCEPTION_THROWN(readAll(), StoreTooSlow);
        QVERIFY(timer.elapsed() < 5000);
    }

    void showsWhatRightsAllow_data()
    {
        QTest::addColumn<QMap<QString, ReadScope>>("categories");
        QTest::addColumn<ReadScope>("elsewhere");
        QTest::addColumn<QStringList>("found");
        using Map = QMap<QString, ReadScope>;
        QTest::newRow("all") << Map{} << ReadScope::All << QStringList{"dd"_s, "b"_s, "c"_s, "a"_s};
        QTest::newRow("own") << Map{} << ReadScope::Own << QStringList{"b"_s, "a"_s};
        QTest::newRow("nothing") << Map{} << ReadScope::None << QStringList{};
        QTest::newRow("one category")
            << Map{{"c1"_s, ReadScope::All}} << ReadScope::None << QStringList{"dd"_s, "c"_s};
        QTest::newRow("own of one category")
            << Map{{"c1"_s, ReadScope::Own}} << ReadScope::None << QStringList{};
        QTest::newRow("all but one") << Map{{"c1"_s, ReadScope::None}} << ReadScope::All
                                     << QStringList{"b"_s, "a"_s};
        QTest::newRow("one category, own elsewhere")
            << Map{{"c1"_s, ReadScope::All}} << ReadScope::Own << QStringList{"dd"_s, "b"_s, "c"_s, "a"_s};
    }
    void showsWhatRightsAllow()
    {
        using Map = QMap<QString, ReadScope>;
        QFETCH(Map, categories);
        QFETCH(ReadScope, elsewhere);
        QFETCH(QStringList, found);
        PlanQuery query = queryFor("{\"$or\":[{},{\"name\":\"x\"}]}"_s);
        query.visible = {"bo"_s, categories, elsewhere};
        QCOMPARE(ids(*m_store, query), found);
    }

    void readsPagesAlongAnIndex()
    {
        PlanQuery page = queryFor(""_s);
        page.limit = 50;
        const QStringList first = queryPlan(page);
        QCOMPARE(first.size(), 1);
        QVERIFY2(first.first().contains("USING INDEX plansByCreation (projectId=?)"_s),
                 qPrintable(first.first()));
        page.category = "c1"_s;
        const QStringList ofCategory = queryPlan(page);
        QCOMPARE(ofCategory.size(), 1);
        QVERIFY2(ofCategory.first().contains("USING INDEX plansByCategory (projectId=? AND category=?)"_s),
                 qPrintable(ofCategory.first()));
        page.skip = 1000;
        page.category.reset();
        const QString far = queryPlan(page).join(QLatin1Char('\n'));
        QVERIFY2(far.contains("USING COVERING INDEX plansByCreation (projectId=?)"_s), qPrintable(far));
        QVERIFY2(!far.contains("SCAN plans"_s), qPrintable(far));
    }

    void keepsPlansOfTheVersionBefore()
    {
        const QString path = m_folder.filePath("old.db"_s);
        {
            SqliteDatabase database(path);
            migrate(database, migrations().mid(0, 3));
            database.execute(
                "INSERT INTO plans VALUES ('o', 'p1', 'c1', 'Old', '2025-01-01T00:00:00.000', NULL,"
                " 'ann', '{\"_id\":\"o\",\"name\":\"Old\"}')"_s);
        }
        const auto store = openStore(path, MissingDatabase::Refuse);
        QCOMPARE(ids(*store, queryFor("{\"name\":{\"$regex\":\"old\",\"$options\":\"i\"}}"_s)),
                 QStringList{"o"_s});
        SqliteDatabase database(path);
        QCOMPARE(database.value("SELECT count(*) FROM sqlite_master WHERE name = 'plansByProject'"_s).toInt(),
                 0);
    }
};

QTEST_GUILESS_MAIN(TestPlanFilters)
#include "TestPlanFilters.moc"
