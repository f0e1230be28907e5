#include "SampleModel.h"

#include "SampleModelWriter.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <vector>

namespace PlanService {

namespace {

// Centimetres, so that every number is exact.
constexpr int storey = 300;
constexpr int slab = 25;
constexpr int length = 2400; // along x
constexpr int width = 1500;  // along z
constexpr int margin = 600;  // to the hoarding
constexpr int towersInARow = 10;
constexpr int towerPitchX = length + 3 * margin;
constexpr int towerPitchZ = width + 3 * margin;

/// The part from one of @p count equal parts.
int cut(int whole, int part, int count)
{
    return static_cast<int>(static_cast<qint64>(whole) * part / count);
}

/// A strip of a plate that is cut along x.
SampleBox strip(int part, int count, int y, int dy)
{
    const int from = cut(length, part, count);
    return {from, y, 0, cut(length, part + 1, count) - from, dy, width};
}

SampleBox column(int part, int y)
{
    constexpr int inRow = 3;
    constexpr int rows = 3;
    constexpr int size = 80;
    const int place = part % (inRow * rows);
    const int again = part / (inRow * rows); // beside the first ones
    return {cut(length - size, place % inRow, inRow - 1) + (again % 5) * size,
            y,
            cut(width - size, place / inRow, rows - 1),
            size,
            storey - slab,
            size};
}

/// A panel of a wall around the building, @p distance away: the sides along x take the odd ones.
SampleBox panel(int part, int count, int y, int height, int distance)
{
    constexpr int thick = 20;
    constexpr int sides = 4;
    const int side = part % sides;
    const int onSide = count / sides + (side < count % sides ? 1 : 0);
    const int place = part / sides;
    const bool alongX = side % 2 == 0;
    const int whole = (alongX ? length : width) + 2 * distance;
    const int from = cut(whole, place, onSide);
    const int size = cut(whole, place + 1, onSide) - from;
    const int near = -distance - thick;
    if (alongX)
        return {from - distance, y, side == 0 ? near : width + distance, size, height, thick};
    return {side == 1 ? near : length + distance, y, from - distance, thick, height, size};
}

SampleBox pipe(int part, int count, int y)
{
    return {cut(length, 2 * part + 1, 2 * count), y + storey - slab - 40, 30, 15, 15, width - 60};
}

SampleBox partition(int part, int count, int y)
{
    return {150, y + 1, cut(width, part + 1, count + 1), length - 300, storey - slab - 60, 12};
}

SampleBox equipment(int part, int count, int y)
{
    return {cut(length, 2 * part + 1, 2 * count) - 75, y, width / 2 - 100, 150, 150, 200};
}

/// Entities of one trade on one floor, in the order in which the plan names them.
struct Group
{
    QString trade;
    int floor = 0;
    QStringList entities;
};

SampleBox boxOf(const Group& group, int part, int floors)
{
    const int count = group.entities.size();
    const int y = (group.floor - 1) * storey;
    if (group.trade == QLatin1String("STR")) {
        return column(part, y);
    }
    if (group.trade == QLatin1String("CON")) {
        return strip(part, count, y + storey - slab, slab);
    }
    if (group.trade == QLatin1String("FAC")) {
        return panel(part, count, y, storey, 0);
    }
    if (group.trade == QLatin1String("MEP")) {
        return pipe(part, count, y);
    }
    if (group.trade == QLatin1String("FIN")) {
        return partition(part, count, y);
    }
    if (group.trade == QLatin1String("EXC")) {
        return strip(part, count, -400, 300);
    }
    if (group.trade == QLatin1String("RAF")) {
        return strip(part, count, -100, 100);
    }
    if (group.trade == QLatin1String("TMP")) {
        return panel(part, count, 0, 200, margin);
    }
    return equipment(part, count, floors * storey); // commissioning, on the roof
}

/// What converters of building models call a storey.
QString storeyOf(const Group& group, int tower)
{
    const QString prefix = tower > 0 ? QStringLiteral("T%1-").arg(tower) : QString();
    if (group.floor > 0) {
        return prefix + QStringLiteral("F%1").arg(group.floor, 2, 10, QLatin1Char('0'));
    }
    if (group.trade == QLatin1String("TMP")) {
        return prefix + QStringLiteral("Site");
    }
    return prefix +
           (group.trade == QLatin1String("COM") ? QStringLiteral("Roof") : QStringLiteral("Foundation"));
}

/// The entities of one tower, by trade and floor.
class Tower
{
public:
    void add(const SampleNode& node)
    {
        m_floors = std::max(m_floors, node.floor);
        const QString key = node.trade + QString::number(node.floor);
        for (const QString& entity : node.entities) {
            if (m_known.contains(entity)) {
                continue; // two tasks build it
            }
            m_known.insert(entity);
            auto group = m_byKey.constFind(key);
            if (group == m_byKey.constEnd()) {
                group = m_byKey.insert(key, m_groups.size());
                m_groups.push_back({node.trade, node.floor, {}});
            }
            m_groups[*group].entities.append(entity);
        }
    }

    void write(SampleModelWriter& writer, int number) const
    {
        const int place = std::max(0, number - 1);
        for (const Group& group : m_groups) {
            const QString storeyName = storeyOf(group, number);
            for (int i = 0; i < group.entities.size(); ++i) {
                SampleBox box = boxOf(group, i, m_floors);
                box.x += place % towersInARow * towerPitchX;
                box.z += place / towersInARow * towerPitchZ;
                writer.add(group.entities.at(i), storeyName, box);
            }
        }
    }

private:
    int m_floors = 0;
    QSet<QString> m_known;
    QHash<QString, std::size_t> m_byKey;
    std::vector<Group> m_groups;
};

} // namespace

void writeSampleModel(const SampleProject& project, SampleModelFormat format,
                      const std::function<void(const QByteArray&)>& write)
{
    const auto writer = sampleModelWriter(format, write);
    Tower tower;
    int number = 0;
    project.generate({[&](const SampleNode& node) {
                          if (node.tower != number) {
                              tower.write(*writer, number);
                              tower = Tower();
                              number = node.tower;
                          }
                          tower.add(node);
                      },
                      [](const DocumentRecord&) {
                      }});
    tower.write(*writer, number);
    writer->finish();
}

} // namespace PlanService
