// kvplan settings on a settings folder of its own and a scripted service: what it shows and what it
// changes.

#include "KvplanSettingsFixture.h"

#include <support/ScriptedServer.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtTest/QtTest>

using KvTest::Kvplan;
using KvTest::KvplanRun;
using KvTest::Reply;
using KvTest::ScriptedServer;
using KvTest::words;

class KvplanSettingsTest : public KvplanSettingsFixture
{
    Q_OBJECT

private:
    QByteArray fileBytes() const
    {
        QFile file(filePath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static QString colourOf(const KvplanRun& run, int state)
    {
        return run.array().at(state).toObject().value(QLatin1String("color")).toString();
    }

private Q_SLOTS:
    void helpOfEachPart()
    {
        for (const char* part : {"settings", "settings columns", "settings hidden", "settings colors",
                                 "settings simulation", "settings get", "settings set"}) {
            const KvplanRun run = kvplan().run(words(part) + QStringList{QStringLiteral("--help")});
            QCOMPARE(run.exitCode, 0);
            QVERIFY2(
                run.text().startsWith(QStringLiteral("Usage: kvplan %1 [options]").arg(QLatin1String(part))),
                qPrintable(run.text()));
            for (const QString& line : run.text().split(QLatin1Char('\n')))
                QVERIFY2(line.size() <= 80, qPrintable(line));
        }
        QVERIFY(kvplan().run({QStringLiteral("--help")}).text().contains(QLatin1String("\n  settings ")));
    }

    void allWithoutAService()
    {
        const KvplanRun run = kvplan().run(words("settings"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.text(),
                 filePath() + QStringLiteral("\n\n"
                                             "no column widths\n\n"
                                             "hidden columns are kept on the service; none is named\n\n"
                                             "State  Meaning                   Colour\n"
                                             "─────  ────────────────────────  ───────\n"
                                             "    0  Not started               #666666\n"
                                             "    1  Not started (delayed)     #ffb3b3\n"
                                             "    2  In progress               #00cc66\n"
                                             "    3  In progress (delayed)     #ff0000\n"
                                             "    4  Finished                  #0099ff\n"
                                             "    5  Finished (ahead of time)  #cccc00\n"
                                             "    6  Finished (late)           #ff99ff\n"));
        QVERIFY(!QFileInfo::exists(filePath()));
    }

    void allAsJson()
    {
        kvplan().run(words("settings columns 名称=240"));
        ScriptedServer server;
        server.enqueue(Reply::text("{\"value\":[\"Cost\",\"工期\"]}", "application/json"));
        const KvplanRun run = kvplan(server.baseUrl()).run(words("settings --json"));
        QCOMPARE(run.error(), QString());
        const QJsonObject json = run.object();
        QCOMPARE(json.value(QLatin1String("file")).toString(), filePath());
        QCOMPARE(json.value(QLatin1String("columns")).toObject(),
                 (QJsonObject{{QStringLiteral("名称"), 240}}));
        QCOMPARE(json.value(QLatin1String("hidden")).toArray(),
                 (QJsonArray{QStringLiteral("Cost"), QStringLiteral("工期")}));
        QCOMPARE(json.value(QLatin1String("colors")).toArray().size(), 7);
        QCOMPARE(server.complaint(), QString());
        QVERIFY(kvplan().run(words("settings --json")).object().value(QLatin1String("hidden")).isNull());
    }

    void columns()
    {
        QCOMPARE(kvplan().run(words("settings columns")).text(), QStringLiteral("no column widths\n"));
        const KvplanRun run = kvplan().run(words("settings columns 名称=240 a=b=80 Start=1"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(
            run.text(),
            QStringLiteral("Column  Width\n──────  ─────\nStart       1\na=b        80\n名称      240\n"));
        QCOMPARE(fileBytes(),
                 QByteArray("[GanttColumnWidth]\n1\\name=Start\n1\\width=1\n2\\name=\"a=b\"\n2\\width=80\n"
                            "3\\name=\xC3\xFB\xB3\xC6\n3\\width=240\nsize=3\n"));
        // The next run finds them, changes one and forgets another.
        const KvplanRun next = kvplan().run(words("settings columns Start=77 --remove a=b --json"));
        QCOMPARE(next.object(), (QJsonObject{{QStringLiteral("Start"), 77}, {QStringLiteral("名称"), 240}}));
        QCOMPARE(kvplan().run(words("settings columns --json")).object(), next.object());
    }

    void colours()
    {
        const KvplanRun run =
            kvplan().run(words("settings colors 0=#010203 finished=#80ff0000 6=blue --json"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(colourOf(run, 0), QStringLiteral("#010203"));
        QCOMPARE(colourOf(run, 4), QStringLiteral("#80ff0000"));
        QCOMPARE(colourOf(run, 6), QStringLiteral("#0000ff"));
        QCOMPARE(colourOf(run, 5), QStringLiteral("#cccc00"));
        QVERIFY2(fileBytes().startsWith("[SimulateColor]\n1\\color=4278256131\n"), fileBytes().constData());
        QCOMPARE(kvplan().run(words("settings colors --json")).array(), run.array());
        const KvplanRun reset = kvplan().run(words("settings colors --reset 1=#111111 --json"));
        QCOMPARE(colourOf(reset, 0), QStringLiteral("#666666"));
        QCOMPARE(colourOf(reset, 1), QStringLiteral("#111111"));
    }

    void swatches()
    {
        Kvplan program = kvplan();
        const KvplanRun shown = program.runOnTerminal(words("settings colors"), 80);
        QVERIFY2(
            shown.text().contains(QStringLiteral("\x1b[48;2;102;102;102m    \x1b[0m      0  Not started ")),
            qPrintable(shown.text()));
        QCOMPARE(shown.text().count(QLatin1String("\x1b[0m")), 7);
        QVERIFY(!program.run(words("settings colors")).text().contains(QLatin1Char('\x1b')));
        program.setEnvironment(QStringLiteral("NO_COLOR"), QStringLiteral("1"));
        QVERIFY(!program.runOnTerminal(words("settings colors"), 80).text().contains(QLatin1Char('\x1b')));
        program.setEnvironment(QStringLiteral("NO_COLOR"), QString());
        program.setEnvironment(QStringLiteral("TERM"), QStringLiteral("dumb"));
        QVERIFY(!program.runOnTerminal(words("settings colors"), 80).text().contains(QLatin1Char('\x1b')));
        QVERIFY(
            !program.runOnTerminal(words("settings colors --json"), 80).text().contains(QLatin1Char('\x1b')));
    }

    void simulation()
    {
        const KvplanRun none = kvplan().run(words("settings simulation p1"));
        QVERIFY2(none.text().startsWith(QStringLiteral("the plan \"p1\" has the default settings\n")),
                 qPrintable(none.text()));
        QVERIFY(!QFileInfo::exists(filePath()));

        const KvplanRun run = kvplan().run(words(
            "settings simulation p1 DayForS=2.5 TimeStart=2026-03-05T08:00:00 UsePlanTime=false --json"));
        QCOMPARE(run.error(), QString());
        QJsonObject json = run.object();
        QCOMPARE(json.value(QLatin1String("plan")).toString(), QStringLiteral("p1"));
        QCOMPARE(json.value(QLatin1String("isStored")).toBool(), true);
        QCOMPARE(json.value(QLatin1String("DayForS")).toDouble(), 2.5);
        QCOMPARE(json.value(QLatin1String("TimeStart")).toString(),
                 QStringLiteral("2026-03-05T08:00:00.000"));
        QVERIFY(json.value(QLatin1String("TimeFinish")).isNull());
        QCOMPARE(json.value(QLatin1String("UsePlanTime")).toBool(), false);
        QCOMPARE(json.value(QLatin1String("FinishClr")).toBool(), true);
        QCOMPARE(json.size(), 15);

        // Another plan's settings leave those of the first in the file.
        kvplan().run(words("settings simulation p2 FinishClr=false"));
        QCOMPARE(kvplan().run(words("settings simulation p1 --json")).object(), json);
        const KvplanRun text = kvplan().run(words("settings simulation p1 TimeStart="));
        QVERIFY2(
            text.text().contains(QRegularExpression(QStringLiteral("\nTimeStart +start of the simulated"))),
            qPrintable(text.text()));
        QVERIFY(text.text().startsWith(QLatin1String("Setting ")));
        json = kvplan().run(words("settings simulation p2 --json")).object();
        QCOMPARE(json.value(QLatin1String("FinishClr")).toBool(true), false);
        // Settings that are the default ones are settings all the same.
        json = kvplan().run(words("settings simulation p3 FinishClr=true --json")).object();
        QCOMPARE(json.value(QLatin1String("isStored")).toBool(), true);
        QCOMPARE(kvplan().run(words("settings simulation p3 --json")).object(), json);
    }

    void nothingIsWrittenWhereNothingChanged()
    {
        kvplan().run(words("settings columns a=1"));
        kvplan().run(words("settings colors 0=red"));
        kvplan().run(words("settings simulation p1 DayForS=1"));
        const QFileInfo before(filePath());
        const QDateTime time = before.lastModified();
        for (const char* line :
             {"settings", "settings columns", "settings columns a=1", "settings colors 0=#ff0000",
              "settings colors", "settings simulation p1 DayForS=1", "settings simulation p9"})
            QCOMPARE(kvplan().run(words(line)).exitCode, 0);
        QFileInfo after(filePath());
        after.refresh();
        QCOMPARE(after.lastModified(), time);
    }

    void hidden()
    {
        ScriptedServer server;
        const auto stored = [](const QByteArray& value) {
            return Reply::text("{\"value\":" + value + "}", "application/json");
        };
        server.enqueue(stored("[\"a\",\"b\",\"c\"]"));
        server.enqueue(stored("[]"));
        const KvplanRun run =
            kvplan(server.baseUrl())
                .run(words("settings hidden --hide 工期 --hide a --show b --show c --json"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.array(), (QJsonArray{QStringLiteral("a"), QStringLiteral("工期")}));
        QCOMPARE(server.complaint(), QString());
        QCOMPARE(server.requests().first().method, QByteArray("GET"));
        QCOMPARE(server.lastRequest().method, QByteArray("PUT"));
        QCOMPARE(server.lastRequest().target, QByteArray("/user-service/settings/plan_hideHeader"));
        QCOMPARE(server.lastRequest().body, QByteArray("{\"value\":[\"a\",\"工期\"]}"));

        server.reset();
        server.enqueue(stored("[\"a\"]"));
        QCOMPARE(kvplan(server.baseUrl()).run(words("settings hidden --hide a")).text(),
                 QStringLiteral("Hidden column\n─────────────\na\n"));
        QCOMPARE(server.requestCount(), 1); // nothing to send
        server.reset();
        server.enqueue(stored("[\"a\"]"));
        server.enqueue(stored("[]"));
        QCOMPARE(kvplan(server.baseUrl()).run(words("settings hidden --show-all")).text(),
                 QStringLiteral("no hidden columns\n"));
        QCOMPARE(server.lastRequest().body, QByteArray("{\"value\":[]}"));
    }

    void getAndSet_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QByteArray>("shown");
        QTest::newRow("a number") << QByteArray("42") << QByteArray("42\n");
        QTest::newRow("a text") << QByteArray("\"第2期\"") << QByteArray("\"第2期\"\n");
        QTest::newRow("a flag") << QByteArray("true") << QByteArray("true\n");
        QTest::newRow("null") << QByteArray("null") << QByteArray("null\n");
        QTest::newRow("a list") << QByteArray("[1,\"a\"]") << QByteArray("[\n    1,\n    \"a\"\n]\n");
        QTest::newRow("an object") << QByteArray("{\"a\":{}}") << QByteArray("{\n    \"a\": {\n    }\n}\n");
    }
    void getAndSet()
    {
        QFETCH(QByteArray, value);
        QFETCH(QByteArray, shown);
        ScriptedServer server;
        server.enqueue(Reply::text("{\"value\":" + value + "}", "application/json"));
        const QString key = QStringLiteral("my key/1");
        const KvplanRun set =
            kvplan(server.baseUrl())
                .run({QStringLiteral("settings"), QStringLiteral("set"), key, QString::fromUtf8(value)});
        QCOMPARE(set.error(), QString());
        QCOMPARE(set.output, shown);
        QCOMPARE(server.lastRequest().method, QByteArray("PUT"));
        QCOMPARE(server.lastRequest().target, QByteArray("/user-service/settings/my%20key%2F1"));
        QCOMPARE(server.lastRequest().body, "{\"value\":" + value + "}");

        server.enqueue(Reply::text("{\"value\":" + value + "}", "application/json"));
        const KvplanRun get =
            kvplan(server.baseUrl()).run({QStringLiteral("settings"), QStringLiteral("get"), key});
        QCOMPARE(get.error(), QString());
        QCOMPARE(get.output, shown);
        QCOMPARE(server.lastRequest().method, QByteArray("GET"));
        QCOMPARE(server.complaint(), QString());
    }

    void nothingStored()
    {
        ScriptedServer server;
        server.enqueue(Reply::json(QJsonObject()));
        const KvplanRun run = kvplan(server.baseUrl()).run(words("settings get nothing"));
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.output, QByteArray("null\n"));
    }

    void theFolderAsAnOption()
    {
        const QString folder = m_folder->filePath(QStringLiteral("other/deep"));
        const KvplanRun run =
            kvplan().run(words("settings columns a=1 --settings-dir") + QStringList{folder});
        QCOMPARE(run.error(), QString());
        QVERIFY(QFileInfo::exists(folder + QStringLiteral("/PlanSetting.ini")));
        QVERIFY(!QFileInfo::exists(filePath()));
    }

    void labelsInTheUsersLanguage_data()
    {
        QTest::addColumn<QString>("languages");
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("label");
        const QString english = QStringLiteral("Not started");
        const QString chinese = QStringLiteral("未开始");
        QTest::newRow("English") << QString() << QStringLiteral("en_GB.UTF-8") << english;
        QTest::newRow("Chinese") << QString() << QStringLiteral("zh_CN.UTF-8") << chinese;
        QTest::newRow("Taiwan") << QString() << QStringLiteral("zh_TW.UTF-8") << chinese;
        QTest::newRow("none of ours") << QString() << QStringLiteral("de_DE.UTF-8") << english;
        QTest::newRow("none") << QString() << QStringLiteral("C") << english;
        QTest::newRow("Chinese before English")
            << QStringLiteral("zh_CN:en") << QStringLiteral("zh_CN.UTF-8") << chinese;
        QTest::newRow("German, then Chinese")
            << QStringLiteral("de:zh_CN:en") << QStringLiteral("de_DE.UTF-8") << chinese;
        QTest::newRow("English before Chinese")
            << QStringLiteral("en:zh_CN") << QStringLiteral("zh_CN.UTF-8") << english;
    }
    void labelsInTheUsersLanguage()
    {
        QFETCH(QString, languages);
        QFETCH(QString, locale);
        QFETCH(QString, label);
        Kvplan program = kvplan();
        program.setEnvironment(QStringLiteral("LC_ALL"), locale);
        program.setEnvironment(QStringLiteral("LANG"), locale);
        program.setEnvironment(QStringLiteral("LANGUAGE"), languages.isEmpty() ? QString() : languages);
        const KvplanRun run = program.run(words("settings colors --json"));
        QCOMPARE(run.array().first().toObject().value(QLatin1String("label")).toString(), label);
    }
};

QTEST_GUILESS_MAIN(KvplanSettingsTest)
#include "KvplanSettingsTest.moc"
