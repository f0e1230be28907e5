// The sample building's geometry: its parts are those that the plan's tasks build.

#include "SampleText.h"
#include "seed/SampleModel.h"

#include <QSet>
#include <QtTest>

#include <algorithm>
#include <array>

using namespace PlanService;
using KvTest::ofSize;
using KvTest::sampleNodes;
using KvTest::operator""_s;

namespace {

/// Every entity that the nodes link to.
QSet<QString> linkedEntities(const QJsonArray& nodes)
{
    QSet<QString> entities;
    for (const QJsonValue& node : nodes) {
        const QJsonArray links = node.toObject().value("entity"_s).toArray();
        for (const QJsonValue& link : links) {
            const QJsonArray ids = link.toObject().value("entityIds"_s).toArray();
            for (const QJsonValue& id : ids) {
                entities.insert(id.toString());
            }
        }
    }
    return entities;
}

QByteArray modelText(const SampleOptions& options, SampleModelFormat format = SampleModelFormat::Obj)
{
    QByteArray text;
    writeSampleModel(SampleProject(options), format, [&](const QByteArray& piece) { text += piece; });
    return text;
}

/// An object of the model: its corners, and for each face its corners and its normal.
struct ModelObject
{
    QString name;
    QVector<std::array<double, 3>> corners;
    QVector<QPair<QVector<int>, int>> faces;

    double low(std::size_t axis) const
    {
        double value = corners.first()[axis];
        for (const auto& corner : corners) {
            value = std::min(value, corner[axis]);
        }
        return value;
    }
    double high(std::size_t axis) const
    {
        double value = corners.first()[axis];
        for (const auto& corner : corners) {
            value = std::max(value, corner[axis]);
        }
        return value;
    }
};

struct Model
{
    QVector<std::array<double, 3>> normals;
    QVector<ModelObject> objects;
};

std::array<double, 3> threeNumbers(const QList<QByteArray>& words)
{
    return {words.value(1).toDouble(), words.value(2).toDouble(), words.value(3).toDouble()};
}

Model modelOf(const SampleOptions& options)
{
    Model model;
    int cornersBefore = 0;
    const QList<QByteArray> lines = modelText(options).split('\n');
    for (const QByteArray& line : lines) {
        const QList<QByteArray> words = line.split(' ');
        if (words.first() == "vn") {
            model.normals.append(threeNumbers(words));
        } else if (words.first() == "o") {
            cornersBefore += model.objects.isEmpty() ? 0 : model.objects.last().corners.size();
            model.objects.append({QString::fromUtf8(words.value(1)), {}, {}});
        } else if (words.first() == "v") {
            model.objects.last().corners.append(threeNumbers(words));
        } else if (words.first() == "f") {
            QVector<int> corners;
            int normal = -1;
            for (const QByteArray& word : words.mid(1)) {
                const QList<QByteArray> numbers = word.split('/');
                corners.append(numbers.first().toInt() - 1 - cornersBefore);
                normal = numbers.last().toInt() - 1;
            }
            model.objects.last().faces.append({corners, normal});
        }
    }
    return model;
}

} // namespace

class TestSampleModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itsModelHasEveryLinkedEntityOnce_data()
    {
        QTest::addColumn<int>("nodes");
        QTest::addColumn<int>("floors");
        QTest::newRow("one tower") << 0 << 0;
        QTest::newRow("one floor") << 0 << 1;
        QTest::newRow("forty floors") << 0 << 40;
        QTest::newRow("part of a tower") << 17 << 0;
        QTest::newRow("nothing to build") << 1 << 0;
        QTest::newRow("several towers") << 2500 << 5;
    }
    void itsModelHasEveryLinkedEntityOnce()
    {
        QFETCH(int, nodes);
        QFETCH(int, floors);
        SampleOptions options = ofSize(nodes);
        options.floors = floors;
        QCOMPARE(modelText(options), modelText(options));
        const Model model = modelOf(options);
        QSet<QString> names;
        for (const ModelObject& object : model.objects) {
            QVERIFY2(!names.contains(object.name), qPrintable(object.name));
            names.insert(object.name);
        }
        QCOMPARE(names, linkedEntities(sampleNodes(options)));
    }

    void itsModelIsMadeOfClosedBoxes()
    {
        const Model model = modelOf(ofSize(900));
        QCOMPARE(model.normals.size(), 6);
        QSet<QString> places;
        for (const ModelObject& object : model.objects) {
            QCOMPARE(object.corners.size(), 8);
            QCOMPARE(object.faces.size(), 6);
            QString place;
            for (std::size_t axis = 0; axis < 3; ++axis) {
                QVERIFY2(object.high(axis) - object.low(axis) > 0.05, qPrintable(object.name));
                place += QStringLiteral("%1 %2 ").arg(object.low(axis)).arg(object.high(axis));
            }
            QVERIFY2(!places.contains(place), qPrintable(object.name)); // none hides another
            places.insert(place);
            for (const auto& [corners, normal] : object.faces) {
                QCOMPARE(corners.size(), 4);
                // The way round tells the side that is seen from outside.
                const auto& a = object.corners.at(corners.at(0));
                const auto& b = object.corners.at(corners.at(1));
                const auto& c = object.corners.at(corners.at(2));
                for (std::size_t axis = 0; axis < 3; ++axis) {
                    const std::size_t next = (axis + 1) % 3;
                    const std::size_t last = (axis + 2) % 3;
                    const double cross =
                        (b[next] - a[next]) * (c[last] - b[last]) - (b[last] - a[last]) * (c[next] - b[next]);
                    QCOMPARE(cross > 0.0, model.normals.at(normal)[axis] > 0.0);
                    QCOMPARE(cross < 0.0, model.normals.at(normal)[axis] < 0.0);
                }
            }
        }
    }

    void bothFormatsHoldTheSameBoxes_data()
    {
        QTest::addColumn<int>("nodes");
        QTest::newRow("one tower") << 0;
        QTest::newRow("several towers") << 900;
        QTest::newRow("nothing to build") << 1;
    }
    void bothFormatsHoldTheSameBoxes()
    {
        QFETCH(int, nodes);
        const SampleOptions options = ofSize(nodes);
        QJsonParseError error;
        const QJsonObject gltf =
            QJsonDocument::fromJson(modelText(options, SampleModelFormat::Gltf), &error).object();
        QVERIFY2(error.error == QJsonParseError::NoError, qPrintable(error.errorString()));
        QCOMPARE(gltf.value("asset"_s).toObject().value("version"_s).toString(), "2.0"_s);
        const QJsonArray all = gltf.value("nodes"_s).toArray();
        // From the top: the building, its storeys, their elements.
        const QJsonArray tops = gltf.value("scenes"_s).toArray().at(0).toObject().value("nodes"_s).toArray();
        QCOMPARE(tops.size(), 1);
        const QJsonArray storeys = all.at(tops.at(0).toInt()).toObject().value("children"_s).toArray();
        QMap<QString, QString> places;
        for (const QJsonValue& storey : storeys) {
            const QJsonArray elements = all.at(storey.toInt()).toObject().value("children"_s).toArray();
            QVERIFY(!elements.isEmpty());
            const QString name = all.at(storey.toInt()).toObject().value("name"_s).toString();
            for (const QJsonValue& number : elements) {
                const QJsonObject element = all.at(number.toInt()).toObject();
                const QString id = element.value("name"_s).toString();
                QCOMPARE(element.value("mesh"_s).toInt(-1), 0);
                if (!name.endsWith("Site"_s) && !name.endsWith("Roof"_s) && !name.endsWith("Foundation"_s)) {
                    QVERIFY2(id.startsWith(name + "-"_s), qPrintable(id));
                }
                QString place;
                for (int axis = 0; axis < 3; ++axis) {
                    const double low = element.value("translation"_s).toArray().at(axis).toDouble();
                    const double size = element.value("scale"_s).toArray().at(axis).toDouble();
                    place += QStringLiteral("%1 %2 ").arg(low, 0, 'f', 2).arg(low + size, 0, 'f', 2);
                }
                QVERIFY2(!places.contains(id), qPrintable(id));
                places.insert(id, place);
            }
        }
        QCOMPARE(all.size(), 1 + storeys.size() + places.size());
        QMap<QString, QString> expected;
        const Model model = modelOf(options);
        for (const ModelObject& object : model.objects) {
            QString place;
            for (std::size_t axis = 0; axis < 3; ++axis) {
                place += QStringLiteral("%1 %2 ")
                             .arg(object.low(axis), 0, 'f', 2)
                             .arg(object.high(axis), 0, 'f', 2);
            }
            expected.insert(object.name, place);
        }
        QCOMPARE(places, expected);
    }

    void itsModelStandsFloorByFloor()
    {
        SampleOptions options;
        options.floors = 6;
        int onFloors = 0;
        const Model model = modelOf(options);
        for (const ModelObject& object : model.objects) {
            const int floor = object.name.mid(1, 2).toInt(); // as F03-CON-512
            if (floor > 0) {
                ++onFloors;
                QVERIFY2(object.low(1) >= 3.0 * (floor - 1), qPrintable(object.name));
                QVERIFY2(object.high(1) <= 3.0 * floor, qPrintable(object.name));
            } else if (object.name.contains("COM"_s)) {
                QCOMPARE(object.low(1), 18.0);
            } else if (object.name.contains("TMP"_s)) {
                QCOMPARE(object.low(1), 0.0);
            } else {
                QVERIFY2(object.high(1) <= 0.0, qPrintable(object.name));
            }
        }
        QVERIFY(onFloors > 100);
    }
};

QTEST_GUILESS_MAIN(TestSampleModel)
#include "TestSampleModel.moc"
