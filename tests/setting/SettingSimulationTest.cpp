// Simulation settings of plans, their text and the file, byte for byte; growth directions.

#include "FileState.h"
#include "SettingFolder.h"

#include <QtTest/QtTest>

#include <limits>

using Access = KvPlanSettingTestAccess;
using KvTest::FileState;
using KvTest::OwnSetting;
using KvTest::SettingFolder;

namespace {

const QString defaultText = QStringLiteral(
    "{\"DayForS\":0.5,\"DisplayDelay\":true,\"DisplayStateColor\":true,\"FinishAheadClr\":true,"
    "\"FinishBehindClr\":true,\"FinishClr\":true,\"NonStartClr\":true,\"NotStartDelayClr\":true,"
    "\"ProcessingClr\":true,\"ProcessingDelayClr\":true,\"TimeFinish\":\"\",\"TimeStart\":\"\","
    "\"UsePlanTime\":true}");

using Flag = bool TimeLineSet::*;
const QPair<const char*, Flag> flags[] = {
    {"UsePlanTime", &TimeLineSet::UsePlanTime},
    {"DisplayDelay", &TimeLineSet::DisplayDelay},
    {"DisplayStateColor", &TimeLineSet::DisplayStateColor},
    {"NonStartClr", &TimeLineSet::NonStartClr},
    {"NotStartDelayClr", &TimeLineSet::NotStartDelayClr},
    {"ProcessingClr", &TimeLineSet::ProcessingClr},
    {"ProcessingDelayClr", &TimeLineSet::ProcessingDelayClr},
    {"FinishClr", &TimeLineSet::FinishClr},
    {"FinishAheadClr", &TimeLineSet::FinishAheadClr},
    {"FinishBehindClr", &TimeLineSet::FinishBehindClr},
};

TimeLineSet withSpeed(double daysASecond)
{
    TimeLineSet set;
    set.DayForS = daysASecond;
    return set;
}

QDateTime moment(const char* text)
{
    return QDateTime::fromString(QLatin1String(text), Qt::ISODateWithMs);
}

/// The settings of a plan, as text; null when it has none.
QString stored(KvPlanSetting& setting, const QString& planId)
{
    TimeLineSet set;
    return setting.GetSimulateSetting(planId, set) ? Access::timeLineText(setting, set) : QString();
}

QByteArray entry(int number, const QByteArray& planId, const QString& text)
{
    const QByteArray index = QByteArray::number(number);
    return index + "\\content=\"" + text.toLatin1().replace('"', "\\\"") + "\"\n" + index +
           "\\planId=" + planId + '\n';
}

} // namespace

class SettingSimulationTest : public QObject
{
    Q_OBJECT

private:
    const QString p1 = QStringLiteral("p1");
    const QString p2 = QStringLiteral("p2");

private Q_SLOTS:
    void defaults()
    {
        const TimeLineSet set;
        QCOMPARE(set.DayForS, 0.5);
        QVERIFY(set.TimeStart.isNull());
        QVERIFY(set.TimeFinish.isNull());
        for (const auto& [name, flag] : flags)
            QVERIFY2(set.*flag, name);
    }

    void defaultSetAsText()
    {
        const SettingFolder folder;
        QCOMPARE(Access::timeLineText(*folder.setting(), TimeLineSet()), defaultText);
    }

