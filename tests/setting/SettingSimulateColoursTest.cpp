// The colours of the simulation's states: defaults, file, byte for byte, and what is not written.

#include "FileState.h"
#include "SettingFolder.h"

#include <QtTest/QtTest>

using Access = KvPlanSettingTestAccess;
using KvTest::FileState;
using KvTest::OwnSetting;
using KvTest::SettingFolder;
using Colours = QList<QColor>;

namespace {

const Colours defaults{QColor(102, 102, 102, 255), QColor(255, 179, 179, 255), QColor(0, 204, 102, 255),
                       QColor(255, 0, 0, 255),     QColor(0, 153, 255, 255),   QColor(204, 204, 0, 255),
                       QColor(255, 153, 255, 255)};

const QStringList defaultTexts{QStringLiteral("4284900966"), QStringLiteral("4294947763"),
                               QStringLiteral("4278242406"), QStringLiteral("4294901760"),
                               QStringLiteral("4278229503"), QStringLiteral("4291611648"),
                               QStringLiteral("4294941183")};

QByteArray fileOf(const QStringList& texts)
{
    QMap<QString, QString> lines; // in the order of text, as keys stand in a file: 10 before 2
    for (int i = 0; i < texts.size(); ++i)
        lines.insert(QString::number(i + 1), texts.at(i));
    QByteArray file = "[SimulateColor]\n";
    for (auto line = lines.constBegin(); line != lines.constEnd(); ++line)
        file += line.key().toLatin1() + "\\color=" + line.value().toLatin1() + '\n';
    return file + "size=" + QByteArray::number(texts.size()) + '\n';
}

} // namespace

class SettingSimulateColoursTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaultsWithoutAFile()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        QCOMPARE(setting->GetDefaultSimulateColor(), defaults);
        QCOMPARE(setting->GetSimulateColor(), defaults);
        for (int i = 0; i < defaults.size(); ++i)
            QCOMPARE(setting->GetSimulateColor(i), defaults.at(i));
        QCOMPARE(folder.names(), QStringList());
    }

    void labels()
    {
        const SettingFolder folder;
        QCOMPARE(
            folder.setting()->GetSimulateColorTypeStr(),
            (QStringList{QStringLiteral("未开始"), QStringLiteral("未开始(延期)"), QStringLiteral("执行中"),
                         QStringLiteral("执行中(延期)"), QStringLiteral("已完成"),
                         QStringLiteral("已完成(提前)"), QStringLiteral("已完成(延期)")}));
    }

    void bytesOfTheFile()
    {
        const SettingFolder folder;
        Colours colours = defaults;
        colours[0] = QColor(1, 2, 3, 4);
        QStringList texts = defaultTexts;
        texts[0] = QStringLiteral("67174915");
        folder.setting()->SetSimulateColor(colours);
        QCOMPARE(folder.bytes(), fileOf(texts));
        const OwnSetting next = SettingFolder(folder.bytes()).setting();
        QCOMPARE(next->GetSimulateColor(), colours);
        QCOMPARE(next->GetSimulateColor(0), QColor(1, 2, 3, 4));
        QCOMPARE(next->GetDefaultSimulateColor(), defaults);
    }

    void theSameAgainWritesNothing()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        setting->SetSimulateColor(defaults);
        QCOMPARE(folder.names(), QStringList());

        const Colours other{Qt::red, Qt::green};
        setting->SetSimulateColor(other);
        const FileState file(folder.file());
        setting->SetSimulateColor(other);
        // Not the colours but their texts are compared: the same red of another kind is no change.
        setting->SetSimulateColor({QColor(Qt::red).toHsv(), Qt::green});
        QCOMPARE(FileState(folder.file()), file);
        setting->SetSimulateColor({Qt::green, Qt::red});
        QVERIFY(!(FileState(folder.file()) == file));
        QCOMPARE(SettingFolder(folder.bytes()).bytes(),
                 fileOf({QStringLiteral("4278255360"), QStringLiteral("4294901760")}));
    }

    void anyNumberIsKeptUntilTheNextProcess_data()
    {
        QTest::addColumn<int>("count");
        for (const int count : {0, 1, 3, 6, 8, 100})
            QTest::addRow("%d", count) << count;
    }
    void anyNumberIsKeptUntilTheNextProcess()
    {
        QFETCH(int, count);
        Colours colours;
        QStringList texts;
        for (int i = 0; i < count; ++i) {
            colours.append(QColor(0, 0, i));
            texts.append(QString::number(4278190080u + unsigned(i)));
        }
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        setting->SetSimulateColor(colours);
        QCOMPARE(setting->GetSimulateColor(), colours);
        QCOMPARE(folder.bytes(), fileOf(texts));
        QCOMPARE(SettingFolder(folder.bytes()).setting()->GetSimulateColor(), defaults);
    }

    void handWritten_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<Colours>("colours");
        QTest::newRow("three") << fileOf(defaultTexts.mid(4)) << defaults;
        QTest::newRow("eight") << fileOf(defaultTexts + QStringList{QStringLiteral("1")}) << defaults;
        QTest::newRow("seven of any text")
            << fileOf({QStringLiteral("1"), QStringLiteral("red"), QString(), QStringLiteral("-1"),
                       QStringLiteral("4294967296"), QStringLiteral("4294967295"), QStringLiteral("#ff0000")})
            << Colours{QColor(0, 0, 1, 0), QColor(0, 0, 0, 0),         QColor(0, 0, 0, 0), QColor(0, 0, 0, 0),
                       QColor(0, 0, 0, 0), QColor(255, 255, 255, 255), QColor(0, 0, 0, 0)};
        QTest::newRow("seven, most of them missing")
            << QByteArray("[SimulateColor]\n4\\color=4294901760\nsize=7\n")
            << Colours{QColor(0, 0, 0, 0), QColor(0, 0, 0, 0), QColor(0, 0, 0, 0), QColor(255, 0, 0),
                       QColor(0, 0, 0, 0), QColor(0, 0, 0, 0), QColor(0, 0, 0, 0)};
        QTest::newRow("more entries than counted")
            << fileOf(defaultTexts.mid(0, 6) + QStringList{QStringLiteral("1"), QStringLiteral("2")})
                   .replace("size=8", "size=7")
            << defaults.mid(0, 6) + Colours{QColor(0, 0, 1, 0)};
        QTest::newRow("a count beyond all measure")
            << QByteArray("[SimulateColor]\n1\\color=1\nsize=2147483647\n") << defaults;
        QTest::newRow("a negative count") << QByteArray("[SimulateColor]\n1\\color=1\nsize=-7\n") << defaults;
    }
    void handWritten()
    {
        QFETCH(QByteArray, file);
        QFETCH(Colours, colours);
        const SettingFolder folder(file);
        const OwnSetting setting = folder.setting();
        QCOMPARE(setting->GetSimulateColor(), colours);
        for (int i = 0; i < colours.size(); ++i)
            QCOMPARE(setting->GetSimulateColor(i), colours.at(i));
        QCOMPARE(folder.bytes(), file);
    }

    void readAgain()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        folder.write(
            fileOf({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"), QStringLiteral("4"),
                    QStringLiteral("5"), QStringLiteral("6"), QStringLiteral("7")}));
        QCOMPARE(setting->GetSimulateColor(), defaults); // once is enough
        Access::initSimulateColour(*setting);
        QCOMPARE(setting->GetSimulateColor(6), QColor(0, 0, 7, 0));
    }
};

QTEST_GUILESS_MAIN(SettingSimulateColoursTest)
#include "SettingSimulateColoursTest.moc"
