// What happens to a person while a request waits, fails or is cut off by closing the window.

#include <MainWindow.h>
#include <PlanClient.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvSoftBase/KvSoftBase.h>
#include <support/ScriptedServer.h>

#include <QtTest/QtTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>

using KvTest::Reply;

namespace {

Reply counted(int total)
{
    return Reply::json(
        QJsonObject{{QStringLiteral("total"), total}, {QStringLiteral("items"), QJsonArray()}});
}

class Painted : public QPushButton
{
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        ++paints;
        QPushButton::paintEvent(event);
    }
};

} // namespace

class WaitingTest : public QObject
{
    Q_OBJECT

private:
    KvTest::ScriptedServer m_server;

private Q_SLOTS:
    void initTestCase()
    {
        QApplication::setQuitOnLastWindowClosed(false);
        KvBaseApi::GetInstance().setBaseApi(m_server.baseUrl());
    }

    void init()
    {
        m_server.reset();
        NetworkManager::instance().setTimeout(30000);
    }

    void aLongWaitIsShownAndTheWindowStaysPainted()
    {
        Painted button;
        button.show();
        QVERIFY(QTest::qWaitForWindowExposed(&button));
        PlanClient client;
        QSignalSpy shown(&client, &PlanClient::waitingFor);
        QElapsedTimer clock;
        qint64 shownAfter = 0;
        int paintsDuringWait = 0;
        m_server.enqueue(counted(7).with(Reply::StallBeforeHeaders));
        NetworkManager::instance().setTimeout(900);
        connect(&client, &PlanClient::waitingFor, &client, [&](const QString& task) {
            if (task.isEmpty())
                return;
            shownAfter = clock.elapsed();
            button.paints = 0;
            button.update();
            QTimer::singleShot(100, &button, [&] { paintsDuringWait = button.paints; });
        });
        clock.start();
        KvPlanStatistics statistics;
        QVERIFY(!client.readStatistics(QString(), statistics));
        QVERIFY2(shownAfter >= 290, qPrintable(QString::number(shownAfter)));
        QCOMPARE(shown.size(), 2); // and that it is over
        QVERIFY(!shown.first().first().toString().isEmpty());
        QCOMPARE(shown.last().first().toString(), QString());
        QVERIFY(paintsDuringWait > 0);
        QVERIFY(!QApplication::overrideCursor());
    }

    void aShortWaitShowsNothing()
    {
        PlanClient client;
        QSignalSpy shown(&client, &PlanClient::waitingFor);
        m_server.enqueue(counted(7));
        KvPlanStatistics statistics;
        QVERIFY(client.readStatistics(QString(), statistics));
        QCOMPARE(statistics.total, 7);
        QCOMPARE(shown.size(), 0);
    }

