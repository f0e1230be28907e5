#pragma once

#include "NodeFields.h"

/// A field in which two states of a task differ.
struct FieldChange
{
    const NodeField* field;
    QJsonValue was;
    QJsonValue becomes;
};

/// The fields that a person can change in which the two differ, in the order of the record.
QVector<FieldChange> changesBetween(const KvPlanNode& before, const KvPlanNode& after);
