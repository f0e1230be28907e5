// qsrand() and qrand() are deprecated and hidden by the project's settings; here they are the measure.
#undef QT_DISABLE_DEPRECATED_BEFORE
#define QT_DISABLE_DEPRECATED_BEFORE 0x050E00

#include "DrawnColours.h"

#include <QtCore/QtGlobal>

namespace KvTest {

void seed(uint number)
{
    qsrand(number);
}

int draw()
{
    return qrand();
}

QColor drawnColour()
{
    const int first = qrand();
    const int second = qrand();
    const int third = qrand();
    QColor colour;
    colour.setRgb(third % 200 + 30, second % 200 + 30, first % 200 + 30, 255);
    return colour;
}

uint seedOf(qint64 milliseconds)
{
    return static_cast<uint>(milliseconds % 65536);
}

} // namespace KvTest
