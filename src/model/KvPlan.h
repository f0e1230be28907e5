#pragma once

#include <model/KvPlanNode.h>

/// A plan (schedule) of a project.
struct KvPlan
{
    QString id;                  ///< database id; assigned by the service
    QString category;            ///< category (module) of the plan
    QString projectId;           ///< owning project; empty for a new plan: the current one
    QString name;                ///< as people see it; need not be unique
    QString mppFilePath;         ///< schedule file the plan was imported from; exchange format only
    QString projectFileId;       ///< id of the stored schedule file
    QDateTime createdAt;         ///< read only
    QDateTime updatedAt;         ///< read only
    QString createdBy;           ///< user id; read only
    QString updatedBy;           ///< user id; read only
    int isPublic = 100;          ///< visibility code of the service; 100: not set, not written
    QStringList ranges;          ///< ids of the model ranges that the plan covers
    QList<KvPlanNode> planNodes; ///< flat, or as a tree after `KvPlanDataUtils::makePlanNodeListTree`
};
