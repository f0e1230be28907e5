#pragma once

#include <KvPlanData/KvPlanDataExport.h>
#include <model/KvDocument.h>
#include <model/KvDuration.h>

#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

/// Model entities linked to a plan node: identifier of a model to the identifiers of its linked entities.
using KvLinksEntity = QMap<QString, QStringList>;

/// One predecessor link of a plan node.
struct KvPlanPredecessor
{
    QString sourcePlanNodeName;     ///< name of the predecessor
    QString targetPlanNodeName;     ///< name of the successor
    KvDuration lag;                 ///< lag between the two; negative for a lead
    int type = 0;                   ///< link type code of the exchange format, carried as it is
    int sourcePlanNodeUniqueId = 0; ///< `uniqueId` of the predecessor
    QString targetPlanNodeUniqueId; ///< `uniqueId` of the successor; text, unlike its source counterpart,
                                    ///< for compatibility with existing hosts: "12" and "012" differ
    int sourcePlanNodeId = 0;       ///< `planNodeId` of the predecessor
    int targetPlanNodeId = 0;       ///< `planNodeId` of the successor
};

/// A task of a plan.
///
/// In a flat list `children` is empty; in a tree each child is held by value in its parent. Copying a node
/// copies its whole subtree (shared until written); destroying one takes constant stack, however deep it is.
struct KVPLANDATA_EXPORT KvPlanNode
{
    KvPlanNode();                                       ///< with the values given below
    KvPlanNode(const KvPlanNode& other);                ///< copies every field, `children` included
    KvPlanNode(KvPlanNode&& other) noexcept;            ///< leaves @p other assignable and otherwise unknown
    KvPlanNode& operator=(const KvPlanNode& other);     ///< as the copy constructor
    KvPlanNode& operator=(KvPlanNode&& other) noexcept; ///< as the move constructor
    ~KvPlanNode();                                      ///< without recursion

    QString id;                            ///< database id; empty for a node the service does not know yet
    QString category;                      ///< category (module) of the plan
    QString name;                          ///< as people see it; need not be unique
    QString reservedText1;                 ///< carried and copied only, as every field named `reserved…`
    double finishedPercentage = 0.0;       ///< progress in percent, 0 to 100; negative: not set, not written
    int planNodeId = -1;                   ///< row number inside the plan, in display order; -1: not set
    int uniqueId = -1;                     ///< number by which links and children name this node; -1: not set
    int parentTaskId = -1;                 ///< `uniqueId` of the parent; one that no node has: top level
    QString guid;                          ///< global identifier; the service's empty value reads as `id`
    QString planId;                        ///< owning plan; empty for a task outside any plan
    QString planName;                      ///< name of the owning plan; read only
    QString projectId;                     ///< owning project; empty for a new node: the current one
    QString reservedText2;                 ///< carried only
    QString notes;                         ///< exchange format only
    int reservedUnits = 2;                 ///< carried only
    bool summary = false;                  ///< has children; told by the service, never written to it
    bool milestone = false;                ///< told by the service, never written to it
    QList<KvPlanPredecessor> predecessors; ///< in received order
    QDateTime startDate;                   ///< planned start; null: not planned
    QDateTime finishDate;                  ///< planned finish; null: not planned
    KvDuration duration;                   ///< planned duration; exchange format only
    QString startText;                     ///< start as the schedule file shows it; exchange format only
    QString durationText;                  ///< duration as the schedule file shows it; exchange format only
    KvDuration finishSlack;                ///< finish slack (float); exchange format only
    QString finishText;                    ///< finish as the schedule file shows it; exchange format only
    int type = 0;                          ///< task type code; exchange format only
    int reservedInt1 = 0;                  ///< carried only
    int reservedInt2 = 0;                  ///< carried only
    int reservedInt3 = 0;                  ///< carried only
    QList<KvPlanNode> children;            ///< filled and emptied by the tree functions only; never in JSON
    QString remark;                        ///< free text
    bool isDistributed = false;            ///< handed out to those who carry it out
    int dynamicEffect = 0;                 ///< effect code of the 4D simulation; -1: not set, not written
    bool displaySimulation = true;         ///< shown in the 4D simulation
    QDateTime entityHideDate;              ///< from when on the linked entities are hidden; null: never
    int entityHideType = 0;                ///< how the linked entities are hidden (code of the service)
    int planWorkload = 0;                  ///< planned workload; negative: not set, not written
    int actualWorkload = 0;                ///< actual workload; negative: not set, not written
    QDateTime createdAt;                   ///< set by the service
    QDateTime updatedAt;                   ///< set by the service
    QString createdBy;                     ///< user id
    QString updatedBy;                     ///< user id
    QDateTime actualStartDate;             ///< null: not started
    QDateTime actualFinishDate;            ///< null: not finished
    qint64 reservedValue = 0;              ///< carried only
    QString reservedText3;                 ///< carried only
    QString reservedText4;                 ///< carried only
    QString reservedText5;                 ///< carried only
    QStringList userIds;                   ///< responsible users
    QStringList executeIds;                ///< executing users
    QStringList cooperateIds;              ///< cooperating users
    KvLinksEntity links;                   ///< linked model entities
    QStringList reservedList;              ///< carried only
    QStringList documentIds;               ///< attached documents
    QList<KvDocument> documents;           ///< attached documents as the service expands them; read only
    qint64 reservedTail = 0;               ///< carried only
    QMap<QString, QStringList> materialBills; ///< material bill id to the ids of its statuses
};
