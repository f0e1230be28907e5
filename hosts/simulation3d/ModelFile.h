#pragma once

#include <QtCore/QCoreApplication>
#include <QtCore/QString>

/// A file with the geometry of a building: glTF 2.0 (.gltf, .glb) or Wavefront OBJ (.obj), whose node names
/// are the identifiers of elements.
class ModelFile
{
    Q_DECLARE_TR_FUNCTIONS(ModelFile)

public:
    /// Larger files are refused: what is read takes several times as much memory.
    static constexpr qint64 largestSize = 150LL * 1024 * 1024;

    /// Why the file cannot be a model, for the user; empty when it may be one. Looks at its first bytes only.
    static QString fault(const QString& path);
    /// For file dialogs.
    static QString dialogFilter();
    static bool isGltf(const QString& path);
};
