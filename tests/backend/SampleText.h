#pragma once

#include "Text.h"
#include "seed/SampleProject.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

/// What the sample generator writes, for the tests to look at.
namespace KvTest {

inline QByteArray sampleText(const PlanService::SampleOptions& options)
{
    QByteArray text;
    PlanService::writeSample(PlanService::SampleProject(options),
                             [&](const QByteArray& piece) { text += piece; });
    return text;
}

inline QJsonArray sampleNodes(const PlanService::SampleOptions& options)
{
    return QJsonDocument::fromJson(sampleText(options)).object().value("tasks"_s).toArray();
}

inline PlanService::SampleOptions ofSize(int nodes)
{
    PlanService::SampleOptions options;
    options.nodes = nodes;
    return options;
}

} // namespace KvTest
