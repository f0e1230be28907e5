#pragma once

#include "KvplanProcess.h"

#include <ServiceProcess.h>

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

/// The sample project on the real service, with the model of its building.
struct KvplanSimulateFixture
{
    KvTest::ServiceProcess service;
    QTemporaryDir folder;
    QString planId;
    QString model;

    /// @return why there is none; empty when there is.
    QString start()
    {
        model = path("tower.gltf");
        const QJsonObject seeded = service.seed({QStringLiteral("--model"), model});
        planId = seeded.value(QLatin1String("planId")).toString();
        if (planId.isEmpty() || !service.start())
            return service.failure();
        return QDir(folder.path()).mkdir(QStringLiteral("settings")) ? QString() : folder.errorString();
    }

    QString path(const char* name) const { return folder.filePath(QLatin1String(name)); }

    /// With everything set that a run needs.
    KvTest::Kvplan kvplan() const
    {
        KvTest::Kvplan made(service.baseUrl());
        made.setEnvironment(QStringLiteral("KV_PROJECT_ID"), QStringLiteral("sample-project"));
        made.setEnvironment(QStringLiteral("KV_SETTINGS_DIR"), path("settings"));
        return made;
    }

    /// The words for pictures of the plan, with these options.
    QStringList simulate(const QString& output, const char* options) const
    {
        return QStringList{QStringLiteral("simulate"), planId, output, QStringLiteral("--model"), model} +
               KvTest::words(options);
    }
};
