// The exchange format of schedule files, against Qt's own reading and writing of the same bytes and dates.

#include "LeastReading.h"
#include "RatioMain.h"

#include <model/KvExchangeDate.h>
#include <model/KvPlanDataUtils.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QMap>

#include <cstdio>
#include <utility>

namespace {

QJsonObject duration(double value)
{
    return {{QStringLiteral("Duration"), value}, {QStringLiteral("Units"), 2}};
}

QJsonObject task(int number)
{
    const QDateTime start(QDate(2024, 1, 1).addDays(number / 40), QTime(8, 0));
    const int days = 1 + number % 9;
    const QDateTime finish(start.date().addDays(days), QTime(17, 0));
    const QString name = QStringLiteral("Formwork floor %1 section %2").arg(number / 12).arg(number % 12);
    QJsonArray predecessors;
    if (number > 0) {
        predecessors.append(QJsonObject{
            {QStringLiteral("SourceTaskName"),
             QStringLiteral("Formwork floor %1 section %2").arg((number - 1) / 12).arg((number - 1) % 12)},
            {QStringLiteral("TargetTaskName"), name},
            {QStringLiteral("Lag"), duration(number % 5 - 2)},
            {QStringLiteral("Type"), number % 4},
            {QStringLiteral("SourceTaskUniqueID"), number - 1},
            {QStringLiteral("TargetTaskUniqueID"), number},
            {QStringLiteral("SourceTaskID"), number - 1},
            {QStringLiteral("TargetTaskID"), number}});
    }
    return {{QStringLiteral("ParentTask"), number / 12},
            {QStringLiteral("GUID"),
             QStringLiteral("7f0b8c1e-55a1-4f8e-9d3a-%1").arg(number, 12, 16, QLatin1Char('0'))},
            {QStringLiteral("ID"), number},
            {QStringLiteral("UniqueID"), number},
            {QStringLiteral("Name"), name},
            {QStringLiteral("DurationText"), QStringLiteral("%1 days").arg(days)},
            {QStringLiteral("Milestone"), false},
            {QStringLiteral("Summary"), number % 12 == 0},
            {QStringLiteral("Notes"), QStringLiteral("crane booked")},
            {QStringLiteral("StartText"), start.date().toString(Qt::ISODate)},
            {QStringLiteral("Type"), 0},
            {QStringLiteral("Duration"), duration(days)},
            {QStringLiteral("FinishSlack"), duration(0)},
            {QStringLiteral("FinishText"), finish.date().toString(Qt::ISODate)},
            {QStringLiteral("Start"), start.toString(Qt::ISODate)},
            {QStringLiteral("Finish"), finish.toString(Qt::ISODate)},
            {QStringLiteral("Predecessors"), predecessors}};
}

const QByteArray& bytes(int tasks)
{
    static QMap<int, QByteArray> plans;
    if (!plans.contains(tasks)) {
        QJsonArray list;
        for (int i = 0; i < tasks; ++i)
            list.append(task(i));
        const QJsonObject plan{{QStringLiteral("Name"), QStringLiteral("Tower A")},
                               {QStringLiteral("MPPFilePath"), QStringLiteral("tower a.mpp")},
                               {QStringLiteral("AllTasks"), list}};
        plans.insert(tasks, QJsonDocument(plan).toJson(QJsonDocument::Compact));
    }
    return *plans.constFind(tasks);
}

template<void (*Read)(const QJsonObject&, KvPlan&) = KvPlanDataUtils::jsonObjectToPlanMPXJ>
KvPlan imported(int tasks)
{
    KvPlan plan;
    Read(QJsonDocument::fromJson(bytes(tasks)).object(), plan);
    return plan;
}

void parse(benchmark::State& state)
{
    const QByteArray& json = bytes(int(state.range(0)));
    for (auto _ : state) {
        const QJsonDocument document = QJsonDocument::fromJson(json);
        benchmark::DoNotOptimize(&document);
    }
}

template<void (*Read)(const QJsonObject&, KvPlan&)>
void read(benchmark::State& state)
{
    const QJsonObject object = QJsonDocument::fromJson(bytes(int(state.range(0)))).object();
    for (auto _ : state) {
        KvPlan plan;
        Read(object, plan);
        benchmark::DoNotOptimize(&plan);
    }
}

void convert(benchmark::State& state)
{
    const KvPlan plan = imported(int(state.range(0)));
    for (auto _ : state) {
        QJsonObject object;
        KvPlanDataUtils::planToJsonObjectMPXJ(plan, object);
        benchmark::DoNotOptimize(&object);
    }
}

void write(benchmark::State& state)
{
    QJsonObject object;
    KvPlanDataUtils::planToJsonObjectMPXJ(imported(int(state.range(0))), object);
    const QJsonDocument document(object);
    for (auto _ : state) {
        const QByteArray json = document.toJson(QJsonDocument::Compact);
        benchmark::DoNotOptimize(&json);
    }
}

const QString dateText = QStringLiteral("2024-03-05T08:30:15");

void readDate(benchmark::State& state)
{
    for (auto _ : state) {
        const QDateTime dateTime = Kv::exchangeDateTime(dateText);
        benchmark::DoNotOptimize(&dateTime);
    }
}

void readDateByForm(benchmark::State& state)
{
    const QString form = QStringLiteral("yyyy-MM-ddThh:mm:ss");
    for (auto _ : state) {
        const QDateTime dateTime = QDateTime::fromString(dateText, form);
        benchmark::DoNotOptimize(&dateTime);
    }
}

// The least is only the least if it reads the same.
bool leastIsTheSame()
{
    QJsonObject own;
    KvPlanDataUtils::planToJsonObjectMPXJ(imported(1000), own);
    QJsonObject least;
    KvPlanDataUtils::planToJsonObjectMPXJ(imported<readLeastExchange>(1000), least);
    return own.value(QLatin1String("AllPlanNodes")).toArray().size() == 1000 &&
           own.value(QLatin1String("AllPlanNodes")) == least.value(QLatin1String("AllPlanNodes"));
}

} // namespace

