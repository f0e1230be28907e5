#pragma once

// What tests of plan nodes over HTTP share.

#include "PlanRequests.h"
#include "ServiceProcess.h"

#include <QUrl>

namespace KvTest {

inline QByteArray listJson(const QJsonArray& array)
{
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

inline QJsonArray arrayOf(const RawReply& reply)
{
    return QJsonDocument::fromJson(reply.body).array();
}

inline QStringList namesOf(const QJsonArray& nodes)
{
    QStringList names;
    for (const QJsonValue& node : nodes) {
        names.append(node.toObject().value("name"_s).toString());
    }
    return names;
}

inline QByteArray encoded(const QString& text)
{
    return QUrl::toPercentEncoding(text);
}

inline QByteArray idsParameter(const QStringList& ids)
{
    return "/task-service/planNodes?queryParam=" +
           encoded(QString::fromUtf8(jsonOf(QJsonObject{{"ids"_s, QJsonArray::fromStringList(ids)}})));
}

/// A service of its own, on an empty database, and short ways to ask it.
class NodeService
{
public:
    RawReply send(const QByteArray& method, const QByteArray& path, const QByteArray& body = QByteArray(),
                  const QByteArray& headers = QByteArray())
    {
        return RawHttp(process.port()).request(method, "/task-service/" + path, body, headers);
    }
    RawReply get(const QByteArray& path, const QByteArray& headers = QByteArray())
    {
        return RawHttp(process.port()).get("/task-service/" + path, headers);
    }
    QByteArray newPlan(const QString& project, const QString& category = QString())
    {
        return idOf(objectOf(
            send("POST", "plans",
                 jsonOf({{"projectId"_s, project}, {"name"_s, "Tower"_s}, {"category"_s, category}}))));
    }
    QJsonObject node(const QByteArray& id) { return objectOf(get("planNodes/" + id)); }
    /// Adds nodes with these names. @return their ids.
    QStringList addNodes(const QByteArray& plan, const QStringList& names)
    {
        QJsonArray nodes;
        for (const QString& name : names) {
            nodes.append(task(name, nodes.size() + 1));
        }
        QStringList ids;
        const QJsonArray created = arrayOf(send("POST", "plans/" + plan + "/planNodes", listJson(nodes)));
        for (const QJsonValue& added : created) {
            ids.append(added.toObject().value("_id"_s).toString());
        }
        return ids;
    }

    ServiceProcess process;
};

} // namespace KvTest