    void nothingIsSentTwice()
    {
        QPushButton button;
        button.show();
        QVERIFY(QTest::qWaitForWindowExposed(&button));
        PlanClient client;
        KvPlanNodeResponse response;
        int clicks = 0;
        bool secondIsDone = true;
        connect(&button, &QPushButton::clicked, &client, [&] {
            ++clicks;
            KvPlanNodeResponse other;
            client.reportProgress(QStringLiteral("n1"), other);
        });
        connect(&m_server, &KvTest::ScriptedServer::requestReceived, &client, [&] {
            QTest::mouseClick(&button, Qt::LeftButton);
            QTest::keyClick(&button, Qt::Key_Space);
            KvPlanNodeResponse other;
            secondIsDone = client.reportProgress(QStringLiteral("n1"), other);
        });
        m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("_id"), QStringLiteral("r1")}}));
        QVERIFY(client.reportProgress(QStringLiteral("n1"), response));
        QCOMPARE(response.id, QStringLiteral("r1"));
        QCOMPARE(clicks, 0);
        QVERIFY(!secondIsDone);
        QCOMPARE(m_server.requestCount(), 1);
        disconnect(&m_server, nullptr, &client, nullptr);
        m_server.enqueue(Reply::json(QJsonObject{{QStringLiteral("_id"), QStringLiteral("r2")}}));
        QTest::mouseClick(&button, Qt::LeftButton); // and now it works again
        QCOMPARE(clicks, 1);
        QCOMPARE(m_server.requestCount(), 2);
    }

    void aFailureIsToldAndTriedAgain_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("words");
        QTest::newRow("no token") << 401 << QStringLiteral("KV_ACCESS_TOKEN");
        QTest::newRow("no right") << 403 << QStringLiteral("right to do this");
        QTest::newRow("gone") << 404 << QStringLiteral("no longer there");
        QTest::newRow("broken") << 500 << QStringLiteral("500");
    }

    void aFailureIsToldAndTriedAgain()
    {
        QFETCH(int, status);
        QFETCH(QString, words);
        PlanClient client;
        QStringList failures;
        client.setAskAgain([&failures](const PlanFailure& failure) {
            failures.append(failure.text + failure.details);
            return true;
        });
        m_server.enqueue(Reply::json(QJsonObject(), status));
        m_server.enqueue(counted(3));
        KvPlanStatistics statistics;
        QVERIFY(client.readStatistics(QString(), statistics));
        QCOMPARE(statistics.total, 3);
        QCOMPARE(failures.size(), 1);
        QVERIFY2(failures.first().contains(words), qPrintable(failures.first()));
        QVERIFY(failures.first().contains(QStringLiteral("count the tasks")));
        QCOMPARE(m_server.requestCount(), 2);
    }

    void whoLeavesItIsNotAskedAgain()
    {
        PlanClient client;
        int asked = 0;
        client.setAskAgain([&asked](const PlanFailure&) {
            ++asked;
            return false;
        });
        m_server.enqueue(Reply::json(QJsonObject(), 500));
        KvPlanStatistics statistics;
        QVERIFY(!client.readStatistics(QString(), statistics));
        QCOMPARE(asked, 1);
        QCOMPARE(m_server.requestCount(), 1);
    }

    // An operation that the library answers true to whatever happened.
    void aFailureBehindATrueIsSeen()
    {
        PlanClient client;
        QString told;
        client.setAskAgain([&told](const PlanFailure& failure) {
            told = failure.text;
            return false;
        });
        m_server.setHandler([](const KvTest::Request&) { return Reply::json(QJsonObject(), 500); });
        QList<KvPlanNode> nodes;
        QVERIFY(!client.readNodes(QStringLiteral("p1"), nodes));
        QVERIFY(told.contains(QStringLiteral("read the tasks")));
    }

    void aWriteThatGotNoAnswerMayBeDone()
    {
        PlanClient client;
        QStringList told;
        client.setAskAgain([&told](const PlanFailure& failure) {
            told.append(failure.text);
            return false;
        });
        m_server.enqueue(Reply::json(QJsonObject()).with(Reply::CloseUnanswered));
        KvPlan plan;
        plan.name = QStringLiteral("Tower");
        QVERIFY(!client.createPlan(plan));
        QCOMPARE(told.size(), 1); // it is not repeated by itself
        QVERIFY2(told.first().contains(QStringLiteral("may have made the change")), qPrintable(told.first()));
    }

    // A save whose second request fails must not repeat the first, which made tasks.
    void aSaveCreatesNoTaskTwice()
    {
        PlanClient client;
        int asked = 0;
        client.setAskAgain([&asked](const PlanFailure&) { return ++asked == 1; });
        m_server.setHandler([](const KvTest::Request& request) {
            return Reply::json(QJsonArray(), request.method == "POST" ? 200 : 500);
        });
        SaveList list;
        list.toCreate.append(KvPlanNode());
        list.toUpdate.append(KvPlanNode());
        list.toUpdate.last().id = QStringLiteral("n1");
        QCOMPARE(client.saveNodes(QStringLiteral("p1"), list), PlanClient::Saved::Created);
        QList<QByteArray> methods;
        for (const KvTest::Request& request : m_server.requests())
            methods.append(request.method);
        QCOMPARE(methods, QList<QByteArray>({"POST", "PUT", "PUT"}));
    }

    void theWindowClosesDuringAWait()
    {
        PlanClient client;
        QStringList failures;
        client.setAskAgain([&failures](const PlanFailure& failure) {
            failures.append(failure.text + failure.details);
            return true;
        });
        QTemporaryDir settings;
        SetSettingsDirectory(settings.path());
        MainWindow window(&client);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        NetworkManager::instance().setTimeout(800);
        m_server.setHandler(
            [](const KvTest::Request&) { return Reply::json(QJsonArray()).with(Reply::StallBeforeHeaders); });
        bool isHiddenAtOnce = false;
        QTimer::singleShot(400, &window, [&] {
            QVERIFY(client.isBusy());
            QVERIFY(!window.findChild<QLabel*>(QStringLiteral("waiting"))->text().isEmpty());
            window.close();
            isHiddenAtOnce = !window.isVisible();
        });
        window.start();
        QVERIFY(isHiddenAtOnce);
        QCOMPARE(failures, QStringList());
        QCOMPARE(m_server.requestCount(), 1);
    }

    void afterClosingNothingIsAskedOrSent()
    {
        PlanClient client;
        int asked = 0;
        client.setAskAgain([&asked](const PlanFailure&) {
            ++asked;
            return true;
        });
        m_server.setHandler([&client](const KvTest::Request&) {
            client.close(); // during the wait
            return Reply::json(QJsonObject(), 500);
        });
        KvPlanStatistics statistics;
        QVERIFY(!client.readStatistics(QString(), statistics));
        QVERIFY(!client.readStatistics(QString(), statistics));
        QCOMPARE(asked, 0);
        QCOMPARE(m_server.requestCount(), 1);
        QVERIFY(!client.isBusy());
    }
};

QTEST_MAIN(WaitingTest)
#include "WaitingTest.moc"
