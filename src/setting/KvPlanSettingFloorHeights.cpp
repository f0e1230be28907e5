#include <setting/KvPlanSetting.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace {

constexpr double defaultHeight = 3.0;

} // namespace

double KvPlanSetting::GetFloorHeight(const QString& key)
{
    const auto height = qAsConst(m_mapFloorHeight).constFind(key);
    return height == m_mapFloorHeight.constEnd() ? defaultHeight : *height;
}

void KvPlanSetting::SetFloorHeight(const QString& key, double height)
{
    if (qFuzzyCompare(height, defaultHeight))
        m_mapFloorHeight.remove(key);
    else
        m_mapFloorHeight.insert(key, height);
}

void KvPlanSetting::ClearFloorHeight()
{
    m_mapFloorHeight.clear();
}

QString KvPlanSetting::MakeFloorHeightJsonStr() const
{
    QJsonObject object;
    for (auto floor = m_mapFloorHeight.constBegin(); floor != m_mapFloorHeight.constEnd(); ++floor)
        object.insert(floor.key(), floor.value());
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

void KvPlanSetting::ParseFloorHeightJsonStr(const QString& json)
{
    const QJsonObject object = QJsonDocument::fromJson(json.toUtf8()).object();
    m_mapFloorHeight.clear();
    // 3.0 is kept here as any other height: only SetFloorHeight() leaves it out.
    for (auto floor = object.constBegin(); floor != object.constEnd(); ++floor)
        m_mapFloorHeight.insert(floor.key(), floor.value().toDouble());
}
