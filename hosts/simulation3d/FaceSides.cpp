#include "FaceSides.h"

#include <QtGui/QVector3D>

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>
#include <tuple>
#include <vector>

namespace {

// The triangles of an element, with one number for all corners at one place, as faces rarely share their
// vertices in files.
class Faces
{
public:
    Faces(const ModelData& data, const QVector<int>& parts);

    QVector<quint32> toSee() const;

private:
    struct Shell
    {
        bool isClosed = true;
        double volume = 0.0; // negative when it is turned inwards
    };
    struct Edge
    {
        int low;
        int high;
        int direction; // 1 from low to high, else -1
    };

    QVector3D at(quint32 vertex) const
    {
        const float* const place = m_data.positions.constData() + size_t(vertex) * 3;
        return {place[0], place[1], place[2]};
    }
    std::array<quint32, 3> bits(quint32 vertex) const;
    void weld();
    int shellOf(int place);
    void join(int a, int b);
    void findOpenShells();
    void addVolumes();

    const ModelData& m_data;
    QVector<quint32> m_corners;   // three a triangle
    std::vector<int> m_places;    // of the corners
    std::vector<int> m_parents;   // of places, up to the one that stands for their shell
    std::vector<Shell> m_shells;  // of these
    std::vector<int> m_triangles; // their shells
};

Faces::Faces(const ModelData& data, const QVector<int>& parts)
    : m_data(data)
{
    for (const int part : parts) {
        const ModelData::Part& from = data.parts.at(part);
        m_corners += data.indices.mid(int(from.firstIndex), int(from.indexCount));
    }
    weld();
    const size_t count = m_places.size();
    for (size_t i = 0; i < count; i += 3) {
        join(m_places[i], m_places[i + 1]);
        join(m_places[i], m_places[i + 2]);
    }
    m_triangles.reserve(count / 3);
    for (size_t i = 0; i < count; i += 3)
        m_triangles.push_back(shellOf(m_places[i]));
    findOpenShells();
    addVolumes();
}

// In some order that also holds for what is no number.
std::array<quint32, 3> Faces::bits(quint32 vertex) const
{
    std::array<quint32, 3> all{};
    for (size_t axis = 0; axis < all.size(); ++axis) {
        const float value = m_data.positions.at(int(vertex) * 3 + int(axis)) + 0.0F; // the two zeros are one
        std::memcpy(&all[axis], &value, sizeof value);
    }
    return all;
}

void Faces::weld()
{
    const int count = m_corners.size();
    std::vector<std::array<quint32, 3>> keys;
    keys.reserve(size_t(count));
    for (const quint32 corner : qAsConst(m_corners))
        keys.push_back(bits(corner));
    std::vector<int> order(size_t(count), 0);
    std::iota(order.begin(), order.end(), 0);
    const auto before = [&keys](int a, int b) {
        return keys[size_t(a)] < keys[size_t(b)];
    };
    std::sort(order.begin(), order.end(), before);
    m_places.resize(size_t(count));
    int places = 0;
    for (size_t i = 0; i < order.size(); ++i) {
        if (i > 0 && before(order[i - 1], order[i]))
            ++places;
        m_places[size_t(order[i])] = places;
    }
    m_parents.resize(size_t(count == 0 ? 0 : places + 1));
    std::iota(m_parents.begin(), m_parents.end(), 0);
    m_shells.resize(m_parents.size());
}

int Faces::shellOf(int place)
{
    while (m_parents[size_t(place)] != place) {
        int& parent = m_parents[size_t(place)];
        parent = m_parents[size_t(parent)];
        place = parent;
    }
    return place;
}

void Faces::join(int a, int b)
{
    m_parents[size_t(shellOf(a))] = shellOf(b);
}

// Closed is what has at each edge as many faces that go along it one way as the other.
void Faces::findOpenShells()
{
    std::vector<Edge> edges;
    edges.reserve(m_places.size());
    for (size_t i = 0; i < m_places.size(); ++i) {
        const int from = m_places[i];
        const int to = m_places[i % 3 == 2 ? i - 2 : i + 1];
        if (from != to)
            edges.push_back({std::min(from, to), std::max(from, to), from < to ? 1 : -1});
    }
    std::sort(edges.begin(), edges.end(),
              [](const Edge& a, const Edge& b) { return std::tie(a.low, a.high) < std::tie(b.low, b.high); });
    for (size_t i = 0; i < edges.size();) {
        const Edge& edge = edges[i];
        int balance = 0;
        for (; i < edges.size() && edges[i].low == edge.low && edges[i].high == edge.high; ++i)
            balance += edges[i].direction;
        if (balance != 0)
            m_shells[size_t(shellOf(edge.low))].isClosed = false;
    }
}

void Faces::addVolumes()
{
    for (size_t i = 0; i < m_triangles.size(); ++i) {
        const int first = int(i) * 3;
        // From a corner nearby, as places far from the origin would lose what is counted.
        const QVector3D origin = at(m_corners.at(0));
        const QVector3D a = at(m_corners.at(first)) - origin;
        const QVector3D b = at(m_corners.at(first + 1)) - origin;
        const QVector3D c = at(m_corners.at(first + 2)) - origin;
        m_shells[size_t(m_triangles[i])].volume +=
            double(QVector3D::dotProduct(a, QVector3D::crossProduct(b, c)));
    }
}

QVector<quint32> Faces::toSee() const
{
    QVector<quint32> seen;
    seen.reserve(m_corners.size());
    for (size_t i = 0; i < m_triangles.size(); ++i) {
        const Shell& shell = m_shells[size_t(m_triangles[i])];
        const quint32* const corner = m_corners.constData() + i * 3;
        const bool isInside = shell.isClosed && shell.volume < 0.0;
        if (!isInside)
            seen << corner[0] << corner[1] << corner[2];
        if (isInside || !shell.isClosed || shell.volume == 0.0)
            seen << corner[0] << corner[2] << corner[1];
    }
    return seen;
}

} // namespace

QVector<quint32> facesToSee(const ModelData& data, const QVector<int>& parts)
{
    return Faces(data, parts).toSee();
}
