// Hidden columns on the real service: kept per user, found again by the next object.

#include "SettingFolder.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>

#include <ServiceProcess.h>

#include <QtTest/QtTest>

using KvTest::OwnSetting;
using KvTest::SettingFolder;

class SettingServiceTest : public QObject
{
    Q_OBJECT

private:
    KvTest::ServiceProcess m_service;
    SettingFolder m_folder;
    QByteArray m_ann;
    QByteArray m_bob;

    static void signIn(const QByteArray& token)
    {
        NetworkManager::instance().setAccessToken(QString::fromLatin1(token));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(!m_service.seed().isEmpty(), qPrintable(m_service.failure()));
        for (const auto& [token, user] : {std::make_pair(&m_ann, "ann"), std::make_pair(&m_bob, "bob")}) {
            *token = m_service.createToken(QLatin1String(user), QStringLiteral("tower"),
                                           QStringLiteral("read=all"));
            QVERIFY2(!token->isEmpty(), qPrintable(m_service.failure()));
        }
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
        KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl());
    }

    void hiddenColumnsBelongToTheirUser()
    {
        const QStringList headers{QStringLiteral("工期"), QStringLiteral("a \"b\" & c/d"),
                                  QStringLiteral("🏗")};
        const OwnSetting setting = m_folder.setting();
        signIn(m_ann);
        setting->LoadPlanSetting();
        QCOMPARE(setting->GetGanttHideHeader(), QStringList());
        QVERIFY(setting->SetGanttHideHeader(headers));

        const OwnSetting next = m_folder.setting();
        next->LoadPlanSetting();
        QCOMPARE(next->GetGanttHideHeader(), headers);
        QVERIFY(next->SetGanttHideHeader(headers.mid(1)));
        setting->LoadPlanSetting();
        QCOMPARE(setting->GetGanttHideHeader(), headers.mid(1));

        signIn(m_bob);
        next->LoadPlanSetting();
        QCOMPARE(next->GetGanttHideHeader(), QStringList());

        signIn(m_ann);
        QVERIFY(setting->SetGanttHideHeader({}));
        next->LoadPlanSetting();
        QCOMPARE(next->GetGanttHideHeader(), QStringList());
    }

    void refusedAndGone()
    {
        const OwnSetting setting = m_folder.setting();
        signIn(m_ann);
        QVERIFY(setting->SetGanttHideHeader({QStringLiteral("a")}));
        signIn("nobody's");
        QVERIFY(!setting->SetGanttHideHeader({QStringLiteral("b")}));
        QCOMPARE(setting->GetGanttHideHeader(), QStringList{QStringLiteral("a")});
        QVERIFY(m_service.stop());
        signIn(m_ann);
        QVERIFY(!setting->SetGanttHideHeader({QStringLiteral("b")}));
        QCOMPARE(setting->GetGanttHideHeader(), QStringList{QStringLiteral("a")});
        setting->LoadPlanSetting();
        QCOMPARE(setting->GetGanttHideHeader(), QStringList());
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
        KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl());
        setting->LoadPlanSetting();
        QCOMPARE(setting->GetGanttHideHeader(), QStringList{QStringLiteral("a")});
    }
};

QTEST_GUILESS_MAIN(SettingServiceTest)
#include "SettingServiceTest.moc"
