// What responses and metering states are sent as, byte for byte.

#include <model/KvProgressCodec.h>

#include <KvSoftBase/KvSoftBase.h>

#include <model/KvPlanRecordsDump.h>
#include <model/KvProgressRecordsDump.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

using KvTest::difference;
using KvTest::dump;
using KvTest::fullResponse;
using KvTest::fullState;

namespace {

QByteArray compact(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QJsonObject written(const KvPlanNodeResponse& response)
{
    QJsonObject object;
    Kv::planNodeResponseToJsonObject(response, object);
    return object;
}

QJsonObject written(const KvMeteringState& state)
{
    QJsonObject object;
    Kv::meteringStateToJsonObject(state, object);
    return object;
}

} // namespace

class KvProgressCodecWriteTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void fullResponseIsWritten();
    void emptyResponse();
    void emptyIdsOfAResponse_data();
    void emptyIdsOfAResponse();
    void listsKeepTheirOrder();
    void documentIdsAreWrittenNotDocuments();
    void media_data();
    void media();
    void dates_data();
    void dates();
    void fullStateIsWritten();
    void emptyState();
    void projectIsReadAnew();
    void otherKeysOfTheObjectStay();
    void roundTrip();
};

void KvProgressCodecWriteTest::init()
{
    GetSoftCache()->setCurrentProjectId(QStringLiteral("project-1"));
}

void KvProgressCodecWriteTest::fullResponseIsWritten()
{
    QCOMPARE(compact(written(fullResponse())),
             QByteArray(R"({"actualFinishDate":"2026-03-02T17:30:15.250",)"
                        R"("actualStartDate":"2026-03-01T08:00:00.000","documentIds":["d0"],"hostId":"n0",)"
                        R"("media":[{"fileId":"f0","thumbnail":"t0","time":7}],"percentage":77,)"
                        R"("remark":"before"})"));
}

// Every key always; a null date is an empty text.
void KvProgressCodecWriteTest::emptyResponse()
{
    QCOMPARE(compact(written(KvPlanNodeResponse())),
             QByteArray(R"({"actualFinishDate":"","actualStartDate":"","documentIds":[],"hostId":null,)"
                        R"("media":[],"percentage":0,"remark":""})"));
}

void KvProgressCodecWriteTest::emptyIdsOfAResponse_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QJsonValue>("value");
    QTest::newRow("null") << QString() << QJsonValue(QJsonValue::Null);
    QTest::newRow("empty") << QStringLiteral("") << QJsonValue(QJsonValue::Null);
    QTest::newRow("blank") << " " << QJsonValue(QStringLiteral(" "));
    QTest::newRow("word") << "null" << QJsonValue(QStringLiteral("null"));
}

void KvProgressCodecWriteTest::emptyIdsOfAResponse()
{
    QFETCH(QString, id);
    QFETCH(QJsonValue, value);
    KvPlanNodeResponse response = fullResponse();
    response.hostId = id;
    response.remark = id;
    const QJsonObject object = written(response);
    QCOMPARE(object.value(QLatin1String("hostId")), value);
    QCOMPARE(object.value(QLatin1String("remark")), QJsonValue(id)); // no identifier: never null
}

void KvProgressCodecWriteTest::listsKeepTheirOrder()
{
    KvPlanNodeResponse response;
    response.documentIds =
        QStringList{QStringLiteral("b"), QString(), QStringLiteral("a"), QStringLiteral("b")};
    response.media = {{QStringLiteral("z"), QString(), 2},
                      {QString(), QString(), 0}, // without a file; only the reader leaves it out
                      {QStringLiteral("a"), QStringLiteral("t"), -1}};
    const QJsonObject object = written(response);
    QCOMPARE(object.value(QLatin1String("documentIds")).toArray(),
             (QJsonArray{QStringLiteral("b"), QString(), QStringLiteral("a"), QStringLiteral("b")}));
    QCOMPARE(QJsonDocument(object.value(QLatin1String("media")).toArray()).toJson(QJsonDocument::Compact),
             QByteArray(R"([{"fileId":"z","thumbnail":null,"time":2},)"
                        R"({"fileId":null,"thumbnail":null,"time":0},)"
                        R"({"fileId":"a","thumbnail":"t","time":-1}])"));
}

void KvProgressCodecWriteTest::documentIdsAreWrittenNotDocuments()
{
    KvPlanNodeResponse response = fullResponse();
    response.documentIds = QStringList{QStringLiteral("other")};
    const QJsonObject object = written(response);
    QCOMPARE(object.value(QLatin1String("documentIds")).toArray(), QJsonArray{QStringLiteral("other")});
    QCOMPARE(object.keys().join(QLatin1Char(' ')),
             QStringLiteral("actualFinishDate actualStartDate documentIds hostId media percentage remark"));
}

