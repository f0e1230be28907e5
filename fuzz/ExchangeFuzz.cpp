// The exchange format: what is read is what the description says, and what is written tells all that the
// format keeps.

#include "FuzzTarget.h"
#include "PlainCodec.h"

#include <model/KvPlanCodec.h>
#include <model/KvPlanDataUtils.h>

#include <model/KvPlanRecordsDump.h>

#include <QtCore/QJsonArray>

namespace {

/// What an export that is imported again keeps: all but the milestone, the note, what predecessors say under
/// the service's keys, and a date that has another time spec or year than the format can tell.
void checkExport(const KvPlanNode& task)
{
    QJsonObject object;
    KvPlanDataUtils::planNodeToJsonObjectMPXJ(task, object);
    KvFuzz::require(object.size() == 16, "all keys of an exported task");
    KvPlanNode again;
    KvPlanDataUtils::jsonObjectToPlanNodeMPJX(object, again);
    KvFuzz::require(again.predecessors.size() == task.predecessors.size(), "number of predecessors");
    const QJsonArray links = object.value(QLatin1String("Predecessors")).toArray();
    for (int i = 0; i < task.predecessors.size(); ++i) {
        const KvPlanPredecessor link = Kv::jsonObjectToPredecessor(links.at(i).toObject());
        KvFuzz::requireEqual(KvTest::difference(KvTest::dump(link), KvTest::dump(task.predecessors.at(i))),
                             "predecessor as the service reads it");
    }
    again.predecessors = task.predecessors;
    again.milestone = task.milestone;
    again.notes = task.notes;
    KvFuzz::requireEqual(KvTest::difference(KvTest::dump(again), KvTest::dump(task)), "imported again");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QJsonDocument document = KvFuzz::documentOf(KvFuzz::bytesOf(data, size));
    const QJsonObject in =
        document.isArray() ? QJsonObject{{QStringLiteral("AllTasks"), document.array()}} : document.object();
    KvPlan plan = KvTest::fullPlan(); // its nodes stay before those that are read
    KvPlan plain = plan;
    KvPlanDataUtils::jsonObjectToPlanMPXJ(in, plan);
    PlainCodec::readExchangePlan(in, plain);
    KvFuzz::requireEqual(KvTest::difference(KvTest::dump(plan), KvTest::dump(plain)), "exchange plan");

    KvPlanNode task;
    KvPlanNode plainTask;
    KvPlanDataUtils::jsonObjectToPlanNodeMPJX(in, task);
    PlainCodec::readExchangeTask(in, plainTask);
    KvFuzz::requireEqual(KvTest::difference(KvTest::dump(task), KvTest::dump(plainTask)), "exchange task");

    KvPlan read;
    KvPlanDataUtils::jsonObjectToPlanMPXJ(in, read);
    for (const KvPlanNode& node : qAsConst(read.planNodes))
        checkExport(node);
    return 0;
}
