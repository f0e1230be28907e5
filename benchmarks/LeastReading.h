#pragma once

#include <model/KvPlanRecords.h>

#include <QtCore/QJsonObject>

/// The least that reading takes through Qt's public interface: readers that know the plans of these
/// benchmarks by heart. Which members an object has, in which order, of which type, and which of them mostly
/// equal those of the node before, is written down as one program line after the other. Keys are compared, as
/// the plan would be another one otherwise, but nothing is looked for, no other plan can be read, and the
/// process ends if it is one. What they make is equal to what the library makes, down to what nodes share.
void readLeast(const QJsonObject& in, KvPlan& out); ///< what `planservice sample` writes
void readLeastExchange(const QJsonObject& in,
                       KvPlan& out); ///< what the benchmark of the exchange format makes
