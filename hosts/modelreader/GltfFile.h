#pragma once

#include <QtCore/QString>

class QTemporaryDir;

/// Writes a glTF or GLB file anew, in the form that Qt 3D's importer reads best: one text file, its buffers
/// by their whole paths, without materials, images and animations, which nothing shows (the importer ends the
/// program at a material without its optional parts), and with a mesh of its own for each node (the scene
/// takes a time that grows with the square of the nodes that share one).
/// @return the path of the new file in @p folder; empty when the file is no glTF 2.0.
QString plainGltf(const QString& path, const QTemporaryDir& folder);
