#include <model/KvProgressCodec.h>

#include <model/KvIdValue.h>
#include <model/KvPlanCodec.h>

#include <KvPublicFun/KvPub.h>
#include <KvSoftBase/KvSoftBase.h>

#include <QtCore/QJsonArray>

namespace Kv {

namespace {

QString textOf(const QJsonObject& in, const char* key)
{
    return in.value(QLatin1String(key)).toString();
}

int numberOf(const QJsonObject& in, const char* key)
{
    return in.value(QLatin1String(key)).toInt(0);
}

QDateTime dateOf(const QJsonObject& in, const char* key)
{
    return KvPub::getDateTimeByQString(textOf(in, key));
}

} // namespace

void jsonObjectToPlanNodeResponse(const QJsonObject& in, KvPlanNodeResponse& out)
{
    out.id = textOf(in, "_id");
    out.hostId = textOf(in, "hostId");
    out.remark = textOf(in, "remark");
    out.percentage = numberOf(in, "percentage");
    out.media.clear();
    const QJsonArray media = in.value(QLatin1String("media")).toArray();
    for (const QJsonValue& element : media) {
        const KvMedia item = jsonObjectToMedia(element.toObject());
        if (!item.fileId.isEmpty())
            out.media.append(item);
    }
    // The ids are those of the documents that came along; the key "documentIds" is only written.
    const QJsonArray documents = in.value(QLatin1String("documents")).toArray();
    for (const QJsonValue& element : documents) {
        const KvDocument document = jsonObjectToDocument(element.toObject());
        out.documentIds.append(document.id);
        out.documents.append(document);
    }
    out.actualStartDate = dateOf(in, "actualStartDate");
    out.actualFinishDate = dateOf(in, "actualFinishDate");
    out.createdAt = dateOf(in, "createdAt");
    out.createdBy = textOf(in, "createdBy");
}

void planNodeResponseToJsonObject(const KvPlanNodeResponse& in, QJsonObject& out)
{
    out.insert(QLatin1String("hostId"), toIdValue(in.hostId));
    out.insert(QLatin1String("remark"), in.remark);
    out.insert(QLatin1String("percentage"), in.percentage);
    out.insert(QLatin1String("documentIds"), QJsonArray::fromStringList(in.documentIds));
    out.insert(QLatin1String("actualStartDate"), KvPub::getQStringByDateTime(in.actualStartDate));
    out.insert(QLatin1String("actualFinishDate"), KvPub::getQStringByDateTime(in.actualFinishDate));
    QJsonArray media;
    for (const KvMedia& item : in.media)
        media.append(mediaToJsonObject(item));
    out.insert(QLatin1String("media"), media);
}

KvMedia jsonObjectToMedia(const QJsonObject& in)
{
    return {textOf(in, "fileId"), textOf(in, "thumbnail"), numberOf(in, "time")};
}

QJsonObject mediaToJsonObject(const KvMedia& in)
{
    return {{QLatin1String("fileId"), toIdValue(in.fileId)},
            {QLatin1String("thumbnail"), toIdValue(in.thumbnail)},
            {QLatin1String("time"), in.time}};
}

void jsonObjectToMeteringState(const QJsonObject& in, KvMeteringState& out)
{
    out.id = textOf(in, "_id");
    out.planId = textOf(in, "planId");
    out.taskId = textOf(in, "taskId");
    out.responseId = textOf(in, "responseId");
    out.state = numberOf(in, "state");
}

void meteringStateToJsonObject(const KvMeteringState& in, QJsonObject& out)
{
    out.insert(QLatin1String("projectId"), toIdValue(GetSoftCache()->currentProjectId()));
    out.insert(QLatin1String("planId"), toIdValue(in.planId));
    out.insert(QLatin1String("taskId"), toIdValue(in.taskId));
    out.insert(QLatin1String("responseId"), toIdValue(in.responseId));
}

KvPlanStatistics jsonObjectToPlanStatistics(const QJsonObject& in)
{
    KvPlanStatistics statistics;
    statistics.total = numberOf(in, "total");
    const QJsonArray items = in.value(QLatin1String("items")).toArray();
    for (const QJsonValue& item : items)
        statistics.items.append(jsonObjectToStatusStatistics(item.toObject()));
    return statistics;
}

KvStatusStatistics jsonObjectToStatusStatistics(const QJsonObject& in)
{
    KvStatusStatistics statistics;
    statistics.total = numberOf(in, "total");
    statistics.status = textOf(in, "status");
    const QJsonArray items = in.value(QLatin1String("items")).toArray();
    for (const QJsonValue& item : items)
        statistics.items.append(jsonObjectToSituationCount(item.toObject()));
    return statistics;
}

KvSituationCount jsonObjectToSituationCount(const QJsonObject& in)
{
    return {numberOf(in, "total"), textOf(in, "situation")};
}

KvStatisticsQuantity jsonObjectToStatisticsQuantity(const QJsonObject& in)
{
    KvStatisticsQuantity quantity;
    quantity.type = textOf(in, "type");
    quantity.year = numberOf(in, "year");
    quantity.month = numberOf(in, "month");
    quantity.week = numberOf(in, "week");
    quantity.day = numberOf(in, "day");
    quantity.total = numberOf(in, "total");
    return quantity;
}

} // namespace Kv
