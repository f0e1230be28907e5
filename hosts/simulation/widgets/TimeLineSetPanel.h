#pragma once

#include "SimulationClock.h"

#include <QtWidgets/QWidget>

class QCheckBox;
class QDateTimeEdit;
class QDoubleSpinBox;
class SimulationSettings;
class StateLegend;

/// A control for every setting of a plan's simulation: the speed, the period, whether delays are shown,
/// whether elements are painted by state, and which states are; with the legend of the states.
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
    void takeSpeed();

    SimulationSettings* m_settings;
    SimulationPeriod m_planPeriod;
    QDoubleSpinBox* m_speed;
    QCheckBox* m_usePlanTime;
    QDateTimeEdit* m_start;
    QDateTimeEdit* m_finish;
    QCheckBox* m_delays;
    QCheckBox* m_stateColours;
    StateLegend* m_legend;
};
