#pragma once

#include "KvplanProcess.h"

#include <QtCore/QTemporaryDir>

#include <memory>

/// What the tests of "kvplan settings" share: an empty settings folder for each, and kvplan with it.
class KvplanSettingsFixture : public QObject
{
    Q_OBJECT

protected:
    KvTest::Kvplan kvplan(const QString& server = QString()) const
    {
        KvTest::Kvplan made(server);
        made.setEnvironment(QStringLiteral("KV_SETTINGS_DIR"), m_folder->path());
        made.setEnvironment(QStringLiteral("NO_COLOR"), QString());
        made.setEnvironment(QStringLiteral("TERM"), QStringLiteral("xterm"));
        return made;
    }

    QString filePath() const { return m_folder->filePath(QStringLiteral("PlanSetting.ini")); }

    std::unique_ptr<QTemporaryDir> m_folder;

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
};
