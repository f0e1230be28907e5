// Uses every library of the package once, the product over a real (refused) request.

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvPublicFun/KvPub.h>
#include <KvSoftBase/KvSoftBase.h>
#include <model/KvPlanDataUtils.h>
#include <model/KvPlanRecords.h>
#include <plandata/KvPlanData.h>
#include <setting/KvPlanSetting.h>

#include <QtCore/QCoreApplication>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    KvBaseApi::GetInstance().setBaseApi(QStringLiteral("http://127.0.0.1:1/"));
    GetSoftCache()->setCurrentProjectId(QStringLiteral("P"));

    bool refused = false;
    QObject::connect(
        &NetworkManager::instance(), &NetworkManager::requestFinished,
        [&](const KvNetworkReport& report) { refused = report.category == KvNetworkReport::Refused; });
    KvPlan plan;
    plan.name = QStringLiteral("before");
    const bool read = KvPlanData::instance()->getPlanById(QStringLiteral("65f0"), plan);
    const bool dates = KvPub::getDateTimeByQString(QStringLiteral("2026-03-05T08:00:00")).isValid();
    QList<KvPlanNode> nodes{KvPlanNode(), KvPlanNode()};
    nodes[0].uniqueId = 1;
    nodes[1].uniqueId = 2;
    nodes[1].parentTaskId = 1;
    KvPlanDataUtils::makePlanNodeListTree(nodes);
    const bool tree = nodes.size() == 1 && nodes.first().children.size() == 1;
    const bool colours = KvPlanSetting::instance()->GetPlanColor(QStringLiteral("65f0")).isValid();
    const bool good = !read && refused && plan.name.isEmpty() && dates && tree && colours;
    std::puts(good ? "consumer: good" : "consumer: bad");
    return good ? 0 : 1;
}
