#include <KvSoftBase/KvSoftBase.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QStandardPaths>

#include <optional>

namespace {

/// Absolute and without a separator at the end, which the root folder's path alone would keep.
QString withoutTrailingSlash(const QString& directory)
{
    QString path = QDir::cleanPath(QDir(directory).absolutePath());
    if (path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

class Settings final : public KvSoftSettings
{
public:
    QString organizationName() const override { return QCoreApplication::organizationName(); }
    QString applicationName() const override { return QCoreApplication::applicationName(); }

    QString settingsDirectory() const override
    {
        if (m_directory)
            return *m_directory;
        const QString fromEnvironment = qEnvironmentVariable("KV_SETTINGS_DIR");
        return withoutTrailingSlash(fromEnvironment.isEmpty()
                                        ? QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation)
                                        : fromEnvironment);
    }

    void setDirectory(const QString& directory)
    {
        if (directory.isEmpty())
            m_directory.reset();
        else
            m_directory = withoutTrailingSlash(directory);
    }

private:
    std::optional<QString> m_directory;
};

Settings& settings()
{
    static Settings* const instance = new Settings; // never destroyed: static objects of hosts may still ask
    return *instance;
}

} // namespace

KvSoftCache::KvSoftCache()
    : m_currentProjectId(qEnvironmentVariable("KV_PROJECT_ID"))
{
}

QString KvSoftCache::currentProjectId() const
{
    return m_currentProjectId;
}

void KvSoftCache::setCurrentProjectId(const QString& projectId)
{
    m_currentProjectId = projectId;
}

KvSoftCache* GetSoftCache()
{
    static KvSoftCache* const cache = new KvSoftCache; // never destroyed, as the settings
    return cache;
}

KvSoftSettings* GetSettings()
{
    return &settings();
}

void SetSettingsDirectory(const QString& directory)
{
    settings().setDirectory(directory);
}
