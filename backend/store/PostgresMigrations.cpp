#include "Migrations.h"

namespace PlanService {

namespace {

QString text(const char* sql)
{
    return QString::fromLatin1(sql);
}

/// All that SQLite's first seven steps come to. Texts are in the order of their bytes; documents are texts,
/// as they go out as they came in, byte for byte, which JSONB would not keep.
Migration wholeSchema()
{
    return {
        7,
        {text("CREATE TABLE planserviceSchema (version INTEGER NOT NULL PRIMARY KEY)"),
         text("CREATE TABLE plans ("
              " id TEXT COLLATE \"C\" NOT NULL PRIMARY KEY,"
              " projectId TEXT COLLATE \"C\" NOT NULL,"
              " category TEXT COLLATE \"C\" NOT NULL,"
              " name TEXT COLLATE \"C\" NOT NULL,"
              " createdAt TEXT COLLATE \"C\","
              " updatedAt TEXT COLLATE \"C\","
              " createdBy TEXT COLLATE \"C\" NOT NULL,"
              " document TEXT NOT NULL)"),
         text("CREATE INDEX plansByCreation ON plans(projectId, createdAt NULLS FIRST, id)"),
         text("CREATE INDEX plansByCategory ON plans(projectId, category, createdAt NULLS FIRST, id)"),
         text("CREATE INDEX plansByChange ON plans(projectId, updatedAt)"),
         // A name may be longer than what the usual index takes.
         text("CREATE INDEX plansByName ON plans USING hash (name)"),
         text("CREATE TABLE planNodes ("
              " number BIGINT GENERATED ALWAYS AS IDENTITY PRIMARY KEY,"
              " id TEXT COLLATE \"C\" NOT NULL UNIQUE,"
              " planId TEXT COLLATE \"C\" REFERENCES plans(id) ON DELETE CASCADE,"
              " projectId TEXT COLLATE \"C\" NOT NULL,"
              " category TEXT COLLATE \"C\" NOT NULL,"
              " name TEXT COLLATE \"C\" NOT NULL,"
              // Filters compare them with any number.
              " rowNumber BIGINT NOT NULL,"
              " uniqueId BIGINT NOT NULL,"
              " parentTaskId BIGINT NOT NULL,"
              " startDate TEXT COLLATE \"C\","
              " finishDate TEXT COLLATE \"C\","
              " actualStartDate TEXT COLLATE \"C\","
              " actualFinishDate TEXT COLLATE \"C\","
              " createdAt TEXT COLLATE \"C\","
              " updatedAt TEXT COLLATE \"C\","
              " createdBy TEXT COLLATE \"C\" NOT NULL,"
              " people TEXT COLLATE \"C\" NOT NULL,"
              " document TEXT NOT NULL)"),
         text("CREATE INDEX planNodesByRow ON planNodes(planId, rowNumber, id)"),
         text("CREATE INDEX planNodesByParent ON planNodes(planId, parentTaskId)"),
         text("CREATE INDEX planNodesByProject ON planNodes(projectId, category, finishDate)"),
         text("CREATE INDEX planNodesWithoutPlan ON planNodes(projectId, rowNumber, id)"
              " WHERE planId IS NULL"),
         text("CREATE TABLE documents ("
              " id TEXT COLLATE \"C\" NOT NULL PRIMARY KEY,"
              " projectId TEXT COLLATE \"C\" NOT NULL,"
              " document TEXT NOT NULL)"),
         text("CREATE TABLE tokens ("
              " id BIGINT GENERATED ALWAYS AS IDENTITY PRIMARY KEY,"
              " hash BYTEA NOT NULL UNIQUE,"
              " userId TEXT COLLATE \"C\" NOT NULL,"
              " createdAt TEXT COLLATE \"C\" NOT NULL,"
              " revokedAt TEXT COLLATE \"C\","
              " expiresAt TEXT COLLATE \"C\")"),
         text("CREATE TABLE rights ("
              " tokenId BIGINT NOT NULL REFERENCES tokens(id) ON DELETE CASCADE,"
              " projectId TEXT COLLATE \"C\" NOT NULL,"
              " category TEXT COLLATE \"C\" NOT NULL,"
              " mayRead TEXT NOT NULL,"
              " mayCreate BOOLEAN NOT NULL,"
              " mayEdit BOOLEAN NOT NULL,"
              " mayDelete BOOLEAN NOT NULL,"
              " mayExport BOOLEAN NOT NULL,"
              " PRIMARY KEY (tokenId, projectId, category))"),
         text("CREATE TABLE userSettings ("
              " userId TEXT COLLATE \"C\" NOT NULL,"
              " settingKey TEXT COLLATE \"C\" NOT NULL,"
              " value TEXT NOT NULL,"
              " PRIMARY KEY (userId, settingKey))"),
         text("CREATE TABLE responses ("
              " number BIGINT GENERATED ALWAYS AS IDENTITY PRIMARY KEY,"
              " id TEXT COLLATE \"C\" NOT NULL UNIQUE,"
              " planNodeId TEXT COLLATE \"C\" NOT NULL REFERENCES planNodes(id) ON DELETE CASCADE,"
              " createdAt TEXT COLLATE \"C\" NOT NULL,"
              " document TEXT NOT NULL)"),
         text("CREATE INDEX responsesByNode ON responses(planNodeId, createdAt, number)"),
         text("CREATE TABLE taskStates ("
              " number BIGINT GENERATED ALWAYS AS IDENTITY PRIMARY KEY,"
              " id TEXT COLLATE \"C\" NOT NULL UNIQUE,"
              " taskId TEXT COLLATE \"C\" NOT NULL UNIQUE REFERENCES planNodes(id) ON DELETE CASCADE,"
              " projectId TEXT COLLATE \"C\" NOT NULL,"
              " planId TEXT COLLATE \"C\" NOT NULL,"
              " responseId TEXT COLLATE \"C\" NOT NULL,"
              " state BIGINT NOT NULL)"),
         text("CREATE INDEX taskStatesByPlan ON taskStates(projectId, planId)"),
         // As in SQLite: members keep their places, new ones come last, those that are null go.
         text("CREATE FUNCTION json_patch(document TEXT, changes TEXT) RETURNS TEXT"
              " LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE AS $$"
              " SELECT '{' || coalesce(string_agg(CAST(to_json(m.key) AS TEXT) || ':' || m.value, ','"
              "  ORDER BY m.part, m.place), '') || '}' FROM"
              " (SELECT 0 AS part, d.place, d.key, CAST(coalesce(c.value, d.value) AS TEXT) AS value"
              "  FROM json_each(CAST(document AS JSON)) WITH ORDINALITY d(key, value, place)"
              "  LEFT JOIN json_each(CAST(changes AS JSON)) c ON c.key = d.key"
              "  UNION ALL SELECT 1, c.place, c.key, CAST(c.value AS TEXT)"
              "  FROM json_each(CAST(changes AS JSON)) WITH ORDINALITY c(key, value, place)"
              "  WHERE NOT EXISTS (SELECT 1 FROM json_each(CAST(document AS JSON)) d WHERE d.key = c.key)) m"
              " WHERE m.value <> 'null' $$")}};
}

/// What tells one state of a plan from every other.
Migration versionsOfPlans()
{
    return {8,
            {text("ALTER TABLE plans ADD COLUMN version TEXT NOT NULL DEFAULT ''"),
             newVersionsOfPostgresPlans()}};
}

} // namespace

QString newVersionsOfPostgresPlans()
{
    return QStringLiteral("UPDATE plans SET version = replace(CAST(gen_random_uuid() AS TEXT), '-', '')");
}

const QList<Migration>& postgresMigrations()
{
    static const QList<Migration> steps{wholeSchema(), versionsOfPlans()};
    return steps;
}

} // namespace PlanService
