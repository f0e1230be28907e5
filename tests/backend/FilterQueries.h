#pragma once

// What tests of filters and lists inside the service share.

#include "Text.h"
#include "filters/FilterText.h"
#include "http/Reply.h"
#include "store/PlanListSql.h"
#include "store/SqliteDatabase.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QTemporaryDir>

namespace KvTest {

/// Code and field of the refusal; empty when there is none.
inline QString refusalOf(const QString& where, const QVector<PlanService::FilterField>& fields)
{
    try {
        PlanService::readFilter(where, fields);
    } catch (const PlanService::ApiError& error) {
        const QJsonObject body =
            QJsonDocument::fromJson(error.reply().body.first()).object().value("error"_s).toObject();
        return body.value("code"_s).toString() + QLatin1Char(' ') + body.value("field"_s).toString();
    }
    return QString();
}

/// How an SQLite database means to answer the statement, a line a step.
inline QString stepsOf(const PlanService::SqlStatement& statement)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath("steps.db"_s);
    PlanService::openStore(file, PlanService::MissingDatabase::Create);
    PlanService::SqliteDatabase database(file);
    QSqlQuery rows = database.runOnce("EXPLAIN QUERY PLAN "_s + statement.text, statement.parameters);
    QStringList steps;
    while (database.next(rows)) {
        steps.append(rows.value(3).toString());
    }
    return steps.join(QLatin1Char('\n'));
}

} // namespace KvTest
