#include "SampleModel.h"

#include <QHash>
#include <QSet>

#include <array>
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

struct Box
{
    int x, y, z;
    int dx, dy, dz;
};

/// The part from one of @p count equal parts.
int cut(int whole, int part, int count)
{
    return static_cast<int>(static_cast<qint64>(whole) * part / count);
}

/// A strip of a plate that is cut along x.
Box strip(int part, int count, int y, int dy)
{
    const int from = cut(length, part, count);
    return {from, y, 0, cut(length, part + 1, count) - from, dy, width};
}

Box column(int part, int y)
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
Box panel(int part, int count, int y, int height, int distance)
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

Box pipe(int part, int count, int y)
{
    return {cut(length, 2 * part + 1, 2 * count), y + storey - slab - 40, 30, 15, 15, width - 60};
}

Box partition(int part, int count, int y)
{
    return {150, y + 1, cut(width, part + 1, count + 1), length - 300, storey - slab - 60, 12};
}

Box equipment(int part, int count, int y)
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

Box boxOf(const Group& group, int part, int floors)
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

void addNumber(QByteArray& text, int centimetres)
{
    text += ' ';
    if (centimetres < 0) {
        text += '-';
    }
    const int size = centimetres < 0 ? -centimetres : centimetres;
    text += QByteArray::number(size / 100);
    text += '.';
    text += static_cast<char>('0' + size / 10 % 10);
    text += static_cast<char>('0' + size % 10);
}

class ObjWriter
{
public:
    explicit ObjWriter(const std::function<void(const QByteArray&)>& write)
        : m_write(write)
    {
        m_write(QByteArrayLiteral("# Metres, y upwards. Objects are named as the entities of the plan.\n"
                                  "vn 1 0 0\nvn -1 0 0\nvn 0 1 0\nvn 0 -1 0\nvn 0 0 1\nvn 0 0 -1\n"));
    }

    void add(const QString& name, const Box& box)
    {
        QByteArray text = "o " + name.toUtf8() + '\n';
        for (int corner = 0; corner < 8; ++corner) {
            text += 'v';
            addNumber(text, box.x + (corner & 1 ? box.dx : 0));
            addNumber(text, box.y + (corner & 2 ? box.dy : 0));
            addNumber(text, box.z + (corner & 4 ? box.dz : 0));
            text += '\n';
        }
        // Seen from outside counterclockwise, in the order of the normals.
        static constexpr std::array<std::array<int, 4>, 6> faces{
            {{1, 3, 7, 5}, {0, 4, 6, 2}, {2, 6, 7, 3}, {0, 1, 5, 4}, {4, 5, 7, 6}, {0, 2, 3, 1}}};
        for (std::size_t face = 0; face < faces.size(); ++face) {
            text += 'f';
            for (const int corner : faces[face]) {
                text += ' ' + QByteArray::number(m_corners + corner + 1) + "//" +
                        QByteArray::number(static_cast<int>(face) + 1);
            }
            text += '\n';
        }
        m_corners += 8;
        m_write(text);
    }

private:
    const std::function<void(const QByteArray&)>& m_write;
    qint64 m_corners = 0;
};

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

    void write(ObjWriter& writer, int number) const
    {
        const int place = std::max(0, number - 1);
        for (const Group& group : m_groups) {
            for (int i = 0; i < group.entities.size(); ++i) {
                Box box = boxOf(group, i, m_floors);
                box.x += place % towersInARow * towerPitchX;
                box.z += place / towersInARow * towerPitchZ;
                writer.add(group.entities.at(i), box);
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

void writeSampleModel(const SampleProject& project, const std::function<void(const QByteArray&)>& write)
{
    ObjWriter writer(write);
    Tower tower;
    int number = 0;
    project.generate({[&](const SampleNode& node) {
                          if (node.tower != number) {
                              tower.write(writer, number);
                              tower = Tower();
                              number = node.tower;
                          }
                          tower.add(node);
                      },
                      [](const DocumentRecord&) {
                      }});
    tower.write(writer, number);
}

} // namespace PlanService
