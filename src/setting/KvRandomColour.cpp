// Hosts know the colours of qsrand() and qrand() and get them from no other generator. Qt 5.15 deprecates
// both, and the project hides what is deprecated; this file sees the interface of one version earlier.
#undef QT_DISABLE_DEPRECATED_BEFORE
#define QT_DISABLE_DEPRECATED_BEFORE 0x050E00

#include <setting/KvRandomColour.h>

#include <QtCore/QDateTime>

namespace Kv {

namespace {

int drawPart()
{
    return qrand() % 200 + 30;
}

} // namespace

void seedRandomColours()
{
    qsrand(quint16(QDateTime::currentMSecsSinceEpoch()));
}

QColor drawRandomColour()
{
    const int blue = drawPart(); // the first draw
    const int green = drawPart();
    const int red = drawPart();
    return QColor(red, green, blue);
}

} // namespace Kv
