#include "SimulationSettings.h"

#include <KvSoftBase/KvSoftBase.h>
#include <setting/KvPlanSetting.h>

#include <QtCore/QSettings>

#include <cmath>

namespace {

QString filePath()
{
    return GetSettings()->settingsDirectory() + QStringLiteral("/planviewer.ini");
}

bool isSame(const TimeLineSet& a, const TimeLineSet& b)
{
    for (int state = 0; state < TaskState::count; ++state) {
        if (isStateFlagged(state, a) != isStateFlagged(state, b))
            return false;
    }
    return a.DayForS == b.DayForS && a.TimeStart == b.TimeStart && a.TimeFinish == b.TimeFinish &&
           a.UsePlanTime == b.UsePlanTime && a.DisplayDelay == b.DisplayDelay &&
           a.DisplayStateColor == b.DisplayStateColor;
}

} // namespace

SimulationSettings::SimulationSettings(QObject* parent)
    : QObject(parent)
{
    readFloorHeights();
}

void SimulationSettings::setPlan(const QString& planId)
{
    m_planId = planId;
    m_set = TimeLineSet();
    // Also asked for the sake of other plans: a library that has not read the file would drop theirs.
    KvPlanSetting::instance()->GetSimulateSetting(planId, m_set);
    Q_EMIT setChanged();
    Q_EMIT floorHeightsChanged();
}

void SimulationSettings::setSet(const TimeLineSet& set)
{
    if (isSame(set, m_set))
        return;
    m_set = set;
    if (!m_planId.isEmpty())
        KvPlanSetting::instance()->SetSimulateSetting(m_planId, set);
    Q_EMIT setChanged();
}

QList<QColor> SimulationSettings::colours() const
{
    const QList<QColor> colours = KvPlanSetting::instance()->GetSimulateColor();
    return colours.size() == TaskState::count ? colours : defaultColours();
}

QList<QColor> SimulationSettings::defaultColours() const
{
    return KvPlanSetting::instance()->GetDefaultSimulateColor();
}

void SimulationSettings::setColours(const QList<QColor>& newColours)
{
    if (newColours.size() != TaskState::count || newColours == colours())
        return;
    KvPlanSetting::instance()->SetSimulateColor(newColours);
    Q_EMIT coloursChanged();
}

void SimulationSettings::setColour(int state, const QColor& colour)
{
    QList<QColor> changed = colours();
    if (state < 0 || state >= changed.size() || !colour.isValid())
        return;
    changed[state] = colour;
    setColours(changed);
}

double SimulationSettings::floorHeight(const QString& floor) const
{
    return KvPlanSetting::instance()->GetFloorHeight(floorKey(floor));
}

void SimulationSettings::setFloorHeight(const QString& floor, double height)
{
    if (!std::isfinite(height) || height <= 0.0 || height == floorHeight(floor))
        return;
    const QString key = floorKey(floor);
    KvPlanSetting* const library = KvPlanSetting::instance();
    library->SetFloorHeight(key, height);
    QMap<QString, double> heights = m_floorHeights;
    heights.insert(key, library->GetFloorHeight(key));
    writeFloorHeights(heights);
    Q_EMIT floorHeightsChanged();
}

void SimulationSettings::resetFloorHeights(const QStringList& floors)
{
    QMap<QString, double> heights = m_floorHeights;
    for (const QString& floor : floors) {
        const QString key = floorKey(floor);
        KvPlanSetting::instance()->SetFloorHeight(key, defaultFloorHeight);
        heights.remove(key);
    }
    writeFloorHeights(heights);
    Q_EMIT floorHeightsChanged();
}

QString SimulationSettings::floorKey(const QString& floor) const
{
    return m_planId + QLatin1Char('/') + floor;
}

void SimulationSettings::readFloorHeights()
{
    QSettings file(filePath(), QSettings::IniFormat);
    const int count = file.beginReadArray(QStringLiteral("floorHeights"));
    for (int i = 0; i < count; ++i) {
        file.setArrayIndex(i);
        const QString key = file.value(QStringLiteral("floor")).toString();
        const double height = file.value(QStringLiteral("height")).toDouble();
        if (key.isEmpty() || !std::isfinite(height) || height <= 0.0)
            continue; // written by hand
        m_floorHeights.insert(key, height);
        KvPlanSetting::instance()->SetFloorHeight(key, height);
    }
    file.endArray();
}

void SimulationSettings::writeFloorHeights(const QMap<QString, double>& heights)
{
    m_floorHeights = heights;
    QSettings file(filePath(), QSettings::IniFormat);
    file.remove(QStringLiteral("floorHeights"));
    file.beginWriteArray(QStringLiteral("floorHeights"));
    int index = 0;
    for (auto entry = heights.constBegin(); entry != heights.constEnd(); ++entry) {
        file.setArrayIndex(index++);
        file.setValue(QStringLiteral("floor"), entry.key());
        file.setValue(QStringLiteral("height"), entry.value());
    }
    file.endArray();
}