int main(int argc, char* argv[])
{
    if (!leastIsTheSame()) {
        std::fprintf(stderr, "the least reads another plan\n");
        return 2;
    }
    stayOnOneProcessor();
    for (const int tasks : {1000, 10000, 100000, 1000000}) {
        const std::string size = "/" + std::to_string(tasks);
        for (const auto& [name, function] :
             {std::pair{"parse", parse}, std::pair{"import", read<KvPlanDataUtils::jsonObjectToPlanMPXJ>},
              std::pair{"least", read<readLeastExchange>}})
            benchmark::RegisterBenchmark(name, function)->Arg(tasks)->Unit(benchmark::kMicrosecond);
        compareWithLeast("import / QJsonDocument::fromJson" + size, "import" + size, "parse" + size,
                         "least" + size, 0.5);
        if (tasks == 1000000)
            continue; // would take minutes, for figures that nothing limits
        for (const auto& [name, function] : {std::pair{"export", convert}, std::pair{"write", write}})
            benchmark::RegisterBenchmark(name, function)->Arg(tasks)->Unit(benchmark::kMicrosecond);
        compare("export / QJsonDocument::toJson" + size, "export" + size, "write" + size, 0);
    }
    growth("import of the exchange format", "import", {1000, 10000, 100000, 1000000}, 1.1);
    growth("export of the exchange format", "export", {1000, 10000, 100000}, 1.1);
    benchmark::RegisterBenchmark("date", readDate);
    benchmark::RegisterBenchmark("date by form", readDateByForm);
    compare("date / QDateTime::fromString", "date", "date by form", 0.1);
    return runBenchmarks(argc, argv);
}
