// What the readers of responses, metering states, statistics and quantities make of the services' JSON.

#include <model/KvProgressCodec.h>

#include <model/KvPlanRecordsDump.h>
#include <model/KvProgressRecordsDump.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

#include <functional>
#include <limits>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullResponse;
using KvTest::fullState;

using Reader = std::function<QJsonObject(const QJsonObject&)>;
Q_DECLARE_METATYPE(Reader)

namespace {

QJsonObject json(const QByteArray& text)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (!document.isObject())
        qFatal("no JSON object: %s", text.constData());
    return document.object();
}

KvPlanNodeResponse responseOf(const QJsonObject& object, KvPlanNodeResponse response = {})
{
    Kv::jsonObjectToPlanNodeResponse(object, response);
    return response;
}

KvMeteringState stateOf(const QJsonObject& object, KvMeteringState state = {})
{
    Kv::jsonObjectToMeteringState(object, state);
    return state;
}

// Every reader, each onto a record that holds something where the reader takes one.
const Reader response = [](const QJsonObject& object) {
    return dump(responseOf(object, fullResponse()));
};
const Reader media = [](const QJsonObject& object) {
    return dump(Kv::jsonObjectToMedia(object));
};
const Reader state = [](const QJsonObject& object) {
    return dump(stateOf(object, fullState()));
};
const Reader statistics = [](const QJsonObject& object) {
    return dump(Kv::jsonObjectToPlanStatistics(object));
};
const Reader status = [](const QJsonObject& object) {
    return dump(Kv::jsonObjectToStatusStatistics(object));
};
const Reader situation = [](const QJsonObject& object) {
    return dump(Kv::jsonObjectToSituationCount(object));
};
const Reader quantity = [](const QJsonObject& object) {
    return dump(Kv::jsonObjectToStatisticsQuantity(object));
};

} // namespace

class KvProgressCodecReadTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fullResponseIsRead();
    void fullStateIsRead();
    void fullStatisticsAreRead();
    void fullQuantityIsRead();
    void text_data();
    void text();
    void number_data();
    void number();
    void date_data();
    void date();
    void emptyObject();
    void mediaAreReplaced();
    void mediaWithoutFile_data();
    void mediaWithoutFile();
    void documentsAreAdded();
    void documentIdsComeFromTheDocuments();
    void listOfAnotherKind_data();
    void listOfAnotherKind();
    void elementsThatAreNoObjects();
};

void KvProgressCodecReadTest::fullResponseIsRead()
{
    // Keys that the record does not know are passed over; the order of the keys is nobody's affair.
    const KvPlanNodeResponse read = responseOf(json(R"({
        "createdBy": "li", "createdAt": "2026-05-04T09:10:11.012", "what else": [1],
        "actualFinishDate": "2026-05-03T17:00:00.000", "actualStartDate": "2026-05-01T07:30:00.000",
        "documents": [{"_id": "d1", "name": "a.pdf", "fileSize": 12, "suffix": "pdf",
                       "createdAt": "2026-05-02 10:00", "createdBy": "wang"}, {"_id": "d2"}],
        "media": [{"fileId": "f1", "thumbnail": "t1", "time": 3}, {"fileId": "f2"}],
        "percentage": 40, "remark": "第2层", "hostId": "n1", "_id": "r1", "documentIds": ["ignored"]})"));
    QCOMPARE(read.id, QStringLiteral("r1"));
    QCOMPARE(read.hostId, QStringLiteral("n1"));
    QCOMPARE(read.remark, QStringLiteral("第2层"));
    QCOMPARE(read.percentage, 40);
    QCOMPARE(read.media.size(), 2);
    QCOMPARE(dump(read.media.at(0)), json(R"({"fileId": "f1", "thumbnail": "t1", "time": 3})"));
    QCOMPARE(dump(read.media.at(1)), json(R"({"fileId": "f2", "thumbnail": "", "time": 0})"));
    QCOMPARE(read.documentIds, (QStringList{QStringLiteral("d1"), QStringLiteral("d2")}));
    QCOMPARE(read.documents.size(), 2);
    QCOMPARE(dump(read.documents.at(0)),
             json(R"({"id": "d1", "name": "a.pdf", "fileSize": 12, "suffix": "pdf",
                      "createdAt": "2026-05-02 10:00", "createdBy": "wang"})"));
    QCOMPARE(read.documents.at(1).id, QStringLiteral("d2"));
    QCOMPARE(read.actualStartDate, QDateTime(QDate(2026, 5, 1), QTime(7, 30)));
    QCOMPARE(read.actualFinishDate, QDateTime(QDate(2026, 5, 3), QTime(17, 0)));
    QCOMPARE(read.createdAt, QDateTime(QDate(2026, 5, 4), QTime(9, 10, 11, 12)));
    QCOMPARE(read.createdBy, QStringLiteral("li"));
}

