#pragma once

#include <QtCore/QHash>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtGui/QColor>

namespace Kv {

/// Tells whether a map of colours holds one that was drawn, without a walk over the map for each question.
///
/// The colours are counted once. What was counted is a copy of the map, which shares its data until one side
/// writes: so the counts are true exactly as long as both still share, whoever writes. A writer that goes
/// through insert() has them kept; after any other the next question counts anew.
class ColoursInUse
{
public:
    using Map = QMap<QString, QColor>;

    /// Whether a colour of @p map is equal to @p drawn, which is one of drawRandomColour().
    bool contains(const Map& map, const QColor& drawn);

    /// Inserts into the map or replaces there.
    void insert(Map& map, const QString& key, const QColor& colour);

    /// Empties the map.
    void clear(Map& map);

private:
    void countAll(const Map& map);
    void count(const QColor& colour, int step);

    Map m_counted;
    QHash<QRgb, int> m_counts;
};

} // namespace Kv
