#include "PlanLine.h"

#include "CellText.h"
#include "RecordJson.h"

#include <QtCore/QJsonDocument>

ExitCode sayPlan(const KvPlan& plan, bool asJson)
{
    return asJson ? say(QJsonDocument(planToJson(plan)).toJson())
                  : say(QStringLiteral("%1  %2\n").arg(fitted(plan.id, 0), fitted(plan.name, 0)));
}
