// The list of all plans: through the facade, with codec, natural order and caches, and by hand, where the
// reply is downloaded and parsed and no more. Also what the text of a filter costs.

#include "BareRequest.h"
#include "RatioMain.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>
#include <ServiceProcess.h>
#include <plandata/KvPlanData.h>
#include <service/KvQueryFilter.h>

#include <QtCore/QCborArray>
#include <QtCore/QCborMap>
#include <QtCore/QCoreApplication>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QProcess>
#include <QtNetwork/QNetworkAccessManager>

#include <cstdio>

namespace {

void throughFacade(benchmark::State& state, const QString& project, int count)
{
    GetSoftCache()->setCurrentProjectId(project);
    for (auto _ : state) {
        QList<KvPlan> plans;
        if (!KvPlanData::instance()->getAllPlan(plans, true) || plans.size() != count)
            return state.SkipWithError("the plans were not read");
    }
}

void byHand(benchmark::State& state, const QString& project, int count)
{
    QNetworkAccessManager manager;
    const QString path = QStringLiteral("task-service/projects/%1/plans").arg(project);
    for (auto _ : state) {
        const QJsonDocument document = QJsonDocument::fromJson(bareGet(manager, path));
        if (document.array().size() != count)
            return state.SkipWithError("the plans were not read");
    }
}

// By hand, and the least that a list of plans takes besides: each plan's members looked at, a plan and the
// two texts and the date that are its own made, and the plan put behind the others of both caches.
void leastByHand(benchmark::State& state, const QString& project, int count)
{
    QNetworkAccessManager manager;
    const QString path = QStringLiteral("task-service/projects/%1/plans").arg(project);
    constexpr int idField = 0; // of the keys in their order
    constexpr int nameField = 4;
    const QDate day(2026, 1, 1);
    const QTime time(8, 0);
    for (auto _ : state) {
        const QJsonArray elements = QJsonDocument::fromJson(bareGet(manager, path)).array();
        QList<KvPlan> plans;
        QMap<QString, KvPlan> cache;
        QMap<QString, bool> loaded;
        for (const QCborValue& element : QCborArray::fromJsonArray(elements)) {
            plans.append(KvPlan());
            KvPlan& plan = plans.last();
            const QCborMap object = element.toMap();
            int field = 0;
            for (auto member = object.constBegin(); member != object.constEnd(); ++member, ++field) {
                const QCborValue key = (*member).first;
                const QCborValue value = (*member).second;
                benchmark::DoNotOptimize(&key);
                if (field == idField)
                    plan.id = value.toString();
                else if (field == nameField)
                    plan.name = value.toString();
            }
            plan.createdAt = QDateTime(day, time.addMSecs(plans.size()));
            cache.insert(cache.constEnd(), plan.id, plan);
            loaded.insert(loaded.constEnd(), plan.id, false);
        }
        if (cache.size() != count || loaded.size() != count)
            return state.SkipWithError("the plans were not read");
    }
}

void buildQuery(benchmark::State& state)
{
    KvPlanCondition condition;
    condition.startDate = QDateTime(QDate(2026, 3, 2), QTime(0, 0));
    condition.endDate = QDateTime(QDate(2026, 9, 27), QTime(0, 0));
    condition.name = QStringLiteral("tower");
    condition.category = QStringLiteral("construction");
    for (auto _ : state) {
        const QString text = Kv::buildPlanQuery(condition);
        benchmark::DoNotOptimize(&text);
    }
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    KvTest::ServiceProcess service;
    service.seed();
    const std::pair<int, QString> projects[] = {{1000, QStringLiteral("thousand")},
                                                {10000, QStringLiteral("ten-thousand")}};
    for (const auto& [count, project] : projects) {
        const QStringList arguments{service.databaseFile(), project, QString::number(count)};
        if (QProcess::execute(QStringLiteral(FILL_PLANS), arguments) != 0) {
            std::fprintf(stderr, "the plans were not filled in\n");
            return 2;
        }
    }
    if (!service.start()) {
        std::fprintf(stderr, "no service to ask: %s\n", qUtf8Printable(service.failure()));
        return 2;
    }
    KvBaseApi::GetInstance().setBaseApi(service.baseUrl());

    benchmark::RegisterBenchmark("build a query text", buildQuery);
    for (const auto& [count, project] : projects) {
        const std::string size = "/" + std::to_string(count);
        const std::string facade = "getAllPlan" + size;
        const std::string hand = "download and fromJson" + size;
        const std::string least = "least" + size;
        for (const auto& [name, function] :
             {std::pair{facade, throughFacade}, std::pair{hand, byHand}, std::pair{least, leastByHand}})
            benchmark::RegisterBenchmark(name.c_str(), function, project, count)
                ->UseRealTime()
                ->Unit(benchmark::kMicrosecond);
        compareWithLeast("getAllPlan / download and fromJson" + size, facade, hand, least, 1.3);
    }
    return runBenchmarks(argc, argv);
}
