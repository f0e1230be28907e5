#pragma once

#include <ModelData.h>

namespace Qt3DCore {
class QEntity;
}

/// The nodes and triangles below @p root, with each triangle where its transforms put it. Points and lines
/// are left out, and triangles that name vertices that are not there.
ModelData sceneGeometry(const Qt3DCore::QEntity& root);
