// The hidden columns on a scripted service: exact requests, answers of every kind, and calls from a wait.

#include "SettingFolder.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>

#include <support/ScriptedServer.h>

#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

using KvTest::OwnSetting;
using KvTest::Reply;
using KvTest::ScriptedServer;
using KvTest::SettingFolder;

namespace {

const QByteArray target = "/user-service/settings/plan_hideHeader";

QStringList list(const char* names)
{
    return QString::fromUtf8(names).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

Reply stored(const QByteArray& value)
{
    return Reply::text("{\"value\":" + value + "}", "application/json");
}

} // namespace

class SettingHiddenColumnsTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ScriptedServer> m_server; // a new one each time: its port tells their connections apart
    SettingFolder m_folder;

    /// With these columns hidden, as the service has them; the request is forgotten.
    OwnSetting settingThatHides(const QStringList& headers)
    {
        OwnSetting setting = m_folder.setting();
        m_server->enqueue(stored(QJsonDocument(QJsonArray::fromStringList(headers)).toJson()));
        setting->LoadPlanSetting();
        if (setting->GetGanttHideHeader() != headers)
            qFatal("the hidden columns were not loaded");
        m_server->forgetRequests();
        return setting;
    }

private Q_SLOTS:
    void init()
    {
        m_server.reset(new ScriptedServer);
        KvBaseApi::GetInstance().setBaseApi(m_server->baseUrl());
    }

    void cleanup()
    {
        QCOMPARE(m_server->complaint(), QString());
        QCOMPARE(m_folder.names(), QStringList());
    }

    void creationAsksNobody()
    {
        QCOMPARE(m_folder.setting()->GetGanttHideHeader(), QStringList());
        QCOMPARE(m_server->requestCount(), 0);
    }

