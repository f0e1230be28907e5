// Lists the plans of a project and shows the tasks of the first one as a tree.
//
//     read_plan http://127.0.0.1:8700/ sample-project

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvSoftBase/KvSoftBase.h>
#include <model/KvPlanDataUtils.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QStack>
#include <QtCore/QTextStream>

namespace {

void print(const QString& line)
{
    QTextStream(stdout) << line << '\n';
}

// On a stack of its own: a plan may be deeper than that of a thread.
void printTree(const QList<KvPlanNode>& roots)
{
    QStack<QPair<const KvPlanNode*, int>> open;
    const auto openAll = [&open](const QList<KvPlanNode>& nodes, int depth) {
        for (int i = nodes.size() - 1; i >= 0; --i)
            open.push({&nodes.at(i), depth});
    };
    openAll(roots, 0);
    while (!open.isEmpty()) {
        const auto [node, depth] = open.pop();
        print(QString(2 * depth, QLatin1Char(' ')) + node->name);
        openAll(node->children, depth + 1);
    }
}

} // namespace

int main(int argc, char* argv[])
{
    // [start]
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    KvBaseApi::GetInstance().setBaseApi(arguments.value(1));
    GetSoftCache()->setCurrentProjectId(arguments.value(2));
    // [/start]

    // [failures]
    QString failure; // of the last request; empty when it succeeded
    QObject::connect(&NetworkManager::instance(), &NetworkManager::requestFinished,
                     [&failure](const KvNetworkReport& report) { failure = report.message; });
    // [/failures]

    // [rights]
    KvPlanData& data = *KvPlanData::instance();
    data.initAuth(QStringLiteral("construction"));
    const bool mayEdit = data.getEditAuth(); // enables the editor; the service decides by itself
    // [/rights]
    print(mayEdit ? QStringLiteral("may edit") : QStringLiteral("may not edit"));

    // [lists]
    QList<KvPlan> plans; // a new one for each read: plans are added to those that it holds
    if (!data.getAllPlan(plans, false)) {
        print(QStringLiteral("no plans: ") + failure);
        return 1;
    }
    for (const KvPlan& plan : plans)
        print(plan.id + QLatin1Char(' ') + plan.name);
    // [/lists]

    // [pages]
    KvPlanCondition any;
    any.allTime = true;
    int count = 0;
    QList<KvPlan> page;
    failure.clear();
    if (data.getPlanRangeCount(any, count))
        data.getPlanRangeData(any, 0, 20, page); // true also when it failed
    if (!failure.isEmpty()) {
        print(QStringLiteral("no page: ") + failure);
        return 1;
    }
    print(QStringLiteral("%1 of %2 plans").arg(page.size()).arg(count));
    // [/pages]
    if (plans.isEmpty())
        return 0;

    // [open]
    KvPlan plan;
    if (!data.getPlanById(plans.first().id, plan)) {
        print(QStringLiteral("no plan: ") + failure);
        return 1;
    }
    // [/open]

    // [tree]
    if (!KvPlanDataUtils::findParentCycles(plan.planNodes).isEmpty()) {
        print(QStringLiteral("tasks of \"%1\" are parents of each other in a circle").arg(plan.name));
        return 1;
    }
    KvPlanDataUtils::makePlanNodeListTree(plan.planNodes);
    printTree(plan.planNodes);
    // [/tree]

    // [exit]
    data.clear(); // only when the process goes on with another user or project
    NetworkManager::instance().setAccessToken(QString());
    return 0;
    // [/exit]
}
