#include <model/KvPlanDataUtils.h>

#include <model/KvDecodePool.h>
#include <model/KvEncodePool.h>
#include <model/KvJsonMembers.h>
#include <model/KvPlanCodec.h>

#include <QtCore/QJsonArray>

#include <array>
#include <cstddef>

namespace {

using Value = const Kv::KvJsonMember&;
using Link = KvPlanPredecessor&;
using Node = KvPlanNode&;
using Pool = Kv::KvDecodePool&;
using Task = const KvPlanNode&;
using Written = Kv::KvEncodePool&;

void readPredecessors(Value in, KvPlanNode& out, Kv::KvDecodePool& pool);

// A one-character text, whose character has the code of a byte. Made once, as each task and each predecessor
// needs one.
QString byteAsText(int code)
{
    static const auto* const texts = [] {
        auto* const all = new std::array<QString, 256>; // for good, as the fields
        for (std::size_t i = 0; i < all->size(); ++i)
            (*all)[i] = QString(QChar(static_cast<ushort>(i)));
        return all;
    }();
    return (*texts)[static_cast<std::size_t>(code & 0xff)];
}

// The text of one that is not in local time also says its offset, so only local ones are told by their clock.
QJsonValue dateText(const QDateTime& dateTime, Kv::KvEncodePool& pool)
{
    const auto text = [&](const Kv::KvWallClock&) {
        return QJsonValue(dateTime.toString(Qt::ISODate));
    };
    const Kv::KvWallClock time = Kv::wallClock(dateTime);
    const bool isLocal = dateTime.isValid() && dateTime.timeSpec() == Qt::LocalTime;
    return isLocal ? pool.exchangeDates.of(time, text) : text(time);
}

// The tables below stand in ascending order of the keys, as a JSON object does. One key a line, however long.
// clang-format off

const Kv::KvField<KvPlanPredecessor> predecessorFields[] = {
    {QLatin1String("Lag"), [](Value v, Link l, Pool) { Kv::readDuration(v.members(), l.lag); }},
    {QLatin1String("SourceTaskID"), [](Value v, Link l, Pool) { l.sourcePlanNodeId = v.wholeNumber(); }},
    {QLatin1String("SourceTaskName"), [](Value v, Link l, Pool p) { l.sourcePlanNodeName = p.shared(v.text()); }},
    {QLatin1String("SourceTaskUniqueID"), [](Value v, Link l, Pool) { l.sourcePlanNodeUniqueId = v.wholeNumber(); }},
    {QLatin1String("TargetTaskID"), [](Value v, Link l, Pool) { l.targetPlanNodeId = v.wholeNumber(); }},
    {QLatin1String("TargetTaskName"), [](Value v, Link l, Pool p) { l.targetPlanNodeName = p.shared(v.text()); }},
    // Not the number as text but the character of its low byte, for compatibility with existing hosts.
    {QLatin1String("TargetTaskUniqueID"), [](Value v, Link l, Pool) { l.targetPlanNodeUniqueId = byteAsText(v.wholeNumber()); }},
    {QLatin1String("Type"), [](Value v, Link l, Pool) { l.type = v.wholeNumber(); }},
};

const Kv::KvField<KvPlanNode> taskFields[] = {
    {QLatin1String("Duration"), [](Value v, Node n, Pool) { Kv::readDuration(v.members(), n.duration); }},
    {QLatin1String("DurationText"), [](Value v, Node n, Pool p) { n.durationText = p.shared(v.text()); }},
    {QLatin1String("Finish"), [](Value v, Node n, Pool p) { n.finishDate = p.exchangeDateTime(v.text()); }},
    {QLatin1String("FinishSlack"), [](Value v, Node n, Pool) { Kv::readDuration(v.members(), n.finishSlack); }},
    {QLatin1String("FinishText"), [](Value v, Node n, Pool p) { n.finishText = p.shared(v.text()); }},
    {QLatin1String("GUID"), [](Value v, Node n, Pool) { n.guid = v.text(); }},
    {QLatin1String("ID"), [](Value v, Node n, Pool) { n.planNodeId = v.wholeNumber(); }},
    {QLatin1String("Milestone"), [](Value v, Node n, Pool) { n.milestone = v.flag(); }},
    {QLatin1String("Name"), [](Value v, Node n, Pool p) { n.name = p.shared(v.text()); }},
    // Not the note but one character of code 0 or 1, as a flag: kept for compatibility with existing hosts.
    {QLatin1String("Notes"), [](Value v, Node n, Pool) { n.notes = byteAsText(v.flag() ? 1 : 0); }},
    {QLatin1String("ParentTask"), [](Value v, Node n, Pool) { n.parentTaskId = v.wholeNumber(); }},
    {QLatin1String("Predecessors"), [](Value v, Node n, Pool p) { readPredecessors(v, n, p); }},
    {QLatin1String("Start"), [](Value v, Node n, Pool p) { n.startDate = p.exchangeDateTime(v.text()); }},
    {QLatin1String("StartText"), [](Value v, Node n, Pool p) { n.startText = p.shared(v.text()); }},
    {QLatin1String("Summary"), [](Value v, Node n, Pool) { n.summary = v.flag(); }},
    {QLatin1String("Type"), [](Value v, Node n, Pool) { n.type = v.wholeNumber(); }},
    {QLatin1String("UniqueID"), [](Value v, Node n, Pool) { n.uniqueId = v.wholeNumber(); }},
};

// Without "Milestone", and with the predecessors under the service's keys, which the reader does not know: kept
// for compatibility with existing hosts that read these files.
const Kv::KvWrittenField<KvPlanNode> writtenTaskFields[] = {
    {QLatin1String("Duration"), [](Task n, Written p) { return Kv::durationToJsonValue(n.duration, p); }},
    {QLatin1String("DurationText"), [](Task n, Written) { return QJsonValue(n.durationText); }},
    {QLatin1String("Finish"), [](Task n, Written p) { return dateText(n.finishDate, p); }},
    {QLatin1String("FinishSlack"), [](Task n, Written p) { return Kv::durationToJsonValue(n.finishSlack, p); }},
    {QLatin1String("FinishText"), [](Task n, Written) { return QJsonValue(n.finishText); }},
    {QLatin1String("GUID"), [](Task n, Written) { return QJsonValue(n.guid); }},
    {QLatin1String("ID"), [](Task n, Written) { return QJsonValue(n.planNodeId); }},
    {QLatin1String("Name"), [](Task n, Written) { return QJsonValue(n.name); }},
    {QLatin1String("Notes"), [](Task n, Written) { return QJsonValue(n.notes); }},
    {QLatin1String("ParentTask"), [](Task n, Written) { return QJsonValue(n.parentTaskId); }},
    {QLatin1String("Predecessors"), [](Task n, Written p) { return QJsonValue(Kv::predecessorsToJsonArray(n.predecessors, p)); }},
    {QLatin1String("Start"), [](Task n, Written p) { return dateText(n.startDate, p); }},
    {QLatin1String("StartText"), [](Task n, Written) { return QJsonValue(n.startText); }},
    {QLatin1String("Summary"), [](Task n, Written) { return QJsonValue(n.summary); }},
    {QLatin1String("Type"), [](Task n, Written) { return QJsonValue(n.type); }},
    {QLatin1String("UniqueID"), [](Task n, Written) { return QJsonValue(n.uniqueId); }},
};
// clang-format on

void readPredecessors(Value in, KvPlanNode& out, Kv::KvDecodePool& pool)
{
    static const auto* const fields = new Kv::KvFields(predecessorFields); // for good, as KvFields tells
    static const auto* const empty = new KvPlanPredecessor;                // for good, as the fields
    const QCborArray links = in.elements();
    for (const QCborValue& link : links) {
        out.predecessors.append(*empty);
        fields->read(link.toMap(), out.predecessors.last(), pool);
    }
}

QJsonObject taskObject(const KvPlanNode& in, Kv::KvEncodePool& pool)
{
    static const Kv::KvObjectWriter writer(writtenTaskFields);
    return writer.write(in, pool.exchangeTasks, pool);
}

void readTask(const QCborMap& in, KvPlanNode& out, Kv::KvDecodePool& pool)
{
    static const auto* const fields = new Kv::KvFields(taskFields); // for good, as KvFields tells
    fields->read(in, out, pool);
}

} // namespace

