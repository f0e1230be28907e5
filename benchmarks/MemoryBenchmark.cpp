// Memory of a plan as the cache holds it, and what repeated text takes of it.

#include "RatioMain.h"
#include "SamplePlan.h"

#include <model/KvPlanCodec.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QSet>

#include <cstdio>
#include <malloc.h>

namespace {

// Bytes of text blocks: all of them once, and those whose text another block holds too.
struct TextCount
{
    void add(const QString& text)
    {
        if (text.isEmpty() || blocks.contains(text.constData()))
            return;
        blocks.insert(text.constData());
        const qint64 size = qint64(sizeof(QStringData)) + (text.capacity() + 1) * qint64(sizeof(QChar));
        bytes += size;
        if (texts.contains(text))
            repeated += size;
        texts.insert(text);
    }

    void add(const QStringList& list)
    {
        for (const QString& text : list)
            add(text);
    }

    void add(const QMap<QString, QStringList>& map)
    {
        for (auto entry = map.constBegin(); entry != map.constEnd(); ++entry) {
            add(entry.key());
            add(entry.value());
        }
    }

    qint64 bytes = 0;
    qint64 repeated = 0;
    QSet<const QChar*> blocks;
    QSet<QString> texts;
};

TextCount countText(const KvPlan& plan)
{
    TextCount count;
    for (const KvPlanNode& node : plan.planNodes) {
        for (const QString& text : {node.id, node.category, node.name, node.guid, node.planId, node.planName,
                                    node.projectId, node.remark, node.createdBy, node.updatedBy})
            count.add(text);
        for (const QStringList& list : {node.userIds, node.executeIds, node.cooperateIds, node.documentIds})
            count.add(list);
        count.add(node.links);
        count.add(node.materialBills);
        for (const KvPlanPredecessor& link : node.predecessors) {
            for (const QString& text :
                 {link.sourcePlanNodeName, link.targetPlanNodeName, link.targetPlanNodeUniqueId})
                count.add(text);
        }
    }
    return count;
}

// What the records themselves take: each node, and what stands in its lists and maps.
qint64 sizeOfRecords(const KvPlan& plan)
{
    qint64 bytes = 0;
    for (const KvPlanNode& node : plan.planNodes) {
        bytes += qint64(sizeof(KvPlanNode)) + node.predecessors.size() * qint64(sizeof(KvPlanPredecessor)) +
                 node.documents.size() * qint64(sizeof(KvDocument));
        for (const auto& map : {node.links, node.materialBills}) {
            for (const QStringList& list : map)
                bytes +=
                    qint64(sizeof(QString) + sizeof(QStringList)) + list.size() * qint64(sizeof(QString));
        }
        for (const QStringList& list : {node.userIds, node.executeIds, node.cooperateIds, node.documentIds})
            bytes += list.size() * qint64(sizeof(QString));
    }
    return bytes;
}

} // namespace

int main(int, char* argv[])
{
    KvPlan first; // with it come the tables of keys, which are made once and belong to no node
    Kv::jsonObjectToPlan(QJsonDocument::fromJson(samplePlanJson(1)).object(), first);
    std::printf("memory of a cached node   bytes   records   text   repeated text\n");
    for (const int nodes : {1000, 10000, 100000, 1000000}) {
        KvPlan plan;
        size_t before = 0;
        size_t after = 0;
        {
            const QJsonObject object = QJsonDocument::fromJson(samplePlanJson(nodes)).object();
            before = mallinfo2().uordblks + mallinfo2().hblkhd;
            Kv::jsonObjectToPlan(object, plan);
            after = mallinfo2().uordblks + mallinfo2().hblkhd;
        }
        const TextCount text = countText(plan);
        const double records = double(sizeOfRecords(plan));
        const double count = plan.planNodes.size();
        const double bytes = double(after - before);
        const double distinctText = double(text.bytes - text.repeated);
        std::printf("  %8d nodes          %6.0f   %7.0f %6.0f        %5.1f %%\n", plan.planNodes.size(),
                    bytes / count, records / count, double(text.bytes) / count,
                    100.0 * double(text.repeated) / bytes);
        report("memory / sizeof and distinct text/" + std::to_string(nodes), bytes / (records + distinctText),
               1.25);
    }
    return printReports(argv[0]);
}
