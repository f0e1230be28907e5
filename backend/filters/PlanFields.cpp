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
        {"updatedBy", FieldKind::Text, "coalesce(json_extract(document, '$.updatedBy'), '')"},
        {"projectFileId", FieldKind::Text, "coalesce(json_extract(document, '$.projectFileId'), '')"},
        {"public", FieldKind::Whole, "json_extract(document, '$.public')"},
        {"ranges", FieldKind::Texts, "json_extract(document, '$.ranges')"},
    };
    return fields;
}

} // namespace PlanService
