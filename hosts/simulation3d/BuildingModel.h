#pragma once

#include "ModelData.h"

#include <QtCore/QHash>
#include <QtCore/QSet>
#include <QtGui/QVector3D>

/// A box along the axes.
struct Box
{
    QVector3D low;
    QVector3D high;

    QVector3D size() const { return high - low; }
    QVector3D centre() const { return (low + high) / 2.0F; }
    void unite(const QVector3D& point);
    void unite(const Box& other);
    /// One that every point enlarges.
    static Box nothing();
    bool isNothing() const { return low.x() > high.x(); }
};

/// The elements of a building and their triangles, in the form in which the graphics card takes them. Metres,
/// as a rule; y upwards.
class BuildingModel
{
public:
    static constexpr int none = -1;

    struct Element
    {
        QString id;
        int floor = none; ///< position in floors()
        Box box;
        QVector<int> parts; ///< positions in data().parts
    };

    BuildingModel() = default;
    /// @param known identifiers that tasks name. Geometry belongs to the nearest node, itself or above, with
    /// one of these names, and without such a node to the nearest that has any name.
    BuildingModel(ModelData data, const QSet<QString>& known);

    bool isEmpty() const { return m_elements.isEmpty(); }
    const QVector<Element>& elements() const { return m_elements; }
    int elementOf(const QString& id) const { return m_byId.value(id, none); }
    /// Names of the nodes right above the elements, where the usual converters put storeys; from the lowest
    /// to the highest. A top node that holds all elements is no floor.
    const QStringList& floors() const { return m_floors; }
    const ModelData& data() const { return m_data; }
    const Box& box() const { return m_box; }

    /// Bytes of one vertex: its three coordinates and the number of its element, as floats.
    static constexpr int vertexSize = 4 * sizeof(float);
    QByteArray vertices() const;
    /// Three for each triangle that is drawn, seen counterclockwise: those of facesToSee().
    QByteArray indices() const;

private:
    void findFloors(const QVector<int>& nodeOfElement, const QVector<int>& namedNode);

    ModelData m_data;
    QVector<Element> m_elements;
    QHash<QString, int> m_byId;
    QStringList m_floors;
    Box m_box = Box::nothing();
};
