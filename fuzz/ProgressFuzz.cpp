// Responses, metering states and statistics from any JSON; what was written and comes back is written the
// same again.

#include "FuzzTarget.h"

#include <model/KvProgressCodec.h>

#include <model/KvPlanRecordsDump.h>
#include <model/KvProgressRecordsDump.h>

#include <QtCore/QJsonArray>

namespace {

QJsonObject written(const KvPlanNodeResponse& response)
{
    QJsonObject object;
    Kv::planNodeResponseToJsonObject(response, object);
    return object;
}

/// The service takes the ids of documents and sends the documents. A date outside the years 1 to 9999 has a
/// text that is not read again.
QJsonObject asSentByService(QJsonObject response)
{
    QJsonArray documents;
    const QJsonArray ids = response.take(QLatin1String("documentIds")).toArray();
    for (const QJsonValue& id : ids)
        documents.append(QJsonObject{{QStringLiteral("_id"), id}});
    response.insert(QLatin1String("documents"), documents);
    return response;
}

bool hasUsualDates(const QJsonObject& response)
{
    for (const char* key : {"actualStartDate", "actualFinishDate"}) {
        const int length = response.value(QLatin1String(key)).toString().size();
        if (length != 0 && length != 23)
            return false;
    }
    return true;
}

void checkResponse(const QJsonObject& in)
{
    KvPlanNodeResponse response;
    Kv::jsonObjectToPlanNodeResponse(in, response);
    KvFuzz::require(response.documents.size() == in.value(QLatin1String("documents")).toArray().size(),
                    "number of documents");
    KvFuzz::require(response.documentIds.size() == response.documents.size(), "an id for each document");
    for (const KvMedia& media : qAsConst(response.media))
        KvFuzz::require(!media.fileId.isEmpty(), "media without a file");
    const QJsonObject first = written(response);
    if (!hasUsualDates(first))
        return;
    KvPlanNodeResponse again;
    Kv::jsonObjectToPlanNodeResponse(asSentByService(first), again);
    KvFuzz::requireEqual(KvTest::difference(written(again), first), "response");
}

void checkState(const QJsonObject& in)
{
    KvMeteringState state;
    Kv::jsonObjectToMeteringState(in, state);
    QJsonObject first;
    Kv::meteringStateToJsonObject(state, first);
    KvFuzz::require(first.size() == 4, "all keys of a state");
    KvMeteringState again;
    Kv::jsonObjectToMeteringState(first, again);
    again.id = state.id;
    again.state = state.state;
    KvFuzz::requireEqual(KvTest::difference(KvTest::dump(again), KvTest::dump(state)), "state");
}

void checkStatistics(const QJsonObject& in)
{
    const KvPlanStatistics statistics = Kv::jsonObjectToPlanStatistics(in);
    const QJsonArray items = in.value(QLatin1String("items")).toArray();
    KvFuzz::require(statistics.items.size() == items.size(), "number of statuses");
    for (int i = 0; i < items.size(); ++i) {
        const KvStatusStatistics status = Kv::jsonObjectToStatusStatistics(items.at(i).toObject());
        KvFuzz::requireEqual(KvTest::difference(KvTest::dump(status), KvTest::dump(statistics.items.at(i))),
                             "status");
    }
    const KvStatisticsQuantity quantity = Kv::jsonObjectToStatisticsQuantity(in);
    KvFuzz::require(quantity.total == statistics.total, "total");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QJsonDocument document = KvFuzz::documentOf(KvFuzz::bytesOf(data, size));
    checkResponse(document.object());
    checkState(document.object());
    checkStatistics(document.object());
    const QJsonArray array = document.array();
    for (const QJsonValue& element : array)
        checkResponse(element.toObject());
    return 0;
}
