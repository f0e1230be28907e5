#pragma once

#include <model/KvDocument.h>

#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

/// A photo or video attached to a response.
struct KvMedia
{
    QString fileId;    ///< stored file
    QString thumbnail; ///< file id of the preview picture; empty: none
    int time = 0;      ///< as the service counts it; carried unchanged
};

/// A progress response (feedback) on a plan node.
struct KvPlanNodeResponse
{
    QString id;                  ///< database id; read only
    QString hostId;              ///< plan node that the response belongs to
    QString remark;              ///< free text of whoever reports
    int percentage = 0;          ///< reported progress in percent, 0 to 100
    QList<KvMedia> media;        ///< photos and videos; those without a file are not read
    QStringList documentIds;     ///< when read, the ids of `documents`
    QList<KvDocument> documents; ///< read only
    QDateTime actualStartDate;   ///< null: not reported
    QDateTime actualFinishDate;  ///< null: not reported
    QDateTime createdAt;         ///< read only
    QString createdBy;           ///< user id; read only
};

/// The metering (task) state of a plan node, kept by the state service.
struct KvMeteringState
{
    QString id;         ///< database id
    QString planId;     ///< plan of the task
    QString taskId;     ///< id of the plan node
    QString responseId; ///< response that set the state
    int state = 0;      ///< state code of the service
};
