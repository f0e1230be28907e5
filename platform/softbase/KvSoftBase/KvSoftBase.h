#pragma once

#include <KvSoftBase/KvSoftBaseExport.h>

#include <QtCore/QString>

/// What the application holds in memory for its libraries. Used from the user-interface thread alone.
class KVSOFTBASE_EXPORT KvSoftCache
{
public:
    /// Identifier of the project the user works in; empty: none is open. At first the value of the
    /// environment variable KV_PROJECT_ID, read when the cache is first asked for.
    QString currentProjectId() const;
    /// Takes effect for every library at its next request; nothing is told to anybody.
    void setCurrentProjectId(const QString& projectId);

private:
    friend KVSOFTBASE_EXPORT KvSoftCache* GetSoftCache();
    KvSoftCache();

    QString m_currentProjectId;
};

/// The application's settings. The order of the virtual operations is part of the interface.
class KVSOFTBASE_EXPORT KvSoftSettings
{
public:
    /// `QCoreApplication::organizationName()`; empty when the application set none.
    virtual QString organizationName() const = 0;
    /// `QCoreApplication::applicationName()`.
    virtual QString applicationName() const = 0;
    /// Folder of the user's settings files, absolute, with "/" between its parts and none at its end, so that
    /// a caller appends "/PlanSetting.ini". The folder need not exist yet.
    ///
    /// In this order: what `SetSettingsDirectory` was given; the environment variable KV_SETTINGS_DIR, as it
    /// is now; the platform's folder for the configuration of this application and user.
    virtual QString settingsDirectory() const = 0;

protected:
    ~KvSoftSettings() = default;
};

/// The one cache of the process. Never null; owned by the library, lives until the process ends.
KVSOFTBASE_EXPORT KvSoftCache* GetSoftCache();

/// The one settings object of the process. Never null; owned by the library, lives until the process ends.
KVSOFTBASE_EXPORT KvSoftSettings* GetSettings();

/// Sets what `settingsDirectory` returns from now on; relative paths are taken from the current folder of
/// this moment. Settings that are loaded already stay as they are. An empty text goes back to environment and
/// default.
KVSOFTBASE_EXPORT void SetSettingsDirectory(const QString& directory);
