#include "PlanNodeFields.h"

#include "../store/VisibilitySql.h"

namespace PlanService {

namespace {

/// The user works on the node at all, which is told without a look into its document, and in this role.
SqlCondition worksAs(const char* list, const QString& user)
{
    SqlCondition condition = worksOn(user);
    condition.also(QStringLiteral("EXISTS (SELECT 1 FROM json_each(document, '$.%1') WHERE value = ?)")
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
        {"GUID", FieldKind::Text, "coalesce(json_extract(document, '$.GUID'), id)"},
        {"planId", FieldKind::Name, "planId"},
        {"planName", FieldKind::Text, "coalesce((SELECT p.name FROM plans p WHERE p.id = planId), '')"},
        {"projectId", FieldKind::Text, "projectId"},
        {"id", FieldKind::Whole, "rowNumber"},
        {"uniqueId", FieldKind::Whole, "uniqueId"},
        {"parentTaskID", FieldKind::Whole, "parentTaskId"},
        {"name", FieldKind::Text, "name"},
        {"displayName", FieldKind::Text, "name"},
        {"isDistributed", FieldKind::Flag, "json_extract(document, '$.isDistributed')"},
        {"remark", FieldKind::Text, "coalesce(json_extract(document, '$.remark'), '')"},
        // What is not set is stored as -1 in these four.
        {"finishedPercentage", FieldKind::Real,
         "iif(json_extract(document, '$.finishedPercentage') >= 0,"
         " json_extract(document, '$.finishedPercentage'), NULL)"},
        {"planWorkload", FieldKind::Whole,
         "iif(json_extract(document, '$.planWorkload') >= 0, json_extract(document, '$.planWorkload'), "
         "NULL)"},
        {"actualWorkload", FieldKind::Whole,
         "iif(json_extract(document, '$.actualWorkload') >= 0, json_extract(document, '$.actualWorkload'), "
         "NULL)"},
        {"dynamicEffect", FieldKind::Whole, "nullif(json_extract(document, '$.dynamicEffect'), -1)"},
        {"displaySimulation", FieldKind::Flag, "json_extract(document, '$.displaySimulation')"},
        {"milestone", FieldKind::Flag, "coalesce(startDate = finishDate, 0)"},
        {"summary", FieldKind::Flag,
         "(planNodes.uniqueId > 0 AND EXISTS (SELECT 1 FROM planNodes c WHERE c.planId = planNodes.planId"
         " AND c.parentTaskId = planNodes.uniqueId AND c.id <> planNodes.id))"},
        {"createdAt", FieldKind::Date, "createdAt"},
        {"createdBy", FieldKind::Text, "createdBy"},
        {"updatedAt", FieldKind::Date, "updatedAt"},
        {"updatedBy", FieldKind::Text, "coalesce(json_extract(document, '$.updatedBy'), '')"},
        {"startDate", FieldKind::Date, "startDate"},
        {"finishDate", FieldKind::Date, "finishDate"},
        {"actualStartDate", FieldKind::Date, "actualStartDate"},
        {"actualFinishDate", FieldKind::Date, "actualFinishDate"},
        {"entityHideDate", FieldKind::Date, "nullif(json_extract(document, '$.entityHideDate'), '')"},
        {"entityHideType", FieldKind::Whole, "json_extract(document, '$.entityHideType')"},
        {"userIds", FieldKind::Texts, "json_extract(document, '$.userIds')", isResponsible},
        {"executeIds", FieldKind::Texts, "json_extract(document, '$.executeIds')", isExecuting},
        {"cooperateIds", FieldKind::Texts, "json_extract(document, '$.cooperateIds')", isCooperating},
        {"relativeUserIds", FieldKind::Texts,
         "(SELECT json_group_array(user) FROM (SELECT createdBy AS user WHERE createdBy <> ''"
         " UNION ALL SELECT value FROM json_each(document, '$.userIds')"
         " UNION ALL SELECT value FROM json_each(document, '$.executeIds')"
         " UNION ALL SELECT value FROM json_each(document, '$.cooperateIds')))",
         ownNode},
        {"documentIds", FieldKind::Texts, "json_extract(document, '$.documentIds')"},
    };
    return fields;
}

} // namespace PlanService
