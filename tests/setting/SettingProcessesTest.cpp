// What a next process finds, what two processes do to each other, and what is left of one that is killed.

#include "FileState.h"
#include "ProbeProcess.h"
#include "SettingFolder.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QtTest>

#include <random>

using KvTest::call;
using KvTest::FileState;
using KvTest::probe;
using KvTest::SettingFolder;

namespace {

QJsonObject widths(const char* json)
{
    return QJsonDocument::fromJson(json).object();
}

const QJsonArray readColumns = call("GetGanttColumnWidth");
const QJsonArray readColours = call("GetSimulateColor");

} // namespace

class SettingProcessesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theNextProcessFindsIt()
    {
        const SettingFolder folder;
        const QJsonArray colours{1, 2, 3, 4, 5, 6, 4294967295.0};
        QCOMPARE(probe(folder.path(), {call("SetGanttColumnWidth", widths("{\"名称\":240,\"Start\":80}")),
                                       call("SetSimulateColor", colours),
                                       call("SetSimulateSetting", QStringLiteral("第2期"), 2.5)}),
                 QJsonArray());
        QCOMPARE(probe(folder.path(),
                       {readColumns, readColours, call("GetSimulateSetting", QStringLiteral("第2期")),
                        call("GetSimulateSetting", QStringLiteral("p1"))}),
                 (QJsonArray{widths("{\"名称\":240,\"Start\":80}"), colours, 2.5, QJsonValue()}));
    }

    void aFolderThatIsNotThereYet()
    {
        const SettingFolder folder;
        const QString deep = folder.path() + QStringLiteral("/not/there/yet");
        QCOMPARE(probe(deep, {readColumns}), QJsonArray{QJsonObject()});
        QVERIFY(!QFileInfo::exists(folder.path() + QStringLiteral("/not")));
        QCOMPARE(probe(deep, {call("SetGanttColumnWidth", widths("{\"a\":1}"))}), QJsonArray());
        QCOMPARE(probe(deep, {readColumns}), QJsonArray{widths("{\"a\":1}")});
    }

    void sixColoursBecomeTheDefaultOnes()
    {
        const SettingFolder folder;
        const QJsonArray six{1, 2, 3, 4, 5, 6};
        QCOMPARE(probe(folder.path(), {call("SetSimulateColor", six), readColours}), QJsonArray{six});
        const QJsonArray found = probe(folder.path(), {readColours});
        QCOMPARE(found.at(0).toArray().size(), 7);
        QCOMPARE(found.at(0).toArray().at(0).toDouble(), 4284900966.0);
    }

    void aFreshProcessDropsOtherPlansUnlessItReadsFirst()
    {
        const SettingFolder folder;
        const QString p1 = QStringLiteral("p1");
        const QString p2 = QStringLiteral("p2");
        const QString p3 = QStringLiteral("p3");
        probe(folder.path(), {call("SetSimulateSetting", p1, 1)});
        QCOMPARE(probe(folder.path(), {call("GetSimulateSetting", p2), call("SetSimulateSetting", p2, 2)}),
                 QJsonArray{QJsonValue()});
        QCOMPARE(probe(folder.path(), {call("GetSimulateSetting", p1), call("GetSimulateSetting", p2)}),
                 (QJsonArray{1, 2}));
        QCOMPARE(probe(folder.path(), {call("SetSimulateSetting", p3, 3)}), QJsonArray());
        QCOMPARE(probe(folder.path(), {call("GetSimulateSetting", p1), call("GetSimulateSetting", p2),
                                       call("GetSimulateSetting", p3)}),
                 (QJsonArray{QJsonValue(), QJsonValue(), 3}));
    }

    void theSameAgainInTheNextProcessWritesNothing()
    {
        const SettingFolder folder;
        const QJsonArray setColumns = call("SetGanttColumnWidth", widths("{\"a\":1}"));
        const QJsonArray setColours = call("SetSimulateColor", QJsonArray{1, 2, 3, 4, 5, 6, 7});
        probe(folder.path(), {setColumns, setColours});
        const FileState file(folder.file());
        probe(folder.path(), {readColumns, setColumns, setColours});
        QCOMPARE(FileState(folder.file()), file);
        QCOMPARE(folder.names(), QStringList{QStringLiteral("PlanSetting.ini")});
        // Without a look at the file the object cannot know, and writes the same once more.
        probe(folder.path(), {setColumns});
        QVERIFY(!(FileState(folder.file()) == file));
        QCOMPARE(folder.bytes(), file.bytes());
    }

    // One process wrote its part while the other had the file in memory already.
    void whatAnotherProcessWroteStays()
    {
        const SettingFolder folder;
        const KvTest::OwnSetting setting = folder.setting();
        QMap<QString, int> none;
        setting->GetGanttColumnWidth(none);
        probe(folder.path(), {call("SetGanttColumnWidth", widths("{\"a\":1}")),
                              call("SetSimulateSetting", QStringLiteral("p1"), 4)});
        setting->SetSimulateColor({Qt::red});
        QCOMPARE(probe(folder.path(), {readColumns, call("GetSimulateSetting", QStringLiteral("p1"))}),
                 (QJsonArray{widths("{\"a\":1}"), 4}));
        QVERIFY(folder.bytes().contains("[SimulateColor]\n1\\color=4294901760\nsize=1\n"));
    }

    void twoWritersAtATime()
    {
        const SettingFolder folder;
        QList<QJsonArray> columns;
        QList<QJsonArray> plans;
        for (int i = 1; i <= 15; ++i) {
            columns.append(call("SetGanttColumnWidth", QJsonObject{{QStringLiteral("a"), i}}));
            plans.append(call("SetSimulateSetting", QStringLiteral("p"), i));
        }
        QProcess one;
        QProcess two;
        KvTest::prepareProbe(one, folder.path(), columns);
        KvTest::prepareProbe(two, folder.path(), plans);
        one.start();
        two.start();
        for (QProcess* process : {&one, &two}) {
            QVERIFY(process->waitForFinished(60000));
            QCOMPARE(process->exitCode(), 0);
        }
        QCOMPARE(probe(folder.path(), {readColumns, call("GetSimulateSetting", QStringLiteral("p"))}),
                 (QJsonArray{widths("{\"a\":15}"), 15}));
        QCOMPARE(folder.names(), QStringList{QStringLiteral("PlanSetting.ini")});
    }

    // Killed at any moment of its writing: what stands is the one file or the other, to the last byte.
    void killedWhileItWrites()
    {
        QByteArray whole[2];
        for (int i = 0; i < 2; ++i) {
            const SettingFolder sample;
            probe(sample.path(), {call("SetManyColumns", i == 0 ? 111 : 2222)});
            whole[i] = sample.bytes();
            QVERIFY(whole[i].size() > 50000);
        }
        const SettingFolder folder;
        std::mt19937 random(5);
        int found[2] = {0, 0};
        for (int round = 0; round < 40; ++round) {
            QProcess process;
            KvTest::prepareProbe(process, folder.path(), {call("SetManyColumnsForEver", 111, 2222)});
            process.start();
            // From the end of some write on, a moment that no two rounds share. One that was killed after it
            // had made its lock file and before it had said whose it is has the next one wait 30 s, as Qt
            // then takes such a file for left behind.
            for (unsigned writes = 1 + random() % 4; writes > 0; --writes) {
                while (!process.canReadLine())
                    QVERIFY2(process.waitForReadyRead(60000), qPrintable(process.errorString()));
                process.readLine();
            }
            QElapsedTimer clock;
            clock.start();
            const qint64 until = qint64(random() % 20000000); // nanoseconds, the time of a write or two
            while (clock.nsecsElapsed() < until)
                ;
            process.kill();
            QVERIFY(process.waitForFinished(30000));
            const QByteArray bytes = folder.bytes();
            QVERIFY2(bytes == whole[0] || bytes == whole[1],
                     qPrintable(QStringLiteral("torn in round %1: %2 bytes").arg(round).arg(bytes.size())));
            ++found[bytes == whole[0] ? 0 : 1];
        }
        QVERIFY2(found[0] > 0 && found[1] > 0,
                 qPrintable(QStringLiteral("%1 and %2").arg(found[0]).arg(found[1])));

        // What a killed process leaves beside the file is in nobody's way.
        QCOMPARE(probe(folder.path(), {call("SetGanttColumnWidth", widths("{\"a\":1}"))}), QJsonArray());
        QCOMPARE(probe(folder.path(), {readColumns}), QJsonArray{widths("{\"a\":1}")});
    }
};

QTEST_GUILESS_MAIN(SettingProcessesTest)
#include "SettingProcessesTest.moc"
