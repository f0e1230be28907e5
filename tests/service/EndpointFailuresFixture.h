#pragma once

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvSoftBase/KvSoftBase.h>

#include <support/BadReplies.h>
#include <support/ScriptedServer.h>

#include <QtTest/QtTest>

#include <functional>
#include <memory>

/// What the tests of failed requests share: whatever came instead of an answer, all endpoint functions of the
/// inheritor leave behind the same.
class EndpointFailuresFixture : public QObject
{
    Q_OBJECT

protected:
    /// Calls each endpoint function, each after @p prepare has made the next request fail, and looks at what
    /// it left.
    virtual void verifyFailures(const std::function<void()>& prepare) = 0;

    /// Something for every endpoint function of the inheritor to believe.
    virtual QJsonObject toldObject() const = 0;

    /// A server of its own for what is answered by breaking the connection.
    void serveAnew()
    {
        m_server = std::make_unique<KvTest::ScriptedServer>();
        KvBaseApi::GetInstance().setBaseApi(m_server->baseUrl());
    }

    std::unique_ptr<KvTest::ScriptedServer> m_server;

private Q_SLOTS:
    void init()
    {
        serveAnew();
        GetSoftCache()->setCurrentProjectId(QStringLiteral("project-1"));
    }

    void cleanup()
    {
        NetworkManager::instance().setReplySizeLimit(0);
        QCOMPARE(m_server->complaint(), QString());
    }

    void failure_data() { KvTest::failedReplies(toldObject()); }

    void failure()
    {
        QFETCH(KvTest::Reply, reply);
        QString complaints;
        verifyFailures([&] {
            // Nothing is retried after an answer: a second request would be an unexpected one.
            complaints += m_server->complaint();
            serveAnew();
            m_server->enqueue(reply);
        });
        QCOMPARE(complaints, QString());
    }

    void tooLarge()
    {
        NetworkManager::instance().setReplySizeLimit(100000);
        QJsonObject object = toldObject();
        object.insert(QStringLiteral("remark"), QString(110000, QLatin1Char('x')));
        verifyFailures([&] {
            serveAnew();
            m_server->enqueue(KvTest::Reply::json(object));
        });
    }

    void nobodyListens()
    {
        verifyFailures([] { KvBaseApi::GetInstance().setBaseApi(KvTest::ScriptedServer::refusingUrl()); });
    }
};
