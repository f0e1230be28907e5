#pragma once

#include "KvplanProcess.h"

#include <support/ScriptedServer.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

/// The service in the tests on a scripted server: who asks it, and plans as it sends them.
namespace KvTest {

/// A kvplan that asks @p server for the project "tower".
inline Kvplan kvplan(const ScriptedServer& server)
{
    Kvplan made(server.baseUrl());
    made.setEnvironment(QStringLiteral("KV_PROJECT_ID"), QStringLiteral("tower"));
    return made;
}

inline QJsonObject planReply(const QString& id, const QString& name, const QJsonArray& tasks = {})
{
    return {{QStringLiteral("_id"), id},
            {QStringLiteral("name"), name},
            {QStringLiteral("category"), QStringLiteral("construction")},
            {QStringLiteral("projectId"), QStringLiteral("tower")},
            {QStringLiteral("createdAt"), QStringLiteral("2026-01-31T09:00:00.000")},
            {QStringLiteral("createdBy"), QStringLiteral("ann")},
            {QStringLiteral("updatedAt"), QStringLiteral("2026-03-05T18:30:00.000")},
            {QStringLiteral("updatedBy"), QStringLiteral("ben")},
            {QStringLiteral("public"), 1},
            {QStringLiteral("tasks"), tasks}};
}

/// A task of that row, with the same number as its unique id, from day @p start to day @p finish of March
/// 2026.
inline QJsonObject taskReply(int row, const QString& name, int parent, int start, int finish, double done)
{
    const auto day = [](int number, const char* time) {
        return QStringLiteral("2026-03-%1T%2:00:00.000")
            .arg(number, 2, 10, QLatin1Char('0'))
            .arg(QLatin1String(time));
    };
    return {{QStringLiteral("_id"), QStringLiteral("n%1").arg(row)},
            {QStringLiteral("id"), row},
            {QStringLiteral("uniqueId"), row},
            {QStringLiteral("parentTaskID"), parent},
            {QStringLiteral("name"), name},
            {QStringLiteral("startDate"), day(start, "08")},
            {QStringLiteral("finishDate"), day(finish, "17")},
            {QStringLiteral("finishedPercentage"), done}};
}

} // namespace KvTest
