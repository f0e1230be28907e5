#pragma once

#include <plandata/KvPlanData.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>

#include <support/ScriptedServer.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QLocale>
#include <QtTest/QtTest>

/// What the tests of the facade's plan operations share: a service that answers as scripted, empty caches,
/// and the few records that they speak of.
class KvPlanOperationsFixture : public QObject
{
    Q_OBJECT

protected:
    const QString p1 = QStringLiteral("p1");
    const QString p2 = QStringLiteral("p2");
    const QString p3 = QStringLiteral("p3");
    const QString n1 = QStringLiteral("n1");
    const QString one = QStringLiteral("one");
    const QString two = QStringLiteral("two");
    const QString changed = QStringLiteral("changed");

    static KvPlanData& data() { return *KvPlanData::instance(); }

    static QJsonObject record(const QString& id, const QString& name)
    {
        return {{QStringLiteral("_id"), id}, {QStringLiteral("name"), name}};
    }

    static KvPlanCondition anyPlan()
    {
        KvPlanCondition condition;
        condition.allTime = true;
        return condition;
    }

    static QStringList namesOf(const QList<KvPlan>& plans)
    {
        QStringList names;
        for (const KvPlan& plan : plans)
            names.append(plan.name);
        return names;
    }

    /// Reads a plan of that id and name into the cache; its request is forgotten.
    void readPlan(const QString& id, const QString& name)
    {
        m_server.enqueue(KvTest::Reply::json(record(id, name)));
        KvPlan plan;
        QVERIFY(data().getPlanById(id, plan));
        m_server.forgetRequests();
    }

    /// Reads the node "n1" into the cache; its request is forgotten.
    void readNode()
    {
        m_server.enqueue(KvTest::Reply::json(record(n1, QStringLiteral("wall"))));
        KvPlanNode node;
        QVERIFY(data().getPlanNodeFromCacheById(n1, node));
        m_server.forgetRequests();
    }

    /// Asks for the node "n1" where nobody listens: only the cache can answer.
    bool isNodeCached()
    {
        KvBaseApi::GetInstance().setBaseApi(KvTest::ScriptedServer::refusingUrl());
        KvPlanNode node;
        const bool read = data().getPlanNodeFromCacheById(n1, node);
        KvBaseApi::GetInstance().setBaseApi(m_server.baseUrl());
        return read;
    }

    /// The requests so far, as "GET /task-service/...".
    QByteArrayList targets() const
    {
        QByteArrayList list;
        for (const KvTest::Request& request : m_server.requests())
            list.append(request.method + ' ' + request.target);
        return list;
    }

    KvTest::ScriptedServer m_server;

private Q_SLOTS:
    void init()
    {
        KvBaseApi::GetInstance().setBaseApi(m_server.baseUrl());
        GetSoftCache()->setCurrentProjectId(QStringLiteral("project-1"));
        data().clear();
    }

    void cleanup()
    {
        QLocale::setDefault(QLocale::c());
        disconnect(&m_server, &KvTest::ScriptedServer::requestReceived, this, nullptr);
        // Without closing the connection: a POST that meets a closed one is not sent again.
        m_server.forgetRequests();
        m_server.setHandler(nullptr);
        QCOMPARE(m_server.complaint(), QString());
    }
};
