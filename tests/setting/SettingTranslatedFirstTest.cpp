// The translator is installed before the object is made: all labels are translated, and some stay so.

#include "SettingFolder.h"
#include "Translations.h"

#include <QtTest/QtTest>

using Access = KvPlanSettingTestAccess;
using namespace KvTest;

class SettingTranslatedFirstTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void labels()
    {
        const SettingFolder folder;
        OwnSetting setting;
        {
            const English english;
            setting = folder.setting();
            QCOMPARE(Access::defaultDirection(*setting), QStringLiteral("Bottom to top"));
            QCOMPARE(setting->GetAllDirection(), englishDirections);
            QCOMPARE(setting->GetSimulateColorTypeStr(), englishStates);
            for (int i = 0; i < englishDirections.size(); ++i) {
                const auto value = Kv::QGrowthType(directionValues[i]);
                QCOMPARE(setting->GetEnumDirByStringDir(englishDirections.at(i)), value);
                QCOMPARE(setting->GetStringDirByEnumDir(value), englishDirections.at(i));
                QCOMPARE(int(setting->GetEnumDirByStringDir(chineseDirections.at(i))), 10);
            }
        }
        // Without the translator: what was fixed stays, what is fresh is Chinese again.
        QCOMPARE(setting->GetAllDirection(), englishDirections);
        QCOMPARE(Access::defaultDirection(*setting), QStringLiteral("Bottom to top"));
        QCOMPARE(setting->GetSimulateColorTypeStr(), englishStates);
        QCOMPARE(setting->GetStringDirByEnumDir(Kv::GrowAppear), QStringLiteral("从无到有"));
        QCOMPARE(setting->GetEnumDirByStringDir(QStringLiteral("从无到有")), Kv::GrowAppear);
        QCOMPARE(setting->GetEnumDirByStringDir(QStringLiteral("Appear")), Kv::GrowBottomToTop);

        // A fresh object has its own language; the states' labels are those of the first call in the process.
        const OwnSetting second = folder.setting();
        QCOMPARE(second->GetAllDirection(), chineseDirections);
        QCOMPARE(second->GetSimulateColorTypeStr(), englishStates);
        // A copy keeps that of its original.
        const OwnSetting copy(new KvPlanSetting(*setting));
        QCOMPARE(copy->GetAllDirection(), englishDirections);
    }

    void everyTextOfTheContext()
    {
        QCOMPARE(KvPlanSetting::tr("从无到有"), QStringLiteral("从无到有"));
        QCOMPARE(KvPlanSetting::trUtf8("unknown"), QStringLiteral("unknown"));
        const Marking marking;
        QCOMPARE(KvPlanSetting::tr("从无到有"), QStringLiteral("KvPlanSetting/从无到有//-1"));
        QCOMPARE(KvPlanSetting::trUtf8("从无到有"), QStringLiteral("KvPlanSetting/从无到有//-1"));
        QCOMPARE(KvPlanSetting::tr("%n", "floors", 3), QStringLiteral("KvPlanSetting/3/floors/3"));
        QCOMPARE(KvPlanSetting::trUtf8("%n", "floors", 3), QStringLiteral("KvPlanSetting/3/floors/3"));
    }
};

QTEST_GUILESS_MAIN(SettingTranslatedFirstTest)
#include "SettingTranslatedFirstTest.moc"
