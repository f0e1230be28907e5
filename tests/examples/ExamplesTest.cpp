// The examples as a reader of the documents runs them: on the real service, and without one.

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>
#include <plandata/KvPlanData.h>

#include <ServiceProcess.h>

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

namespace {

struct Run
{
    int exitCode = -1;
    QStringList lines;
};

Run run(const QString& example, const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral(EXAMPLES_DIR "/") + example, arguments);
    Run result;
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
        return result;
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.lines = QString::fromUtf8(process.readAll()).split(QLatin1Char('\n'));
    return result;
}

const QString nowhere = QStringLiteral("http://127.0.0.1:1/");

} // namespace

class ExamplesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void readPlanShowsTheTree();
    void editAndSaveChangesTheService();
    void importScheduleMakesAPlan();
    void importScheduleRefusesWhatIsNone_data();
    void importScheduleRefusesWhatIsNone();
    void settingsKeepWhatTheyShow();
    void withoutAServiceTheySayWhy_data();
    void withoutAServiceTheySayWhy();

private:
    QString schedule(const QJsonObject& plan);

    KvTest::ServiceProcess m_service;
    QTemporaryDir m_folder;
    QString m_planId;
    QString m_projectId;
};

void ExamplesTest::initTestCase()
{
    const QJsonObject seeded = m_service.seed();
    m_planId = seeded.value(QLatin1String("planId")).toString();
    m_projectId = seeded.value(QLatin1String("projectId")).toString();
    QVERIFY2(!m_planId.isEmpty(), qPrintable(m_service.failure()));
    QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
    KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl());
    GetSoftCache()->setCurrentProjectId(m_projectId);
}

QString ExamplesTest::schedule(const QJsonObject& plan)
{
    QFile file(m_folder.filePath(QStringLiteral("schedule.json")));
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(plan).toJson()) < 0)
        return QString();
    return file.fileName();
}

void ExamplesTest::readPlanShowsTheTree()
{
    const Run shown = run(QStringLiteral("read_plan"), {m_service.baseUrl(), m_projectId});
    QCOMPARE(shown.exitCode, 0);
    QCOMPARE(shown.lines.value(0), QStringLiteral("may edit"));
    QVERIFY(shown.lines.value(1).startsWith(m_planId));
    QCOMPARE(shown.lines.value(2), QStringLiteral("1 of 1 plans"));

    KvPlan plan;
    QVERIFY(KvPlanData::instance()->getPlanById(m_planId, plan));
    QCOMPARE(shown.lines.size(), 3 + plan.planNodes.size() + 1); // after the last line's end comes nothing
    const KvPlanNode& phase = plan.planNodes.first();
    const KvPlanNode& floor = plan.planNodes.at(1);
    QCOMPARE(floor.parentTaskId, phase.uniqueId);
    QCOMPARE(shown.lines.value(3), phase.name);
    QCOMPARE(shown.lines.value(4), QStringLiteral("  ") + floor.name);
}

void ExamplesTest::editAndSaveChangesTheService()
{
    QList<KvPlanNode> before;
    QVERIFY(KvPlanData::instance()->getPlanNodesByPlanId(m_planId, before));
    const Run saved = run(QStringLiteral("edit_and_save"), {m_service.baseUrl(), m_projectId, m_planId});
    QVERIFY2(saved.exitCode == 0, qPrintable(saved.lines.join(QLatin1Char('\n'))));
    QCOMPARE(saved.lines.value(0), QStringLiteral("1 to create, 1 to update"));
    const QString id = saved.lines.value(1).section(QLatin1Char(' '), 1, 1).chopped(1);
    QCOMPARE(saved.lines.value(1), QStringLiteral("saved %1, now at 50 %").arg(id));

    KvPlanNode old;
    QVERIFY(KvPlanData::instance()->getPlanNodeFromCacheById(id, old));
    KvPlanNode now;
    QVERIFY(KvPlanData::instance()->getPlanNodeById(id, now));
    QCOMPARE(now.finishDate, old.finishDate.addDays(1));
    QCOMPARE(now.finishedPercentage, 50.0);
    QList<KvPlanNode> after;
    QVERIFY(KvPlanData::instance()->getPlanNodesByPlanId(m_planId, after));
    QCOMPARE(after.size(), before.size() + 1);
    QList<KvPlanNodeResponse> responses;
    QVERIFY(KvPlanData::instance()->getPlanNodeResponses(id, responses));
    QCOMPARE(responses.last().remark, QStringLiteral("half done"));
}

