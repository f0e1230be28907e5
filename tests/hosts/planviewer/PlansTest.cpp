// The list of plans as a person uses it, on the real service.

#include "Person.h"

#include <BarChart.h>
#include <GanttExport.h>
#include <StatisticsPage.h>

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>

#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QTabWidget>

using KvTest::ServiceProcess;

class PlansTest : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    QTemporaryDir m_settings;

    QStringList shown(Person& person) const
    {
        QStringList names;
        for (const KvPlan& plan : person.window.planList()->plans())
            names.append(plan.name);
        return names;
    }

    QStringList kept() const
    {
        QStringList names;
        const QJsonArray plans =
            held(m_service,
                 QStringLiteral("task-service/projects/%1/plans").arg(GetSoftCache()->currentProjectId()))
                .array();
        for (const QJsonValue& plan : plans)
            names.append(plan.toObject().value(QLatin1String("name")).toString());
        names.sort();
        return names;
    }

    static void name(const QString& text)
    {
        Person::answer([text](QWidget* dialog) {
            dialog->findChild<QLineEdit*>(QStringLiteral("planName"))->setText(text);
            QTest::keyClick(dialog, Qt::Key_Return);
        });
    }

    static void chooseFile(const QString& path)
    {
        Person::answer([path](QWidget* dialog) {
            dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(path);
            static_cast<QFileDialog*>(dialog)
                ->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))
                ->setFocus();
            QTest::keyClick(dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")), Qt::Key_Return);
        });
    }

