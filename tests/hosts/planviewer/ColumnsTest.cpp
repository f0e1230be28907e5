// Columns are as the user left them in the next process, whatever happened to them in the one before.

#include <ColumnLayout.h>
#include <MainWindow.h>
#include <PlanClient.h>
#include <PlanPage.h>
#include <ServiceProcess.h>
#include <TaskColumns.h>
#include <TaskModel.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtTest/QtTest>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QMenu>
#include <QtWidgets/QTreeView>
#include <QtWidgets/QUndoStack>

#include <cstdio>

namespace {

constexpr int width = 187;

void act(const QString& story, MainWindow& window)
{
    PlanPage& page = *window.planPage();
    QHeaderView* const header = page.tree()->header();
    QAction* const finish = page.columns()->menu()->actions().at(TaskColumn::Finish);
    if (story.contains(QLatin1String("resize")))
        header->resizeSection(TaskColumn::Finish, width);
    if (story.contains(QLatin1String("hide")))
        finish->trigger();
    if (story.contains(QLatin1String("show")))
        finish->trigger();
    if (story.contains(QLatin1String("move")))
        header->moveSection(header->visualIndex(TaskColumn::State), 1);
    if (story.contains(QLatin1String("undo"))) {
        page.model()->addTask(TaskList::none, QStringLiteral("Cure"), QString());
        page.undoStack()->undo();
    }
    if (story.contains(QLatin1String("defaults")))
        page.columns()->resetToDefaults();
}

QJsonArray columnsOf(const MainWindow& window)
{
    const QHeaderView* const header = window.planPage()->tree()->header();
    QJsonArray columns;
    for (int column = 0; column < TaskColumn::Count; ++column)
        columns.append(QJsonArray{header->isSectionHidden(column) ? 0 : header->sectionSize(column),
                                  header->visualIndex(column)});
    return columns;
}

// What the program does between its start and its end.
int session(const QString& story)
{
    PlanClient client;
    MainWindow window(&client);
    window.show();
    window.start();
    act(story, window);
    const QByteArray columns = QJsonDocument(columnsOf(window)).toJson(QJsonDocument::Compact);
    if (story.contains(QLatin1String("crash"))) {
        // No farewell; only what was written by itself stays.
        const QString settings = qEnvironmentVariable("KV_SETTINGS_DIR") + QStringLiteral("/planviewer.ini");
        if (!QTest::qWaitFor([&] { return QFile::exists(settings); }))
            return 4;
    } else if (!window.close()) {
        return 5;
    }
    std::fwrite(columns.constData(), 1, size_t(columns.size()), stdout);
    std::fflush(stdout);
    if (story.contains(QLatin1String("crash")))
        std::_Exit(0);
    return 0;
}

} // namespace

class ColumnsTest : public QObject
{
    Q_OBJECT

private:
    KvTest::ServiceProcess m_service;

    QJsonArray run(const QString& story, const QString& settings) const
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("KV_BASE_API"), m_service.baseUrl());
        environment.insert(QStringLiteral("KV_PROJECT_ID"), QStringLiteral("sample-project"));
        environment.insert(QStringLiteral("KV_SETTINGS_DIR"), settings);
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(), {QStringLiteral("session"), story});
        if (!process.waitForFinished(60000) || process.exitCode() != 0)
            qWarning("%s ended with %d", qPrintable(story), process.exitCode());
        return QJsonDocument::fromJson(process.readAllStandardOutput()).array();
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(!m_service.seed().isEmpty(), qPrintable(m_service.failure()));
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
    }

    void columnsStay_data()
    {
        QTest::addColumn<QString>("story");
        QTest::addColumn<bool>("isAsAtFirst");
        QTest::newRow("only a width") << QStringLiteral("resize") << false;
        QTest::newRow("a hidden column") << QStringLiteral("hide") << false;
        QTest::newRow("hidden and shown again keeps its width")
            << QStringLiteral("resize hide show") << false;
        QTest::newRow("hidden and shown again without a width") << QStringLiteral("hide show") << true;
        QTest::newRow("another order") << QStringLiteral("move") << false;
        QTest::newRow("order and a hidden column") << QStringLiteral("move hide") << false;
        QTest::newRow("an edit that is undone") << QStringLiteral("resize move undo") << false;
        QTest::newRow("back to the defaults") << QStringLiteral("resize move hide defaults") << true;
        QTest::newRow("a process that is killed") << QStringLiteral("resize move crash") << false;
    }

    void columnsStay()
    {
        QFETCH(QString, story);
        QFETCH(bool, isAsAtFirst);
        QTemporaryDir settings;
        QTemporaryDir first;
        const QJsonArray untouched = run(QStringLiteral("look"), first.path());
        QCOMPARE(untouched.size(), int(TaskColumn::Count));
        const QJsonArray left = run(story, settings.path());
        QCOMPARE(left == untouched, isAsAtFirst);
        QCOMPARE(run(QStringLiteral("look"), settings.path()), left);
        run(QStringLiteral("defaults"), settings.path()); // the service keeps what is hidden
    }
};

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], "session") == 0)
        return session(QString::fromLocal8Bit(argv[2]));
    ColumnsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "ColumnsTest.moc"
