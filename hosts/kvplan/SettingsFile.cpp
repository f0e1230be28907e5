#include "SettingsFile.h"

#include <KvSoftBase/KvSoftBase.h>

#include <QtCore/QFile>

namespace {

QByteArray bytesOfTheFile()
{
    QFile file(settingsFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

void addSettingsFolderOption(Arguments& line)
{
    line.addOption("settings-dir", "folder", "Folder of the settings file [KV_SETTINGS_DIR].");
}

void addSettingsOptions(Arguments& line)
{
    addSettingsFolderOption(line);
    line.addJsonOption();
}

bool useSettingsFolder(Arguments& line)
{
    if (!line.isSet("settings-dir"))
        return true;
    if (line.value("settings-dir").isEmpty())
        return line.refuse(QStringLiteral("--settings-dir takes a folder, not \"\""));
    SetSettingsDirectory(line.value("settings-dir"));
    return true;
}

QString settingsFile()
{
    return GetSettings()->settingsDirectory() + QStringLiteral("/PlanSetting.ini");
}

SettingsWrite::SettingsWrite()
    : m_before(bytesOfTheFile())
{
}

ExitCode SettingsWrite::check() const
{
    if (bytesOfTheFile() != m_before)
        return Success;
    complain(
        QStringLiteral("cannot write the settings file \"%1\"; check that file and folder may be written, "
                       "or name another folder (--settings-dir or KV_SETTINGS_DIR)")
            .arg(settingsFile()));
    return OutputFailed;
}
