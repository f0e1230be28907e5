// The list of all plans: through the facade, with codec, natural order and caches, and by hand, where the
// reply is downloaded and parsed and no more. Also what the text of a filter costs.

#include "BareRequest.h"
#include "RatioMain.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>
#include <ServiceProcess.h>
#include <plandata/KvPlanData.h>
#include <service/KvQueryFilter.h>

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
        for (const auto& [name, function] : {std::pair{facade, throughFacade}, std::pair{hand, byHand}})
            benchmark::RegisterBenchmark(name.c_str(), function, project, count)
                ->UseRealTime()
                ->Unit(benchmark::kMicrosecond);
        compare("getAllPlan / download and fromJson" + size, facade, hand, 1.3);
    }
    return runBenchmarks(argc, argv);
}
