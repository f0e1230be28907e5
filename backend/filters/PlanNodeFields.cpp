#include "PlanNodeFields.h"

#include "../store/VisibilitySql.h"

namespace PlanService {

namespace {

/// The user works on the node at all, which is told without a look into its document, and in this role.
SqlCondition worksAs(const char* list, const QString& user)
{
    SqlCondition condition = worksOn(user);
    condition.also(QStringLiteral("EXISTS (SELECT 1 FROM {elements}({list %1}) WHERE value = ?)")
                       .arg(QLatin1String(list)),
                   {user});
    condition.text = QLatin1Char('(') + condition.text + QLatin1Char(')');
    return condition;
}

SqlCondition isResponsible(const QString& user)
{
    return worksAs("userIds", user);
}

SqlCondition isExecuting(const QString& user)
{
    return worksAs("executeIds", user);
}

SqlCondition isCooperating(const QString& user)
{
    return worksAs("cooperateIds", user);
}

} // namespace

const QVector<FilterField>& planNodeFields()
{
    static const QVector<FilterField> fields{
        {"_id", FieldKind::Text, "id"},
        {"category", FieldKind::Text, "category"},
        {"GUID", FieldKind::Text, "coalesce({text GUID}, id)"},
        {"planId", FieldKind::Name, "planId"},
        {"planName", FieldKind::Text, "coalesce((SELECT p.name FROM plans p WHERE p.id = planId), '')"},
        {"projectId", FieldKind::Text, "projectId"},
        {"id", FieldKind::Whole, "rowNumber"},
        {"uniqueId", FieldKind::Whole, "uniqueId"},
        {"parentTaskID", FieldKind::Whole, "parentTaskId"},
        {"name", FieldKind::Text, "name"},
        {"displayName", FieldKind::Text, "name"},
        {"isDistributed", FieldKind::Flag, "{flag isDistributed}"},
        {"remark", FieldKind::Text, "coalesce({text remark}, '')"},
        // What is not set is stored as -1 in these four.
        {"finishedPercentage", FieldKind::Real,
         "CASE WHEN {real finishedPercentage} >= 0 THEN {real finishedPercentage} END"},
        {"planWorkload", FieldKind::Whole,
         "CASE WHEN {number planWorkload} >= 0 THEN {number planWorkload} END"},
        {"actualWorkload", FieldKind::Whole,
         "CASE WHEN {number actualWorkload} >= 0 THEN {number actualWorkload} END"},
        {"dynamicEffect", FieldKind::Whole, "nullif({number dynamicEffect}, -1)"},
        {"displaySimulation", FieldKind::Flag, "{flag displaySimulation}"},
        {"milestone", FieldKind::Flag, "CASE WHEN startDate = finishDate THEN 1 ELSE 0 END"},
        {"summary", FieldKind::Flag,
         "CASE WHEN n.uniqueId > 0 AND EXISTS (SELECT 1 FROM planNodes c WHERE c.planId = n.planId"
         " AND c.parentTaskId = n.uniqueId AND c.id <> n.id) THEN 1 ELSE 0 END"},
        {"createdAt", FieldKind::Date, "createdAt"},
        {"createdBy", FieldKind::Text, "createdBy"},
        {"updatedAt", FieldKind::Date, "updatedAt"},
        {"updatedBy", FieldKind::Text, "coalesce({text updatedBy}, '')"},
        {"startDate", FieldKind::Date, "startDate"},
        {"finishDate", FieldKind::Date, "finishDate"},
        {"actualStartDate", FieldKind::Date, "actualStartDate"},
        {"actualFinishDate", FieldKind::Date, "actualFinishDate"},
        {"entityHideDate", FieldKind::Date, "nullif({text entityHideDate}, '')"},
        {"entityHideType", FieldKind::Whole, "{number entityHideType}"},
        {"userIds", FieldKind::Texts, "{list userIds}", isResponsible},
        {"executeIds", FieldKind::Texts, "{list executeIds}", isExecuting},
        {"cooperateIds", FieldKind::Texts, "{list cooperateIds}", isCooperating},
        {"relativeUserIds", FieldKind::Texts,
         "(SELECT {array}(person) FROM (SELECT createdBy AS person WHERE createdBy <> ''"
         " UNION ALL SELECT value FROM {elements}({list userIds})"
         " UNION ALL SELECT value FROM {elements}({list executeIds})"
         " UNION ALL SELECT value FROM {elements}({list cooperateIds})) people)",
         ownNode},
        {"documentIds", FieldKind::Texts, "{list documentIds}"},
    };
    return fields;
}

} // namespace PlanService