void KvProgressCodecReadTest::fullStateIsRead()
{
    const QJsonObject object = json(R"({"state": 4, "responseId": "r1", "taskId": "t1", "planId": "p1",
                                        "_id": "s1", "projectId": "of no field"})");
    QCOMPARE(dump(stateOf(object)),
             json(R"({"id": "s1", "planId": "p1", "taskId": "t1", "responseId": "r1", "state": 4})"));
    QCOMPARE(dump(stateOf(object, fullState())), dump(stateOf(object)));
}

void KvProgressCodecReadTest::fullStatisticsAreRead()
{
    // The record's own names are the keys, so the object is its own dump. Totals are taken as told.
    const QJsonObject object = json(R"({"total": 9, "items": [
        {"total": 5, "status": "unstart", "items": [{"total": 2, "situation": "normal"},
                                                    {"total": 3, "situation": "delay"}]},
        {"total": 4, "status": "finished", "items": []},
        {"total": 4, "status": "finished", "items": [{"total": 99, "situation": "ahead"}]}]})");
    QCOMPARE(difference(statistics(object), object), QString());
    // No items at any level.
    QCOMPARE(statistics(json(R"({"total": 7})")), json(R"({"total": 7, "items": []})"));
    QCOMPARE(status(json(R"({"total": 7, "status": "s"})")),
             json(R"({"total": 7, "status": "s", "items": []})"));
}

void KvProgressCodecReadTest::fullQuantityIsRead()
{
    const QJsonObject object =
        json(R"({"type": "week", "year": 2026, "month": 5, "week": 19, "day": 4, "total": 6})");
    QCOMPARE(quantity(object), object);
    QCOMPARE(quantity(json(R"({"type": "year", "year": 2026, "total": 6})")),
             json(R"({"type": "year", "year": 2026, "month": 0, "week": 0, "day": 0, "total": 6})"));
}

void KvProgressCodecReadTest::text_data()
{
    QTest::addColumn<Reader>("read");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("field");
    const auto row = [](const char* record, const Reader& read, const char* key,
                        const char* field = nullptr) {
        QTest::newRow((QByteArray(record) + ": " + key).constData())
            << read << QString::fromLatin1(key) << QString::fromLatin1(field ? field : key);
    };
    row("response", response, "_id", "id");
    for (const char* key : {"hostId", "remark", "createdBy"})
        row("response", response, key);
    for (const char* key : {"fileId", "thumbnail"})
        row("media", media, key);
    row("state", state, "_id", "id");
    for (const char* key : {"planId", "taskId", "responseId"})
        row("state", state, key);
    row("status", status, "status");
    row("situation", situation, "situation");
    row("quantity", quantity, "type");
}

void KvProgressCodecReadTest::text()
{
    QFETCH(Reader, read);
    QFETCH(QString, key);
    QFETCH(QString, field);
    const QJsonObject empty = read(QJsonObject());
    for (const QString& value : {QStringLiteral("a"), QStringLiteral(" 第2层 🏗\n\"x\" "), QString()}) {
        QJsonObject wanted = empty; // and no other field
        wanted.insert(field, value);
        QCOMPARE(difference(read({{key, value}}), wanted), QString());
    }
    for (const QJsonValue& value : {QJsonValue(), QJsonValue(1), QJsonValue(true),
                                    QJsonValue(QJsonArray{key}), QJsonValue(QJsonObject{{key, key}})})
        QCOMPARE(difference(read({{key, value}}), empty), QString());
    QCOMPARE(empty.value(field), QJsonValue(QString()));
}

void KvProgressCodecReadTest::number_data()
{
    QTest::addColumn<Reader>("read");
    QTest::addColumn<QString>("key");
    const auto row = [](const char* record, const Reader& read, const char* key) {
        QTest::newRow((QByteArray(record) + ": " + key).constData()) << read << QString::fromLatin1(key);
    };
    row("response", response, "percentage");
    row("media", media, "time");
    row("state", state, "state");
    row("statistics", statistics, "total");
    row("status", status, "total");
    row("situation", situation, "total");
    for (const char* key : {"year", "month", "week", "day", "total"})
        row("quantity", quantity, key);
}