namespace KvPlanDataUtils {

void jsonObjectToPlanMPXJ(const QJsonObject& in, KvPlan& out)
{
    out.name = in.value(QLatin1String("Name")).toString();
    out.mppFilePath = in.value(QLatin1String("MPPFilePath")).toString();
    const QCborArray tasks = QCborArray::fromJsonArray(in.value(QLatin1String("AllTasks")).toArray());
    Kv::KvDecodePool pool(int(tasks.size()));
    const KvPlanNode empty;
    out.planNodes.reserve(out.planNodes.size() + int(tasks.size()));
    for (const QCborValue& task : tasks) {
        out.planNodes.append(empty);
        readTask(task.toMap(), out.planNodes.last(), pool);
    }
}

void jsonObjectToPlanNodeMPJX(const QJsonObject& in, KvPlanNode& out)
{
    Kv::KvDecodePool pool;
    readTask(QCborMap::fromJsonObject(in), out, pool);
}

void planNodeToJsonObjectMPXJ(const KvPlanNode& in, QJsonObject& out)
{
    Kv::KvEncodePool pool;
    Kv::addMembers(taskObject(in, pool), out);
}

// Tasks are read from "AllTasks" and written to "AllPlanNodes", and the file's path is not written: kept for
// compatibility with existing hosts.
void planToJsonObjectMPXJ(const KvPlan& in, QJsonObject& out)
{
    out.insert(QLatin1String("Name"), in.name);
    QJsonArray nodes;
    Kv::KvEncodePool pool(in.planNodes.size());
    for (const KvPlanNode& node : in.planNodes)
        nodes.append(taskObject(node, pool));
    out.insert(QLatin1String("AllPlanNodes"), nodes);
}

} // namespace KvPlanDataUtils
