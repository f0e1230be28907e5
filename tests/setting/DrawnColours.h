#pragma once

#include <QtGui/QColor>

namespace KvTest {

/// Seeds Qt's generator, which the project's own headers hide as deprecated.
void seed(uint number);
int draw();

/// The rule of the random colours, written down a second time: three draws, the first for blue.
QColor drawnColour();

/// The seed of this moment on the clock.
uint seedOf(qint64 milliseconds);

} // namespace KvTest
