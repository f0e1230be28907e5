#pragma once

#include "SimulationClock.h"

#include <QtWidgets/QWidget>

class QCheckBox;
class QComboBox;
class QDateTimeEdit;
class QDoubleSpinBox;
class SimulationSettings;
class StateLegend;

/// A control for every setting of a plan's simulation: the speed, the period, whether delays are shown,
/// whether elements are painted by state, and which states are; with the legend of the states. Also which
/// dates are seen, and what unfinished tasks have built.
class TimeLineSetPanel : public QWidget
{
    Q_OBJECT

public:
    /// @param settings shown and changed here; outlives the panel
    explicit TimeLineSetPanel(SimulationSettings* settings, QWidget* parent = nullptr);

    /// The plan's own dates, shown as long as no others are set.
    void setPlanPeriod(const SimulationPeriod& period);
    StateLegend* legend() const { return m_legend; }

private:
    void showSet();
    void showViews();
    void takeSpeed();

    SimulationSettings* m_settings;
    SimulationPeriod m_planPeriod;
    QComboBox* m_views;
    QComboBox* m_share;
    QDoubleSpinBox* m_speed;
    QCheckBox* m_usePlanTime;
    QDateTimeEdit* m_start;
    QDateTimeEdit* m_finish;
    QCheckBox* m_delays;
    QCheckBox* m_stateColours;
    StateLegend* m_legend;
};
