#pragma once

#include <QtGui/QColor>

namespace Kv {

/// Seeds this thread's pseudo-random generator with the milliseconds of the clock, modulo 65536.
void seedRandomColours();

/// The generator's next colour: opaque, neither very dark nor very light; each part from 30 to 229.
QColor drawRandomColour();

} // namespace Kv
