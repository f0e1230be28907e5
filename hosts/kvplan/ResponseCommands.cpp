#include "ResponseCommands.h"

#include "Arguments.h"
#include "CellText.h"
#include "NodeChanges.h"
#include "Output.h"
#include "Progress.h"
#include "RecordJson.h"
#include "RecordValues.h"
#include "Session.h"
#include "TextTable.h"

#include <plandata/KvPlanData.h>

#include <QtCore/QJsonDocument>

namespace {

// "FILE", "FILE,PREVIEW" or "FILE,PREVIEW,TIME".
bool readMedia(Arguments& line, QList<KvMedia>& media)
{
    const QStringList texts = line.values("media");
    for (const QString& text : texts) {
        const QStringList parts = text.split(QLatin1Char(','));
        bool isGood = parts.size() <= 3 && !parts.first().isEmpty();
        KvMedia item;
        item.fileId = parts.first();
        item.thumbnail = parts.value(1);
        if (parts.size() == 3)
            item.time = parts.at(2).toInt(&isGood);
        if (!isGood)
            return line.refuse(
                QStringLiteral("--media takes FILE, FILE,PREVIEW or FILE,PREVIEW,TIME, not \"%1\"")
                    .arg(text));
        media.append(item);
    }
    return true;
}

bool readResponse(Arguments& line, KvPlanNodeResponse& response)
{
    response.hostId = line.positional(0);
    response.remark = line.value("remark");
    response.documentIds = line.values("document");
    if (response.documentIds.contains(QString()))
        return line.refuse(QStringLiteral("--document takes the identifier of a document"));
    return line.readNumber("percent", 1, 100, response.percentage) &&
           line.readMoment("start", response.actualStartDate) &&
           line.readMoment("finish", response.actualFinishDate) && readMedia(line, response.media);
}

QString percent(int percentage)
{
    return QStringLiteral("%1%").arg(percentage);
}

QString movedText(const KvPlanNode& before, const KvPlanNode& after)
{
    QString text = fitted(after.id, 0) + QStringLiteral("  ") + fitted(after.name, 0) + QLatin1Char('\n');
    const QVector<FieldChange> changes = changesBetween(before, after);
    if (changes.isEmpty())
        return text + QStringLiteral("reported; the task stays as it is\n");
    TextTable table;
    table.addColumn(QStringLiteral("Field"));
    table.addTextColumn(QStringLiteral("Was"));
    table.addTextColumn(QStringLiteral("Is now"));
    for (const FieldChange& change : changes)
        table.addRow(
            {change.field->name, change.field->shown(change.was), change.field->shown(change.becomes)});
    return text + QLatin1Char('\n') + table.toText(terminalWidth());
}

QString responsesText(const QList<KvPlanNodeResponse>& responses)
{
    TextTable table;
    table.addColumn(QStringLiteral("Reported"));
    table.addTextColumn(QStringLiteral("By"));
    table.addColumn(QStringLiteral("Done"), TextTable::Right);
    table.addColumn(QStringLiteral("Started"));
    table.addColumn(QStringLiteral("Finished"));
    table.addColumn(QStringLiteral("Files"), TextTable::Right);
    table.addTextColumn(QStringLiteral("Remark"));
    for (const KvPlanNodeResponse& response : responses) {
        const int files = response.documents.size() + response.media.size();
        table.addRow({minuteText(response.createdAt), response.createdBy, percent(response.percentage),
                      dayText(response.actualStartDate), dayText(response.actualFinishDate),
                      files > 0 ? QString::number(files) : QString(), response.remark});
    }
    return table.toText(terminalWidth());
}

} // namespace

int runRespond(const QStringList& arguments)
{
    Arguments line(
        QStringLiteral("respond"),
        QStringLiteral("Reports progress on a task and shows what the task has become. A percentage\n"
                       "that is left out is the task's own."),
        QStringLiteral("NODE"));
    line.addOption("percent", "number", "Progress, 1 to 100; \"kvplan update\" takes it back to 0.");
    line.addOption("remark", "text", "Remark.");
    line.addOption("start", "date", "Actual start, as in 2026-03-05 or 2026-03-05T08:00.");
    line.addOption("finish", "date", "Actual finish.");
    line.addOption("document", "id", "Attach this document; may be given several times.");
    line.addOption("media", "file",
                   "Attach this photo or video, as FILE, FILE,PREVIEW or FILE,PREVIEW,TIME; may be given "
                   "several times.");
    line.addJsonOption();
    KvPlanNodeResponse response; // 0 percent, unless the option is given, reports none
    if (!line.read(arguments, 1) || !line.needService() || !readResponse(line, response))
        return line.exitCode();

    const Session session;
    const QString id = line.positional(0);
    KvPlanNode before;
    if (!session.readNode(id, before))
        return RequestFailed;
    const int documents = response.documentIds.size();
    if (!KvPlanData::instance()->createPlanNodeResponse(id, response))
        return session.complainOfFailure(QStringLiteral("report on the task \"%1\"").arg(id));
    response.documentIds = response.documentIds.mid(documents); // those of the reply stand behind those sent
    if (line.wantsJson())
        return say(QJsonDocument(responseToJson(response)).toJson());
    KvPlanNode after;
    if (!session.readNode(id, after))
        return RequestFailed;
    return say(movedText(before, after));
}

int runResponses(const QStringList& arguments)
{
    Arguments line(QStringLiteral("responses"),
                   QStringLiteral("Lists what was reported on a task, oldest first."),
                   QStringLiteral("NODE"));
    line.addJsonOption();
    if (!line.read(arguments, 1) || !line.needService())
        return line.exitCode();
    const Session session;
    const QString id = line.positional(0);
    QList<KvPlanNodeResponse> responses;
    bool isRead = false;
    {
        const Progress progress(QStringLiteral("reading the reports"));
        isRead = KvPlanData::instance()->getPlanNodeResponses(id, responses);
    }
    if (!isRead)
        return session.complainOfFailure(QStringLiteral("read the reports on the task \"%1\"").arg(id));
    if (line.wantsJson()) {
        QJsonArray array;
        for (const KvPlanNodeResponse& response : qAsConst(responses))
            array.append(responseToJson(response));
        return say(QJsonDocument(array).toJson());
    }
    return say(responses.isEmpty() ? QStringLiteral("nothing reported\n") : responsesText(responses));
}
