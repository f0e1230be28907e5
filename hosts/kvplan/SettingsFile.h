#pragma once

#include "Arguments.h"
#include "Output.h"

#include <QtCore/QByteArray>

/// The option --settings-dir, of all commands that take settings into account.
void addSettingsFolderOption(Arguments& line);

/// The same and --json, which all commands on settings have.
void addSettingsOptions(Arguments& line);

/// Takes the folder that --settings-dir names. @return false when that is empty; the command is then to end.
bool useSettingsFolder(Arguments& line);

/// Path of the settings file, which need not exist.
QString settingsFile();

/// Whether a change reached the settings file. The library tells nobody when it could not be written.
class SettingsWrite
{
public:
    /// To be made before the change.
    SettingsWrite();

    /// Complains when the file is as it was. To be called after something was changed.
    /// @return Success or OutputFailed.
    ExitCode check() const;

private:
    QByteArray m_before;
};
