#include "KvProgressRecordsDump.h"

#include "KvPlanRecordsDump.h"

#include <QtCore/QJsonArray>

namespace KvTest {

namespace {

QJsonValue toJson(const QDateTime& dateTime)
{
    return dateTime.isNull() ? QJsonValue(QJsonValue::Null) : dateTime.toString(Qt::ISODateWithMs);
}

template<class Record>
QJsonArray toJson(const QList<Record>& records)
{
    QJsonArray array;
    for (const Record& record : records)
        array.append(dump(record));
    return array;
}

} // namespace

QJsonObject dump(const KvMedia& media)
{
    return {{QStringLiteral("fileId"), media.fileId},
            {QStringLiteral("thumbnail"), media.thumbnail},
            {QStringLiteral("time"), media.time}};
}

QJsonObject dump(const KvPlanNodeResponse& response)
{
    return {{QStringLiteral("id"), response.id},
            {QStringLiteral("hostId"), response.hostId},
            {QStringLiteral("remark"), response.remark},
            {QStringLiteral("percentage"), response.percentage},
            {QStringLiteral("media"), toJson(response.media)},
            {QStringLiteral("documentIds"), QJsonArray::fromStringList(response.documentIds)},
            {QStringLiteral("documents"), toJson(response.documents)},
            {QStringLiteral("actualStartDate"), toJson(response.actualStartDate)},
            {QStringLiteral("actualFinishDate"), toJson(response.actualFinishDate)},
            {QStringLiteral("createdAt"), toJson(response.createdAt)},
            {QStringLiteral("createdBy"), response.createdBy}};
}

QJsonObject dump(const KvMeteringState& state)
{
    return {{QStringLiteral("id"), state.id},
            {QStringLiteral("planId"), state.planId},
            {QStringLiteral("taskId"), state.taskId},
            {QStringLiteral("responseId"), state.responseId},
            {QStringLiteral("state"), state.state}};
}

QJsonObject dump(const KvSituationCount& count)
{
    return {{QStringLiteral("total"), count.total}, {QStringLiteral("situation"), count.situation}};
}

QJsonObject dump(const KvStatusStatistics& statistics)
{
    return {{QStringLiteral("total"), statistics.total},
            {QStringLiteral("status"), statistics.status},
            {QStringLiteral("items"), toJson(statistics.items)}};
}

QJsonObject dump(const KvPlanStatistics& statistics)
{
    return {{QStringLiteral("total"), statistics.total}, {QStringLiteral("items"), toJson(statistics.items)}};
}

QJsonObject dump(const KvStatisticsQuantity& quantity)
{
    return {{QStringLiteral("type"), quantity.type},   {QStringLiteral("year"), quantity.year},
            {QStringLiteral("month"), quantity.month}, {QStringLiteral("week"), quantity.week},
            {QStringLiteral("day"), quantity.day},     {QStringLiteral("total"), quantity.total}};
}

KvPlanNodeResponse fullResponse()
{
    KvPlanNodeResponse response;
    response.id = QStringLiteral("r0");
    response.hostId = QStringLiteral("n0");
    response.remark = QStringLiteral("before");
    response.percentage = 77;
    response.media = {{QStringLiteral("f0"), QStringLiteral("t0"), 7}};
    response.documentIds = QStringList{QStringLiteral("d0")};
    response.documents = {{QStringLiteral("d0"), QStringLiteral("before.pdf"), 70, QStringLiteral("pdf"),
                           QStringLiteral("yesterday"), QStringLiteral("u0")}};
    response.actualStartDate = QDateTime(QDate(2026, 3, 1), QTime(8, 0));
    response.actualFinishDate = QDateTime(QDate(2026, 3, 2), QTime(17, 30, 15, 250));
    response.createdAt = QDateTime(QDate(2026, 3, 3), QTime(9, 0));
    response.createdBy = QStringLiteral("u0");
    return response;
}

KvMeteringState fullState()
{
    return {QStringLiteral("s0"), QStringLiteral("p0"), QStringLiteral("t0"), QStringLiteral("r0"), 7};
}

} // namespace KvTest
