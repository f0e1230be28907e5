#include <KvSoftBase/KvSoftBase.h>

#include <QtCore/QDir>

KvSoftCache::KvSoftCache() = default;

QString KvSoftCache::currentProjectId() const
{
    return m_currentProjectId;
}

void KvSoftCache::setCurrentProjectId(const QString& projectId)
{
    m_currentProjectId = projectId;
}

namespace {

class HostSettings final : public KvSoftSettings
{
public:
    QString organizationName() const override { return QStringLiteral("Host"); }
    QString applicationName() const override { return QStringLiteral("Host"); }
    QString settingsDirectory() const override { return directory; }

    QString directory = QDir::tempPath();
};

HostSettings& hostSettings()
{
    static HostSettings settings;
    return settings;
}

} // namespace

KvSoftCache* GetSoftCache()
{
    static KvSoftCache cache;
    return &cache;
}

KvSoftSettings* GetSettings()
{
    return &hostSettings();
}

void SetSettingsDirectory(const QString& directory)
{
    hostSettings().directory = directory;
}