void ExamplesTest::importScheduleMakesAPlan()
{
    const QJsonObject dig{{QStringLiteral("UniqueID"), 1},
                          {QStringLiteral("ID"), 1},
                          {QStringLiteral("Name"), QStringLiteral("Dig")},
                          {QStringLiteral("Start"), QStringLiteral("2026-03-02T08:00:00")}};
    const QJsonObject link{{QStringLiteral("SourceTaskUniqueID"), 1},
                           {QStringLiteral("TargetTaskUniqueID"), 2},
                           {QStringLiteral("Type"), 1}};
    const QJsonObject pour{{QStringLiteral("UniqueID"), 2},
                           {QStringLiteral("ID"), 2},
                           {QStringLiteral("Name"), QStringLiteral("Pour")},
                           {QStringLiteral("Predecessors"), QJsonArray{link}}};
    const QString file = schedule({{QStringLiteral("Name"), QStringLiteral("Imported")},
                                   {QStringLiteral("AllTasks"), QJsonArray{dig, pour}}});
    const Run made = run(QStringLiteral("import_schedule"), {m_service.baseUrl(), m_projectId, file});
    QVERIFY2(made.exitCode == 0, qPrintable(made.lines.join(QLatin1Char('\n'))));
    const QString id = made.lines.value(0).section(QLatin1Char(' '), 1, 1).chopped(1);
    QCOMPARE(made.lines.value(0), QStringLiteral("created %1, \"Imported\", 2 tasks").arg(id));

    KvPlan plan;
    QVERIFY(KvPlanData::instance()->getPlanById(id, plan));
    QCOMPARE(plan.planNodes.size(), 2);
    QCOMPARE(plan.planNodes.first().startDate, QDateTime(QDate(2026, 3, 2), QTime(8, 0)));
    QCOMPARE(plan.planNodes.last().predecessors.value(0).targetPlanNodeUniqueId, QStringLiteral("2"));
    QVERIFY(KvPlanData::instance()->deletePlan(id)); // as the other tests count the plans
}

void ExamplesTest::importScheduleRefusesWhatIsNone_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("says");
    QTest::newRow("no JSON") << QByteArray("{") << "not a schedule: unterminated object";
    QTest::newRow("a list") << QByteArray("[]") << "not a schedule: ";
    QTest::newRow("a circle") << QByteArray(R"({"AllTasks": [{"UniqueID": 1, "ParentTask": 2},
                                                          {"UniqueID": 2, "ParentTask": 1}]})")
                              << "tasks are parents of each other in a circle";
}

void ExamplesTest::importScheduleRefusesWhatIsNone()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, says);
    QFile file(m_folder.filePath(QStringLiteral("wrong.json")));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    const Run made =
        run(QStringLiteral("import_schedule"), {m_service.baseUrl(), m_projectId, file.fileName()});
    QCOMPARE(made.exitCode, 1);
    QVERIFY2(made.lines.value(0).startsWith(says), qPrintable(made.lines.value(0)));
}

void ExamplesTest::settingsKeepWhatTheyShow()
{
    const QStringList arguments{m_service.baseUrl(), m_folder.filePath(QStringLiteral("settings"))};
    const Run first = run(QStringLiteral("settings"), arguments);
    QCOMPARE(first.exitCode, 0);
    QCOMPARE(first.lines.mid(0, 4),
             (QStringList{QStringLiteral("column \"name\": 240"), QStringLiteral("hidden: "),
                          QStringLiteral("simulation: as it comes"), QStringLiteral("days a second: 0.5")}));
    const Run second = run(QStringLiteral("settings"), arguments);
    QCOMPARE(second.exitCode, 0);
    QCOMPARE(second.lines.mid(0, 3),
             (QStringList{QStringLiteral("column \"name\": 260"), QStringLiteral("hidden: remark, slack"),
                          QStringLiteral("days a second: 1")}));
    QCOMPARE(second.lines.value(3), QString::fromUtf8("未开始 #666666"));
}

void ExamplesTest::withoutAServiceTheySayWhy_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("says");
    QTest::newRow("read_plan") << QStringList{nowhere, m_projectId} << "no plans: ";
    QTest::newRow("edit_and_save") << QStringList{nowhere, m_projectId, m_planId} << "no tasks: ";
    QTest::newRow("import_schedule") << QStringList{nowhere, m_projectId, schedule({})} << "not created: ";
}

void ExamplesTest::withoutAServiceTheySayWhy()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, says);
    const Run failed = run(QString::fromLatin1(QTest::currentDataTag()), arguments);
    QCOMPARE(failed.exitCode, 1);
    const QStringList why = failed.lines.filter(says);
    QCOMPARE(why.size(), 1);
    QVERIFY2(why.first().size() > says.size() + 10, qPrintable(why.first()));
}

QTEST_GUILESS_MAIN(ExamplesTest)
#include "ExamplesTest.moc"
