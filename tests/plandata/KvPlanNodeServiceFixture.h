#pragma once

#include <plandata/KvPlanData.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvSoftBase/KvSoftBase.h>

#include <ServiceProcess.h>

#include <QtTest/QtTest>

/// What the tests of plan nodes on the real service share: the service, on a database with one seeded plan,
/// and a project of its own for every test.
class KvPlanNodeServiceFixture : public QObject
{
    Q_OBJECT

protected:
    using NodeList = QList<KvPlanNode>;

    static KvPlanData& data() { return *KvPlanData::instance(); }

    static KvPlanNode nodeNamed(const QString& name, int number = -1)
    {
        KvPlanNode node;
        node.name = name;
        node.planNodeId = node.uniqueId = number;
        return node;
    }

    static QStringList namesOf(const NodeList& nodes)
    {
        QStringList names;
        for (const KvPlanNode& node : nodes)
            names.append(node.name);
        return names;
    }

    static KvPlanNodeCondition nodesOf(const QString& planId)
    {
        KvPlanNodeCondition condition;
        condition.allTime = true;
        condition.finishState = -1;
        condition.planId = planId;
        return condition;
    }

    static KvPlan newPlan(const QString& category = QString())
    {
        KvPlan plan;
        plan.name = QString::fromLatin1(QTest::currentTestFunction());
        plan.category = category;
        if (!data().createPlan(plan))
            qFatal("no plan");
        return plan;
    }

    /// The nodes of a plan as the service has them; cached from then on.
    static NodeList stored(const QString& planId)
    {
        NodeList nodes;
        data().getPlanNodesByPlanId(planId, nodes);
        return nodes;
    }

    static KvPlanNode stored(const KvPlanNode& node)
    {
        KvPlanNode read;
        if (!data().getPlanNodeById(node.id, read))
            read.id = QStringLiteral("not there");
        return read;
    }

    KvTest::ServiceProcess m_service;
    QString m_seededPlan;
    QString m_seededProject;
    int m_requests = 0; // so far

protected Q_SLOTS:
    virtual void init()
    {
        GetSoftCache()->setCurrentProjectId(QString::fromLatin1(QTest::currentTestFunction()));
        data().clear();
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QJsonObject seeded = m_service.seed({QStringLiteral("--nodes"), QStringLiteral("200")});
        QVERIFY2(!seeded.isEmpty(), qPrintable(m_service.failure()));
        m_seededPlan = seeded.value(QStringLiteral("planId")).toString();
        m_seededProject = seeded.value(QStringLiteral("projectId")).toString();
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
        KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl());
        connect(&NetworkManager::instance(), &NetworkManager::requestFinished, this,
                [this] { ++m_requests; });
    }
};
