// Responses.

#include "SqlStore.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace PlanService {

namespace {

/// The stored document of a response, as it is or with what it names put in front.
#define PLANSERVICE_RESPONSE_JSON "r.document"
#define PLANSERVICE_EXPANDED_RESPONSE_JSON                                                                   \
    "'{\"documents\":' || '[' || coalesce((SELECT {join}(document, ',') FROM"                                \
    "  (SELECT d.document AS document FROM {elements}({list r.documentIds}) {numbered e}"                    \
    "   JOIN documents d ON d.id = e.value ORDER BY e.key) d), '') || ']'"                                   \
    " || ',' || substr(r.document, 2)"

} // namespace

JsonPieces SqlStore::responseListJson(const QString& planNodeId, bool withDocuments)
{
    QSqlQuery& rows = m_database->run(
        withDocuments ? QStringLiteral("SELECT CAST(" PLANSERVICE_EXPANDED_RESPONSE_JSON " AS {bytes})"
                                       " FROM responses r WHERE planNodeId = ? ORDER BY createdAt, number")
                      : QStringLiteral("SELECT CAST(" PLANSERVICE_RESPONSE_JSON " AS {bytes})"
                                       " FROM responses r WHERE planNodeId = ? ORDER BY createdAt, number"),
        {planNodeId});
    const JsonPieces pieces = rowsJson(rows);
    rows.finish();
    return pieces;
}

JsonPieces SqlStore::responseJson(const QString& responseId)
{
    const QVariant response =
        m_database->value(QStringLiteral("SELECT CAST(" PLANSERVICE_EXPANDED_RESPONSE_JSON " AS {bytes})"
                                         " FROM responses r WHERE id = ?"),
                          {responseId});
    return response.isValid() ? JsonPieces{response.toByteArray()} : JsonPieces();
}

bool SqlStore::hasResponse(const QString& planNodeId, const QString& responseId)
{
    return m_database
        ->value(QStringLiteral("SELECT EXISTS (SELECT 1 FROM responses WHERE id = ? AND planNodeId = ?)"),
                {responseId, planNodeId})
        .toBool();
}

void SqlStore::insertResponse(const ResponseRecord& response)
{
    m_database
        ->run(QStringLiteral("INSERT INTO responses (id, planNodeId, createdAt, document)"
                             " VALUES (?, ?, ?, CAST(? AS TEXT))"),
              {response.id, response.planNodeId, response.createdAt, m_database->text(response.document)})
        .finish();
}

QStringList SqlStore::missingDocuments(const QString& projectId, const QStringList& ids)
{
    const QByteArray list = QJsonDocument(QJsonArray::fromStringList(ids)).toJson(QJsonDocument::Compact);
    QSqlQuery& rows = m_database->run(
        QStringLiteral(
            "SELECT e.value FROM {elements}(CAST(? AS {json})) {numbered e} WHERE NOT EXISTS"
            " (SELECT 1 FROM documents d WHERE d.id = e.value AND d.projectId = ?) ORDER BY e.key"),
        {m_database->text(list), projectId});
    QStringList missing;
    while (m_database->next(rows)) {
        missing.append(rows.value(0).toString());
    }
    rows.finish();
    return missing;
}

} // namespace PlanService
