#pragma once

#include "KvPlanOperationsFixture.h"

#include <QtCore/QTimer>

#include <functional>

/// What the tests of the facade's operations on plan nodes, progress and the user share.
class KvPlanNodeOperationsFixture : public KvPlanOperationsFixture
{
    Q_OBJECT

protected:
    const QString n2 = QStringLiteral("n2");
    const QString n3 = QStringLiteral("n3");

    static KvPlanNode nodeOf(const QString& id, const QString& name)
    {
        KvPlanNode node;
        node.id = id;
        node.name = name;
        return node;
    }

    static KvPlanNodeCondition nodesOf(const QString& planId)
    {
        KvPlanNodeCondition condition;
        condition.allTime = true;
        condition.listType = -1;
        condition.finishState = -1;
        condition.planId = planId;
        return condition;
    }

    static QStringList namesOfNodes(const QList<KvPlanNode>& nodes)
    {
        QStringList names;
        for (const KvPlanNode& node : nodes)
            names.append(node.name);
        return names;
    }

    /// Reads the node that the service's @p object tells into the cache; its request is forgotten.
    KvPlanNode readNodeAs(const QJsonObject& object)
    {
        const QString id = object.value(QLatin1String("_id")).toString();
        m_server.enqueue(KvTest::Reply::json(object));
        KvPlanNode node;
        if (!data().getPlanNodeById(id, node))
            qFatal("the node was not read");
        m_server.forgetRequests();
        return node;
    }
    KvPlanNode readNodeAs(const QString& id, const QString& name) { return readNodeAs(record(id, name)); }

    /// The name of the node that @p facade has cached under @p id; "-" when it would have to ask for it.
    QString cachedName(const QString& id, KvPlanData& facade = data())
    {
        KvPlanNode node;
        return isCached(id, node, facade) ? node.name : QStringLiteral("-");
    }

    /// Whether the node cache answers, where nobody listens.
    bool isCached(const QString& id, KvPlanNode& node, KvPlanData& facade = data())
    {
        const QString address = KvBaseApi::GetInstance().getBaseApi();
        KvBaseApi::GetInstance().setBaseApi(KvTest::ScriptedServer::refusingUrl());
        const bool found = facade.getPlanNodeFromCacheById(id, node);
        KvBaseApi::GetInstance().setBaseApi(address);
        return found;
    }

    /// Runs @p work from a timer once the server has its first request, and so a call is waiting. The reply
    /// to that one is to be held() until @p work has sent a second request.
    void duringTheWait(const std::function<void()>& work)
    {
        connect(&m_server, &KvTest::ScriptedServer::requestReceived, this, [this, work](int count) {
            if (count == 1)
                QTimer::singleShot(0, this, work);
        });
    }
    static KvTest::Reply held(KvTest::Reply reply) { return reply.heldUntil(2); }
};
