#pragma once

#include "ModelData.h"

/// The triangles of some parts so that all can be seen while only those are drawn that go round
/// counterclockwise for the viewer, which is half of the work: closed shells turned outwards, and what is
/// open from both sides, twice. Converters write sheets of one side and mirrored parts.
/// @return three vertices each
QVector<quint32> facesToSee(const ModelData& data, const QVector<int>& parts);
