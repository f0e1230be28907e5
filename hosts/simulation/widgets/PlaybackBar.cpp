#include "PlaybackBar.h"

#include <QtCore/QEvent>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QSlider>
#include <QtWidgets/QStyle>
#include <QtWidgets/QToolButton>

#include <algorithm>
#include <limits>

namespace {

constexpr int frameMilliseconds = 16;
constexpr qint64 millisecondsPerMinute = 60 * 1000;
constexpr int minutesPerDay = 24 * 60; // the slider counts minutes
constexpr int minutesPerWeek = 7 * minutesPerDay;

int minutesBetween(const QDateTime& from, const QDateTime& to)
{
    const qint64 minutes = from.msecsTo(to) / millisecondsPerMinute;
    return static_cast<int>(std::clamp<qint64>(minutes, 0, std::numeric_limits<int>::max()));
}

} // namespace

PlaybackBar::PlaybackBar(QWidget* parent)
    : QWidget(parent)
    , m_toStart(addButton("toStart", tr("To the start"), tr("Go to the start of the period")))
    , m_back(addButton("stepBack", tr("A day back"), tr("Go a day back")))
    , m_play(addButton("play", tr("Play"), QString()))
    , m_forward(addButton("stepForward", tr("A day forward"), tr("Go a day forward")))
    , m_toEnd(addButton("toEnd", tr("To the end"), tr("Go to the end of the period")))
    , m_loop(addButton("loop", tr("Repeat"), tr("Begin anew at the end")))
    , m_start(new QLabel)
    , m_slider(new QSlider(Qt::Horizontal))
    , m_finish(new QLabel)
    , m_date(new QLabel)
    , m_speed(new QDoubleSpinBox)
{
    m_toStart->setIcon(style()->standardIcon(QStyle::SP_MediaSkipBackward));
    m_back->setIcon(style()->standardIcon(QStyle::SP_MediaSeekBackward));
    m_forward->setIcon(style()->standardIcon(QStyle::SP_MediaSeekForward));
    m_toEnd->setIcon(style()->standardIcon(QStyle::SP_MediaSkipForward));
    m_loop->setIcon(style()->standardIcon(QStyle::SP_BrowserReload));
    m_loop->setCheckable(true);
    m_slider->setObjectName(QStringLiteral("timeline"));
    m_slider->setAccessibleName(tr("Date of the simulation"));
    m_slider->setSingleStep(minutesPerDay);
    m_slider->setPageStep(minutesPerWeek);
    m_date->setObjectName(QStringLiteral("date"));
    m_date->setAccessibleName(tr("Date that is shown"));
    m_start->setObjectName(QStringLiteral("periodStart"));
    m_finish->setObjectName(QStringLiteral("periodFinish"));
    QFont bold = m_date->font();
    bold.setBold(true);
    m_date->setFont(bold);
    m_speed->setObjectName(QStringLiteral("speed"));
    m_speed->setAccessibleName(tr("Speed, in days of the schedule per second"));
    m_speed->setToolTip(tr("Days of the schedule per second"));
    m_speed->setRange(SimulationClock::slowest, SimulationClock::fastest);
    m_speed->setDecimals(2);
    m_speed->setSingleStep(0.5);
    m_speed->setSuffix(tr(" days/s"));
    m_speed->setKeyboardTracking(false);
    m_speed->setValue(m_clock.speed());

    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(4, 2, 4, 2);
    for (QToolButton* const button : {m_toStart, m_back, m_play, m_forward, m_toEnd, m_loop})
        layout->addWidget(button);
    layout->addWidget(m_start);
    layout->addWidget(m_slider, 1);
    layout->addWidget(m_finish);
    layout->addWidget(m_date);
    layout->addWidget(m_speed);

    connect(m_toStart, &QToolButton::clicked, this, [this] { setDate(m_clock.period().start); });
    connect(m_toEnd, &QToolButton::clicked, this, [this] { setDate(m_clock.period().finish); });
    connect(m_back, &QToolButton::clicked, this, [this] { step(-1.0); });
    connect(m_forward, &QToolButton::clicked, this, [this] { step(1.0); });
    connect(m_play, &QToolButton::clicked, this, &PlaybackBar::togglePlaying);
    connect(m_loop, &QToolButton::toggled, this, [this](bool isOn) { m_clock.setLooping(isOn); });
    connect(m_slider, &QSlider::valueChanged, this, [this](int minutes) {
        // The last minute may be a part of one.
        setDate(minutes == m_slider->maximum()
                    ? m_clock.period().finish
                    : m_clock.period().start.addMSecs(minutes * millisecondsPerMinute));
    });
    connect(m_speed, qOverload<double>(&QDoubleSpinBox::valueChanged), this, [this](double speed) {
        m_clock.setSpeed(speed);
        Q_EMIT speedChanged(speed);
    });
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(frameMilliseconds);
    connect(&m_timer, &QTimer::timeout, this, [this] { advance(m_sinceTick.restart()); });
    setFocusProxy(m_slider);
    showPlaying();
    showClock();
}

