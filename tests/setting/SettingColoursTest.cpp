// Colours of plans and processes: how they are drawn, and that they do not repeat.

#include "ColourKinds.h"
#include "DrawnColours.h"

#include <QtCore/QDateTime>
#include <QtCore/QSet>
#include <QtTest/QtTest>

#include <functional>
#include <thread>

using KvTest::bothKinds;
using KvTest::OwnSetting;
using KvTest::plans;
using KvTest::processes;
using KvTest::SettingFolder;
using Access = KvPlanSettingTestAccess;
using Kind = KvTest::ColourKind;

namespace {

/// Whether the colour that came between two moments is the one that the rule gives for one of them, with
/// these colours taken before.
bool followsTheRule(const QColor& colour, const QSet<QRgb>& taken, qint64 from, qint64 to)
{
    for (qint64 moment = from; moment <= to; ++moment) {
        KvTest::seed(KvTest::seedOf(moment));
        QColor expected = KvTest::drawnColour();
        while (taken.contains(expected.rgba()))
            expected = KvTest::drawnColour();
        if (expected == colour)
            return true;
    }
    return false;
}

/// The first colour of each seed from now on, for longer than a test takes.
QSet<QRgb> firstColoursOfTheNextSeeds()
{
    QSet<QRgb> colours;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    for (qint64 moment = now; moment < now + 50000; ++moment) {
        KvTest::seed(KvTest::seedOf(moment));
        colours.insert(KvTest::drawnColour().rgba());
    }
    return colours;
}

QString key(int number)
{
    return QStringLiteral("key %1").arg(number);
}

} // namespace

class SettingColoursTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theSameKeyKeepsItsColour_data() { bothKinds(); }
    void theSameKeyKeepsItsColour()
    {
        QFETCH(Kind, kind);
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        const QColor a = ((*setting).*kind.get)(QStringLiteral("a"));
        const QColor b = ((*setting).*kind.get)(QString());
        QVERIFY(a != b);
        QCOMPARE(((*setting).*kind.get)(QStringLiteral("a")), a);
        QCOMPARE(((*setting).*kind.get)(QString()), b);
        QCOMPARE(folder.names(), QStringList()); // in memory alone
    }

    void aKnownKeyDrawsNothing_data() { bothKinds(); }
    void aKnownKeyDrawsNothing()
    {
        QFETCH(Kind, kind);
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        ((*setting).*kind.get)(QStringLiteral("a"));
        KvTest::seed(7);
        const int first = KvTest::draw();
        KvTest::seed(7);
        ((*setting).*kind.get)(QStringLiteral("a"));
        ((*setting).*kind.set)(QStringLiteral("b"), Qt::red);
        QCOMPARE(KvTest::draw(), first);
    }

    void drawnByTheRule_data() { bothKinds(); }
    void drawnByTheRule()
    {
        QFETCH(Kind, kind);
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        QSet<QRgb> taken;
        for (int i = 0; i < 200; ++i) {
            KvTest::seed(uint(i)); // whatever the host draws in between
            const qint64 before = QDateTime::currentMSecsSinceEpoch();
            const QColor colour = ((*setting).*kind.get)(key(i));
            QVERIFY(followsTheRule(colour, taken, before, QDateTime::currentMSecsSinceEpoch()));
            taken.insert(colour.rgba());
        }
    }

    void aTakenColourIsDrawnAgainWithoutANewSeed_data()
    {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<bool>("isParsed");
        QTest::newRow("plans, set") << plans << false;
        QTest::newRow("plans, read from JSON") << plans << true;
        QTest::newRow("processes, set") << processes << false;
        QTest::newRow("processes, read from JSON") << processes << true;
    }
    void aTakenColourIsDrawnAgainWithoutANewSeed()
    {
        QFETCH(Kind, kind);
        QFETCH(bool, isParsed);
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        ((*setting).*kind.get)(QStringLiteral("one before"));
        const QSet<QRgb> first = firstColoursOfTheNextSeeds();
        QStringList members;
        for (const QRgb colour : first) {
            const QString name = QString::number(colour);
            members.append(QStringLiteral("\"%1\":\"%1\"").arg(name));
            if (!isParsed)
                ((*setting).*kind.set)(name, QColor(colour));
        }
        if (isParsed)
            kind.fromJson(*setting, QLatin1Char('{') + members.join(QLatin1Char(',')) + QLatin1Char('}'));
        QSet<QRgb> taken = first;
        for (int i = 0; i < 20; ++i) {
            const qint64 before = QDateTime::currentMSecsSinceEpoch();
            const QColor colour = ((*setting).*kind.get)(key(i));
            QVERIFY(!taken.contains(colour.rgba()));
            QVERIFY(followsTheRule(colour, taken, before, QDateTime::currentMSecsSinceEpoch()));
            taken.insert(colour.rgba());
        }
    }

    void aBurst_data() { bothKinds(); }
    void aBurst()
    {
        QFETCH(Kind, kind);
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        QList<QColor> colours;
        QList<qint64> moments;
        for (int i = 0; i < 5000; ++i) {
            moments.append(QDateTime::currentMSecsSinceEpoch());
            colours.append(((*setting).*kind.get)(key(i)));
        }
        moments.append(QDateTime::currentMSecsSinceEpoch());
        QSet<QRgb> taken;
        for (int i = 0; i < colours.size(); ++i) {
            const QColor& colour = colours.at(i);
            QCOMPARE(colour.spec(), QColor::Rgb);
            QCOMPARE(colour.alpha(), 255);
            for (const int part : {colour.red(), colour.green(), colour.blue()})
                QVERIFY2(part >= 30 && part <= 229, qPrintable(colour.name()));
            QVERIFY2(!taken.contains(colour.rgba()), qPrintable(key(i)));
            QVERIFY2(followsTheRule(colour, taken, moments.at(i), moments.at(i + 1)), qPrintable(key(i)));
            taken.insert(colour.rgba());
            QCOMPARE(((*setting).*kind.get)(key(i)), colour);
        }
        // Keys of one millisecond share a seed, so that most of them had to be drawn again.
        QVERIFY(moments.last() - moments.first() < colours.size());
    }

    void everyPartOfTheRangeComes()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        QSet<int> reds;
        QSet<int> greens;
        QSet<int> blues;
        for (int i = 0; i < 20000; ++i) {
            const QColor colour = setting->GetPlanColor(key(i));
            reds.insert(colour.red());
            greens.insert(colour.green());
            blues.insert(colour.blue());
        }
        for (const QSet<int>& parts : {reds, greens, blues})
            QVERIFY2(parts.contains(30) && parts.contains(229), qPrintable(QString::number(parts.size())));
    }

    void aSetColourIsReturnedAsItIs_data()
    {
        QTest::addColumn<QColor>("colour");
        QTest::newRow("opaque") << QColor(1, 2, 3);
        QTest::newRow("half transparent") << QColor(1, 2, 3, 128);
        QTest::newRow("transparent") << QColor(0, 0, 0, 0);
        QTest::newRow("invalid") << QColor();
        QTest::newRow("hue") << QColor::fromHsv(120, 30, 40, 50);
        QTest::newRow("print") << QColor::fromCmyk(1, 2, 3, 4);
    }
    void aSetColourIsReturnedAsItIs()
    {
        QFETCH(QColor, colour);
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        for (const Kind& kind : {plans, processes}) {
            ((*setting).*kind.set)(QStringLiteral("a"), colour);
            ((*setting).*kind.set)(QStringLiteral("b"), colour);
            QCOMPARE(((*setting).*kind.get)(QStringLiteral("a")), colour);
            QCOMPARE(((*setting).*kind.get)(QStringLiteral("b")), colour); // also one that is taken
            ((*setting).*kind.set)(QStringLiteral("a"), Qt::blue);
            QCOMPARE(((*setting).*kind.get)(QStringLiteral("a")), QColor(Qt::blue));
            QCOMPARE(((*setting).*kind.get)(QStringLiteral("b")), colour);
        }
    }

    void clearedColoursAreDrawnAnew_data() { bothKinds(); }
    void clearedColoursAreDrawnAnew()
    {
        QFETCH(Kind, kind);
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        ((*setting).*kind.set)(QStringLiteral("a"), Qt::red);
        ((*setting).*kind.clear)();
        QCOMPARE(kind.toJson(*setting), QStringLiteral("{}"));
        const qint64 before = QDateTime::currentMSecsSinceEpoch();
        const QColor colour = ((*setting).*kind.get)(QStringLiteral("a"));
        QVERIFY(followsTheRule(colour, {}, before, QDateTime::currentMSecsSinceEpoch()));

        // A colour that went is free again.
        const QSet<QRgb> first = firstColoursOfTheNextSeeds();
        for (const QRgb taken : first)
            ((*setting).*kind.set)(QString::number(taken), QColor(taken));
        ((*setting).*kind.clear)();
        QVERIFY(first.contains(((*setting).*kind.get)(QStringLiteral("a")).rgba()));
    }

    void aReplacedColourIsFreeAgain_data() { bothKinds(); }
    void aReplacedColourIsFreeAgain()
    {
        QFETCH(Kind, kind);
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        ((*setting).*kind.get)(QStringLiteral("counted from here on"));
        const QSet<QRgb> first = firstColoursOfTheNextSeeds();
        for (const QRgb taken : first) {
            ((*setting).*kind.set)(QString::number(taken), QColor(taken));
            ((*setting).*kind.set)(QString::number(taken), Qt::black);
        }
        QVERIFY(first.contains(((*setting).*kind.get)(QStringLiteral("a")).rgba()));
    }

    void twoKeysOfOneColourAndOneGoes_data() { bothKinds(); }
    void twoKeysOfOneColourAndOneGoes()
    {
        QFETCH(Kind, kind);
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        ((*setting).*kind.get)(QStringLiteral("counted from here on"));
        const QSet<QRgb> first = firstColoursOfTheNextSeeds();
        for (const QRgb taken : first) {
            ((*setting).*kind.set)(QString::number(taken), QColor(taken));
            ((*setting).*kind.set)(QStringLiteral("again"), QColor(taken)); // replaces that of the last turn
        }
        QVERIFY(!first.contains(((*setting).*kind.get)(QStringLiteral("a")).rgba()));
    }

    // Equality is QColor's own: alpha and kind count.
    void anAlmostEqualColourTakesNone_data()
    {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<int>("way");
        for (int way = 0; way < 3; ++way) {
            QTest::addRow("plans %d", way) << plans << way;
            QTest::addRow("processes %d", way) << processes << way;
        }
    }
    void anAlmostEqualColourTakesNone()
    {
        QFETCH(Kind, kind);
        QFETCH(int, way);
        const std::function<QColor(QRgb)> alike[] = {
            [](QRgb rgb) { return QColor(qRed(rgb), qGreen(rgb), qBlue(rgb), 254); },
            [](QRgb rgb) { return QColor(rgb).toHsv(); },
            [](QRgb rgb) { return QColor(rgb).toCmyk(); },
        };
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        const QSet<QRgb> first = firstColoursOfTheNextSeeds();
        for (const QRgb rgb : first)
            ((*setting).*kind.set)(QString::number(rgb), alike[way](rgb));
        QVERIFY(first.contains(((*setting).*kind.get)(QStringLiteral("a")).rgba()));
    }

    void plansAndProcessesAreApart()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        const QSet<QRgb> first = firstColoursOfTheNextSeeds();
        for (const QRgb taken : first)
            setting->SetProcessColor(QString::number(taken), QColor(taken));
        QVERIFY(first.contains(setting->GetPlanColor(QStringLiteral("a")).rgba()));
        QVERIFY(!first.contains(setting->GetProcessColor(QStringLiteral("a")).rgba()));
        setting->SetPlanColor(QStringLiteral("b"), Qt::red);
        setting->SetProcessColor(QStringLiteral("b"), Qt::red);
        setting->ClearProcessColor();
        QCOMPARE(setting->GetPlanColor(QStringLiteral("b")), QColor(Qt::red));
    }

    void aRandomColourIsStoredNowhere()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        const QSet<QRgb> first = firstColoursOfTheNextSeeds();
        for (const QRgb taken : first)
            setting->SetPlanColor(QString::number(taken), QColor(taken));
        QVERIFY(first.contains(Access::randomColour(*setting).rgba())); // plans do not count
        QCOMPARE(Access::processColours(*setting), QStringLiteral("{}"));
        for (const QRgb taken : first)
            setting->SetProcessColor(QString::number(taken), QColor(taken));
        const qint64 before = QDateTime::currentMSecsSinceEpoch();
        const QColor colour = Access::randomColour(*setting);
        QVERIFY(followsTheRule(colour, first, before, QDateTime::currentMSecsSinceEpoch()));
        QVERIFY(!first.contains(colour.rgba()));
    }

    void copiesGoOnApart()
    {
        const SettingFolder folder;
        const OwnSetting setting = folder.setting();
        for (int i = 0; i < 100; ++i)
            setting->GetPlanColor(key(i));
        const OwnSetting copy(new KvPlanSetting(*setting));
        QCOMPARE(Access::planColours(*copy), Access::planColours(*setting));
        // In turns, and in two threads.
        const auto ask = [](KvPlanSetting& asked, int from, int to) {
            for (int i = from; i < to; ++i)
                asked.GetPlanColor(key(i));
        };
        for (int i = 100; i < 200; ++i) {
            ask(*setting, i, i + 1);
            ask(*copy, i, i + 1);
        }
        std::thread other(ask, std::ref(*copy), 200, 2000);
        ask(*setting, 200, 2000);
        other.join();
        for (KvPlanSetting* asked : {setting.get(), copy.get()}) {
            QSet<QRgb> colours;
            for (int i = 0; i < 2000; ++i)
                colours.insert(asked->GetPlanColor(key(i)).rgba());
            QCOMPARE(colours.size(), 2000);
        }
    }
};

QTEST_GUILESS_MAIN(SettingColoursTest)
#include "SettingColoursTest.moc"
