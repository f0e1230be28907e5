#pragma once

#include <QtCore/QCoreApplication>
#include <QtCore/QString>
#include <QtGui/QSurfaceFormat>

/// Whether this computer and this session can show a building.
class GraphicsCheck
{
    Q_DECLARE_TR_FUNCTIONS(GraphicsCheck)

public:
    /// Of windows and surfaces that Qt 3D draws on.
    static QSurfaceFormat format();
    /// Why nothing can be drawn in three dimensions, for the user; empty when it can. The first call tries,
    /// the others remember.
    static const QString& fault();
};