    void load_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QStringList>("headers");
        QTest::newRow("a list") << QByteArray("[\"Cost\",\"工期\"]") << list("Cost 工期");
        QTest::newRow("repeated names") << QByteArray("[\"a\",\"a\"]") << list("a a");
        QTest::newRow("an empty list") << QByteArray("[]") << QStringList();
        QTest::newRow("other kinds become their texts")
            << QByteArray("[1,true,null,\"\",{},[1]]")
            << QStringList{
                   QStringLiteral("1"), QStringLiteral("true"), QString(), QString(), QString(), QString()};
        QTest::newRow("a text") << QByteArray("\"Cost\"") << QStringList();
        QTest::newRow("an object") << QByteArray("{\"plan_hideHeader\":[\"a\"]}") << QStringList();
        QTest::newRow("null") << QByteArray("null") << QStringList();
    }
    void load()
    {
        QFETCH(QByteArray, value);
        QFETCH(QStringList, headers);
        const OwnSetting setting = settingThatHides(list("before"));
        m_server->enqueue(stored(value));
        setting->LoadPlanSetting();
        QCOMPARE(setting->GetGanttHideHeader(), headers);
        QCOMPARE(m_server->requestCount(), 1);
        QCOMPARE(m_server->lastRequest().method, QByteArray("GET"));
        QCOMPARE(m_server->lastRequest().target, target);
    }

    void aFailedLoadLeavesNone_data()
    {
        QTest::addColumn<int>("fault");
        QTest::addColumn<int>("status");
        QTest::newRow("nothing stored") << int(Reply::None) << 200;
        QTest::newRow("refused") << int(Reply::None) << 403;
        QTest::newRow("error") << int(Reply::None) << 500;
        QTest::newRow("reset") << int(Reply::ResetUnanswered) << 200;
        QTest::newRow("truncated") << int(Reply::Truncate) << 200;
        QTest::newRow("garbage") << int(Reply::Garbage) << 200;
    }
    void aFailedLoadLeavesNone()
    {
        QFETCH(int, fault);
        QFETCH(int, status);
        const OwnSetting setting = settingThatHides(list("before"));
        // Qt asks once more when a connection that was used before breaks.
        const Reply reply = Reply::json(QJsonObject(), status).with(Reply::Fault(fault));
        m_server->setHandler([&](const KvTest::Request&) { return reply; });
        setting->LoadPlanSetting();
        QCOMPARE(setting->GetGanttHideHeader(), QStringList());
    }

    void set()
    {
        const OwnSetting setting = m_folder.setting();
        m_server->enqueue(stored("[]"));
        QVERIFY(setting->SetGanttHideHeader(list("工期 Cost Cost")));
        QCOMPARE(setting->GetGanttHideHeader(), list("工期 Cost Cost"));
        QCOMPARE(m_server->requestCount(), 1);
        QCOMPARE(m_server->lastRequest().method, QByteArray("PUT"));
        QCOMPARE(m_server->lastRequest().target, target);
        QCOMPARE(m_server->lastRequest().body, QByteArray("{\"value\":[\"工期\",\"Cost\",\"Cost\"]}"));
    }

    void noChangeSendsNothing_data()
    {
        QTest::addColumn<QStringList>("before");
        QTest::addColumn<QStringList>("headers");
        QTest::newRow("none, as at first") << QStringList() << QStringList();
        QTest::newRow("the same") << list("a b") << list("a b");
        QTest::newRow("in another order") << list("a b") << list("b a");
        QTest::newRow("repeated") << list("a b") << list("a b a");
    }
    void noChangeSendsNothing()
    {
        QFETCH(QStringList, before);
        QFETCH(QStringList, headers);
        const OwnSetting setting = before.isEmpty() ? m_folder.setting() : settingThatHides(before);
        QVERIFY(setting->SetGanttHideHeader(headers));
        QCOMPARE(setting->GetGanttHideHeader(), before);
        QCOMPARE(m_server->requestCount(), 0);
    }

    void aChangeIsSent_data()
    {
        QTest::addColumn<QStringList>("headers");
        QTest::newRow("one more") << list("a b c");
        QTest::newRow("one less") << list("a");
        QTest::newRow("none any more") << QStringList();
        QTest::newRow("another letter case") << list("A b");
        QTest::newRow("an empty name") << QStringList{QStringLiteral("a"), QStringLiteral("b"), QString()};
    }
    void aChangeIsSent()
    {
        QFETCH(QStringList, headers);
        const OwnSetting setting = settingThatHides(list("a b"));
        m_server->enqueue(stored("[]"));
        QVERIFY(setting->SetGanttHideHeader(headers));
        QCOMPARE(m_server->requestCount(), 1);
        QCOMPARE(setting->GetGanttHideHeader(), headers);
        QVERIFY(setting->SetGanttHideHeader(headers)); // and not twice
        QCOMPARE(m_server->requestCount(), 1);
    }

    void aFailedSaveChangesNothing()
    {
        const OwnSetting setting = settingThatHides(list("a b"));
        for (const Reply& reply : {Reply::json(QJsonObject(), 500), Reply::json(QJsonObject(), 403),
                                   stored("[]").with(Reply::CloseUnanswered)}) {
            m_server->setHandler([&](const KvTest::Request&) { return reply; });
            QVERIFY(!setting->SetGanttHideHeader(list("c")));
            QCOMPARE(setting->GetGanttHideHeader(), list("a b"));
        }
        KvBaseApi::GetInstance().setBaseApi(ScriptedServer::refusingUrl());
        QVERIFY(!setting->SetGanttHideHeader(list("c")));
        QCOMPARE(setting->GetGanttHideHeader(), list("a b"));
    }

    // A host may change its own list while the request is under way: what was sent is what is hidden.
    void theListChangesDuringTheWait()
    {
        const OwnSetting setting = settingThatHides(list("a"));
        QStringList headers = list("b c");
        m_server->enqueue(stored("[]"));
        const auto connection =
            connect(m_server.get(), &ScriptedServer::requestReceived, this, [&] { headers.clear(); });
        QVERIFY(setting->SetGanttHideHeader(headers));
        disconnect(connection);
        QCOMPARE(headers, QStringList());
        QCOMPARE(setting->GetGanttHideHeader(), list("b c"));
    }

    // Another call from the wait ends first, and the outer one has the last word.
    void aCallFromTheWait()
    {
        const OwnSetting setting = settingThatHides(list("a"));
        m_server->enqueue(stored("[\"outer\"]").with(Reply::None));
        m_server->enqueue(stored("[]"));
        bool isSaved = false;
        const auto connection = connect(
            m_server.get(), &ScriptedServer::requestReceived, this,
            [&](int count) {
                if (count != 1)
                    return;
                isSaved = setting->SetGanttHideHeader(list("inner"));
            },
            Qt::QueuedConnection);
        setting->LoadPlanSetting();
        disconnect(connection);
        QVERIFY(isSaved);
        QCOMPARE(setting->GetGanttHideHeader(), list("outer"));
        QCOMPARE(m_server->lastRequest().body, QByteArray("{\"value\":[\"inner\"]}"));
    }
};

QTEST_GUILESS_MAIN(SettingHiddenColumnsTest)
#include "SettingHiddenColumnsTest.moc"
