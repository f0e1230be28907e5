#include "BuildingModel.h"

#include "FaceSides.h"

#include <algorithm>
#include <limits>

void Box::unite(const QVector3D& point)
{
    for (int axis = 0; axis < 3; ++axis) {
        low[axis] = std::min(low[axis], point[axis]);
        high[axis] = std::max(high[axis], point[axis]);
    }
}

void Box::unite(const Box& other)
{
    if (other.isNothing())
        return;
    unite(other.low);
    unite(other.high);
}

Box Box::nothing()
{
    constexpr float far = std::numeric_limits<float>::max();
    return {{far, far, far}, {-far, -far, -far}};
}

namespace {

// For each node the nearest one, itself or above, that @p meets accepts. Parents stand before their children.
template<typename Condition>
QVector<int> nearestNodes(const QVector<ModelData::Node>& nodes, const Condition& meets)
{
    QVector<int> nearest(nodes.size(), BuildingModel::none);
    for (int i = 0; i < nodes.size(); ++i) {
        if (meets(nodes.at(i)))
            nearest[i] = i;
        else if (nodes.at(i).parent != BuildingModel::none)
            nearest[i] = nearest.at(nodes.at(i).parent);
    }
    return nearest;
}

} // namespace

BuildingModel::BuildingModel(ModelData data, const QSet<QString>& known)
    : m_data(std::move(data))
{
    const QVector<int> knownNode = nearestNodes(
        m_data.nodes, [&known](const ModelData::Node& node) { return known.contains(node.name); });
    const QVector<int> namedNode =
        nearestNodes(m_data.nodes, [](const ModelData::Node& node) { return !node.name.isEmpty(); });
    QVector<int> elementOfNode(m_data.nodes.size(), none);
    QVector<int> nodeOfElement;
    for (int i = 0; i < m_data.parts.size(); ++i) {
        const ModelData::Part& part = m_data.parts.at(i);
        int node = knownNode.at(part.node);
        if (node == none)
            node = namedNode.at(part.node) != none ? namedNode.at(part.node) : part.node;
        const QString& id = m_data.nodes.at(node).name;
        int element = elementOfNode.at(node);
        if (element == none && !id.isEmpty())
            element = m_byId.value(id, none); // a second node of the same name
        if (element == none) {
            element = m_elements.size();
            m_elements.append({id, none, Box::nothing(), {}});
            nodeOfElement.append(node);
            if (!id.isEmpty())
                m_byId.insert(id, element);
        }
        elementOfNode[node] = element;
        Box box = Box::nothing();
        for (quint32 v = part.firstVertex; v < part.firstVertex + part.vertexCount; ++v) {
            const float* const at = m_data.positions.constData() + size_t(v) * 3;
            box.unite(QVector3D(at[0], at[1], at[2]));
        }
        m_elements[element].parts.append(i);
        m_elements[element].box.unite(box);
        m_box.unite(box);
    }
    findFloors(nodeOfElement, namedNode);
}

void BuildingModel::findFloors(const QVector<int>& nodeOfElement, const QVector<int>& namedNode)
{
    struct Floor
    {
        QString name;
        float base;
    };
    QVector<Floor> floors;
    QHash<QString, int> byName;
    QVector<int> floorOf(m_elements.size(), none);
    for (int i = 0; i < m_elements.size(); ++i) {
        const int above = m_data.nodes.at(nodeOfElement.at(i)).parent;
        const int node = above == none ? none : namedNode.at(above);
        if (node == none)
            continue;
        const QString& name = m_data.nodes.at(node).name;
        int floor = byName.value(name, none);
        if (floor == none) {
            floor = floors.size();
            byName.insert(name, floor);
            floors.append({name, m_elements.at(i).box.low.y()});
        }
        floors[floor].base = std::min(floors.at(floor).base, m_elements.at(i).box.low.y());
        floorOf[i] = floor;
    }
    if (floors.size() < 2) // all under one roof
        return;
    QVector<int> order(floors.size());
    for (int i = 0; i < order.size(); ++i)
        order[i] = i;
    std::stable_sort(order.begin(), order.end(),
                     [&floors](int a, int b) { return floors.at(a).base < floors.at(b).base; });
    QVector<int> place(order.size());
    for (int i = 0; i < order.size(); ++i) {
        place[order.at(i)] = i;
        m_floors.append(floors.at(order.at(i)).name);
    }
    for (int i = 0; i < m_elements.size(); ++i) {
        if (floorOf.at(i) != none)
            m_elements[i].floor = place.at(floorOf.at(i));
    }
}

QByteArray BuildingModel::vertices() const
{
    QByteArray bytes(int(m_data.vertexCount()) * vertexSize, Qt::Uninitialized);
    float* const out = reinterpret_cast<float*>(bytes.data());
    for (int element = 0; element < m_elements.size(); ++element) {
        for (const int number : m_elements.at(element).parts) {
            const ModelData::Part& part = m_data.parts.at(number);
            for (size_t v = part.firstVertex; v < size_t(part.firstVertex) + part.vertexCount; ++v) {
                const float* const from = m_data.positions.constData() + v * 3;
                std::copy(from, from + 3, out + v * 4);
                out[v * 4 + 3] = float(element);
            }
        }
    }
    return bytes;
}

QByteArray BuildingModel::indices() const
{
    QByteArray bytes;
    bytes.reserve(m_data.indices.size() * int(sizeof(quint32)));
    for (const Element& element : m_elements) {
        const QVector<quint32> triangles = facesToSee(m_data, element.parts);
        bytes.append(reinterpret_cast<const char*>(triangles.constData()),
                     triangles.size() * int(sizeof(quint32)));
    }
    return bytes;
}
