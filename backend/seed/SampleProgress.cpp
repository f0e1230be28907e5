#include "SampleProgress.h"

#include "../json/JsonWriter.h"
#include "SampleNodeJson.h"

namespace PlanService {

namespace {

constexpr int everyNth = 2;
constexpr int begun = 5; // percent

/// Ids follow the node's, told apart by two digits in the middle.
QString idFor(const SampleNode& node, const char* kind)
{
    return node.record.id.left(14) + QLatin1String(kind) + node.record.id.right(8);
}

struct Report
{
    QString id;
    SampleName remark;
    int percentage = 0;
    QString finish; ///< empty: not finished
    QString at;
    QStringList documentIds;
};

ResponseRecord response(const SampleNode& node, const Report& report, SampleLanguage language)
{
    JsonWriter json;
    json.beginObject();
    json.key("_id").text(report.id);
    json.key("hostId").text(node.record.id);
    json.key("remark").text(inLanguage(report.remark, language));
    json.key("percentage").number(report.percentage);
    json.key("media").beginArray().beginObject();
    json.key("fileId").text(QStringLiteral("photo-") + report.id);
    json.key("thumbnail").text(QStringLiteral("thumbnail-") + report.id);
    json.key("time").number(0);
    json.endObject().endArray();
    json.key("documentIds").texts(report.documentIds);
    json.key("actualStartDate").text(node.record.actualStartDate);
    json.key("actualFinishDate").text(report.finish);
    json.key("createdAt").text(report.at);
    json.key("createdBy").text(node.worker);
    json.endObject();
    return {report.id, node.record.id, report.at, json.take()};
}

DocumentRecord inspection(const SampleNode& node, const QString& at, SampleLanguage language)
{
    const QString id = idFor(node, "d1");
    JsonWriter json;
    json.beginObject();
    json.key("_id").text(id);
    json.key("name").text(
        inLanguage({QStringLiteral("验收记录"), QStringLiteral("Inspection record")}, language) +
        QStringLiteral(".pdf"));
    json.key("fileSize").number(20000 + node.record.rowNumber % 1000 * 91);
    json.key("suffix").text(QStringLiteral("pdf"));
    json.key("createdAt").text(at);
    json.key("createdBy").text(node.worker);
    json.endObject();
    return {id, node.record.projectId, json.take()};
}

} // namespace

SampleProgress sampleProgress(const SampleNode& node, const PlanRecord& plan, SampleLanguage language)
{
    SampleProgress progress;
    const PlanNodeRecord& task = node.record;
    if (node.summary || node.milestone || task.actualStartDate.isEmpty() || task.rowNumber % everyNth != 0) {
        return progress;
    }
    progress.responses.append(response(node,
                                       {idFor(node, "a0"),
                                        {QStringLiteral("已开工"), QStringLiteral("work has begun")},
                                        begun,
                                        QString(),
                                        task.actualStartDate,
                                        {}},
                                       language));
    const bool finished = !task.actualFinishDate.isEmpty();
    if (finished) {
        progress.documents.append(inspection(node, task.actualFinishDate, language));
        progress.responses.append(
            response(node,
                     {idFor(node, "a1"),
                      {QStringLiteral("已完工，验收合格"), QStringLiteral("finished, inspected")},
                      100,
                      task.actualFinishDate,
                      task.actualFinishDate,
                      {progress.documents.first().id}},
                     language));
    } else if (node.progress > begun) {
        progress.responses.append(response(node,
                                           {idFor(node, "a1"),
                                            {QStringLiteral("进行中"), QStringLiteral("under way")},
                                            qRound(node.progress),
                                            QString(),
                                            plan.updatedAt,
                                            {}},
                                           language));
    }
    const bool measured = finished && task.rowNumber / everyNth % 2 == 0;
    progress.state =
        TaskStateRecord{idFor(node, "b0"), task.projectId, task.planId, task.id, progress.responses.last().id,
                        measured ? 2 : 1};
    return progress;
}

} // namespace PlanService
