// One small plan over loopback: through the facade, and by a bare network access manager and event loop.

#include "RatioMain.h"

#include <KvNetwork/KvBaseApi.h>
#include <ServiceProcess.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>

#include <cstdio>

namespace {

QString planId;

void throughFacade(benchmark::State& state)
{
    for (auto _ : state) {
        KvPlan plan;
        if (!KvPlanData::instance()->getPlanById(planId, plan))
            return state.SkipWithError("the plan was not read");
    }
}

void bareRequest(benchmark::State& state)
{
    QNetworkAccessManager manager;
    const QUrl url(KvBaseApi::GetInstance().getBaseApi() + QStringLiteral("task-service/plans/") + planId);
    for (auto _ : state) {
        QNetworkReply* reply = manager.get(QNetworkRequest(url));
        QEventLoop loop;
        QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        loop.exec();
        const QByteArray body = reply->readAll();
        const bool good = reply->error() == QNetworkReply::NoError && !body.isEmpty();
        delete reply;
        if (!good)
            return state.SkipWithError("the plan was not read");
    }
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    KvTest::ServiceProcess service;
    planId = service.seed({QStringLiteral("--nodes"), QStringLiteral("1")})
                 .value(QLatin1String("planId"))
                 .toString();
    if (planId.isEmpty() || !service.start()) {
        std::fprintf(stderr, "no service to ask: %s\n", qUtf8Printable(service.failure()));
        return 2;
    }
    KvBaseApi::GetInstance().setBaseApi(service.baseUrl());
    benchmark::RegisterBenchmark("getPlanById", throughFacade)->UseRealTime()->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("bare request", bareRequest)->UseRealTime()->Unit(benchmark::kMicrosecond);
    compare("getPlanById / bare QNetworkAccessManager", "getPlanById", "bare request", 1.10);
    return runBenchmarks(argc, argv);
}
