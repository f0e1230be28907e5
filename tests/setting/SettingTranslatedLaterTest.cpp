// The translator is installed when the object stands already: fresh labels are translated, fixed ones are
// not.

#include "SettingFolder.h"
#include "Translations.h"

#include <QtTest/QtTest>

using namespace KvTest;

class SettingTranslatedLaterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void labels()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting(); // asks for the states' labels, too
        const English english;
        QCOMPARE(setting->GetAllDirection(), chineseDirections);
        QCOMPARE(setting->GetSimulateColorTypeStr(), chineseStates);
        for (int i = 0; i < englishDirections.size(); ++i) {
            const auto value = Kv::QGrowthType(directionValues[i]);
            QCOMPARE(setting->GetStringDirByEnumDir(value), englishDirections.at(i));
            QCOMPARE(setting->GetEnumDirByStringDir(englishDirections.at(i)), value);
            // A label that was fixed in the other language maps to the default.
            QCOMPARE(setting->GetEnumDirByStringDir(setting->GetAllDirection().at(i)), Kv::GrowBottomToTop);
        }
        const OwnSetting second = folder.setting();
        QCOMPARE(second->GetAllDirection(), englishDirections);
        QCOMPARE(second->GetSimulateColorTypeStr(), chineseStates); // fixed for the whole process

        const Marking marking; // the last one that was installed is asked first
        QCOMPARE(setting->GetStringDirByEnumDir(Kv::GrowAppear),
                 QStringLiteral("KvPlanSetting/从无到有//-1"));
        QCOMPARE(second->GetAllDirection(), englishDirections);
    }
};

QTEST_GUILESS_MAIN(SettingTranslatedLaterTest)
#include "SettingTranslatedLaterTest.moc"
