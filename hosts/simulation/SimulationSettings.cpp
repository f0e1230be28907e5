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

QString groupOf(const QString& planId)
{
    return QStringLiteral("simulation-") + QString::fromLatin1(planId.toUtf8().toPercentEncoding());
}

// Words, so that the file can be read; the first is that of the value unless another was chosen.
constexpr const char* viewWords[] = {"both", "planned", "actual"};
constexpr SimulationViews viewValues[] = {SimulationViews::Both, SimulationViews::Planned,
                                          SimulationViews::Actual};
constexpr const char* shareWords[] = {"progress", "time"};
constexpr SimulationShare shareValues[] = {SimulationShare::ByProgress, SimulationShare::ByTime};

template<class Value, std::size_t count>
Value valueOf(const QString& word, const char* const (&words)[count], const Value (&values)[count])
{
    for (std::size_t i = 0; i < count; ++i) {
        if (word == QLatin1String(words[i]))
            return values[i];
    }
    return values[0];
}

template<class Value, std::size_t count>
QString wordOf(Value value, const char* const (&words)[count], const Value (&values)[count])
{
    for (std::size_t i = 0; i < count; ++i) {
        if (value == values[i])
            return QString::fromLatin1(words[i]);
    }
    return {};
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
    readPlan();
    Q_EMIT setChanged();
    Q_EMIT viewsChanged();
    Q_EMIT floorHeightsChanged();
    Q_EMIT modelFileChanged();
}

void SimulationSettings::readPlan()
{
    QSettings file(filePath(), QSettings::IniFormat);
    file.beginGroup(groupOf(m_planId));
    m_views = valueOf(file.value(QStringLiteral("views")).toString(), viewWords, viewValues);
    m_share = valueOf(file.value(QStringLiteral("share")).toString(), shareWords, shareValues);
    m_modelFile = file.value(QStringLiteral("model")).toString();
}

void SimulationSettings::writePlan(const char* key, const QString& value)
{
    if (m_planId.isEmpty())
        return;
    QSettings file(filePath(), QSettings::IniFormat);
    file.beginGroup(groupOf(m_planId));
    file.setValue(QLatin1String(key), value);
}

void SimulationSettings::setViews(SimulationViews views)
{
    if (views == m_views)
        return;
    m_views = views;
    writePlan("views", wordOf(views, viewWords, viewValues));
    Q_EMIT viewsChanged();
}

void SimulationSettings::setShare(SimulationShare share)
{
    if (share == m_share)
        return;
    m_share = share;
    writePlan("share", wordOf(share, shareWords, shareValues));
    Q_EMIT viewsChanged();
}

void SimulationSettings::setModelFile(const QString& path)
{
    if (path == m_modelFile)
        return;
    m_modelFile = path;
    writePlan("model", path);
    Q_EMIT modelFileChanged();
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
