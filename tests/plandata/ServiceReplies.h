#pragma once

#include <support/ScriptedMessages.h>

/// What a service would answer for a plan of one node, and for a node.
namespace KvTest {

inline Reply planReply(const QString& id, const QString& name)
{
    const QJsonObject node{{QStringLiteral("_id"), id + QStringLiteral("-n")},
                           {QStringLiteral("name"), QStringLiteral("node of ") + name}};
    return Reply::json(QJsonObject{{QStringLiteral("_id"), id},
                                   {QStringLiteral("name"), name},
                                   {QStringLiteral("tasks"), QJsonArray{node}}});
}

inline Reply nodeReply(const QString& id, const QString& name)
{
    return Reply::json(QJsonObject{{QStringLiteral("_id"), id}, {QStringLiteral("name"), name}});
}

} // namespace KvTest
