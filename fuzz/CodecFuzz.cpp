// Plans and nodes of the service: what is read is what the description says, and what was written once and
// comes back from the service is written the same again.

#include "FuzzTarget.h"
#include "PlainCodec.h"

#include <model/KvPlanCodec.h>

#include <model/KvPlanRecordsDump.h>

#include <QtCore/QJsonArray>

namespace {

/// A node that was sent to the service as the service sends it: it renames the links and makes a number of a
/// flag.
QJsonObject asSentByService(QJsonObject node)
{
    node.insert(QLatin1String("entity"), node.take(QLatin1String("links")));
    node.insert(QLatin1String("displaySimulation"),
                int(node.value(QLatin1String("displaySimulation")).toBool()));
    return node;
}

QJsonObject planAsSentByService(QJsonObject plan)
{
    QJsonArray tasks;
    const QJsonArray nodes = plan.take(QLatin1String("projectData")).toArray();
    for (const QJsonValue& node : nodes)
        tasks.append(asSentByService(node.toObject()));
    plan.insert(QLatin1String("tasks"), tasks);
    return plan;
}

QJsonObject written(const KvPlan& plan)
{
    QJsonObject object;
    Kv::planToJsonObject(plan, object);
    return object;
}

QJsonObject written(const KvPlanNode& node)
{
    QJsonObject object;
    Kv::planNodeToJsonObject(node, object, true);
    return object;
}

/// A key that was left out is missing on the way back and then reads as 0, which is written. A date outside
/// the years 1 to 9999, which an offset or 24:00 may lead to, has a text that is not read again.
bool mayChangeOnce(const QString& key, const QJsonValue& first, const QJsonValue& second)
{
    static const QStringList leftOut{QStringLiteral("dynamicEffect"), QStringLiteral("finishedPercentage"),
                                     QStringLiteral("planWorkload"), QStringLiteral("actualWorkload")};
    if (leftOut.contains(key))
        return first.isUndefined() && second == QJsonValue(0);
    const bool isDate = key.endsWith(QLatin1String("Date")) || key.endsWith(QLatin1String("At"));
    return isDate && first.toString().size() != 23 && second == QJsonValue(QString());
}

void checkSecondWriting(const QJsonObject& first, const QJsonObject& second)
{
    QStringList keys = first.keys() + second.keys();
    keys.removeDuplicates();
    for (const QString& key : qAsConst(keys)) {
        const QJsonValue before = first.value(key);
        const QJsonValue after = second.value(key);
        if (before != after && !mayChangeOnce(key, before, after))
            KvFuzz::fail(QStringLiteral("written differently the second time: ") + key);
    }
}

void checkPlan(const QJsonObject& in)
{
    KvPlan plan;
    Kv::jsonObjectToPlan(in, plan);
    KvPlan plain;
    PlainCodec::readPlan(in, plain);
    KvFuzz::requireEqual(KvTest::difference(KvTest::dump(plan), KvTest::dump(plain)), "plan");

    KvPlan again;
    Kv::jsonObjectToPlan(planAsSentByService(written(plan)), again);
    KvFuzz::require(again.planNodes.size() == plan.planNodes.size(), "number of nodes");
    for (int i = 0; i < plan.planNodes.size(); ++i)
        checkSecondWriting(written(plan.planNodes.at(i)), written(again.planNodes.at(i)));
    KvPlan third;
    Kv::jsonObjectToPlan(planAsSentByService(written(again)), third);
    KvFuzz::requireEqual(KvTest::difference(KvTest::dump(third), KvTest::dump(again)), "plan read again");
}

void checkNode(const QJsonObject& in)
{
    KvPlanNode node;
    Kv::jsonObjectToPlanNode(in, node);
    KvPlanNode plain;
    PlainCodec::readNode(in, plain);
    KvFuzz::requireEqual(KvTest::difference(KvTest::dump(node), KvTest::dump(plain)), "node");

    // Into a node that holds something: all is replaced but the predecessors, which are added to.
    KvPlanNode full = KvTest::fullPlanNode();
    KvPlanNode plainFull = full;
    Kv::jsonObjectToPlanNode(in, full);
    PlainCodec::readNode(in, plainFull);
    KvFuzz::requireEqual(KvTest::difference(KvTest::dump(full), KvTest::dump(plainFull)), "into a full node");

    KvPlanNode again;
    Kv::jsonObjectToPlanNode(asSentByService(written(node)), again);
    checkSecondWriting(written(node), written(again));
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QJsonDocument document = KvFuzz::documentOf(KvFuzz::bytesOf(data, size));
    if (document.isObject()) {
        checkPlan(document.object());
        checkNode(document.object());
    } else if (document.isArray()) {
        const QJsonArray tasks = document.array();
        checkPlan(QJsonObject{{QStringLiteral("tasks"), tasks}});
        for (const QJsonValue& task : tasks)
            checkNode(task.toObject());
    }
    return 0;
}