QToolButton* PlaybackBar::addButton(const char* name, const QString& text, const QString& toolTip)
{
    auto* const button = new QToolButton(this);
    button->setObjectName(QString::fromLatin1(name));
    button->setText(text);
    button->setAccessibleName(text);
    button->setToolTip(toolTip);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}

QString PlaybackBar::dateText(const QDateTime& date)
{
    return date.toString(QStringLiteral("yyyy-MM-dd hh:mm"));
}

void PlaybackBar::setPeriod(const SimulationPeriod& period)
{
    const QDateTime before = date();
    m_clock.setPeriod(period);
    tell(before);
}

void PlaybackBar::setSpeed(double daysPerSecond)
{
    m_clock.setSpeed(daysPerSecond);
    const QSignalBlocker quiet(m_speed);
    m_speed->setValue(m_clock.speed());
}

void PlaybackBar::setDate(const QDateTime& date)
{
    const QDateTime before = m_clock.date();
    m_clock.setDate(date);
    tell(before);
}

void PlaybackBar::play()
{
    const QDateTime before = date();
    m_clock.play();
    tell(before);
}

void PlaybackBar::pause()
{
    const QDateTime before = date();
    m_clock.pause();
    tell(before);
}

void PlaybackBar::togglePlaying()
{
    if (m_clock.isPlaying())
        pause();
    else
        play();
}

void PlaybackBar::step(double days)
{
    const QDateTime before = date();
    m_clock.step(days);
    tell(before);
}

void PlaybackBar::advance(qint64 milliseconds)
{
    const QDateTime before = date();
    m_clock.advance(milliseconds);
    tell(before);
}

void PlaybackBar::tell(const QDateTime& before)
{
    showClock();
    if (m_clock.isPlaying() != m_wasPlaying) {
        m_wasPlaying = m_clock.isPlaying();
        if (m_wasPlaying) {
            m_sinceTick.start();
            m_timer.start();
        } else {
            m_timer.stop();
        }
        showPlaying();
        Q_EMIT playingChanged(m_wasPlaying);
    }
    if (date() != before)
        Q_EMIT dateChanged(date());
}

void PlaybackBar::showClock()
{
    const SimulationPeriod& period = m_clock.period();
    const bool hasPeriod = period.isValid();
    for (QWidget* const widget :
         std::initializer_list<QWidget*>{m_toStart, m_back, m_play, m_forward, m_toEnd, m_loop, m_slider})
        widget->setEnabled(hasPeriod);
    m_start->setText(hasPeriod ? period.start.date().toString(Qt::ISODate) : QString());
    m_finish->setText(hasPeriod ? period.finish.date().toString(Qt::ISODate) : QString());
    m_date->setText(hasPeriod ? dateText(date()) : tr("No dates to play"));
    const QSignalBlocker quiet(m_slider);
    m_slider->setRange(0, hasPeriod ? minutesBetween(period.start, period.finish) : 0);
    m_slider->setValue(hasPeriod ? minutesBetween(period.start, date()) : 0);
}

void PlaybackBar::showPlaying()
{
    const bool isPlaying = m_clock.isPlaying();
    m_play->setIcon(style()->standardIcon(isPlaying ? QStyle::SP_MediaPause : QStyle::SP_MediaPlay));
    m_play->setText(isPlaying ? tr("Pause") : tr("Play"));
    m_play->setAccessibleName(m_play->text());
    m_play->setToolTip(isPlaying ? tr("Pause (space bar)") : tr("Play (space bar)"));
}

void PlaybackBar::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space && m_clock.period().isValid())
        togglePlaying();
    else
        QWidget::keyPressEvent(event);
}

void PlaybackBar::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::StyleChange)
        showPlaying();
    QWidget::changeEvent(event);
}
