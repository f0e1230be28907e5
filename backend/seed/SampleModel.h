#pragma once

#include "SampleProject.h"

#include <functional>

namespace PlanService {

enum class SampleModelFormat
{
    Gltf, ///< glTF 2.0, one text file: building, storeys, elements
    Obj,  ///< Wavefront OBJ, which knows no storeys
};

/// The building of a sample: one box an element, named as the entity that the plan's nodes link to, each
/// once. Metres, the y axis upwards, the first floor at 0, a floor every 3 metres; towers stand in rows.
/// Floors have columns, slabs, facade panels, pipes and partitions, the ground pit and raft, the roof its
/// equipment. The same options give the same bytes on every machine.
/// @param write takes the text piece by piece; memory stays that of one tower, and a number for each element.
void writeSampleModel(const SampleProject& project, SampleModelFormat format,
                      const std::function<void(const QByteArray&)>& write);

} // namespace PlanService
