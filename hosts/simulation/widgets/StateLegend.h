#pragma once

#include <QtGui/QColor>
#include <QtWidgets/QWidget>

#include <functional>

class QCheckBox;
class QPushButton;
class QToolButton;
class SimulationSettings;

/// The seven states with their labels, each with a box that says whether it is painted and a button of its
/// colour, which changes it; and a button that brings back the default colours.
class StateLegend : public QWidget
{
    Q_OBJECT

public:
    /// @param settings shown and changed here; outlives the legend
    explicit StateLegend(SimulationSettings* settings, QWidget* parent = nullptr);

    /// Asks for a colour in place of Qt's dialog; an invalid answer changes nothing.
    void setAskForColour(std::function<QColor(const QColor& present, const QString& label)> ask)
    {
        m_ask = std::move(ask);
    }

private:
    void showSettings();
    void changeColour(int state);

    SimulationSettings* m_settings;
    std::function<QColor(const QColor&, const QString&)> m_ask;
    QList<QCheckBox*> m_flags;     // by state
    QList<QToolButton*> m_colours; // by state
    QPushButton* m_defaults;
};
