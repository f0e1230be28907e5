// One plan in the window, as a person edits it, on the real service; the service is asked what it holds.

#include "Person.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvNetwork/NetworkManager.h>
#include <KvSoftBase/KvSoftBase.h>

#include <QtWidgets/QUndoStack>

using KvTest::ServiceProcess;

class WindowTest : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    QTemporaryDir m_settings;
    QString m_planId;

    static QString curing() { return QStringLiteral("养护 Cure concrete"); }

private Q_SLOTS:
    void initTestCase()
    {
        QApplication::setQuitOnLastWindowClosed(false);
        const QJsonObject seeded = m_service.seed();
        QVERIFY2(!seeded.isEmpty(), qPrintable(m_service.failure()));
        m_planId = seeded.value(QLatin1String("planId")).toString();
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
        KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl());
        GetSoftCache()->setCurrentProjectId(seeded.value(QLatin1String("projectId")).toString());
        SetSettingsDirectory(m_settings.path());
    }

    void aPlanOpens()
    {
        Person person;
        person.open(0);
        QCOMPARE(person.failures, QStringList());
        QCOMPARE(person.page().plan().id, m_planId);
        QCOMPARE(person.model().tasks().size(), 395);
        QVERIFY(!person.window.isWindowModified());
        QVERIFY(!person.action("save")->isEnabled());
        QVERIFY(!person.action("save")->toolTip().isEmpty());
        QVERIFY(person.window.windowTitle().contains(person.page().plan().name));
    }

    void editsAreSavedWhole()
    {
        Person person;
        person.open(0);
        const int task = person.positionOf(curing());
        QVERIFY(task >= 0);
        const QString id = person.model().tasks().at(task).node.id;
        person.type(task, TaskColumn::Name, QStringLiteral("Cure by hand"));
        QVERIFY(person.window.isWindowModified());
        person.type(task, TaskColumn::Progress, QStringLiteral("35"));
        QVERIFY(person.action("save")->isEnabled());
        QString preview;
        Person::answer([&preview](QWidget* dialog) {
            for (const QModelIndex& group : {dialog->findChild<QAbstractItemView*>()->model()->index(0, 0)}) {
                const QAbstractItemModel* const model = group.model();
                for (int row = 0; row < model->rowCount(group); ++row)
                    preview += model->index(row, 0, group).data().toString() + QLatin1Char('|') +
                               model->index(row, 1, group).data().toString();
            }
            Person::click(dialog, "save");
        });
        QTest::keyClick(&person.window, Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(person.failures, QStringList());
        QVERIFY2(preview.startsWith(QStringLiteral("Cure by hand|")), qPrintable(preview));
        QVERIFY2(preview.contains(curing()) && preview.contains(QStringLiteral("35 %")), qPrintable(preview));
        const QJsonObject kept = heldTask(m_service, m_planId, QStringLiteral("Cure by hand"));
        QCOMPARE(kept.value(QLatin1String("_id")).toString(), id);
        QCOMPARE(kept.value(QLatin1String("finishedPercentage")).toDouble(), 35.0);
        QVERIFY(!person.window.isWindowModified());
        QCOMPARE(person.page().lastDifferences(), QStringList());
        QVERIFY(!person.page().undoStack()->canUndo());
    }

    void aMovedDateMovesTheSummaryTasks()
    {
        Person person;
        person.open(0);
        const int task = person.positionOf(curing()); // the next floor's, as the first has another name now
        const int above = person.model().tasks().at(task).parent;
        const QString aboveId = person.model().tasks().at(above).node.id;
        person.type(task, TaskColumn::Finish, QStringLiteral("2027-12-24"));
        Person::answer([](QWidget* dialog) { Person::click(dialog, "save"); });
        QTest::keyClick(&person.window, Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(person.failures, QStringList());
        QCOMPARE(held(m_service, QStringLiteral("task-service/planNodes/") + aboveId)
                     .object()
                     .value(QLatin1String("finishDate"))
                     .toString()
                     .left(10),
                 QStringLiteral("2027-12-24"));
    }

    void undoneEditsAreNoEdits()
    {
        Person person;
        person.open(0);
        const int task = person.positionOf(curing());
        person.type(task, TaskColumn::Progress, QStringLiteral("77"));
        QVERIFY(person.window.isWindowModified());
        QTest::keyClick(&person.window, Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(!person.window.isWindowModified());
        QVERIFY(!person.action("save")->isEnabled());
        QTest::keyClick(&person.window, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(person.window.isWindowModified());
        QCOMPARE(person.model().tasks().at(task).node.finishedPercentage, 77.0);
        person.page().undoStack()->undo();
    }

    void aNewTaskIsCreated()
    {
        Person person;
        person.open(0);
        person.page().tree()->setCurrentIndex(person.model().indexOf(person.positionOf(curing())));
        QTest::keyClick(&person.window, Qt::Key_Insert);
        auto* const editor = person.page().tree()->viewport()->findChild<QLineEdit*>();
        QVERIFY(editor);
        QTest::keyClicks(editor, QStringLiteral("Inspect slab"));
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_VERIFY(person.positionOf(QStringLiteral("Inspect slab")) >= 0);
        Person::answer([](QWidget* dialog) { Person::click(dialog, "save"); });
        person.action("save")->trigger();
        QCOMPARE(person.failures, QStringList());
        const QJsonObject kept = heldTask(m_service, m_planId, QStringLiteral("Inspect slab"));
        QVERIFY(!kept.value(QLatin1String("_id")).toString().isEmpty());
        const int position = person.positionOf(QStringLiteral("Inspect slab"));
        QVERIFY(position >= 0);
        QCOMPARE(person.model().tasks().at(position).node.id, kept.value(QLatin1String("_id")).toString());
        QCOMPARE(person.page().lastDifferences(), QStringList());
    }

    void whoCancelsTheSaveKeepsTheEdits()
    {
        Person person;
        person.open(0);
        person.type(person.positionOf(curing()), TaskColumn::Progress, QStringLiteral("11"));
        const QJsonObject before = heldTask(m_service, m_planId, curing());
        Person::answer([](QWidget* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
        person.action("save")->trigger();
        QVERIFY(person.window.isWindowModified());
        QCOMPARE(heldTask(m_service, m_planId, curing()), before);
        person.page().undoStack()->undo();
    }

    void closingWithEditsAsks()
    {
        Person person;
        person.open(0);
        person.type(person.positionOf(curing()), TaskColumn::Progress, QStringLiteral("12"));
        Person::answer([](QWidget* dialog) { Person::click(dialog, "stay"); });
        QVERIFY(!person.window.close());
        QVERIFY(person.window.isVisible());
        const QJsonObject before = heldTask(m_service, m_planId, curing());
        Person::answer([](QWidget* dialog) { Person::click(dialog, "discard"); });
        QVERIFY(person.window.close());
        QVERIFY(!person.window.isVisible());
        QCOMPARE(heldTask(m_service, m_planId, curing()), before);
    }

    void progressIsReported()
    {
        Person person;
        person.open(0);
        const int task = person.positionOf(curing());
        const QString id = person.model().tasks().at(task).node.id;
        person.page().tree()->setCurrentIndex(person.model().indexOf(task));
        const int before =
            held(m_service, QStringLiteral("task-service/planNodes/%1/responses").arg(id)).array().size();
        Person::answer([](QWidget* dialog) {
            dialog->findChild<QSpinBox*>(QStringLiteral("reportPercentage"))->setValue(60);
            dialog->findChild<QLineEdit*>(QStringLiteral("reportFinish"))->clear();
            Person::click(dialog, "report");
        });
        QTest::keyClick(&person.window, Qt::Key_P, Qt::ControlModifier);
        QCOMPARE(person.failures, QStringList());
        const QJsonArray kept =
            held(m_service, QStringLiteral("task-service/planNodes/%1/responses").arg(id)).array();
        QCOMPARE(kept.size(), before + 1);
        QCOMPARE(kept.last().toObject().value(QLatin1String("percentage")).toInt(), 60);
    }

    void aTaskIsFound()
    {
        Person person;
        person.open(0);
        QTest::keyClick(&person.window, Qt::Key_F, Qt::ControlModifier);
        auto* const search = person.window.findChild<QLineEdit*>(QStringLiteral("search"));
        QTest::keyClicks(search, QStringLiteral("pour"));
        QTest::keyClick(search, Qt::Key_Return);
        const QString first = person.page().tree()->currentIndex().data().toString();
        QVERIFY2(first.contains(QStringLiteral("pour"), Qt::CaseInsensitive), qPrintable(first));
        const QModelIndex place = person.page().tree()->currentIndex();
        QTest::keyClick(search, Qt::Key_Return);
        QVERIFY(person.page().tree()->currentIndex() != place);
    }

    // Last of all, for from the first token on everything needs one.
    void whatAUserMayNotDoIsDisabledWithItsReason()
    {
        const QByteArray token = m_service.createToken(
            QStringLiteral("ann"), QStringLiteral("sample-project"), QStringLiteral("read=all"));
        QVERIFY2(!token.isEmpty(), qPrintable(m_service.failure()));
        NetworkManager::instance().setAccessToken(QString::fromLatin1(token));
        Person person;
        person.open(0);
        QCOMPARE(person.failures, QStringList());
        for (const char* name :
             {"newPlan", "renamePlan", "copyPlan", "deletePlan", "importPlan", "exportPlan", "save",
              "addTask", "addSubtask", "reportProgress", "exportGantt"}) {
            QVERIFY2(!person.action(name)->isEnabled(), name);
            QVERIFY2(person.action(name)->toolTip().contains(QStringLiteral("may not")), name);
        }
        const QModelIndex cell = person.model().indexOf(person.positionOf(curing()), TaskColumn::Start);
        QVERIFY(!(person.model().flags(cell) & Qt::ItemIsEditable));
        QVERIFY(cell.data(Qt::ToolTipRole).toString().contains(QStringLiteral("may not")));
        person.type(person.positionOf(curing()), TaskColumn::Name, QStringLiteral("x"));
        QVERIFY(!person.window.isWindowModified());
        NetworkManager::instance().setAccessToken(QString());
    }
};

QTEST_MAIN(WindowTest)
#include "WindowTest.moc"
