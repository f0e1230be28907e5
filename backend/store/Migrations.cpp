#include "Migrations.h"

namespace PlanService {

namespace {

QString text(const char* sql)
{
    return QString::fromLatin1(sql);
}

Migration plansAndNodes()
{
    return {1,
            {text("CREATE TABLE plans ("
                  " id TEXT NOT NULL PRIMARY KEY,"
                  " projectId TEXT NOT NULL,"
                  " category TEXT NOT NULL,"
                  " name TEXT NOT NULL,"
                  " createdAt TEXT,"
                  " updatedAt TEXT,"
                  " createdBy TEXT NOT NULL,"
                  " document TEXT NOT NULL)"),
             text("CREATE INDEX plansByProject ON plans(projectId, category, createdAt)"),
             text("CREATE TABLE planNodes ("
                  " id TEXT NOT NULL PRIMARY KEY,"
                  " planId TEXT NOT NULL REFERENCES plans(id) ON DELETE CASCADE,"
                  " projectId TEXT NOT NULL,"
                  " category TEXT NOT NULL,"
                  " name TEXT NOT NULL,"
                  " rowNumber INTEGER NOT NULL,"
                  " uniqueId INTEGER NOT NULL,"
                  " parentTaskId INTEGER NOT NULL,"
                  " startDate TEXT,"
                  " finishDate TEXT,"
                  " actualStartDate TEXT,"
                  " actualFinishDate TEXT,"
                  " createdAt TEXT,"
                  " updatedAt TEXT,"
                  " createdBy TEXT NOT NULL,"
                  " document TEXT NOT NULL)"),
             text("CREATE INDEX planNodesByRow ON planNodes(planId, rowNumber, id)"),
             text("CREATE INDEX planNodesByParent ON planNodes(planId, parentTaskId)"),
             text("CREATE INDEX planNodesByProject ON planNodes(projectId, category, finishDate)"),
             text("CREATE TABLE documents ("
                  " id TEXT NOT NULL PRIMARY KEY,"
                  " projectId TEXT NOT NULL,"
                  " document TEXT NOT NULL)")}};
}

Migration tokensAndRights()
{
    return {2,
            {text("CREATE TABLE tokens ("
                  " id INTEGER NOT NULL PRIMARY KEY AUTOINCREMENT,"
                  " hash BLOB NOT NULL UNIQUE,"
                  " userId TEXT NOT NULL,"
                  " createdAt TEXT NOT NULL,"
                  " revokedAt TEXT)"),
             text("CREATE TABLE rights ("
                  " tokenId INTEGER NOT NULL REFERENCES tokens(id) ON DELETE CASCADE,"
                  " projectId TEXT NOT NULL,"
                  " category TEXT NOT NULL,"
                  " mayRead TEXT NOT NULL,"
                  " mayCreate INTEGER NOT NULL,"
                  " mayEdit INTEGER NOT NULL,"
                  " mayDelete INTEGER NOT NULL,"
                  " mayExport INTEGER NOT NULL,"
                  " PRIMARY KEY (tokenId, projectId, category)) WITHOUT ROWID")}};
}

Migration userSettings()
{
    return {3,
            {text("CREATE TABLE userSettings ("
                  " userId TEXT NOT NULL,"
                  " settingKey TEXT NOT NULL,"
                  " value TEXT NOT NULL,"
                  " PRIMARY KEY (userId, settingKey)) WITHOUT ROWID")}};
}

/// Pages of plans in their order, with and without a category; searches by change; free names for copies.
Migration planLists()
{
    return {4,
            {text("DROP INDEX plansByProject"),
             text("CREATE INDEX plansByCreation ON plans(projectId, createdAt, id)"),
             text("CREATE INDEX plansByCategory ON plans(projectId, category, createdAt, id)"),
             text("CREATE INDEX plansByChange ON plans(projectId, updatedAt)"),
             text("CREATE INDEX plansByName ON plans(projectId, name)")}};
}

/// What is reported back on nodes; and one index from which the progress of a project is told and its nodes
/// are found by who works on them, without a look at the nodes themselves.
Migration progress()
{
    return {5,
            {text("ALTER TABLE planNodes ADD COLUMN people TEXT NOT NULL DEFAULT ''"),
             text("UPDATE planNodes SET people = char(10) || coalesce((SELECT group_concat("
                  "   replace(replace(value, '\\', '\\\\'), char(10), '\\n'), char(10)) || char(10)"
                  "  FROM (SELECT value FROM json_each(document, '$.userIds')"
                  "   UNION ALL SELECT value FROM json_each(document, '$.executeIds')"
                  "   UNION ALL SELECT value FROM json_each(document, '$.cooperateIds'))), '')"),
             text("DROP INDEX planNodesByProject"),
             text("CREATE INDEX planNodesByProject ON planNodes(projectId, category, finishDate, startDate,"
                  " actualStartDate, actualFinishDate, createdBy, people)"),
             text("CREATE TABLE responses ("
                  " number INTEGER NOT NULL PRIMARY KEY,"
                  " id TEXT NOT NULL UNIQUE,"
                  " planNodeId TEXT NOT NULL REFERENCES planNodes(id) ON DELETE CASCADE,"
                  " createdAt TEXT NOT NULL,"
                  " document TEXT NOT NULL)"),
             text("CREATE INDEX responsesByNode ON responses(planNodeId, createdAt, number)"),
             text("CREATE TABLE taskStates ("
                  " number INTEGER NOT NULL PRIMARY KEY,"
                  " id TEXT NOT NULL UNIQUE,"
                  " taskId TEXT NOT NULL UNIQUE REFERENCES planNodes(id) ON DELETE CASCADE,"
                  " projectId TEXT NOT NULL,"
                  " planId TEXT NOT NULL,"
                  " responseId TEXT NOT NULL,"
                  " state INTEGER NOT NULL)"),
             text("CREATE INDEX taskStatesByPlan ON taskStates(projectId, planId)")}};
}

/// Nodes that belong to no plan, each with a number of its own that stays.
Migration nodesWithoutPlan()
{
    return {
        6,
        {text("CREATE TABLE planNodesOfAnyPlan ("
              " number INTEGER NOT NULL PRIMARY KEY,"
              " id TEXT NOT NULL UNIQUE,"
              " planId TEXT REFERENCES plans(id) ON DELETE CASCADE,"
              " projectId TEXT NOT NULL,"
              " category TEXT NOT NULL,"
              " name TEXT NOT NULL,"
              " rowNumber INTEGER NOT NULL,"
              " uniqueId INTEGER NOT NULL,"
              " parentTaskId INTEGER NOT NULL,"
              " startDate TEXT,"
              " finishDate TEXT,"
              " actualStartDate TEXT,"
              " actualFinishDate TEXT,"
              " createdAt TEXT,"
              " updatedAt TEXT,"
              " createdBy TEXT NOT NULL,"
              " people TEXT NOT NULL,"
              " document TEXT NOT NULL)"),
         text("INSERT INTO planNodesOfAnyPlan SELECT rowid, id, planId, projectId, category, name, rowNumber,"
              " uniqueId, parentTaskId, startDate, finishDate, actualStartDate, actualFinishDate,"
              " createdAt, updatedAt, createdBy, people, document FROM planNodes ORDER BY rowid"),
         // What refers to nodes does so by the table's name, which stays.
         text("DROP TABLE planNodes"), text("ALTER TABLE planNodesOfAnyPlan RENAME TO planNodes"),
         text("CREATE INDEX planNodesByRow ON planNodes(planId, rowNumber, id)"),
         text("CREATE INDEX planNodesByParent ON planNodes(planId, parentTaskId)"),
         text("CREATE INDEX planNodesByProject ON planNodes(projectId, category, finishDate, startDate,"
              " actualStartDate, actualFinishDate, createdBy, people)"),
         text("CREATE INDEX planNodesWithoutPlan ON planNodes(projectId, rowNumber, id)"
              " WHERE planId IS NULL")}};
}

/// Tokens that are good up to a day.
Migration expiryOfTokens()
{
    return {7, {text("ALTER TABLE tokens ADD COLUMN expiresAt TEXT")}};
}

/// What tells one state of a plan from every other.
Migration versionsOfPlans()
{
    return {8, {text("ALTER TABLE plans ADD COLUMN version TEXT NOT NULL DEFAULT ''"), newVersionsOfPlans()}};
}

void apply(SqlDatabase& database, const Migration& step)
{
    database.beginMigration();
    try {
        // Another process may have taken this step while we waited for the lock.
        if (database.schemaVersion() < step.version) {
            for (const QString& statement : step.statements) {
                database.execute(statement);
            }
            database.setSchemaVersion(step.version);
        }
        database.commit();
    } catch (...) {
        database.rollback();
        throw;
    }
}

} // namespace

QString newVersionsOfPlans()
{
    return QStringLiteral("UPDATE plans SET version = lower(hex(randomblob(16)))");
}

const QList<Migration>& migrations()
{
    static const QList<Migration> steps{plansAndNodes(),  tokensAndRights(), userSettings(),
                                        planLists(),      progress(),        nodesWithoutPlan(),
                                        expiryOfTokens(), versionsOfPlans()};
    return steps;
}

void migrate(SqlDatabase& database, const QList<Migration>& steps)
{
    const int current = database.schemaVersion();
    const int newest = steps.isEmpty() ? 0 : steps.last().version;
    if (current > newest) {
        throw StoreError(QStringLiteral("database '%1' has schema version %2, this program knows up to %3; "
                                        "use the planservice that wrote it, or a newer one")
                             .arg(database.name())
                             .arg(current)
                             .arg(newest));
    }
    for (const Migration& step : steps) {
        if (step.version > current) {
            apply(database, step);
        }
    }
}

} // namespace PlanService
