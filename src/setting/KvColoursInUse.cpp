#include <setting/KvColoursInUse.h>

namespace Kv {

bool ColoursInUse::contains(const Map& map, const QColor& drawn)
{
    if (!m_counted.isSharedWith(map))
        countAll(map);
    return m_counts.contains(drawn.rgba());
}

void ColoursInUse::insert(Map& map, const QString& key, const QColor& colour)
{
    const bool isCounted = m_counted.isSharedWith(map);
    if (isCounted) {
        const auto replaced = qAsConst(map).constFind(key);
        if (replaced != map.constEnd())
            count(*replaced, -1);
        count(colour, 1);
        m_counted.clear(); // a shared map would be copied as a whole to be written
    }
    map.insert(key, colour);
    if (isCounted)
        m_counted = map;
}

void ColoursInUse::clear(Map& map)
{
    if (m_counted.isSharedWith(map)) {
        m_counted.clear();
        m_counts.clear();
    }
    map.clear();
}

void ColoursInUse::countAll(const Map& map)
{
    m_counted = map;
    m_counts.clear();
    m_counts.reserve(map.size());
    for (const QColor& colour : map)
        count(colour, 1);
}

void ColoursInUse::count(const QColor& colour, int step)
{
    // Colours are equal as QColor has it: of the same kind, alpha included. One that is not equal to the
    // plain opaque colour of its own parts is equal to none that is drawn.
    const QRgb parts = colour.rgba();
    if (qAlpha(parts) != 255 || colour != QColor(parts))
        return;
    if ((m_counts[parts] += step) == 0)
        m_counts.remove(parts);
}

} // namespace Kv
