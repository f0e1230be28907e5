// One small plan over loopback: through the facade, and by a bare network access manager and event loop,
// which leaves the reply as bytes. A plan without tasks shows what the way costs, one with a task what
// reading adds.

#include "BareRequest.h"
#include "RatioMain.h"

#include <KvNetwork/KvBaseApi.h>
#include <ServiceProcess.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QCoreApplication>
#include <QtNetwork/QNetworkAccessManager>

#include <cstdio>
#include <utility>

namespace {

void throughFacade(benchmark::State& state, const QString& planId)
{
    for (auto _ : state) {
        KvPlan plan;
        if (!KvPlanData::instance()->getPlanById(planId, plan))
            return state.SkipWithError("the plan was not read");
    }
}

void bareRequest(benchmark::State& state, const QString& planId)
{
    QNetworkAccessManager manager;
    const QString path = QStringLiteral("task-service/plans/") + planId;
    for (auto _ : state) {
        if (bareGet(manager, path).isEmpty())
            return state.SkipWithError("the plan was not read");
    }
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    KvTest::ServiceProcess service;
    const QJsonObject seeded = service.seed({QStringLiteral("--nodes"), QStringLiteral("1")});
    if (seeded.isEmpty() || !service.start()) {
        std::fprintf(stderr, "no service to ask: %s\n", qUtf8Printable(service.failure()));
        return 2;
    }
    KvBaseApi::GetInstance().setBaseApi(service.baseUrl());
    KvPlan empty;
    empty.name = QStringLiteral("Plan without tasks");
    empty.projectId = seeded.value(QLatin1String("projectId")).toString();
    if (!KvPlanData::instance()->createPlan(empty)) {
        std::fprintf(stderr, "the service did not create a plan\n");
        return 2;
    }

    const std::pair<const char*, QString> plans[] = {
        {"plan without tasks", empty.id},
        {"plan with a task", seeded.value(QLatin1String("planId")).toString()}};
    for (const auto& [name, id] : plans) {
        const std::string facade = std::string("getPlanById/") + name;
        const std::string bare = std::string("bare request/") + name;
        benchmark::RegisterBenchmark(facade.c_str(), throughFacade, id)
            ->UseRealTime()
            ->MinTime(0.3)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark(bare.c_str(), bareRequest, id)
            ->UseRealTime()
            ->MinTime(0.3)
            ->Unit(benchmark::kMicrosecond);
        compare("getPlanById / bare request, " + std::string(name), facade, bare, id == empty.id ? 1.10 : 0);
    }
    return runBenchmarks(argc, argv);
}
