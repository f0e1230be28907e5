#include <KvPublicFun/KvPub.h>

#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

namespace {

QJsonObject object(const char* json)
{
    return QJsonDocument::fromJson(json).object();
}

QJsonArray array(const char* json)
{
    return QJsonDocument::fromJson(json).array();
}

QStringList words(const char* text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

class KvPubTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void comparesLists_data();
    void comparesLists();
    void tellsTheChangeOfAList_data();
    void tellsTheChangeOfAList();
    void changeMayOverwriteItsInputs();
    void changeOfLongListsIsQuick();
    void removesCommonValues_data();
    void removesCommonValues();
    void takesTheTextOfEachVariant();
    void writesLinks();
    void readsLinks_data();
    void readsLinks();
};

void KvPubTest::comparesLists_data()
{
    QTest::addColumn<QStringList>("a");
    QTest::addColumn<QStringList>("b");
    QTest::addColumn<bool>("same");
    QTest::newRow("both empty") << words("") << words("") << true;
    QTest::newRow("same") << words("u1 u2") << words("u1 u2") << true;
    QTest::newRow("other order") << words("u1 u2") << words("u2 u1") << false;
    QTest::newRow("one more") << words("u1") << words("u1 u2") << false;
    QTest::newRow("repeated") << words("u1 u1") << words("u1") << false;
    QTest::newRow("other case") << words("u1") << words("U1") << false;
    QTest::newRow("null and empty text") << QStringList{QString()} << QStringList{QStringLiteral("")} << true;
}

void KvPubTest::comparesLists()
{
    QFETCH(QStringList, a);
    QFETCH(QStringList, b);
    QFETCH(bool, same);
    QCOMPARE(KvPub::isStringListSame(a, b), same);
    QCOMPARE(KvPub::isStringListSame(b, a), same);
}

void KvPubTest::tellsTheChangeOfAList_data()
{
    QTest::addColumn<QStringList>("oldList");
    QTest::addColumn<QStringList>("newList");
    QTest::addColumn<QStringList>("added");
    QTest::addColumn<QStringList>("removed");
    QTest::newRow("nothing") << words("") << words("") << words("") << words("");
    QTest::newRow("reordered") << words("a b c") << words("c a b") << words("") << words("");
    QTest::newRow("repeated only") << words("a b") << words("a b b a") << words("") << words("");
    QTest::newRow("all new") << words("") << words("b a") << words("b a") << words("");
    QTest::newRow("all gone") << words("b a") << words("") << words("") << words("b a");
    QTest::newRow("both ways, in list order")
        << words("d c b a") << words("z a y c x") << words("z y x") << words("d b");
    QTest::newRow("each once") << words("a a b a") << words("c d c") << words("c d") << words("a b");
}

void KvPubTest::tellsTheChangeOfAList()
{
    QFETCH(QStringList, oldList);
    QFETCH(QStringList, newList);
    QStringList added = words("left over");
    QStringList removed = words("left over");
    KvPub::getStringListChange(oldList, newList, added, removed);
    QTEST(added, "added");
    QTEST(removed, "removed");
}

void KvPubTest::changeMayOverwriteItsInputs()
{
    QStringList oldList = words("a b");
    QStringList newList = words("b c");
    KvPub::getStringListChange(oldList, newList, newList, oldList);
    QCOMPARE(newList, words("c"));
    QCOMPARE(oldList, words("a"));
}

void KvPubTest::changeOfLongListsIsQuick()
{
    QStringList oldList;
    QStringList newList;
    for (int i = 0; i < 200000; ++i) {
        oldList.append(QString::number(i));
        newList.prepend(QString::number(i + 1));
    }
    QStringList added;
    QStringList removed;
    KvPub::getStringListChange(oldList, newList, added, removed);
    QCOMPARE(added, words("200000"));
    QCOMPARE(removed, words("0"));
}

void KvPubTest::removesCommonValues_data()
{
    QTest::addColumn<QJsonObject>("a");
    QTest::addColumn<QJsonObject>("b");
    QTest::addColumn<QJsonObject>("kept");

    const auto row = [](const char* name, const char* a, const char* b, const char* kept) {
        QTest::newRow(name) << object(a) << object(b) << object(kept);
    };
    row("both empty", "{}", "{}", "{}");
    row("same texts go", R"({"name": "x", "id": "1"})", R"({"name": "y", "id": "1"})", R"({"name": "y"})");
    row("key of b alone stays", "{}", R"({"name": "y"})", R"({"name": "y"})");
    row("key of a alone makes no difference", R"({"name": "x"})", "{}", "{}");
    row("all the same", R"({"a": [1, {"b": null}], "c": true})", R"({"c": true, "a": [1, {"b": null}]})",
        "{}");
    row("deep difference keeps the whole value", R"({"a": {"b": {"c": [1, 2, 3]}, "d": 1}})",
        R"({"a": {"b": {"c": [1, 2, 4]}, "d": 1}})", R"({"a": {"b": {"c": [1, 2, 4]}, "d": 1}})");
    row("order of an array counts", R"({"a": ["u1", "u2"]})", R"({"a": ["u2", "u1"]})",
        R"({"a": ["u2", "u1"]})");
    row("number and text differ", R"({"a": 1})", R"({"a": "1"})", R"({"a": "1"})");
    row("number and flag differ", R"({"a": 1})", R"({"a": true})", R"({"a": true})");
    row("null and missing differ", "{}", R"({"a": null})", R"({"a": null})");
    row("null and null are the same", R"({"a": null})", R"({"a": null})", "{}");
    row("empty array and empty object differ", R"({"a": []})", R"({"a": {}})", R"({"a": {}})");
    row("whole and fractional form of a number", R"({"a": 1, "b": {"c": [2]}})",
        R"({"a": 1.0, "b": {"c": [2.0]}})", "{}");
    row("other key case", R"({"Name": "x"})", R"({"name": "x"})", R"({"name": "x"})");
}

void KvPubTest::removesCommonValues()
{
    QFETCH(QJsonObject, a);
    QFETCH(QJsonObject, b);
    const QJsonObject before = a;
    KvPub::removeCommonJsonValue(a, b);
    QTEST(b, "kept");
    QCOMPARE(a, before);
}

void KvPubTest::takesTheTextOfEachVariant()
{
    const QVariantList list = {QStringLiteral("u1"), 7, true, QVariant(), 2.5, QVariantList{1},
                               QStringLiteral("")};
    QCOMPARE(KvPub::getStrListFromVarList(list),
             (QStringList{QStringLiteral("u1"), QStringLiteral("7"), QStringLiteral("true"), QString(),
                          QStringLiteral("2.5"), QString(), QString()}));
    QCOMPARE(KvPub::getStrListFromVarList({}), QStringList());
}

void KvPubTest::writesLinks()
{
    QMap<QString, QStringList> links;
    links.insert(QStringLiteral("m2"), words("e3"));
    links.insert(QStringLiteral("m1"), words("e2 e1 e2"));
    links.insert(QStringLiteral("m10"), {});
    const QJsonArray json = KvPub::linksEntityToJsonArray(links);
    QCOMPARE(json, array(R"([{"modelId": "m1", "entityIds": ["e2", "e1", "e2"]},
                             {"modelId": "m10", "entityIds": []},
                             {"modelId": "m2", "entityIds": ["e3"]}])"));
    QCOMPARE(KvPub::jsonArrayToLinksEntity(json), links);
    QCOMPARE(KvPub::linksEntityToJsonArray({}), QJsonArray());
}

void KvPubTest::readsLinks_data()
{
    using Links = QMap<QString, QStringList>;
    QTest::addColumn<QJsonArray>("json");
    QTest::addColumn<Links>("links");
    const QString model = QStringLiteral("m1");
    QTest::newRow("nothing") << array("[]") << Links();
    QTest::newRow("elements that are no object") << array(R"([null, 1, "m1", ["m1"], true])") << Links();
    QTest::newRow("no model id") << array(R"([{"entityIds": ["e1"]}])") << Links{{QString(), words("e1")}};
    QTest::newRow("model id is a number")
        << array(R"([{"modelId": 5, "entityIds": ["e1"]}])") << Links{{QString(), words("e1")}};
    QTest::newRow("no entities") << array(R"([{"modelId": "m1"}])") << Links{{model, {}}};
    QTest::newRow("entities are no array")
        << array(R"([{"modelId": "m1", "entityIds": "e1"}])") << Links{{model, {}}};
    QTest::newRow("entity is no text")
        << array(R"([{"modelId": "m1", "entityIds": ["e1", 7, null]}])")
        << Links{{model, {QStringLiteral("e1"), QStringLiteral("7"), QString()}}};
    QTest::newRow("model occurs twice")
        << array(R"([{"modelId": "m1", "entityIds": ["e2"]}, {"modelId": "m1", "entityIds": ["e1", "e2"]}])")
        << Links{{model, words("e2 e1 e2")}};
    QTest::newRow("other keys") << array(R"([{"modelId": "m1", "entityIds": ["e1"], "color": 3}])")
                                << Links{{model, words("e1")}};
}

void KvPubTest::readsLinks()
{
    using Links = QMap<QString, QStringList>;
    QFETCH(QJsonArray, json);
    QFETCH(Links, links);
    QCOMPARE(KvPub::jsonArrayToLinksEntity(json), links);
}

QTEST_GUILESS_MAIN(KvPubTest)
#include "KvPubTest.moc"
