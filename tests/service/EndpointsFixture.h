#pragma once

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>

#include <support/ScriptedServer.h>

#include <QtCore/QLocale>
#include <QtTest/QtTest>

/// What the tests of endpoint functions share: a service that answers as scripted, and the project
/// "project-1".
class EndpointsFixture : public QObject
{
    Q_OBJECT

protected:
    KvTest::ScriptedServer m_server;

private Q_SLOTS:
    void init()
    {
        KvBaseApi::GetInstance().setBaseApi(m_server.baseUrl());
        GetSoftCache()->setCurrentProjectId(QStringLiteral("project-1"));
    }

    void cleanup()
    {
        // Without closing the connection: a POST that meets a closed one is not sent again.
        m_server.forgetRequests();
        QCOMPARE(m_server.complaint(), QString());
        QLocale::setDefault(QLocale::c());
    }
};
