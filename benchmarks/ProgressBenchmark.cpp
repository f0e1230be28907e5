// What is reported back on nodes: the statistics of 100,000 nodes as the service answers them, against the
// database's count alone; and the metering states of 10,000 tasks through the facade, against download and
// parsing by hand.

#include "BareRequest.h"
#include "RatioMain.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>
#include <ServiceProcess.h>
#include <plandata/KvPlanData.h>
#include <store/OpenStore.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDate>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtNetwork/QNetworkAccessManager>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlQuery>

#include <cstdio>

namespace {

constexpr int nodeCount = 100000;
constexpr int stateCount = 10000;

QString project()
{
    return QStringLiteral("site");
}

// Straight into the table, in place of those that the sample reports: one request a state would take minutes.
bool setStates(const QString& databaseFile, const QString& planId)
{
    bool added = false;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"));
        database.setDatabaseName(databaseFile);
        database.open();
        QSqlQuery(QStringLiteral("DELETE FROM taskStates"), database);
        QSqlQuery insert(database);
        insert.prepare(
            QStringLiteral("INSERT INTO taskStates (id, taskId, projectId, planId, responseId, state)"
                           " SELECT 'state' || id, id, projectId, planId, '', 1 FROM planNodes"
                           " WHERE planId = ? ORDER BY rowNumber LIMIT %1")
                .arg(stateCount));
        insert.addBindValue(planId);
        added = insert.exec() && insert.numRowsAffected() == stateCount;
    }
    QSqlDatabase::removeDatabase(QLatin1String(QSqlDatabase::defaultConnection));
    return added;
}

void askStatistics(benchmark::State& state)
{
    QNetworkAccessManager manager;
    const QString path = QStringLiteral("task-service/projects/%1/planNodes_statistics?personal=true"
                                        "&dimensions=[\"status\",\"situation\"]")
                             .arg(project());
    for (auto _ : state) {
        const QJsonDocument document = QJsonDocument::fromJson(bareGet(manager, path));
        if (document.object().value(QLatin1String("total")).toInt() != nodeCount)
            return state.SkipWithError("the nodes were not counted");
    }
}

void countNodes(benchmark::State& state, PlanService::Store* store)
{
    PlanService::NodeScope scope;
    scope.projectId = project();
    scope.visible.elsewhere = PlanService::ReadScope::All;
    const QString today = QDate::currentDate().toString(Qt::ISODate);
    for (auto _ : state) {
        int total = 0;
        for (const PlanService::NodeCount& count : store->nodeCounts(scope, today))
            total += count.total;
        if (total != nodeCount)
            return state.SkipWithError("the nodes were not counted");
    }
}

void readStates(benchmark::State& state, const QString& planId)
{
    for (auto _ : state) {
        QList<KvMeteringState> states;
        if (!KvPlanData::instance()->getMeteringState({planId}, states) || states.size() != stateCount)
            return state.SkipWithError("the states were not read");
    }
}

void readStatesByHand(benchmark::State& state, const QString& planId)
{
    QNetworkAccessManager manager;
    const QString path =
        QStringLiteral("ka-rond-service/projects/%1/taskstates?where={\"planId\":{\"$in\":[\"%2\"]}}")
            .arg(project(), planId);
    for (auto _ : state) {
        if (QJsonDocument::fromJson(bareGet(manager, path)).array().size() != stateCount)
            return state.SkipWithError("the states were not read");
    }
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    KvTest::ServiceProcess service;
    const QJsonObject seeded = service.seed(
        {QStringLiteral("--nodes"), QString::number(nodeCount), QStringLiteral("--project"), project()});
    const QString planId = seeded.value(QLatin1String("planId")).toString();
    if (!setStates(service.databaseFile(), planId) || !service.start()) {
        std::fprintf(stderr, "no service to ask: %s\n", qUtf8Printable(service.failure()));
        return 2;
    }
    KvBaseApi::GetInstance().setBaseApi(service.baseUrl());
    GetSoftCache()->setCurrentProjectId(project());
    const auto store = PlanService::openStore(service.databaseFile(), PlanService::MissingDatabase::Refuse);

    const auto microsecond = [](benchmark::internal::Benchmark* registered) {
        registered->UseRealTime()->Unit(benchmark::kMicrosecond);
    };
    microsecond(benchmark::RegisterBenchmark("statistics", askStatistics));
    microsecond(benchmark::RegisterBenchmark("count", countNodes, store.get()));
    compare("statistics of 100,000 nodes / their count in SQL", "statistics/real_time", "count/real_time", 2);
    microsecond(benchmark::RegisterBenchmark("getMeteringState", readStates, planId));
    microsecond(benchmark::RegisterBenchmark("download and fromJson", readStatesByHand, planId));
    compare("getMeteringState of 10,000 / download and fromJson", "getMeteringState/real_time",
            "download and fromJson/real_time", 1.6);
    return runBenchmarks(argc, argv);
}