void KvProgressCodecWriteTest::media_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("thumbnail");
    QTest::addColumn<int>("time");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("all") << "f"
                         << "t" << 5 << QByteArray(R"({"fileId":"f","thumbnail":"t","time":5})");
    QTest::newRow("nothing") << QString() << QString() << 0
                             << QByteArray(R"({"fileId":null,"thumbnail":null,"time":0})");
    QTest::newRow("no preview") << "f"
                                << "" << -3 << QByteArray(R"({"fileId":"f","thumbnail":null,"time":-3})");
    QTest::newRow("preview alone") << ""
                                   << "第" << 2147483647
                                   << QByteArray(R"({"fileId":null,"thumbnail":"第","time":2147483647})");
}

void KvProgressCodecWriteTest::media()
{
    QFETCH(QString, file);
    QFETCH(QString, thumbnail);
    QFETCH(int, time);
    QFETCH(QByteArray, expected);
    QCOMPARE(compact(Kv::mediaToJsonObject({file, thumbnail, time})), expected);
}

void KvProgressCodecWriteTest::dates_data()
{
    QTest::addColumn<QDateTime>("date");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << QDateTime() << "";
    QTest::newRow("no such day") << QDateTime(QDate(2026, 2, 30), QTime(0, 0)) << "";
    QTest::newRow("midnight") << QDateTime(QDate(2026, 5, 4), QTime(0, 0)) << "2026-05-04T00:00:00.000";
    QTest::newRow("milliseconds") << QDateTime(QDate(2026, 5, 4), QTime(23, 59, 59, 999))
                                  << "2026-05-04T23:59:59.999";
    QTest::newRow("UTC keeps its own wall clock")
        << QDateTime(QDate(2026, 5, 4), QTime(22, 0), Qt::UTC) << "2026-05-04T22:00:00.000";
}

void KvProgressCodecWriteTest::dates()
{
    QFETCH(QDateTime, date);
    QFETCH(QString, text);
    KvPlanNodeResponse response = fullResponse();
    response.actualStartDate = date;
    QJsonObject wanted = written(fullResponse());
    wanted.insert(QStringLiteral("actualStartDate"), text);
    QCOMPARE(difference(written(response), wanted), QString());
    response.actualFinishDate = date;
    wanted.insert(QStringLiteral("actualFinishDate"), text);
    QCOMPARE(difference(written(response), wanted), QString());
}

// Without its own id and without its state code.
void KvProgressCodecWriteTest::fullStateIsWritten()
{
    QCOMPARE(compact(written(fullState())),
             QByteArray(R"({"planId":"p0","projectId":"project-1","responseId":"r0","taskId":"t0"})"));
}

void KvProgressCodecWriteTest::emptyState()
{
    QCOMPARE(compact(written(KvMeteringState())),
             QByteArray(R"({"planId":null,"projectId":"project-1","responseId":null,"taskId":null})"));
    GetSoftCache()->setCurrentProjectId(QString());
    QCOMPARE(compact(written(KvMeteringState())),
             QByteArray(R"({"planId":null,"projectId":null,"responseId":null,"taskId":null})"));
    KvMeteringState one;
    one.responseId = QStringLiteral("r");
    QCOMPARE(compact(written(one)),
             QByteArray(R"({"planId":null,"projectId":null,"responseId":"r","taskId":null})"));
}

void KvProgressCodecWriteTest::projectIsReadAnew()
{
    for (const char* project : {"one", "第 2#+", "one"}) {
        GetSoftCache()->setCurrentProjectId(QString::fromUtf8(project));
        QCOMPARE(written(KvMeteringState()).value(QLatin1String("projectId")).toString(),
                 QString::fromUtf8(project));
    }
}

void KvProgressCodecWriteTest::otherKeysOfTheObjectStay()
{
    QJsonObject object{{QStringLiteral("mine"), 1}, {QStringLiteral("hostId"), 1}};
    Kv::planNodeResponseToJsonObject(fullResponse(), object);
    QJsonObject wanted = written(fullResponse());
    wanted.insert(QStringLiteral("mine"), 1);
    QCOMPARE(difference(object, wanted), QString());
    object = {{QStringLiteral("state"), 4}, {QStringLiteral("taskId"), 1}};
    Kv::meteringStateToJsonObject(fullState(), object);
    wanted = written(fullState());
    wanted.insert(QStringLiteral("state"), 4);
    QCOMPARE(difference(object, wanted), QString());
}

// What is written and read comes back, but for what the service assigns and the expanded documents.
void KvProgressCodecWriteTest::roundTrip()
{
    KvPlanNodeResponse back;
    Kv::jsonObjectToPlanNodeResponse(written(fullResponse()), back);
    KvPlanNodeResponse wanted = fullResponse();
    wanted.id.clear();
    wanted.documentIds.clear();
    wanted.documents.clear();
    wanted.createdAt = QDateTime();
    wanted.createdBy.clear();
    QCOMPARE(difference(dump(back), dump(wanted)), QString());
    KvMeteringState state;
    Kv::jsonObjectToMeteringState(written(fullState()), state);
    KvMeteringState left = fullState();
    left.id.clear();
    left.state = 0;
    QCOMPARE(difference(dump(state), dump(left)), QString());
}

QTEST_GUILESS_MAIN(KvProgressCodecWriteTest)
#include "KvProgressCodecWriteTest.moc"
