#include "SampleModelWriter.h"

#include <QDataStream>
#include <QMap>
#include <QVector>

#include <array>

namespace PlanService {

namespace {

using Write = std::function<void(const QByteArray&)>;

// Corner n has the far x for bit 0, the far y for bit 1 and the far z for bit 2. Seen from outside the
// corners of a face go round counterclockwise.
struct Face
{
    std::array<int, 3> normal;
    std::array<int, 4> corners;
};
constexpr std::array<Face, 6> faces{{{{1, 0, 0}, {1, 3, 7, 5}},
                                     {{-1, 0, 0}, {0, 4, 6, 2}},
                                     {{0, 1, 0}, {2, 6, 7, 3}},
                                     {{0, -1, 0}, {0, 1, 5, 4}},
                                     {{0, 0, 1}, {4, 5, 7, 6}},
                                     {{0, 0, -1}, {0, 2, 3, 1}}}};
constexpr int cornersOfBox = 8;

QByteArray metres(int centimetres)
{
    const int size = centimetres < 0 ? -centimetres : centimetres;
    QByteArray text = centimetres < 0 ? "-" : "";
    text += QByteArray::number(size / 100);
    text += '.';
    text += static_cast<char>('0' + size / 10 % 10);
    text += static_cast<char>('0' + size % 10);
    return text;
}

QByteArray three(int x, int y, int z, char separator)
{
    return metres(x) + separator + metres(y) + separator + metres(z);
}

class ObjWriter final : public SampleModelWriter
{
public:
    explicit ObjWriter(const Write& write)
        : m_write(write)
    {
        QByteArray text("# Metres, y upwards. Objects are named as the entities of the plan.\n");
        for (const Face& face : faces) {
            text += "vn";
            for (const int number : face.normal) {
                text += ' ' + QByteArray::number(number);
            }
            text += '\n';
        }
        m_write(text);
    }

    void add(const QString& name, const QString&, const SampleBox& box) override
    {
        QByteArray text = "o " + name.toUtf8() + '\n';
        for (int corner = 0; corner < cornersOfBox; ++corner) {
            text += "v " +
                    three(box.x + (corner & 1 ? box.dx : 0), box.y + (corner & 2 ? box.dy : 0),
                          box.z + (corner & 4 ? box.dz : 0), ' ') +
                    '\n';
        }
        for (std::size_t face = 0; face < faces.size(); ++face) {
            text += 'f';
            for (const int corner : faces[face].corners) {
                text += ' ' + QByteArray::number(m_corners + corner + 1) + "//" +
                        QByteArray::number(static_cast<int>(face) + 1);
            }
            text += '\n';
        }
        m_corners += cornersOfBox;
        m_write(text);
    }

    void finish() override {}

private:
    const Write& m_write;
    qint64 m_corners = 0;
};

class GltfWriter final : public SampleModelWriter
{
public:
    explicit GltfWriter(const Write& write)
        : m_write(write)
    {
        m_write("{\"asset\":{\"version\":\"2.0\",\"generator\":\"planservice\"}," + box() + "\"nodes\":[");
    }

    // Every element is the one box, moved and stretched.
    void add(const QString& name, const QString& storey, const SampleBox& box) override
    {
        addNode("\n{\"name\":\"" + name.toUtf8() + "\",\"mesh\":0,\"translation\":[" +
                three(box.x, box.y, box.z, ',') + "],\"scale\":[" + three(box.dx, box.dy, box.dz, ',') +
                "]}");
        m_storeys[storey].append(m_nodes - 1);
    }

    void finish() override
    {
        QVector<int> storeys;
        for (auto storey = m_storeys.constBegin(); storey != m_storeys.constEnd(); ++storey) {
            addNode(parent(storey.key(), *storey));
            storeys.append(m_nodes - 1);
        }
        addNode(parent(QStringLiteral("Building"), storeys));
        m_write("\n],\"scenes\":[{\"nodes\":[" + QByteArray::number(m_nodes - 1) + "]}],\"scene\":0}\n");
    }

private:
    static QByteArray parent(const QString& name, const QVector<int>& children)
    {
        QByteArray text = "\n{\"name\":\"" + name.toUtf8() + '"';
        char before = '[';
        for (const int child : children) {
            text +=
                (before == '[' ? QByteArray(",\"children\":[") : QByteArray(",")) + QByteArray::number(child);
            before = ',';
        }
        return text + (children.isEmpty() ? "}" : "]}");
    }

    void addNode(const QByteArray& text)
    {
        m_write(m_nodes == 0 ? text : ',' + text);
        ++m_nodes;
    }

    // From corner to corner one metre. Each face has corners of its own, for the sake of its normal.
    static QByteArray box()
    {
        QByteArray bytes;
        QDataStream out(&bytes, QIODevice::WriteOnly);
        out.setByteOrder(QDataStream::LittleEndian);
        out.setFloatingPointPrecision(QDataStream::SinglePrecision);
        for (const Face& face : faces) {
            for (const int corner : face.corners) {
                out << static_cast<float>(corner & 1) << static_cast<float>(corner >> 1 & 1)
                    << static_cast<float>(corner >> 2 & 1);
            }
        }
        for (const Face& face : faces) {
            for (std::size_t i = 0; i < face.corners.size(); ++i) {
                for (const int number : face.normal) {
                    out << static_cast<float>(number);
                }
            }
        }
        for (quint16 face = 0; face < faces.size(); ++face) {
            for (const int corner : {0, 1, 2, 0, 2, 3}) {
                out << static_cast<quint16>(face * 4 + corner);
            }
        }
        return "\"buffers\":[{\"byteLength\":648,\"uri\":\"data:application/octet-stream;base64," +
               bytes.toBase64() +
               "\"}],\"bufferViews\":[{\"buffer\":0,\"byteLength\":288,\"target\":34962},"
               "{\"buffer\":0,\"byteOffset\":288,\"byteLength\":288,\"target\":34962},"
               "{\"buffer\":0,\"byteOffset\":576,\"byteLength\":72,\"target\":34963}],"
               "\"accessors\":[{\"bufferView\":0,\"componentType\":5126,\"count\":24,\"type\":\"VEC3\","
               "\"min\":[0,0,0],\"max\":[1,1,1]},"
               "{\"bufferView\":1,\"componentType\":5126,\"count\":24,\"type\":\"VEC3\"},"
               "{\"bufferView\":2,\"componentType\":5123,\"count\":36,\"type\":\"SCALAR\"}],"
               "\"meshes\":[{\"name\":\"box\",\"primitives\":[{\"attributes\":"
               "{\"POSITION\":0,\"NORMAL\":1},\"indices\":2}]}],";
    }

    const Write& m_write;
    int m_nodes = 0;
    QMap<QString, QVector<int>> m_storeys;
};

} // namespace

std::unique_ptr<SampleModelWriter> sampleModelWriter(SampleModelFormat format, const Write& write)
{
    if (format == SampleModelFormat::Obj) {
        return std::make_unique<ObjWriter>(write);
    }
    return std::make_unique<GltfWriter>(write);
}

} // namespace PlanService
