#pragma once

#include <setting/KvPlanSetting.h>

#include <KvSoftBase/KvSoftBase.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <memory>

/// The tests' way to the private operations.
struct KvPlanSettingTestAccess
{
    static KvPlanSetting* create() { return new KvPlanSetting; }
    void operator()(KvPlanSetting* setting) const { delete setting; } // as a deleter

    static QColor randomColour(KvPlanSetting& setting) { return setting.GetRandomColor(); }
    static QString planColours(const KvPlanSetting& setting) { return setting.MakePlanColorJsonStr(); }
    static QString processColours(const KvPlanSetting& setting) { return setting.MakeProcessColorJsonStr(); }
    static void parsePlanColours(KvPlanSetting& setting, const QString& json)
    {
        setting.ParsePlanColorJsonStr(json);
    }
    static void parseProcessColours(KvPlanSetting& setting, const QString& json)
    {
        setting.ParseProcessColorJsonStr(json);
    }
    static void initSimulateColour(KvPlanSetting& setting) { setting.InitSimulateColor(); }
    static QString floorHeights(const KvPlanSetting& setting) { return setting.MakeFloorHeightJsonStr(); }
    static void parseFloorHeights(KvPlanSetting& setting, const QString& json)
    {
        setting.ParseFloorHeightJsonStr(json);
    }
    static void parseTimeLine(KvPlanSetting& setting, const QString& text, TimeLineSet& set)
    {
        setting.StringToTimeLineSet(text, set);
    }
    static QString timeLineText(const KvPlanSetting& setting, const TimeLineSet& set)
    {
        return setting.TimeLineSetToString(set);
    }

    static QString iniFile(const KvPlanSetting& setting) { return setting.m_strIniFile; }
    static QString defaultDirection(const KvPlanSetting& setting) { return setting.m_strDefaultDirection; }
    static int reserved(const KvPlanSetting& setting) { return setting.m_nReserved; }
};

namespace KvTest {

using OwnSetting = std::unique_ptr<KvPlanSetting, KvPlanSettingTestAccess>;

/// A settings folder of its own, and objects on it as a process makes its one. Within a process Qt keeps what
/// it wrote to a path, so each test takes a folder of its own, and what is to be read from the bytes another.
class SettingFolder
{
public:
    SettingFolder() { SetSettingsDirectory(m_folder.path()); }
    /// With this file in it.
    explicit SettingFolder(const QByteArray& bytes)
        : SettingFolder()
    {
        write(bytes);
    }
    ~SettingFolder() { SetSettingsDirectory(QString()); }
    SettingFolder(const SettingFolder&) = delete;
    SettingFolder& operator=(const SettingFolder&) = delete;

    QString path() const { return m_folder.path(); }
    QString file() const { return m_folder.path() + QStringLiteral("/PlanSetting.ini"); }
    QStringList names() const { return QDir(path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot); }

    OwnSetting setting() const { return OwnSetting(KvPlanSettingTestAccess::create()); }

    /// The file's bytes; null when there is none.
    QByteArray bytes() const
    {
        QFile opened(file());
        return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray();
    }

    void write(const QByteArray& bytes) const
    {
        QFile opened(file());
        if (!opened.open(QIODevice::WriteOnly) || opened.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(file()));
    }

private:
    QTemporaryDir m_folder;
};

} // namespace KvTest