    void eachFieldAsText()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        for (const auto& [name, flag] : flags) {
            TimeLineSet set;
            set.*flag = false;
            const QString key = QStringLiteral("\"%1\":").arg(QLatin1String(name));
            const QString text = Access::timeLineText(*setting, set);
            QCOMPARE(text,
                     QString(defaultText).replace(key + QLatin1String("true"), key + QLatin1String("false")));
            TimeLineSet read;
            Access::parseTimeLine(*setting, text, read);
            for (const auto& [other, otherFlag] : flags)
                QVERIFY2(read.*otherFlag == (otherFlag != flag), other);
        }
        TimeLineSet set = withSpeed(12.25);
        set.TimeStart = moment("2026-03-05T08:00:00");
        set.TimeFinish = moment("2026-12-31T23:59:59.999");
        QCOMPARE(Access::timeLineText(*setting, set),
                 QString(defaultText)
                     .replace(QLatin1String("\"DayForS\":0.5"), QLatin1String("\"DayForS\":12.25"))
                     .replace(QLatin1String("\"TimeStart\":\"\""),
                              QLatin1String("\"TimeStart\":\"2026-03-05T08:00:00.000\""))
                     .replace(QLatin1String("\"TimeFinish\":\"\""),
                              QLatin1String("\"TimeFinish\":\"2026-12-31T23:59:59.999\"")));
        TimeLineSet read;
        Access::parseTimeLine(*setting, Access::timeLineText(*setting, set), read);
        QCOMPARE(read.DayForS, 12.25);
        QCOMPARE(read.TimeStart, set.TimeStart);
        QCOMPARE(read.TimeFinish, set.TimeFinish);
    }

    void datesComeBack_data()
    {
        QTest::addColumn<QDateTime>("date");
        QTest::newRow("local") << moment("2026-03-05T08:00:00.001");
        QTest::newRow("UTC") << QDateTime(QDate(2026, 3, 5), QTime(8, 0), Qt::UTC);
        QTest::newRow("offset") << QDateTime(QDate(2026, 3, 5), QTime(8, 0), Qt::OffsetFromUTC, -3600 * 5);
        QTest::newRow("long ago") << moment("0001-01-01T00:00:00");
        QTest::newRow("far away") << moment("9999-12-31T23:59:59.999");
        QTest::newRow("not set") << QDateTime();
    }
    void datesComeBack()
    {
        QFETCH(QDateTime, date);
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        TimeLineSet set;
        set.TimeStart = date;
        TimeLineSet read;
        read.TimeStart = read.TimeFinish = QDateTime::currentDateTime();
        Access::parseTimeLine(*setting, Access::timeLineText(*setting, set), read);
        QCOMPARE(read.TimeStart, date);
        QCOMPARE(read.TimeStart.isValid(), date.isValid());
        QVERIFY(!read.TimeFinish.isValid());
    }

    void text_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("becomes"); // as text again
        QTest::newRow("an empty object") << QStringLiteral("{}") << defaultText;
        QTest::newRow("nothing") << QString() << defaultText;
        QTest::newRow("no JSON") << QStringLiteral("DayForS=2") << defaultText;
        QTest::newRow("an array") << QStringLiteral("[1]") << defaultText;
        QTest::newRow("deep") << QString(2000000, QLatin1Char('[')) << defaultText;
        QTest::newRow("mistyped") << QStringLiteral(
                                         "{\"DayForS\":\"2\",\"DisplayDelay\":\"false\",\"FinishClr\":0,"
                                         "\"UsePlanTime\":null,\"TimeStart\":\"soon\",\"TimeFinish\":[]}")
                                  << defaultText;
        QTest::newRow("null dates") << QStringLiteral("{\"TimeStart\":null,\"TimeFinish\":null}")
                                    << defaultText;
        QTest::newRow("a day alone") << QStringLiteral("{\"TimeStart\":\"2026-03-05\"}")
                                     << QString(defaultText)
                                            .replace(
                                                QLatin1String("\"TimeStart\":\"\""),
                                                QLatin1String("\"TimeStart\":\"2026-03-05T00:00:00.000\""));
        QTest::newRow("without milliseconds, with more keys")
            << QStringLiteral("{\"TimeFinish\":\"2026-03-05T08:00:01\",\"Other\":1,\"DayForS\":-2}")
            << QString(defaultText)
                   .replace(QLatin1String("\"TimeFinish\":\"\""),
                            QLatin1String("\"TimeFinish\":\"2026-03-05T08:00:01.000\""))
                   .replace(QLatin1String("0.5"), QLatin1String("-2"));
    }
    void text()
    {
        QFETCH(QString, text);
        QFETCH(QString, becomes);
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        TimeLineSet set = withSpeed(9);
        set.TimeStart = set.TimeFinish = QDateTime::currentDateTime();
        for (const auto& [name, flag] : flags)
            set.*flag = false;
        Access::parseTimeLine(*setting, text, set); // replaces every field
        QCOMPARE(Access::timeLineText(*setting, set), becomes);
    }

    void aPlanWithoutSettings()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        TimeLineSet set = withSpeed(9);
        QVERIFY(!setting->GetSimulateSetting(p1, set));
        QCOMPARE(set.DayForS, 9.0);
        QCOMPARE(folder.names(), QStringList());
    }

    void setThenGet()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        TimeLineSet set = withSpeed(std::numeric_limits<double>::infinity());
        set.TimeStart = QDateTime(QDate(2026, 3, 5), QTime(8, 0, 0, 5), Qt::OffsetFromUTC, 3600);
        set.FinishClr = false;
        setting->SetSimulateSetting(p1, set);
        TimeLineSet got;
        QVERIFY(setting->GetSimulateSetting(p1, got));
        QCOMPARE(got.DayForS, set.DayForS);
        QCOMPARE(got.TimeStart, set.TimeStart);
        QVERIFY(!got.TimeFinish.isValid());
        QVERIFY(!got.FinishClr);
        QVERIFY(got.FinishAheadClr);
        QVERIFY(!setting->GetSimulateSetting(p2, got));
    }

    void bytesOfTheFile()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        setting->SetSimulateSetting(QStringLiteral("第2期"), withSpeed(2));
        setting->SetSimulateSetting(p1, TimeLineSet());
        const QString two = QString(defaultText).replace(QLatin1String("0.5"), QLatin1String("2"));
        QCOMPARE(folder.bytes(), "[SimulateSetting]\n" + entry(1, "p1", defaultText) +
                                     entry(2,
                                           "\xB5\xDA"
                                           "2\xC6\xDA",
                                           two) +
                                     "size=2\n");
        const SettingFolder nextFolder(folder.bytes());
        const OwnSetting next = nextFolder.setting();
        QCOMPARE(stored(*next, p1), defaultText);
        QCOMPARE(stored(*next, QStringLiteral("第2期")), two);
    }

    void handWritten()
    {
        const SettingFolder folder("[SimulateSetting]\n"
                                   "1\\planId=p1\n1\\content={}\n"
                                   "2\\planId=\xB5\xDA\n2\\content=\"{\\\"DayForS\\\":4}\"\n"
                                   "3\\planId=p1\n3\\content=\"{\\\"DayForS\\\":5}\"\n"
                                   "4\\planId=p4\n"
                                   "5\\content=\"{\\\"DayForS\\\":6}\"\n"
                                   "7\\planId=p7\n7\\content=x\n"
                                   "size=6\n");
        const OwnSetting setting = folder.setting();
        const auto text = [](const char* speed) {
            return QString(defaultText).replace(QLatin1String("0.5"), QLatin1String(speed));
        };
        QCOMPARE(stored(*setting, p1), text("5")); // the later of two
        QCOMPARE(stored(*setting, QStringLiteral("第")), text("4"));
        QCOMPARE(stored(*setting, QStringLiteral("p4")), defaultText);
        QCOMPARE(stored(*setting, QString()), defaultText); // the sixth, which is missing, after the fifth
        QCOMPARE(stored(*setting, QStringLiteral("p7")), QString()); // not counted
    }

    void aCountBeyondAllMeasure()
    {
        const SettingFolder folder(
            "[SimulateSetting]\n2000000000\\planId=p1\n2000000000\\content={}\nsize=2147483647\n");
        const OwnSetting setting = folder.setting();
        QCOMPARE(stored(*setting, p1), defaultText);
        QCOMPARE(stored(*setting, QString()), defaultText);
        QCOMPARE(stored(*setting, p2), QString());
    }

    void theFileIsReadWhileNothingIsKnown()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        QCOMPARE(stored(*setting, p1), QString());
        folder.write("[SimulateSetting]\n1\\planId=p1\n1\\content={}\nsize=1\n");
        QCOMPARE(stored(*setting, p1), defaultText); // every call has read until now
        folder.write("[SimulateSetting]\n1\\planId=p1\n1\\content={}\n2\\planId=p2\n2\\content={}\nsize=2\n");
        QCOMPARE(stored(*setting, p2), QString()); // and none does from here on
    }

    void setFirstDropsWhatTheFileHolds()
    {
        const SettingFolder folder(
            "[SimulateSetting]\n1\\planId=p1\n1\\content={}\n2\\planId=p2\n2\\content={}\nsize=2\n");
        folder.setting()->SetSimulateSetting(QStringLiteral("p3"), TimeLineSet());
        const SettingFolder nextFolder(folder.bytes());
        const OwnSetting next = nextFolder.setting();
        QCOMPARE(stored(*next, p1), QString());
        QCOMPARE(stored(*next, p2), QString());
        QCOMPARE(stored(*next, QStringLiteral("p3")), defaultText);
    }

    void setAfterAGetKeepsWhatTheFileHolds()
    {
        const SettingFolder folder(
            "[SimulateSetting]\n1\\planId=p1\n1\\content={}\n2\\planId=p2\n2\\content={}\nsize=2\n");
        const OwnSetting setting = folder.setting();
        QCOMPARE(stored(*setting, QStringLiteral("p3")), QString());
        setting->SetSimulateSetting(QStringLiteral("p3"), TimeLineSet());
        setting->SetSimulateSetting(p1, withSpeed(7));
        const SettingFolder nextFolder(folder.bytes());
        const OwnSetting next = nextFolder.setting();
        QCOMPARE(stored(*next, p1), QString(defaultText).replace(QLatin1String("0.5"), QLatin1String("7")));
        QCOMPARE(stored(*next, p2), defaultText);
        QCOMPARE(stored(*next, QStringLiteral("p3")), defaultText);
    }

    void aFirstSetLeavesOneEntry()
    {
        const SettingFolder folder;
        folder.setting()->SetSimulateSetting(p1, TimeLineSet());
        QCOMPARE(folder.bytes(), "[SimulateSetting]\n" + entry(1, "p1", defaultText) + "size=1\n");
    }

    void directions()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        const QList<QPair<QString, int>> all{
            {QStringLiteral("从左到右"), 4},  {QStringLiteral("从右到左"), 6},
            {QStringLiteral("从前到后"), 0},  {QStringLiteral("从后到前"), 2},
            {QStringLiteral("从上到下"), 8},  {QStringLiteral("从下到上"), 10},
            {QStringLiteral("从无到有"), 12}, {QStringLiteral("从有到无"), 13}};
        QStringList labels;
        for (const auto& [label, value] : all) {
            labels.append(label);
            QCOMPARE(int(setting->GetEnumDirByStringDir(label)), value);
            QCOMPARE(setting->GetStringDirByEnumDir(Kv::QGrowthType(value)), label);
        }
        QCOMPARE(setting->GetAllDirection(), labels);
        for (const QString& other :
             {QString(), QStringLiteral("up"), QStringLiteral("从左到右 "), QStringLiteral("从")})
            QCOMPARE(int(setting->GetEnumDirByStringDir(other)), 10);
        for (const int other : {-1, 1, 3, 5, 7, 9, 11, 14, 1000000})
            QCOMPARE(setting->GetStringDirByEnumDir(Kv::QGrowthType(other)), QString());
    }

    void namesOfTheDirections()
    {
        QCOMPARE(int(Kv::GrowFrontToBack), 0);
        QCOMPARE(int(Kv::GrowBackToFront), 2);
        QCOMPARE(int(Kv::GrowLeftToRight), 4);
        QCOMPARE(int(Kv::GrowRightToLeft), 6);
        QCOMPARE(int(Kv::GrowTopToBottom), 8);
        QCOMPARE(int(Kv::GrowBottomToTop), 10);
        QCOMPARE(int(Kv::GrowAppear), 12);
        QCOMPARE(int(Kv::GrowDisappear), 13);
    }
};

QTEST_GUILESS_MAIN(SettingSimulationTest)
#include "SettingSimulationTest.moc"
