// Floor heights: only exceptions are stored, and their JSON.

#include "SettingFolder.h"

#include <QtTest/QtTest>

#include <cmath>
#include <limits>

using Access = KvPlanSettingTestAccess;
using KvTest::OwnSetting;
using KvTest::SettingFolder;

class SettingFloorHeightsTest : public QObject
{
    Q_OBJECT

private:
    const QString f1 = QStringLiteral("F1");

private Q_SLOTS:
    void unknownFloor()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        QCOMPARE(setting->GetFloorHeight(f1), 3.0);
        QCOMPARE(Access::floorHeights(*setting), QStringLiteral("{}"));
    }

    void set_data()
    {
        QTest::addColumn<double>("height");
        QTest::addColumn<bool>("isStored");
        QTest::newRow("3.6") << 3.6 << true;
        QTest::newRow("3.001") << 3.001 << true;
        QTest::newRow("zero") << 0.0 << true;
        QTest::newRow("negative") << -4.5 << true;
        QTest::newRow("minus 3") << -3.0 << true;
        QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << true;
        QTest::newRow("very high") << std::numeric_limits<double>::max() << true;
        QTest::newRow("3") << 3.0 << false;
        QTest::newRow("within the tolerance") << 3.0000000000001 << false;
        QTest::newRow("within it, below") << 2.9999999999999 << false;
        QTest::newRow("just within it") << 3.0000000000029 << false;
        QTest::newRow("just outside") << 3.0000000000031 << true;
        QTest::newRow("just outside, below") << 2.9999999999969 << true;
    }
    void set()
    {
        QFETCH(double, height);
        QFETCH(bool, isStored);
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        for (const double before : {3.0, 7.25}) {
            setting->SetFloorHeight(f1, before);
            setting->SetFloorHeight(f1, height);
            QVERIFY(setting->GetFloorHeight(f1) == (isStored ? height : 3.0)); // to the last bit
            QCOMPARE(Access::floorHeights(*setting) != QLatin1String("{}"), isStored);
        }
        QCOMPARE(folder.names(), QStringList()); // in memory alone
    }

    void noNumber()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        setting->SetFloorHeight(f1, std::nan(""));
        QVERIFY(std::isnan(setting->GetFloorHeight(f1)));
        setting->SetFloorHeight(f1, 3);
        QCOMPARE(setting->GetFloorHeight(f1), 3.0);
    }

    void floorsAreApart()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        setting->SetFloorHeight(f1, 3.6);
        setting->SetFloorHeight(QStringLiteral("F2"), 4.2);
        setting->SetFloorHeight(QString(), 1.0);
        setting->SetFloorHeight(QStringLiteral("F3"), 3.0); // none there to remove
        QCOMPARE(setting->GetFloorHeight(f1), 3.6);
        QCOMPARE(setting->GetFloorHeight(QStringLiteral("f1")), 3.0);
        QCOMPARE(setting->GetFloorHeight(QString()), 1.0);
        QCOMPARE(Access::floorHeights(*setting), QStringLiteral("{\"\":1,\"F1\":3.6,\"F2\":4.2}"));
        setting->ClearFloorHeight();
        for (const QString& key : {f1, QStringLiteral("F2"), QString()})
            QCOMPARE(setting->GetFloorHeight(key), 3.0);
    }

    void toJson()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        setting->SetFloorHeight(QStringLiteral("二层"), 0.1);
        setting->SetFloorHeight(QStringLiteral("F2"), 4.2);
        setting->SetFloorHeight(QStringLiteral("F1"), 3.6);
        QCOMPARE(Access::floorHeights(*setting), QStringLiteral("{\"F1\":3.6,\"F2\":4.2,\"二层\":0.1}"));
    }

    void fromJson_data()
    {
        QTest::addColumn<QString>("json");
        QTest::addColumn<QString>("becomes");
        QTest::newRow("a text and a number")
            << QStringLiteral("{\"A\":\"x\",\"B\":2.5}") << QStringLiteral("{\"A\":0,\"B\":2.5}");
        QTest::newRow("the usual height stays")
            << QStringLiteral("{\"A\":3.0}") << QStringLiteral("{\"A\":3}");
        QTest::newRow("other kinds") << QStringLiteral("{\"A\":null,\"B\":true,\"C\":[1],\"D\":\"2\"}")
                                     << QStringLiteral("{\"A\":0,\"B\":0,\"C\":0,\"D\":0}");
        QTest::newRow("Chinese") << QStringLiteral("{\"二层\":4.2}") << QStringLiteral("{\"二层\":4.2}");
        QTest::newRow("empty text") << QString() << QStringLiteral("{}");
        QTest::newRow("an array") << QStringLiteral("[1]") << QStringLiteral("{}");
        QTest::newRow("half an object") << QStringLiteral("{\"A\":1") << QStringLiteral("{}");
    }
    void fromJson()
    {
        QFETCH(QString, json);
        QFETCH(QString, becomes);
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        setting->SetFloorHeight(QStringLiteral("before"), 9);
        Access::parseFloorHeights(*setting, json);
        QCOMPARE(Access::floorHeights(*setting), becomes);
    }

    void parsedHeights()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        Access::parseFloorHeights(*setting, QStringLiteral("{\"A\":\"x\",\"B\":2.5}"));
        QCOMPARE(setting->GetFloorHeight(QStringLiteral("A")), 0.0);
        QCOMPARE(setting->GetFloorHeight(QStringLiteral("B")), 2.5);
    }
};

QTEST_GUILESS_MAIN(SettingFloorHeightsTest)
#include "SettingFloorHeightsTest.moc"
