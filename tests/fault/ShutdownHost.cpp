#include "ShutdownHost.h"

#include <model/KvPlanDataUtils.h>
#include <plandata/KvPlanData.h>
#include <setting/KvPlanSetting.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvPublicFun/KvPub.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QLocale>
#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>

#include <cstdlib>
#include <functional>
#include <memory>

#include <unistd.h>

namespace ShutdownHost {

namespace {

QString operation;

/// Reads what an update is to be compared with.
void prepare()
{
    if (operation == QLatin1String("update")) {
        KvPlan plan;
        KvPlanData::instance()->getPlanById(QStringLiteral("first"), plan);
    } else if (operation == QLatin1String("save")) {
        KvPlanNode node;
        KvPlanData::instance()->getPlanNodeById(QStringLiteral("first"), node);
    }
}

/// @return whether the operation claims success. It is never answered.
bool call()
{
    KvPlanData& data = *KvPlanData::instance();
    KvPlan plan;
    KvPlanNode node;
    if (operation == QLatin1String("create"))
        return data.createPlan(plan);
    if (operation == QLatin1String("update")) {
        plan.id = QStringLiteral("first");
        plan.name = QStringLiteral("changed");
        return data.updatePlan(plan);
    }
    if (operation == QLatin1String("save")) {
        node.id = QStringLiteral("first");
        node.name = QStringLiteral("changed");
        data.savePlanNodes(QStringLiteral("p1"), {node}); // tells no failure
        return false;
    }
    if (operation == QLatin1String("rights")) {
        data.initAuth(QStringLiteral("c"));
        return data.getReadAuth() || data.getEditAuth();
    }
    if (operation == QLatin1String("setting"))
        return KvPlanSetting::instance()->SetGanttHideHeader({QStringLiteral("a")});
    return data.getPlanById(QStringLiteral("second"), plan);
}

/// Made after the singletons, so destroyed before them, but behind the application.
struct CallsWhenDestroyed
{
    ~CallsWhenDestroyed()
    {
        if (call())
            std::_Exit(Succeeded);
    }
};

/// What comes of a small schedule by way of everything that needs no service.
QByteArray converted()
{
    const QJsonObject link{{QStringLiteral("SourceTaskUniqueID"), 1},
                           {QStringLiteral("TargetTaskUniqueID"), 65}};
    const auto task = [&](int uniqueId, int parentId) {
        return QJsonObject{{QStringLiteral("ID"), uniqueId},
                           {QStringLiteral("UniqueID"), uniqueId},
                           {QStringLiteral("ParentTask"), parentId},
                           {QStringLiteral("Name"), QStringLiteral("Task of a schedule")},
                           {QStringLiteral("Start"), QStringLiteral("2026-03-02T08:00:00")},
                           {QStringLiteral("Predecessors"), QJsonArray{link}}};
    };
    const QJsonObject schedule{{QStringLiteral("Name"), QStringLiteral("Schedule")},
                               {QStringLiteral("AllTasks"), QJsonArray{task(2, 1), task(3, 2), task(1, 0)}}};
    KvPlan plan;
    KvPlanDataUtils::jsonObjectToPlanMPXJ(schedule, plan);
    KvPlanDataUtils::makePlanNodeListTree(plan.planNodes);
    KvPlanDataUtils::makePlanNodeListFlat(plan.planNodes);
    QJsonObject written;
    KvPlanDataUtils::planToJsonObjectMPXJ(plan, written);
    const bool isSorted =
        KvPub::naturalSort(QStringLiteral("Task 9"), QStringLiteral("task 10"), Qt::CaseInsensitive);
    written.insert(QStringLiteral("isSorted"), isSorted);
    return QJsonDocument(written).toJson(QJsonDocument::Compact);
}

/// Made before anything was converted, so destroyed behind whatever conversions keep.
struct ConvertsWhenDestroyed
{
    ~ConvertsWhenDestroyed()
    {
        if (converted() != expected)
            std::_Exit(Differs);
    }

    QByteArray expected;
};

/// Calls, and at each line that the test writes, which it does when the call waits, calls once more from
/// inside the wait; `end` is what it does at the line number `depth`.
/// @return how many calls came back, and none of them with success.
int callNested(int depth, const std::function<void()>& end)
{
    int begun = 0;
    int returned = 0;
    const std::function<void()> enter = [&] {
        ++begun;
        if (call())
            std::_Exit(Succeeded);
        ++returned;
    };
    QSocketNotifier lines(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&lines, &QSocketNotifier::activated, qApp, [&] {
        char line = 0;
        if (::read(STDIN_FILENO, &line, 1) == 1)
            QTimer::singleShot(0, qApp, begun < depth ? enter : end); // the notifier itself is not nested
    });
    QTimer::singleShot(0, qApp, enter);
    QCoreApplication::exec();
    return returned;
}

} // namespace

int run(int& argc, char** argv)
{
    const QByteArray way = argv[2];
    operation = QString::fromLatin1(argv[3]);
    if (way == "conversions") {
        QLocale(); // what Qt keeps is to outlive the object
        QDateTime::currentDateTime().toString(Qt::ISODate);
        static ConvertsWhenDestroyed lateConverter;
        lateConverter.expected = converted();
        return Ended;
    }
    KvBaseApi::GetInstance().setBaseApi(QString::fromLatin1(argv[4]));
    auto application = std::make_unique<QCoreApplication>(argc, argv);
    prepare();
    KvPlanSetting::instance();
    if (way == "quit")
        return callNested(1, [] { QCoreApplication::quit(); }) == 1 ? Ended : DidNotReturn;
    if (way == "quit three deep")
        return callNested(3, [] { QCoreApplication::quit(); }) == 3 ? Ended : DidNotReturn;
    if (way == "exit")
        return callNested(1, [] { std::exit(Ended); });
    if (way == "exit, application first") {
        // Made last, so destroyed first, and the network's manager with it, below a call that waits.
        static const std::unique_ptr<QCoreApplication> kept = std::move(application);
        return callNested(1, [] { std::exit(Ended); });
    }
    if (way == "static object") {
        static CallsWhenDestroyed lateCaller;
        application.reset();
        return Ended;
    }
    if (way == "no application any more") {
        application.reset();
        return call() ? Succeeded : Ended;
    }
    return UnknownWay;
}

} // namespace ShutdownHost
