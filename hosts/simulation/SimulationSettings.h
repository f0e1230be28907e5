#pragma once

#include "SimulationColours.h"

#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QStringList>

/// Which dates are seen.
enum class SimulationViews
{
    Planned,
    Actual,
    Both, ///< side by side
};

/// The settings of the simulation as the library keeps them for the user: those of one plan, the colours of
/// the states for all, and the heights of floors. One object for all that shows a simulation, so that a
/// change is seen everywhere; each change is kept at once.
class SimulationSettings : public QObject
{
    Q_OBJECT

public:
    explicit SimulationSettings(QObject* parent = nullptr);

    /// Reads the settings of a plan, the default ones when it has none. All is told to have changed.
    void setPlan(const QString& planId);
    const QString& planId() const { return m_planId; }
    const TimeLineSet& set() const { return m_set; }
    /// Keeps the settings of the plan; without a plan they are those of this object alone.
    void setSet(const TimeLineSet& set);

    /// Seven, one a state: the default ones when the library's are of another number.
    QList<QColor> colours() const;
    QList<QColor> defaultColours() const;
    void setColours(const QList<QColor>& colours);
    void setColour(int state, const QColor& colour);

    static constexpr double defaultFloorHeight = 3.0; ///< the library's
    // What the library has no place for: kept in "planviewer.ini" of the settings folder, for each plan its
    // own.

    SimulationViews views() const { return m_views; } ///< both unless another was chosen
    void setViews(SimulationViews views);
    /// What unfinished tasks have built, by their actual dates; by progress unless another was chosen.
    SimulationShare share() const { return m_share; }
    void setShare(SimulationShare share);
    /// Path of the file with the building's geometry; empty when none was chosen.
    const QString& modelFile() const { return m_modelFile; }
    void setModelFile(const QString& path);

    /// In the model's unit of length; 3.0 unless another is set. The library keeps them in memory; here they
    /// are written into "planviewer.ini" of the settings folder too, for each plan its own.
    double floorHeight(const QString& floor) const;
    /// Only positive heights are taken.
    void setFloorHeight(const QString& floor, double height);
    /// Every floor of the plan has the default height again.
    void resetFloorHeights(const QStringList& floors);

Q_SIGNALS:
    /// The TimeLineSet is another, by setSet() or setPlan().
    void setChanged();
    void coloursChanged();
    void floorHeightsChanged();
    /// Which dates are seen, or what unfinished tasks have built.
    void viewsChanged();
    void modelFileChanged();

private:
    QString floorKey(const QString& floor) const;
    void readPlan();
    void writePlan(const char* key, const QString& value);
    void readFloorHeights();
    void writeFloorHeights(const QMap<QString, double>& heights);

    QString m_planId;
    TimeLineSet m_set;
    SimulationViews m_views = SimulationViews::Both;
    SimulationShare m_share = SimulationShare::ByProgress;
    QString m_modelFile;
    QMap<QString, double> m_floorHeights; // as in the file, by floorKey()
};
