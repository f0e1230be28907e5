// What kvplan settings refuses, and what it tells when the service or the settings file fails.

#include "KvplanSettingsFixture.h"

#include <support/ScriptedServer.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtTest/QtTest>

using KvTest::KvplanRun;
using KvTest::Reply;
using KvTest::ScriptedServer;
using KvTest::words;

class KvplanSettingsFaultsTest : public KvplanSettingsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void refused_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("says");
        const auto row = [](const char* line, const char* says) {
            QTest::newRow(line) << QString::fromUtf8(line) << QString::fromUtf8(says);
        };
        row("settings colours", "there are no settings \"colours\"");
        row("settings --rows 2", "nknown option 'rows'");
        row("settings --settings-dir ", "--settings-dir takes a folder, not \"\"");
        row("settings columns Start", "\"Start\" has no \"=\"");
        row("settings columns Start=wide",
            "the width of \"Start\" is a whole number from 1 to 100000, not \"wide\"");
        row("settings columns %2=0", "the width of \"%2\" is a whole number from 1 to 100000, not \"0\"");
        row("settings columns Start=100001", "not \"100001\"");
        row("settings columns 🏗=5", "the settings file cannot hold the name \"🏗\"");
        row("settings columns --remove none", "there is no width of a column \"none\"");
        row("settings colors 7=red", "there is no state \"7\"; states are 0 to 6");
        row("settings colors late=red", "there is no state \"late\"");
        row("settings colors 0=rot", "\"rot\" is no colour; one looks like #ff0000");
        row("settings colors 0", "\"0\" has no \"=\"");
        row("settings simulation", "PLAN is missing");
        row("settings simulation a/b", "\"a/b\" is no plan identifier");
        row("settings simulation p1 Speed=2",
            "there is no setting \"Speed\"; there are DayForS, TimeStart, ");
        row("settings simulation p1 DayForS", "\"DayForS\" has no \"=\"");
        row("settings simulation p1 DayForS=0", "DayForS takes a number above 0, not \"0\"");
        row("settings simulation p1 DayForS=inf", "DayForS takes a number above 0, not \"inf\"");
        row("settings simulation p1 TimeStart=soon", "TimeStart takes a date as in 2026-03-05T08:00:00");
        row("settings simulation p1 FinishClr=%1", "FinishClr takes true or false, not \"%1\"");
        row("settings simulation p1 FinishClr=false DayForS=x", "DayForS takes a number above 0");
        row("settings hidden --hide a", "no server: give --server or set KV_BASE_API");
        row("settings get", "KEY is missing");
        row("settings get k", "no server: give --server");
        row("settings set k", "JSON is missing");
        row("settings set k [ --server http://127.0.0.1:1/", "\"[\" is no JSON value: ");
        row("settings set k 1,2 --server http://127.0.0.1:1/", "\"1,2\" is no JSON value;");
    }
    void refused()
    {
        QFETCH(QString, line);
        QFETCH(QString, says);
        const KvplanRun run = kvplan().run(line.split(QLatin1Char(' ')));
        QCOMPARE(run.faultOfFailure(2), QString());
        QVERIFY2(run.error().contains(says), qPrintable(run.error()));
        QVERIFY(!QFileInfo::exists(filePath()));
    }

    void aHiddenColumnThatIsNone()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonObject()));
        const KvplanRun run = kvplan(server.baseUrl()).run(words("settings hidden --show a"));
        QCOMPARE(run.faultOfFailure(2), QString());
        QVERIFY2(run.error().contains(QLatin1String("there is no hidden column \"a\"")),
                 qPrintable(run.error()));
    }

    void theServiceFails_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("says");
        QTest::newRow("all") << QStringLiteral("settings")
                             << QStringLiteral("cannot read the hidden columns");
        QTest::newRow("hidden") << QStringLiteral("settings hidden --hide a")
                                << QStringLiteral("cannot read the hidden columns");
        QTest::newRow("get") << QStringLiteral("settings get k")
                             << QStringLiteral("cannot read the setting \"k\"");
        QTest::newRow("set") << QStringLiteral("settings set k 1")
                             << QStringLiteral("cannot store the setting \"k\"");
    }
    void theServiceFails()
    {
        QFETCH(QString, line);
        QFETCH(QString, says);
        const KvplanRun run = kvplan(ScriptedServer::refusingUrl()).run(line.split(QLatin1Char(' ')));
        QCOMPARE(run.faultOfFailure(1), QString());
        QVERIFY2(run.error().contains(says), qPrintable(run.error()));
    }

    void theServiceDoesNotTakeTheHiddenColumns()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonObject()));
        server.enqueue(Reply::json(QJsonObject(), 500));
        const KvplanRun run = kvplan(server.baseUrl()).run(words("settings hidden --hide a"));
        QCOMPARE(run.faultOfFailure(1), QString());
        QVERIFY2(run.error().contains(QLatin1String("cannot store the hidden columns")),
                 qPrintable(run.error()));
    }

    void theFileCannotBeWritten()
    {
        QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("PlanSetting.ini"))); // in its place
        for (const char* line :
             {"settings columns a=1", "settings colors 0=red", "settings simulation p1 DayForS=9"}) {
            const KvplanRun run = kvplan().run(words(line));
            QCOMPARE(run.faultOfFailure(3), QString());
            QVERIFY2(
                run.error().contains(QStringLiteral("cannot write the settings file \"%1\"").arg(filePath())),
                qPrintable(run.error()));
        }
    }
};

QTEST_GUILESS_MAIN(KvplanSettingsFaultsTest)
#include "KvplanSettingsFaultsTest.moc"
