// Saving over a service that fails in the middle: nothing is lost, nothing is made twice, and closing asks.

#include "Answers.h"

#include <MainWindow.h>
#include <PlanClient.h>
#include <PlanPage.h>
#include <TaskColumns.h>
#include <TaskModel.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvSoftBase/KvSoftBase.h>
#include <support/ScriptedServer.h>

#include <QtWidgets/QAction>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QUndoStack>

using KvTest::Reply;

namespace {

// As much of a service as saving needs: it keeps tasks, and fails when it is told to.
struct Keeper
{
    QJsonArray tasks;
    int creations = 0;
    int updates = 0;
    bool failsReads = false;
    bool failsUpdates = false;
    bool keepsButDoesNotAnswer = false;

    Reply answer(const KvTest::Request& request)
    {
        if (request.method == "GET")
            return failsReads                              ? Reply::json(QJsonObject(), 500)
                   : request.target.contains("/planNodes") ? Reply::json(tasks)
                                                           : Reply::json(QJsonObject());
        const QJsonArray sent = QJsonDocument::fromJson(request.body).array();
        if (request.method == "PUT")
            return update(sent);
        ++creations;
        for (const QJsonValue& element : sent) {
            QJsonObject task = element.toObject();
            task.insert(QStringLiteral("_id"), QStringLiteral("n%1").arg(tasks.size() + 1));
            tasks.append(task);
        }
        Reply made = Reply::json(sent);
        return keepsButDoesNotAnswer ? made.with(Reply::CloseUnanswered) : made;
    }

    Reply update(const QJsonArray& sent)
    {
        if (failsUpdates)
            return Reply::json(QJsonObject(), 500);
        ++updates;
        for (const QJsonValue& element : sent) {
            const QJsonObject change = element.toObject();
            for (QJsonValueRef kept : tasks) {
                QJsonObject task = kept.toObject();
                if (task.value(QLatin1String("_id")) != change.value(QLatin1String("_id")))
                    continue;
                for (auto member = change.begin(); member != change.end(); ++member)
                    task.insert(member.key(), member.value());
                kept = task;
            }
        }
        return Reply::json(QJsonArray());
    }

    QStringList names() const
    {
        QStringList names;
        for (const QJsonValue& task : tasks)
            names.append(task.toObject().value(QLatin1String("name")).toString());
        return names;
    }
};

} // namespace

class SavingTest : public QObject, private Answers
{
    Q_OBJECT

private:
    KvTest::ScriptedServer m_server;
    QTemporaryDir m_settings;
    Keeper m_keeper;

    // A page with one task that the service keeps, one new one, and the kept one edited.
    void edit(PlanPage& page)
    {
        KvPlan plan;
        plan.id = QStringLiteral("p1");
        plan.name = QStringLiteral("Tower");
        QVERIFY(page.open(plan));
        page.model()->setData(page.model()->index(0, TaskColumn::Name), QStringLiteral("Rebar by hand"));
        page.model()->addTask(TaskList::none, QStringLiteral("Cure"), plan.id);
        QVERIFY(page.isEdited());
    }

    static bool save(PlanPage& page)
    {
        answer([](QWidget* dialog) { click(dialog, "save"); });
        return page.save();
    }

private Q_SLOTS:
    void initTestCase()
    {
        QApplication::setQuitOnLastWindowClosed(false);
        SetSettingsDirectory(m_settings.path());
        KvBaseApi::GetInstance().setBaseApi(m_server.baseUrl());
        GetSoftCache()->setCurrentProjectId(QStringLiteral("project"));
    }

    void init()
    {
        m_server.reset();
        NetworkManager::instance().setTimeout(30000);
        m_keeper = Keeper();
        m_keeper.tasks.append(QJsonObject{{QStringLiteral("_id"), QStringLiteral("n1")},
                                          {QStringLiteral("uniqueId"), 1},
                                          {QStringLiteral("planId"), QStringLiteral("p1")},
                                          {QStringLiteral("name"), QStringLiteral("Rebar")}});
        m_server.setHandler([this](const KvTest::Request& request) { return m_keeper.answer(request); });
    }

    void aSaveThatCannotBeReadBackCreatesNothingTwice()
    {
        PlanClient client;
        PlanPage page(&client);
        edit(page);
        QSignalSpy told(&page, &PlanPage::told);
        m_keeper.failsReads = true;
        QVERIFY(!save(page));
        QCOMPARE(m_keeper.creations, 1);
        QVERIFY(page.isEdited()); // as far as is known
        QVERIFY(told.last().first().toString().startsWith(QStringLiteral("Saved")));
        QVERIFY(!page.save()); // nothing can be known yet, so nothing is sent
        QCOMPARE(m_keeper.creations, 1);

        m_keeper.failsReads = false;
        page.model()->setData(page.model()->index(1, TaskColumn::Name), QStringLiteral("Cure with water"));
        QVERIFY(save(page)); // renamed meanwhile: one update, of the kept task and the new one
        QCOMPARE(m_keeper.creations, 1);
        QCOMPARE(m_keeper.updates, 2);
        QCOMPARE(m_keeper.names(),
                 QStringList({QStringLiteral("Rebar by hand"), QStringLiteral("Cure with water")}));
        QVERIFY(!page.isEdited());
    }

