#include <setting/KvPlanSetting.h>

#include <setting/KvSettingsFile.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace {

QString simulationArray()
{
    return QStringLiteral("SimulateSetting");
}

// The conversion makes null of an invalid date-time; the file has an empty text there.
QString dateText(const QDateTime& dateTime)
{
    return QJsonValue::fromVariant(dateTime).toString();
}

} // namespace

bool KvPlanSetting::GetSimulateSetting(const QString& planId, TimeLineSet& set)
{
    if (m_mapSimulateSetting.isEmpty()) {
        Kv::SettingsFile file(m_strIniFile);
        file.readEntries(simulationArray(), [&] {
            const QString id = file.value(QStringLiteral("planId")).toString();
            TimeLineSet stored;
            StringToTimeLineSet(file.value(QStringLiteral("content")).toString(), stored);
            m_mapSimulateSetting.insert(id, stored);
        });
    }
    const auto found = qAsConst(m_mapSimulateSetting).constFind(planId);
    if (found == m_mapSimulateSetting.constEnd())
        return false;
    set = *found;
    return true;
}

void KvPlanSetting::SetSimulateSetting(const QString& planId, const TimeLineSet& set)
{
    // Kept for existing hosts: the file is not read first, although that drops what it holds of other plans.
    m_mapSimulateSetting.insert(planId, set);
    Kv::SettingsFile file(m_strIniFile);
    file.beginWriteArray(simulationArray());
    int index = 0;
    for (auto plan = m_mapSimulateSetting.constBegin(); plan != m_mapSimulateSetting.constEnd(); ++plan) {
        file.setArrayIndex(index++);
        file.setText(QStringLiteral("planId"), plan.key());
        file.setValue(QStringLiteral("content"), TimeLineSetToString(plan.value()));
    }
    file.endArray();
}

void KvPlanSetting::StringToTimeLineSet(const QString& text, TimeLineSet& set)
{
    const QJsonObject object = QJsonDocument::fromJson(text.toUtf8()).object();
    const auto dateAt = [&](const char* key) {
        return object.value(QLatin1String(key)).toVariant().toDateTime();
    };
    const auto flagAt = [&](const char* key) {
        return object.value(QLatin1String(key)).toBool(true);
    };
    set.DayForS = object.value(QLatin1String("DayForS")).toDouble(0.5);
    set.TimeStart = dateAt("TimeStart");
    set.TimeFinish = dateAt("TimeFinish");
    set.UsePlanTime = flagAt("UsePlanTime");
    set.DisplayDelay = flagAt("DisplayDelay");
    set.DisplayStateColor = flagAt("DisplayStateColor");
    set.NonStartClr = flagAt("NonStartClr");
    set.NotStartDelayClr = flagAt("NotStartDelayClr");
    set.ProcessingClr = flagAt("ProcessingClr");
    set.ProcessingDelayClr = flagAt("ProcessingDelayClr");
    set.FinishClr = flagAt("FinishClr");
    set.FinishAheadClr = flagAt("FinishAheadClr");
    set.FinishBehindClr = flagAt("FinishBehindClr");
}

QString KvPlanSetting::TimeLineSetToString(const TimeLineSet& set) const
{
    const QJsonObject object{
        {QStringLiteral("DayForS"), set.DayForS},
        {QStringLiteral("TimeStart"), dateText(set.TimeStart)},
        {QStringLiteral("TimeFinish"), dateText(set.TimeFinish)},
        {QStringLiteral("UsePlanTime"), set.UsePlanTime},
        {QStringLiteral("DisplayDelay"), set.DisplayDelay},
        {QStringLiteral("DisplayStateColor"), set.DisplayStateColor},
        {QStringLiteral("NonStartClr"), set.NonStartClr},
        {QStringLiteral("NotStartDelayClr"), set.NotStartDelayClr},
        {QStringLiteral("ProcessingClr"), set.ProcessingClr},
        {QStringLiteral("ProcessingDelayClr"), set.ProcessingDelayClr},
        {QStringLiteral("FinishClr"), set.FinishClr},
        {QStringLiteral("FinishAheadClr"), set.FinishAheadClr},
        {QStringLiteral("FinishBehindClr"), set.FinishBehindClr},
    };
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

QStringList KvPlanSetting::GetAllDirection() const
{
    return m_listDirection;
}

Kv::QGrowthType KvPlanSetting::GetEnumDirByStringDir(const QString& label) const
{
    for (const Kv::QGrowthType type :
         {Kv::GrowLeftToRight, Kv::GrowRightToLeft, Kv::GrowFrontToBack, Kv::GrowBackToFront,
          Kv::GrowBottomToTop, Kv::GrowTopToBottom, Kv::GrowAppear, Kv::GrowDisappear}) {
        if (label == GetStringDirByEnumDir(type))
            return type;
    }
    return Kv::GrowBottomToTop;
}

QString KvPlanSetting::GetStringDirByEnumDir(const Kv::QGrowthType& type) const
{
    switch (type) {
    case Kv::GrowFrontToBack:
        return tr("从前到后");
    case Kv::GrowBackToFront:
        return tr("从后到前");
    case Kv::GrowLeftToRight:
        return tr("从左到右");
    case Kv::GrowRightToLeft:
        return tr("从右到左");
    case Kv::GrowTopToBottom:
        return tr("从上到下");
    case Kv::GrowBottomToTop:
        return tr("从下到上");
    case Kv::GrowAppear:
        return tr("从无到有");
    case Kv::GrowDisappear:
        return tr("从有到无");
    }
    return QString();
}
