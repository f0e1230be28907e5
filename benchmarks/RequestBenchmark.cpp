// Requests over loopback through the facade, and by others: a bare network access manager and event loop,
// which leaves the reply as bytes, and libcurl. A count shows what the way costs, a plan without tasks and
// one with a task what reading adds; a large one, parsed but not read into records by libcurl's side, what
// opening costs.

#include "BareRequest.h"
#include "RatioMain.h"
#include "peers/CurlRequest.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>
#include <ServiceProcess.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtNetwork/QNetworkAccessManager>

#include <cstdio>

namespace {

constexpr int largePlan = 100000;

QString pathOf(const QString& planId)
{
    return QStringLiteral("task-service/plans/") + planId;
}

void throughFacade(benchmark::State& state, const QString& planId)
{
    for (auto _ : state) {
        KvPlan plan;
        if (!KvPlanData::instance()->getPlanById(planId, plan))
            return state.SkipWithError("the plan was not read");
    }
}

void bareRequest(benchmark::State& state, const QString& path)
{
    QNetworkAccessManager manager;
    for (auto _ : state) {
        if (bareGet(manager, path).isEmpty())
            return state.SkipWithError("there was no reply");
    }
}

// The reply is one number, so that all but the way is left out.
void countThroughFacade(benchmark::State& state)
{
    KvPlanCondition condition;
    condition.allTime = true;
    for (auto _ : state) {
        int count = 0;
        if (!KvPlanData::instance()->getPlanRangeCount(condition, count) || count == 0)
            return state.SkipWithError("the plans were not counted");
    }
}

void byCurl(benchmark::State& state, const QString& planId)
{
    CurlRequest request;
    const QString url = KvBaseApi::GetInstance().getBaseApi() + pathOf(planId);
    for (auto _ : state) {
        if (QJsonDocument::fromJson(request.get(url)).isNull())
            return state.SkipWithError("the plan was not read");
    }
}

void addReading(const std::string& name, const QString& planId, int nodes)
{
    benchmark::RegisterBenchmark((name + '/' + std::to_string(nodes)).c_str(), throughFacade, planId)
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
}

void inMicroseconds(benchmark::internal::Benchmark* registered)
{
    registered->UseRealTime()->MinTime(0.3)->Unit(benchmark::kMicrosecond);
}

struct Case
{
    const char* name;
    QString planId;
    double bareLimit; // of the bare request's ratio
    double curlLimit;
};

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    KvTest::ServiceProcess service;
    const QJsonObject small = service.seed({QStringLiteral("--nodes"), QStringLiteral("1")});
    QJsonObject large;
    for (const int nodes : {10000, 30000, largePlan}) {
        large = service.seed({QStringLiteral("--nodes"), QString::number(nodes)});
        addReading("open plan", large.value(QLatin1String("planId")).toString(), nodes);
    }
    if (small.isEmpty() || large.isEmpty() || !service.start()) {
        std::fprintf(stderr, "no service to ask: %s\n", qUtf8Printable(service.failure()));
        return 2;
    }
    KvBaseApi::GetInstance().setBaseApi(service.baseUrl());
    KvPlan empty;
    empty.name = QStringLiteral("Plan without tasks");
    empty.projectId = small.value(QLatin1String("projectId")).toString();
    if (!KvPlanData::instance()->createPlan(empty)) {
        std::fprintf(stderr, "the service did not create a plan\n");
        return 2;
    }

    // What is small takes time for the way, which does not grow: from 10,000 nodes on a plan's size decides.
    growth("getPlanById", "open plan", {10000, 30000, largePlan}, 1.1);

    const Case cases[] = {{"plan without tasks", empty.id, 1.10, 0},
                          {"plan with a task", small.value(QLatin1String("planId")).toString(), 0, 0},
                          {"plan of 100,000 nodes", large.value(QLatin1String("planId")).toString(), 0, 1.6}};
    for (const Case& each : cases) {
        const std::string of = std::string("/") + each.name;
        inMicroseconds(
            benchmark::RegisterBenchmark(("getPlanById" + of).c_str(), throughFacade, each.planId));
        inMicroseconds(
            benchmark::RegisterBenchmark(("bare request" + of).c_str(), bareRequest, pathOf(each.planId)));
        inMicroseconds(
            benchmark::RegisterBenchmark(("libcurl and fromJson" + of).c_str(), byCurl, each.planId));
        const std::string title = std::string(", ") + each.name;
        compare("getPlanById / bare request" + title, "getPlanById" + of, "bare request" + of,
                each.bareLimit);
        compare("getPlanById / libcurl and fromJson" + title, "getPlanById" + of, "libcurl and fromJson" + of,
                each.curlLimit);
    }
    GetSoftCache()->setCurrentProjectId(empty.projectId);
    inMicroseconds(benchmark::RegisterBenchmark("getPlanRangeCount", countThroughFacade));
    inMicroseconds(benchmark::RegisterBenchmark(
        "bare request/count", bareRequest,
        QStringLiteral("task-service/projects/%1/plans?where={}&only_count=true").arg(empty.projectId)));
    compare("getPlanRangeCount / bare request", "getPlanRangeCount", "bare request/count", 1.05);
    return runBenchmarks(argc, argv);
}