private Q_SLOTS:
    void initTestCase()
    {
        QApplication::setQuitOnLastWindowClosed(false);
        QVERIFY2(!m_service.seed().isEmpty(), qPrintable(m_service.failure()));
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
        KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl());
        SetSettingsDirectory(m_settings.path());
    }

    void init() { GetSoftCache()->setCurrentProjectId(QString::fromLatin1(QTest::currentTestFunction())); }

    void aPlansLife()
    {
        Person person;
        QCOMPARE(shown(person), QStringList());
        for (const char* plan : {"Plan 10", "plan 2", "Other"}) {
            name(QString::fromLatin1(plan));
            person.action("newPlan")->trigger();
        }
        QCOMPARE(person.failures, QStringList());
        QCOMPARE(shown(person),
                 QStringList({QStringLiteral("Other"), QStringLiteral("plan 2"), QStringLiteral("Plan 10")}));
        QCOMPARE(kept(),
                 QStringList({QStringLiteral("Other"), QStringLiteral("Plan 10"), QStringLiteral("plan 2")}));
        QCOMPARE(person.page().plan().name, QStringLiteral("Other")); // the last made is open

        person.window.planList()->select(person.page().plan().id);
        name(QStringLiteral("第3期 (a+b)"));
        person.action("renamePlan")->trigger();
        QVERIFY(kept().contains(QStringLiteral("第3期 (a+b)")));
        QVERIFY(person.window.windowTitle().contains(QStringLiteral("第3期 (a+b)")));

        person.action("copyPlan")->trigger();
        QCOMPARE(kept().size(), 4);

        auto* const filter = person.window.findChild<QLineEdit*>(QStringLiteral("nameFilter"));
        QTest::keyClicks(filter, QStringLiteral("(a+")); // literally, though it would be no pattern
        QTest::keyClick(filter, Qt::Key_Return);
        QCOMPARE(person.failures, QStringList());
        QCOMPARE(shown(person).size(), 2);
        filter->clear();
        auto* const category = person.window.findChild<QLineEdit*>(QStringLiteral("categoryFilter"));
        QTest::keyClicks(category, QStringLiteral("elsewhere"));
        QTest::keyClick(category, Qt::Key_Return);
        QCOMPARE(shown(person), QStringList());
        category->clear();
        person.window.findChild<QCheckBox*>(QStringLiteral("dateFilter"))->setChecked(true);
        QTest::mouseClick(person.window.findChild<QWidget*>(QStringLiteral("find")), Qt::LeftButton);
        QCOMPARE(shown(person).size(), 4); // all were made within the last month

        person.window.planList()->select(person.page().plan().id);
        Person::answer([](QWidget* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
        person.action("deletePlan")->trigger();
        QCOMPARE(kept().size(), 4);
        Person::answer([](QWidget* dialog) { Person::click(dialog, "delete"); });
        person.action("deletePlan")->trigger();
        QCOMPARE(person.failures, QStringList());
        QVERIFY(!kept().contains(QStringLiteral("第3期 (a+b)")));
        QVERIFY(!person.page().hasPlan());
    }

    void aScheduleTravels()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("schedule.json")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(R"({"Name": "总进度", "AllTasks": [
            {"UniqueID": 7, "ID": 1, "Name": "主体", "Start": "2026-03-05T08:00:00", "Finish": "2026-03-12T17:00:00"},
            {"UniqueID": 9, "ID": 2, "Name": "钢筋", "ParentTask": 7, "Start": "2026-03-05T08:00:00",
             "Finish": "2026-03-09T17:00:00"}]})");
        file.close();
        Person person;
        Person::answer([&](QWidget* dialog) {
            dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(file.fileName());
            name(QStringLiteral("总进度 2"));
            QTest::keyClick(dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")), Qt::Key_Return);
        });
        person.action("importPlan")->trigger();
        QCOMPARE(person.failures, QStringList());
        QCOMPARE(kept(), QStringList(QStringLiteral("总进度 2")));
        QCOMPARE(person.model().tasks().size(), 2);
        QCOMPARE(person.model().rowCount(), 1);

        const QString path = folder.filePath(QStringLiteral("out.json"));
        chooseFile(path);
        person.action("exportPlan")->trigger();
        QFile written(path);
        QVERIFY(written.open(QIODevice::ReadOnly));
        const QJsonObject exported = QJsonDocument::fromJson(written.readAll()).object();
        QCOMPARE(exported.value(QLatin1String("Name")).toString(), QStringLiteral("总进度 2"));
        QCOMPARE(exported.value(QLatin1String("AllPlanNodes")).toArray().size(), 2);
    }

    void aFileThatIsNotInOrderIsNotSent()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("broken.json")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(R"({"AllTasks": [{"UniqueID": 7, "ParentTask": 99, "Name": "x"}]})");
        file.close();
        Person person;
        QString told;
        Person::answer([&](QWidget* dialog) {
            dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(file.fileName());
            Person::answer([&told](QWidget* box) {
                told = box->property("informativeText").toString();
                QTest::keyClick(box, Qt::Key_Return);
            });
            QTest::keyClick(dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")), Qt::Key_Return);
        });
        person.action("importPlan")->trigger();
        QVERIFY2(told.contains(QStringLiteral("99")), qPrintable(told));
        QCOMPARE(kept(), QStringList());
    }

    void theChartAsAPicture_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QByteArray>("begins");
        QTest::newRow("png") << QStringLiteral("png") << QByteArray("\x89PNG");
        QTest::newRow("svg") << QStringLiteral("svg") << QByteArray("<?xml");
        QTest::newRow("pdf") << QStringLiteral("pdf") << QByteArray("%PDF");
    }

    void theChartAsAPicture()
    {
        QFETCH(QString, kind);
        QFETCH(QByteArray, begins);
        GetSoftCache()->setCurrentProjectId(QStringLiteral("sample-project"));
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("gantt.") + kind);
        Person person;
        person.open(0);
        chooseFile(path);
        person.action("exportGantt")->trigger();
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray content = file.readAll();
        QVERIFY(content.startsWith(begins));
        QVERIFY(content.size() > 10000);
        if (kind == QLatin1String("svg"))
            QVERIFY(content.contains("Tower crane base"));
        QVERIFY(!exportGantt(person.page(), folder.filePath(QStringLiteral("gantt.doc"))).isEmpty());
        QVERIFY(!exportGantt(person.page(), folder.filePath(QStringLiteral("missing/gantt.png"))).isEmpty());
    }

    void statistics()
    {
        GetSoftCache()->setCurrentProjectId(QStringLiteral("sample-project"));
        Person person;
        person.open(0);
        person.window.tabs()->setCurrentIndex(1);
        QCOMPARE(person.failures, QStringList());
        const QVector<BarChart::Bar> bars = person.window.statisticsPage()->statusChart()->bars();
        int total = 0;
        for (const BarChart::Bar& bar : bars)
            total += bar.total();
        QCOMPARE(total, person.model().tasks().size());
        QVERIFY(!person.window.statisticsPage()->quantityChart()->bars().isEmpty());
        QVERIFY(!person.window.statisticsPage()->statusChart()->accessibleDescription().isEmpty());
    }
};

QTEST_MAIN(PlansTest)
#include "PlansTest.moc"
