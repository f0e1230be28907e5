#include <setting/KvPlanSetting.h>

#include <setting/KvColoursInUse.h>
#include <setting/KvRandomColour.h>
#include <setting/KvSettingsFile.h>

#include <KvPublicFun/KvPub.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QThreadStorage>

namespace {

using ColourMap = QMap<QString, QColor>;

// Two snapshots may be used from two threads, and their colours are counted apart.
struct ColoursOfThread
{
    Kv::ColoursInUse plans;
    Kv::ColoursInUse processes;
};

ColoursOfThread& coloursInUse()
{
    // Never destroyed: static objects of hosts may still ask.
    static QThreadStorage<ColoursOfThread>* const storage = new QThreadStorage<ColoursOfThread>;
    return storage->localData();
}

QColor newColour(const ColourMap& map, Kv::ColoursInUse& inUse)
{
    Kv::seedRandomColours();
    QColor colour = Kv::drawRandomColour();
    while (inUse.contains(map, colour))
        colour = Kv::drawRandomColour();
    return colour;
}

QString decimalText(const QColor& colour)
{
    return QString::number(colour.rgba(), 10);
}

QColor colourOf(const QString& decimalText)
{
    return QColor::fromRgba(decimalText.toUInt(nullptr, 10));
}

QString toJson(const ColourMap& map)
{
    QJsonObject object;
    for (auto entry = map.constBegin(); entry != map.constEnd(); ++entry)
        object.insert(entry.key(), decimalText(entry.value()));
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

void fromJson(const QString& json, ColourMap& map)
{
    const QJsonObject object = QJsonDocument::fromJson(json.toUtf8()).object();
    map.clear();
    for (auto entry = object.constBegin(); entry != object.constEnd(); ++entry)
        map.insert(entry.key(), colourOf(entry.value().toString()));
}

QString simulateColourArray()
{
    return QStringLiteral("SimulateColor");
}

QString colourKey()
{
    return QStringLiteral("color");
}

} // namespace

QColor KvPlanSetting::GetPlanColor(const QString& key)
{
    const auto found = qAsConst(m_mapPlanColor).constFind(key);
    if (found != m_mapPlanColor.constEnd())
        return *found;
    Kv::ColoursInUse& inUse = coloursInUse().plans;
    const QColor colour = newColour(m_mapPlanColor, inUse);
    inUse.insert(m_mapPlanColor, key, colour);
    return colour;
}

QColor KvPlanSetting::GetProcessColor(const QString& key)
{
    const auto found = qAsConst(m_mapProcessColor).constFind(key);
    if (found != m_mapProcessColor.constEnd())
        return *found;
    Kv::ColoursInUse& inUse = coloursInUse().processes;
    const QColor colour = newColour(m_mapProcessColor, inUse);
    inUse.insert(m_mapProcessColor, key, colour);
    return colour;
}

void KvPlanSetting::SetPlanColor(const QString& key, const QColor& colour)
{
    coloursInUse().plans.insert(m_mapPlanColor, key, colour);
}

void KvPlanSetting::SetProcessColor(const QString& key, const QColor& colour)
{
    coloursInUse().processes.insert(m_mapProcessColor, key, colour);
}

void KvPlanSetting::ClearPlanColor()
{
    coloursInUse().plans.clear(m_mapPlanColor);
}

void KvPlanSetting::ClearProcessColor()
{
    coloursInUse().processes.clear(m_mapProcessColor);
}

QColor KvPlanSetting::GetRandomColor()
{
    return newColour(m_mapProcessColor, coloursInUse().processes);
}

QString KvPlanSetting::MakePlanColorJsonStr() const
{
    return toJson(m_mapPlanColor);
}

QString KvPlanSetting::MakeProcessColorJsonStr() const
{
    return toJson(m_mapProcessColor);
}

void KvPlanSetting::ParsePlanColorJsonStr(const QString& json)
{
    fromJson(json, m_mapPlanColor);
}

void KvPlanSetting::ParseProcessColorJsonStr(const QString& json)
{
    fromJson(json, m_mapProcessColor);
}

void KvPlanSetting::InitSimulateColor()
{
    m_listSimulateColor.clear();
    const int stateCount = GetSimulateColorTypeStr().size();
    Kv::SettingsFile file(m_strIniFile);
    const int storedCount = file.beginReadArray(simulateColourArray());
    // Of any other number none is used, so none is read: a damaged count may be as high as numbers go.
    for (int index = 0; storedCount == stateCount && index < storedCount; ++index) {
        file.setArrayIndex(index);
        m_listSimulateColor.append(file.value(colourKey()).toString());
    }
    file.endArray();
    for (int index = 0; storedCount != stateCount && index < stateCount; ++index)
        m_listSimulateColor.append(decimalText(m_listDefaultSimulateColor.at(index)));
}

QList<QColor> KvPlanSetting::GetSimulateColor() const
{
    QList<QColor> colours;
    colours.reserve(m_listSimulateColor.size());
    for (const QString& text : m_listSimulateColor)
        colours.append(colourOf(text));
    return colours;
}

QColor KvPlanSetting::GetSimulateColor(int index) const
{
    return colourOf(m_listSimulateColor.at(index));
}

void KvPlanSetting::SetSimulateColor(const QList<QColor>& colours)
{
    QStringList texts;
    texts.reserve(colours.size());
    for (const QColor& colour : colours)
        texts.append(decimalText(colour));
    if (KvPub::isStringListSame(texts, m_listSimulateColor))
        return;
    m_listSimulateColor = texts;
    Kv::SettingsFile file(m_strIniFile);
    file.beginWriteArray(simulateColourArray());
    for (int index = 0; index < texts.size(); ++index) {
        file.setArrayIndex(index);
        file.setValue(colourKey(), texts.at(index));
    }
    file.endArray();
}

QList<QColor> KvPlanSetting::GetDefaultSimulateColor()
{
    return m_listDefaultSimulateColor;
}

QStringList KvPlanSetting::GetSimulateColorTypeStr() const
{
    static const QStringList labels{tr("未开始"), tr("未开始(延期)"), tr("执行中"),      tr("执行中(延期)"),
                                    tr("已完成"), tr("已完成(提前)"), tr("已完成(延期)")};
    return labels;
}