void KvProgressCodecReadTest::number()
{
    QFETCH(Reader, read);
    QFETCH(QString, key);
    const QJsonObject empty = read(QJsonObject());
    for (const int value :
         {0, 1, -1, 100, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        QJsonObject wanted = empty;
        wanted.insert(key, value);
        QCOMPARE(difference(read({{key, value}}), wanted), QString());
    }
    for (const QJsonValue& value :
         {QJsonValue(), QJsonValue(true), QJsonValue(QStringLiteral("5")), QJsonValue(5.5), QJsonValue(1e12),
          QJsonValue(QJsonArray{5}), QJsonValue(QJsonObject{{key, 5}})})
        QCOMPARE(difference(read({{key, value}}), empty), QString());
    QCOMPARE(empty.value(key), QJsonValue(0));
}

void KvProgressCodecReadTest::date_data()
{
    QTest::addColumn<QString>("key");
    for (const char* key : {"actualStartDate", "actualFinishDate", "createdAt"})
        QTest::newRow(key) << QString::fromLatin1(key);
}

void KvProgressCodecReadTest::date()
{
    QFETCH(QString, key);
    const QJsonObject empty = response(QJsonObject());
    QCOMPARE(empty.value(key), QJsonValue(QJsonValue::Null));
    const QMap<QString, QString> texts{
        {QStringLiteral("2026-05-04T07:30:15.250"), QStringLiteral("2026-05-04T07:30:15.250")},
        {QStringLiteral("2026-05-04 07:30:15"), QStringLiteral("2026-05-04T07:30:15.000")},
        {QStringLiteral("2026-05-04"), QStringLiteral("2026-05-04T00:00:00.000")},
        // Shanghai is eight hours ahead.
        {QStringLiteral("2026-05-04T20:00:00.000Z"), QStringLiteral("2026-05-05T04:00:00.000")},
        {QStringLiteral("2026-05-04T20:00:00+02:00"), QStringLiteral("2026-05-05T02:00:00.000")}};
    for (auto text = texts.constBegin(); text != texts.constEnd(); ++text) {
        QJsonObject wanted = empty;
        wanted.insert(key, text.value());
        QCOMPARE(difference(response({{key, text.key()}}), wanted), QString());
    }
    for (const QJsonValue& value : {QJsonValue(), QJsonValue(QString()), QJsonValue(QStringLiteral("soon")),
                                    QJsonValue(QStringLiteral("2026-02-30T00:00:00.000")),
                                    QJsonValue(1777852800000.0), QJsonValue(true)})
        QCOMPARE(difference(response({{key, value}}), empty), QString());
}

// Nothing of what a record held before is left, but for the documents.
void KvProgressCodecReadTest::emptyObject()
{
    KvPlanNodeResponse wanted;
    wanted.documentIds = fullResponse().documentIds;
    wanted.documents = fullResponse().documents;
    QCOMPARE(difference(response(QJsonObject()), dump(wanted)), QString());
    QCOMPARE(difference(dump(responseOf(QJsonObject())), dump(KvPlanNodeResponse())), QString());
    QCOMPARE(difference(state(QJsonObject()), dump(KvMeteringState())), QString());
    QCOMPARE(media(QJsonObject()), json(R"({"fileId": "", "thumbnail": "", "time": 0})"));
    QCOMPARE(statistics(QJsonObject()), json(R"({"total": 0, "items": []})"));
    QCOMPARE(status(QJsonObject()), json(R"({"total": 0, "status": "", "items": []})"));
    QCOMPARE(situation(QJsonObject()), json(R"({"total": 0, "situation": ""})"));
    QCOMPARE(quantity(QJsonObject()),
             json(R"({"type": "", "year": 0, "month": 0, "week": 0, "day": 0, "total": 0})"));
}

void KvProgressCodecReadTest::mediaAreReplaced()
{
    const KvPlanNodeResponse read =
        responseOf(json(R"({"media": [{"fileId": "b"}, {"fileId": "a"}, {"fileId": "b"}]})"), fullResponse());
    QStringList files; // in the order of the reply, also the same one twice
    for (const KvMedia& item : read.media)
        files.append(item.fileId);
    QCOMPARE(files, (QStringList{QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("b")}));
    QVERIFY(responseOf(json(R"({"media": []})"), fullResponse()).media.isEmpty());
}

void KvProgressCodecReadTest::mediaWithoutFile_data()
{
    QTest::addColumn<QByteArray>("element");
    QTest::newRow("no key") << QByteArray(R"({"thumbnail": "t", "time": 1})");
    QTest::newRow("empty") << QByteArray(R"({"fileId": ""})");
    QTest::newRow("null") << QByteArray(R"({"fileId": null})");
    QTest::newRow("number") << QByteArray(R"({"fileId": 5})");
    QTest::newRow("empty object") << QByteArray("{}");
    QTest::newRow("no object") << QByteArray(R"("f0")");
    QTest::newRow("nothing") << QByteArray("null");
}

void KvProgressCodecReadTest::mediaWithoutFile()
{
    QFETCH(QByteArray, element);
    const KvPlanNodeResponse read =
        responseOf(json(R"({"media": [)" + element + R"(, {"fileId": "f1"}, )" + element + "]}"));
    QCOMPARE(read.media.size(), 1);
    QCOMPARE(read.media.first().fileId, QStringLiteral("f1"));
}

// To those that the record holds: hosts that pass a record on get both. They pass a fresh one to get the
// reply's alone.
void KvProgressCodecReadTest::documentsAreAdded()
{
    KvPlanNodeResponse read =
        responseOf(json(R"({"documents": [{"_id": "d2"}, {"name": "without id"}]})"), fullResponse());
    QCOMPARE(read.documentIds, (QStringList{QStringLiteral("d0"), QStringLiteral("d2"), QString()}));
    QCOMPARE(read.documents.size(), 3);
    QCOMPARE(dump(read.documents.at(0)), dump(fullResponse().documents.first()));
    QCOMPARE(read.documents.at(1).id, QStringLiteral("d2"));
    QCOMPARE(read.documents.at(2).name, QStringLiteral("without id"));
    read = responseOf(json(R"({"documents": [{"_id": "d2"}]})"), read);
    QCOMPARE(read.documentIds.size(), 4);
    QCOMPARE(read.documents.size(), 4);
}

void KvProgressCodecReadTest::documentIdsComeFromTheDocuments()
{
    QCOMPARE(responseOf(json(R"({"documentIds": ["a"]})")).documentIds, QStringList());
    QCOMPARE(responseOf(json(R"({"documentIds": ["a"], "documents": [{"_id": "b"}]})")).documentIds,
             QStringList{QStringLiteral("b")});
}

void KvProgressCodecReadTest::listOfAnotherKind_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::newRow("null") << QJsonValue();
    QTest::newRow("text") << QJsonValue(QStringLiteral("f1"));
    QTest::newRow("number") << QJsonValue(1);
    QTest::newRow("flag") << QJsonValue(true);
    const QJsonObject element{{QStringLiteral("fileId"), QStringLiteral("f1")},
                              {QStringLiteral("_id"), QStringLiteral("d1")},
                              {QStringLiteral("total"), 1}};
    QTest::newRow("one object") << QJsonValue(element);
    QTest::newRow("object of objects") << QJsonValue(QJsonObject{{QStringLiteral("0"), element}});
}

