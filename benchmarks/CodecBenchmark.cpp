// Reading and writing a plan, against Qt's own reading and writing of the same bytes.

#include "RatioMain.h"
#include "SamplePlan.h"

#include <model/KvDecodePool.h>
#include <model/KvPlanCodec.h>

#include <QtCore/QCborArray>
#include <QtCore/QCborMap>
#include <QtCore/QJsonDocument>

namespace {

// What decode may take, as its target is below the sum of the three lines that show the least.
constexpr double decodeBound = 0.65;

void parse(benchmark::State& state)
{
    const QByteArray& json = keptSamplePlanJson(int(state.range(0)));
    for (auto _ : state) {
        const QJsonDocument document = QJsonDocument::fromJson(json);
        benchmark::DoNotOptimize(&document);
    }
}

using Keys = QVector<QCborValue>;

// The least that reading through Qt's public interface takes, in three parts. The first: each key compared
// with the one that is expected there, and each value taken out, but no text made of it.
template<class Inner>
void walk(const QCborMap& object, const Keys& keys, Inner inner)
{
    auto key = keys.constBegin();
    for (auto member = object.constBegin(); member != object.constEnd(); ++member) {
        if (key != keys.constEnd() && (*member).first == *key)
            ++key;
        const QCborValue value = (*member).second;
        const QString text = value.isString() ? value.toString() : QString();
        benchmark::DoNotOptimize(&text);
        inner(value);
    }
}

// A node and the objects in its lists. Of these, the keys are those of its links to other nodes, if any.
void walkNode(const QCborMap& node, const Keys& keys, const Keys& innerKeys)
{
    walk(node, keys, [&](const QCborValue& value) {
        if (!value.isArray())
            return;
        const QCborArray entries = value.toArray();
        for (const QCborValue& entry : entries)
            walk(entry.toMap(), innerKeys, [](const QCborValue&) {});
    });
}

void walkNodes(benchmark::State& state)
{
    const QJsonObject object = QJsonDocument::fromJson(keptSamplePlanJson(int(state.range(0)))).object();
    const QCborArray tasks = QCborMap::fromJsonObject(object).value(QLatin1String("tasks")).toArray();
    const Keys keys = tasks.first().toMap().keys();
    const Keys linkKeys = QCborMap::fromJsonObject(Kv::predecessorToJsonObject(KvPlanPredecessor())).keys();
    for (auto _ : state) {
        for (const QCborValue& task : tasks)
            walkNode(task.toMap(), keys, linkKeys);
    }
}

void decode(benchmark::State& state)
{
    const QJsonObject object = QJsonDocument::fromJson(keptSamplePlanJson(int(state.range(0)))).object();
    for (auto _ : state) {
        KvPlan plan;
        Kv::jsonObjectToPlan(object, plan);
        benchmark::DoNotOptimize(&plan);
    }
}

KvPlan samplePlan(int nodes)
{
    KvPlan plan;
    Kv::jsonObjectToPlan(QJsonDocument::fromJson(keptSamplePlanJson(nodes)).object(), plan);
    return plan;
}

QString ownText(const QString& text)
{
    return QString(text.constData(), text.size());
}

// The second part: equal records, made of records that are there already. Text that is a node's own is its
// own, and all else is shared.
void makeRecords(benchmark::State& state)
{
    const KvPlan plan = samplePlan(int(state.range(0)));
    for (auto _ : state) {
        KvPlan made;
        made.planNodes.reserve(plan.planNodes.size());
        for (const KvPlanNode& node : plan.planNodes) {
            made.planNodes.append(node);
            KvPlanNode& copy = made.planNodes.last();
            copy.id = ownText(node.id);
            copy.guid = node.guid == node.id ? copy.id : ownText(node.guid);
            copy.predecessors.detach();
            copy.links.detach();
            for (QStringList& entities : copy.links) {
                for (QString& entity : entities)
                    entity = ownText(entity);
            }
        }
        benchmark::DoNotOptimize(&made);
    }
}

// The third part: the dates of the nodes and the texts that they share with others, each made once and found
// among those that are kept when it occurs again. Without that, a plan would take more memory than it may.
void findShared(benchmark::State& state)
{
    const QJsonObject object = QJsonDocument::fromJson(keptSamplePlanJson(int(state.range(0)))).object();
    const QJsonArray tasks = object.value(QLatin1String("tasks")).toArray();
    QStringList dates;
    QStringList texts;
    for (const QJsonValue& value : tasks) {
        const QJsonObject task = value.toObject();
        dates << task.value(QLatin1String("startDate")).toString()
              << task.value(QLatin1String("finishDate")).toString();
        texts << task.value(QLatin1String("name")).toString();
        for (const QJsonValue& link : task.value(QLatin1String("predecessors")).toArray()) {
            texts << link.toObject().value(QLatin1String("SourcePlanNodeName")).toString()
                  << link.toObject().value(QLatin1String("TargetPlanNodeName")).toString();
        }
    }
    for (auto _ : state) {
        Kv::KvDecodePool pool(tasks.size());
        for (const QString& text : qAsConst(dates)) {
            const QDateTime date = pool.dateTime(text);
            benchmark::DoNotOptimize(&date);
        }
        for (const QString& text : qAsConst(texts)) {
            const QString shared = pool.shared(text);
            benchmark::DoNotOptimize(&shared);
        }
    }
}

void encode(benchmark::State& state)
{
    const KvPlan plan = samplePlan(int(state.range(0)));
    for (auto _ : state) {
        QJsonObject object;
        Kv::planToJsonObject(plan, object);
        benchmark::DoNotOptimize(&object);
    }
}

void write(benchmark::State& state)
{
    QJsonObject object;
    Kv::planToJsonObject(samplePlan(int(state.range(0))), object);
    const QJsonDocument document(object);
    for (auto _ : state) {
        const QByteArray json = document.toJson(QJsonDocument::Compact);
        benchmark::DoNotOptimize(&json);
    }
}

} // namespace