    void aCreationWithoutAnswerIsLookedForBeforeItIsTriedAgain()
    {
        PlanClient client;
        int asked = 0;
        client.setAskAgain([&](const PlanFailure&) {
            m_keeper.keepsButDoesNotAnswer = false;
            return ++asked == 1;
        });
        PlanPage page(&client);
        edit(page);
        m_keeper.keepsButDoesNotAnswer = true;
        QVERIFY(save(page));
        QCOMPARE(asked, 1);
        QCOMPARE(m_keeper.creations, 1);
        QCOMPARE(m_keeper.updates, 1);
        QCOMPARE(page.model()->tasks().size(), 2);
    }

    void aCreationWithoutAnswerIsLookedForByTheNextSave()
    {
        PlanClient client;
        PlanPage page(&client);
        edit(page);
        m_keeper.keepsButDoesNotAnswer = true;
        QVERIFY(!save(page));
        m_keeper.keepsButDoesNotAnswer = false;
        page.model()->addTask(TaskList::none, QStringLiteral("Strip"), QStringLiteral("p1"));
        QVERIFY(save(page));
        QCOMPARE(m_keeper.creations, 2);
        QCOMPARE(m_keeper.names(), QStringList({QStringLiteral("Rebar by hand"), QStringLiteral("Cure"),
                                                QStringLiteral("Strip")}));
    }

    void aCreationThatNeverArrivedIsMadeByTheNextSave()
    {
        PlanClient client;
        PlanPage page(&client);
        edit(page);
        m_server.setHandler(
            [](const KvTest::Request&) { return Reply::json(QJsonArray()).with(Reply::CloseUnanswered); });
        QVERIFY(!save(page));
        QVERIFY(page.isEdited());
        m_server.setHandler([this](const KvTest::Request& request) { return m_keeper.answer(request); });
        QVERIFY(save(page));
        QCOMPARE(m_keeper.names(), QStringList({QStringLiteral("Rebar by hand"), QStringLiteral("Cure")}));
    }

    void aFailedUpdateKeepsTheEditAndWhatOthersDid()
    {
        PlanClient client;
        PlanPage page(&client);
        edit(page);
        m_keeper.failsUpdates = true;
        QJsonObject changed = m_keeper.tasks.first().toObject();
        changed.insert(QStringLiteral("finishedPercentage"), 70); // by somebody else
        m_keeper.tasks[0] = changed;
        QVERIFY(!save(page));
        QCOMPARE(m_keeper.creations, 1);
        const KvPlanNode& task = page.model()->tasks().at(0).node;
        QCOMPARE(task.name, QStringLiteral("Rebar by hand"));
        QCOMPARE(task.finishedPercentage, 70.0);
        QVERIFY(page.isEdited());
        m_keeper.failsUpdates = false;
        QVERIFY(save(page));
        QCOMPARE(m_keeper.creations, 1);
        QVERIFY(m_server.lastRequest().method == "GET");
    }

    void closingDuringARequestAsksAboutEdits()
    {
        PlanClient client;
        MainWindow window(&client);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        edit(*window.planPage());
        NetworkManager::instance().setTimeout(1500);
        m_server.setHandler(
            [](const KvTest::Request&) { return Reply::json(QJsonArray()).with(Reply::StallBeforeHeaders); });
        QStringList chosen;
        QTimer::singleShot(50, &window, [&] {
            QVERIFY(client.isBusy());
            answer([&](QWidget* dialog) {
                QVERIFY(client.isBusy());
                QTest::keyClick(dialog, Qt::Key_Escape);
                chosen.append(QStringLiteral("stay"));
            });
            QVERIFY(!window.close());
            QVERIFY(window.isVisible());
            answer([&](QWidget* dialog) {
                click(dialog, "discard");
                chosen.append(QStringLiteral("discard"));
            });
            QVERIFY(window.close());
        });
        QList<KvPlanNodeResponse> responses;
        QVERIFY(!client.readResponses(QStringLiteral("n1"), responses));
        QCOMPARE(chosen, QStringList({QStringLiteral("stay"), QStringLiteral("discard")}));
        QVERIFY(!window.isVisible());
    }

    void closingDuringARequestWithoutEditsDoesNotAsk()
    {
        PlanClient client;
        MainWindow window(&client);
        window.show();
        edit(*window.planPage());
        window.planPage()->undoStack()->setIndex(0);
        NetworkManager::instance().setTimeout(1500);
        m_server.setHandler(
            [](const KvTest::Request&) { return Reply::json(QJsonArray()).with(Reply::StallBeforeHeaders); });
        bool isClosed = false;
        QTimer::singleShot(50, &window, [&] { isClosed = window.close(); });
        QList<KvPlanNodeResponse> responses;
        QVERIFY(!client.readResponses(QStringLiteral("n1"), responses));
        QVERIFY(isClosed);
    }
};

QTEST_MAIN(SavingTest)
#include "SavingTest.moc"