void KvProgressCodecReadTest::listOfAnotherKind()
{
    QFETCH(QJsonValue, value);
    const KvPlanNodeResponse read =
        responseOf({{QStringLiteral("media"), value}, {QStringLiteral("documents"), value}});
    QCOMPARE(difference(dump(read), dump(KvPlanNodeResponse())), QString());
    QCOMPARE(statistics({{QStringLiteral("items"), value}}), statistics(QJsonObject()));
    QCOMPARE(status({{QStringLiteral("items"), value}}), status(QJsonObject()));
}

// They count as empty objects: a bucket without name is a bucket.
void KvProgressCodecReadTest::elementsThatAreNoObjects()
{
    const QJsonArray list{QJsonValue(), 1, QStringLiteral("x"), true, QJsonArray{1}};
    const KvPlanStatistics read = Kv::jsonObjectToPlanStatistics({{QStringLiteral("items"), list}});
    QCOMPARE(read.items.size(), 5);
    for (const KvStatusStatistics& item : read.items)
        QCOMPARE(dump(item), status(QJsonObject()));
    QCOMPARE(Kv::jsonObjectToStatusStatistics({{QStringLiteral("items"), list}}).items.size(), 5);
    QCOMPARE(responseOf({{QStringLiteral("documents"), list}}).documents.size(), 5);
}

QTEST_GUILESS_MAIN(KvProgressCodecReadTest)
#include "KvProgressCodecReadTest.moc"
