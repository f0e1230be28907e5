#include "SimulatedPlan.h"

#include <setting/KvGrowthType.h>

namespace {

constexpr int tasksAtATime = 50;
constexpr int daysOfTask = 5;

QDateTime firstDay()
{
    return {QDate(2026, 3, 2), QTime(8, 0)};
}

} // namespace

QString SimulatedPlan::elementName(int number)
{
    return QStringLiteral("element-%1").arg(number);
}

QList<KvPlanNode> SimulatedPlan::nodes(int tasks)
{
    QList<KvPlanNode> made;
    made.reserve(tasks);
    for (int i = 0; i < tasks; ++i) {
        KvPlanNode node;
        node.dynamicEffect = Kv::GrowBottomToTop;
        node.startDate = firstDay().addDays(i / tasksAtATime * daysOfTask);
        node.finishDate = node.startDate.addDays(daysOfTask);
        node.actualStartDate = node.startDate.addDays(i % 3);
        node.actualFinishDate = node.finishDate.addDays(i % 4);
        QStringList elements;
        for (int k = 0; k < elementsOfTask; ++k)
            elements.append(elementName(i * elementsOfTask + k));
        node.links.insert(QStringLiteral("model"), elements);
        made.append(node);
    }
    return made;
}

QVector<const KvPlanNode*> SimulatedPlan::listed(const QList<KvPlanNode>& nodes)
{
    QVector<const KvPlanNode*> list;
    list.reserve(nodes.size());
    for (const KvPlanNode& node : nodes)
        list.append(&node);
    return list;
}

QDateTime SimulatedPlan::dateOf(int picture, int tasks)
{
    constexpr int secondsOfPicture = 24 * 60 * 60 / 2 / 30;
    return firstDay().addDays(tasks / tasksAtATime * daysOfTask / 2).addSecs(picture * secondsOfPicture);
}
