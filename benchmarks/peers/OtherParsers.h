#pragma once

#include <model/KvPlanRecords.h>

#include <QtCore/QByteArray>

/// A plan from its bytes by parsers other than Qt's, into the records that the library reads. @throw what the
/// parser throws when the bytes are no JSON.
KvPlan planByNlohmann(const QByteArray& json);
KvPlan planBySimdjson(const QByteArray& json);
