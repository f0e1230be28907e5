// Construction, copies, and the column widths in the file, byte for byte.

#include "FileState.h"
#include "SettingFolder.h"

#include <QtTest/QtTest>

using Access = KvPlanSettingTestAccess;
using KvTest::FileState;
using KvTest::OwnSetting;
using KvTest::SettingFolder;
using Widths = QMap<QString, int>;

class SettingColumnsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void freshObject()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        QCOMPARE(Access::iniFile(*setting), folder.path() + QStringLiteral("/PlanSetting.ini"));
        QCOMPARE(Access::defaultDirection(*setting), QStringLiteral("从下到上"));
        QCOMPARE(Access::reserved(*setting), 3);
        QCOMPARE(setting->GetGanttHideHeader(), QStringList());
        QCOMPARE(Access::planColours(*setting), QStringLiteral("{}"));
        QCOMPARE(Access::processColours(*setting), QStringLiteral("{}"));
        QCOMPARE(Access::floorHeights(*setting), QStringLiteral("{}"));
        QCOMPARE(setting->GetAllDirection().size(), 8);
        QCOMPARE(setting->GetSimulateColor(), setting->GetDefaultSimulateColor());
        QCOMPARE(folder.names(), QStringList());
    }

    void oneObjectAProcess()
    {
        const SettingFolder folder;
        KvPlanSetting* const setting = KvPlanSetting::instance();
        QVERIFY(setting);
        SetSettingsDirectory(QStringLiteral("/elsewhere"));
        QCOMPARE(KvPlanSetting::instance(), setting);
        QCOMPARE(Access::iniFile(*setting), folder.file());
    }

    void copiesAreSnapshots()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        const auto fill = [](KvPlanSetting& filled, const QString& key, const QColor& colour) {
            filled.SetPlanColor(key, colour);
            filled.SetProcessColor(key, colour.darker());
            filled.SetFloorHeight(key, colour.red());
            filled.SetGanttColumnWidth({{key, colour.green()}});
            filled.SetSimulateColor({colour});
            TimeLineSet set;
            set.DayForS = colour.blue();
            filled.SetSimulateSetting(key, set);
        };
        const auto told = [](KvPlanSetting& asked) {
            TimeLineSet set;
            const QString key = QStringLiteral("a");
            asked.GetSimulateSetting(key, set);
            return QStringList{Access::iniFile(asked),
                               Access::defaultDirection(asked),
                               QString::number(Access::reserved(asked)),
                               asked.GetAllDirection().join(QLatin1Char(',')),
                               Access::planColours(asked),
                               Access::processColours(asked),
                               Access::floorHeights(asked),
                               QString::number(asked.GetSimulateColor().size()),
                               QString::number(asked.GetSimulateColor().value(0).rgba()),
                               QString::number(asked.GetDefaultSimulateColor().size()),
                               Access::timeLineText(asked, set)};
        };
        fill(*setting, QStringLiteral("a"), QColor(1, 2, 3));
        const QStringList before = told(*setting);

        const OwnSetting copy(new KvPlanSetting(*setting));
        const OwnSetting assigned = folder.setting();
        *assigned = *setting;
        QCOMPARE(told(*copy), before);
        QCOMPARE(told(*assigned), before);

        // The widths last written were copied too: the same ones are not written again.
        const FileState file(folder.file());
        copy->SetGanttColumnWidth({{QStringLiteral("a"), 2}});
        assigned->SetGanttColumnWidth({{QStringLiteral("a"), 2}});
        QCOMPARE(FileState(folder.file()), file);

        fill(*setting, QStringLiteral("a"), QColor(4, 5, 6));
        QVERIFY(told(*setting) != before);
        QCOMPARE(told(*copy), before);
        QCOMPARE(told(*assigned), before);
        fill(*copy, QStringLiteral("a"), QColor(7, 8, 9));
        QCOMPARE(told(*assigned), before);
    }

    void bytesOfTheFile()
    {
        const SettingFolder folder;
        folder.setting()->SetGanttColumnWidth({{QStringLiteral("名称"), 240},
                                               {QStringLiteral("Start, planned; \"x\"=\\\t"), 100},
                                               {QStringLiteral("@Cost"), 1},
                                               {QString(), -7}});
        QCOMPARE(folder.bytes(), QByteArray("[GanttColumnWidth]\n"
                                            "1\\name=\n"
                                            "1\\width=-7\n"
                                            "2\\name=@@Cost\n"
                                            "2\\width=1\n"
                                            "3\\name=\"Start, planned; \\\"x\\\"=\\\\\\t\"\n"
                                            "3\\width=100\n"
                                            "4\\name=\xC3\xFB\xB3\xC6\n" // 名称 in GB2312
                                            "4\\width=240\n"
                                            "size=4\n"));
        QCOMPARE(folder.names(), QStringList{QStringLiteral("PlanSetting.ini")});
    }

    void writtenIsRead()
    {
        const SettingFolder folder;
        Widths written{{QStringLiteral("Start, planned; \"x\"=\\\n%41"), 100},
                       {QString(), 7},
                       {QStringLiteral("@Invalid()"), 3},
                       {QStringLiteral(" spaces "), 4}};
        for (int i = 0; i < 300; ++i)
            written.insert(QStringLiteral("第%1列").arg(i), i + 1);
        folder.setting()->SetGanttColumnWidth(written);
        Widths read;
        SettingFolder(folder.bytes()).setting()->GetGanttColumnWidth(read);
        QCOMPARE(read, written);
    }

    void handWritten_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<Widths>("widths");
        const QString name = QStringLiteral("名称");
        QTest::newRow("Chinese in GB2312")
            << QByteArray("[GanttColumnWidth]\r\nsize=1\r\n1\\name=\xC3\xFB\xB3\xC6\r\n1\\width=77\r\n")
            << Widths{{name, 77}};
        QTest::newRow("in quotes")
            << QByteArray("[GanttColumnWidth]\n1\\name=\"\xC3\xFB\xB3\xC6\"\n1\\width=\"77\"\nsize=1\n")
            << Widths{{name, 77}};
        QTest::newRow("as an escape")
            << QByteArray("[GanttColumnWidth]\n1\\name=\\x540d\\x79f0\n1\\width=77\nsize=1\n")
            << Widths{{name, 77}};
        QTest::newRow("widths that are none")
            << QByteArray("[GanttColumnWidth]\n1\\name=a\n1\\width=0\n2\\name=b\n2\\width=-5\n"
                          "3\\name=c\n3\\width=wide\n4\\name=d\n5\\name=e\n5\\width=12.5\n6\\name=f\n"
                          "6\\width=1\nsize=6\n")
            << Widths{{QStringLiteral("a"), 100}, {QStringLiteral("b"), 100}, {QStringLiteral("c"), 100},
                      {QStringLiteral("d"), 100}, {QStringLiteral("e"), 100}, {QStringLiteral("f"), 1}};
        QTest::newRow("the later of two of one name")
            << QByteArray("[GanttColumnWidth]\n1\\name=a\n1\\width=10\n2\\name=a\n2\\width=20\nsize=2\n")
            << Widths{{QStringLiteral("a"), 20}};
        QTest::newRow("an entry without a name")
            << QByteArray("[GanttColumnWidth]\n1\\width=10\nsize=1\n") << Widths{{QString(), 10}};
        QTest::newRow("more entries than counted")
            << QByteArray("[GanttColumnWidth]\n1\\name=a\n1\\width=10\n2\\name=b\n2\\width=20\nsize=1\n")
            << Widths{{QStringLiteral("a"), 10}};
        QTest::newRow("fewer entries than counted")
            << QByteArray("[GanttColumnWidth]\n2\\name=b\n2\\width=20\n4\\width=3\nsize=5\n")
            << Widths{{QStringLiteral("b"), 20}, {QString(), 100}};
        QTest::newRow("nothing but the first missing")
            << QByteArray("[GanttColumnWidth]\n2\\name=b\n2\\width=20\nsize=2\n")
            << Widths{{QString(), 100}, {QStringLiteral("b"), 20}};
        QTest::newRow("a nameless entry behind a missing one")
            << QByteArray("[GanttColumnWidth]\n3\\width=3\nsize=3\n") << Widths{{QString(), 3}};
        QTest::newRow("a count beyond all measure")
            << QByteArray("[GanttColumnWidth]\n1\\name=a\n1\\width=10\nsize=2147483647\n")
            << Widths{{QStringLiteral("a"), 10}, {QString(), 100}};
        QTest::newRow("an entry beyond all measure, too")
            << QByteArray("[GanttColumnWidth]\n1\\name=a\n2147483647\\name=z\nsize=2147483647\n")
            << Widths{{QStringLiteral("a"), 100}, {QStringLiteral("z"), 100}, {QString(), 100}};
        // The numbers are those of one entry, whose name is that of the plainest one.
        QTest::newRow("the last entry of all, under two numbers")
            << QByteArray("[GanttColumnWidth]\n2147483647\\name=z\n2147483647\\width=3\n02147483647\\name=y\n"
                          "size=2147483647\n")
            << Widths{{QString(), 100}, {QStringLiteral("z"), 3}};
        for (const char* size : {"0", "-3", "many", ""})
            QTest::addRow("count \"%s\"", size)
                << QByteArray("[GanttColumnWidth]\n1\\name=a\n1\\width=10\nsize=").append(size).append("\n")
                << Widths();
        QTest::newRow("no count") << QByteArray("[GanttColumnWidth]\n1\\name=a\n1\\width=10\n") << Widths();
        QTest::newRow("no such array") << QByteArray("[Other]\nsize=1\n1\\name=a\n") << Widths();
        QTest::newRow("a list where a name stands") // a comma outside quotes makes one, and it has no text
            << QByteArray("[GanttColumnWidth]\n1\\name=a, b\n1\\width=10\nsize=1\n")
            << Widths{{QString(), 10}};
    }

    void handWritten()
    {
        QFETCH(QByteArray, file);
        QFETCH(Widths, widths);
        const SettingFolder folder(file);
        Widths read;
        folder.setting()->GetGanttColumnWidth(read);
        QCOMPARE(read, widths);
        QCOMPARE(folder.bytes(), file);
    }

    void whatTheFileLacksStays()
    {
        const SettingFolder folder;
        folder.setting()->SetGanttColumnWidth({{QStringLiteral("a"), 10}});
        const OwnSetting setting = folder.setting();
        Widths widths{{QStringLiteral("a"), 1}, {QStringLiteral("b"), 2}};
        setting->GetGanttColumnWidth(widths);
        const Widths both{{QStringLiteral("a"), 10}, {QStringLiteral("b"), 2}};
        QCOMPARE(widths, both);

        // The whole map counts as read, so that it is not written.
        const FileState file(folder.file());
        setting->SetGanttColumnWidth(both);
        QCOMPARE(FileState(folder.file()), file);
        // What was read before counts no more.
        setting->SetGanttColumnWidth({{QStringLiteral("a"), 10}});
        QVERIFY(!(FileState(folder.file()) == file));
    }

    void withoutAFileTheCallersMapCountsAsRead()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        Widths widths{{QStringLiteral("a"), 1}};
        setting->GetGanttColumnWidth(widths);
        QCOMPARE(widths, (Widths{{QStringLiteral("a"), 1}}));
        setting->SetGanttColumnWidth(widths);
        QCOMPARE(folder.names(), QStringList());
    }

    void noneAtFirstWritesNothing()
    {
        const SettingFolder folder;
        folder.setting()->SetGanttColumnWidth({});
        QCOMPARE(folder.names(), QStringList());
    }

    void theSameAgainWritesNothing()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        setting->SetGanttColumnWidth({{QStringLiteral("a"), 10}, {QStringLiteral("b"), 20}});
        const FileState file(folder.file());
        setting->SetGanttColumnWidth({{QStringLiteral("b"), 20}, {QStringLiteral("a"), 10}});
        QCOMPARE(FileState(folder.file()), file);
        // Another width, another name, one less: each is a change.
        for (const Widths& other : {Widths{{QStringLiteral("a"), 11}, {QStringLiteral("b"), 20}},
                                    Widths{{QStringLiteral("c"), 11}, {QStringLiteral("b"), 20}},
                                    Widths{{QStringLiteral("c"), 11}}, Widths()}) {
            const FileState before(folder.file());
            setting->SetGanttColumnWidth(other);
            QVERIFY(!(FileState(folder.file()) == before));
            Widths read;
            SettingFolder(folder.bytes()).setting()->GetGanttColumnWidth(read);
            QCOMPARE(read, other);
        }
    }

    void readingWritesNothing()
    {
        const SettingFolder folder;
        const OwnSetting writer = folder.setting();
        writer->SetGanttColumnWidth({{QStringLiteral("a"), 10}});
        writer->SetSimulateSetting(QStringLiteral("p"), TimeLineSet());
        writer->SetSimulateColor({Qt::red});
        const FileState file(folder.file());
        const OwnSetting reader = folder.setting();
        Widths widths;
        TimeLineSet set;
        reader->GetGanttColumnWidth(widths);
        QVERIFY(reader->GetSimulateSetting(QStringLiteral("p"), set));
        QCOMPARE(FileState(folder.file()), file);
        QCOMPARE(folder.names(), QStringList{QStringLiteral("PlanSetting.ini")});
    }

    void otherPartsOfTheFileStay()
    {
        const SettingFolder folder("[Other]\nkey=value\n[GanttColumnWidth]\n1\\name=a\n1\\width=1\nsize=1\n");
        const OwnSetting setting = folder.setting();
        setting->SetGanttColumnWidth({{QStringLiteral("b"), 2}});
        setting->SetSimulateColor({QColor(0, 0, 1)});
        QCOMPARE(folder.bytes(), QByteArray("[GanttColumnWidth]\n1\\name=b\n1\\width=2\nsize=1\n\n"
                                            "[Other]\nkey=value\n\n"
                                            "[SimulateColor]\n1\\color=4278190081\nsize=1\n"));
    }

    void fewerThanBefore()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        setting->SetGanttColumnWidth({{QStringLiteral("a"), 1}, {QStringLiteral("b"), 2}});
        setting->SetGanttColumnWidth({});
        QVERIFY2(folder.bytes().contains("\nsize=0\n"), folder.bytes().constData());
        Widths widths;
        SettingFolder(folder.bytes()).setting()->GetGanttColumnWidth(widths);
        QCOMPARE(widths, Widths());
    }

    void charactersOutsideTheCodec()
    {
        const SettingFolder folder;
        folder.setting()->SetGanttColumnWidth({{QStringLiteral("1 é名"), 10}, // both are in it
                                               {QStringLiteral("2 ตาราง"), 20},
                                               {QStringLiteral("3 🏗"), 30}});
        QCOMPARE(folder.bytes(), QByteArray("[GanttColumnWidth]\n"
                                            "1\\name=1 \xA8\xA6\xC3\xFB\n1\\width=10\n"
                                            "2\\name=2 ?????\n2\\width=20\n"
                                            "3\\name=3 ?\n3\\width=30\n"
                                            "size=3\n"));
        Widths widths;
        SettingFolder(folder.bytes()).setting()->GetGanttColumnWidth(widths);
        QCOMPARE(widths, (Widths{{QStringLiteral("1 é名"), 10},
                                 {QStringLiteral("2 ?????"), 20},
                                 {QStringLiteral("3 ?"), 30}}));
    }

    // Each alone, first of its name and at the end of its line, where a byte that is taken for another would
    // hurt the next line.
    void everyCharacterIsKeptOrLostAlone()
    {
        const SettingFolder folder;
        Widths written;
        const auto name = [](int code, const QString& text) {
            return text + QStringLiteral(" %1 ").arg(code, 5, 16, QLatin1Char('0')) + text;
        };
        for (int code = 1; code < 0x10000; ++code)
            written.insert(name(code, QString(QChar(code))), code);
        folder.setting()->SetGanttColumnWidth(written);
        Widths read;
        SettingFolder(folder.bytes()).setting()->GetGanttColumnWidth(read);
        QCOMPARE(read.size(), written.size());
        int kept = 0;
        for (int code = 1; code < 0x10000; ++code) {
            const bool isKept = read.value(name(code, QString(QChar(code)))) == code;
            const bool isLost = read.value(name(code, QStringLiteral("?"))) == code ||
                                read.value(name(code, QString())) == code;
            QVERIFY2(isKept || isLost, qPrintable(QString::number(code, 16)));
            kept += isKept ? 1 : 0;
        }
        QVERIFY2(kept > 7000, qPrintable(QString::number(kept))); // GB2312 has 7,445 beyond ASCII
    }
};

QTEST_GUILESS_MAIN(SettingColumnsTest)
#include "SettingColumnsTest.moc"
