#pragma once

#include <KvSoftBase/KvSoftBaseExport.h>

#include <QtCore/QString>

/// What the application holds in memory for its libraries.
class KVSOFTBASE_EXPORT KvSoftCache
{
public:
    QString currentProjectId() const;
    void setCurrentProjectId(const QString& projectId);

private:
    QString m_currentProjectId;
};

/// The application's settings. The order of the virtual operations is part of the interface.
class KVSOFTBASE_EXPORT KvSoftSettings
{
public:
    virtual QString organizationName() const = 0;
    virtual QString applicationName() const = 0;
    virtual QString settingsDirectory() const = 0;

protected:
    ~KvSoftSettings() = default;
};

KVSOFTBASE_EXPORT KvSoftCache* GetSoftCache();
KVSOFTBASE_EXPORT KvSoftSettings* GetSettings();