int main(int argc, char* argv[])
{
    stayOnOneProcessor();
    const std::vector<int> sizes = {1000, 10000, 100000};
    for (const int nodes : sizes) {
        const std::string size = "/" + std::to_string(nodes);
        for (const auto& [name, function] :
             {std::pair{"parse", parse}, std::pair{"decode", decode}, std::pair{"walk", walkNodes},
              std::pair{"records", makeRecords}, std::pair{"shared", findShared}, std::pair{"encode", encode},
              std::pair{"write", write}})
            benchmark::RegisterBenchmark(name, function)->Arg(nodes)->Unit(benchmark::kMicrosecond);
        compare("decode / QJsonDocument::fromJson" + size, "decode" + size, "parse" + size, 0.4, decodeBound);
        compare("keys and values alone / QJsonDocument::fromJson" + size, "walk" + size, "parse" + size, 0);
        compare("records alone / QJsonDocument::fromJson" + size, "records" + size, "parse" + size, 0);
        compare("dates and shared texts alone / QJsonDocument::fromJson" + size, "shared" + size,
                "parse" + size, 0);
        compare("encode / QJsonDocument::toJson" + size, "encode" + size, "write" + size, 1.0);
    }
    // A million nodes take some seconds and ten gigabytes, once.
    for (const auto& [name, function] : {std::pair{"parse", parse}, std::pair{"decode", decode}}) {
        benchmark::RegisterBenchmark(name, function)
            ->Arg(1000000)
            ->Iterations(1)
            ->Repetitions(3)
            ->Unit(benchmark::kMicrosecond);
    }
    compare("decode / QJsonDocument::fromJson/1000000", "decode/1000000", "parse/1000000", 0.4, decodeBound);
    growth("decode", "decode", {1000, 10000, 100000, 1000000}, 1.1);
    growth("encode", "encode", sizes, 1.1);
    return runBenchmarks(argc, argv);
}
