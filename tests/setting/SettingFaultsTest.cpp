// Files that are damaged and places that cannot be written: no crash, nothing torn, and the usual answers.

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
using KvTest::OwnSetting;
using KvTest::probe;
using KvTest::SettingFolder;

namespace {

const QJsonArray ordinaryUser = call("BecomeAnOrdinaryUser");
const QJsonArray readColumns = call("GetGanttColumnWidth");
const QJsonArray writeColumns = call("SetGanttColumnWidth", QJsonObject{{QStringLiteral("new"), 9}});
const QByteArray goodFile = "[GanttColumnWidth]\n1\\name=a\n1\\width=7\nsize=1\n\n[SimulateColor]\n"
                            "1\\color=1\n2\\color=2\n3\\color=3\n4\\color=4\n5\\color=5\n6\\color=6\n"
                            "7\\color=7\nsize=7\n\n[SimulateSetting]\n1\\content=\"{\\\"DayForS\\\":8}\"\n"
                            "1\\planId=p1\nsize=1\n";

QByteArray noise(int size, unsigned seed)
{
    std::mt19937 random(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char& byte : bytes)
        byte = char(random() & 0xff);
    return bytes;
}

const QFile::Permissions everybodyReads = QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther;
const QFile::Permissions everybodyEnters =
    everybodyReads | QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther;
const QFile::Permissions everybodyWrites = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;

} // namespace

class SettingFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void damagedFiles_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("a line end") << QByteArray("\n");
        QTest::newRow("noise") << noise(5000, 1);
        QTest::newRow("5 MB of noise") << noise(5000000, 2);
        QTest::newRow("5 MB of one line") << QByteArray(5000000, 'x');
        QTest::newRow("5 MB of sections") << QByteArray("[]\n").repeated(1700000);
        QTest::newRow("5 MB of one list") << "[GanttColumnWidth]\nsize=" + QByteArray("1,").repeated(2500000);
        QTest::newRow("zeros") << QByteArray(5000, '\0');
        QTest::newRow("another kind of file") << QByteArray("{\"GanttColumnWidth\": [{\"name\": \"a\"}]}");
        QTest::newRow("marked as UTF-8") << "\xEF\xBB\xBF" + goodFile;
        QTest::newRow("a section without its end") << QByteArray("[GanttColumnWidth\n1\\name=a\nsize=1");
        QTest::newRow("a count that is a list") << QByteArray("[GanttColumnWidth]\n1\\name=a\nsize=1,2\n");
    }
    void damagedFiles()
    {
        QFETCH(QByteArray, file);
        const SettingFolder folder(file);
        const OwnSetting setting = folder.setting();
        QMap<QString, int> widths{{QStringLiteral("mine"), 5}};
        setting->GetGanttColumnWidth(widths);
        QCOMPARE(widths.value(QStringLiteral("mine")), 5);
        QCOMPARE(setting->GetSimulateColor().size(), 7);
        TimeLineSet set;
        QVERIFY(!setting->GetSimulateSetting(QStringLiteral("no such plan"), set));
        QCOMPARE(folder.bytes(), file);

        // And it can be written again.
        setting->SetGanttColumnWidth({{QStringLiteral("a"), 3}});
        QMap<QString, int> read;
        SettingFolder(folder.bytes()).setting()->GetGanttColumnWidth(read);
        QCOMPARE(read, (QMap<QString, int>{{QStringLiteral("a"), 3}}));
    }

    // Cut off anywhere, what stands before the cut is read.
    void truncatedFiles()
    {
        for (int size = 0; size <= goodFile.size(); ++size) {
            const SettingFolder folder(goodFile.left(size));
            const OwnSetting setting = folder.setting();
            QMap<QString, int> widths;
            setting->GetGanttColumnWidth(widths);
            const bool hasColumns = size >= goodFile.indexOf("size=1") + int(qstrlen("size=1"));
            QCOMPARE(widths,
                     hasColumns ? (QMap<QString, int>{{QStringLiteral("a"), 7}}) : (QMap<QString, int>()));
            const bool hasColours = size >= goodFile.indexOf("size=7") + int(qstrlen("size=7"));
            QCOMPARE(setting->GetSimulateColor(0), hasColours ? QColor(0, 0, 1, 0) : QColor(102, 102, 102));
            TimeLineSet set;
            const bool hasPlan = size >= goodFile.size() - 1;
            QCOMPARE(setting->GetSimulateSetting(QStringLiteral("p1"), set), hasPlan);
            QCOMPARE(set.DayForS, hasPlan ? 8.0 : 0.5);
        }
    }

    void aLargeFile()
    {
        QByteArray file = "[GanttColumnWidth]\n";
        for (int i = 1; i <= 120000; ++i) {
            const QByteArray number = QByteArray::number(i);
            file += number + "\\name=column " + number + '\n' + number + "\\width=" + number + '\n';
        }
        file += "size=120000\n";
        QVERIFY(file.size() > 5000000);
        const SettingFolder folder(file);
        QElapsedTimer clock;
        clock.start();
        QMap<QString, int> widths;
        folder.setting()->GetGanttColumnWidth(widths);
        QCOMPARE(widths.size(), 120000);
        QCOMPARE(widths.value(QStringLiteral("column 120000")), 120000);
        QVERIFY2(clock.elapsed() < 20000,
                 qPrintable(QString::number(clock.elapsed()))); // linear, not quadratic
    }

    void aFolderInPlaceOfTheFile()
    {
        const SettingFolder folder;
        QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("PlanSetting.ini")));
        const OwnSetting setting = folder.setting();
        QMap<QString, int> widths;
        setting->GetGanttColumnWidth(widths);
        QCOMPARE(widths, (QMap<QString, int>()));
        QCOMPARE(setting->GetSimulateColor(), setting->GetDefaultSimulateColor());
        setting->SetGanttColumnWidth({{QStringLiteral("a"), 3}});
        setting->GetGanttColumnWidth(widths);
        QVERIFY(QFileInfo(folder.file()).isDir());
    }

    void aFileInPlaceOfTheFolder()
    {
        const SettingFolder folder(goodFile);
        QCOMPARE(probe(folder.file(),
                       {readColumns, writeColumns, call("GetSimulateSetting", QStringLiteral("p1"))}),
                 (QJsonArray{QJsonObject(), QJsonValue()}));
        QCOMPARE(folder.bytes(), goodFile);
    }

    void whatCannotBeWrittenStays_data()
    {
        QTest::addColumn<bool>("fileIsWritable");
        QTest::addColumn<bool>("folderIsWritable");
        QTest::newRow("a file for reading only") << false << true;
        QTest::newRow("a folder for reading only") << true << false;
        QTest::newRow("both") << false << false;
    }
    void whatCannotBeWrittenStays()
    {
        QFETCH(bool, fileIsWritable);
        QFETCH(bool, folderIsWritable);
        const SettingFolder folder(goodFile);
        QVERIFY(QFile::setPermissions(folder.file(),
                                      fileIsWritable ? everybodyReads | everybodyWrites : everybodyReads));
        QVERIFY(QFile::setPermissions(folder.path(), folderIsWritable ? everybodyEnters | everybodyWrites
                                                                      : everybodyEnters));
        const FileState file(folder.file());
        const QJsonArray told = probe(folder.path(), {ordinaryUser, readColumns, writeColumns,
                                                      call("SetSimulateColor", QJsonArray{1}),
                                                      call("SetSimulateSetting", QStringLiteral("p2"), 2),
                                                      call("GetSimulateSetting", QStringLiteral("p2"))});
        QVERIFY(QFile::setPermissions(folder.path(), everybodyEnters | everybodyWrites)); // so that it can go
        QCOMPARE(told, (QJsonArray{QJsonObject{{QStringLiteral("a"), 7}}, 2})); // in memory it holds
        QCOMPARE(FileState(folder.file()), file);
        QCOMPARE(folder.names(), QStringList{QStringLiteral("PlanSetting.ini")});
    }

    void whatCannotBeReadIsNotThere()
    {
        const SettingFolder folder(goodFile);
        QVERIFY(QFile::setPermissions(folder.file(), QFile::WriteOwner));
        QVERIFY(QFile::setPermissions(folder.path(), everybodyEnters));
        QCOMPARE(probe(folder.path(),
                       {ordinaryUser, readColumns, call("GetSimulateSetting", QStringLiteral("p1"))}),
                 (QJsonArray{QJsonObject(), QJsonValue()}));
    }

    void aFolderWithoutAFileForReadingOnly()
    {
        const SettingFolder folder;
        QVERIFY(QFile::setPermissions(folder.path(), everybodyEnters));
        const QJsonArray told = probe(folder.path(), {ordinaryUser, readColumns, writeColumns});
        QCOMPARE(told, QJsonArray{QJsonObject()});
        QCOMPARE(folder.names(), QStringList());
    }
};

QTEST_GUILESS_MAIN(SettingFaultsTest)
#include "SettingFaultsTest.moc"
