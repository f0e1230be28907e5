// Colours of plans and processes as JSON.

#include "ColourKinds.h"

using KvTest::bothKinds;
using KvTest::OwnSetting;
using KvTest::plans;
using KvTest::processes;
using KvTest::SettingFolder;
using Access = KvPlanSettingTestAccess;
using Kind = KvTest::ColourKind;

class SettingColoursJsonTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void toJson_data() { bothKinds(); }
    void toJson()
    {
        QFETCH(Kind, kind);
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        QCOMPARE(kind.toJson(*setting), QStringLiteral("{}"));
        ((*setting).*kind.set)(QStringLiteral("P1"), QColor(255, 0, 0));
        QCOMPARE(kind.toJson(*setting), QStringLiteral("{\"P1\":\"4294901760\"}"));
        ((*setting).*kind.set)(QStringLiteral("第2期 \"x\""), QColor(0, 0, 1, 0));
        ((*setting).*kind.set)(QStringLiteral("A"), QColor(0, 0, 0, 255));
        QCOMPARE(kind.toJson(*setting),
                 QStringLiteral("{\"A\":\"4278190080\",\"P1\":\"4294901760\",\"第2期 \\\"x\\\"\":\"1\"}"));
    }

    void fromJson_data()
    {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<QString>("json");
        QTest::addColumn<QString>("becomes");
        for (const auto& [kind, name] :
             {std::make_pair(plans, "plans"), std::make_pair(processes, "processes")}) {
            const auto row = [&, kind = kind, name = name](const char* title, const char* json,
                                                           const char* becomes) {
                QTest::addRow("%s: %s", name, title)
                    << kind << QString::fromUtf8(json) << QString::fromUtf8(becomes);
            };
            row("a text and a number", "{\"A\":\"4294901760\",\"B\":5}",
                "{\"A\":\"4294901760\",\"B\":\"0\"}");
            row("no decimal numbers",
                "{\"A\":\"red\",\"B\":\"\",\"C\":\"0x10\",\"D\":null,\"E\":[],\"F\":\"-1\"}",
                "{\"A\":\"0\",\"B\":\"0\",\"C\":\"0\",\"D\":\"0\",\"E\":\"0\",\"F\":\"0\"}");
            row("a number too large", "{\"A\":\"4294967296\"}", "{\"A\":\"0\"}");
            row("the largest number", "{\"A\":\"4294967295\"}", "{\"A\":\"4294967295\"}");
            row("Chinese", "{\"第2期\":\"1\"}", "{\"第2期\":\"1\"}");
            row("empty text", "", "{}");
            row("an array", "[1]", "{}");
            row("half an object", "{\"A\":\"1\"", "{}");
        }
    }
    void fromJson()
    {
        QFETCH(Kind, kind);
        QFETCH(QString, json);
        QFETCH(QString, becomes);
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        ((*setting).*kind.set)(QStringLiteral("before"), Qt::red);
        kind.fromJson(*setting, json);
        QCOMPARE(kind.toJson(*setting), becomes);
    }

    void parsedColours()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        Access::parsePlanColours(*setting, QStringLiteral("{\"A\":\"4294901760\",\"B\":5}"));
        QCOMPARE(setting->GetPlanColor(QStringLiteral("A")), QColor(255, 0, 0, 255));
        QCOMPARE(setting->GetPlanColor(QStringLiteral("B")), QColor(0, 0, 0, 0));
    }
};

QTEST_GUILESS_MAIN(SettingColoursJsonTest)
#include "SettingColoursJsonTest.moc"
