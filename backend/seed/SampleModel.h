#pragma once

#include "SampleProject.h"

#include <functional>

namespace PlanService {

/// The building of a sample as a Wavefront OBJ file: one box an element, its object named as the entity that
/// the plan's nodes link to, each once. Metres, the y axis upwards, the first floor's slab underfoot at 0, a
/// floor every 3 metres; towers stand in rows. Floors have columns, slabs, facade panels, pipes and
/// partitions, the ground pit and raft, the roof its equipment. The same options give the same bytes on every
/// machine.
/// @param write takes the text piece by piece; memory stays that of one tower.
void writeSampleModel(const SampleProject& project, const std::function<void(const QByteArray&)>& write);

} // namespace PlanService
