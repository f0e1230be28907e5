#pragma once

// What stands in an SQLite database, as texts that tests compare.

#include "Text.h"
#include "store/SqliteDatabase.h"

#include <QFile>
#include <QSqlRecord>
#include <QStringList>

#include <sqlite3.h>

namespace KvTest {

inline QStringList firstColumn(PlanService::SqlDatabase& database, const QString& sql)
{
    QStringList values;
    QSqlQuery rows = database.runOnce(sql, {});
    while (database.next(rows)) {
        values.append(rows.value(0).toString());
    }
    return values;
}

inline QStringList tablesOf(PlanService::SqliteDatabase& database)
{
    return firstColumn(
        database,
        "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite%' ORDER BY 1"_s);
}

/// The rows of a table, as far as these columns go, in the order of their texts. Versions of plans are left
/// away: each time that the rows come into a database they are other ones.
inline QStringList rowsOf(PlanService::SqliteDatabase& database, const QString& table,
                          const QString& columns = QStringLiteral("*"))
{
    QStringList rows;
    QSqlQuery row = database.runOnce("SELECT %1 FROM %2"_s.arg(columns, table), {});
    while (database.next(row)) {
        QString text = table;
        for (int i = 0; i < row.record().count(); ++i) {
            if (table == "plans"_s && row.record().fieldName(i) == "version"_s) {
                continue;
            }
            text += QLatin1Char('|') + (row.isNull(i) ? "NULL"_s : row.value(i).toString());
        }
        rows.append(text);
    }
    rows.sort();
    return rows;
}

/// Every row of every table but these.
inline QStringList rowsOf(const QString& path, const QStringList& without = {})
{
    PlanService::SqliteDatabase database(path);
    QStringList rows;
    const QStringList tables = tablesOf(database);
    for (const QString& table : tables) {
        if (!without.contains(table)) {
            rows += rowsOf(database, table);
        }
    }
    return rows;
}

/// Tables and indexes as they were defined.
inline QStringList schemaOf(PlanService::SqliteDatabase& database)
{
    return firstColumn(database, "SELECT type || ' ' || name || ': ' || sql FROM sqlite_master "
                                 "WHERE name NOT LIKE 'sqlite%' ORDER BY 1"_s);
}

/// Makes a database of a file of SQL. @return false when a statement fails.
inline bool fillFromSql(const QString& path, const QString& sqlFile)
{
    QFile file(sqlFile);
    sqlite3* database = nullptr;
    const bool done =
        file.open(QIODevice::ReadOnly) &&
        sqlite3_open(QFile::encodeName(path).constData(), &database) == SQLITE_OK &&
        sqlite3_exec(database, file.readAll().constData(), nullptr, nullptr, nullptr) == SQLITE_OK;
    sqlite3_close(database);
    return done;
}

} // namespace KvTest
