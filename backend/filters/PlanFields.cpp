#include "PlanFields.h"

namespace PlanService {

const QVector<FilterField>& planFields()
{
    static const QVector<FilterField> fields{
        {"_id", FieldKind::Text, "id"},
        {"category", FieldKind::Text, "category"},
        {"projectId", FieldKind::Text, "projectId"},
        {"name", FieldKind::Text, "name"},
        {"createdAt", FieldKind::Date, "createdAt"},
        {"createdBy", FieldKind::Text, "createdBy"},
        {"updatedAt", FieldKind::Date, "updatedAt"},
        {"updatedBy", FieldKind::Text, "coalesce({text updatedBy}, '')"},
        {"projectFileId", FieldKind::Text, "coalesce({text projectFileId}, '')"},
        {"public", FieldKind::Whole, "{number public}"},
        {"ranges", FieldKind::Texts, "{list ranges}"},
    };
    return fields;
}

} // namespace PlanService
