#include "ResponseInput.h"

#include "../http/Reply.h"
#include "../json/JsonWriter.h"
#include "FieldReader.h"
#include "PlanInput.h"

#include <algorithm>

namespace PlanService {

namespace {

constexpr int allDone = 100; // percent

int percentageOf(const FieldReader& in)
{
    const int percentage = in.whole("percentage").value_or(0);
    if (percentage < 0 || percentage > allDone) {
        in.refuse("percentage", QStringLiteral("outOfRange"),
                  QStringLiteral("'percentage' has to lie between 0 and 100, not at %1").arg(percentage));
    }
    return percentage;
}

void requireFew(const FieldReader& in, const char* key)
{
    const int size = in.array(key).size();
    if (size > mostAttachments) {
        in.refuse(key, QStringLiteral("tooMany"),
                  QStringLiteral("'%1' has %2 elements, at most %3 are accepted")
                      .arg(QLatin1String(key))
                      .arg(size)
                      .arg(mostAttachments));
    }
}

QByteArray mediaOf(const FieldReader& in)
{
    requireFew(in, "media");
    const QJsonArray media = in.array("media");
    JsonWriter json;
    json.beginArray();
    for (int i = 0; i < media.size(); ++i) {
        const FieldReader medium(&in, "media", i, media.at(i));
        const QString file = medium.textOrNull("fileId");
        const QString thumbnail = medium.textOrNull("thumbnail");
        const int time = medium.whole("time").value_or(0);
        if (file.isEmpty()) {
            continue;
        }
        json.beginObject();
        json.key("fileId").text(file);
        json.key("thumbnail").text(thumbnail);
        json.key("time").number(time);
        json.endObject();
    }
    json.endArray();
    return json.take();
}

/// @param sent key of the date that the client sent and that the message is to name.
void requireOrder(const QString& start, const QString& finish, const char* sent)
{
    if (!start.isEmpty() && !finish.isEmpty() && finish < start) {
        throw ApiError(
            400, QStringLiteral("badDate"),
            QStringLiteral("the task would finish at '%1', before its actual start at '%2'; send both dates")
                .arg(finish, start),
            QLatin1String(sent));
    }
}

} // namespace

ResponseInput readResponse(const QJsonObject& input)
{
    const FieldReader in(input);
    ResponseInput response;
    response.hostId = in.textOrNull("hostId");
    response.remark = in.text("remark");
    response.percentage = percentageOf(in);
    response.actualStartDate = in.date("actualStartDate");
    response.actualFinishDate = in.date("actualFinishDate");
    requireFew(in, "documentIds");
    response.documentIds = in.texts("documentIds");
    response.media = mediaOf(in);
    requireOrder(response.actualStartDate, response.actualFinishDate, "actualFinishDate");
    return response;
}

ResponseRecord newResponse(const ResponseInput& input, const QString& planNodeId, const QString& now,
                           const QString& user)
{
    ResponseRecord response;
    response.id = newPlanId();
    response.planNodeId = planNodeId;
    response.createdAt = now;
    JsonWriter json;
    json.beginObject();
    json.key("_id").text(response.id);
    json.key("hostId").text(planNodeId);
    json.key("remark").text(input.remark);
    json.key("percentage").number(input.percentage);
    json.key("media").raw(input.media);
    json.key("documentIds").texts(input.documentIds);
    json.key("actualStartDate").text(input.actualStartDate);
    json.key("actualFinishDate").text(input.actualFinishDate);
    json.key("createdAt").text(now);
    json.key("createdBy").text(user);
    json.endObject();
    response.document = json.take();
    return response;
}

QJsonObject progressOf(const ResponseInput& input, const QJsonObject& node, const QString& now)
{
    QString start = input.actualStartDate;
    if (start.isEmpty()) {
        start = node.value(QLatin1String("actualStartDate")).toString();
    }
    int percentage = input.percentage;
    QString finish = input.actualFinishDate;
    if (!finish.isEmpty()) {
        percentage = allDone;
    } else if (percentage == 0 || percentage == allDone) {
        finish = node.value(QLatin1String("actualFinishDate")).toString();
        if (percentage == allDone && finish.isEmpty()) {
            finish = std::max(now, start);
        }
    }
    if (start.isEmpty() && percentage > 0) {
        start = finish.isEmpty() ? now : std::min(now, finish);
    }
    if (!input.actualFinishDate.isEmpty() || !input.actualStartDate.isEmpty()) {
        requireOrder(start, finish,
                     input.actualFinishDate.isEmpty() ? "actualStartDate" : "actualFinishDate");
    }
    QJsonObject changes{{QStringLiteral("actualStartDate"), start},
                        {QStringLiteral("actualFinishDate"), finish}};
    if (percentage > 0) {
        changes.insert(QStringLiteral("finishedPercentage"), percentage);
    }
    return changes;
}

} // namespace PlanService
