#pragma once

#include "ElementLooks.h"
#include "SceneCamera.h"

/// The element that a ray meets first, as it is drawn: growing, lifted, and not where nothing of it is to be
/// seen; hints are looked through. BuildingModel::none when it meets none. Takes a time in proportion to the
/// number of elements, and to the triangles of those few whose boxes it meets.
int pickElement(const BuildingModel& model, const ElementLooks& looks, const SceneCamera::Ray& ray);
