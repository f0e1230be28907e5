#include <setting/KvPlanSetting.h>

#include <setting/KvSettingsFile.h>

#include <KvPublicFun/KvPub.h>
#include <KvSoftBase/KvSoftBase.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

namespace {

QString hiddenHeadersKey()
{
    return QStringLiteral("plan_hideHeader");
}

QString columnWidthArray()
{
    return QStringLiteral("GanttColumnWidth");
}

constexpr int defaultColumnWidth = 100;

} // namespace

KvPlanSetting::KvPlanSetting()
    : m_strIniFile(GetSettings()->settingsDirectory() + QLatin1String("/PlanSetting.ini"))
    , m_strDefaultDirection(GetStringDirByEnumDir(Kv::GrowBottomToTop))
    , m_nReserved(3)
    , m_listDefaultSimulateColor{{102, 102, 102}, {255, 179, 179}, {0, 204, 102},  {255, 0, 0},
                                 {0, 153, 255},   {204, 204, 0},   {255, 153, 255}}
{
    for (const Kv::QGrowthType type :
         {Kv::GrowLeftToRight, Kv::GrowRightToLeft, Kv::GrowFrontToBack, Kv::GrowBackToFront,
          Kv::GrowTopToBottom, Kv::GrowBottomToTop, Kv::GrowAppear, Kv::GrowDisappear})
        m_listDirection.append(GetStringDirByEnumDir(type));
    InitSimulateColor();
}

KvPlanSetting::~KvPlanSetting() = default;
KvPlanSetting::KvPlanSetting(const KvPlanSetting& other) = default;
KvPlanSetting& KvPlanSetting::operator=(const KvPlanSetting& other) = default;

KvPlanSetting* KvPlanSetting::instance()
{
    static KvPlanSetting object;
    return &object;
}

QString KvPlanSetting::tr(const char* sourceText, const char* disambiguation, int n)
{
    return QCoreApplication::translate("KvPlanSetting", sourceText, disambiguation, n);
}

QString KvPlanSetting::trUtf8(const char* sourceText, const char* disambiguation, int n)
{
    return QCoreApplication::translate("KvPlanSetting", sourceText, disambiguation, n);
}

void KvPlanSetting::LoadPlanSetting()
{
    QJsonObject object;
    KvPlanData::instance()->loadSetting(hiddenHeadersKey(), object);
    m_listHideHeader.clear();
    m_listHideHeader =
        KvPub::getStrListFromVarList(object.value(hiddenHeadersKey()).toArray().toVariantList());
}

QStringList KvPlanSetting::GetGanttHideHeader() const
{
    return m_listHideHeader;
}

bool KvPlanSetting::SetGanttHideHeader(const QStringList& headers)
{
    QStringList added;
    QStringList removed;
    KvPub::getStringListChange(m_listHideHeader, headers, added, removed);
    if (added.isEmpty() && removed.isEmpty())
        return true;
    const QStringList sent = headers; // the caller's list may change during the wait
    // Written under "value", read back under its own key: so the service keeps user settings.
    const QJsonObject object{{QStringLiteral("value"), QJsonArray::fromStringList(sent)}};
    const bool isSaved = KvPlanData::instance()->saveSetting(hiddenHeadersKey(), object);
    if (isSaved)
        m_listHideHeader = sent;
    return isSaved;
}

void KvPlanSetting::GetGanttColumnWidth(QMap<QString, int>& widths)
{
    Kv::SettingsFile file(m_strIniFile);
    file.readEntries(columnWidthArray(), [&] {
        const QString name = file.value(QStringLiteral("name")).toString();
        const int width = file.value(QStringLiteral("width")).toInt();
        widths[name] = width < 1 ? defaultColumnWidth : width;
    });
    m_mapGanttColumnWidth = widths;
}

void KvPlanSetting::SetGanttColumnWidth(const QMap<QString, int>& widths)
{
    if (m_mapGanttColumnWidth == widths)
        return;
    m_mapGanttColumnWidth = widths;
    Kv::SettingsFile file(m_strIniFile);
    file.beginWriteArray(columnWidthArray());
    int index = 0;
    for (auto column = widths.constBegin(); column != widths.constEnd(); ++column) {
        file.setArrayIndex(index++);
        file.setText(QStringLiteral("name"), column.key());
        file.setValue(QStringLiteral("width"), column.value());
    }
    file.endArray();
}
