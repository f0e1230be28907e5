// The bar that plays the simulation, as a person uses it.

#include "Controls.h"

#include <PlaybackBar.h>

#include <QtTest/QtTest>
#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QSlider>
#include <QtWidgets/QToolButton>

class PlaybackTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingToPlay()
    {
        PlaybackBar bar;
        QSignalSpy dates(&bar, &PlaybackBar::dateChanged);
        QVERIFY(!part<QToolButton>(bar, "play")->isEnabled());
        QVERIFY(!part<QSlider>(bar, "timeline")->isEnabled());
        QCOMPARE(part<QLabel>(bar, "date")->text(), QStringLiteral("No dates to play"));
        bar.play();
        QTest::keyClick(&bar, Qt::Key_Space);
        QVERIFY(!bar.clock().isPlaying());
        QVERIFY(dates.isEmpty());
    }

    void thePeriodIsShown()
    {
        PlaybackBar bar;
        QSignalSpy dates(&bar, &PlaybackBar::dateChanged);
        bar.setPeriod({day(1, 8), day(11, 17)});
        QCOMPARE(dates.size(), 1);
        QCOMPARE(part<QLabel>(bar, "periodStart")->text(), QStringLiteral("2026-03-01"));
        QCOMPARE(part<QLabel>(bar, "periodFinish")->text(), QStringLiteral("2026-03-11"));
        QCOMPARE(part<QLabel>(bar, "date")->text(), QStringLiteral("2026-03-01 08:00"));
        bar.setPeriod({});
        QCOMPARE(dates.size(), 2);
        QVERIFY(!part<QToolButton>(bar, "play")->isEnabled());
    }

    void playAndPause()
    {
        PlaybackBar bar;
        bar.setPeriod({day(1), day(11)});
        bar.setSpeed(2.0);
        QSignalSpy playing(&bar, &PlaybackBar::playingChanged);
        QSignalSpy dates(&bar, &PlaybackBar::dateChanged);
        auto* const button = part<QToolButton>(bar, "play");
        QCOMPARE(button->text(), QStringLiteral("Play"));
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(button->text(), QStringLiteral("Pause"));
        QCOMPARE(button->accessibleName(), QStringLiteral("Pause"));
        bar.advance(1000);
        QCOMPARE(bar.date(), day(3));
        QCOMPARE(dates.last().first().toDateTime(), day(3));
        QCOMPARE(part<QLabel>(bar, "date")->text(), QStringLiteral("2026-03-03 00:00"));
        QCOMPARE(part<QSlider>(bar, "timeline")->value(), 2 * 24 * 60);
        QTest::mouseClick(button, Qt::LeftButton);
        bar.advance(1000);
        QCOMPARE(bar.date(), day(3));
        QCOMPARE(playing.size(), 2);
        QCOMPARE(playing.first().first().toBool(), true);
        QCOMPARE(playing.last().first().toBool(), false);
    }

    void itPlaysByItself()
    {
        PlaybackBar bar;
        bar.setPeriod({day(1), day(2)});
        bar.setSpeed(20.0);
        bar.play();
        QTRY_VERIFY(bar.date() > day(1));
        QTRY_COMPARE(bar.date(), day(2));
        QVERIFY(!bar.clock().isPlaying());
    }

    void itRepeats()
    {
        PlaybackBar bar;
        bar.setPeriod({day(1), day(11)});
        bar.setSpeed(1.0);
        QTest::mouseClick(part<QToolButton>(bar, "loop"), Qt::LeftButton);
        bar.play();
        bar.advance(12000);
        QVERIFY(bar.clock().isPlaying());
        QCOMPARE(bar.date(), day(3));
        QTest::mouseClick(part<QToolButton>(bar, "loop"), Qt::LeftButton);
        bar.advance(12000);
        QVERIFY(!bar.clock().isPlaying());
        QCOMPARE(bar.date(), day(11));
    }

    void buttonsAndKeys()
    {
        PlaybackBar bar;
        bar.setPeriod({day(1, 8), QDateTime(QDate(2026, 3, 11), QTime(17, 30, 20))});
        QTest::mouseClick(part<QToolButton>(bar, "stepForward"), Qt::LeftButton);
        QCOMPARE(bar.date(), day(2, 8));
        QTest::mouseClick(part<QToolButton>(bar, "toEnd"), Qt::LeftButton);
        QCOMPARE(bar.date(), bar.clock().period().finish);
        QTest::mouseClick(part<QToolButton>(bar, "stepBack"), Qt::LeftButton);
        QCOMPARE(bar.date(), bar.clock().period().finish.addDays(-1));
        QTest::mouseClick(part<QToolButton>(bar, "toStart"), Qt::LeftButton);
        QCOMPARE(bar.date(), day(1, 8));
        auto* const slider = part<QSlider>(bar, "timeline");
        QTest::keyClick(slider, Qt::Key_Right);
        QCOMPARE(bar.date(), day(2, 8));
        QTest::keyClick(slider, Qt::Key_PageUp);
        QCOMPARE(bar.date(), day(9, 8));
        QTest::keyClick(slider, Qt::Key_Left);
        QCOMPARE(bar.date(), day(8, 8));
        QTest::keyClick(slider, Qt::Key_End);
        QCOMPARE(bar.date(), bar.clock().period().finish); // its seconds too
        QTest::keyClick(slider, Qt::Key_Home);
        QCOMPARE(bar.date(), day(1, 8));
        QTest::keyClick(slider, Qt::Key_Space);
        QVERIFY(bar.clock().isPlaying());
        QTest::keyClick(slider, Qt::Key_Space);
        QVERIFY(!bar.clock().isPlaying());
    }

    void thePlaybacksSpeed()
    {
        PlaybackBar bar;
        QSignalSpy speeds(&bar, &PlaybackBar::speedChanged);
        bar.setSpeed(3.0);
        QVERIFY(speeds.isEmpty()); // not the user's
        auto* const box = part<QDoubleSpinBox>(bar, "speed");
        QCOMPARE(box->value(), 3.0);
        box->selectAll();
        QTest::keyClicks(box, QStringLiteral("7.5"));
        QTest::keyClick(box, Qt::Key_Return);
        QCOMPARE(speeds.size(), 1);
        QCOMPARE(bar.clock().speed(), 7.5);
    }
};

QTEST_MAIN(PlaybackTest)
#include "PlaybackTest.moc"
