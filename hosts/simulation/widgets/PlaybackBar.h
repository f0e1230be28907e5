#pragma once

#include "SimulationClock.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QTimer>
#include <QtWidgets/QWidget>

class QDoubleSpinBox;
class QLabel;
class QSlider;
class QToolButton;

/// Plays the simulated period: a slider with the dates at its ends and the date that is shown, play and
/// pause, steps of a day, both ends, the speed, and whether to begin anew at the end. The space bar plays and
/// pauses; the slider's own keys go a day or a week, or to an end.
class PlaybackBar : public QWidget
{
    Q_OBJECT

public:
    explicit PlaybackBar(QWidget* parent = nullptr);

    /// Without a period nothing can be played, and everything is disabled.
    void setPeriod(const SimulationPeriod& period);
    /// As SimulationClock::setSpeed().
    void setSpeed(double daysPerSecond);
    const SimulationClock& clock() const { return m_clock; }
    QDateTime date() const { return m_clock.date(); }
    /// How a date is written in labels.
    static QString dateText(const QDateTime& date);

public Q_SLOTS:
    void setDate(const QDateTime& date);
    void play();
    void pause();
    void togglePlaying();
    void step(double days);
    /// So much time has gone by while it plays; the bar's own timer tells it, and tests do.
    void advance(qint64 milliseconds);

Q_SIGNALS:
    /// The date that is shown is another, however that came.
    void dateChanged(const QDateTime& date);
    void playingChanged(bool isPlaying);
    /// The user wants another speed.
    void speedChanged(double daysPerSecond);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    QToolButton* addButton(const char* name, const QString& text, const QString& toolTip);
    void showClock();
    void showPlaying();
    void tell(const QDateTime& before);

    SimulationClock m_clock;
    QTimer m_timer;
    QElapsedTimer m_sinceTick;
    QToolButton* m_toStart;
    QToolButton* m_back;
    QToolButton* m_play;
    QToolButton* m_forward;
    QToolButton* m_toEnd;
    QToolButton* m_loop;
    QLabel* m_start;
    QSlider* m_slider;
    QLabel* m_finish;
    QLabel* m_date;
    QDoubleSpinBox* m_speed;
    bool m_wasPlaying = false;
};
