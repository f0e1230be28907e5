#include "TimeLineSetPanel.h"

#include "SimulationSettings.h"
#include "StateLegend.h"

#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDateTimeEdit>
#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QFormLayout>

TimeLineSetPanel::TimeLineSetPanel(SimulationSettings* settings, QWidget* parent)
    : QWidget(parent)
    , m_settings(settings)
    , m_views(new QComboBox)
    , m_share(new QComboBox)
    , m_speed(new QDoubleSpinBox)
    , m_usePlanTime(new QCheckBox(tr("Dates &of the plan")))
    , m_start(new QDateTimeEdit)
    , m_finish(new QDateTimeEdit)
    , m_delays(new QCheckBox(tr("Show dela&ys")))
    , m_stateColours(new QCheckBox(tr("Pa&int by state")))
    , m_legend(new StateLegend(settings))
{
    m_views->setObjectName(QStringLiteral("views"));
    m_views->setToolTip(tr("Which dates the building follows"));
    m_views->addItem(tr("Planned and actual"), static_cast<int>(SimulationViews::Both));
    m_views->addItem(tr("Planned"), static_cast<int>(SimulationViews::Planned));
    m_views->addItem(tr("Actual"), static_cast<int>(SimulationViews::Actual));
    m_share->setObjectName(QStringLiteral("share"));
    m_share->setToolTip(tr("What tasks that are not finished have built, by their actual dates"));
    m_share->addItem(tr("As reported"), static_cast<int>(SimulationShare::ByProgress));
    m_share->addItem(tr("As time goes"), static_cast<int>(SimulationShare::ByTime));
    m_speed->setObjectName(QStringLiteral("daysPerSecond"));
    m_speed->setRange(SimulationClock::slowest, SimulationClock::fastest);
    m_speed->setDecimals(2);
    m_speed->setSingleStep(0.5);
    m_speed->setSuffix(tr(" days/s"));
    m_speed->setToolTip(tr("Days of the schedule per second"));
    m_speed->setKeyboardTracking(false);
    m_usePlanTime->setObjectName(QStringLiteral("usePlanTime"));
    m_usePlanTime->setToolTip(tr("Plays from the first to the last date of the plan's tasks"));
    m_start->setObjectName(QStringLiteral("timeStart"));
    m_finish->setObjectName(QStringLiteral("timeFinish"));
    for (QDateTimeEdit* const edit : {m_start, m_finish}) {
        edit->setDisplayFormat(QStringLiteral("yyyy-MM-dd hh:mm"));
        edit->setCalendarPopup(true);
        edit->setKeyboardTracking(false);
    }
    m_delays->setObjectName(QStringLiteral("displayDelay"));
    m_delays->setToolTip(tr("When off, late tasks look as those in time"));
    m_stateColours->setObjectName(QStringLiteral("displayStateColor"));
    m_stateColours->setToolTip(tr("When off, elements have the colours of their materials"));

    auto* const form = new QFormLayout(this);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    form->addRow(tr("&Dates"), m_views);
    form->addRow(tr("&Unfinished"), m_share);
    form->addRow(tr("Speed"), m_speed);
    form->addRow(m_usePlanTime);
    form->addRow(tr("F&rom"), m_start);
    form->addRow(tr("&To"), m_finish);
    form->addRow(m_delays);
    form->addRow(m_stateColours);
    form->addRow(m_legend);

    connect(m_speed, qOverload<double>(&QDoubleSpinBox::valueChanged), this, &TimeLineSetPanel::takeSpeed);
    // Each end by itself: one that is not set goes on following the plan.
    const auto end = [this](QDateTimeEdit* edit, QDateTime TimeLineSet::*field) {
        connect(edit, &QDateTimeEdit::dateTimeChanged, this, [this, field](const QDateTime& date) {
            TimeLineSet set = m_settings->set();
            set.*field = date;
            m_settings->setSet(set);
        });
    };
    end(m_start, &TimeLineSet::TimeStart);
    end(m_finish, &TimeLineSet::TimeFinish);
    const auto flag = [this](QCheckBox* box, bool TimeLineSet::*field) {
        connect(box, &QCheckBox::toggled, this, [this, field](bool isOn) {
            TimeLineSet set = m_settings->set();
            set.*field = isOn;
            m_settings->setSet(set);
        });
    };
    flag(m_usePlanTime, &TimeLineSet::UsePlanTime);
    flag(m_delays, &TimeLineSet::DisplayDelay);
    flag(m_stateColours, &TimeLineSet::DisplayStateColor);
    connect(m_views, qOverload<int>(&QComboBox::currentIndexChanged), this,
            [this] { m_settings->setViews(static_cast<SimulationViews>(m_views->currentData().toInt())); });
    connect(m_share, qOverload<int>(&QComboBox::currentIndexChanged), this,
            [this] { m_settings->setShare(static_cast<SimulationShare>(m_share->currentData().toInt())); });
    connect(m_settings, &SimulationSettings::setChanged, this, &TimeLineSetPanel::showSet);
    connect(m_settings, &SimulationSettings::viewsChanged, this, &TimeLineSetPanel::showViews);
    showSet();
    showViews();
}

void TimeLineSetPanel::setPlanPeriod(const SimulationPeriod& period)
{
    m_planPeriod = period;
    showSet();
}

void TimeLineSetPanel::showSet()
{
    const TimeLineSet& set = m_settings->set();
    const QSignalBlocker quiet[] = {QSignalBlocker(m_speed),  QSignalBlocker(m_usePlanTime),
                                    QSignalBlocker(m_start),  QSignalBlocker(m_finish),
                                    QSignalBlocker(m_delays), QSignalBlocker(m_stateColours)};
    m_speed->setValue(set.DayForS);
    m_usePlanTime->setChecked(set.UsePlanTime);
    m_delays->setChecked(set.DisplayDelay);
    m_stateColours->setChecked(set.DisplayStateColor);
    const SimulationPeriod shown = simulatedPeriod(m_planPeriod, set);
    m_start->setDateTime(shown.start);
    m_finish->setDateTime(shown.finish);
    m_start->setEnabled(!set.UsePlanTime);
    m_finish->setEnabled(!set.UsePlanTime);
}

void TimeLineSetPanel::showViews()
{
    const QSignalBlocker quiet[] = {QSignalBlocker(m_views), QSignalBlocker(m_share)};
    m_views->setCurrentIndex(m_views->findData(static_cast<int>(m_settings->views())));
    m_share->setCurrentIndex(m_share->findData(static_cast<int>(m_settings->share())));
    m_share->setEnabled(m_settings->views() != SimulationViews::Planned);
}

void TimeLineSetPanel::takeSpeed()
{
    TimeLineSet set = m_settings->set();
    set.DayForS = m_speed->value();
    m_settings->setSet(set);
}
