#include "PlanNodeChange.h"

#include "FieldReader.h"
#include "PlanInput.h"
#include "PlanNodeWriter.h"
#include "SiteClock.h"

#include <QJsonDocument>

namespace PlanService {

namespace {

FieldReader readerOf(const QJsonObject& object, int index)
{
    return index < 0 ? FieldReader(object) : FieldReader(nullptr, "", index, object);
}

/// A node is where it was made: what was read may be sent back, and nothing else.
void requireSamePlace(const FieldReader& in, const PlanNodeRecord& stored)
{
    if (in.has("planId") && in.text("planId") != stored.planId) {
        in.refuse("planId", QStringLiteral("planFixed"),
                  QStringLiteral("a node stays in its plan; create it in the other one instead"));
    }
    if (in.has("projectId") && in.text("projectId") != stored.projectId) {
        in.refuse("projectId", QStringLiteral("projectFixed"),
                  QStringLiteral("a node stays in its project; create it in the other one instead"));
    }
}

/// The stored document under the keys that a client sends.
QJsonObject sentForm(const PlanNodeRecord& node)
{
    QJsonObject object = QJsonDocument::fromJson(node.document).object();
    object.insert(QLatin1String("links"), object.take(QLatin1String("entity")));
    return object;
}

} // namespace

PlanNodeRecord changedPlanNode(const PlanNodeRecord& stored, const QJsonObject& changes, const QString& user,
                               int index)
{
    requireSamePlace(readerOf(changes, index), stored);
    const QJsonObject before = sentForm(stored);
    QJsonObject values = before;
    for (auto it = changes.begin(); it != changes.end(); ++it) {
        values.insert(it.key(), it.value());
    }
    const FieldReader in = readerOf(values, index);
    Stamp stamp{stored.createdAt, stored.createdBy, stored.updatedAt,
                before.value(QLatin1String("updatedBy")).toString()};
    PlanNodeRecord changed = stored;
    writePlanNode(changed, in, stamp);
    if (values == before || changed.document == stored.document) {
        changed.document = stored.document;
        return changed;
    }
    stamp.updatedAt = siteStamp(stored.updatedAt);
    stamp.updatedBy = user;
    writePlanNode(changed, in, stamp);
    return changed;
}

} // namespace PlanService
